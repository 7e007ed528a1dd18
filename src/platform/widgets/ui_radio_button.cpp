#include "platform/widgets/ui_radio_button.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"

namespace qorui {

UI_RadioButton::UI_RadioButton(std::string text) : UI_Checkbox(std::move(text)) {
    SetButtonBehavior(kButtonBehaviorSetOn);
}

void UI_RadioButton::DrawContent(Penrig* penrig, const RectT<float>& rect) {
    (void)rect;
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
