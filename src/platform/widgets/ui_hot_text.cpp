#include "platform/widgets/ui_hot_text.hpp"

#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"

#include <cmath>

namespace qorui {

UI_HotText::UI_HotText() : font_(control_drawing::GetControlFont()) {
    SetWantsKeyboardFocus(true);
}

void UI_HotText::SetFontSize(float size) {
    if (!(size > 0.0f) || !std::isfinite(size))
        return;
    font_.size = size;
    EmitInvalidate();
}

void UI_HotText::SetTextLabel(std::string_view label) {
    label_ = std::string(label);
    EmitInvalidate();
}

void UI_HotText::SetAlignment(penrig::HorizontalAlignment alignment) {
    alignment_ = alignment;
    EmitInvalidate();
}

float UI_HotText::GetTextWidth() const {
    std::string text = GetDisplayString();
    if (!label_.empty())
        text += " " + label_;
    return control_drawing::MeasureText(text, font_).width;
}

void UI_HotText::UI_Draw(Penrig* penrig) {
    const skins::Palette& palette = skins::GetPalette();
    const RectT<float> b = GetBounds();
    const std::string value = GetDisplayString();
    const std::string label = label_.empty() ? std::string() : " " + label_;
    penrig->SetFont(font_);
    const penrig::TextMetrics valueSize = penrig->MeasureText(value);
    const float labelWidth = penrig->MeasureStringWidth(label);
    const float total = std::min(valueSize.width + labelWidth, b.width - 2);
    float x = 1;
    if (alignment_ == penrig::HorizontalAlignment::kCenter)
        x = std::floor((b.width - total) / 2);
    else if (alignment_ == penrig::HorizontalAlignment::kRight)
        x = b.width - 1 - total;
    const bool disabled = IsDisabled();
    const qorcore::ColorRGBA hot = disabled ? palette.disabledText
                                   : GetDownState() || IsInteractiveChangeInProgress()
                                       ? skins::GetFocusColor()
                                       : skins::GetButtonColor();
    penrig->SetColor(hot);
    const float valueWidth = std::min(valueSize.width, total);
    penrig->DrawText(value, {x, 0, valueWidth + 1, b.height});
    if (!label.empty()) {
        penrig->SetColor(disabled ? palette.disabledText : skins::GetDefaultTextColor());
        penrig->DrawText(label, {x + valueWidth, 0, total - valueWidth + 1, b.height});
    }
    // The dotted underline under the value marks it as something to drag or click.
    if (!disabled) {
        const float baseline = std::floor((b.height - valueSize.height) / 2 + valueSize.baseline);
        const float y = std::min(baseline + 2, b.height - 1) + 0.5f;
        penrig->SetPen(1.0f, hot.WithAlpha(0.7f));
        penrig->SetDash({1.0f, 2.0f});
        penrig->DrawLine(std::floor(x), y, std::floor(x + valueWidth), y);
        penrig->SetDash({});
    }
    DrawFocusIfNeeded(penrig, b.Inset(1, 1));
    UI_InteractiveControlView::UI_Draw(penrig);
}

} // namespace qorui
