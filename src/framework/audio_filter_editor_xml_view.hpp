#pragma once

#include "framework/audio_filter_editor_view_base.hpp"
#include "platform/archive/ui_node_builder.hpp"
#include "platform/ui/ui_sub_view.hpp"

#include <memory>
#include <string>

namespace qoraudiofiltersui {

class ResourceManager;

/// The base of editors whose control tree is an archived node tree. `Init` loads the tree
/// through the toolkit's node builder, lets the subclass supply its custom nodes and connect
/// the loaded controls, and the content then keeps the view's size. An archive that can't be
/// read leaves an empty editor, silently.
class AudioFilterEditorXMLView : public AudioFilterEditorViewBase {
public:
    /// Loads nothing; the manager is not owned.
    AudioFilterEditorXMLView(ResourceManager* resourceManager, const std::string& resourceName,
                             std::shared_ptr<AudioFilter> filter);

    void Init() override;

    virtual ResourceManager* GetResourceManager() const { return resourceManager_; }
    /// Null here, so that the loader uses its own adapters; subclasses answer their own ids.
    virtual qorcore::IntrusivePtr<qorui::UI_Node> CreateCustomNode(const std::string& name) const;
    /// Empty here; subclasses find their controls by id.
    virtual void ConnectControls() {}
    /// Gives the content the rectangle's size when there is content.
    virtual void UpdateSize(const qorcore::RectT<float>& rect);

    void UI_SizeChanged() override;
    bool CanScrollContent() const override { return false; }

    const std::string& GetResourceName() const { return resourceName_; }
    const qorui::UI_NodeBuilder::NodeMap& GetNodeMap() const { return *nodeMap_; }
    /// Whether the archive made a panel (after `Init`).
    bool HasContent() const { return bool(contentView_); }

protected:
    ~AudioFilterEditorXMLView() override;
    qorcore::IntrusivePtr<qorui::UI_SubView> GetContentView() const { return contentView_; }

private:
    ResourceManager* resourceManager_;
    std::string resourceName_;
    std::unique_ptr<qorui::UI_NodeBuilder::NodeMap> nodeMap_;
    qorcore::IntrusivePtr<qorui::UI_SubView> contentView_;
};

} // namespace qoraudiofiltersui
