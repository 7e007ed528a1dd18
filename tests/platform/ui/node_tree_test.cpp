#include "platform/ui/headless_window.hpp"
#include "platform/ui/ui_sub_view.hpp"
#include "test_nodes.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

using namespace qorui;
using qafui_testing::MakeNode;
using Strings = std::vector<std::string>;

TEST(NodeTree, ChildrenKeepOrderAndRefuseCycles) {
    auto parent = MakeNode("p", {0, 0, 100, 100});
    auto a = MakeNode("a", {0, 0, 10, 10}), b = MakeNode("b", {}), c = MakeNode("c", {});
    parent->ChildPushBack(a);
    parent->ChildPushBack(c);
    parent->ChildInsert(1, b);
    ASSERT_EQ(parent->GetChildCount(), 3u);
    EXPECT_EQ((std::vector<UI_Node*>{parent->GetChildAt(0), parent->GetChildAt(1),
                                     parent->GetChildAt(2), parent->GetChildAt(3)}),
              (std::vector<UI_Node*>{a.get(), b.get(), c.get(), nullptr}));
    EXPECT_EQ(b->GetParent(), parent.get());
    a->changes.clear();
    parent->ChildInsert(3, a);
    EXPECT_EQ(parent->GetChildAt(2), a.get());
    EXPECT_TRUE(a->changes.empty()) << "re-inserting a child moves it without notifications";

    EXPECT_THROW(parent->ChildPushBack(nullptr), std::invalid_argument);
    EXPECT_THROW(parent->ChildPushBack(parent), std::invalid_argument);
    EXPECT_THROW(a->ChildPushBack(parent), std::invalid_argument) << "an ancestor";
    EXPECT_THROW(parent->ChildInsert(9, MakeNode("x", {})), std::out_of_range);
    EXPECT_TRUE(parent->IsAncestorOf(a.get()));
    EXPECT_FALSE(a->IsAncestorOf(parent.get()));

    EXPECT_TRUE(parent->ChildRemove(b.get()));
    EXPECT_FALSE(parent->ChildRemove(b.get()));
    EXPECT_EQ(b->GetParent(), nullptr);
    a->RemoveFromParent();
    EXPECT_EQ(parent->GetChildCount(), 1u);
    parent->RemoveAllChildren();
    EXPECT_EQ(parent->GetChildCount(), 0u);
}

TEST(NodeTree, NotificationsFollowTheFixedNumbering) {
    Strings log;
    HeadlessWindow window(100, 100);
    auto view = MakeNode("view", {0, 0, 50, 50}, &log);
    auto child = MakeNode("child", {0, 0, 10, 10}, &log);
    // Each step, then the notifications it sends.
    auto expect = [&](const Strings& sent, const char* what) {
        EXPECT_EQ(log, sent) << what;
        log.clear();
    };
    view->ChildPushBack(child);
    expect({"child:change0", "child:change1"}, "outside a window there is no window change");
    window.AddNode(view);
    expect({"view:change0", "view:change3", "child:change3", "view:change1"}, "added to a window");
    EXPECT_EQ(child->GetWindow(), &window);
    view->UI_SetVisible(false);
    view->UI_SetVisible(false);
    expect({"view:change4", "child:change4"}, "hidden once: no change, no notification");
    auto other = MakeNode("other", {50, 50, 50, 50}, &log);
    window.AddNode(other);
    log.clear();
    other->ChildPushBack(child);
    expect({"child:change2", "child:change3", "child:change0", "child:change3", "child:change1"},
           "moving to another parent in the window: removal, then addition");
    window.GetRoot()->ChildRemove(other.get());
    expect({"other:change2", "other:change3", "child:change3"}, "removed from the window");
    EXPECT_EQ(child->GetWindow(), nullptr);
}

