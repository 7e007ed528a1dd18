#pragma once

#include "controls/ruler_slider_container.hpp"
#include "platform/core/connection.hpp"
#include "platform/core/flags.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/point.hpp"
#include "platform/core/rect.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/panels/ui_static_text.hpp"
#include "platform/rulers/ruler_base.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "platform/widgets/ui_interactive_control_view.hpp"

#include <cstdint>
#include <limits>
#include <string>

namespace qoraudiofiltersui {

/// How a drag or a step of the hot text moves the value.
enum HotTextScale : std::int32_t {
    kHotTextScaleLinear = 0,  ///< the hot text's own steps of the increment
    kHotTextScaleDecibel = 1, ///< even steps of amplitude for a value in decibels
    kHotTextScaleFader = 2,   ///< even steps along a fader law
    kHotTextScaleLog = 3,     ///< even steps of the logarithm
};

/// The slider an edit number carries: the thumb's shape, or a fader.
enum SliderKnob : std::int32_t {
    kSliderKnobArrowUpLeft = 0,
    kSliderKnobArrowDownRight = 1,
    kSliderKnobArrowBidirectional = 2,
    kSliderKnobSandwich = 3,
    kSliderKnobFader = 4,
};

/// The control of one number: a label, a hot-text number that can be typed or dragged, a unit
/// label, and optionally a slider with a ruler (`RulerSliderContainer`). It keeps three forms
/// of the value together: the value in the parameter's units (this control's value), the hot
/// text's number, and the slider's position from 0 to 1, which follows the value linearly,
/// logarithmically or by the fader law.
///
/// Every user change through the hot text or the slider comes out of the control as one
/// gesture of interactive changes: begin (0), continues (1), then finish (2) or cancel (3).
/// Values set from code are limited to the range and send nothing.
///
/// A vertical control's slider has its value 0 at the top; `SetInvertSlider(true)` puts the
/// maximum there.
class EditNumber : public qorui::UI_InteractiveControlView {
public:
    static constexpr double kDefaultLogSliderMinValueThreshold = 1e-15;
    /// The slider's length when no fixed length is set.
    static constexpr float kNaturalSliderLength = 150.0f;
    /// Space between the label, the slider and the hot text, and before the unit.
    static constexpr float kPartGap = 4.0f;
    static constexpr float kUnitGap = 2.0f;

    /// The parts are made in the order label, slider (in its container), hot text, unit label.
    /// A vertical control with the sandwich or fader knob gets a vertical slider.
    EditNumber(bool horizontal, bool usesLabel, bool usesSlider, bool usesInline, SliderKnob knob);

    /// The nearest edit number among the ancestors of `node`; null when there is none.
    static EditNumber* FindEnclosing(const qorui::UI_Node* node);
    /// The same for callers that cannot work without one: a node outside any edit number throws
    /// std::logic_error ("Invalid type conversion.", localised).
    static EditNumber& GetEnclosing(const qorui::UI_Node* node);

    // Value
    /// Limited to the range; the hot text and the slider follow.
    void SetValue(double value) override;
    /// The hot text shows its placeholder and the slider is disabled until the next value.
    void SetValueUnknown() override;
    /// Steps the hot text by `amount` (through the hot text scale) and takes its value.
    void IncrementValue(double amount, qorui::ModifierFlags modifiers = {});

    // Range. A maximum below the minimum is taken as the minimum.
    void SetMinValue(double min);
    void SetMaxValue(double max);
    double GetMinValue() const { return min_value_; }
    double GetMaxValue() const { return max_value_; }
    /// Both limits and a value limited to them, in one go.
    void SetMinMaxValue(double min, double max, double value);
    /// A logarithmic slider whose minimum lies below this stays linear.
    void SetLogSliderMinValueThreshold(double threshold);
    double GetLogSliderMinValueThreshold() const { return log_slider_min_value_threshold_; }

