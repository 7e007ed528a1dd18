#include "platform/widgets/ui_disclosure_triangle_button.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"

#include <cmath>

namespace qorui {

namespace {
constexpr float kTriangleBox = 12.0f;
}

UI_DisclosureTriangleButton::UI_DisclosureTriangleButton(std::string text)
    : UI_PictureTextButton(std::move(text)) {
    SetButtonBehavior(kButtonBehaviorToggle);
}

void UI_DisclosureTriangleButton::DrawContent(Penrig* penrig, const RectT<float>& rect) {
    const skins::Palette& palette = skins::GetPalette();
    const float top = std::floor(rect.y + (rect.height - kTriangleBox) / 2);
    const RectT<float> box(rect.x + 2, top, kTriangleBox, kTriangleBox);
    penrig->NewPath();
    if (IsOpen()) {
        penrig->MoveTo(box.x + 2, box.y + 4);
        penrig->LineTo(box.Right() - 2, box.y + 4);
        penrig->LineTo(box.x + 6, box.y + 9);
    } else {
        penrig->MoveTo(box.x + 4, box.y + 2);
        penrig->LineTo(box.x + 9, box.y + 6);
        penrig->LineTo(box.x + 4, box.Bottom() - 2);
    }
    penrig->ClosePath();
    penrig->SetColor(IsDisabled()     ? palette.disabledText
                     : GetDownState() ? skins::GetButtonColor()
                                      : skins::GetDefaultTextColor());
    penrig->Fill();
    if (HasFocus() && !GetSuppressFocusDrawing())
        skins::DrawFocusRing(*penrig, box);
    DrawCaption(penrig, RectT<float>::FromEdges(box.Right() + GetPictureTextGap(), rect.y,
                                                rect.Right(), rect.Bottom()));
}

} // namespace qorui
