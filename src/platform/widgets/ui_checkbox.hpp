#pragma once

#include "platform/draw/font.hpp"
#include "platform/widgets/ui_button.hpp"

#include <string>
#include <string_view>

namespace qorui {

/// A box that is checked (value 1) or not (0), with a caption to its right; an unknown value
/// shows a dash. A click toggles it; an unknown box becomes checked.
class UI_Checkbox : public UI_Button {
public:
    explicit UI_Checkbox(std::string text = {});

    using UI_Button::SetValue;
    void SetValue(bool checked) { SetValue(checked ? 1.0 : 0.0); }
    bool IsChecked() const { return !IsValueUnknown() && GetValue() >= 0.5; }

    void SetText(std::string_view text);
    const std::string& GetText() const { return text_; }
    void SetFont(const penrig::Font& font);
    /// The side of the box.
    static constexpr float kBoxSize = 14.0f;

protected:
    void DrawContent(Penrig* penrig, const RectT<float>& rect) override;
    bool DrawsFace() const override { return false; }
    /// The box, vertically centred at the left.
    RectT<float> GetMarkRect() const;
    const penrig::Font& GetFont() const { return font_; }
    /// The caption right of the mark.
    void DrawCaption(Penrig* penrig, const RectT<float>& mark);

private:
    std::string text_;
    penrig::Font font_;
};

namespace ui {
using ::qorui::UI_Checkbox;
}

} // namespace qorui
