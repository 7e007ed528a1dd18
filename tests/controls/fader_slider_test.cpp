// FaderSlider and its cap: the detents every 3 dB, dragging past them with Alt, 3 dB steps of
// the wheel (with a modifier) and of Page Up and Page Down, and the three ways back to 0 dB (a
// double click, an Alt-click and the menu), alone and inside an edit number.
#include "controls/edit_number.hpp"
#include "controls/fader_slider.hpp"
#include "platform/menus/ui_menu_overlay.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/modal_testing.hpp"
#include "platform/widgets/control_recorder.hpp"

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
using qorui::KeyboardCode;
namespace ModifierKey = qorui::ModifierKey;
using qorui::MouseButton;
using Messages = std::vector<int>;

namespace {

const qorcore::FaderTranslator<double>& Law() {
    static const qorcore::FaderTranslator<double> law(0.75, 15, 15);
    return law;
}

PointT<float> ThumbCentre(const qorui::UI_Slider& slider) {
    const qorui::UI_Button* thumb = slider.GetSliderThumb();
    return thumb->UI_LocalToGlobalF(thumb->GetBounds().Center());
}

/// Answers the cap's menu by `answer`, clicks the cap with the right button, and returns how
/// often the menu came.
int RightClickCap(qorui::HeadlessWindow& window, const qorui::UI_Slider& slider,
                  std::function<void(qorui::UI_MenuOverlay&)> answer) {
    int shown = 0;
    qorui::testing::ScopedModalResponder responder([&](qorui::UI_ModalOverlay& overlay) {
        ++shown;
        answer(dynamic_cast<qorui::UI_MenuOverlay&>(overlay));
    });
    window.AdvanceTime(1);
    const PointT<float> cap = ThumbCentre(slider);
    window.Click(cap.x, cap.y, MouseButton::kRight);
    return shown;
}

// A vertical fader 20 by 300 at (10, 10): its cap (33 long) travels 267 pixels from y 26.5.
class LoneFader : public ::testing::Test {
protected:
    LoneFader() {
        fader->SetFrame({10, 10, 20, 300});
        window.AddNode(fader);
    }
    float YFor(double value) const { return 26.5f + 267.0f * float(value); }
    void Wheel(float amount, qorui::ModifierFlags modifiers = {}) {
        window.MouseWheel(20, 100, amount, 0.0f, modifiers);
    }

    qorui::HeadlessWindow window{100, 340};
    IntrusivePtr<FaderSlider> fader = MakeIntrusive<FaderSlider>(qorui::kSliderDirectionVertical);
    ControlRecorder recorder{*fader};
};

// A vertical edit number with a fader, its top the loud end: the law's position is the
// slider's value turned over.
class FaderEditNumber : public ::testing::Test {
protected:
    FaderEditNumber() {
        control->SetSliderLogarithmic(true);
        control->SetSliderLogStyle(1);
        control->SetInvertSlider(true);
        control->SetMinMaxValue(-60, 20, 0);
        control->SetFrame({10, 10, 60, 320});
        window.AddNode(control);
    }
    FaderSlider& Fader() const { return dynamic_cast<FaderSlider&>(*control->GetSlider()); }
    /// Sets `value`, then listens.
    PointT<float> From(double value) {
        control->SetValue(value);
        recorder.Clear();
        return ThumbCentre(Fader());
    }

    qorui::HeadlessWindow window{120, 360};
    IntrusivePtr<EditNumber> control =
        MakeIntrusive<EditNumber>(false, false, true, false, kSliderKnobFader);
    ControlRecorder recorder{*control};
};

} // namespace

TEST(FaderSlider, DetentsEveryThreeDecibelsFromMinus300To15) {
    auto vertical = MakeIntrusive<FaderSlider>(qorui::kSliderDirectionVertical);
    const std::vector<double>& ticks = vertical->GetTicks();
    ASSERT_EQ(ticks.size(), 106u);
    EXPECT_EQ(ticks.front(), 0.0) << "+15 dB at the top";
    EXPECT_NE(std::find(ticks.begin(), ticks.end(), 0.25), ticks.end()) << "0 dB";
    for (double tick : ticks) {
        const double level = Law().GetDecibelValue(1.0 - tick);
        EXPECT_NEAR(level / 3.0, std::round(level / 3.0), 1e-6) << level;
        EXPECT_GE(level, -300.0 - 1e-6);
    }
    auto horizontal = MakeIntrusive<FaderSlider>(qorui::kSliderDirectionHorizontal);
    EXPECT_EQ(horizontal->GetTicks().size(), 106u);
    EXPECT_EQ(horizontal->GetTicks().back(), 1.0) << "+15 dB at the right";
    vertical->SetHue(210);
    EXPECT_EQ(vertical->GetFaderThumb()->GetHue(), 210.0) << "the cap takes the hue";
}

