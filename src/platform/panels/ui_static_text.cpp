#include "platform/panels/ui_static_text.hpp"

#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"

namespace qorui {

UI_StaticText::UI_StaticText(std::string text)
    : text_(std::move(text)), font_(control_drawing::GetControlFont()) {}

void UI_StaticText::SetText(std::string_view text) {
    if (text == text_)
        return;
    text_ = std::string(text);
    EmitInvalidate();
}

void UI_StaticText::SetFont(const penrig::Font& font) {
    font_ = font;
    EmitInvalidate();
}

void UI_StaticText::SetFontSize(float size) {
    if (size > 0.0f) {
        font_.size = size;
        EmitInvalidate();
    }
}

void UI_StaticText::SetAlignment(penrig::HorizontalAlignment alignment) {
    alignment_ = alignment;
    EmitInvalidate();
}

void UI_StaticText::SetTruncate(bool truncate) {
    truncate_ = truncate;
    EmitInvalidate();
}

void UI_StaticText::SetTextColor(std::optional<qorcore::ColorRGBA> color) {
    color_ = color;
    EmitInvalidate();
}

float UI_StaticText::GetTextWidth() const {
    return control_drawing::MeasureText(text_, font_).width;
}

float UI_StaticText::GetBaseline() const {
    const penrig::TextMetrics m = control_drawing::MeasureText(text_.empty() ? "X" : text_, font_);
    return (GetFrame().height - m.height) / 2 + m.baseline;
}

void UI_StaticText::UI_Draw(Penrig* penrig) {
    const skins::Palette& palette = skins::GetPalette();
    penrig->SetFont(font_);
    penrig->SetColor(IsDisabled() ? palette.disabledText
                                  : color_.value_or(skins::GetDefaultTextColor()));
    penrig->DrawText(text_, GetBounds(), alignment_, penrig::VerticalAlignment::kCenter, truncate_);
    UI_ControlView::UI_Draw(penrig);
}

} // namespace qorui
