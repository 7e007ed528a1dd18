// Tool tips: shown after the hover delay on the window's virtual clock, hidden on leave and on
// press, drawn over the other nodes and kept inside the window; the window's one tip for the
// nodes' own texts, beside controls that keep a hover tip of their own.
#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/ui_tool_tip.hpp"
#include "platform/ui/ui_tool_tip_hover.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace qorui;

namespace {

// A plain node with a hover tip, as a control would have.
class TippedNode : public UI_Node {
public:
    UI_ToolTipHover hover;
    int presses = 0;
    bool UI_DoMouseEvent(const MouseEvent& event) override {
        hover.HandleMouseEvent(*this, event);
        presses += event.IsAction(PointerAction::kPress);
        return event.IsAction(PointerAction::kPress) || event.IsAction(PointerAction::kRelease);
    }
};

// A node that paints itself in one colour.
class Block : public UI_Node {
public:
    void UI_Draw(Penrig* penrig) override {
        penrig->FillRect(GetBounds(), {0, 0, 1, 1});
        UI_Node::UI_Draw(penrig);
    }
};

struct TipWindow {
    template <class T = Block>
    IntrusivePtr<T> Add(const RectT<float>& frame, const char* tip = nullptr) {
        auto node = qorcore::MakeIntrusive<T>();
        node->SetFrame(frame);
        if (tip)
            node->UI_SetToolTip(tip);
        window.AddNode(node);
        return node;
    }
    // Rests the pointer at a place for a while.
    void Rest(float x, float y, double seconds) {
        window.MouseMove(x, y);
        window.AdvanceTime(seconds);
    }
    bool Showing() const { return window.GetToolTip() && window.GetToolTip()->IsShowing(); }
    bool TipColourAt(const RectT<float>& f) const {
        return window.GetPixel(int(f.x + 2), int(f.y + f.height / 2)) ==
               skins::GetPalette().toolTipBackground;
    }
    std::size_t Nodes() const { return window.GetRoot()->GetChildCount(); }
    HeadlessWindow window{200, 100};
};

// A control with its own hover tip.
struct HoverScene : TipWindow {
    IntrusivePtr<TippedNode> node = Add<TippedNode>({20, 20, 60, 30});
    HoverScene() {
        node->hover.SetText("Resets the peak hold");
        node->hover.SetDelay(0.5);
    }
};

// Two nodes side by side, the left one with a tip; the window's delay is shortened.
struct NodeTipScene : TipWindow {
    IntrusivePtr<Block> tipped = Add({10, 10, 60, 30}, "Resets the meters");
    IntrusivePtr<Block> plain = Add({100, 10, 60, 30});
    NodeTipScene() { window.SetToolTipDelay(0.5); }
};

TEST(ToolTipTest, AppearsAfterTheDelayAndHidesOnLeave) {
    HoverScene s;
    s.window.MouseMove(30, 30);
    UI_ToolTip* tip = s.node->hover.GetToolTip();
    ASSERT_NE(tip, nullptr);
    EXPECT_FALSE(tip->IsShowing());
    s.Rest(32, 31, 0.3); // resting a little longer does not restart the wait
    EXPECT_FALSE(tip->IsShowing());
    s.window.AdvanceTime(0.25);
    EXPECT_TRUE(tip->IsShowing());
    EXPECT_EQ(tip->GetText(), "Resets the peak hold");
    // Below the pointer, on top, drawn in the tip colours, and not in the way of events.
    const RectT<float> f = tip->GetFrame();
    EXPECT_GT(f.y, 31.0f);
    EXPECT_EQ(s.window.GetRoot()->GetChildren().back().get(), tip);
    s.window.RenderAll();
    EXPECT_TRUE(s.TipColourAt(f));
    EXPECT_EQ(s.window.HitTest({f.x + 2, f.y + 2}), s.window.GetRoot());

    s.window.MouseMove(150, 90); // leaves the node
    EXPECT_EQ(s.node->hover.GetToolTip(), nullptr);
    EXPECT_EQ(tip->GetWindow(), nullptr) << "taken out of the window";
    s.window.Render();
    EXPECT_FALSE(s.TipColourAt(f));
    s.window.AdvanceTime(2.0);
    EXPECT_EQ(s.Nodes(), 1u);
}

TEST(ToolTipTest, PressHidesAndLeavingBeforeTheDelayShowsNothing) {
    HoverScene s;
    s.Rest(30, 30, 1.0);
    ASSERT_TRUE(s.node->hover.GetToolTip()->IsShowing());
    s.window.MouseDown(30, 30);
    EXPECT_EQ(s.node->hover.GetToolTip(), nullptr);
    EXPECT_EQ(s.node->presses, 1) << "the node still gets its press";
    s.window.MouseUp(30, 30);
    s.window.MouseMove(150, 90);
    s.Rest(40, 40, 0.2);
    s.window.MouseLeave();
    s.window.AdvanceTime(1.0);
    EXPECT_EQ(s.Nodes(), 1u) << "no tip was left behind";
    s.node->hover.SetText(""); // no text, no tip
    s.Rest(30, 30, 1.0);
    EXPECT_EQ(s.node->hover.GetToolTip(), nullptr);
}

TEST(ToolTipTest, StaysInsideTheWindowAndCoversLaterNodes) {
    TipWindow s;
    auto owner = s.Add({0, 0, 200, 100});
    auto tip = CreateUI_ToolTip(owner.get(), "A long explanation near the corner", {195, 95}, 0.4);
    s.Add({0, 0, 200, 100}); // added after the tip was made
    s.window.AdvanceTime(0.5);
    ASSERT_TRUE(tip->IsShowing());
    const RectT<float> f = tip->GetFrame();
    EXPECT_GE(f.x, 0.0f);
    EXPECT_GE(f.y, 0.0f);
    EXPECT_LE(f.x + f.width, 200.0f);
    EXPECT_LE(f.y + f.height, 95.0f) << "above the anchor when there is no room below";
    s.window.RenderAll();
    EXPECT_TRUE(s.TipColourAt(f));
    tip->SetText("Short");
    EXPECT_LT(tip->GetFrame().width, f.width) << "a new text re-measures the box";
    tip->Close();
    EXPECT_FALSE(tip->IsShowing());

    // Immediate tips, and refusals.
    EXPECT_TRUE(CreateUI_ToolTip(owner.get(), "Now", {10, 10})->IsShowing());
    EXPECT_THROW(CreateUI_ToolTip(nullptr, "x", {0, 0}), std::invalid_argument);
    auto loose = qorcore::MakeIntrusive<Block>();
    EXPECT_THROW(CreateUI_ToolTip(loose.get(), "x", {0, 0}), std::invalid_argument);
    EXPECT_THROW(CreateUI_ToolTip(owner.get(), "x", {0, 0}, -1.0), std::invalid_argument);
    EXPECT_THROW(UI_ToolTipHover().SetDelay(NAN), std::invalid_argument);
    EXPECT_THROW(s.window.SetToolTipDelay(-0.1), std::invalid_argument);
}

TEST(NodeToolTipTest, ShowsAfterTheDelayOverTheNodeAndHidesOnLeave) {
    NodeTipScene s;
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    s.window.MouseMove(20, 20);
    ASSERT_NE(s.window.GetToolTip(), nullptr);
    EXPECT_EQ(s.window.GetToolTipNode(), s.tipped.get());
    s.window.AdvanceTime(0.4);
    EXPECT_FALSE(s.Showing());
    s.window.AdvanceTime(0.15);
    ASSERT_TRUE(s.Showing());
    UI_ToolTip* tip = s.window.GetToolTip();
    EXPECT_EQ(tip->GetText(), "Resets the meters");
    EXPECT_EQ(s.window.GetRoot()->GetChildren().back().get(), tip) << "drawn over the nodes";
    const RectT<float> f = tip->GetFrame();
    s.window.RenderAll();
    EXPECT_TRUE(s.TipColourAt(f));

    // To a node without a tip: the tip goes and none comes, however long the pointer rests.
    s.window.MouseMove(120, 20);
    EXPECT_EQ(tip->GetWindow(), nullptr);
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    s.window.AdvanceTime(2.0);
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    EXPECT_EQ(s.Nodes(), 2u);
    s.window.Render();
    EXPECT_FALSE(s.TipColourAt(f));

    s.Rest(30, 25, 0.6); // back, and out of the window
    ASSERT_TRUE(s.Showing());
    s.window.MouseLeave();
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    EXPECT_EQ(s.Nodes(), 2u);
}

TEST(NodeToolTipTest, PressScrollAndHeldButtonsKeepItAway) {
    NodeTipScene s;
    s.Rest(20, 20, 1.0);
    ASSERT_TRUE(s.Showing());
    s.window.MouseDown(20, 20);
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    s.Rest(22, 21, 1.0); // dragging: no tip while the button is held
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    s.window.MouseUp(22, 21);
    s.Rest(23, 21, 1.0); // resting again arms it again
    ASSERT_TRUE(s.Showing());
    s.window.MouseWheel(23, 21, 1.0f);
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    s.window.AdvanceTime(1.0);
    EXPECT_EQ(s.window.GetToolTip(), nullptr) << "a scroll arms nothing";
    s.Rest(24, 22, 0.2); // leaving before the delay is over shows nothing later
    s.Rest(120, 20, 1.0);
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    EXPECT_EQ(s.Nodes(), 2u);
}

TEST(NodeToolTipTest, FollowsTheNodesTextAndPresence) {
    NodeTipScene s;
    s.Rest(20, 20, 1.0);
    ASSERT_TRUE(s.Showing());
    UI_ToolTip* tip = s.window.GetToolTip();
    s.tipped->UI_SetToolTip("Clears the peaks");
    EXPECT_EQ(tip->GetText(), "Clears the peaks") << "a showing tip takes a new text at once";
    s.tipped->UI_SetToolTip("");
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    s.Rest(21, 20, 1.0);
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    s.tipped->UI_SetToolTip("Back"); // given while the pointer rests: shows from the next move
    s.Rest(22, 20, 1.0);
    ASSERT_TRUE(s.Showing());
    EXPECT_EQ(s.window.GetToolTip()->GetText(), "Back");

    // Hidden, disabled or removed, the node takes its tip with it.
    s.tipped->UI_SetVisible(false);
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    s.tipped->UI_SetVisible(true);
    s.Rest(23, 20, 1.0);
    ASSERT_TRUE(s.Showing());
    s.tipped->UI_SetEnabled(false);
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    s.Rest(24, 20, 1.0); // a disabled node still explains itself
    ASSERT_TRUE(s.Showing());
    s.tipped->RemoveFromParent();
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    EXPECT_EQ(s.Nodes(), 1u);
}

TEST(NodeToolTipTest, OnlyTheNodeUnderThePointerCounts) {
    // A child covers its tipped parent: the parent's tip shows only over its own uncovered part.
    TipWindow s;
    s.window.SetToolTipDelay(0.3);
    auto parent = s.Add({0, 0, 200, 100}, "The panel");
    auto child = qorcore::MakeIntrusive<Block>();
    child->SetFrame({50, 20, 50, 40});
    parent->ChildPushBack(child);
    s.Rest(60, 30, 1.0);
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
    s.Rest(10, 80, 1.0);
    ASSERT_NE(s.window.GetToolTip(), nullptr);
    EXPECT_EQ(s.window.GetToolTipNode(), parent.get());
    EXPECT_EQ(s.window.GetToolTip()->GetText(), "The panel");
    s.window.MouseMove(60, 30); // into the child: the parent's tip goes
    EXPECT_EQ(s.window.GetToolTip(), nullptr);
}

TEST(NodeToolTipTest, ControlsWithTheirOwnHoverTipKeepIt) {
    HoverScene s;
    s.Add({120, 20, 60, 30}, "Neighbour");
    s.Rest(30, 30, 1.0);
    ASSERT_NE(s.node->hover.GetToolTip(), nullptr);
    EXPECT_TRUE(s.node->hover.GetToolTip()->IsShowing());
    EXPECT_EQ(s.window.GetToolTip(), nullptr) << "no second tip over the control";
    s.window.MouseMove(130, 30);
    EXPECT_EQ(s.node->hover.GetToolTip(), nullptr);
    s.window.AdvanceTime(1.0);
    ASSERT_TRUE(s.Showing());
    EXPECT_EQ(s.window.GetToolTip()->GetText(), "Neighbour");
}

} // namespace
