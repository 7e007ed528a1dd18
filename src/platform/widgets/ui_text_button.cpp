#include "platform/widgets/ui_text_button.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"

#include <cmath>

namespace qorui {

namespace {
constexpr float kTextMargin = 10.0f;
}

UI_TextButton::UI_TextButton(std::string text)
    : text_(std::move(text)), font_(control_drawing::GetControlFont()) {}

void UI_TextButton::SetText(std::string_view text) {
    if (text == text_)
        return;
    text_ = std::string(text);
    EmitInvalidate();
}

void UI_TextButton::SetFont(const penrig::Font& font) {
    font_ = font;
    EmitInvalidate();
}

float UI_TextButton::GetBestWidth() const {
    return std::ceil(control_drawing::MeasureText(text_, font_).width) + 2 * kTextMargin;
}

void UI_TextButton::DrawContent(Penrig* penrig, const RectT<float>& rect) {
    const skins::Palette& palette = skins::GetPalette();
    penrig->SetFont(font_);
    penrig->SetColor(IsDisabled()       ? palette.disabledText
                     : IsSelectedLook() ? control_drawing::GetSelectedFaceMarkColor()
                                        : palette.buttonText);
    // A pressed face shows its caption one pixel lower, as a real key would.
    const float shift = GetDownState() ? 1.0f : 0.0f;
    penrig->DrawText(text_, rect.Inset(4, 0).Offset(0, shift),
                     penrig::HorizontalAlignment::kCenter);
}

UI_ToggleButton::UI_ToggleButton(std::string text) : UI_TextButton(std::move(text)) {
    SetButtonBehavior(kButtonBehaviorToggle);
}

} // namespace qorui
