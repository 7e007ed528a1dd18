#include "controls/edit_number.hpp"

#include "controls/fader_slider.hpp"
#include "platform/core/fader_translator.hpp"
#include "platform/core/localizer.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <tuple>
#include <vector>

namespace qoraudiofiltersui {

using qorcore::IntrusivePtr;
using qorcore::PointT;
using qorcore::RectT;
using qorui::ModifierFlags;
using qorui::SliderDirection;
using qorui::UI_InteractiveControlChangedMessage;

namespace {

constexpr const char* kInvalidTypeConversion =
    "$$$/qorcore/utility/Error/InvalidTypeConversion=Invalid type conversion.";
constexpr float kMinHotTextWidth = 25.0f;
constexpr float kHotTextHeight = 20.0f;
constexpr float kHotTextPadding = 4.0f;
constexpr float kLabelGap = 2.0f; // between the stacked parts of a vertical control
constexpr float kRulerPlacementLift = 4.0f;

/// The parameters of a logarithmic mapping between `low` and `high`, worked out from a base and
/// the limits. A low limit too small to take a logarithm of is replaced by ten halvings of the
/// high one.
struct LogParameters {
    double base;
    double lnb;
    double low;
    double high;
    double ratio;
    double span;

    LogParameters(double logBase, double lowLimit, double highLimit) {
        base = std::clamp(logBase, 2.0, 10.0);
        lnb = std::log(base);
        if (lowLimit < 1e-15) {
            low = highLimit * 0.0009765625;
            ratio = 1024.0;
            span = 10.0;
        } else {
            low = lowLimit;
            ratio = highLimit / lowLimit;
            span = std::log(highLimit / lowLimit) / lnb;
        }
        high = highLimit;
    }

    /// From a value to its share of the logarithmic span, limited to 0..1.
    double ShareOf(double value) const {
        return std::clamp(std::log(std::max(1e-8, value * ratio / high)) / lnb / span, 0.0, 1.0);
    }
    /// From a point of the linear stretch between low and high to the value it stands for.
    double ValueAt(double linear) const {
        return std::pow(base, std::log(low) / lnb + ((linear - low) / (high - low)) * span);
    }
};

const qorcore::FaderTranslator<double>& SliderFaderLaw() {
    static const qorcore::FaderTranslator<double> law(0.75, 15.0, 15.0);
    return law;
}

/// The hot text of an edit number: it can show the minimum as minus infinity.
class EditNumberHotText final : public qorui::UI_HotTextNumber {
public:
    void SetShowNegativeInfinity(bool show) {
        showNegativeInfinity_ = show;
        EmitInvalidate();
    }