    // Slider
    void SetSliderLogarithmic(bool logarithmic);
    bool GetSliderLogarithmic() const { return slider_logarithmic_; }
    /// 0 the logarithmic mapping, 1 the fader law.
    void SetSliderLogStyle(qorcore::Flags<unsigned int> style);
    qorcore::Flags<unsigned int> GetSliderLogStyle() const { return slider_log_style_; }
    /// Used limited to 2..10.
    void SetLogBase(double base);
    double GetLogBase() const { return log_base_; }
    void SetInvertSlider(bool invert);
    bool GetInvertSlider() const { return invert_slider_; }
    /// The slider's length in pixels along its axis; 0 for its natural length.
    void SetSliderLength(std::uint32_t length);
    std::uint32_t GetSliderLength() const { return slider_length_; }
    /// The slider takes the room the control has beyond its desired size.
    void SetSliderStretches(bool stretches);
    bool GetSliderStretches() const { return slider_stretches_; }
    /// The tint of a fader's cap; nothing for other sliders.
    void SetFaderSliderHue(double hue);
    bool GetUsesSlider() const { return uses_slider_; }
    /// Null without a slider.
    qorui::UI_Slider* GetSlider() const;

    // Hot text
    void SetDecimalPlaces(int places);
    int GetDecimalPlaces() const;
    void SetDigits(int digits);
    int GetDigits() const;
    void SetIncrement(double increment);
    double GetIncrement() const { return increment_; }
    void SetFormatFlags(unsigned flags);
    unsigned GetFormatFlags() const;
    void SetHotTextNumberAlignment(qorui::penrig::HorizontalAlignment alignment);
    qorui::penrig::HorizontalAlignment GetHotTextNumberAlignment() const;
    void SetHotTextScale(HotTextScale scale);
    HotTextScale GetHotTextScale() const { return hot_text_scale_; }
    void SetHotTextLogBase(double base);
    double GetHotTextLogBase() const { return hot_text_log_base_; }
    /// The number of steps a drag takes over the whole range (at least 1 is used).
    void SetHotTextScaleRange(double range);
    double GetHotTextScaleRange() const { return hot_text_scale_range_; }
    /// Shows the minimum as minus infinity ("-∞").
    void ShowNegativeInfinity(bool show);
    bool IsShowNegativeInfinity() const { return show_negative_infinity_; }
    float GetFontSize() const;
    qorui::UI_HotTextNumber* GetHotTextNumber() const { return hot_text_number_.get(); }

    // Text
    void SetLabel(const std::string& label);
    const std::string& GetLabel() const { return label_text_; }
    /// From the control's top to the label's baseline; 0 without a label.
    float GetLabelBaseline() const;
    /// Shown by the unit label, or after the number in inline mode.
    void SetUnitLabel(const std::string& unit);
    const std::string& GetUnitLabel() const { return unit_text_; }
    /// A fixed width of the unit label; 0 for the width of its text.
    void SetUnitLabelLength(std::uint32_t length);
    std::uint32_t GetUnitLabelLength() const { return unit_label_length_; }
    /// Captions under the two ends of a horizontal slider.
    void SetDescription1(const std::string& text);
    const std::string& GetDescription1() const;
    void SetDescription2(const std::string& text);
    const std::string& GetDescription2() const;
    /// The tool tip of the enabled control, shown at once unless the control is disabled.
    void SetToolTip(const std::string& text);
    void SetEnabledTooltip(const std::string& text);
    void SetDisabledTooltip(const std::string& text);
    const std::string& GetEnabledTooltip() const { return enabled_tool_tip_; }
    const std::string& GetDisabledTooltip() const { return disabled_tool_tip_; }
    /// Every part of the control shows `text`.
    void UI_SetToolTip(const std::string& text) override;

    // Mode
    void SetUsesInline(bool usesInline);
    bool GetUsesInline() const { return uses_inline_; }
    void SetUsesLabel(bool usesLabel);
    bool GetUsesLabel() const { return uses_label_; }
    /// Disables the hot text and the slider and shows the disabled tool tip; the control itself
    /// stays enabled, so that it still shows its tip.
    void SetDisabled(bool disabled);
    bool IsDisabled() const { return disabled_; }
    bool IsHorizontal() const { return is_horizontal_; }

