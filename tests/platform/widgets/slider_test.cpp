// UI_Slider through the pointer, the keys and the wheel: the normalised value, the geometry
// that rulers line up with, detents, modifier factors and the background click behaviours.
#include "control_recorder.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/widgets/ui_slider.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace qorui;
using qafui_testing::ControlRecorder;

namespace {

// A slider 200 wide at (10, 10): the thumb is 11 long, so its centre travels 189 pixels from
// x = 5.5; value v puts it at 5.5 + 189 v in the slider, 15.5 + 189 v in the window.
class Sliders : public ::testing::Test {
protected:
    void SetUp() override {
        slider = qorcore::MakeIntrusive<UI_Slider>(kSliderDirectionHorizontal);
        slider->SetFrame({10, 10, 200, 20});
        window.AddNode(slider);
    }
    static float XFor(double value) { return 15.5f + 189.0f * float(value); }

    HeadlessWindow window{300, 300};
    qorcore::IntrusivePtr<UI_Slider> slider;
};

// Counts the drags that reach the overridable step, as a fader slider would.
class CountingSlider : public UI_Slider {
public:
    using UI_Slider::UI_Slider;
    void DoScrollThumb(const PointT<float>& pointer, ModifierFlags modifiers) override {
        ++scrolls;
        UI_Slider::DoScrollThumb(pointer, modifiers);
    }
    void Scroll(bool up, bool modifier, double amount) override {
        lastScroll = {up, modifier, amount};
        UI_Slider::Scroll(up, modifier, amount);
    }
    int scrolls = 0;
    std::tuple<bool, bool, double> lastScroll{};
};

} // namespace

TEST_F(Sliders, GeometryMapsTheValueOntoTheTravel) {
    EXPECT_EQ(slider->GetSlideableDrawRect(), RectT<float>(5.5f, 8, 189, 4));
    slider->SetSlideableDrawInsetPercent(0.3f);
    EXPECT_EQ(slider->GetSlideableDrawRect(), RectT<float>(5.5f, 6, 189, 8));
    slider->SetValue(0.5);
    const DrawSliderParameters p = slider->GetDrawSliderParameters();
    EXPECT_TRUE(p.horizontal);
    EXPECT_FLOAT_EQ(p.GetThumbPosition(), 5.5f + 94.5f);
    EXPECT_EQ(slider->GetSliderThumb()->GetFrame(), slider->GetThumbRect());
    for (double v : {0.0, 0.1, 0.25, 0.5, 0.9, 1.0})
        EXPECT_NEAR(slider->PositionToValue(slider->ValueToPosition(v)), v, 1e-6);
    slider->SetValue(1.7);
    EXPECT_EQ(slider->GetNormalizedValue(), 1.0);
    slider->SetNormalizedValue(-3);
    EXPECT_EQ(slider->GetValue(), 0.0);

    EXPECT_TRUE(UI_Slider::IsDirectionHorizontal(kSliderDirectionHorizontalPointingUp));
    EXPECT_FALSE(UI_Slider::IsDirectionHorizontal(kSliderDirectionVerticalPointingRight));
    EXPECT_GT(UI_Slider::GetDefaultSize(kSliderDirectionHorizontalPointingDown),
              UI_Slider::GetDefaultSize(kSliderDirectionHorizontal));
    EXPECT_LT(UI_Slider::GetDefaultSize(kSliderDirectionVertical, 1),
              UI_Slider::GetDefaultSize(kSliderDirectionVertical, 0));
}

TEST_F(Sliders, DraggingTheThumbFollowsThePointerAndSendsTheGesture) {
    ControlRecorder recorder(*slider);
    window.MouseDown(XFor(0) + 2, 20); // grabbed two pixels right of its centre
    EXPECT_TRUE(slider->GetSliderThumb()->GetDownState());
    EXPECT_EQ(slider->GetValue(), 0.0) << "grabbing the thumb doesn't move it";
    window.MouseMove(XFor(0.25) + 2, 20);
    window.MouseMove(XFor(0.5) + 2, 80); // off the slider sideways: still dragging
    window.MouseUp(XFor(0.5) + 2, 80);
    EXPECT_NEAR(slider->GetValue(), 0.5, 1e-6);
    EXPECT_FALSE(slider->GetSliderThumb()->GetDownState());
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 1, 2}));
    EXPECT_NEAR(recorder.values[1], 0.25, 1e-6);
    EXPECT_EQ(recorder.changed, 1);

    recorder.Clear();
    window.MouseMove(300, 300);
    window.MouseDown(XFor(0.5), 20);
    window.MouseMove(XFor(0.9), 20);
    window.MouseMove(XFor(2.0), 20);
    EXPECT_EQ(slider->GetValue(), 1.0) << "limited at the end";
    window.PressKey(KeyboardCode::kEscape);
    EXPECT_NEAR(slider->GetValue(), 0.5, 1e-6) << "Escape puts the value back";
    window.MouseUp(XFor(0.9), 20);
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 1, 3}));
    EXPECT_EQ(recorder.changed, 0);
}

