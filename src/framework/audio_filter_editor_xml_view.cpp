#include "framework/audio_filter_editor_xml_view.hpp"

#include "controls/color_field_adapter.hpp"
#include "controls/edit_number_adapter.hpp"
#include "framework/image_provider.hpp"
#include "framework/library.hpp"
#include "framework/resource_manager.hpp"

namespace qoraudiofiltersui {

AudioFilterEditorXMLView::AudioFilterEditorXMLView(ResourceManager* resourceManager,
                                                   const std::string& resourceName,
                                                   std::shared_ptr<AudioFilter> filter)
    : AudioFilterEditorViewBase(std::move(filter)), resourceManager_(resourceManager),
      resourceName_(resourceName), nodeMap_(std::make_unique<qorui::UI_NodeBuilder::NodeMap>()) {}

AudioFilterEditorXMLView::~AudioFilterEditorXMLView() {
    // The content goes before the map, as the members are released in reverse order.
    contentView_.reset();
}

qorcore::IntrusivePtr<qorui::UI_Node>
AudioFilterEditorXMLView::CreateCustomNode(const std::string&) const {
    return nullptr;
}

void AudioFilterEditorXMLView::Init() {
    // The library's own archive classes must be known before its first archive is read.
    GetColorFieldAdapter();
    RegisterEditNumberAdapters();
    // Bound to this view so that the subclass's override answers during the load.
    const qorui::UI_NodeBuilder::CustomNodeFunction customNode = [this](const std::string& name) {
        return CreateCustomNode(name);
    };
    ResourceManager* resources = GetResourceManager();
    qorui::UI_NodeBuilder::ResourceReadFunction read;
    if (resources)
        read = [resources](std::string_view name, std::vector<char>& out) {
            return resources->GetBinary(name, "xml", out);
        };
    qorui::UI_NodeBuilder::ImageSupplyFunction images;
    if (const ImageProvider* provider = GetLibraryImageProvider())
        images = [provider](const std::string& name) {
            return provider->GetImage(name);
        };
    const qorcore::IntrusivePtr<qorui::UI_Node> loaded = qorui::UI_NodeBuilder::LoadViewFromXML(
        read, images, resourceName_, nodeMap_.get(), customNode);
    contentView_ =
        qorcore::IntrusivePtr<qorui::UI_SubView>(dynamic_cast<qorui::UI_SubView*>(loaded.get()));
    if (!contentView_)
        return;
    const qorcore::RectT<float> bounds = contentView_->GetBounds();
    SetSize(bounds.width, bounds.height);
    ChildPushBack(contentView_);
    ConnectControls();
    contentView_->UI_SetVisible(true);
}

void AudioFilterEditorXMLView::UpdateSize(const qorcore::RectT<float>& rect) {
    if (contentView_)
        contentView_->SetSize(rect.width, rect.height);
}

void AudioFilterEditorXMLView::UI_SizeChanged() {
    AudioFilterEditorViewBase::UI_SizeChanged();
    UpdateSize(GetBounds());
}

} // namespace qoraudiofiltersui
