// EditNumber: its value against its slider's position both ways for every slider law, the four
// hot text scales, gestures of the pointer and the keyboard, limits, the unknown value,
// disabling with its tool tip, and the layout of the parts in both directions. Expected numbers
// are worked out by hand from the shape of each mapping: a logarithmic slider puts the geometric
// mean of its limits in the middle, the fader law puts 0 dB at 0.75 and -15 dB at 0.5, a
// logarithmic step multiplies by a fixed ratio.
#include "controls/edit_number.hpp"
#include "platform/core/fader_translator.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/ui_tool_tip.hpp"
#include "platform/widgets/control_recorder.hpp"
#include "platform/widgets/ui_text_field.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <stdexcept>

using namespace qoraudiofiltersui;
using qafui_testing::ControlRecorder;
using qorcore::IntrusivePtr;
using qorcore::MakeIntrusive;
using qorcore::PointT;
using qorcore::RectT;
using qorui::KeyboardCode;
using qorui::skins::ScopedSkin;
using qorui::skins::Skin;

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

/// A range with the value at its minimum, then `more`.
Configure Range(double min, double max, std::vector<Configure> more = {}) {
    return [=](EditNumber& c) {
        c.SetMinMaxValue(min, max, min);
        for (const Configure& step : more)
            step(c);
    };
}

const Configure kLog = [](EditNumber& c) {
    c.SetSliderLogarithmic(true);
};
const Configure kFader = [](EditNumber& c) {
    c.SetSliderLogarithmic(true);
    c.SetSliderLogStyle(1);
};
const Configure kInvert = [](EditNumber& c) {
    c.SetInvertSlider(true);
};
Configure LogBase(double base) {
    return [=](EditNumber& c) {
        c.SetLogBase(base);
    };
}
Configure Threshold(double threshold) {
    return [=](EditNumber& c) {
        c.SetLogSliderMinValueThreshold(threshold);
    };
}

PointT<float> CentreOf(const qorui::UI_Node& node) {
    return node.UI_LocalToGlobalF(node.GetBounds().Center());
}

} // namespace

