#include "platform/ui/headless_window.hpp"
#include "platform/ui/input_capture.hpp"
#include "platform/ui/ui_node_manager.hpp"
#include "test_nodes.hpp"

#include <gtest/gtest.h>

using namespace qorui;
using qafui_testing::MakeNode;
using qafui_testing::RecordingNode;
using Strings = std::vector<std::string>;

namespace {

// A drag gesture that logs what it gets.
class DragCapture : public InputCapture {
public:
    DragCapture(UI_Node* node, const MouseEvent& start, Strings* log)
        : InputCapture(node, start), log_(log) {}
    bool UI_DoMouseEvent(const MouseEvent& e) override {
        log_->push_back("capture" + std::to_string(int(e.GetAction())) + "@" +
                        std::to_string(int(e.GetPosition().x)) + "," +
                        std::to_string(int(e.GetPosition().y)));
        return true;
    }
    bool UI_DoCursor(const PointT<float>&, ModifierFlags) override {
        GetNode()->UI_SetCursor(7);
        return true;
    }
    void UI_EndCapture(bool cancelled) override {
        log_->push_back(cancelled ? "end:cancelled" : "end:done");
    }

private:
    Strings* log_;
};

// Window 200x200: a panel at (20,20) 100x100 holding a button at (10,10) 30x20 and a label at
// (10,50) 60x20; a hidden overlay covers the button.
class EventRouting : public ::testing::Test {
protected:
    void SetUp() override {
        overlay->UI_SetVisible(false);
        for (auto& child : {button, label, overlay})
            panel->ChildPushBack(child);
        window.AddNode(panel);
        log.clear();
    }
    void TearDown() override { UI_NodeManager::Get().EndInputCapture(true); }
    PointerAction LastAction(RecordingNode& node) { return node.mouseEvents.back().GetAction(); }
    // The press of the last click the node saw.
    const MouseEvent& LastPress() { return button->mouseEvents[button->mouseEvents.size() - 2]; }

    Strings log;
    HeadlessWindow window{200, 200};
    qorcore::IntrusivePtr<RecordingNode> panel = MakeNode("panel", {20, 20, 100, 100}, &log),
                                         button = MakeNode("button", {10, 10, 30, 20}, &log),
                                         label = MakeNode("label", {10, 50, 60, 20}, &log),
                                         overlay = MakeNode("overlay", {0, 0, 100, 40}, &log);
};

} // namespace

TEST_F(EventRouting, HitTestingFindsTheTopmostShownNode) {
    EXPECT_EQ(window.HitTest({35, 35}), button.get()) << "the hidden overlay is skipped";
    overlay->UI_SetVisible(true);
    EXPECT_EQ(window.HitTest({35, 35}), overlay.get());
    // An overlay that accepts only its left half lets the rest through to what lies below.
    overlay->hitTest = [](const PointT<float>& p) {
        return p.x < 15;
    };
    const std::vector<std::pair<PointT<float>, UI_Node*>> hits = {
        {{25, 35}, overlay.get()},  {{45, 35}, button.get()}, {{35, 75}, label.get()},
        {{5, 5}, window.GetRoot()}, {{250, 5}, nullptr},      {{-1, 5}, nullptr}};
    for (auto [at, node] : hits)
        EXPECT_EQ(window.HitTest(at), node) << at.x << "," << at.y;
    panel->UI_SetVisible(false);
    EXPECT_EQ(window.HitTest({45, 35}), window.GetRoot());
}

TEST_F(EventRouting, UnconsumedEventsBubbleToParentsInTheirCoordinatesSkippingDisabledNodes) {
    panel->consumeMouse = true;
    EXPECT_TRUE(window.MouseDown(35, 35));
    ASSERT_EQ(button->mouseEvents.size(), 2u) << "entered, then pressed";
    EXPECT_EQ(button->mouseEvents[0].GetAction(), PointerAction::kEnter);
    EXPECT_EQ(button->mouseEvents[1].GetPosition(), PointT<float>(5, 5));
    ASSERT_EQ(panel->mouseEvents.size(), 1u);
    EXPECT_EQ(panel->mouseEvents[0].GetPosition(), PointT<float>(15, 15));
    EXPECT_EQ(panel->mouseEvents[0].GetClickCount(), 1);
    button->consumeMouse = true;
    EXPECT_TRUE(window.MouseUp(35, 35));
    EXPECT_EQ(panel->mouseEvents.size(), 1u) << "consumed by the button";
    EXPECT_EQ(LastAction(*button), PointerAction::kRelease);
    EXPECT_FALSE(window.MouseDown(5, 5)) << "nothing consumes on the bare root";
    window.MouseUp(5, 5);

    // A disabled node is skipped, yet its parent still hears.
    button->UI_SetEnabled(false);
    button->mouseEvents.clear();
    window.AdvanceTime(1);
    window.MouseDown(35, 35);
    EXPECT_TRUE(button->mouseEvents.empty() || LastAction(*button) != PointerAction::kPress);
    EXPECT_EQ(LastAction(*panel), PointerAction::kPress);
}

