// EditNumber's value against its slider's position, both ways, for linear, logarithmic (the
// minimum above and below the threshold, and 0), fader and inverted sliders, and the four hot
// text scales. Expected numbers are worked out by hand from the shape of each mapping: a
// logarithmic slider puts the geometric mean of its limits in the middle, the fader law puts
// 0 dB at 0.75 and -15 dB at 0.5, a logarithmic step multiplies by a fixed ratio.
#include "controls/edit_number.hpp"
#include "platform/core/fader_translator.hpp"
#include "platform/ui/headless_window.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

using namespace qoraudiofiltersui;
using qorcore::IntrusivePtr;
using qorcore::MakeIntrusive;

namespace {

using Configure = std::function<void(EditNumber&)>;

IntrusivePtr<EditNumber> Make(const Configure& setup) {
    auto control = MakeIntrusive<EditNumber>(true, false, true, false, kSliderKnobArrowUpLeft);
    setup(*control);
    return control;
}

/// Where the slider stands once the control has `value`.
double PositionOf(const Configure& setup, double value) {
    auto control = Make(setup);
    control->SetValue(value);
    return control->GetSlider()->GetNormalizedValue();
}

/// The value a user gets by moving the slider of a fresh control to `position`.
double ValueAt(const Configure& setup, double position) {
    auto control = Make(setup);
    qorui::UI_Slider& slider = *control->GetSlider();
    slider.BeginInteractiveChange();
    // By way of the far end, so that the slider really moves to `position`.
    slider.SetValue(position < 0.5 ? 1.0 : 0.0);
    slider.ContinueInteractiveChange();
    slider.SetValue(position);
    slider.ContinueInteractiveChange();
    slider.FinishInteractiveChange();
    return control->GetValue();
}

Configure Range(double min, double max, const Configure& more = {}) {
    return [=](EditNumber& c) {
        c.SetMinMaxValue(min, max, min);
        if (more)
            more(c);
    };
}

const Configure kLog = [](EditNumber& c) {
    c.SetSliderLogarithmic(true);
};
const Configure kFader = [](EditNumber& c) {
    c.SetSliderLogarithmic(true);
    c.SetSliderLogStyle(1);
};

} // namespace

TEST(EditNumberMapping, LinearBothWays) {
    const Configure s = Range(-10, 10);
    EXPECT_DOUBLE_EQ(PositionOf(s, 0), 0.5);
    EXPECT_DOUBLE_EQ(PositionOf(s, 5), 0.75);
    EXPECT_DOUBLE_EQ(PositionOf(s, 40), 1.0) << "the value is limited first";
    EXPECT_DOUBLE_EQ(ValueAt(s, 0.25), -5.0);
    EXPECT_DOUBLE_EQ(ValueAt(s, 1.0), 10.0);
}

TEST(EditNumberMapping, LogarithmicAboveTheThresholdIsGeometric) {
    const Configure s = Range(20, 20000, kLog);
    EXPECT_NEAR(PositionOf(s, 200), 1.0 / 3, 1e-12);
    EXPECT_NEAR(PositionOf(s, std::sqrt(20.0 * 20000.0)), 0.5, 1e-12);
    EXPECT_NEAR(PositionOf(s, 20000), 1.0, 1e-12);
    EXPECT_NEAR(ValueAt(s, 2.0 / 3), 2000.0, 1e-9);
    EXPECT_NEAR(ValueAt(s, 0.0), 20.0, 1e-9);
    for (double v : {25.0, 100.0, 440.0, 1000.0, 7000.0, 19999.0})
        EXPECT_NEAR(ValueAt(s, PositionOf(s, v)) / v, 1.0, 1e-12) << v;
    // The base cancels out between limits this far from zero, clamped or not.
    const Configure base2 = Range(20, 20000, [](EditNumber& c) {
        c.SetSliderLogarithmic(true);
        c.SetLogBase(2);
    });
    EXPECT_NEAR(PositionOf(base2, 200), 1.0 / 3, 1e-12);
}

TEST(EditNumberMapping, LogarithmicBelowTheThresholdStaysLinear) {
    // Under the default threshold of 1e-15 a minimum of 0 keeps the slider linear.
    const Configure zero = Range(0, 100, kLog);
    EXPECT_DOUBLE_EQ(PositionOf(zero, 25), 0.25);
    EXPECT_DOUBLE_EQ(ValueAt(zero, 0.5), 50.0);
    const Configure negative = Range(-10, 10, kLog);
    EXPECT_DOUBLE_EQ(PositionOf(negative, 5), 0.75);
    EXPECT_DOUBLE_EQ(ValueAt(negative, 0.25), -5.0);
    const Configure raised = Range(1, 1000, [](EditNumber& c) {
        c.SetSliderLogarithmic(true);
        c.SetLogSliderMinValueThreshold(2);
    });
    EXPECT_DOUBLE_EQ(PositionOf(raised, 500.5), 0.5);
    EXPECT_EQ(Make(raised)->GetLogSliderMinValueThreshold(), 2.0);
}