TEST(EditNumberMapping, ValueAndSliderPositionBothWays) {
    const Configure lin = Range(-10, 10), log = Range(20, 20000, {kLog});
    const Configure fader = Range(-60, 6, {kFader}), zero = Range(0, 100, {kLog});
    const Configure negative = Range(-10, 10, {kLog}), ilin = Range(-10, 10, {kInvert});
    const Configure ifader = Range(-60, 15, {kFader, kInvert});
    const Configure ilog = Range(20, 20000, {kLog, kInvert});
    // With the threshold lowered to 0, a minimum of 0 counts: the low end becomes max / 1024 and
    // the span ten steps of the base. In base 2 that is ten octaves below 1024, and 32 is five
    // octaves up: halfway along the stretch from 1 to 1024, i.e. at 512.5 of 1024.
    const Configure halving = Range(0, 1024, {kLog, LogBase(2), Threshold(0)});
    constexpr bool P = true, V = false;      // to the position, or to the value
    constexpr double kUlps = 0, kExact = -1; // EXPECT_DOUBLE_EQ and EXPECT_EQ
    const struct {
        const char* what;
        Configure setup;
        bool toPosition;
        double from, to, tolerance;
    } rows[] = {
        {"linear", lin, P, 0, 0.5, kUlps},
        {"linear", lin, P, 5, 0.75, kUlps},
        {"linear: the value is limited first", lin, P, 40, 1.0, kUlps},
        {"linear", lin, V, 0.25, -5.0, kUlps},
        {"linear", lin, V, 1.0, 10.0, kUlps},
        {"log", log, P, 200, 1.0 / 3, 1e-12},
        {"log", log, P, std::sqrt(20.0 * 20000.0), 0.5, 1e-12},
        {"log", log, P, 20000, 1.0, 1e-12},
        {"log", log, V, 2.0 / 3, 2000.0, 1e-9},
        {"log", log, V, 0.0, 20.0, 1e-9},
        {"log: base 2 cancels out this far from 0", Range(20, 20000, {kLog, LogBase(2)}), P, 200,
         1.0 / 3, 1e-12},
        // Under the default threshold of 1e-15 a minimum of 0 or below keeps the slider linear.
        {"log from 0", zero, P, 25, 0.25, kUlps},
        {"log from 0", zero, V, 0.5, 50.0, kUlps},
        {"log from -10", negative, P, 5, 0.75, kUlps},
        {"log from -10", negative, V, 0.25, -5.0, kUlps},
        {"log, threshold 2", Range(1, 1000, {kLog, Threshold(2)}), P, 500.5, 0.5, kUlps},
        {"ten halvings", halving, P, 32, 512.5 / 1024, 1e-12},
        {"ten halvings", halving, V, 512.5 / 1024, 32.0, 1e-9},
        {"ten halvings", halving, V, 1.0, 1024.0, 1e-9},
        {"ten halvings: below the low end is at it", halving, P, 0.5, 1.0 / 1024, 1e-12},
        {"ten halvings", halving, V, 1.0 / 1024, 1.0, 1e-9},
        {"ten halvings: base 1 is taken as 2", Range(0, 1024, {kLog, LogBase(1), Threshold(0)}), P,
         32, 512.5 / 1024, 1e-12},
        {"fader: not (0 + 60) / 66", fader, P, 0, 0.75, 1e-12},
        {"fader", fader, P, -15, 0.5, 1e-12},
        {"fader", fader, V, 0.5, -15.0, 1e-9},
        {"fader", fader, V, 0.25, -15.0 * std::log(1.0 / 3) / std::log(2.0 / 3), 1e-9},
        {"fader: +15 dB limited to the maximum", fader, V, 1.0, 6.0, kExact},
        {"fader: minus infinity limited to the minimum", fader, V, 0.0, -60.0, kExact},
        {"inverted linear", ilin, P, 5, 0.25, kUlps},
        {"inverted linear", ilin, V, 0.25, 5.0, kUlps},
        {"inverted linear", ilin, V, 0.0, 10.0, kUlps},
        {"inverted fader", ifader, P, 0, 0.25, 1e-12},
        {"inverted fader", ifader, V, 0.5, -15.0, 1e-9},
        {"inverted fader", ifader, V, 0.0, 15.0, 1e-9},
        {"inverted log", ilog, P, 200, 2.0 / 3, 1e-12},
        {"inverted log", ilog, V, 1.0 / 3, 2000.0, 1e-9},
    };
    for (const auto& row : rows) {
        const double got =
            row.toPosition ? PositionOf(row.setup, row.from) : ValueAt(row.setup, row.from);
        if (row.tolerance == kExact)
            EXPECT_EQ(got, row.to) << row.what << " from " << row.from;
        else if (row.tolerance == kUlps)
            EXPECT_DOUBLE_EQ(got, row.to) << row.what << " from " << row.from;
        else
            EXPECT_NEAR(got, row.to, row.tolerance) << row.what << " from " << row.from;
    }
    for (double v : {25.0, 100.0, 440.0, 1000.0, 7000.0, 19999.0})
        EXPECT_NEAR(ValueAt(log, PositionOf(log, v)) / v, 1.0, 1e-12) << v;
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
    auto control = Make(Range(20, 20000, {kLog}));
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
    control->SetMinMaxValue(0, 10, 3);
    control->SetSliderLogarithmic(true);
    control->SetValue(4);
    EXPECT_EQ(control->GetValue(), 4.0);
    EXPECT_EQ(control->GetRuler(), nullptr);
}

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
    const qorcore::FaderTranslator<double> law(0.9, 15, 15);
    ASSERT_NEAR(law.GetNormalizedValue(0), 0.9, 1e-7);
    for (int step : {1, -1}) {
        control->SetValue(0);
        control->IncrementValue(step);
        EXPECT_NEAR(control->GetValue(),
                    law.GetDecibelValue(law.GetNormalizedValue(0) + step / 300.0), 1e-9);
        EXPECT_EQ(control->GetValue() > 0.0, step > 0);
    }
    // Back to the linear scale: the increment's own steps again.
    control->SetHotTextScale(kHotTextScaleLinear);
    control->SetValue(0);
    control->IncrementValue(1);
    EXPECT_EQ(control->GetValue(), 1.0);
}

