#include "platform/ui/ui_container.hpp"

#include "platform/draw/penrig.hpp"

namespace qorui {

void UI_Container::SetBackgroundColor(std::optional<qorcore::ColorRGBA> color) {
    background_ = color;
    EmitInvalidate();
}

void UI_Container::SetBorderColor(std::optional<qorcore::ColorRGBA> color) {
    border_ = color;
    EmitInvalidate();
}

void UI_Container::UI_Draw(Penrig* penrig) {
    if (background_)
        penrig->FillRect(GetBounds(), *background_);
    UI_Node::UI_Draw(penrig);
    if (border_)
        penrig->FrameRect(GetBounds(), *border_);
}

} // namespace qorui
