#include "platform/widgets/ui_radio_button.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"

#include <cmath>

namespace qorui {

UI_RadioButton::UI_RadioButton(std::string text) : UI_Checkbox(std::move(text)) {
    SetButtonBehavior(kButtonBehaviorSetOn);
}

void UI_RadioButton::SetButtonStyle(bool buttonStyle) {
    buttonStyle_ = buttonStyle;
    EmitInvalidate();
}

float UI_RadioButton::GetButtonStyleWidth() const {
    return std::ceil(control_drawing::MeasureText(GetText(), GetFont()).width) + 16.0f;
}

void UI_RadioButton::DrawButtonStyle(Penrig* penrig) {
    const skins::Palette& palette = skins::GetPalette();
    const RectT<float> bounds = GetBounds();
    skins::FaceState face;
    face.pressed = GetDownState();
    face.hovered = GetStateFlags().IsSet(kStateHovered);
    face.selected = IsChecked();
    face.enabled = !IsDisabled();
    face.focused = HasFocus() && !GetSuppressFocusDrawing();
    skins::DrawButtonFace(*penrig, bounds.Inset(0.5f, 0.5f), face);
    penrig->SetFont(GetFont());
    penrig->SetColor(IsDisabled()  ? palette.disabledText
                     : IsChecked() ? control_drawing::GetSelectedFaceMarkColor()
                                   : palette.buttonText);
    penrig->DrawText(GetText(), bounds.Inset(4, 0), penrig::HorizontalAlignment::kCenter);
}

void UI_RadioButton::DrawContent(Penrig* penrig, const RectT<float>& rect) {
    (void)rect;
    if (buttonStyle_) {
        DrawButtonStyle(penrig);
        return;
    }
    const skins::Palette& palette = skins::GetPalette();
    const RectT<float> box = GetMarkRect();
    const bool on = IsChecked();
    const bool disabled = IsDisabled();
    penrig->FormEllipse(box.Inset(0.5f, 0.5f));
    penrig->SetColor(on && !disabled  ? skins::GetButtonColor()
                     : GetDownState() ? palette.buttonFacePressedTop
                                      : palette.buttonFaceTop);
    penrig->Fill(true);
    penrig->SetPen(1.0f, palette.buttonBorder);
    penrig->Stroke();
    if (on) {
        penrig->FormEllipse(box.Inset(4.5f, 4.5f));
        penrig->SetColor(disabled ? palette.disabledText : palette.selectionText);
        penrig->Fill();
    }
    if (HasFocus() && !GetSuppressFocusDrawing())
        skins::DrawFocusRing(*penrig, box);
    DrawCaption(penrig, box);
}

} // namespace qorui
