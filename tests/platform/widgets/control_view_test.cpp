// The value, state and messages every control shares, and the gesture protocol of interactive
// controls (begin 0, continue 1, finish 2, cancel 3).
#include "control_recorder.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/ui_node_manager.hpp"
#include "platform/widgets/ui_interactive_control_view.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace qorui;
using qafui_testing::ControlRecorder;

namespace {

// The smallest interactive control: a press starts a drag that moves the value by the
// pointer's horizontal distance, as real controls do through the same hooks.
class DragControl : public UI_InteractiveControlView {
public:
    bool UI_DoMouseEvent(const MouseEvent& event) override {
        if (!event.IsAction(PointerAction::kPress))
            return false;
        start_ = event.GetPosition().x;
        BeginInteractiveChange();
        return BeginDrag(event);
    }

protected:
    void UI_DoDragEvent(const MouseEvent& event) override {
        if (event.IsAction(PointerAction::kMove)) {
            SetValue(GetValueAtBegin() + (event.GetPosition().x - start_));
            ContinueInteractiveChange(event.GetModKey());
        }
    }

private:
    float start_ = 0;
};

class DragInWindow : public ::testing::Test {
protected:
    void SetUp() override {
        control->SetFrame({10, 10, 100, 20});
        window.AddNode(control);
    }
    HeadlessWindow window{200, 100};
    qorcore::IntrusivePtr<DragControl> control = qorcore::MakeIntrusive<DragControl>();
    ControlRecorder recorder{*control};
};

} // namespace

TEST(ControlView, ValueUnknownDownStateAndEnabling) {
    auto control = qorcore::MakeIntrusive<UI_ControlView>();
    control->SetValue(3.5);
    control->SetValue(std::numeric_limits<double>::quiet_NaN());
    control->SetValue(std::numeric_limits<double>::infinity());
    EXPECT_EQ(control->GetValue(), 3.5) << "values that are not finite are ignored";

    control->SetValueUnknown();
    EXPECT_TRUE(control->IsValueUnknown());
    control->SetValue(3.5);
    EXPECT_FALSE(control->IsValueUnknown()) << "setting even the same value ends unknown";

    EXPECT_EQ(control->GetControlState(), UI_ControlView::kControlStateNormal);
    control->SetDownState(true);
    EXPECT_EQ(control->GetControlState(), UI_ControlView::kControlStatePressed);
    control->SetDisabled(true);
    EXPECT_EQ(control->GetControlState(), UI_ControlView::kControlStateDisabled);
    control->SetEnabled(true);
    EXPECT_FALSE(control->IsDisabled());

    // Disabled through a parent counts as disabled.
    auto parent = qorcore::MakeIntrusive<UI_SubView>();
    parent->ChildPushBack(control);
    parent->UI_SetEnabled(false);
    EXPECT_TRUE(control->IsDisabled());
}

TEST(ControlView, ChangedListenersHearOnlyWhatTheUserDid) {
    auto control = qorcore::MakeIntrusive<UI_ControlView>();
    ControlRecorder recorder(*control);
    control->SetValue(1.0);
    EXPECT_EQ(recorder.changed, 0) << "a value set by code is not news";
    control->SendControlMessages();
    EXPECT_EQ(recorder.changed, 1);

    int scoped = 0;
    {
        qorcore::ScopedConnection connection =
            control->ConnectChanged([&](const UI_ControlChangedMessage& m) {
                EXPECT_EQ(m.GetSender(), control.get());
                ++scoped;
            });
        control->SendControlMessages();
    }
    control->SendControlMessages();
    EXPECT_EQ(scoped, 1) << "the scoped listener left with its connection";
    EXPECT_EQ(recorder.changed, 3) << "a kept listener stays for the control's life";
}

TEST(InteractiveControlView, GestureMessagesAndTheirValues) {
    auto control = qorcore::MakeIntrusive<UI_InteractiveControlView>();
    ControlRecorder recorder(*control);
    control->SetValue(2.0);
    control->BeginInteractiveChange();
    EXPECT_TRUE(control->IsInteractiveChangeInProgress());
    control->SetValue(3.0);
    control->ContinueInteractiveChange();
    control->SetValue(4.0);
    control->ContinueInteractiveChange(ModifierKey::kShift);
    control->FinishInteractiveChange();
    EXPECT_FALSE(control->IsInteractiveChangeInProgress());
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 1, 2}));
    EXPECT_EQ(recorder.values, (std::vector<double>{2, 3, 4, 4}));
    EXPECT_EQ(recorder.changed, 1) << "one changed message per gesture that changed the value";

    // A finish that leaves the value where it began is no change.
    recorder.Clear();
    control->BeginInteractiveChange();
    control->FinishInteractiveChange();
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 2}));
    EXPECT_EQ(recorder.changed, 0);

    // Ends without a gesture send nothing; a continue without one begins it.
    recorder.Clear();
    control->FinishInteractiveChange();
    control->CancelInteractiveChange();
    EXPECT_TRUE(recorder.messages.empty());
    control->ContinueInteractiveChange();
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1}));
    control->FinishInteractiveChange();
}

TEST(InteractiveControlView, CancelPutsTheStartingValueBack) {
    auto control = qorcore::MakeIntrusive<UI_InteractiveControlView>();
    ControlRecorder recorder(*control);
    control->SetValueUnknown();
    control->BeginInteractiveChange();
    control->SetValue(9.0);
    control->ContinueInteractiveChange();
    control->CancelInteractiveChange();
    EXPECT_TRUE(control->IsValueUnknown()) << "unknown before the gesture, unknown after";
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 3}));
    EXPECT_EQ(recorder.changed, 0);
}

TEST_F(DragInWindow, ADragSendsBeginContinuesFinishAndEscapeCancels) {
    window.MouseDown(20, 20);
    window.MouseMove(25, 20);
    window.MouseMove(60, 90); // outside the control and still its gesture
    window.MouseUp(60, 90);
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 1, 2}));
    EXPECT_EQ(control->GetValue(), 40.0);
    EXPECT_EQ(recorder.changed, 1);

    recorder.Clear();
    window.MouseDown(20, 20);
    window.MouseMove(30, 20);
    EXPECT_EQ(control->GetValue(), 50.0);
    window.PressKey(KeyboardCode::kEscape);
    EXPECT_EQ(recorder.messages, (std::vector<int>{0, 1, 3}));
    EXPECT_EQ(control->GetValue(), 40.0);
    window.MouseMove(90, 20);
    window.MouseUp(90, 20);
    EXPECT_EQ(recorder.messages.size(), 3u) << "nothing after the cancel";
    EXPECT_EQ(control->GetValue(), 40.0);
    EXPECT_EQ(recorder.changed, 0);
}

TEST_F(DragInWindow, LosingTheWindowFocusCancelsADrag) {
    window.MouseDown(20, 20);
    window.MouseMove(40, 20);
    window.LoseInputFocus();
    EXPECT_EQ(recorder.Folded(), (std::vector<int>{0, 1, 3}));
    EXPECT_EQ(control->GetValue(), 0.0);
    EXPECT_EQ(UI_NodeManager::Get().GetCurrentCapture(), nullptr);
}
