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

#include <cmath>
#include <stdexcept>

using namespace qoraudiofiltersui;
using qafui_testing::ControlRecorder;
using qorcore::IntrusivePtr;
using qorcore::MakeIntrusive;
using qorcore::PointT;
using qorui::KeyboardCode;
namespace ModifierKey = qorui::ModifierKey;
using qorui::MouseButton;

namespace {

const qorcore::FaderTranslator<double>& Law() {
    static const qorcore::FaderTranslator<double> law(0.75, 15, 15);
    return law;
}

PointT<float> ThumbCentre(const qorui::UI_Slider& slider) {
    const qorui::UI_Button* thumb = slider.GetSliderThumb();
    return thumb->UI_LocalToGlobalF(thumb->GetBounds().Center());
}

// A vertical fader 20 by 300 at (10, 10): its cap (33 long) travels 267 pixels from y 26.5.
struct LoneFader {
    LoneFader() {
        fader->SetFrame({10, 10, 20, 300});
        window.AddNode(fader);
    }
    float YFor(double value) const { return 26.5f + 267.0f * float(value); }

    qorui::HeadlessWindow window{100, 340};
    IntrusivePtr<FaderSlider> fader = MakeIntrusive<FaderSlider>(qorui::kSliderDirectionVertical);
};

// A vertical edit number with a fader, its top the loud end: the law's position is the
// slider's value turned over.
struct FaderEditNumber {
    FaderEditNumber() {
        control->SetSliderLogarithmic(true);
        control->SetSliderLogStyle(1);
        control->SetInvertSlider(true);
        control->SetMinMaxValue(-60, 20, 0);
        control->SetFrame({10, 10, 60, 320});
        window.AddNode(control);
    }
    FaderSlider& Fader() const { return dynamic_cast<FaderSlider&>(*control->GetSlider()); }
    FaderSliderThumb& Cap() const { return *Fader().GetFaderThumb(); }

    qorui::HeadlessWindow window{120, 360};
    IntrusivePtr<EditNumber> control =
        MakeIntrusive<EditNumber>(false, false, true, false, kSliderKnobFader);
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

    EXPECT_EQ(vertical->GetMinThumbSize(), 33.0f);
    ASSERT_NE(vertical->GetFaderThumb(), nullptr);
    EXPECT_EQ(vertical->GetFaderThumb()->GetHue(), -1.0);
    vertical->SetHue(210);
    EXPECT_EQ(vertical->GetFaderThumb()->GetHue(), 210.0);
}

TEST(FaderSlider, ADragStopsOnADetentUnlessAltIsHeld) {
    LoneFader scene;
    ControlRecorder recorder(*scene.fader);
    scene.fader->SetValue(0.30);
    scene.window.MouseDown(20, scene.YFor(0.30));
    EXPECT_TRUE(scene.fader->GetFaderThumb()->IsCaptured());
    // 12 pixels up is 0.045 of the travel: 0.255 lies within the detent of 0 dB at 0.25.
    scene.window.MouseMove(20, scene.YFor(0.255));
    EXPECT_EQ(scene.fader->GetValue(), 0.25);
    EXPECT_NEAR(scene.fader->GetDecibels(), 0.0, 1e-12);
    scene.window.MouseUp(20, scene.YFor(0.255));
    EXPECT_FALSE(scene.fader->GetFaderThumb()->IsCaptured());
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 2}));

    scene.window.AdvanceTime(1);
    scene.fader->SetValue(0.30);
    scene.window.MouseDown(20, scene.YFor(0.30));
    scene.window.MouseMove(20, scene.YFor(0.255), ModifierKey::kAlt);
    EXPECT_NEAR(scene.fader->GetValue(), 0.255, 1e-3) << "Alt glides past the detent";
    EXPECT_NE(scene.fader->GetValue(), 0.25);
    scene.window.MouseUp(20, scene.YFor(0.255), MouseButton::kLeft, ModifierKey::kAlt);
    EXPECT_EQ(scene.fader->GetTicks().size(), 106u) << "the detents are back";
}