namespace {

class EditNumberScene : public ::testing::Test {
protected:
    void SetUp() override {
        control->SetLabel("Gain:");
        control->SetUnitLabel("dB");
        control->SetMinMaxValue(-20, 20, 0);
        control->SetFrame({10, 10, 380, 40});
        window.AddNode(control);
    }
    void Type(const std::string& text) {
        for (char c : text)
            window.TypeText(std::string(1, c));
        window.PressKey(KeyboardCode::kReturn);
    }
    qorui::UI_HotTextNumber& Hot() const { return *control->GetHotTextNumber(); }
    /// The control, its hot text and its slider (-20..20) all show `value`.
    void ExpectShows(double value) {
        EXPECT_EQ(control->GetValue(), value);
        EXPECT_EQ(Hot().GetValue(), value);
        EXPECT_DOUBLE_EQ(control->GetSlider()->GetNormalizedValue(), (value + 20) / 40);
    }
    /// Drags the hot text by `dy` in two moves; returns the value before Escape and release.
    double DragHotText(float dy, bool cancel = false) {
        const PointT<float> at = CentreOf(Hot());
        window.AdvanceTime(1);
        window.MouseDown(at.x, at.y);
        window.MouseMove(at.x, at.y + dy / 2);
        window.MouseMove(at.x, at.y + dy);
        const double during = control->GetValue();
        if (cancel)
            window.PressKey(KeyboardCode::kEscape);
        window.MouseUp(at.x, at.y + dy);
        return during;
    }
    using Messages = std::vector<int>;

    ScopedSkin look{Skin::kClassic};
    qorui::HeadlessWindow window{400, 120};
    IntrusivePtr<EditNumber> control =
        MakeIntrusive<EditNumber>(true, true, true, false, kSliderKnobArrowUpLeft);
    ControlRecorder recorder{*control};
};

} // namespace

TEST_F(EditNumberScene, DraggingTheHotTextIsOneGestureThatEscapeUndoes) {
    EXPECT_EQ(DragHotText(-10), 5.0); // two pixels a step
    ExpectShows(5.0);
    EXPECT_EQ(recorder.Folded(), (Messages{0, 1, 2}));
    EXPECT_EQ(recorder.values.back(), 5.0);
    EXPECT_EQ(recorder.changed, 1);
    // Escape puts everything back and ends the gesture cancelled.
    recorder.Clear();
    EXPECT_EQ(DragHotText(-20, true), 15.0);
    ExpectShows(5.0);
    EXPECT_EQ(recorder.Folded(), (Messages{0, 1, 3}));
    EXPECT_EQ(recorder.changed, 0);
}

TEST_F(EditNumberScene, DraggingTheSliderIsOneGestureAndTheHotTextFollows) {
    qorui::UI_Slider& slider = *control->GetSlider();
    const PointT<float> thumb = CentreOf(*slider.GetSliderThumb());
    const float travel = slider.GetSlideableDrawRect().width;
    window.MouseDown(thumb.x, thumb.y);
    window.MouseMove(thumb.x + travel / 8, thumb.y);
    window.MouseMove(thumb.x + travel / 4, thumb.y);
    window.MouseUp(thumb.x + travel / 4, thumb.y);
    EXPECT_NEAR(control->GetValue(), 10.0, 1e-4);
    EXPECT_EQ(Hot().GetValue(), control->GetValue());
    EXPECT_EQ(recorder.Folded(), (Messages{0, 1, 2}));
    EXPECT_EQ(recorder.changed, 1);
}

TEST_F(EditNumberScene, ATypedNumberIsOneGestureAndIsLimited) {
    const PointT<float> at = CentreOf(Hot());
    window.Click(at.x, at.y);
    ASSERT_NE(Hot().GetTextField(), nullptr);
    Type("12.5");
    ExpectShows(12.5);
    EXPECT_EQ(recorder.messages, (Messages{0, 1, 2}));
    ASSERT_TRUE(Hot().BeginTyping());
    Type("99");
    ExpectShows(20.0);
}

TEST_F(EditNumberScene, ValuesFromCodeAreLimitedAndSendNothing) {
    control->SetValue(100);
    ExpectShows(20.0);
    control->SetMinMaxValue(0, 10, 20);
    EXPECT_EQ(std::pair(control->GetValue(), Hot().GetMaxValue()), std::pair(10.0, 10.0));
    control->SetMinValue(12);
    EXPECT_EQ(std::pair(control->GetValue(), control->GetMaxValue()), std::pair(12.0, 12.0))
        << "a raised minimum lifts the value and the maximum";
    control->SetMaxValue(-5);
    EXPECT_EQ(control->GetMaxValue(), 12.0) << "a maximum below the minimum is the minimum";
    control->SetValue(std::nan(""));
    EXPECT_EQ(control->GetValue(), 12.0);
    EXPECT_TRUE(recorder.messages.empty());
    EXPECT_EQ(recorder.changed, 0);
}