TEST_F(LoneFader, ADragStopsOnADetentUnlessAltIsHeld) {
    for (const bool alt : {false, true}) {
        window.AdvanceTime(1);
        fader->SetValue(0.30);
        const qorui::ModifierFlags modifiers = alt ? ModifierKey::kAlt : qorui::ModifierFlags{};
        window.MouseDown(20, YFor(0.30));
        EXPECT_TRUE(fader->GetFaderThumb()->IsCaptured());
        // 12 pixels up is 0.045 of the travel: 0.255 lies within the detent of 0 dB at 0.25.
        window.MouseMove(20, YFor(0.255), modifiers);
        if (alt) {
            EXPECT_NEAR(fader->GetValue(), 0.255, 1e-3) << "Alt glides past the detent";
            EXPECT_NE(fader->GetValue(), 0.25);
        } else {
            EXPECT_EQ(fader->GetValue(), 0.25);
            EXPECT_NEAR(fader->GetDecibels(), 0.0, 1e-12);
        }
        window.MouseUp(20, YFor(0.255), MouseButton::kLeft, modifiers);
        EXPECT_FALSE(fader->GetFaderThumb()->IsCaptured());
    }
    EXPECT_EQ(recorder.Folded(), (Messages{0, 1, 2, 0, 1, 2}));
    EXPECT_EQ(fader->GetTicks().size(), 106u) << "the detents are back";
}

TEST_F(LoneFader, TheWheelWithAModifierStepsThreeDecibels) {
    fader->SetValue(fader->SliderValueFromFaderPosition(Law().GetNormalizedValue(-6)));
    Wheel(1.0f, ModifierKey::kShift);
    EXPECT_NEAR(fader->GetDecibels(), -3.0, 1e-9);
    EXPECT_EQ(recorder.messages, (Messages{0, 1, 2}));
    Wheel(-1.0f, ModifierKey::kControl);
    Wheel(-3.0f, ModifierKey::kControl);
    EXPECT_NEAR(fader->GetDecibels(), -9.0, 1e-9) << "one step whatever the wheel's amount";

    // Without a modifier the wheel moves a hundredth of the travel.
    const double before = fader->GetValue();
    Wheel(1.0f);
    EXPECT_NEAR(fader->GetValue(), before - 0.01, 1e-12);

    // From the bottom (minus infinity) a step up reaches the lowest detent.
    fader->SetValue(1.0);
    EXPECT_TRUE(std::isinf(fader->GetDecibels()));
    Wheel(1.0f, ModifierKey::kShift);
    EXPECT_NEAR(fader->GetDecibels(), -300.0, 1e-6);
}

TEST_F(FaderEditNumber, PageKeysStepTheEditNumberThreeDecibels) {
    From(0);
    ASSERT_TRUE(Fader().UI_RequestFocus());
    window.PressKey(KeyboardCode::kPageUp);
    EXPECT_EQ(control->GetValue(), 3.0);
    EXPECT_NEAR(Fader().GetDecibels(), 3.0, 1e-9) << "the cap follows";
    EXPECT_EQ(recorder.messages, (Messages{0, 1, 2}));
    window.PressKey(KeyboardCode::kPageDown);
    window.PressKey(KeyboardCode::kPageDown);
    EXPECT_EQ(control->GetValue(), -3.0);

    // The edit number's range limits the step, not the fader's top at +15 dB.
    control->SetValue(15);
    window.PressKey(KeyboardCode::kPageUp);
    EXPECT_EQ(control->GetValue(), 18.0);
    EXPECT_EQ(Fader().GetValue(), 0.0) << "the cap stays at the top";
    window.PressKey(KeyboardCode::kPageUp);
    EXPECT_EQ(control->GetValue(), 20.0);

    // Other keys are the slider's: Up moves the cap a hundredth towards the top.
    From(0);
    window.PressKey(KeyboardCode::kUp);
    EXPECT_GT(control->GetValue(), 0.0);
    EXPECT_EQ(recorder.Folded(), (Messages{0, 1, 2}));

    // A disabled control takes no keys.
    control->SetValue(0);
    control->SetDisabled(true);
    window.PressKey(KeyboardCode::kPageUp);
    EXPECT_EQ(control->GetValue(), 0.0);
}