TEST_F(Sliders, BackgroundClickBehaviours) {
    ControlRecorder recorder(*slider);
    // Jump and drag (the left default): the thumb comes to the pointer and follows it.
    window.MouseDown(XFor(0.5), 20);
    EXPECT_NEAR(slider->GetValue(), 0.5, 1e-6);
    window.MouseMove(XFor(0.6), 20);
    window.MouseUp(XFor(0.6), 20);
    EXPECT_NEAR(slider->GetValue(), 0.6, 1e-6);
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 2}));

    // Right presses are ignored by default and left to the parent.
    recorder.Clear();
    EXPECT_FALSE(window.MouseDown(XFor(0.1), 20, MouseButton::kRight));
    window.MouseUp(XFor(0.1), 20, MouseButton::kRight);
    EXPECT_TRUE(recorder.messages.empty());

    // Paging moves a tenth towards the pointer, never past it.
    slider->SetRightClickBackgroundClickBehavior(kSliderBackgroundClickPage);
    window.Click(XFor(0.1), 20, MouseButton::kRight);
    EXPECT_NEAR(slider->GetValue(), 0.5, 1e-6);
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 2}));
    window.AdvanceTime(1);
    window.Click(XFor(0.45), 20, MouseButton::kRight);
    EXPECT_NEAR(slider->GetValue(), 0.45, 1e-6);

    // Alt with the left button can stand for the right one.
    window.AdvanceTime(1);
    window.Click(XFor(0.9), 20, MouseButton::kLeft, ModifierKey::kAlt);
    EXPECT_NEAR(slider->GetValue(), 0.9, 1e-6) << "without the option it is a left press";
    slider->SetValue(0.45);
    slider->SetTreatAltLeftClickBackgroundClickAsARightClick(true);
    window.AdvanceTime(1);
    window.Click(XFor(0.9), 20, MouseButton::kLeft, ModifierKey::kAlt);
    EXPECT_NEAR(slider->GetValue(), 0.55, 1e-6) << "now it pages";
}

TEST_F(Sliders, TheThumbOverhangCanBeLeftAlone) {
    slider->SetValue(0.5);
    window.MouseDown(12, 20); // left of the travel, where only the thumb at 0 would be
    window.MouseUp(12, 20);
    EXPECT_EQ(slider->GetValue(), 0.0);
    slider->SetValue(0.5);
    slider->SetIgnoreThumbOverhangAreaWhenClickingOnSlider(true);
    window.AdvanceTime(1);
    EXPECT_FALSE(window.MouseDown(12, 20));
    window.MouseUp(12, 20);
    EXPECT_EQ(slider->GetValue(), 0.5);
    slider->SetValue(0.0);
    window.AdvanceTime(1);
    EXPECT_TRUE(window.MouseDown(12, 20)) << "but the thumb itself is still grabbed there";
    window.MouseUp(12, 20);
}

TEST_F(Sliders, ModifiersAsFactorsSlowTheDrag) {
    slider->SetValue(0.5);
    window.MouseDown(XFor(0.5), 20, MouseButton::kLeft);
    window.MouseMove(XFor(0.5) + 50, 20, ModifierKey::kShift);
    EXPECT_NEAR(slider->GetValue(), 0.5 + 50.0 / 189, 1e-6) << "no factor unless asked";
    window.PressKey(KeyboardCode::kEscape);
    window.MouseUp(XFor(0.5), 20);

    slider->SetIsShiftModifierAFactor(true);
    slider->SetIsCmdModifierAFactor(true);
    window.AdvanceTime(1);
    window.MouseDown(XFor(0.5), 20);
    window.MouseMove(XFor(0.5) + 100, 20, ModifierKey::kShift);
    EXPECT_NEAR(slider->GetValue(), 0.5 + 10.0 / 189, 1e-6);
    window.MouseMove(XFor(0.5) + 200, 20,
                     ModifierFlags(ModifierKey::kShift | ModifierKey::kCommand));
    EXPECT_NEAR(slider->GetValue(), 0.5 + 11.0 / 189, 1e-6);
    // Letting go of the keys continues from where the thumb is, without a jump.
    window.MouseMove(XFor(0.5) + 210, 20);
    EXPECT_NEAR(slider->GetValue(), 0.5 + 21.0 / 189, 1e-6);
    window.MouseUp(XFor(0.5) + 210, 20);
}

TEST_F(Sliders, TicksAreDetentsForTheDrag) {
    slider->SetTicks({0.5, 2.0, -1.0, 0.25});
    EXPECT_EQ(slider->GetTicks(), (std::vector<double>{0.25, 0.5})) << "outside 0..1 dropped";
    window.MouseDown(XFor(0), 20);
    window.MouseMove(XFor(0.5) + 3, 20);
    EXPECT_EQ(slider->GetValue(), 0.5) << "three pixels off stops on the tick";
    window.MouseMove(XFor(0.5) + 6, 20);
    EXPECT_NEAR(slider->GetValue(), 0.5 + 6.0 / 189, 1e-6) << "six pixels off leaves it";
    window.MouseUp(XFor(0.5) + 6, 20);
}