TEST_F(EditNumberScene, AnUnknownValueDisablesTheSliderUntilANewOne) {
    for (const bool typed : {true, false}) {
        control->SetValueUnknown();
        EXPECT_TRUE(control->IsValueUnknown());
        EXPECT_EQ(Hot().GetDisplayString(), "--");
        EXPECT_TRUE(control->GetSlider()->IsDisabled());
        if (typed) {
            ASSERT_TRUE(Hot().BeginTyping());
            Type("3");
            EXPECT_EQ(recorder.Folded(), (Messages{0, 1, 2}));
        } else {
            control->SetValue(3);
        }
        EXPECT_FALSE(control->IsValueUnknown());
        EXPECT_FALSE(control->GetSlider()->IsDisabled());
        ExpectShows(3.0);
    }
}

TEST_F(EditNumberScene, DisablingSwapsTheToolTipAndStopsInput) {
    control->SetToolTip("Output gain");
    control->SetDisabledTooltip("Bypassed");
    auto tips = [&] {
        return std::vector<std::string>{Hot().GetToolTipText(),
                                        control->GetSlider()->GetToolTipText(),
                                        control->GetRulerSliderContainer()->GetToolTipText()};
    };
    const std::vector<std::string> enabled(3, "Output gain");
    EXPECT_EQ(tips(), enabled);
    control->SetDisabled(true);
    EXPECT_TRUE(Hot().IsDisabled() && control->GetSlider()->IsDisabled());
    EXPECT_EQ(tips(), std::vector<std::string>(3, "Bypassed"));

    // Resting over the disabled number shows the disabled text.
    const PointT<float> at = CentreOf(Hot());
    window.MouseMove(at.x, at.y);
    window.MouseMove(at.x + 1, at.y);
    window.AdvanceTime(2);
    ASSERT_NE(window.GetToolTip(), nullptr);
    EXPECT_TRUE(window.GetToolTip()->IsShowing());
    EXPECT_EQ(window.GetToolTip()->GetText(), "Bypassed");

    DragHotText(-20);
    EXPECT_EQ(control->GetValue(), 0.0);
    EXPECT_TRUE(recorder.messages.empty());

    control->SetDisabled(false);
    EXPECT_EQ(tips(), enabled);
    EXPECT_FALSE(control->GetSlider()->IsDisabled());
}

TEST_F(EditNumberScene, InlineUnitsLabelsAndMinusInfinity) {
    EXPECT_EQ(control->GetChildCount(), 4u) << "label, slider, number, unit";
    const float wide = Hot().GetFrame().width;
    control->SetUsesInline(true);
    EXPECT_EQ(control->GetChildCount(), 3u);
    EXPECT_EQ(Hot().GetTextLabel(), "dB");
    EXPECT_GT(Hot().GetFrame().width, wide) << "the unit is measured in";
    control->SetUsesInline(false);
    ASSERT_EQ(control->GetChildCount(), 4u);
    EXPECT_EQ(control->GetChildAt(3)->GetFrame().x, Hot().GetFrame().Right() + 2);
    EXPECT_EQ(Hot().GetTextLabel(), "");

    control->SetUsesLabel(false);
    EXPECT_EQ(control->GetChildCount(), 3u);
    control->SetUsesLabel(true);
    auto* label = dynamic_cast<qorui::UI_StaticText*>(control->GetChildAt(0));
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->GetText(), "Gain:") << "kept for when the label returns";
    EXPECT_GT(control->GetLabelBaseline(), label->GetFrame().y);
    EXPECT_LT(control->GetLabelBaseline(), label->GetFrame().Bottom());

    control->ShowNegativeInfinity(true);
    control->SetValue(-20);
    EXPECT_EQ(Hot().GetDisplayString(), "-\u221E");
    control->SetValue(-19);
    EXPECT_EQ(Hot().GetDisplayString(), "-19.00");
}

TEST_F(EditNumberScene, EnclosingLookups) {
    EXPECT_EQ(EditNumber::FindEnclosing(&Hot()), control.get());
    EXPECT_EQ(EditNumber::FindEnclosing(control->GetSlider()->GetSliderThumb()), control.get());
    EXPECT_EQ(&EditNumber::GetEnclosing(control->GetSlider()), control.get());
    EXPECT_EQ(EditNumber::FindEnclosing(control.get()), nullptr) << "ancestors only";
    EXPECT_THROW(EditNumber::GetEnclosing(window.GetRoot()), std::logic_error);
}

