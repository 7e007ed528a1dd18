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
    double GetMinValue() const { return minValue_; }
    double GetMaxValue() const { return maxValue_; }
    /// Both limits and a value limited to them, in one go.
    void SetMinMaxValue(double min, double max, double value);
    /// A logarithmic slider whose minimum lies below this stays linear.
    void SetLogSliderMinValueThreshold(double threshold);
    double GetLogSliderMinValueThreshold() const { return logSliderMinValueThreshold_; }

    // Slider
    void SetSliderLogarithmic(bool logarithmic);
    bool GetSliderLogarithmic() const { return sliderLogarithmic_; }
    /// 0 the logarithmic mapping, 1 the fader law.
    void SetSliderLogStyle(qorcore::Flags<unsigned int> style);
    qorcore::Flags<unsigned int> GetSliderLogStyle() const { return sliderLogStyle_; }
    /// Used limited to 2..10.
    void SetLogBase(double base);
    double GetLogBase() const { return logBase_; }
    void SetInvertSlider(bool invert);
    bool GetInvertSlider() const { return invertSlider_; }
    /// The slider's length in pixels along its axis; 0 for its natural length.
    void SetSliderLength(std::uint32_t length);
    std::uint32_t GetSliderLength() const { return sliderLength_; }
    /// The slider takes the room the control has beyond its desired size.
    void SetSliderStretches(bool stretches);
    bool GetSliderStretches() const { return sliderStretches_; }
    /// The tint of a fader's cap; nothing for other sliders.
    void SetFaderSliderHue(double hue);
    bool GetUsesSlider() const { return usesSlider_; }
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
    HotTextScale GetHotTextScale() const { return hotTextScale_; }
    void SetHotTextLogBase(double base);
    double GetHotTextLogBase() const { return hotTextLogBase_; }
    /// The number of steps a drag takes over the whole range (at least 1 is used).
    void SetHotTextScaleRange(double range);
    double GetHotTextScaleRange() const { return hotTextScaleRange_; }
    /// Shows the minimum as minus infinity ("-∞").
    void ShowNegativeInfinity(bool show);
    bool IsShowNegativeInfinity() const { return showNegativeInfinity_; }
    float GetFontSize() const;
    qorui::UI_HotTextNumber* GetHotTextNumber() const { return hotTextNumber_.get(); }

    // Text
    void SetLabel(const std::string& label);
    const std::string& GetLabel() const { return labelText_; }
    /// From the control's top to the label's baseline; 0 without a label.
    float GetLabelBaseline() const;
    /// Shown by the unit label, or after the number in inline mode.
    void SetUnitLabel(const std::string& unit);
    const std::string& GetUnitLabel() const { return unitText_; }
    /// A fixed width of the unit label; 0 for the width of its text.
    void SetUnitLabelLength(std::uint32_t length);
    std::uint32_t GetUnitLabelLength() const { return unitLabelLength_; }
    /// Captions under the two ends of a horizontal slider.
    void SetDescription1(const std::string& text);
    const std::string& GetDescription1() const;
    void SetDescription2(const std::string& text);
    const std::string& GetDescription2() const;
    /// The tool tip of the enabled control, shown at once unless the control is disabled.
    void SetToolTip(const std::string& text);
    void SetEnabledTooltip(const std::string& text);
    void SetDisabledTooltip(const std::string& text);
    const std::string& GetEnabledTooltip() const { return enabledToolTip_; }
    const std::string& GetDisabledTooltip() const { return disabledToolTip_; }
    /// Every part of the control shows `text`.
    void UI_SetToolTip(const std::string& text) override;

    // Mode
    void SetUsesInline(bool usesInline);
    bool GetUsesInline() const { return usesInline_; }
    void SetUsesLabel(bool usesLabel);
    bool GetUsesLabel() const { return usesLabel_; }
    /// Disables the hot text and the slider and shows the disabled tool tip; the control itself
    /// stays enabled, so that it still shows its tip.
    void SetDisabled(bool disabled);
    bool IsDisabled() const { return disabled_; }
    bool IsHorizontal() const { return isHorizontal_; }

    // Ruler. Setting one without a slider throws the null-pointer exception.
    void SetRuler(qorcore::IntrusivePtr<qorui::RulerBase> ruler, RulerPlacement placement,
                  RulerTextPlacement textPlacement);
    qorcore::IntrusivePtr<qorui::RulerBase> GetRuler() const;
    RulerPlacement GetRulerPlacement() const;
    RulerTextPlacement GetRulerTextPlacement() const;
    RulerSliderContainer* GetRulerSliderContainer() const { return rulerSliderContainer_.get(); }

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

    qorcore::IntrusivePtr<RulerSliderContainer> rulerSliderContainer_;
    qorcore::IntrusivePtr<qorui::UI_HotTextNumber> hotTextNumber_;
    qorcore::IntrusivePtr<qorui::UI_StaticText> unitLabel_;
    qorcore::IntrusivePtr<qorui::UI_StaticText> label_;
    qorcore::IntrusivePtr<qorui::UI_StaticText> description1_;
    qorcore::IntrusivePtr<qorui::UI_StaticText> description2_;
    bool isHorizontal_;
    bool invertSlider_ = false;
    bool usesInline_;
    bool usesLabel_;
    bool usesSlider_;
    double increment_ = 1.0;
    double minValue_ = std::numeric_limits<double>::lowest();
    double maxValue_ = std::numeric_limits<double>::max();
    double logSliderMinValueThreshold_ = kDefaultLogSliderMinValueThreshold;
    std::uint32_t sliderLength_ = 0;
    std::uint32_t unitLabelLength_ = 0;
    double logBase_ = 10.0;
    bool sliderLogarithmic_ = false;
    bool sliderStretches_ = false;
    HotTextScale hotTextScale_ = kHotTextScaleLinear;
    double hotTextLogBase_ = 10.0;
    double hotTextScaleRange_ = 300.0;
    qorcore::Flags<unsigned int> sliderLogStyle_;
    std::string enabledToolTip_;
    std::string disabledToolTip_;

    std::string labelText_;
    std::string unitText_;
    bool disabled_ = false;
    bool showNegativeInfinity_ = false;
    /// Where `SetSliderValue` last put the slider: while the slider stays there, its gestures
    /// keep the value as it is instead of reading it back through the mapping.
    double sliderPosition_ = -1.0;
    qorcore::ScopedConnection hotTextConnection_;
    qorcore::ScopedConnection sliderConnection_;
};

} // namespace qoraudiofiltersui
