#include "adapters/tess_picture_toggle_button_adapter.hpp"

#include "adapters/adapter_arguments.hpp"
#include "platform/draw/image.hpp"
#include "platform/tess/assemblage.hpp"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string>

namespace qoraudiofiltersui {

using namespace adapter_arguments;
using qorcore::IntrusivePtr;
using vorlen::any_regular_t;
using vorlen::dictionary_t;
using vorlen::name_t;
using vorlen::operator""_name;

namespace {

IntrusivePtr<qorui::penrig::Image> ImageOf(const dictionary_t& arguments, name_t key,
                                           const qormarltess::FactoryToken& token) {
    const auto found = arguments.find(key);
    if (found == arguments.end())
        return nullptr;
    // Written as a name or as a text: both name the image.
    const std::string name = found->second.is<name_t>() ? found->second.cast<name_t>().c_str()
                                                        : found->second.cast<std::string>();
    return token.GetImage(name);
}

} // namespace

TessPictureToggleButtonAdapter::TessPictureToggleButtonAdapter(
    const dictionary_t& arguments, qorui::UI_Node* parent, const qormarltess::FactoryToken& token)
    : UI_QORClientWidgetTessAdapter(parent, token) {
    button_ = qorcore::MakeIntrusive<PictureToggleButton>();
    SetNode(button_);
    const auto off = ImageOf(arguments, "off_image"_name, token);
    const auto on = ImageOf(arguments, "on_image"_name, token);
    button_->SetImages(off, on);
    // The toggle is as large as its larger face.
    if (off || on) {
        float width = 0.0f, height = 0.0f;
        for (const auto& image : {off, on})
            if (image) {
                width = std::max(width, image->GetWidth());
                height = std::max(height, image->GetHeight());
            }
        natural_ = {int(std::ceil(width)), int(std::ceil(height))};
    }
    std::string identifier;
    if (vorlen::get_value(arguments, "identifier"_name, identifier))
        UI_SetNodeID(identifier);
    AddToParent();

    const name_t cell = Cell(arguments, "bind"_name);
    if (!cell)
        return;
    qormarltess::Assemblage& assemblage = token.GetAssemblage();
    PictureToggleButton* button = button_.get();
    // The state from the cell is only shown: setting it tells no listener, so nothing is
    // written back.
    assemblage.BindView(cell, [button](const any_regular_t& value) {
        if (!value.is<vorlen::empty_t>())
            button->SetState(value.cast<bool>());
    });
    qormarltess::Assemblage* target = &assemblage;
    // Held by the assemblage, so that a press after the view's bindings ended writes nothing.
    assemblage.Hold(
        button_->ConnectChanged([target, cell, button](const qorui::UI_ControlChangedMessage&) {
            target->SetCell(cell, any_regular_t(button->GetState()));
        }));
    BindEnabled(token, cell, [button](bool enabled) { button->SetEnabled(enabled); });
}

TessPictureToggleButtonAdapter::~TessPictureToggleButtonAdapter() = default;

std::pair<int, int> TessPictureToggleButtonAdapter::GetNaturalSize() const {
    return natural_;
}

} // namespace qoraudiofiltersui
