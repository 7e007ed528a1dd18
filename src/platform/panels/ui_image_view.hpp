#pragma once

#include "platform/draw/image.hpp"
#include "platform/ui/ui_node.hpp"

namespace qorui {

/// Shows an image at its own size, centred and placed on whole pixels, or scaled to fill the
/// node. Without an image it draws nothing.
class UI_ImageView : public UI_Node {
public:
    explicit UI_ImageView(IntrusivePtr<penrig::Image> image = {});

    void SetImage(IntrusivePtr<penrig::Image> image);
    const penrig::Image* GetImage() const { return image_.get(); }
    void SetScalesToFit(bool scales);
    void SetAlpha(float alpha);

    void UI_Draw(Penrig* penrig) override;

private:
    IntrusivePtr<penrig::Image> image_;
    bool scales_ = false;
    float alpha_ = 1.0f;
};

namespace ui {
using ::qorui::UI_ImageView;
}

} // namespace qorui
