#include "platform/panels/ui_outline_box.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"

#include <algorithm>
#include <cmath>

namespace qorui {

void UI_OutlineBox::DrawOutline(Penrig* penrig, const RectT<float>& rect, float gapLeft,
                                float gapRight) {
    const RectT<float> r = rect.Inset(0.5f, 0.5f);
    const float radius = std::min(skins::GetPalette().cornerRadius, 4.0f);
    penrig->SetPen(1.0f, skins::GetDividerColor());
    penrig->NewPath();
    if (gapRight > gapLeft) {
        // Start at the gap's right end and go round to its left end.
        penrig->MoveTo(std::floor(gapRight) + 0.5f, r.y);
        penrig->LineTo(r.Right() - radius, r.y);
        penrig->Arc(r.Right() - radius, r.y + radius, radius, -1.5707963f, 0);
        penrig->LineTo(r.Right(), r.Bottom() - radius);
        penrig->Arc(r.Right() - radius, r.Bottom() - radius, radius, 0, 1.5707963f);
        penrig->LineTo(r.x + radius, r.Bottom());
        penrig->Arc(r.x + radius, r.Bottom() - radius, radius, 1.5707963f, 3.1415927f);
        penrig->LineTo(r.x, r.y + radius);
        penrig->Arc(r.x + radius, r.y + radius, radius, 3.1415927f, 4.712389f);
        penrig->LineTo(std::floor(gapLeft) + 0.5f, r.y);
    } else {
        penrig->FormRoundedRect(r, radius);
    }
    penrig->Stroke();
}

void UI_OutlineBox::UI_Draw(Penrig* penrig) {
    DrawOutline(penrig, GetBounds());
    UI_ControlView::UI_Draw(penrig);
}

} // namespace qorui
