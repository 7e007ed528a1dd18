#pragma once

#include "platform/widgets/ui_interactive_control_view.hpp"

namespace qorui {

/// A rotary control over a range. Dragging up or right turns it up: the whole range takes 200
/// pixels (2000 with Shift), as one interactive change; Escape cancels. The wheel and the
/// arrow keys step it by a hundredth of the range (a thousandth with Shift). A double click
/// returns it to its default value.
class UI_Knob : public UI_InteractiveControlView {
public:
    UI_Knob();

    using UI_InteractiveControlView::SetValue;
    /// Limited to the range.
    void SetValue(double value) override;
    /// A range whose ends are not finite, or are equal, is refused (false).
    bool SetRange(double min, double max);
    void SetMinValue(double min) { SetRange(min, max_); }
    void SetMaxValue(double max) { SetRange(min_, max); }
    double GetMinValue() const { return min_; }
    double GetMaxValue() const { return max_; }
    void SetDefaultValue(double value) { default_ = value; }
    double GetDefaultValue() const { return default_; }
    /// The value as a share of the range, 0 to 1.
    double GetNormalizedValue() const;

    void UI_Draw(Penrig* penrig) override;
    bool UI_DoMouseEvent(const MouseEvent& event) override;
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;

protected:
    void UI_DoDragEvent(const MouseEvent& event) override;
    void UI_DoDragEnd(bool cancelled) override;

private:
    void Step(double shares, ModifierFlags modifiers);

    double min_ = 0.0;
    double max_ = 1.0;
    double default_ = 0.0;
    double dragStartValue_ = 0.0;
    PointT<float> dragStart_;
};

namespace ui {
using ::qorui::UI_Knob;
}

} // namespace qorui
