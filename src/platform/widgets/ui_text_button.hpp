#pragma once

#include "platform/draw/font.hpp"
#include "platform/widgets/ui_button.hpp"

#include <string>
#include <string_view>

namespace qorui {

/// A push button with a centred caption.
class UI_TextButton : public UI_Button {
public:
    explicit UI_TextButton(std::string text = {});

    void SetText(std::string_view text);
    const std::string& GetText() const { return text_; }
    void SetFont(const penrig::Font& font);
    const penrig::Font& GetFont() const { return font_; }
    /// The width that shows the whole caption with the face's margins.
    float GetBestWidth() const;

protected:
    void DrawContent(Penrig* penrig, const RectT<float>& rect) override;

private:
    std::string text_;
    penrig::Font font_;
};

/// A text button that stays in when clicked and comes out at the next click.
class UI_ToggleButton : public UI_TextButton {
public:
    explicit UI_ToggleButton(std::string text = {});
};

namespace ui {
using ::qorui::UI_TextButton;
using ::qorui::UI_ToggleButton;
} // namespace ui

} // namespace qorui