namespace {

std::string ScaleName(HotTextScale scale) {
    const char* names[] = {"Linear", "Decibel", "Fader", "Log"};
    return names[scale];
}

struct ScaleCase {
    HotTextScale scale;
    double min, max, start;
};

class EditNumberScales : public ::testing::TestWithParam<ScaleCase> {
protected:
    IntrusivePtr<EditNumber> Place(qorui::HeadlessWindow& window, float top, bool slider = true) {
        const ScaleCase& c = GetParam();
        auto control =
            MakeIntrusive<EditNumber>(true, false, slider, false, kSliderKnobArrowUpLeft);
        control->SetMinMaxValue(c.min, c.max, c.start);
        control->SetHotTextScale(c.scale);
        control->SetFrame({0, top, 300, 40});
        window.AddNode(control);
        return control;
    }
};

} // namespace

TEST_P(EditNumberScales, DragWheelAndTypingEachUseTheScale) {
    const ScaleCase& c = GetParam();
    qorui::HeadlessWindow window(320, 180);
    // The value one step up from the start, as the control steps it.
    auto reference = Place(window, 135, false);
    reference->IncrementValue(1);
    const double step = reference->GetValue();
    if (c.scale != kHotTextScaleLinear) {
        EXPECT_NE(step, c.start + 1) << "the scale changes the step";
    }

    auto dragged = Place(window, 0);
    ControlRecorder recorder(*dragged);
    const PointT<float> at = CentreOf(*dragged->GetHotTextNumber());
    window.MouseDown(at.x, at.y);
    window.MouseMove(at.x + 3, at.y + 1); // one step: right 3, down 1
    window.MouseUp(at.x + 3, at.y + 1);
    EXPECT_DOUBLE_EQ(dragged->GetValue(), step);
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 2}));

    auto wheeled = Place(window, 45);
    ControlRecorder wheel(*wheeled);
    const PointT<float> w = CentreOf(*wheeled->GetHotTextNumber());
    window.MouseWheel(w.x, w.y, 1.0f);
    EXPECT_DOUBLE_EQ(wheeled->GetValue(), step);
    EXPECT_EQ(wheel.messages, (std::vector<int>{0, 1, 2}));

    auto typed = Place(window, 90);
    ASSERT_TRUE(typed->GetHotTextNumber()->BeginTyping());
    window.TypeText("5");
    window.TypeText("0");
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_EQ(typed->GetValue(), std::clamp(50.0, c.min, c.max)) << "typing ignores the scale";
}

INSTANTIATE_TEST_SUITE_P(AllScales, EditNumberScales,
                         ::testing::Values(ScaleCase{kHotTextScaleLinear, -60, 15, -6},
                                           ScaleCase{kHotTextScaleDecibel, -60, 15, -6},
                                           ScaleCase{kHotTextScaleFader, -60, 15, -6},
                                           ScaleCase{kHotTextScaleLog, 20, 20000, 440}),
                         [](const auto& info) { return ScaleName(info.param.scale); });

// Where the parts of the configurations in the gallery sit is compared pixel for pixel with the
// goldens; what the gallery doesn't show is checked here.
class EditNumberLayout : public ::testing::Test {
protected:
    IntrusivePtr<EditNumber> Make(bool label, bool slider, const std::string& labelText = {},
                                  const std::string& unit = {}) {
        auto control =
            MakeIntrusive<EditNumber>(true, label, slider, false, kSliderKnobArrowUpLeft);
        if (!labelText.empty())
            control->SetLabel(labelText);
        if (!unit.empty())
            control->SetUnitLabel(unit);
        return control;
    }
    ScopedSkin look{Skin::kClassic};
};