TEST_F(Sliders, KeysAndWheelEachMakeOneGesture) {
    ControlRecorder recorder(*slider);
    slider->SetValue(0.5);
    ASSERT_TRUE(slider->UI_RequestFocus());
    window.PressKey(KeyboardCode::kRight);
    EXPECT_NEAR(slider->GetValue(), 0.51, 1e-9);
    window.PressKey(KeyboardCode::kLeft, ModifierKey::kShift);
    EXPECT_NEAR(slider->GetValue(), 0.509, 1e-9);
    window.PressKey(KeyboardCode::kPageUp);
    EXPECT_NEAR(slider->GetValue(), 0.609, 1e-9);
    window.PressKey(KeyboardCode::kEnd);
    EXPECT_EQ(slider->GetValue(), 1.0);
    window.PressKey(KeyboardCode::kHome);
    EXPECT_EQ(slider->GetValue(), 0.0);
    EXPECT_EQ(recorder.messages.size(), 5u * 3u);
    EXPECT_EQ(recorder.changed, 5);

    window.MouseWheel(50, 20, 2.0f);
    EXPECT_NEAR(slider->GetValue(), 0.02, 1e-9);
}

TEST_F(Sliders, VerticalSlidersRunFromTheTop) {
    auto vertical = qorcore::MakeIntrusive<CountingSlider>(kSliderDirectionVerticalPointingRight);
    vertical->SetFrame({250, 10, 20, 200});
    window.AddNode(vertical);
    EXPECT_FALSE(vertical->IsHorizontal());
    EXPECT_EQ(vertical->GetSlideableDrawRect(), RectT<float>(8, 5.5f, 4, 189));
    window.MouseDown(260, 15.5f + 189 * 0.25f);
    EXPECT_NEAR(vertical->GetValue(), 0.25, 1e-6);
    window.MouseMove(260, 15.5f + 189 * 0.75f);
    window.MouseUp(260, 15.5f + 189 * 0.75f);
    EXPECT_NEAR(vertical->GetValue(), 0.75, 1e-6);
    EXPECT_EQ(vertical->scrolls, 1) << "drags go through the overridable step";

    // Up moves the thumb up, towards 0.
    window.MouseWheel(260, 100, 1.0f, 0.0f, ModifierKey::kShift);
    EXPECT_EQ(vertical->lastScroll, std::make_tuple(true, true, 1.0));
    EXPECT_NEAR(vertical->GetValue(), 0.749, 1e-9);
    ASSERT_TRUE(vertical->UI_RequestFocus());
    window.PressKey(KeyboardCode::kDown);
    EXPECT_NEAR(vertical->GetValue(), 0.759, 1e-9);
}

TEST_F(Sliders, AnInstalledThumbTakesTheOldOnesPlace) {
    UI_Button* old = slider->GetSliderThumb();
    auto thumb = qorcore::MakeIntrusive<UI_Button>();
    slider->InstallSliderThumb(thumb);
    EXPECT_EQ(slider->GetSliderThumb(), thumb.get());
    EXPECT_EQ(old->GetParent(), nullptr);
    EXPECT_EQ(slider->GetChildCount(), 1u);
    EXPECT_TRUE(thumb->GetPassesPressesToParent());
    EXPECT_FALSE(thumb->WantsKeyboardFocus()) << "the slider keeps the focus and the keys";
    slider->SetValue(1.0);
    EXPECT_EQ(thumb->GetFrame(), slider->GetThumbRect());
    // Pressing it drags the slider, not the button.
    ControlRecorder thumbRecorder(*thumb);
    window.MouseDown(XFor(1.0), 20);
    window.MouseMove(XFor(0.5), 20);
    window.MouseUp(XFor(0.5), 20);
    EXPECT_NEAR(slider->GetValue(), 0.5, 1e-6);
    EXPECT_TRUE(thumbRecorder.messages.empty());
    EXPECT_EQ(window.GetFocusNode(), slider.get());
    EXPECT_THROW(slider->InstallSliderThumb(nullptr), std::invalid_argument);
}

TEST(SliderEdges, ASliderShorterThanItsThumbStillBehaves) {
    HeadlessWindow window(100, 100);
    auto slider = qorcore::MakeIntrusive<UI_Slider>();
    slider->SetFrame({10, 10, 6, 20});
    window.AddNode(slider);
    ControlRecorder recorder(*slider);
    window.MouseDown(13, 20);
    window.MouseMove(90, 20);
    window.MouseUp(90, 20);
    EXPECT_EQ(slider->GetValue(), 0.0) << "no travel, no movement";
    EXPECT_EQ(slider->GetSlideableDrawRect().width, 0.0f);
    slider->SetValue(std::nan(""));
    slider->SetSlideableDrawInsetPercent(std::nan(""));
    slider->Scroll(true, false, std::numeric_limits<double>::infinity());
    EXPECT_EQ(slider->GetValue(), 0.0);
    slider->SetLeftClickBackgroundClickBehavior(17);
    EXPECT_EQ(slider->GetLeftClickBackgroundClickBehavior(), kSliderBackgroundClickIgnore);
}