TEST_F(EventRouting, HoverSendsEnterAndLeaveAndKeepsTheFlag) {
    window.MouseMove(35, 35);
    EXPECT_EQ(window.GetHoverNode(), button.get());
    EXPECT_TRUE(button->GetStateFlags().IsSet(UI_Node::kStateHovered));
    window.MouseMove(36, 36);
    window.MouseMove(35, 75);
    EXPECT_EQ(log, (Strings{"button:mouse5", "button:mouse3", "panel:mouse3", "button:mouse3",
                            "panel:mouse3", "button:mouse6", "label:mouse5", "label:mouse3",
                            "panel:mouse3"}));
    EXPECT_FALSE(button->GetStateFlags().IsSet(UI_Node::kStateHovered));
    EXPECT_EQ(button->mouseEvents.back().GetPosition(), PointT<float>(5, 45))
        << "the leave event is in the button's coordinates";
    window.MouseLeave();
    EXPECT_EQ(window.GetHoverNode(), nullptr);
    EXPECT_EQ(LastAction(*label), PointerAction::kLeave);
}

TEST_F(EventRouting, CaptureGetsEveryPointerEventUntilRelease) {
    Strings gesture;
    button->onMouse = [&](const MouseEvent& e) {
        if (e.IsLeftButtonSingleDown()) {
            EXPECT_TRUE(UI_NodeManager::Get()->BeginInputCapture(
                qorcore::MakeIntrusive<DragCapture>(button.get(), e, &gesture)));
        }
    };
    button->consumeMouse = true;
    window.MouseDown(35, 35);
    auto& manager = UI_NodeManager::Get();
    EXPECT_NE(manager.GetCurrentCapture(), nullptr);
    EXPECT_EQ(manager.GetCurrentMouseButtonState() & 7u, 1u);
    EXPECT_TRUE(gesture.empty());
    log.clear();
    window.MouseMove(150, 180); // far outside the button, over nothing of it
    window.MouseDown(150, 180, MouseButton::kRight);
    window.MouseUp(150, 180, MouseButton::kRight); // the left button is still down
    EXPECT_EQ(window.GetCursor(), 7);
    window.MouseUp(160, 190);
    EXPECT_EQ(gesture, (Strings{"capture3@120,150", "capture1@120,150", "capture2@120,150",
                                "capture2@130,160", "end:done"}));
    EXPECT_TRUE(log.empty()) << "no node heard the gesture";
    EXPECT_EQ(manager.GetCurrentCapture(), nullptr);
    EXPECT_EQ(manager.GetCurrentMouseButtonState(), 0u);
    EXPECT_EQ(manager.GetPreviousMouseEvent().GetPosition(), PointT<float>(160, 190));
    EXPECT_TRUE(label->mouseEvents.empty()) << "nothing leaked past the capture";
}

TEST_F(EventRouting, CaptureEndsCancelledOnEscapeRemovalNewCaptureAndFocusLoss) {
    MouseEvent start(PointerAction::kPress, {1, 1}, MouseButton::kLeft);
    Strings ends;
    auto begin = [&](UI_Node* node) {
        return UI_NodeManager::Get().BeginInputCapture(
            qorcore::MakeIntrusive<DragCapture>(node, start, &ends));
    };
    ASSERT_TRUE(begin(button.get()));
    EXPECT_TRUE(window.KeyDown(KeyboardCode::kEscape));
    EXPECT_EQ(ends, Strings{"end:cancelled"});
    ASSERT_TRUE(begin(button.get()));
    ASSERT_TRUE(begin(label.get()));
    EXPECT_EQ(ends.size(), 2u) << "the first capture ended when the second began";
    panel->ChildRemove(label.get());
    EXPECT_EQ(ends.size(), 3u);
    EXPECT_EQ(UI_NodeManager::Get().GetCurrentCapture(), nullptr);
    ASSERT_TRUE(begin(button.get()));
    window.LoseInputFocus();
    EXPECT_EQ(ends.back(), "end:cancelled");
    ASSERT_TRUE(begin(button.get()));
    button->UI_SetVisible(false);
    EXPECT_EQ(ends.size(), 5u);
    EXPECT_FALSE(begin(label.get())) << "the label is in no window now";
    EXPECT_FALSE(UI_NodeManager::Get().BeginInputCapture(nullptr));
    EXPECT_THROW(DragCapture(nullptr, start, &ends), std::logic_error);
}