TEST_F(EditNumberLayout, TheRecommendedSizeCoversThePartsAndFixedLengthsHold) {
    auto control = Make(true, true, "Frequency:", "Hz");
    control->SetMinMaxValue(20, 20000, 440);
    control->SetFrame({0, 0, 500, 60});
    RectT<float> all;
    for (const auto& child : control->GetChildren())
        all = all.Union(child->GetFrame());
    const PointT<float> size = control->UI_GetRecommendedSize();
    EXPECT_EQ(size, PointT<float>(std::ceil(all.Right()), std::ceil(all.Bottom())));

    control->SetUnitLabelLength(40);
    EXPECT_EQ(control->GetChildAt(3)->GetFrame().width, 40.0f);
    control->SetSliderLength(220);
    EXPECT_EQ(control->GetRulerSliderContainer()->GetFrame().width, 220.0f);

    // Descriptions under the slider add their height and a gap to what the control asks for.
    const float plainHeight = control->UI_GetRecommendedSize().y;
    control->SetDescription1("Soft");
    control->SetDescription2("Hard");
    const float description = control->GetChildAt(control->GetChildCount() - 1)->GetFrame().height;
    EXPECT_GE(control->UI_GetRecommendedSize().y, plainHeight + description + 6 - 1);

    auto bare = Make(true, false);
    EXPECT_THROW(bare->SetRuler(MakeIntrusive<qorui::LinearRuler>(), kRulerPlacementLeftTop,
                                kRulerTextPlacementNone),
                 qorcore::NullPointerException)
        << "no slider, no ruler";
}

TEST_F(EditNumberLayout, AStretchingSliderTakesTheRoomLeft) {
    auto control = Make(false, true, "", "ms");
    control->SetFrame({0, 0, 300, 30});
    const float desired = control->UI_GetRecommendedSize().x;
    ASSERT_LT(desired, 300.0f);
    const qorui::UI_Node& hot = *control->GetHotTextNumber();
    const float hotX = hot.GetFrame().x;
    control->SetSliderStretches(true);
    EXPECT_EQ(control->GetRulerSliderContainer()->GetFrame().width,
              EditNumber::kNaturalSliderLength + 300 - desired);
    EXPECT_EQ(hot.GetFrame().x, hotX + 300 - desired);
    EXPECT_EQ(control->GetChildAt(2)->GetFrame().Right(), 300.0f) << "the unit ends the row";
    // Placed into a rectangle of its own, the parts move with it.
    control->SetSliderStretches(false);
    control->RecalcLayout({10, 5, 300, 30});
    EXPECT_EQ(hot.GetFrame().x, hotX + 10);

    // Upright, the slider takes the height left and the number ends the column.
    auto upright =
        MakeIntrusive<EditNumber>(false, true, true, true, kSliderKnobArrowBidirectional);
    EXPECT_FALSE(upright->GetSlider()->IsHorizontal());
    upright->SetLabel("Mix");
    upright->SetUnitLabel("%");
    upright->SetFrame({0, 0, 80, 300});
    upright->SetSliderStretches(true);
    EXPECT_EQ(upright->GetRulerSliderContainer()->GetFrame().height,
              EditNumber::kNaturalSliderLength + 300 - upright->UI_GetRecommendedSize().y);
    EXPECT_EQ(upright->GetHotTextNumber()->GetFrame().Bottom(), 300.0f);
}

TEST_F(EditNumberLayout, TheHotTextIsSizedForItsWidestNumber) {
    auto control = Make(false, false);
    control->SetMinMaxValue(0, 9, 1);
    control->SetDecimalPlaces(0);
    EXPECT_EQ(control->GetHotTextNumber()->GetFrame().width, 25.0f) << "the narrowest width";
    control->SetMinMaxValue(-100000, 100000, 1);
    control->SetDecimalPlaces(3);
    const float wide = control->GetHotTextNumber()->GetFrame().width;
    EXPECT_GT(wide, 50.0f);
    control->SetDigits(3);
    EXPECT_LT(control->GetHotTextNumber()->GetFrame().width, wide)
        << "places after the point give way to a digits count";
    ScopedSkin v7(Skin::kV7);
    control->UpdateHotTextSize();
    EXPECT_LT(control->GetHotTextNumber()->GetFrame().width, wide);
}

TEST_F(EditNumberLayout, ADigitsCountTradesPlacesForWholeDigits) {
    auto control = Make(true, false);
    control->SetMinMaxValue(20, 24000, 1);
    control->SetDecimalPlaces(2);
    control->SetDigits(5);
    const struct {
        double value;
        const char* shown;
    } rows[] = {{30, "30.00"}, {199.996, "200.00"}, {1000, "1000.0"}, {23999.6, "24000"}};
    for (const auto& row : rows) {
        control->SetValue(row.value);
        EXPECT_EQ(control->GetHotTextNumber()->GetDisplayString(), row.shown) << row.value;
    }
}
