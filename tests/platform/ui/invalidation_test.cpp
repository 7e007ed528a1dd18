#include "platform/ui/dirty_region.hpp"
#include "platform/ui/headless_window.hpp"
#include "test_nodes.hpp"

#include <gtest/gtest.h>

#include <cmath>

using namespace qorui;
using qafui_testing::MakeNode;
using qorcore::ColorRGBA;

TEST(DirtyRegion, MergesOverlapsAndAlignedNeighboursOnly) {
    DirtyRegion region;
    region.SetBounds({0, 0, 100, 100});
    region.Add({10, 10, 10, 10});
    region.Add({15, 15, 10, 10});
    ASSERT_EQ(region.GetRects().size(), 1u);
    EXPECT_EQ(region.GetRects()[0], RectT<float>(10, 10, 15, 15));
    region.Add({25, 10, 5, 15}); // side by side with the same height
    ASSERT_EQ(region.GetRects().size(), 1u);
    EXPECT_EQ(region.GetRects()[0], RectT<float>(10, 10, 20, 15));
    region.Add({60, 60, 5, 5});
    region.Add({30, 40, 5, 5}); // touches nothing: a corner is no edge
    EXPECT_EQ(region.GetRects().size(), 3u);
    region.Add({12, 12, 2, 2});
    EXPECT_EQ(region.GetRects().size(), 3u) << "a contained rectangle adds nothing";
    // A rectangle bridging two merges all three into one.
    region.Add({20, 20, 45, 45});
    EXPECT_EQ(region.GetRects().size(), 1u);
    EXPECT_EQ(region.GetBoundingRect(), RectT<float>(10, 10, 55, 55));
}

TEST(DirtyRegion, WidensToWholePixelsClipsAndIgnoresNonsense) {
    DirtyRegion region;
    region.SetBounds({0, 0, 50, 50});
    region.Add({10.5f, 10.2f, 1.0f, 1.0f});
    EXPECT_EQ(region.GetRects()[0], RectT<float>(10, 10, 2, 2));
    region.Clear();
    region.Add({40, 40, 30, 30});
    EXPECT_EQ(region.GetRects()[0], RectT<float>(40, 40, 10, 10));
    region.Clear();
    region.Add({NAN, 0, 10, 10});
    region.Add({0, 0, INFINITY, 10});
    region.Add({60, 60, 10, 10});
    region.Add({5, 5, -3, 10});
    EXPECT_TRUE(region.IsEmpty());
    region.AddAll();
    EXPECT_EQ(region.GetArea(), 2500.0f);
}

TEST(DirtyRegion, PastTheLimitTheCheapestPairMerges) {
    DirtyRegion region(3);
    region.SetBounds({0, 0, 1000, 1000});
    region.Add({0, 0, 10, 10});
    region.Add({500, 500, 10, 10});
    region.Add({900, 0, 10, 10});
    region.Add({0, 20, 10, 10}); // closest to the first
    ASSERT_EQ(region.GetRects().size(), 3u);
    EXPECT_TRUE(region.GetRects()[0] == RectT<float>(0, 0, 10, 30) ||
                region.GetRects().back() == RectT<float>(0, 0, 10, 30));
    EXPECT_EQ(region.GetArea(), 300.0f + 100.0f + 100.0f);
}

TEST(Invalidation, NodesInvalidateTheirVisibleWindowArea) {
    HeadlessWindow window(200, 100);
    window.Render();
    auto outer = MakeNode("outer", {50, 10, 100, 50});
    auto inner = MakeNode("inner", {80, 30, 40, 40}); // sticks out of outer
    outer->ChildPushBack(inner);
    window.AddNode(outer);
    window.Render();
    EXPECT_TRUE(window.GetDirtyRegion().IsEmpty());
    inner->EmitInvalidate();
    ASSERT_EQ(window.GetDirtyRegion().GetRects().size(), 1u);
    EXPECT_EQ(window.GetDirtyRegion().GetRects()[0], RectT<float>(130, 40, 20, 20))
        << "clipped by the parent's bounds";
    window.Render();
    inner->EmitInvalidate({1.5f, 1.5f, 2, 2});
    EXPECT_EQ(window.GetDirtyRegion().GetRects()[0], RectT<float>(131, 41, 3, 3));
    window.Render();
    outer->UI_SetVisible(false);
    EXPECT_EQ(window.GetDirtyRegion().GetRects()[0], RectT<float>(50, 10, 100, 50))
        << "hiding repaints the area left behind";
    window.Render();
    inner->EmitInvalidate();
    EXPECT_TRUE(window.GetDirtyRegion().IsEmpty()) << "a hidden subtree draws nothing";
    outer->UI_SetVisible(true);
    window.Render();
    outer->SetPosition(0, 0);
    EXPECT_EQ(window.GetDirtyRegion().GetBoundingRect(), RectT<float>(0, 0, 150, 60))
        << "old and new places";
}

TEST(Invalidation, RenderPaintsOnlyWhatIsDirty) {
    HeadlessWindow window(100, 100);
    window.SetBackgroundColor(ColorRGBA(1, 1, 1));
    auto a = MakeNode("a", {0, 0, 40, 40});
    auto b = MakeNode("b", {60, 60, 40, 40});
    a->SetBackgroundColor(ColorRGBA(1, 0, 0));
    b->SetBackgroundColor(ColorRGBA(0, 0, 1));
    window.AddNode(a);
    window.AddNode(b);
    window.Render();
    EXPECT_EQ(a->draws, 1);
    EXPECT_EQ(b->draws, 1);
    EXPECT_TRUE(window.Render().empty());
    EXPECT_EQ(a->draws, 1) << "nothing dirty, nothing drawn";
    b->SetBackgroundColor(ColorRGBA(0, 1, 0));
    const auto painted = window.Render();
    ASSERT_EQ(painted.size(), 1u);
    EXPECT_EQ(painted[0], RectT<float>(60, 60, 40, 40));
    EXPECT_EQ(a->draws, 1) << "outside the dirty area";
    EXPECT_EQ(b->draws, 2);
    EXPECT_EQ(window.GetPixel(70, 70), ColorRGBA(0, 1, 0));
    EXPECT_EQ(window.GetPixel(10, 10), ColorRGBA(1, 0, 0));
    EXPECT_EQ(window.GetPixel(50, 50), ColorRGBA(1, 1, 1));
}