TEST(EditNumberMapping, AMinimumAtTheThresholdButNearZeroTakesTenHalvings) {
    // With the threshold lowered to 0, a minimum of 0 counts: the low end becomes max / 1024
    // and the span ten steps of the base. In base 2 that is ten octaves below 1024.
    const Configure s = Range(0, 1024, [](EditNumber& c) {
        c.SetSliderLogarithmic(true);
        c.SetLogBase(2);
        c.SetLogSliderMinValueThreshold(0);
    });
    // 32 is five octaves up: halfway along the stretch from 1 to 1024, i.e. at 512.5 of 1024.
    EXPECT_NEAR(PositionOf(s, 32), 512.5 / 1024, 1e-12);
    EXPECT_NEAR(ValueAt(s, 512.5 / 1024), 32.0, 1e-9);
    EXPECT_NEAR(ValueAt(s, 1.0), 1024.0, 1e-9);
    // Below the low end everything sits at it.
    EXPECT_NEAR(PositionOf(s, 0.5), 1.0 / 1024, 1e-12);
    EXPECT_NEAR(ValueAt(s, 1.0 / 1024), 1.0, 1e-9);
    // A base of 1 is taken as 2.
    const Configure base1 = Range(0, 1024, [](EditNumber& c) {
        c.SetSliderLogarithmic(true);
        c.SetLogBase(1);
        c.SetLogSliderMinValueThreshold(0);
    });
    EXPECT_NEAR(PositionOf(base1, 32), 512.5 / 1024, 1e-12);
}

TEST(EditNumberMapping, FaderLawIgnoresTheLimitsButForLimiting) {
    const Configure s = Range(-60, 6, kFader);
    EXPECT_NEAR(PositionOf(s, 0), 0.75, 1e-12) << "not (0 + 60) / 66";
    EXPECT_NEAR(PositionOf(s, -15), 0.5, 1e-12);
    EXPECT_NEAR(ValueAt(s, 0.5), -15.0, 1e-9);
    EXPECT_NEAR(ValueAt(s, 0.25), -15.0 * std::log(1.0 / 3) / std::log(2.0 / 3), 1e-9);
    EXPECT_EQ(ValueAt(s, 1.0), 6.0) << "+15 dB limited to the maximum";
    EXPECT_EQ(ValueAt(s, 0.0), -60.0) << "minus infinity limited to the minimum";
}

TEST(EditNumberMapping, InvertingTurnsBothWaysOver) {
    const Configure linear = Range(-10, 10, [](EditNumber& c) { c.SetInvertSlider(true); });
    EXPECT_DOUBLE_EQ(PositionOf(linear, 5), 0.25);
    EXPECT_DOUBLE_EQ(ValueAt(linear, 0.25), 5.0);
    EXPECT_DOUBLE_EQ(ValueAt(linear, 0.0), 10.0);
    const Configure fader = Range(-60, 15, [](EditNumber& c) {
        kFader(c);
        c.SetInvertSlider(true);
    });
    EXPECT_NEAR(PositionOf(fader, 0), 0.25, 1e-12);
    EXPECT_NEAR(ValueAt(fader, 0.5), -15.0, 1e-9);
    EXPECT_NEAR(ValueAt(fader, 0.0), 15.0, 1e-9);
    const Configure log = Range(20, 20000, [](EditNumber& c) {
        kLog(c);
        c.SetInvertSlider(true);
    });
    EXPECT_NEAR(PositionOf(log, 200), 2.0 / 3, 1e-12);
    EXPECT_NEAR(ValueAt(log, 1.0 / 3), 2000.0, 1e-9);
}

TEST(EditNumberMapping, AnEmptyRangeLeavesTheSliderAlone) {
    auto control = Make(Range(0, 10));
    control->SetValue(5);
    ASSERT_EQ(control->GetSlider()->GetNormalizedValue(), 0.5);
    control->SetMinMaxValue(5, 5, 5);
    EXPECT_EQ(control->GetSlider()->GetNormalizedValue(), 0.5);
    control->SetValue(7);
    EXPECT_EQ(control->GetValue(), 5.0);
    EXPECT_EQ(control->GetSlider()->GetNormalizedValue(), 0.5);
}

