#include "platform/tess/ui_tess_sub_view.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"

namespace qormarltess {

void UI_TessSubView::SetDrawOutline(bool draw) {
    if (draw == drawOutline_)
        return;
    drawOutline_ = draw;
    EmitInvalidate();
}

void UI_TessSubView::UI_Draw(qorui::Penrig* penrig) {
    qorui::UI_SubView::UI_Draw(penrig);
    if (!drawOutline_)
        return;
    const auto bounds = GetBounds();
    penrig->FrameRect(bounds, qorui::skins::GetDividerColor());
}

} // namespace qormarltess
