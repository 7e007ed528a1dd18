#include "platform/panels/ui_image_view.hpp"

#include "platform/draw/penrig.hpp"

#include <algorithm>
#include <cmath>

namespace qorui {

UI_ImageView::UI_ImageView(IntrusivePtr<penrig::Image> image) : image_(std::move(image)) {}

void UI_ImageView::SetImage(IntrusivePtr<penrig::Image> image) {
    image_ = std::move(image);
    EmitInvalidate();
}

void UI_ImageView::SetScalesToFit(bool scales) {
    scales_ = scales;
    EmitInvalidate();
}

void UI_ImageView::SetAlpha(float alpha) {
    alpha_ = std::isfinite(alpha) ? std::clamp(alpha, 0.0f, 1.0f) : 1.0f;
    EmitInvalidate();
}

void UI_ImageView::UI_Draw(Penrig* penrig) {
    if (image_) {
        const RectT<float> b = GetBounds();
        if (scales_) {
            penrig->DrawImage(*image_, b, alpha_);
        } else {
            const float w = image_->GetWidth();
            const float h = image_->GetHeight();
            penrig->DrawImage(*image_,
                              {std::floor((b.width - w) / 2), std::floor((b.height - h) / 2), w, h},
                              alpha_);
        }
    }
    UI_Node::UI_Draw(penrig);
}

} // namespace qorui