TEST(EditNumberMapping, RoundTripsDoNotDriftTheValue) {
    // A gesture that leaves the slider where the value put it keeps the value exactly, though
    // the mapping's way back would round it.
    auto control = Make(Range(20, 20000, kLog));
    control->SetValue(1234.5);
    qorui::UI_Slider& slider = *control->GetSlider();
    slider.BeginInteractiveChange();
    slider.ContinueInteractiveChange();
    slider.FinishInteractiveChange();
    EXPECT_EQ(control->GetValue(), 1234.5);
}

TEST(EditNumberMapping, WithoutASliderOnlyTheValueMoves) {
    auto control = MakeIntrusive<EditNumber>(true, true, false, false, kSliderKnobArrowUpLeft);
    EXPECT_EQ(control->GetSlider(), nullptr);
    EXPECT_FALSE(control->GetUsesSlider());
    control->SetMinMaxValue(0, 10, 3);
    control->SetSliderLogarithmic(true);
    control->SetValue(4);
    EXPECT_EQ(control->GetValue(), 4.0);
    EXPECT_EQ(control->GetRuler(), nullptr);
}

// ---- hot text scales ----

TEST(EditNumberHotTextScale, LinearStepsOnTheIncrementsGrid) {
    auto control = Make(Range(-100, 100));
    control->SetIncrement(0.5);
    control->SetValue(1.3);
    control->IncrementValue(0.5);
    EXPECT_DOUBLE_EQ(control->GetValue(), 1.5) << "the .3 below the step is dropped";
    EXPECT_DOUBLE_EQ(control->GetSlider()->GetNormalizedValue(), 101.5 / 200);
}

TEST(EditNumberHotTextScale, LogarithmicStepsMultiplyByAFixedRatio) {
    auto control = Make(Range(20, 20000));
    control->SetHotTextScale(kHotTextScaleLog);
    EXPECT_EQ(control->GetHotTextScale(), kHotTextScaleLog);
    control->SetValue(200);
    // 300 steps over three decades: each one is 10^0.01.
    for (int i = 0; i < 10; ++i)
        control->IncrementValue(1);
    EXPECT_NEAR(control->GetValue(), 200 * std::pow(10.0, 0.1), 1e-9);
    for (int i = 0; i < 10; ++i)
        control->IncrementValue(-1);
    EXPECT_NEAR(control->GetValue(), 200.0, 1e-9);
    control->SetHotTextScaleRange(30);
    control->IncrementValue(1);
    EXPECT_NEAR(control->GetValue(), 200 * std::pow(10.0, 0.1), 1e-9);
    control->SetHotTextScaleRange(0); // at least one step is used
    control->IncrementValue(1);
    EXPECT_NEAR(control->GetValue(), 20000.0, 1e-6);
}

TEST(EditNumberHotTextScale, DecibelStepsAreEvenInAmplitude) {
    auto control = Make(Range(-60, 12));
    control->SetHotTextScale(kHotTextScaleDecibel);
    control->SetValue(20 * std::log10(0.5));
    for (int i = 0; i < 30; ++i)
        control->IncrementValue(1);
    EXPECT_NEAR(control->GetValue(), 20 * std::log10(0.6), 1e-9);
    // Far down, an amplitude step below zero stops at the range's floor.
    control->SetValue(-59);
    control->IncrementValue(-1);
    EXPECT_EQ(control->GetValue(), -60.0);
}

TEST(EditNumberHotTextScale, FaderStepsFollowTheLawOfTheRange) {
    // The law's zero sits at (max - min) / max of the range, within 0.51..0.9: here 5 -> 0.9.
    auto control = Make(Range(-60, 15));
    control->SetHotTextScale(kHotTextScaleFader);
    control->SetValue(0);
    control->IncrementValue(1);
    const qorcore::FaderTranslator<double> law(0.9, 15, 15);
    ASSERT_NEAR(law.GetNormalizedValue(0), 0.9, 1e-7);
    EXPECT_NEAR(control->GetValue(), law.GetDecibelValue(law.GetNormalizedValue(0) + 1.0 / 300),
                1e-9);
    EXPECT_GT(control->GetValue(), 0.0);
    control->SetValue(0);
    control->IncrementValue(-1);
    EXPECT_NEAR(control->GetValue(), law.GetDecibelValue(law.GetNormalizedValue(0) - 1.0 / 300),
                1e-9);
    // Back to the linear scale: the increment's own steps again.
    control->SetHotTextScale(kHotTextScaleLinear);
    control->SetValue(0);
    control->IncrementValue(1);
    EXPECT_EQ(control->GetValue(), 1.0);
}
