#pragma once

#include "platform/draw/font.hpp"
#include "platform/widgets/ui_picture_button.hpp"

#include <string>
#include <string_view>

namespace qorui {

/// A picture button with a caption beside the picture.
class UI_PictureTextButton : public UI_PictureButton {
public:
    explicit UI_PictureTextButton(std::string text = {});

    void SetText(std::string_view text);
    const std::string& GetText() const { return text_; }
    void SetFont(const penrig::Font& font);
    const penrig::Font& GetFont() const { return font_; }
    /// The gap between picture and caption.
    void SetPictureTextGap(float gap);

protected:
    void DrawContent(Penrig* penrig, const RectT<float>& rect) override;
    /// Draws the caption left-aligned in `rect`.
    void DrawCaption(Penrig* penrig, const RectT<float>& rect);
    float GetPictureTextGap() const { return gap_; }

private:
    std::string text_;
    penrig::Font font_;
    float gap_ = 4.0f;
};

namespace ui {
using ::qorui::UI_PictureTextButton;
}

} // namespace qorui