TEST(FaderSlider, TheWheelWithAModifierStepsThreeDecibels) {
    LoneFader scene;
    ControlRecorder recorder(*scene.fader);
    scene.fader->SetValue(scene.fader->SliderValueFromFaderPosition(Law().GetNormalizedValue(-6)));
    scene.window.MouseWheel(20, 100, 1.0f, 0.0f, ModifierKey::kShift);
    EXPECT_NEAR(scene.fader->GetDecibels(), -3.0, 1e-9);
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 2}));
    scene.window.MouseWheel(20, 100, -1.0f, 0.0f, ModifierKey::kControl);
    scene.window.MouseWheel(20, 100, -3.0f, 0.0f, ModifierKey::kControl);
    EXPECT_NEAR(scene.fader->GetDecibels(), -9.0, 1e-9) << "one step whatever the wheel's amount";

    // Without a modifier the wheel moves a hundredth of the travel.
    const double before = scene.fader->GetValue();
    scene.window.MouseWheel(20, 100, 1.0f);
    EXPECT_NEAR(scene.fader->GetValue(), before - 0.01, 1e-12);

    // From the bottom (minus infinity) a step up reaches the lowest detent.
    scene.fader->SetValue(1.0);
    EXPECT_TRUE(std::isinf(scene.fader->GetDecibels()));
    scene.window.MouseWheel(20, 100, 1.0f, 0.0f, ModifierKey::kShift);
    EXPECT_NEAR(scene.fader->GetDecibels(), -300.0, 1e-6);
}

TEST(FaderSlider, PageKeysStepTheEditNumberThreeDecibels) {
    FaderEditNumber scene;
    ControlRecorder recorder(*scene.control);
    ASSERT_TRUE(scene.Fader().UI_RequestFocus());
    scene.window.PressKey(KeyboardCode::kPageUp);
    EXPECT_EQ(scene.control->GetValue(), 3.0);
    EXPECT_NEAR(scene.Fader().GetDecibels(), 3.0, 1e-9) << "the cap follows";
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 2}));
    scene.window.PressKey(KeyboardCode::kPageDown);
    scene.window.PressKey(KeyboardCode::kPageDown);
    EXPECT_EQ(scene.control->GetValue(), -3.0);

    // The edit number's range limits the step, not the fader's top at +15 dB.
    scene.control->SetValue(15);
    scene.window.PressKey(KeyboardCode::kPageUp);
    EXPECT_EQ(scene.control->GetValue(), 18.0);
    EXPECT_EQ(scene.Fader().GetValue(), 0.0) << "the cap stays at the top";
    scene.window.PressKey(KeyboardCode::kPageUp);
    EXPECT_EQ(scene.control->GetValue(), 20.0);

    // Other keys are the slider's: Up moves the cap a hundredth towards the top.
    scene.control->SetValue(0);
    recorder.Clear();
    scene.window.PressKey(KeyboardCode::kUp);
    EXPECT_GT(scene.control->GetValue(), 0.0);
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 2}));

    // A disabled control takes no keys.
    scene.control->SetValue(0);
    scene.control->SetDisabled(true);
    scene.window.PressKey(KeyboardCode::kPageUp);
    EXPECT_EQ(scene.control->GetValue(), 0.0);
}

TEST(FaderSlider, ADoubleClickOnTheCapReturnsToZero) {
    FaderEditNumber scene;
    scene.control->SetValue(-12);
    ControlRecorder recorder(*scene.control);
    const PointT<float> cap = ThumbCentre(scene.Fader());
    scene.window.Click(cap.x, cap.y);
    EXPECT_EQ(scene.control->GetValue(), -12.0) << "one click changes nothing";
    scene.window.Click(cap.x, cap.y);
    EXPECT_EQ(scene.control->GetValue(), 0.0);
    EXPECT_EQ(scene.control->GetHotTextNumber()->GetValue(), 0.0);
    EXPECT_NEAR(scene.Fader().GetDecibels(), 0.0, 1e-12);
    // The first click's gesture, then the reset as one gesture of its own.
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 2, 0, 1, 2}));
    EXPECT_EQ(recorder.changed, 1);
}

