#include "platform/widgets/ui_picture_button.hpp"

#include "platform/draw/penrig.hpp"

#include <cmath>

namespace qorui {

UI_PictureButton::UI_PictureButton() = default;

void UI_PictureButton::SetImages(IntrusivePtr<penrig::Image> normal,
                                 IntrusivePtr<penrig::Image> down) {
    normal_ = std::move(normal);
    down_ = std::move(down);
    EmitInvalidate();
}

void UI_PictureButton::SetImageName(std::string name) {
    imageName_ = std::move(name);
    LoadImages();
}

void UI_PictureButton::SetImageSupplyFunction(ImageSupplyFunction supply) {
    supply_ = std::move(supply);
    LoadImages();
}

void UI_PictureButton::SetDrawsFace(bool draws) {
    drawsFace_ = draws;
    EmitInvalidate();
}

void UI_PictureButton::LoadImages() {
    if (!supply_ || imageName_.empty())
        return;
    // Asked in this order: the normal look first.
    IntrusivePtr<penrig::Image> normal = supply_(imageName_);
    SetImages(std::move(normal), supply_(imageName_ + "_Down"));
}

bool UI_PictureButton::IsShowingDownImage() const {
    return GetDownState() || IsSelectedLook();
}

RectT<float> UI_PictureButton::DrawPicture(Penrig* penrig, const RectT<float>& rect) {
    const bool down = IsShowingDownImage();
    const penrig::Image* image = down && down_ ? down_.get() : normal_.get();
    if (!image)
        return {rect.x, rect.y, 0, 0};
    // Whole-pixel placement keeps the artwork's pixels on the device grid.
    const float w = image->GetWidth();
    const float h = image->GetHeight();
    const RectT<float> at(std::floor(rect.x + (rect.width - w) / 2),
                          std::floor(rect.y + (rect.height - h) / 2), w, h);
    float alpha = IsDisabled() ? 0.4f : 1.0f;
    // Without artwork for the down look the normal image dims while pressed.
    if (down && !down_ && !DrawsFace())
        alpha *= 0.6f;
    penrig->DrawImage(*image, at, alpha);
    return at;
}

void UI_PictureButton::DrawContent(Penrig* penrig, const RectT<float>& rect) {
    DrawPicture(penrig, rect);
}

} // namespace qorui