    // Ruler. Setting one without a slider throws the null-pointer exception.
    void SetRuler(qorcore::IntrusivePtr<qorui::RulerBase> ruler, RulerPlacement placement,
                  RulerTextPlacement textPlacement);
    qorcore::IntrusivePtr<qorui::RulerBase> GetRuler() const;
    RulerPlacement GetRulerPlacement() const;
    RulerTextPlacement GetRulerTextPlacement() const;
    RulerSliderContainer* GetRulerSliderContainer() const { return ruler_slider_container_.get(); }

    // Layout
    /// The size the parts need, and their rectangles in it; a part that isn't used gets an
    /// empty rectangle.
    qorcore::PointT<float> GetDesiredLayout(qorcore::RectT<float>& sliderRect,
                                            qorcore::RectT<float>& hotTextRect,
                                            qorcore::RectT<float>& unitRect,
                                            qorcore::RectT<float>& labelRect,
                                            qorcore::RectT<float>& description1Rect,
                                            qorcore::RectT<float>& description2Rect) const;
    void RecalcLayout();
    /// Places the parts in `rect` (in this control's coordinates).
    void RecalcLayout(const qorcore::RectT<float>& rect);
    qorcore::PointT<float> UI_GetRecommendedSize() const;
    void UI_SizeChanged() override;
    /// Sizes the hot text for the widest number it can show, and lays out again.
    void UpdateHotTextSize();

protected:
    ~EditNumber() override;

    /// The value the slider's position stands for; 0 without a slider.
    double GetSliderValue() const;
    /// Moves the slider to the position of `value`; nothing without a slider or with an empty
    /// range.
    void SetSliderValue(double value);
    /// From the hot text's step to the amount its value moves, by the hot text scale.
    double TransformHotTextIncrementAmount(double amount) const;

private:
    void HotTextNumberChangeNotifier(const qorui::UI_InteractiveControlChangedMessage& message);
    void SliderChangeNotifier(const qorui::UI_InteractiveControlChangedMessage& message);
    /// Takes the hot text's value; false when it is unknown or the same.
    bool TakeHotTextValue();
    void SyncSlider() { SetSliderValue(GetValue()); }
    void UpdateSliderEnabled();
    void ApplyLimitsToHotText();
    qorcore::IntrusivePtr<qorui::UI_StaticText> MakeText(bool small) const;

    qorcore::IntrusivePtr<RulerSliderContainer> ruler_slider_container_;
    qorcore::IntrusivePtr<qorui::UI_HotTextNumber> hot_text_number_;
    qorcore::IntrusivePtr<qorui::UI_StaticText> unit_label_;
    qorcore::IntrusivePtr<qorui::UI_StaticText> label_;
    qorcore::IntrusivePtr<qorui::UI_StaticText> description1_;
    qorcore::IntrusivePtr<qorui::UI_StaticText> description2_;
    bool is_horizontal_;
    bool invert_slider_ = false;
    bool uses_inline_;
    bool uses_label_;
    bool uses_slider_;
    double increment_ = 1.0;
    double min_value_ = std::numeric_limits<double>::lowest();
    double max_value_ = std::numeric_limits<double>::max();
    double log_slider_min_value_threshold_ = kDefaultLogSliderMinValueThreshold;
    std::uint32_t slider_length_ = 0;
    std::uint32_t unit_label_length_ = 0;
    double log_base_ = 10.0;
    bool slider_logarithmic_ = false;
    bool slider_stretches_ = false;
    HotTextScale hot_text_scale_ = kHotTextScaleLinear;
    double hot_text_log_base_ = 10.0;
    double hot_text_scale_range_ = 300.0;
    qorcore::Flags<unsigned int> slider_log_style_;
    std::string enabled_tool_tip_;
    std::string disabled_tool_tip_;

    std::string label_text_;
    std::string unit_text_;
    bool disabled_ = false;
    bool show_negative_infinity_ = false;
    /// Where `SetSliderValue` last put the slider: while the slider stays there, its gestures
    /// keep the value as it is instead of reading it back through the mapping.
    double slider_position_ = -1.0;
    qorcore::ScopedConnection hot_text_connection_;
    qorcore::ScopedConnection slider_connection_;
};

} // namespace qoraudiofiltersui