TEST_F(EventRouting, FocusFollowsClicksTabAndLeavesHiddenNodes) {
    button->SetWantsKeyboardFocus(true);
    label->SetWantsKeyboardFocus(true);
    label->consumeKeys = true;
    window.Click(35, 35);
    EXPECT_EQ(window.GetFocusNode(), button.get());
    EXPECT_TRUE(button->HasFocus());
    EXPECT_FALSE(window.KeyDown(KeyboardCode::kA)) << "no one consumes it";
    EXPECT_EQ(button->keyEvents.size(), 1u);
    EXPECT_EQ(panel->keyEvents.size(), 1u) << "keys bubble to parents";

    EXPECT_TRUE(window.PressKey(KeyboardCode::kTab));
    EXPECT_EQ(window.GetFocusNode(), label.get());
    EXPECT_EQ(button->focusChanges, (std::vector<bool>{true, false}));
    EXPECT_TRUE(window.KeyDown(KeyboardCode::kDelete));
    EXPECT_EQ(label->keyEvents.back().GetCode(), KeyboardCode::kDelete);
    label->consumeKeys = false;
    EXPECT_TRUE(window.KeyDown(KeyboardCode::kTab)) << "Tab wraps around";
    EXPECT_EQ(window.GetFocusNode(), button.get());
    EXPECT_TRUE(window.KeyDown(KeyboardCode::kTab, ModifierKey::kShift));
    EXPECT_EQ(window.GetFocusNode(), label.get());

    label->UI_SetVisible(false);
    EXPECT_EQ(window.GetFocusNode(), nullptr);
    EXPECT_FALSE(label->UI_RequestFocus()) << "a hidden node can't take the focus";
    EXPECT_TRUE(button->UI_RequestFocus());
    panel->UI_SetEnabled(false);
    EXPECT_EQ(window.GetFocusNode(), nullptr);
    EXPECT_FALSE(window.MoveFocus(true)) << "nothing focusable is left";
}

TEST_F(EventRouting, ClickCountsOnTheVirtualClock) {
    button->consumeMouse = true;
    window.Click(35, 35);
    window.AdvanceTime(0.2);
    window.Click(36, 36);
    EXPECT_TRUE(LastPress().IsLeftButtonDoubleClick());
    window.AdvanceTime(0.6);
    window.Click(36, 36);
    EXPECT_TRUE(LastPress().IsLeftButtonSingleDown()) << "too slow for a double click";
    window.AdvanceTime(0.1);
    window.Click(46, 36);
    EXPECT_EQ(LastPress().GetClickCount(), 1) << "too far";
    window.AdvanceTime(0.1);
    window.Click(46, 36, MouseButton::kRight);
    EXPECT_TRUE(LastPress().IsRightButtonSingleDown()) << "another button starts again";
    EXPECT_TRUE(LastPress().IsContextMenuClick());
}

TEST_F(EventRouting, CursorAndWheelComeFromTheNodesUnderThePointer) {
    panel->cursor = 3;
    window.MouseMove(35, 35);
    EXPECT_EQ(window.GetCursor(), 3) << "the button declines, its parent decides";
    button->cursor = 202;
    window.MouseMove(36, 35);
    EXPECT_EQ(window.GetCursor(), 202);
    window.MouseMove(5, 5);
    EXPECT_EQ(window.GetCursor(), 0) << "the arrow when no one decides";

    label->consumeMouse = true;
    window.MouseLeave();
    EXPECT_TRUE(window.MouseWheel(35, 75, -2.0f));
    ASSERT_EQ(label->mouseEvents.size(), 1u);
    EXPECT_EQ(label->mouseEvents[0].GetAction(), PointerAction::kWheel);
    EXPECT_EQ(label->mouseEvents[0].GetWheelDelta(), PointT<float>(0, -2));
    EXPECT_EQ(window.GetHoverNode(), nullptr) << "a wheel alone does not hover";
}

TEST(KeyboardEventTest, ShortcutsAndTextEvents) {
    const KeyboardEvent undo(KeyAction::kKeyDown, KeyboardCodeForCharacter('z'),
                             ModifierKey::kControl, 122);
    EXPECT_TRUE(
        undo.CompareShortcut(KeyboardCode(int(KeyboardCode::kA) + 25), ModifierKey::kCommand));
    EXPECT_FALSE(undo.CompareShortcut(KeyboardCode::kZ));
    EXPECT_EQ(undo.GetOSCode(), 122);
    const KeyboardEvent up(KeyAction::kKeyUp, KeyboardCode::kZ);
    EXPECT_FALSE(up.CompareShortcut(KeyboardCode::kZ));
    EXPECT_TRUE(up.IsActionKeyUp());
    const KeyboardEvent text = KeyboardEvent::Text("é");
    EXPECT_TRUE(text.IsActionKeyDown());
    EXPECT_TRUE(text.CompareCode(KeyboardCode::kUnknown));
    EXPECT_EQ(text.GetText(), "é");
    EXPECT_EQ(KeyboardCodeForCharacter('7'), KeyboardCode(87));
    EXPECT_EQ(KeyboardCodeForCharacter('#'), KeyboardCode::kUnknown);
}
