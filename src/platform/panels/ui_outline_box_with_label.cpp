#include "platform/panels/ui_outline_box_with_label.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/panels/ui_outline_box.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"

#include <cmath>

namespace qorui {

namespace {
constexpr float kLabelIndent = 10.0f;
constexpr float kLabelPadding = 4.0f;
} // namespace

UI_OutlineBoxWithLabel::UI_OutlineBoxWithLabel(std::string label)
    : label_(std::move(label)), font_(control_drawing::GetControlFont()) {
    font_.bold = true;
}

void UI_OutlineBoxWithLabel::SetLabel(std::string_view label) {
    label_ = std::string(label);
    EmitInvalidate();
}

void UI_OutlineBoxWithLabel::SetFont(const penrig::Font& font) {
    font_ = font;
    EmitInvalidate();
}

float UI_OutlineBoxWithLabel::GetContentTop() const {
    return std::ceil(control_drawing::MeasureText("Xg", font_).height) + 4;
}

void UI_OutlineBoxWithLabel::UI_Draw(Penrig* penrig) {
    const RectT<float> b = GetBounds();
    penrig->SetFont(font_);
    const penrig::TextMetrics text = penrig->MeasureText(label_.empty() ? "Xg" : label_);
    const float frameTop = std::floor(text.height / 2);
    const float maxLabel = std::max(0.0f, b.width - 2 * kLabelIndent - 2 * kLabelPadding);
    const float labelWidth = label_.empty() ? 0.0f : std::min(std::ceil(text.width), maxLabel);
    const float gapLeft = kLabelIndent;
    const float gapRight = label_.empty() ? gapLeft : gapLeft + labelWidth + 2 * kLabelPadding;
    UI_OutlineBox::DrawOutline(penrig, RectT<float>::FromEdges(0, frameTop, b.width, b.height),
                               gapLeft, gapRight);
    if (!label_.empty()) {
        penrig->SetColor(skins::GetDefaultTextColor());
        penrig->DrawText(label_, {gapLeft + kLabelPadding, 0, labelWidth + 1, text.height});
    }
    UI_SubView::UI_Draw(penrig);
}

} // namespace qorui
