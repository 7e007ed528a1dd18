// The button family through real pointer and keyboard events: clicks, toggles, radio groups,
// releases outside, Escape, and what each sends.
#include "control_recorder.hpp"
#include "platform/draw/image.hpp"
#include "platform/panels/ui_static_text.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_disclosure_triangle_button.hpp"
#include "platform/widgets/ui_picture_button.hpp"
#include "platform/widgets/ui_radio_group.hpp"
#include "platform/widgets/ui_text_button.hpp"

#include <gtest/gtest.h>

using namespace qorui;
using qafui_testing::ControlRecorder;
using Messages = std::vector<int>;

namespace {

class Buttons : public ::testing::Test {
protected:
    template <class T, class... Args>
    qorcore::IntrusivePtr<T> Add(const RectT<float>& frame, Args... args) {
        auto node = qorcore::MakeIntrusive<T>(args...);
        node->SetFrame(frame);
        window.AddNode(node);
        return node;
    }
    // A click after a pause, so that it is no double click.
    void ClickLater(float x, float y) {
        window.AdvanceTime(1.0);
        window.Click(x, y);
    }

    HeadlessWindow window{300, 200};
};

// A button that acts on each new down state, as a picture toggle does.
class DownCountingButton : public UI_TextButton {
public:
    void SetDownState(bool down) override {
        downs += down && !GetDownState();
        UI_TextButton::SetDownState(down);
    }
    int downs = 0;
};

} // namespace

TEST_F(Buttons, AClickIsOnePressAndReleaseOverTheButton) {
    auto button = Add<UI_TextButton>({10, 10, 80, 22}, "Apply");
    ControlRecorder recorder(*button);
    window.MouseDown(20, 20);
    EXPECT_TRUE(button->GetDownState());
    EXPECT_EQ(recorder.messages, Messages{0});
    window.MouseUp(20, 20);
    EXPECT_FALSE(button->GetDownState());
    EXPECT_EQ(recorder.messages, (Messages{0, 1, 2}));
    EXPECT_EQ(recorder.changed, 1) << "a push button's click is its message";
    EXPECT_EQ(button->GetValue(), 0.0);

    // The down state is set only when it changes: moves inside are no new presses.
    auto counting = Add<DownCountingButton>({10, 40, 80, 22});
    window.MouseDown(20, 50);
    window.MouseMove(25, 50);
    window.MouseMove(30, 51);
    window.MouseUp(30, 51);
    EXPECT_EQ(counting->downs, 1);
}

TEST_F(Buttons, LeavingBeforeTheReleaseOrEscapeCancels) {
    auto button = Add<UI_ToggleButton>({10, 10, 80, 22}, "Solo");
    ControlRecorder recorder(*button);
    window.MouseDown(20, 20);
    window.MouseMove(200, 150);
    EXPECT_FALSE(button->GetDownState()) << "the down look follows the pointer out";
    window.MouseMove(30, 20);
    EXPECT_TRUE(button->GetDownState()) << "and back in";
    window.MouseMove(200, 150);
    window.MouseUp(200, 150);
    EXPECT_EQ(recorder.messages, (Messages{0, 3}));
    EXPECT_EQ(recorder.changed, 0);
    EXPECT_EQ(button->GetValue(), 0.0);

    recorder.Clear();
    window.MouseDown(20, 20);
    window.PressKey(KeyboardCode::kEscape);
    EXPECT_FALSE(button->GetDownState());
    window.MouseUp(20, 20);
    EXPECT_EQ(recorder.messages, (Messages{0, 3}));
    EXPECT_EQ(button->GetValue(), 0.0);
}

TEST_F(Buttons, TogglesFlipOnClicksAndKeysAndDisabledButtonsIgnoreEverything) {
    auto button = Add<UI_ToggleButton>({10, 10, 80, 22}, "Link");
    ControlRecorder recorder(*button);
    window.Click(20, 20);
    EXPECT_EQ(button->GetValue(), 1.0);
    ClickLater(20, 20);
    EXPECT_EQ(button->GetValue(), 0.0);
    EXPECT_EQ(recorder.changedValues, (std::vector<double>{1.0, 0.0}));

    recorder.Clear();
    ASSERT_TRUE(button->UI_RequestFocus());
    window.PressKey(KeyboardCode::kSpace);
    EXPECT_EQ(button->GetValue(), 1.0);
    window.PressKey(KeyboardCode::kReturn);
    EXPECT_EQ(button->GetValue(), 0.0);
    window.KeyDown(KeyboardCode::kSpace, {}, true);
    EXPECT_EQ(button->GetValue(), 0.0) << "a held key clicks once";
    EXPECT_EQ(recorder.Folded(), (Messages{0, 1, 2, 0, 1, 2}));

    recorder.Clear();
    button->SetDisabled(true);
    ClickLater(20, 20);
    button->Click();
    EXPECT_EQ(button->GetValue(), 0.0);
    EXPECT_TRUE(recorder.messages.empty());
}

TEST_F(Buttons, NotificationOnMouseDownClicksAtThePress) {
    auto button = Add<UI_ToggleButton>({10, 10, 80, 22}, "Now");
    button->SetNotificationOnMouseDown(true);
    ControlRecorder recorder(*button);
    window.MouseDown(20, 20);
    EXPECT_EQ(button->GetValue(), 1.0);
    EXPECT_EQ(recorder.messages, (Messages{0, 1, 2}));
    window.MouseUp(200, 150);
    EXPECT_EQ(recorder.messages.size(), 3u) << "the release adds nothing";
}

