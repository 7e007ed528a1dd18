// The picture toggle through the headless window: one toggle a press, at the press, shown by
// its two images, heard by the listeners.
#include "controls/picture_toggle_button.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/widgets/control_recorder.hpp"

#include <gtest/gtest.h>

#include <cmath>

using namespace qoraudiofiltersui;
using qafui_testing::ControlRecorder;
using qorcore::ColorRGBA;
using qorcore::IntrusivePtr;
using qorui::HeadlessWindow;
using qorui::KeyboardCode;

namespace {

const ColorRGBA kOffColor(0.2f, 0.2f, 0.8f);
const ColorRGBA kOnColor(0.1f, 0.8f, 0.2f);

/// A face of one colour, as the adapter's off and on images are.
IntrusivePtr<qorui::penrig::Image> Face(const HeadlessWindow& window, const ColorRGBA& color) {
    auto image = window.GetDrawSupplier().CreateImage(16, 16);
    auto penrig = window.GetDrawSupplier().CreatePenrig(*image);
    penrig->FillRect({0, 0, 16, 16}, color);
    return image;
}

bool Near(const ColorRGBA& a, const ColorRGBA& b) {
    const float t = 1.5f / 255;
    return std::abs(a.red - b.red) <= t && std::abs(a.green - b.green) <= t &&
           std::abs(a.blue - b.blue) <= t;
}

class PictureToggleButtonTest : public ::testing::Test {
protected:
    PictureToggleButtonTest() {
        button->SetFrame({10, 10, 24, 24});
        button->SetImages(Face(window, kOffColor), Face(window, kOnColor));
        window.AddNode(button);
    }
    ColorRGBA Shown() {
        window.Render();
        return window.GetPixel(22, 22);
    }

    HeadlessWindow window{100, 60};
    IntrusivePtr<PictureToggleButton> button = qorcore::MakeIntrusive<PictureToggleButton>();
};

TEST_F(PictureToggleButtonTest, APressTogglesOnceAtThePressAndTheImageFollows) {
    ControlRecorder recorder(*button);
    std::vector<bool> heard;
    button->NotifyWhenChanged(
        [&](const qorui::UI_ControlChangedMessage&) { heard.push_back(button->GetState()); });
    EXPECT_FALSE(button->GetState());
    EXPECT_TRUE(Near(Shown(), kOffColor));

    window.MouseDown(20, 20);
    EXPECT_TRUE(button->GetState()) << "the flip comes on the press";
    EXPECT_EQ(heard, std::vector<bool>{true}) << "and the listeners hear it with the new state";
    EXPECT_TRUE(Near(Shown(), kOnColor));
    window.MouseUp(20, 20);
    EXPECT_TRUE(button->GetState()) << "the release doesn't toggle back";
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 2}));
    EXPECT_TRUE(Near(Shown(), kOnColor));

    // Dragged off and back on while held: still one toggle for the press.
    window.AdvanceTime(1.0);
    window.MouseDown(20, 20);
    window.MouseMove(90, 50);
    window.MouseMove(20, 20);
    window.MouseUp(20, 20);
    EXPECT_FALSE(button->GetState());
    EXPECT_EQ(heard, (std::vector<bool>{true, false}));
    EXPECT_TRUE(Near(Shown(), kOffColor));
}

TEST_F(PictureToggleButtonTest, TheKeyboardTogglesAndADisabledButtonDoesNot) {
    int heard = 0;
    button->NotifyWhenChanged([&](const qorui::UI_ControlChangedMessage&) { ++heard; });
    ASSERT_TRUE(button->UI_RequestFocus());
    window.PressKey(KeyboardCode::kSpace);
    EXPECT_TRUE(button->GetState());
    window.KeyDown(KeyboardCode::kReturn, {}, true); // a repeat is no new press
    EXPECT_TRUE(button->GetState());
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_FALSE(button->GetState());
    EXPECT_EQ(heard, 2);

    button->SetDisabled(true);
    window.AdvanceTime(1.0);
    window.Click(20, 20);
    window.PressKey(KeyboardCode::kSpace);
    EXPECT_FALSE(button->GetState());
    EXPECT_EQ(heard, 2);
}

TEST_F(PictureToggleButtonTest, SetStateRepaintsEveryTimeAndTellsNobody) {
    int heard = 0;
    button->NotifyWhenChanged([&](const qorui::UI_ControlChangedMessage&) { ++heard; });
    for (int i = 0; i < 2; ++i) {
        window.Render();
        ASSERT_TRUE(window.GetDirtyRegion().IsEmpty());
        button->SetState(true);
        EXPECT_FALSE(window.GetDirtyRegion().IsEmpty()) << "set " << i + 1;
        EXPECT_TRUE(button->GetState());
    }
    EXPECT_EQ(heard, 0);
    EXPECT_TRUE(Near(Shown(), kOnColor));

    // The down state itself: going down flips, coming up doesn't.
    button->SetDownState(true);
    EXPECT_FALSE(button->GetState());
    EXPECT_TRUE(button->GetDownState());
    button->SetDownState(false);
    EXPECT_FALSE(button->GetState());
    EXPECT_TRUE(Near(Shown(), kOffColor));
}

} // namespace
