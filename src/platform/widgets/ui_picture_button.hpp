#pragma once

#include "platform/draw/image.hpp"
#include "platform/widgets/ui_button.hpp"

#include <functional>
#include <string>

namespace qorui {

/// A button that shows an image: its normal image, its down image while pressed (or while a
/// toggle is on), and the normal image faded when disabled. Images come either directly or by
/// name from an image supply function, which is asked for "<name>" and "<name>_Down".
class UI_PictureButton : public UI_Button {
public:
    using ImageSupplyFunction = std::function<IntrusivePtr<penrig::Image>(const std::string& name)>;

    UI_PictureButton();

    void SetImages(IntrusivePtr<penrig::Image> normal, IntrusivePtr<penrig::Image> down = {});
    void SetImageName(std::string name);
    const std::string& GetImageName() const { return imageName_; }
    void SetImageSupplyFunction(ImageSupplyFunction supply);
    /// Draws the push-button face under the image (off by default: the image is the look).
    void SetDrawsFace(bool draws);

    const penrig::Image* GetNormalImage() const { return normal_.get(); }
    const penrig::Image* GetDownImage() const { return down_.get(); }
    /// Whether the down image is the one shown now.
    virtual bool IsShowingDownImage() const;

protected:
    void DrawContent(Penrig* penrig, const RectT<float>& rect) override;
    bool DrawsFace() const override { return drawsFace_; }
    /// Draws the current image centred in `rect`; the rectangle it took.
    RectT<float> DrawPicture(Penrig* penrig, const RectT<float>& rect);

private:
    void LoadImages();

    ImageSupplyFunction supply_;
    std::string imageName_;
    IntrusivePtr<penrig::Image> normal_;
    IntrusivePtr<penrig::Image> down_;
    bool drawsFace_ = false;
};

namespace ui {
using ::qorui::UI_PictureButton;
}

} // namespace qorui
