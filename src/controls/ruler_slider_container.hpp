#pragma once

#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/rect.hpp"
#include "platform/rulers/ruler_base.hpp"
#include "platform/ui/ui_sub_view.hpp"
#include "platform/widgets/ui_slider.hpp"

#include <cstdint>
#include <string>

namespace qoraudiofiltersui {

/// Which sides of the slider's groove carry the ruler's ticks.
enum RulerPlacement : std::int32_t {
    kRulerPlacementLeftTop = 0,
    kRulerPlacementRightBottom = 1,
    kRulerPlacementBoth = 2,
};

/// Where the ruler's numbers go: nowhere, or on the left (above) or the right (below) of the
/// slider. A horizontal slider keeps its numbers above it, since it sits at the container's
/// bottom.
enum RulerTextPlacement : std::int32_t {
    kRulerTextPlacementNone = 0,
    kRulerTextPlacementLeftTop = 1,
    kRulerTextPlacementRightBottom = 2,
};

/// A slider with an optional ruler whose ticks line up with the travel of the slider's thumb.
/// The slider is laid out inside the container (`GetSliderRect`); the ruler's pixels are the
/// ends of the slider's slideable rectangle, and its ticks cross the groove on the sides the
/// placement names, in container coordinates.
class RulerSliderContainer : public qorui::UI_SubView {
public:
    /// A null slider throws the null-pointer exception.
    explicit RulerSliderContainer(qorcore::IntrusivePtr<qorui::UI_Slider> slider);

    /// A null ruler removes it. The ruler is turned to the slider's direction.
    void SetRuler(qorcore::IntrusivePtr<qorui::RulerBase> ruler, RulerPlacement placement,
                  RulerTextPlacement textPlacement);
    const qorcore::IntrusivePtr<qorui::RulerBase>& GetRuler() const { return ruler_; }
    qorui::UI_Slider* GetSlider() const { return slider_.get(); }
    void SetRulerPlacement(RulerPlacement placement);
    RulerPlacement GetRulerPlacement() const { return rulerPlacement_; }
    void SetRulerTextPlacement(RulerTextPlacement placement);
    RulerTextPlacement GetRulerTextPlacement() const { return rulerTextPlacement_; }

    /// The container's thickness across the slider: the slider's, the numbers' room and the
    /// newer look's margin.
    float GetBestSize() const;
    /// The slider's thickness: 18 for a fader, otherwise the toolkit's for its direction.
    float GetSliderDefaultSize() const;
    /// The slider's frame inside `bounds`.
    qorcore::RectT<float> GetSliderRect(const qorcore::RectT<float>& bounds) const;
    /// Lays the slider out again and matches the ruler to it.
    void RecalcLayout();
    void SetSlideableDrawInsetPercent(float percent);
    static bool IsDirectionHorizontal(qorui::SliderDirection direction) {
        return qorui::UI_Slider::IsDirectionHorizontal(direction);
    }

    void UI_Draw(qorui::Penrig* penrig) override;
    /// The slider and its thumb show the tip, as they cover the container.
    void UI_SetToolTip(const std::string& text) override;
    void UI_SizeChanged() override;

protected:
    /// Places the slider in `bounds` and sets the ruler's pixel range and tick extents from its
    /// slideable rectangle. Without a ruler only the slider is placed.
    virtual void UpdateSize(const qorcore::RectT<float>& bounds);

private:
    bool IsHorizontal() const { return slider_->IsHorizontal(); }
    void DrawRuler(qorui::Penrig& penrig) const;

    qorcore::IntrusivePtr<qorui::UI_Slider> slider_;
    qorcore::IntrusivePtr<qorui::RulerBase> ruler_;
    bool ticksAtStart_ = true;
    bool ticksAtEnd_ = false;
    RulerPlacement rulerPlacement_ = kRulerPlacementLeftTop;
    RulerTextPlacement rulerTextPlacement_ = kRulerTextPlacementNone;
};

} // namespace qoraudiofiltersui