TEST(NodeTree, ParentEventRecipientExistsOnlyInAWindow) {
    auto view = MakeNode("view", {0, 0, 10, 10});
    auto child = MakeNode("child", {0, 0, 10, 10});
    view->ChildPushBack(child);
    EXPECT_EQ(child->UI_GetParentEventRecipientNode(), nullptr);
    {
        HeadlessWindow window(20, 20);
        window.AddNode(view);
        EXPECT_EQ(child->UI_GetParentEventRecipientNode(), view.get());
        EXPECT_EQ(view->UI_GetParentEventRecipientNode(), window.GetRoot());
        EXPECT_EQ(window.GetRoot()->UI_GetParentEventRecipientNode(), nullptr);
    }
    EXPECT_EQ(view->UI_GetParentEventRecipientNode(), nullptr) << "the window is gone";
    EXPECT_EQ(view->GetParent(), nullptr);
    EXPECT_EQ(view->changes.back(), int(UI_Node::kNodeChangeWindowChanged));
}

TEST(NodeTree, CoordinatesConvertThroughNestedFrames) {
    using P = PointT<float>;
    HeadlessWindow window(200, 200);
    auto outer = MakeNode("outer", {10, 20, 150, 150});
    auto inner = MakeNode("inner", {5, 7, 50, 50});
    outer->ChildPushBack(inner);
    window.AddNode(outer);
    EXPECT_EQ(inner->UI_LocalToGlobalF(P(1, 1)), P(16, 28));
    EXPECT_EQ(inner->UI_GlobalToLocalF(P(16, 28)), P(1, 1));
    EXPECT_EQ(inner->UI_LocalToGlobalF(RectT<float>(0, 0, 5, 5)), RectT<float>(15, 27, 5, 5));
    EXPECT_EQ(inner->UI_GetSelfToSpecificParentMatrix(outer.get()).Apply(P(0, 0)), P(5, 7));
    const auto toWindow = inner->UI_GetSelfToSpecificParentMatrix(nullptr);
    EXPECT_EQ(toWindow.Apply(P(0, 0)), P(15, 27));
    auto stranger = MakeNode("stranger", {});
    EXPECT_EQ(inner->UI_GetSelfToSpecificParentMatrix(stranger.get()), toWindow);
}

TEST(NodeTree, FramesAreSanitisedSizeChangesReportedAndUserStateBitsKept) {
    auto node = MakeNode("n", {0, 0, 10, 10});
    EXPECT_EQ(node->sizeChanges, 1);
    node->SetPosition(5, 5);
    EXPECT_EQ(node->sizeChanges, 1) << "moving is no resize";
    node->SetSize(20, 10);
    EXPECT_EQ(node->sizeChanges, 2);
    node->SetFrame({NAN, INFINITY, -5, NAN});
    EXPECT_EQ(node->GetFrame(), RectT<float>(0, 0, 0, 0));
    EXPECT_EQ(node->GetBounds(), RectT<float>());
    node->SetStateFlags(UI_Node::kStateUser | (UI_Node::kStateUser << 1), true);
    node->SetStateFlags(UI_Node::kStateUser, false);
    EXPECT_EQ(node->GetStateFlags().GetValue(), UI_Node::kStateUser << 1);
}

TEST(NodeTree, LookupByIdVisibilityAndEnabledThroughAncestors) {
    HeadlessWindow window(100, 100);
    auto view = qorcore::MakeIntrusive<UI_SubView>();
    view->SetID("view");
    auto row = MakeNode("row", {0, 0, 40, 20});
    auto knob = MakeNode("knob", {50, 60, 30, 30});
    row->ChildPushBack(knob);
    view->ChildPushBack(row);
    window.AddNode(view);
    EXPECT_EQ(view->FindNodeByID("knob"), knob.get());
    EXPECT_EQ(view->FindNodeByID("view"), view.get());
    EXPECT_EQ(view->FindNodeByID("missing"), nullptr);
    view->SizeToChildren();
    EXPECT_EQ(view->GetFrame().width, 40.0f) << "only direct children count";
    EXPECT_TRUE(knob->IsShown());
    row->UI_SetVisible(false);
    EXPECT_TRUE(knob->IsVisible());
    EXPECT_FALSE(knob->IsShown());
    view->SizeToChildren();
    EXPECT_EQ(view->GetFrame().width, 0.0f) << "hidden children take no room";
    row->UI_SetVisible(true);
    row->UI_SetEnabled(false);
    EXPECT_TRUE(knob->IsEnabled());
    EXPECT_FALSE(knob->IsEnabledInTree());
    EXPECT_FALSE(MakeNode("loose", {0, 0, 1, 1})->IsShown()) << "outside a window nothing shows";
}