TEST(FaderSlider, AnAltClickOnTheCapReturnsToZero) {
    FaderEditNumber scene;
    scene.control->SetValue(9);
    ControlRecorder recorder(*scene.control);
    const PointT<float> cap = ThumbCentre(scene.Fader());
    scene.window.MouseDown(cap.x, cap.y, MouseButton::kLeft, ModifierKey::kAlt);
    EXPECT_TRUE(recorder.messages.empty()) << "the press starts no drag";
    EXPECT_EQ(scene.control->GetValue(), 9.0);
    scene.window.MouseUp(cap.x, cap.y, MouseButton::kLeft, ModifierKey::kAlt);
    EXPECT_EQ(scene.control->GetValue(), 0.0);
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 2}));

    // Only Alt alone resets: with Control too the click is the slider's.
    scene.control->SetValue(9);
    scene.window.AdvanceTime(1);
    const qorui::ModifierFlags both(ModifierKey::kAlt | ModifierKey::kControl);
    scene.window.MouseDown(cap.x, cap.y, MouseButton::kLeft, both);
    scene.window.MouseUp(cap.x, cap.y, MouseButton::kLeft, both);
    EXPECT_NEAR(scene.control->GetValue(), 9.0, 0.5);
}

TEST(FaderSlider, AnAltClickOnACapOutsideAnEditNumberIsAProgramFault) {
    LoneFader scene;
    const PointT<float> cap = ThumbCentre(*scene.fader);
    scene.window.MouseDown(cap.x, cap.y, MouseButton::kLeft, ModifierKey::kAlt);
    try {
        scene.window.MouseUp(cap.x, cap.y, MouseButton::kLeft, ModifierKey::kAlt);
        FAIL() << "expected the lookup to fail";
    } catch (const std::logic_error& e) {
        EXPECT_STREQ(e.what(), "Invalid type conversion.");
    }
    // A double click there looks leniently and does nothing.
    scene.window.AdvanceTime(1);
    const double before = scene.fader->GetValue();
    scene.window.Click(cap.x, cap.y);
    scene.window.Click(cap.x, cap.y);
    EXPECT_EQ(scene.fader->GetValue(), before);
}

TEST(FaderSlider, TheCapsMenuOffersZero) {
    FaderEditNumber scene;
    scene.control->SetValue(-20);
    ControlRecorder recorder(*scene.control);
    const PointT<float> cap = ThumbCentre(scene.Fader());
    int shown = 0;
    {
        qorui::testing::ScopedModalResponder responder([&](qorui::UI_ModalOverlay& overlay) {
            ++shown;
            auto& menu = dynamic_cast<qorui::UI_MenuOverlay&>(overlay);
            ASSERT_EQ(menu.GetMenu().GetItemCount(), 1u);
            EXPECT_EQ(menu.GetMenu().GetItem(0).text, "Zero");
            EXPECT_EQ(menu.GetMenu().GetItem(0).id, FaderSliderThumb::kMenuZero);
            overlay.Cancel();
        });
        scene.window.Click(cap.x, cap.y, MouseButton::kRight);
    }
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(scene.control->GetValue(), -20.0) << "cancelled";
    EXPECT_TRUE(recorder.messages.empty());
    {
        qorui::testing::ScopedModalResponder responder([&](qorui::UI_ModalOverlay& overlay) {
            const qorcore::RectT<float> item =
                dynamic_cast<qorui::UI_MenuOverlay&>(overlay).GetItemRect(0);
            scene.window.Click(item.Center().x, item.Center().y);
        });
        scene.window.AdvanceTime(1);
        scene.window.Click(cap.x, cap.y, MouseButton::kRight);
    }
    EXPECT_EQ(scene.control->GetValue(), 0.0);
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 2}));
}

TEST(FaderSlider, TheMenuOfALoneCapChangesNothing) {
    LoneFader scene;
    scene.fader->SetValue(0.6);
    const PointT<float> cap = ThumbCentre(*scene.fader);
    qorui::testing::ScopedModalResponder responder([&](qorui::UI_ModalOverlay& overlay) {
        dynamic_cast<qorui::UI_MenuOverlay&>(overlay).ChooseItem(FaderSliderThumb::kMenuZero);
    });
    scene.window.Click(cap.x, cap.y, MouseButton::kRight);
    EXPECT_EQ(scene.fader->GetValue(), 0.6);
}
