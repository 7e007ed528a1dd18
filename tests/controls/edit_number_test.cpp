// EditNumber through the pointer and the keyboard: gestures of the hot text and the slider,
// typing, the wheel with each hot text scale, limits, the unknown value, disabling with its
// tool tip, and the layout of the parts in both directions.
#include "controls/edit_number.hpp"
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

int Count(const std::vector<int>& messages, int message) {
    return int(std::count(messages.begin(), messages.end(), message));
}

PointT<float> CentreOf(const qorui::UI_Node& node) {
    return node.UI_LocalToGlobalF(node.GetBounds().Center());
}

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
    }
    qorui::UI_HotTextNumber& Hot() const { return *control->GetHotTextNumber(); }

    ScopedSkin look{Skin::kClassic};
    qorui::HeadlessWindow window{400, 120};
    IntrusivePtr<EditNumber> control =
        MakeIntrusive<EditNumber>(true, true, true, false, kSliderKnobArrowUpLeft);
};

} // namespace

TEST_F(EditNumberScene, DraggingTheHotTextIsOneGesture) {
    ControlRecorder recorder(*control);
    const PointT<float> at = CentreOf(Hot());
    window.MouseDown(at.x, at.y);
    window.MouseMove(at.x, at.y - 4);  // two steps
    window.MouseMove(at.x, at.y - 10); // five
    EXPECT_EQ(control->GetValue(), 5.0);
    EXPECT_DOUBLE_EQ(control->GetSlider()->GetNormalizedValue(), 25.0 / 40);
    window.MouseUp(at.x, at.y - 10);
    EXPECT_EQ(Count(recorder.messages, 0), 1);
    EXPECT_EQ(Count(recorder.messages, 2), 1);
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(recorder.values.back(), 5.0);
    EXPECT_EQ(recorder.changed, 1);

    // Escape puts everything back and ends the gesture cancelled.
    recorder.Clear();
    window.AdvanceTime(1);
    window.MouseDown(at.x, at.y);
    window.MouseMove(at.x, at.y - 20);
    EXPECT_EQ(control->GetValue(), 15.0);
    window.PressKey(KeyboardCode::kEscape);
    window.MouseUp(at.x, at.y - 20);
    EXPECT_EQ(control->GetValue(), 5.0);
    EXPECT_EQ(Hot().GetValue(), 5.0);
    EXPECT_DOUBLE_EQ(control->GetSlider()->GetNormalizedValue(), 25.0 / 40);
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 3}));
    EXPECT_EQ(recorder.changed, 0);
}

TEST_F(EditNumberScene, DraggingTheSliderIsOneGestureAndTheHotTextFollows) {
    ControlRecorder recorder(*control);
    qorui::UI_Slider& slider = *control->GetSlider();
    const PointT<float> thumb = CentreOf(*slider.GetSliderThumb());
    const float travel = slider.GetSlideableDrawRect().width;
    window.MouseDown(thumb.x, thumb.y);
    window.MouseMove(thumb.x + travel / 8, thumb.y);
    window.MouseMove(thumb.x + travel / 4, thumb.y);
    window.MouseUp(thumb.x + travel / 4, thumb.y);
    EXPECT_NEAR(control->GetValue(), 10.0, 1e-4);
    EXPECT_EQ(Hot().GetValue(), control->GetValue());
    EXPECT_EQ(Count(recorder.messages, 0), 1);
    EXPECT_EQ(Count(recorder.messages, 2), 1);
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(recorder.changed, 1);
}

TEST_F(EditNumberScene, ATypedNumberIsOneGestureAndIsLimited) {
    ControlRecorder recorder(*control);
    const PointT<float> at = CentreOf(Hot());
    window.Click(at.x, at.y);
    ASSERT_NE(Hot().GetTextField(), nullptr);
    Type("12.5");
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_EQ(control->GetValue(), 12.5);
    EXPECT_DOUBLE_EQ(control->GetSlider()->GetNormalizedValue(), 32.5 / 40);
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 2}));
    ASSERT_TRUE(Hot().BeginTyping());
    Type("99");
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_EQ(control->GetValue(), 20.0);
}