TEST_F(FaderEditNumber, ADoubleClickOnTheCapReturnsToZero) {
    const PointT<float> cap = From(-12);
    window.Click(cap.x, cap.y);
    EXPECT_EQ(control->GetValue(), -12.0) << "one click changes nothing";
    window.Click(cap.x, cap.y);
    EXPECT_EQ(control->GetValue(), 0.0);
    EXPECT_EQ(control->GetHotTextNumber()->GetValue(), 0.0);
    EXPECT_NEAR(Fader().GetDecibels(), 0.0, 1e-12);
    // The first click's gesture, then the reset as one gesture of its own.
    EXPECT_EQ(recorder.Folded(), (Messages{0, 2, 0, 1, 2}));
    EXPECT_EQ(recorder.changed, 1);
}

TEST_F(FaderEditNumber, AnAltClickOnTheCapReturnsToZero) {
    const PointT<float> cap = From(9);
    window.MouseDown(cap.x, cap.y, MouseButton::kLeft, ModifierKey::kAlt);
    EXPECT_TRUE(recorder.messages.empty()) << "the press starts no drag";
    EXPECT_EQ(control->GetValue(), 9.0);
    window.MouseUp(cap.x, cap.y, MouseButton::kLeft, ModifierKey::kAlt);
    EXPECT_EQ(control->GetValue(), 0.0);
    EXPECT_EQ(recorder.messages, (Messages{0, 1, 2}));

    // Only Alt alone resets: with Control too the click is the slider's.
    control->SetValue(9);
    window.AdvanceTime(1);
    const qorui::ModifierFlags both(ModifierKey::kAlt | ModifierKey::kControl);
    window.MouseDown(cap.x, cap.y, MouseButton::kLeft, both);
    window.MouseUp(cap.x, cap.y, MouseButton::kLeft, both);
    EXPECT_NEAR(control->GetValue(), 9.0, 0.5);
}

TEST_F(LoneFader, AnAltClickOnACapOutsideAnEditNumberIsAProgramFault) {
    const PointT<float> cap = ThumbCentre(*fader);
    window.MouseDown(cap.x, cap.y, MouseButton::kLeft, ModifierKey::kAlt);
    try {
        window.MouseUp(cap.x, cap.y, MouseButton::kLeft, ModifierKey::kAlt);
        FAIL() << "expected the lookup to fail";
    } catch (const std::logic_error& e) {
        EXPECT_STREQ(e.what(), "Invalid type conversion.");
    }
    // A double click there looks leniently and does nothing.
    window.AdvanceTime(1);
    const double before = fader->GetValue();
    window.Click(cap.x, cap.y);
    window.Click(cap.x, cap.y);
    EXPECT_EQ(fader->GetValue(), before);
}

TEST_F(FaderEditNumber, TheCapsMenuOffersZero) {
    From(-20);
    EXPECT_EQ(RightClickCap(window, Fader(),
                            [](qorui::UI_MenuOverlay& menu) {
                                ASSERT_EQ(menu.GetMenu().GetItemCount(), 1u);
                                EXPECT_EQ(menu.GetMenu().GetItem(0).text, "Zero");
                                EXPECT_EQ(menu.GetMenu().GetItem(0).id,
                                          FaderSliderThumb::kMenuZero);
                                menu.Cancel();
                            }),
              1);
    EXPECT_EQ(control->GetValue(), -20.0) << "cancelled";
    EXPECT_TRUE(recorder.messages.empty());
    RightClickCap(window, Fader(), [&](qorui::UI_MenuOverlay& menu) {
        const qorcore::RectT<float> item = menu.GetItemRect(0);
        window.Click(item.Center().x, item.Center().y);
    });
    EXPECT_EQ(control->GetValue(), 0.0);
    EXPECT_EQ(recorder.messages, (Messages{0, 1, 2}));
}

TEST_F(LoneFader, TheMenuOfALoneCapChangesNothing) {
    fader->SetValue(0.6);
    RightClickCap(window, *fader, [](qorui::UI_MenuOverlay& menu) {
        menu.ChooseItem(FaderSliderThumb::kMenuZero);
    });
    EXPECT_EQ(fader->GetValue(), 0.6);
}
