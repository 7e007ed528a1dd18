#include "platform/widgets/ui_checkbox.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"

#include <cmath>

namespace qorui {

UI_Checkbox::UI_Checkbox(std::string text)
    : text_(std::move(text)), font_(control_drawing::GetControlFont()) {
    SetButtonBehavior(kButtonBehaviorToggle);
}

void UI_Checkbox::SetText(std::string_view text) {
    if (text == text_)
        return;
    text_ = std::string(text);
    EmitInvalidate();
}

void UI_Checkbox::SetFont(const penrig::Font& font) {
    font_ = font;
    EmitInvalidate();
}

RectT<float> UI_Checkbox::GetMarkRect() const {
    return {1, std::floor((GetFrame().height - kBoxSize) / 2), kBoxSize, kBoxSize};
}

void UI_Checkbox::DrawCaption(Penrig* penrig, const RectT<float>& mark) {
    const RectT<float> bounds = GetBounds();
    penrig->SetFont(font_);
    penrig->SetColor(IsDisabled() ? skins::GetPalette().disabledText
                                  : skins::GetDefaultTextColor());
    penrig->DrawText(text_,
                     RectT<float>::FromEdges(mark.Right() + 5, 0, bounds.Right(), bounds.height));
}

void UI_Checkbox::DrawContent(Penrig* penrig, const RectT<float>& rect) {
    (void)rect;
    const skins::Palette& palette = skins::GetPalette();
    const RectT<float> box = GetMarkRect();
    const bool on = IsChecked() || IsValueUnknown();
    skins::FaceState face;
    face.pressed = GetDownState();
    face.hovered = GetStateFlags().IsSet(kStateHovered);
    face.selected = on;
    face.enabled = !IsDisabled();
    face.focused = HasFocus() && !GetSuppressFocusDrawing();
    skins::DrawButtonFace(*penrig, box, face);
    penrig->SetPen(2.0f, IsDisabled() ? palette.disabledText
                                      : control_drawing::GetSelectedFaceMarkColor());
    penrig->SetLineCap(penrig::LineCap::kRound);
    penrig->SetLineJoin(penrig::LineJoin::kRound);
    if (IsValueUnknown()) {
        penrig->DrawLine(box.x + 4, box.y + 7, box.Right() - 4, box.y + 7);
    } else if (IsChecked()) {
        penrig->NewPath();
        penrig->MoveTo(box.x + 3.5f, box.y + 7.5f);
        penrig->LineTo(box.x + 6, box.y + 10);
        penrig->LineTo(box.x + 10.5f, box.y + 4);
        penrig->Stroke();
    }
    DrawCaption(penrig, box);
}

} // namespace qorui