TEST_F(EditNumberScene, ValuesFromCodeAreLimitedAndSendNothing) {
    ControlRecorder recorder(*control);
    control->SetValue(100);
    EXPECT_EQ(control->GetValue(), 20.0);
    EXPECT_EQ(Hot().GetValue(), 20.0);
    control->SetMinMaxValue(0, 10, 20);
    EXPECT_EQ(control->GetValue(), 10.0);
    EXPECT_EQ(Hot().GetMaxValue(), 10.0);
    control->SetMinValue(12);
    EXPECT_EQ(control->GetValue(), 12.0) << "a raised minimum lifts the value";
    EXPECT_EQ(control->GetMaxValue(), 12.0);
    control->SetMaxValue(-5);
    EXPECT_EQ(control->GetMaxValue(), 12.0) << "a maximum below the minimum is the minimum";
    control->SetValue(std::nan(""));
    EXPECT_EQ(control->GetValue(), 12.0);
    EXPECT_TRUE(recorder.messages.empty());
    EXPECT_EQ(recorder.changed, 0);
}

TEST_F(EditNumberScene, AnUnknownValueDisablesTheSliderUntilANewOne) {
    control->SetValueUnknown();
    EXPECT_TRUE(control->IsValueUnknown());
    EXPECT_EQ(Hot().GetDisplayString(), "--");
    EXPECT_TRUE(control->GetSlider()->IsDisabled());
    ControlRecorder recorder(*control);
    ASSERT_TRUE(Hot().BeginTyping());
    Type("3");
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_FALSE(control->IsValueUnknown());
    EXPECT_EQ(control->GetValue(), 3.0);
    EXPECT_FALSE(control->GetSlider()->IsDisabled());
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 2}));

    control->SetValueUnknown();
    control->SetValue(-4);
    EXPECT_FALSE(control->GetSlider()->IsDisabled());
    EXPECT_EQ(Hot().GetValue(), -4.0);
}

TEST_F(EditNumberScene, DisablingSwapsTheToolTipAndStopsInput) {
    control->SetToolTip("Output gain");
    control->SetDisabledTooltip("Bypassed");
    EXPECT_EQ(Hot().GetToolTipText(), "Output gain");
    EXPECT_EQ(control->GetSlider()->GetToolTipText(), "Output gain");
    control->SetDisabled(true);
    EXPECT_TRUE(control->IsDisabled());
    EXPECT_TRUE(Hot().IsDisabled());
    EXPECT_TRUE(control->GetSlider()->IsDisabled());
    for (const qorui::UI_Node* part :
         {static_cast<const qorui::UI_Node*>(&Hot()),
          static_cast<const qorui::UI_Node*>(control->GetSlider()),
          static_cast<const qorui::UI_Node*>(control->GetRulerSliderContainer())})
        EXPECT_EQ(part->GetToolTipText(), "Bypassed");

    // Resting over the disabled number shows the disabled text.
    const PointT<float> at = CentreOf(Hot());
    window.MouseMove(at.x, at.y);
    window.MouseMove(at.x + 1, at.y);
    window.AdvanceTime(2);
    ASSERT_NE(window.GetToolTip(), nullptr);
    EXPECT_TRUE(window.GetToolTip()->IsShowing());
    EXPECT_EQ(window.GetToolTip()->GetText(), "Bypassed");

    ControlRecorder recorder(*control);
    window.MouseDown(at.x, at.y);
    window.MouseMove(at.x, at.y - 20);
    window.MouseUp(at.x, at.y - 20);
    EXPECT_EQ(control->GetValue(), 0.0);
    EXPECT_TRUE(recorder.messages.empty());

    control->SetDisabled(false);
    EXPECT_EQ(Hot().GetToolTipText(), "Output gain");
    EXPECT_FALSE(control->GetSlider()->IsDisabled());
}