    std::string GetDisplayString() const override {
        if (showNegativeInfinity_ && !IsValueUnknown() && GetValue() <= GetMinValue())
            return "-\u221E";
        return UI_HotTextNumber::GetDisplayString();
    }

private:
    bool showNegativeInfinity_ = false;
};

SliderDirection DirectionFor(bool horizontal, SliderKnob knob) {
    switch (knob) {
    case kSliderKnobArrowDownRight:
        return horizontal ? qorui::kSliderDirectionHorizontalPointingUp
                          : qorui::kSliderDirectionVerticalPointingLeft;
    case kSliderKnobArrowBidirectional:
        return horizontal ? qorui::kSliderDirectionHorizontal : qorui::kSliderDirectionVertical;
    case kSliderKnobSandwich:
    case kSliderKnobFader:
        // A slider is laid out along its direction, so a vertical control needs a vertical one.
        return horizontal ? qorui::kSliderDirectionHorizontalPointingDown
                          : qorui::kSliderDirectionVertical;
    case kSliderKnobArrowUpLeft:
    default:
        return horizontal ? qorui::kSliderDirectionHorizontalPointingDown
                          : qorui::kSliderDirectionVerticalPointingRight;
    }
}

float TextHeight(const qorui::penrig::Font& font) {
    return std::ceil(qorui::control_drawing::MeasureText("X", font).height);
}

} // namespace

EditNumber::EditNumber(bool horizontal, bool usesLabel, bool usesSlider, bool usesInline,
                       SliderKnob knob)
    : isHorizontal_(horizontal), usesInline_(usesInline), usesLabel_(usesLabel),
      usesSlider_(usesSlider) {
    if (usesLabel_) {
        label_ = MakeText(false);
        ChildPushBack(label_);
    }
    if (usesSlider_) {
        const SliderDirection direction = DirectionFor(horizontal, knob);
        IntrusivePtr<qorui::UI_Slider> slider =
            knob == kSliderKnobFader
                ? IntrusivePtr<qorui::UI_Slider>(qorcore::MakeIntrusive<FaderSlider>(direction))
                : qorcore::MakeIntrusive<qorui::UI_Slider>(direction);
        rulerSliderContainer_ = qorcore::MakeIntrusive<RulerSliderContainer>(slider);
        rulerSliderContainer_->SetSlideableDrawInsetPercent(0.3f);
        ChildPushBack(rulerSliderContainer_);
        sliderConnection_ = slider->ConnectChangedInteractively(
            [this](const UI_InteractiveControlChangedMessage& m) { SliderChangeNotifier(m); });
    }
    hotTextNumber_ = qorcore::MakeIntrusive<EditNumberHotText>();
    hotTextNumber_->SetIsDropPrecisionOnIncrement(true);
    hotTextNumber_->SetIncrement(increment_);
    ChildPushBack(hotTextNumber_);
    hotTextConnection_ = hotTextNumber_->ConnectChangedInteractively(
        [this](const UI_InteractiveControlChangedMessage& m) { HotTextNumberChangeNotifier(m); });
    if (!usesInline_) {
        unitLabel_ = MakeText(false);
        ChildPushBack(unitLabel_);
    }
    SyncSlider();
    UpdateHotTextSize();
}

EditNumber::~EditNumber() {
    // The hot text may outlive the control; its steps must not reach back into it.
    hotTextNumber_->ClearTranslateIncrementAmountFunction();
}

IntrusivePtr<qorui::UI_StaticText> EditNumber::MakeText(bool small) const {
    auto text = qorcore::MakeIntrusive<qorui::UI_StaticText>();
    if (small)
        text->SetFont(qorui::control_drawing::GetSmallControlFont());
    text->SetAlignment(isHorizontal_ || small ? qorui::penrig::HorizontalAlignment::kLeft
                                              : qorui::penrig::HorizontalAlignment::kCenter);
    text->UI_SetToolTip(GetToolTipText());
    return text;
}

EditNumber* EditNumber::FindEnclosing(const qorui::UI_Node* node) {
    for (qorui::UI_Node* n = node ? node->GetParent() : nullptr; n; n = n->GetParent())
        if (auto* editNumber = dynamic_cast<EditNumber*>(n))
            return editNumber;
    return nullptr;
}

EditNumber& EditNumber::GetEnclosing(const qorui::UI_Node* node) {
    if (EditNumber* editNumber = FindEnclosing(node))
        return *editNumber;
    throw std::logic_error(qorcore::Localize(kInvalidTypeConversion));
}

// ---- value ----

void EditNumber::SetValue(double value) {
    if (std::isnan(value))
        return;
    value = std::min(maxValue_, std::max(minValue_, value));
    const bool wasUnknown = IsValueUnknown();
    UI_InteractiveControlView::SetValue(value);
    hotTextNumber_->SetValue(value);
    SyncSlider();
    if (wasUnknown)
        UpdateSliderEnabled();
}

void EditNumber::SetValueUnknown() {
    UI_InteractiveControlView::SetValueUnknown();
    hotTextNumber_->SetValueUnknown();
    UpdateSliderEnabled();
}

void EditNumber::IncrementValue(double amount, ModifierFlags modifiers) {
    hotTextNumber_->IncrementValue(amount, modifiers);
    if (hotTextNumber_->IsValueUnknown())
        return;
    const bool wasUnknown = IsValueUnknown();
    UI_InteractiveControlView::SetValue(
        std::max(minValue_, std::min(maxValue_, hotTextNumber_->GetValue())));
    SyncSlider();
    if (wasUnknown)
        UpdateSliderEnabled();
}

void EditNumber::UpdateSliderEnabled() {
    if (qorui::UI_Slider* slider = GetSlider())
        slider->SetEnabled(!disabled_ && !IsValueUnknown());
}

// ---- range ----

void EditNumber::ApplyLimitsToHotText() {
    // The minimum first: the hot text raises its maximum to a minimum above it.
    hotTextNumber_->SetMinValue(minValue_);
    hotTextNumber_->SetMaxValue(maxValue_);
}

void EditNumber::SetMinValue(double min) {
    if (std::isnan(min))
        return;
    minValue_ = min;
    maxValue_ = std::max(maxValue_, minValue_);
    ApplyLimitsToHotText();
    if (!IsValueUnknown() && GetValue() < minValue_)
        SetValue(minValue_);
    SyncSlider();
    UpdateHotTextSize();
}

void EditNumber::SetMaxValue(double max) {
    if (std::isnan(max))
        return;
    maxValue_ = std::max(max, minValue_);
    ApplyLimitsToHotText();
    if (!IsValueUnknown() && GetValue() > maxValue_)
        SetValue(maxValue_);
    SyncSlider();
    UpdateHotTextSize();
}

void EditNumber::SetMinMaxValue(double min, double max, double value) {
    if (std::isnan(min) || std::isnan(max))
        return;
    minValue_ = min;
    maxValue_ = std::max(max, min);
    ApplyLimitsToHotText();
    if (!std::isnan(value))
        SetValue(std::min(maxValue_, std::max(minValue_, value)));
    SyncSlider();
    UpdateHotTextSize();
}

void EditNumber::SetLogSliderMinValueThreshold(double threshold) {
    if (std::isnan(threshold))
        return;
    logSliderMinValueThreshold_ = threshold;
    SyncSlider();
}

// ---- slider ----

qorui::UI_Slider* EditNumber::GetSlider() const {
    return rulerSliderContainer_ ? rulerSliderContainer_->GetSlider() : nullptr;
}

void EditNumber::SetSliderLogarithmic(bool logarithmic) {
    sliderLogarithmic_ = logarithmic;
    SyncSlider();
}

void EditNumber::SetSliderLogStyle(qorcore::Flags<unsigned int> style) {
    sliderLogStyle_ = style;
    SyncSlider();
}

void EditNumber::SetLogBase(double base) {
    if (std::isnan(base))
        return;
    logBase_ = base;
    SyncSlider();
}

void EditNumber::SetInvertSlider(bool invert) {
    invertSlider_ = invert;
    SyncSlider();
}

void EditNumber::SetSliderLength(std::uint32_t length) {
    sliderLength_ = length;
    RecalcLayout();
}

void EditNumber::SetSliderStretches(bool stretches) {
    sliderStretches_ = stretches;
    RecalcLayout();
}

void EditNumber::SetFaderSliderHue(double hue) {
    if (auto* fader = dynamic_cast<FaderSlider*>(GetSlider()))
        fader->SetHue(hue);
}

double EditNumber::GetSliderValue() const {
    const qorui::UI_Slider* slider = GetSlider();
    if (!slider)
        return 0.0;
    double t = slider->GetNormalizedValue();
    if (invertSlider_)
        t = 1.0 - t;
    const double min = minValue_;
    const double max = maxValue_;
    const double range = max - min;
    if (!sliderLogarithmic_)
        return min + range * t;
    if (sliderLogStyle_.GetValue() == 1)
        return std::min(max, std::max(min, SliderFaderLaw().GetDecibelValue(t)));
    double value = min + range * t;
    if (min >= logSliderMinValueThreshold_)
        value = LogParameters(logBase_, min, max).ValueAt(value);
    return std::min(max, std::max(min, value));
}

void EditNumber::SetSliderValue(double value) {
    qorui::UI_Slider* slider = GetSlider();
    if (!slider || maxValue_ == minValue_ || std::isnan(value))
        return;
    const double min = minValue_;
    const double max = maxValue_;
    const double range = max - min;
    double t;
    if (sliderLogarithmic_ && sliderLogStyle_.GetValue() == 1) {
        t = SliderFaderLaw().GetNormalizedValue(value);
    } else if (sliderLogarithmic_ && min >= logSliderMinValueThreshold_) {
        const LogParameters p(logBase_, min, max);
        const double linear = (p.high - p.low) * p.ShareOf(value) + p.low;
        t = (linear - min) / range;
    } else {
        t = (value - min) / range;
    }
    if (invertSlider_)
        t = 1.0 - t;
    slider->SetNormalizedValue(t);
    sliderPosition_ = slider->GetNormalizedValue();
}

// ---- hot text ----

void EditNumber::SetDecimalPlaces(int places) {
    hotTextNumber_->SetDecimalPlaces(places);
    UpdateHotTextSize();
}

int EditNumber::GetDecimalPlaces() const {
    return hotTextNumber_->GetDecimalPlaces();
}

void EditNumber::SetDigits(int digits) {
    hotTextNumber_->SetDigits(digits);
    UpdateHotTextSize();
}

int EditNumber::GetDigits() const {
    return hotTextNumber_->GetDigits();
}

void EditNumber::SetIncrement(double increment) {
    if (!(increment > 0) || !std::isfinite(increment))
        return;
    increment_ = increment;
    hotTextNumber_->SetIncrement(increment);
}

void EditNumber::SetFormatFlags(unsigned flags) {
    hotTextNumber_->SetFormatFlags(flags);
    UpdateHotTextSize();
}

unsigned EditNumber::GetFormatFlags() const {
    return hotTextNumber_->GetFormatFlags();
}

void EditNumber::SetHotTextNumberAlignment(qorui::penrig::HorizontalAlignment alignment) {
    hotTextNumber_->SetAlignment(alignment);
}

qorui::penrig::HorizontalAlignment EditNumber::GetHotTextNumberAlignment() const {
    return hotTextNumber_->GetAlignment();
}

void EditNumber::SetHotTextScale(HotTextScale scale) {
    hotTextScale_ = scale;
    if (scale == kHotTextScaleLinear) {
        hotTextNumber_->ClearTranslateIncrementAmountFunction();
        hotTextNumber_->SetIsDropPrecisionOnIncrement(true);
        hotTextNumber_->SetIncrement(increment_);
        return;
    }
    // Steps on a curved scale land between the increment's grid points.
    hotTextNumber_->SetIsDropPrecisionOnIncrement(false);
    hotTextNumber_->SetTranslateIncrementAmountFunction(
        [this](double amount) { return TransformHotTextIncrementAmount(amount); });
}

void EditNumber::SetHotTextLogBase(double base) {
    if (!std::isnan(base))
        hotTextLogBase_ = base;
}

void EditNumber::SetHotTextScaleRange(double range) {
    if (!std::isnan(range))
        hotTextScaleRange_ = range;
}

double EditNumber::TransformHotTextIncrementAmount(double amount) const {
    const double steps = std::max(1.0, hotTextScaleRange_);
    const double current = hotTextNumber_->GetValue();
    const double mn = hotTextNumber_->GetMinValue();
    const double mx = hotTextNumber_->GetMaxValue();
    switch (hotTextScale_) {
    case kHotTextScaleLog: {
        const LogParameters p(hotTextLogBase_, mn, mx);
        double w = p.ShareOf(current) * (p.high - p.low) + p.low;
        w += (mx - mn) / steps * amount;
        return p.ValueAt(w) - current;
    }
    case kHotTextScaleFader: {
        const double zero = maxValue_ != 0.0 ? (maxValue_ - minValue_) / maxValue_ : 0.0;
        const qorcore::FaderTranslator<double> law(zero, mx, 15.0);
        return law.GetDecibelValue(law.GetNormalizedValue(current) + amount / steps) - current;
    }
    case kHotTextScaleDecibel: {
        const double linear = std::pow(10.0, current / 20.0) + amount / steps;
        return 20.0 * std::log10(std::max(1e-15, linear)) - current;
    }
    default: return amount;
    }
}

void EditNumber::ShowNegativeInfinity(bool show) {
    showNegativeInfinity_ = show;
    static_cast<EditNumberHotText&>(*hotTextNumber_).SetShowNegativeInfinity(show);
}

float EditNumber::GetFontSize() const {
    return hotTextNumber_->GetFontSize();
}

// ---- text ----

void EditNumber::SetLabel(const std::string& label) {
    labelText_ = label;
    if (label_)
        label_->SetText(label);
    RecalcLayout();
}

float EditNumber::GetLabelBaseline() const {
    return label_ ? label_->GetFrame().y + label_->GetBaseline() : 0.0f;
}

void EditNumber::SetUnitLabel(const std::string& unit) {
    unitText_ = unit;
    if (unitLabel_)
        unitLabel_->SetText(unit);
    if (usesInline_) {
        hotTextNumber_->SetTextLabel(unit);
        UpdateHotTextSize();
    } else {
        RecalcLayout();
    }
}

void EditNumber::SetUnitLabelLength(std::uint32_t length) {
    unitLabelLength_ = length;
    RecalcLayout();
}

void EditNumber::SetDescription1(const std::string& text) {
    if (!description1_) {
        description1_ = MakeText(true);
        ChildPushBack(description1_);
    }
    description1_->SetText(text);
    RecalcLayout();
}

const std::string& EditNumber::GetDescription1() const {
    static const std::string none;
    return description1_ ? description1_->GetText() : none;
}

void EditNumber::SetDescription2(const std::string& text) {
    if (!description2_) {
        description2_ = MakeText(true);
        ChildPushBack(description2_);
    }
    description2_->SetText(text);
    RecalcLayout();
}

const std::string& EditNumber::GetDescription2() const {
    static const std::string none;
    return description2_ ? description2_->GetText() : none;
}

void EditNumber::SetToolTip(const std::string& text) {
    enabledToolTip_ = text;
    if (!disabled_)
        UI_SetToolTip(text);
}

void EditNumber::SetEnabledTooltip(const std::string& text) {
    SetToolTip(text);
}

void EditNumber::SetDisabledTooltip(const std::string& text) {
    disabledToolTip_ = text;
    if (disabled_)
        UI_SetToolTip(text);
}

void EditNumber::UI_SetToolTip(const std::string& text) {
    UI_InteractiveControlView::UI_SetToolTip(text);
    // The window shows the tip of the part under the pointer, so every part carries it.
    for (qorui::UI_Node* part : {static_cast<qorui::UI_Node*>(label_.get()),
                                 static_cast<qorui::UI_Node*>(hotTextNumber_.get()),
                                 static_cast<qorui::UI_Node*>(unitLabel_.get()),
                                 static_cast<qorui::UI_Node*>(description1_.get()),
                                 static_cast<qorui::UI_Node*>(description2_.get()),
                                 static_cast<qorui::UI_Node*>(rulerSliderContainer_.get())})
        if (part)
            part->UI_SetToolTip(text);
}

// ---- mode ----

void EditNumber::SetUsesInline(bool usesInline) {
    if (usesInline == usesInline_)
        return;
    usesInline_ = usesInline;
    if (usesInline_) {
        unitLabel_->RemoveFromParent();
        unitLabel_ = nullptr;
        hotTextNumber_->SetTextLabel(unitText_);
    } else {
        unitLabel_ = MakeText(false);
        unitLabel_->SetText(unitText_);
        const auto& children = GetChildren();
        const auto at = std::find_if(children.begin(), children.end(), [this](const auto& child) {
            return child.get() == hotTextNumber_.get();
        });
        ChildInsert(std::size_t(at - children.begin()) + 1, unitLabel_);
        hotTextNumber_->SetTextLabel({});
    }
    UpdateHotTextSize();
}

void EditNumber::SetUsesLabel(bool usesLabel) {
    if (usesLabel == usesLabel_)
        return;
    usesLabel_ = usesLabel;
    if (usesLabel_) {
        label_ = MakeText(false);
        label_->SetText(labelText_);
        ChildInsert(0, label_);
    } else {
        label_->RemoveFromParent();
        label_ = nullptr;
    }
    RecalcLayout();
}

void EditNumber::SetDisabled(bool disabled) {
    disabled_ = disabled;
    hotTextNumber_->SetDisabled(disabled);
    UpdateSliderEnabled();
    if (rulerSliderContainer_)
        rulerSliderContainer_->EmitInvalidate(); // the ruler dims with the slider
    UI_SetToolTip(disabled ? disabledToolTip_ : enabledToolTip_);
}

// ---- ruler ----

void EditNumber::SetRuler(IntrusivePtr<qorui::RulerBase> ruler, RulerPlacement placement,
                          RulerTextPlacement textPlacement) {
    qorcore::config::ThrowIfNull(rulerSliderContainer_.get(), "RulerSliderContainer")
        ->SetRuler(std::move(ruler), placement, textPlacement);
    RecalcLayout();
}

IntrusivePtr<qorui::RulerBase> EditNumber::GetRuler() const {
    return rulerSliderContainer_ ? rulerSliderContainer_->GetRuler() : nullptr;
}

RulerPlacement EditNumber::GetRulerPlacement() const {
    return rulerSliderContainer_ ? rulerSliderContainer_->GetRulerPlacement()
                                 : kRulerPlacementLeftTop;
}

RulerTextPlacement EditNumber::GetRulerTextPlacement() const {
    return rulerSliderContainer_ ? rulerSliderContainer_->GetRulerTextPlacement()
                                 : kRulerTextPlacementNone;
}

// ---- notifications ----

bool EditNumber::TakeHotTextValue() {
    if (hotTextNumber_->IsValueUnknown())
        return false;
    const double value = std::min(maxValue_, hotTextNumber_->GetValue());
    const bool wasUnknown = IsValueUnknown();
    if (value == GetValue() && !wasUnknown)
        return false;
    UI_InteractiveControlView::SetValue(value);
    SyncSlider();
    if (wasUnknown)
        UpdateSliderEnabled(); // known again
    return true;
}

void EditNumber::HotTextNumberChangeNotifier(const UI_InteractiveControlChangedMessage& message) {
    IntrusivePtr<qorui::UI_Node> keep(this);
    const ModifierFlags modifiers = message.GetModifiers();
    switch (message.GetChangeMessage()) {
    case qorui::kInteractiveChangeBegin: BeginInteractiveChange(modifiers); break;
    case qorui::kInteractiveChangeContinue:
        if (TakeHotTextValue())
            ContinueInteractiveChange(modifiers);
        break;
    case qorui::kInteractiveChangeFinish:
        if (TakeHotTextValue())
            ContinueInteractiveChange(modifiers);
        FinishInteractiveChange(modifiers);
        break;
    case qorui::kInteractiveChangeCancel: CancelInteractiveChange(); break;
    default: break;
    }
}

void EditNumber::SliderChangeNotifier(const UI_InteractiveControlChangedMessage& message) {
    IntrusivePtr<qorui::UI_Node> keep(this);
    const int change = message.GetChangeMessage();
    if (change == qorui::kInteractiveChangeContinue || change == qorui::kInteractiveChangeFinish) {
        const qorui::UI_Slider* slider = GetSlider();
        const bool unmoved =
            !IsValueUnknown() && slider && slider->GetNormalizedValue() == sliderPosition_;
        const double value = unmoved ? GetValue() : GetSliderValue();
        hotTextNumber_->SetValue(value);
        UI_InteractiveControlView::SetValue(hotTextNumber_->GetValue());
        if (slider)
            sliderPosition_ = slider->GetNormalizedValue();
    }
    switch (change) {
    case qorui::kInteractiveChangeBegin: BeginInteractiveChange(message.GetModifiers()); break;
    case qorui::kInteractiveChangeContinue: ContinueInteractiveChange(); break;
    case qorui::kInteractiveChangeFinish: FinishInteractiveChange(message.GetModifiers()); break;
    case qorui::kInteractiveChangeCancel: CancelInteractiveChange(); break;
    default: break;
    }
}

// ---- layout ----

void EditNumber::UpdateHotTextSize() {
    const qorui::penrig::Font& font = hotTextNumber_->GetFont();
    std::vector<std::string> samples;
    const int digits = hotTextNumber_->GetDigits();
    if (digits > 0) {
        // A sign and a point may come with the digits.
        samples.push_back(std::string(std::size_t(digits), '0') +
                          (hotTextNumber_->GetDecimalPlaces() > 0 ? "." : ""));
        if (minValue_ < 0)
            samples.back().insert(0, "-");
    }
    if (!qorui::skins::IsRunningV7OrBeyond() || digits <= 0) {
        // Limits far out (the defaults) say nothing of the numbers shown; a typical one does.
        std::size_t limits = 0;
        for (double limit : {minValue_, maxValue_})
            if (std::abs(limit) <= 1e12) {
                samples.push_back(hotTextNumber_->FormatValue(limit));
                ++limits;
            }
        if (limits < 2)
            samples.push_back(hotTextNumber_->FormatValue(-9999.0));
    }
    float width = 0;
    for (const std::string& sample : samples)
        width = std::max(width, qorui::control_drawing::MeasureText(sample, font).width);
    if (!hotTextNumber_->GetTextLabel().empty())
        width +=
            qorui::control_drawing::MeasureText(" " + hotTextNumber_->GetTextLabel(), font).width;
    hotTextNumber_->SetSize(std::max(kMinHotTextWidth, std::ceil(width + kHotTextPadding)),
                            kHotTextHeight);
    RecalcLayout();
}

PointT<float> EditNumber::GetDesiredLayout(RectT<float>& sliderRect, RectT<float>& hotTextRect,
                                           RectT<float>& unitRect, RectT<float>& labelRect,
                                           RectT<float>& description1Rect,
                                           RectT<float>& description2Rect) const {
    sliderRect = hotTextRect = unitRect = labelRect = description1Rect = description2Rect = {};
    // Sizes first.
    PointT<float> labelSize, unitSize;
    if (label_ && !labelText_.empty())
        labelSize = {std::ceil(label_->GetTextWidth()), TextHeight(label_->GetFont())};
    const PointT<float> hotSize = hotTextNumber_->GetFrame().Size();
    if (unitLabel_) {
        const float width =
            unitLabelLength_ > 0 ? float(unitLabelLength_) : std::ceil(unitLabel_->GetTextWidth());
        if (width > 0)
            unitSize = {width, TextHeight(unitLabel_->GetFont())};
    }
    const float sliderLength = sliderLength_ > 0 ? float(sliderLength_) : kNaturalSliderLength;
    const float sliderThickness =
        rulerSliderContainer_ ? rulerSliderContainer_->GetBestSize() : 0.0f;
    const bool withSlider = rulerSliderContainer_ != nullptr;

    if (isHorizontal_) {
        float x = 0;
        if (labelSize.x > 0) {
            labelRect = {x, 0, labelSize.x, labelSize.y};
            x += labelSize.x + kPartGap;
        }
        float middle = std::max({labelSize.y, hotSize.y, unitSize.y}) / 2;
        if (withSlider) {
            sliderRect = {x, 0, sliderLength, sliderThickness};
            x += sliderLength + kPartGap;
            // The parts line up with the groove's middle.
            const RectT<float> slider =
                rulerSliderContainer_->GetSliderRect({0, 0, sliderLength, sliderThickness});
            middle = slider.y + slider.height / 2;
            if (GetRuler() && GetRulerPlacement() == kRulerPlacementLeftTop)
                middle -= kRulerPlacementLift;
        }
        hotTextRect = {x, middle - hotSize.y / 2, hotSize.x, hotSize.y};
        x += hotSize.x + kUnitGap;
        if (labelSize.x > 0)
            labelRect.y = middle - labelSize.y / 2;
        if (unitSize.x > 0)
            unitRect = {x, middle - unitSize.y / 2, unitSize.x, unitSize.y};
        if (withSlider) {
            const RectT<float> slider =
                rulerSliderContainer_->GetSliderRect(sliderRect).Offset(sliderRect.Origin());
            float captionHeight = 0;
            for (const auto& [description, rect, atStart] :
                 {std::tuple{description1_.get(), &description1Rect, true},
                  std::tuple{description2_.get(), &description2Rect, false}}) {
                if (!description || description->GetText().empty())
                    continue;
                const float width = std::ceil(description->GetTextWidth());
                const float height = TextHeight(description->GetFont()) + 2;
                const float left = atStart ? slider.x + 8 : slider.Right() - 8 - width;
                *rect = {left, slider.Bottom() + 2, width, height};
                captionHeight = std::max(captionHeight, height);
            }
            if (captionHeight > 0)
                sliderRect.height += captionHeight + 6;
        }
    } else {
        float y = 0;
        float middle =
            std::max({labelSize.x, hotSize.x + (unitSize.x > 0 ? kUnitGap + unitSize.x : 0)}) / 2;
        if (labelSize.x > 0) {
            labelRect = {0, y, labelSize.x, labelSize.y};
            y += labelSize.y + kLabelGap;
        }
        if (withSlider) {
            sliderRect = {0, y, sliderThickness, sliderLength};
            y += sliderLength + kLabelGap;
            const RectT<float> slider =
                rulerSliderContainer_->GetSliderRect({0, 0, sliderThickness, sliderLength});
            middle = slider.x + slider.width / 2;
        }
        const float rowWidth = hotSize.x + (unitSize.x > 0 ? kUnitGap + unitSize.x : 0);
        hotTextRect = {middle - rowWidth / 2, y, hotSize.x, hotSize.y};
        if (unitSize.x > 0)
            unitRect = {hotTextRect.Right() + kUnitGap, y + (hotSize.y - unitSize.y) / 2,
                        unitSize.x, unitSize.y};
        if (labelSize.x > 0)
            labelRect.x = middle - labelSize.x / 2;
    }

    // Shift everything into view, on whole pixels.
    RectT<float>* rects[] = {&sliderRect, &hotTextRect,      &unitRect,
                             &labelRect,  &description1Rect, &description2Rect};
    float left = 0, top = 0;
    for (RectT<float>* r : rects)
        if (!r->IsEmpty()) {
            left = std::min(left, r->x);
            top = std::min(top, r->y);
        }
    const float dx = -std::floor(left);
    const float dy = -std::floor(top);
    RectT<float> all;
    for (RectT<float>* r : rects)
        if (!r->IsEmpty()) {
            *r = {std::floor(r->x + dx), std::floor(r->y + dy), r->width, r->height};
            all = all.Union(*r);
        }
    return {std::ceil(all.Right()), std::ceil(all.Bottom())};
}

PointT<float> EditNumber::UI_GetRecommendedSize() const {
    RectT<float> a, b, c, d, e, f;
    return GetDesiredLayout(a, b, c, d, e, f);
}

void EditNumber::RecalcLayout() {
    RecalcLayout(GetBounds());
}

void EditNumber::RecalcLayout(const RectT<float>& rect) {
    RectT<float> slider, hot, unit, label, description1, description2;
    const PointT<float> size =
        GetDesiredLayout(slider, hot, unit, label, description1, description2);
    if (sliderStretches_ && rulerSliderContainer_) {
        if (isHorizontal_) {
            const float extra = rect.width - size.x;
            if (extra > 0) {
                slider.width += extra;
                hot = hot.Offset(extra, 0);
                unit = unit.Offset(extra, 0);
                description2 = description2.Offset(extra, 0);
            }
        } else {
            const float extra = rect.height - size.y;
            if (extra > 0) {
                slider.height += extra;
                hot = hot.Offset(0, extra);
                unit = unit.Offset(0, extra);
            }
        }
    }
    // The container's own height leaves out the captions under it.
    if (rulerSliderContainer_)
        slider.height = isHorizontal_ ? rulerSliderContainer_->GetBestSize() : slider.height;
    auto place = [&](qorui::UI_Node* node, RectT<float> r) {
        if (!node)
            return;
        r.x = std::max(0.0f, r.x + rect.x);
        r.y = std::max(0.0f, r.y + rect.y);
        node->SetFrame(r);
    };
    place(label_.get(), label);
    place(rulerSliderContainer_.get(), slider);
    place(description1_.get(), description1);
    place(description2_.get(), description2);
    place(hotTextNumber_.get(), hot);
    place(unitLabel_.get(), unit);
}

void EditNumber::UI_SizeChanged() {
    UI_InteractiveControlView::UI_SizeChanged();
    RecalcLayout();
}

} // namespace qoraudiofiltersui
