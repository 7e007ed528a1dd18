#pragma once

#include "platform/core/color_rgba.hpp"
#include "platform/draw/font.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/widgets/ui_control_view.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace qorui {

/// One line of text: a caption, a unit or a description. Too long a text is shortened with
/// "…" unless truncation is off.
class UI_StaticText : public UI_ControlView {
public:
    explicit UI_StaticText(std::string text = {});

    using UI_ControlView::SetValue;
    /// The text; the same as `SetText`.
    void SetValue(std::string_view text) { SetText(text); }
    void SetText(std::string_view text);
    const std::string& GetText() const { return text_; }

    void SetFont(const penrig::Font& font);
    const penrig::Font& GetFont() const { return font_; }
    void SetFontSize(float size);
    void SetAlignment(penrig::HorizontalAlignment alignment);
    penrig::HorizontalAlignment GetAlignment() const { return alignment_; }
    void SetTruncate(bool truncate);
    /// A colour of its own; by default the look's text colour.
    void SetTextColor(std::optional<qorcore::ColorRGBA> color);
    const std::optional<qorcore::ColorRGBA>& GetTextColor() const { return color_; }

    /// The width of the whole text in the control's font, measured without a window.
    float GetTextWidth() const;
    /// From the top of the control to the text's baseline, as `UI_Draw` places it.
    float GetBaseline() const;

    void UI_Draw(Penrig* penrig) override;

private:
    std::string text_;
    penrig::Font font_;
    penrig::HorizontalAlignment alignment_ = penrig::HorizontalAlignment::kLeft;
    std::optional<qorcore::ColorRGBA> color_;
    bool truncate_ = true;
};

namespace ui {
using ::qorui::UI_StaticText;
}

} // namespace qorui