TEST_F(EditNumberScene, InlineUnitsLabelsAndMinusInfinity) {
    EXPECT_EQ(control->GetChildCount(), 4u) << "label, slider, number, unit";
    const float wide = Hot().GetFrame().width;
    control->SetUsesInline(true);
    EXPECT_TRUE(control->GetUsesInline());
    EXPECT_EQ(control->GetChildCount(), 3u);
    EXPECT_EQ(Hot().GetTextLabel(), "dB");
    EXPECT_GT(Hot().GetFrame().width, wide) << "the unit is measured in";
    control->SetUsesInline(false);
    ASSERT_EQ(control->GetChildCount(), 4u);
    EXPECT_EQ(control->GetChildAt(3)->GetFrame().x, Hot().GetFrame().Right() + 2);
    EXPECT_EQ(Hot().GetTextLabel(), "");

    control->SetUsesLabel(false);
    EXPECT_EQ(control->GetChildCount(), 3u);
    EXPECT_EQ(control->GetLabel(), "Gain:") << "kept for when the label returns";
    control->SetUsesLabel(true);
    auto* label = dynamic_cast<qorui::UI_StaticText*>(control->GetChildAt(0));
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->GetText(), "Gain:");
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

// ---- hot text scales through the pointer ----

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
    IntrusivePtr<EditNumber> Place(qorui::HeadlessWindow& window, float top) {
        const ScaleCase& c = GetParam();
        auto control = MakeIntrusive<EditNumber>(true, false, true, false, kSliderKnobArrowUpLeft);
        control->SetMinMaxValue(c.min, c.max, c.start);
        control->SetHotTextScale(c.scale);
        control->SetFrame({0, top, 300, 40});
        window.AddNode(control);
        return control;
    }
    /// The value one step up from the start, as the control steps it.
    double OneStep() {
        auto reference =
            MakeIntrusive<EditNumber>(true, false, false, false, kSliderKnobArrowUpLeft);
        const ScaleCase& c = GetParam();
        reference->SetMinMaxValue(c.min, c.max, c.start);
        reference->SetHotTextScale(c.scale);
        reference->IncrementValue(1);
        return reference->GetValue();
    }
};

