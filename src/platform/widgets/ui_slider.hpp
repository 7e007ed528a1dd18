#pragma once

#include "platform/widgets/ui_button.hpp"
#include "platform/widgets/ui_interactive_control_view.hpp"

#include <vector>

namespace qorui {

/// Which way a slider lies and where its thumb points. Below 3 the slider is horizontal.
enum SliderDirection {
    kSliderDirectionHorizontalPointingDown = 0,
    kSliderDirectionHorizontalPointingUp = 1,
    kSliderDirectionHorizontal = 2, ///< a thumb without a point
    kSliderDirectionVerticalPointingRight = 3,
    kSliderDirectionVerticalPointingLeft = 4,
    kSliderDirectionVertical = 5,
};

/// What a press on the slider's background (not on the thumb) does.
enum SliderBackgroundClickBehavior {
    kSliderBackgroundClickJumpAndDrag = 0, ///< the thumb jumps under the pointer and follows it
    kSliderBackgroundClickPage = 1,        ///< the thumb moves a page towards the pointer
    kSliderBackgroundClickIgnore = 2,      ///< nothing; the press goes to the parent
};

/// Where the thumb is and where it can go, for drawing the slider and what lines up with it.
struct DrawSliderParameters {
    RectT<float> slideable;  ///< `GetSlideableDrawRect`
    RectT<float> thumb;      ///< the thumb's frame
    float thumbPosition = 0; ///< the thumb's centre along the slider's axis
    bool horizontal = true;

    float GetThumbPosition() const { return thumbPosition; }
};

/// A slider over a normalised value from 0 to 1: 0 at the left or top end, 1 at the right or
/// bottom end. The thumb is a button node of its own (`InstallSliderThumb` replaces it); the
/// slider takes every press and drag. A drag sends begin (0), continue (1) at each change and
/// finish (2); Escape cancels it (3) and puts the value back. The arrow keys, Page Up and Page
/// Down, Home and End and the wheel each make one whole gesture. Ticks are detents: a drag
/// that comes within a few pixels of one stops on it.
class UI_Slider : public UI_InteractiveControlView {
public:
    explicit UI_Slider(SliderDirection direction = kSliderDirectionHorizontalPointingDown,
                       bool small = false);

    // Direction and size
    SliderDirection GetDirection() const { return direction_; }
    void SetDirection(SliderDirection direction);
    bool IsHorizontal() const { return IsDirectionHorizontal(direction_); }
    static bool IsDirectionHorizontal(SliderDirection direction) { return int(direction) < 3; }
    /// The thickness across the axis that the slider is drawn for; variation 1 is the small one.
    static float GetDefaultSize(SliderDirection direction, int variation = 0);

    // Value
    using UI_InteractiveControlView::SetValue;
    /// Limited to 0..1.
    void SetValue(double value) override;
    double GetNormalizedValue() const { return GetValue(); }
    void SetNormalizedValue(double value) { SetValue(value); }

    // Thumb
    /// Makes `thumb` the slider's thumb, in place of the one before. A null thumb throws
    /// std::invalid_argument.
    void InstallSliderThumb(IntrusivePtr<UI_Button> thumb);
    UI_Button* GetSliderThumb() const { return thumb_.get(); }
    /// The thumb's length along the axis.
    virtual float GetMinThumbSize() const;
    RectT<float> GetThumbRect() const;

    // Geometry
    /// Where the thumb's centre travels along the axis, and the groove across it.
    RectT<float> GetSlideableDrawRect() const;
    /// The groove's inset across the axis as a share of the thickness (0 to 0.45); negative for
    /// the look's own groove.
    void SetSlideableDrawInsetPercent(float percent);
    float GetSlideableDrawInsetPercent() const { return insetPercent_; }
    DrawSliderParameters GetDrawSliderParameters() const;
    /// From the value to the thumb's centre along the axis, and back (limited to 0..1).
    float ValueToPosition(double value) const;
    double PositionToValue(float position) const;

    // Behaviour
    /// Detents, as values from 0 to 1.
    void SetTicks(std::vector<double> ticks);
    const std::vector<double>& GetTicks() const { return ticks_; }
    void SetLeftClickBackgroundClickBehavior(int behavior);
    void SetRightClickBackgroundClickBehavior(int behavior);
    int GetLeftClickBackgroundClickBehavior() const { return leftBehavior_; }
    int GetRightClickBackgroundClickBehavior() const { return rightBehavior_; }
    void SetTreatAltLeftClickBackgroundClickAsARightClick(bool on) { altLeftIsRight_ = on; }
    /// Presses beyond the ends of the travel, where only the thumb's overhang can be, are left
    /// to the parent.
    void SetIgnoreThumbOverhangAreaWhenClickingOnSlider(bool on) { ignoreOverhang_ = on; }
    /// Shift (Control) held during a drag moves the thumb a tenth as fast; both, a hundredth.
    void SetIsShiftModifierAFactor(bool on) { shiftIsFactor_ = on; }
    void SetIsCmdModifierAFactor(bool on) { cmdIsFactor_ = on; }

    /// Moves the thumb for a drag to `pointer` (in the slider's coordinates) and sends a
    /// continue when the value changed.
    virtual void DoScrollThumb(const PointT<float>& pointer, ModifierFlags modifiers);
    /// One step of the wheel or the keys: `up` moves the thumb up or to the right, by `amount`
    /// hundredths of the range, or thousandths with `modifier`. One whole gesture.
    virtual void Scroll(bool up, bool modifier, double amount);

    void UI_Draw(Penrig* penrig) override;
    bool UI_DoMouseEvent(const MouseEvent& event) override;
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;
    void UI_SizeChanged() override;

protected:
    void UI_DoDragEvent(const MouseEvent& event) override;
    void UI_DoDragEnd(bool cancelled) override;
    /// Draws the groove and the filled part up to the thumb.
    virtual void DrawTrack(Penrig* penrig, const DrawSliderParameters& parameters);

private:
    float Along(const PointT<float>& p) const { return IsHorizontal() ? p.x : p.y; }
    float Length() const;
    float Travel() const;
    void LayoutThumb();
    /// One complete gesture to `value`.
    void JumpTo(double value, ModifierFlags modifiers);
    void BackgroundPress(const MouseEvent& event, int behavior);

    SliderDirection direction_;
    bool small_;
    IntrusivePtr<UI_Button> thumb_;
    std::vector<double> ticks_;
    float insetPercent_ = -1.0f;
    int leftBehavior_ = kSliderBackgroundClickJumpAndDrag;
    int rightBehavior_ = kSliderBackgroundClickIgnore;
    bool altLeftIsRight_ = false;
    bool ignoreOverhang_ = false;
    bool shiftIsFactor_ = false;
    bool cmdIsFactor_ = false;
    // The drag: the unlimited value the pointer stands for, and where it was last.
    double dragValue_ = 0.0;
    float lastAlong_ = 0.0f;
};

using UI_SliderT = UI_Slider;

namespace ui {
using ::qorui::DrawSliderParameters;
using ::qorui::UI_Slider;
} // namespace ui

} // namespace qorui
