#include "platform/panels/ui_divider.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"

#include <cmath>

namespace qorui {

void UI_Divider::UI_Draw(Penrig* penrig) {
    const RectT<float> b = GetBounds();
    penrig->SetPen(1.0f, skins::GetDividerColor());
    if (IsHorizontal()) {
        const float y = std::floor(b.height / 2) + 0.5f;
        penrig->DrawLine(0, y, b.width, y);
    } else {
        const float x = std::floor(b.width / 2) + 0.5f;
        penrig->DrawLine(x, 0, x, b.height);
    }
    UI_ControlView::UI_Draw(penrig);
}

} // namespace qorui