TEST_P(EditNumberScales, DragWheelAndTypingEachUseTheScale) {
    const ScaleCase& c = GetParam();
    qorui::HeadlessWindow window(320, 140);
    const double step = OneStep();
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

// ---- layout ----

namespace {

float MiddleY(const qorui::UI_Node& n) {
    return n.GetFrame().y + n.GetFrame().height / 2;
}

/// The middle of the slider's groove in the control's coordinates.
float GrooveMiddleY(const EditNumber& control) {
    const RulerSliderContainer& container = *control.GetRulerSliderContainer();
    const RectT<float> groove = container.GetSlider()->GetSlideableDrawRect();
    return container.GetFrame().y + container.GetSlider()->GetFrame().y + groove.y +
           groove.height / 2;
}

} // namespace

TEST(EditNumberLayout, HorizontalPartsInARowOnTheGroovesMiddle) {
    ScopedSkin look(Skin::kClassic);
    auto control = MakeIntrusive<EditNumber>(true, true, true, false, kSliderKnobArrowUpLeft);
    control->SetLabel("Frequency:");
    control->SetUnitLabel("Hz");
    control->SetMinMaxValue(20, 20000, 440);
    control->SetFrame({0, 0, 500, 60});
    const qorui::UI_Node& label = *control->GetChildAt(0);
    const RulerSliderContainer& slider = *control->GetRulerSliderContainer();
    const qorui::UI_Node& hot = *control->GetHotTextNumber();
    const qorui::UI_Node& unit = *control->GetChildAt(3);
    EXPECT_EQ(label.GetFrame().x, 0.0f);
    EXPECT_EQ(slider.GetFrame().x, label.GetFrame().Right() + 4);
    EXPECT_EQ(slider.GetFrame().width, EditNumber::kNaturalSliderLength);
    EXPECT_EQ(hot.GetFrame().x, slider.GetFrame().Right() + 4);
    EXPECT_EQ(unit.GetFrame().x, hot.GetFrame().Right() + 2);
    EXPECT_GE(hot.GetFrame().width, 25.0f);
    EXPECT_EQ(hot.GetFrame().height, 20.0f);
    for (const qorui::UI_Node* part : {&label, &hot, &unit})
        EXPECT_NEAR(MiddleY(*part), GrooveMiddleY(*control), 1.0);

    // What the control asks for covers its parts exactly.
    RectT<float> all;
    for (const auto& child : control->GetChildren())
        all = all.Union(child->GetFrame());
    const PointT<float> size = control->UI_GetRecommendedSize();
    EXPECT_EQ(size, PointT<float>(std::ceil(all.Right()), std::ceil(all.Bottom())));

    // A fixed unit width, and a fixed slider length.
    control->SetUnitLabelLength(40);
    EXPECT_EQ(unit.GetFrame().width, 40.0f);
    control->SetSliderLength(220);
    EXPECT_EQ(slider.GetFrame().width, 220.0f);
    EXPECT_EQ(control->GetSliderLength(), 220u);
}

TEST(EditNumberLayout, ARulerOnTopLiftsTheLineFourPixels) {
    ScopedSkin look(Skin::kClassic);
    auto control = MakeIntrusive<EditNumber>(true, true, true, false, kSliderKnobArrowUpLeft);
    control->SetLabel("Gain:");
    control->SetMinMaxValue(-12, 12, 0);
    control->SetFrame({0, 0, 400, 40});
    auto ruler = MakeIntrusive<qorui::LinearRuler>();
    ruler->SetValueRange(-12, 12);
    control->SetRuler(ruler, kRulerPlacementRightBottom, kRulerTextPlacementNone);
    const float below = MiddleY(*control->GetHotTextNumber()) - GrooveMiddleY(*control);
    control->SetRuler(ruler, kRulerPlacementLeftTop, kRulerTextPlacementNone);
    const float above = MiddleY(*control->GetHotTextNumber()) - GrooveMiddleY(*control);
    EXPECT_EQ(below - above, 4.0f);
    EXPECT_EQ(control->GetRuler(), ruler);
    EXPECT_EQ(control->GetRulerPlacement(), kRulerPlacementLeftTop);
    EXPECT_EQ(control->GetRulerTextPlacement(), kRulerTextPlacementNone);

    auto bare = MakeIntrusive<EditNumber>(true, true, false, false, kSliderKnobArrowUpLeft);
    EXPECT_THROW(bare->SetRuler(ruler, kRulerPlacementLeftTop, kRulerTextPlacementNone),
                 qorcore::NullPointerException);
}

TEST(EditNumberLayout, DescriptionsSitUnderTheSlidersEnds) {
    ScopedSkin look(Skin::kClassic);
    auto control = MakeIntrusive<EditNumber>(true, false, true, false, kSliderKnobArrowUpLeft);
    control->SetFrame({0, 0, 400, 60});
    const float plainHeight = control->UI_GetRecommendedSize().y;
    control->SetDescription1("Soft");
    control->SetDescription2("Hard");
    EXPECT_EQ(control->GetDescription1(), "Soft");
    const RulerSliderContainer& container = *control->GetRulerSliderContainer();
    const RectT<float> slider =
        container.GetSlider()->GetFrame().Offset(container.GetFrame().Origin());
    const qorui::UI_Node* soft = control->GetChildAt(control->GetChildCount() - 2);
    const qorui::UI_Node* hard = control->GetChildAt(control->GetChildCount() - 1);
    EXPECT_EQ(soft->GetFrame().x, slider.x + 8);
    EXPECT_EQ(soft->GetFrame().y, slider.Bottom() + 2);
    EXPECT_EQ(hard->GetFrame().Right(), slider.Right() - 8);
    EXPECT_EQ(hard->GetFrame().y, soft->GetFrame().y);
    EXPECT_GE(control->UI_GetRecommendedSize().y, plainHeight + soft->GetFrame().height + 6 - 1);
}

TEST(EditNumberLayout, AStretchingSliderTakesTheRoomLeft) {
    ScopedSkin look(Skin::kClassic);
    auto control = MakeIntrusive<EditNumber>(true, false, true, false, kSliderKnobArrowUpLeft);
    control->SetUnitLabel("ms");
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
}

TEST(EditNumberLayout, VerticalPartsStackOnTheSlidersCentre) {
    ScopedSkin look(Skin::kClassic);
    auto control =
        MakeIntrusive<EditNumber>(false, true, true, true, kSliderKnobArrowBidirectional);
    EXPECT_FALSE(control->IsHorizontal());
    EXPECT_FALSE(control->GetSlider()->IsHorizontal());
    control->SetLabel("Mix");
    control->SetUnitLabel("%");
    control->SetFrame({0, 0, 80, 300});
    const qorui::UI_Node& label = *control->GetChildAt(0);
    const RulerSliderContainer& container = *control->GetRulerSliderContainer();
    const qorui::UI_Node& hot = *control->GetHotTextNumber();
    EXPECT_LT(label.GetFrame().Bottom(), container.GetFrame().y + 1);
    EXPECT_EQ(container.GetFrame().height, EditNumber::kNaturalSliderLength);
    EXPECT_GE(hot.GetFrame().y, container.GetFrame().Bottom());
    const RectT<float> slider =
        container.GetSlider()->GetFrame().Offset(container.GetFrame().Origin());
    const float centre = slider.x + slider.width / 2;
    EXPECT_NEAR(label.GetFrame().x + label.GetFrame().width / 2, centre, 1.0);
    EXPECT_NEAR(hot.GetFrame().x + hot.GetFrame().width / 2, centre, 1.0);

    control->SetSliderStretches(true);
    EXPECT_EQ(container.GetFrame().height,
              EditNumber::kNaturalSliderLength + 300 - control->UI_GetRecommendedSize().y);
    EXPECT_EQ(hot.GetFrame().Bottom(), 300.0f);
}

TEST(EditNumberLayout, WithoutASliderTheTextsShareTheirMiddle) {
    ScopedSkin look(Skin::kClassic);
    auto control = MakeIntrusive<EditNumber>(true, true, false, false, kSliderKnobArrowUpLeft);
    control->SetLabel("Order:");
    control->SetUnitLabel("poles");
    control->SetFrame({0, 0, 200, 30});
    const qorui::UI_Node& label = *control->GetChildAt(0);
    const qorui::UI_Node& hot = *control->GetHotTextNumber();
    const qorui::UI_Node& unit = *control->GetChildAt(2);
    EXPECT_EQ(hot.GetFrame().x, label.GetFrame().Right() + 4);
    EXPECT_EQ(unit.GetFrame().x, hot.GetFrame().Right() + 2);
    EXPECT_NEAR(MiddleY(label), MiddleY(hot), 1.0);
    EXPECT_NEAR(MiddleY(unit), MiddleY(hot), 1.0);
    EXPECT_EQ(hot.GetFrame().y, 0.0f) << "the tallest part sets the top";
}

TEST(EditNumberLayout, TheHotTextIsSizedForItsWidestNumber) {
    ScopedSkin look(Skin::kClassic);
    auto control = MakeIntrusive<EditNumber>(true, false, false, false, kSliderKnobArrowUpLeft);
    control->SetMinMaxValue(0, 9, 1);
    control->SetDecimalPlaces(0);
    EXPECT_EQ(control->GetHotTextNumber()->GetFrame().width, 25.0f) << "the narrowest width";
    control->SetMinMaxValue(-100000, 100000, 1);
    control->SetDecimalPlaces(3);
    const float wide = control->GetHotTextNumber()->GetFrame().width;
    EXPECT_GT(wide, 50.0f);
    control->SetDigits(3);
    EXPECT_EQ(control->GetHotTextNumber()->GetFrame().width, wide)
        << "digits count in the newer look";
    ScopedSkin v7(Skin::kV7);
    control->UpdateHotTextSize();
    EXPECT_LT(control->GetHotTextNumber()->GetFrame().width, wide);
}
