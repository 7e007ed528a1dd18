#include "platform/widgets/ui_picture_text_button.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"

namespace qorui {

UI_PictureTextButton::UI_PictureTextButton(std::string text)
    : text_(std::move(text)), font_(control_drawing::GetControlFont()) {}

void UI_PictureTextButton::SetText(std::string_view text) {
    if (text == text_)
        return;
    text_ = std::string(text);
    EmitInvalidate();
}

void UI_PictureTextButton::SetFont(const penrig::Font& font) {
    font_ = font;
    EmitInvalidate();
}

void UI_PictureTextButton::SetPictureTextGap(float gap) {
    gap_ = gap >= 0.0f ? gap : 0.0f;
    EmitInvalidate();
}

void UI_PictureTextButton::DrawCaption(Penrig* penrig, const RectT<float>& rect) {
    penrig->SetFont(font_);
    penrig->SetColor(IsDisabled() ? skins::GetPalette().disabledText
                                  : skins::GetDefaultTextColor());
    penrig->DrawText(text_, rect);
}

void UI_PictureTextButton::DrawContent(Penrig* penrig, const RectT<float>& rect) {
    const penrig::Image* image = GetNormalImage();
    const float pictureWidth = image ? image->GetWidth() : 0.0f;
    DrawPicture(penrig, {rect.x + 4, rect.y, pictureWidth, rect.height});
    const float left = rect.x + 4 + pictureWidth + (pictureWidth > 0 ? gap_ : 0.0f);
    DrawCaption(penrig, RectT<float>::FromEdges(left, rect.y, rect.Right() - 2, rect.Bottom()));
}

} // namespace qorui
