#include "controls/color_view.hpp"

#include "platform/draw/penrig.hpp"

namespace qoraudiofiltersui {

void ColorView::SetValue(const qorcore::ColorRGBA& color) {
    const qorcore::ColorRGBA limited = color.Clamped();
    if (limited == color_)
        return;
    color_ = limited;
    EmitInvalidate();
}

void ColorView::UI_Draw(qorui::Penrig* penrig) {
    penrig->FillRect(GetBounds(), color_);
    UI_SubView::UI_Draw(penrig);
}

} // namespace qoraudiofiltersui