TEST_F(Buttons, CheckboxAndDisclosureTriangleToggleAndUnknownBecomesChecked) {
    auto box = Add<UI_Checkbox>({10, 10, 140, 18}, "Spline curves");
    ControlRecorder recorder(*box);
    box->SetValueUnknown();
    window.Click(15, 19);
    EXPECT_TRUE(box->IsChecked());
    ClickLater(100, 19); // on the caption: the whole control is the target
    EXPECT_FALSE(box->IsChecked());
    box->SetValue(true);
    EXPECT_EQ(box->GetValue(), 1.0);
    EXPECT_EQ(recorder.changed, 2);

    auto triangle = Add<UI_DisclosureTriangleButton>({10, 40, 100, 16}, "Advanced");
    ControlRecorder triangleRecorder(*triangle);
    EXPECT_FALSE(triangle->IsOpen());
    ClickLater(15, 48);
    EXPECT_TRUE(triangle->IsOpen());
    triangle->SetValue(false);
    EXPECT_FALSE(triangle->IsOpen());
    EXPECT_EQ(triangleRecorder.changed, 1);
}

TEST_F(Buttons, RadioGroupKeepsOneChoiceAndReportsIt) {
    auto group = Add<UI_RadioGroup>({10, 10, 150, 66});
    const char* names[] = {"Low Precision", "Medium Precision", "High Precision"};
    for (int i = 0; i < 3; ++i) {
        auto radio = qorcore::MakeIntrusive<UI_RadioButton>(names[i]);
        radio->SetFrame({0, float(i) * 22, 150, 18});
        EXPECT_EQ(group->AddRadioButton(radio), std::size_t(i));
    }
    ControlRecorder recorder(*group);
    auto radioValue = [&](std::size_t i) {
        return group->GetRadioButtonAt(i)->GetValue();
    };
    EXPECT_EQ(group->GetValue(), -1.0);
    window.Click(20, 10 + 22 + 9);
    EXPECT_EQ(group->GetValue(), 1.0);
    EXPECT_EQ(radioValue(1), 1.0);
    ClickLater(20, 10 + 44 + 9);
    EXPECT_EQ(group->GetValue(), 2.0);
    EXPECT_EQ(radioValue(1), 0.0) << "the others go off";
    ClickLater(20, 10 + 44 + 9);
    EXPECT_EQ(recorder.changedValues, (std::vector<double>{1, 2, 2}))
        << "clicking the chosen one again is still a choice";

    // Arrows move the choice from the focused button, wrapping.
    window.PressKey(KeyboardCode::kDown);
    EXPECT_EQ(group->GetValue(), 0.0);
    group->GetRadioButtonAt(1)->SetDisabled(true);
    window.PressKey(KeyboardCode::kDown);
    EXPECT_EQ(group->GetValue(), 2.0) << "a disabled choice is skipped";

    group->SetValue(7);
    EXPECT_EQ(group->GetValue(), -1.0);
    EXPECT_EQ((std::vector{radioValue(0), radioValue(1), radioValue(2)}),
              (std::vector{0.0, 0.0, 0.0}));
    EXPECT_EQ(group->GetRadioButtonAt(3), nullptr);
    EXPECT_THROW(group->AddRadioButton(nullptr), std::invalid_argument);
}

TEST_F(Buttons, PictureButtonAsksItsSupplierForBothLooks) {
    std::vector<std::string> asked;
    auto button = Add<UI_PictureButton>({10, 10, 20, 20});
    button->SetImageSupplyFunction([&](const std::string& name) {
        asked.push_back(name);
        auto image = penrig::Image::Create(12, 12);
        image->Fill(name.ends_with("_Down") ? qorcore::ColorRGBA(0, 0, 1)
                                            : qorcore::ColorRGBA(1, 0, 0));
        return image;
    });
    button->SetImageName("Reset_Sm");
    EXPECT_EQ(asked, (std::vector<std::string>{"Reset_Sm", "Reset_Sm_Down"}));
    window.Render();
    EXPECT_EQ(window.GetPixel(20, 20), qorcore::ColorRGBA(1, 0, 0)) << "centred normal image";
    window.MouseDown(20, 20);
    EXPECT_TRUE(button->IsShowingDownImage());
    window.Render();
    EXPECT_EQ(window.GetPixel(20, 20), qorcore::ColorRGBA(0, 0, 1));
    window.MouseUp(20, 20);
    EXPECT_FALSE(button->IsShowingDownImage());
}

TEST(StaticText, TextWidthFollowsTextAndFontSize) {
    auto text = qorcore::MakeIntrusive<UI_StaticText>("Hz");
    const float narrow = text->GetTextWidth();
    EXPECT_GT(narrow, 5.0f);
    text->SetValue("Frequency");
    EXPECT_EQ(text->GetText(), "Frequency");
    EXPECT_GT(text->GetTextWidth(), narrow * 2);
    text->SetFontSize(20);
    EXPECT_GT(text->GetTextWidth(), 80.0f);
    text->SetValue(std::string_view());
    EXPECT_EQ(text->GetTextWidth(), 0.0f);
}
