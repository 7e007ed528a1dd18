// The zoomable grid: range normalisation in both directions, zoom and scroll arithmetic,
// geometry, mappings, the ruler context menu and the drawing, driven through a headless window
// with real pointer events.
#include "graphs/ruler_grid_base.hpp"

#include "golden_image.hpp"
#include "platform/core/localizer.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/menus/ui_menu_overlay.hpp"
#include "platform/rulers/decibel_ruler.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/rulers/log_ruler.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/modal_testing.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

using namespace qoraudiofiltersui;
using qorcore::IntrusivePtr;
using qorcore::PointT;
using qorcore::RectT;
using qorui::HeadlessWindow;
using qorui::MouseButton;

namespace {

/// The smallest concrete grid: its content is whatever the test asks for.
class TestGrid : public RulerGridBase {
public:
    using RulerGridBase::RulerGridBase;
    void DrawContent(qorui::penrig::Penrig* penrig, const RectT<float>& content) const override {
        ++content_draws;
        last_content = content;
        if (draw)
            draw(*penrig, content);
    }
    std::function<void(qorui::penrig::Penrig&, const RectT<float>&)> draw;
    mutable int content_draws = 0;
    mutable RectT<float> last_content;
};

IntrusivePtr<qorui::RulerBase> Linear() {
    return qorcore::MakeIntrusive<qorui::LinearRuler>();
}

/// A grid whose content is 100 by 100 pixels at (9, 9), over rulers from 0 to 100, so that a
/// pixel of the content is a value unit. The horizontal ruler lies over y 118 to 143 (content
/// y 9 + bordered height 109), the vertical one over x 118 to 158.
struct GridScene {
    explicit GridScene(IntrusivePtr<qorui::RulerBase> horizontal = Linear(),
                       IntrusivePtr<qorui::RulerBase> vertical = Linear(),
                       double horizontal_start = 0.0)
        : window(220, 400) {
        grid = qorcore::MakeIntrusive<TestGrid>(horizontal, vertical);
        const PointT<float> size = grid->GetSizeForContentSize({100, 100});
        grid->SetFrame({0, 0, size.x, size.y});
        window.AddNode(grid);
        grid->SetRanges(horizontal_start, 100, 0, 100);
        changes = grid->ConnectCurrentRangeChanged([this] { ++changed; });
    }

    void ExpectHorizontal(double start, double end, double tolerance = 1e-9) const {
        EXPECT_NEAR(grid->GetHorizontalStart(), start, tolerance);
        EXPECT_NEAR(grid->GetHorizontalEnd(), end, tolerance);
    }
    void ExpectVertical(double start, double end, double tolerance = 1e-9) const {
        EXPECT_NEAR(grid->GetVerticalStart(), start, tolerance);
        EXPECT_NEAR(grid->GetVerticalEnd(), end, tolerance);
    }

    HeadlessWindow window;
    IntrusivePtr<TestGrid> grid;
    qorcore::Connection changes;
    int changed = 0;
};

constexpr float kHorizontalRulerY = 125.0f; // inside the horizontal ruler's rectangle
constexpr float kVerticalRulerX = 130.0f;   // inside the vertical ruler's rectangle

/// Runs a right click (or drag) on a ruler and answers the menu with `choice` (0: cancel),
/// keeping what the menu offered.
struct MenuAnswer {
    int choice = 0;
    int shown = 0;
    std::vector<qorui::OS_Menu::Item> items;
    PointT<float> panel_origin;
    qorui::testing::ScopedModalResponder responder{[this](qorui::UI_ModalOverlay& overlay) {
        ++shown;
        auto& menu = dynamic_cast<qorui::UI_MenuOverlay&>(overlay);
        items = menu.GetMenu().GetItems();
        panel_origin = menu.GetPanelRect().Origin();
        if (choice != 0) {
            EXPECT_TRUE(menu.ChooseItem(choice));
        }
    }};
};

// ---------------------------------------------------------------------------------------------
// Construction and geometry

TEST(RulerGridBaseTest, StartsWithTheDocumentedDefaults) {
    auto grid = qorcore::MakeIntrusive<TestGrid>(Linear(), Linear());
    EXPECT_EQ(grid->GetHorizontalStart(), 0.0);
    EXPECT_EQ(grid->GetHorizontalEnd(), 100.0);
    EXPECT_EQ(grid->GetVerticalStartBounds(), 0.0);
    EXPECT_EQ(grid->GetVerticalEndBounds(), 100.0);
    EXPECT_EQ(grid->GetHorizontalMinimumSpan(), 0.1);
    EXPECT_EQ(grid->GetBackgroundColor(), qorcore::ColorRGBAFixed::Black);
    EXPECT_EQ(grid->GetGridColor(), (qorcore::ColorRGBA{0.0f, 0.208f, 0.0f, 1.0f}));
    EXPECT_EQ(grid->GetRulerBackgroundColor(), qorui::skins::GetContentBackgroundColor());
    EXPECT_FALSE(grid->GetRulersSupportZooming());
    EXPECT_FALSE(grid->GetHorizontalHandler().GetSupportsZooming());
    EXPECT_FALSE(grid->GetVerticalHandler().GetSupportsScrolling());
    EXPECT_TRUE(grid->GetHorizontalHandler().GetHandlesMouseWheelEvents());
    EXPECT_TRUE(grid->GetVerticalHandler().GetHandlesMouseWheelEvents());
    EXPECT_TRUE(grid->WantsKeyboardFocus());
    EXPECT_TRUE(grid->GetHorizontalRuler()->GetAbbreviateNumbers());
    EXPECT_TRUE(grid->GetVerticalRuler()->IsVertical());
    EXPECT_FALSE(grid->GetHorizontalRuler()->IsVertical());
    EXPECT_EQ(grid->GetScaleFactor(), 1.0f);
    grid->SetRulersSupportZooming(true);
    EXPECT_TRUE(grid->GetVerticalHandler().GetSupportsZooming());
    EXPECT_TRUE(grid->GetHorizontalHandler().GetSupportsScrolling());
}

TEST(RulerGridBaseTest, GeometryWithAndWithoutBordersAndRulers) {
    HeadlessWindow window(600, 500);
    auto grid = qorcore::MakeIntrusive<TestGrid>(Linear(), Linear());
    window.AddNode(grid);
    grid->SetFrame({10, 10, 500, 400});
    // Frame 5 each side; the vertical ruler takes 40 - 5 of the width, the horizontal 25 - 5.
    EXPECT_EQ(grid->GetContentRectWithBorders(), (RectT<float>{5, 5, 455, 370}));
    EXPECT_EQ(grid->GetContentRect(), (RectT<float>{9, 9, 446, 361}));
    EXPECT_EQ(grid->GetSizeForContentSize({446, 361}), (PointT<float>{500, 400}));
    EXPECT_EQ(grid->GetBestSize(), (PointT<float>{370 + 54, 320 + 39}));
    EXPECT_EQ(grid->GetOuterFrame(), 5.0f);
    EXPECT_EQ(grid->GetLeftContentBorder(), 4.0f);
    EXPECT_EQ(grid->GetTopContentBorder(), 4.0f);
    EXPECT_EQ(grid->GetRightContentBorder(), 5.0f);
    EXPECT_EQ(grid->GetBottomContentBorder(), 5.0f);
    // The rulers span the content, the handlers the rulers' strips in the grid's coordinates.
    EXPECT_EQ(grid->GetHorizontalRuler()->GetPixel1(), 9);
    EXPECT_EQ(grid->GetHorizontalRuler()->GetPixel2(), 455);
    EXPECT_EQ(grid->GetVerticalRuler()->GetPixel1(), 9);
    EXPECT_EQ(grid->GetVerticalRuler()->GetPixel2(), 370);
    EXPECT_EQ(grid->GetHorizontalHandler().GetRulerRect(), (RectT<int>{0, 9 + 370, 465, 25}));
    EXPECT_EQ(grid->GetVerticalHandler().GetRulerRect(), (RectT<int>{9 + 455, 0, 40, 380}));

    grid->SetDrawBorder(false);
    EXPECT_EQ(grid->GetContentRectWithBorders(), (RectT<float>{0, 0, 460, 375}));
    EXPECT_EQ(grid->GetContentRect(), (RectT<float>{0, 0, 460, 375}));
    EXPECT_EQ(grid->GetSizeForContentSize({460, 375}), (PointT<float>{500, 400}));
    EXPECT_EQ(grid->GetOuterFrame(), 0.0f);
    EXPECT_EQ(grid->GetHorizontalHandler().GetRulerRect(), (RectT<int>{0, 375, 470, 25}));

    auto bare = qorcore::MakeIntrusive<TestGrid>(nullptr, nullptr);
    bare->SetFrame({0, 0, 100, 80});
    EXPECT_EQ(bare->GetContentRectWithBorders(), (RectT<float>{5, 5, 90, 70}));
    EXPECT_EQ(bare->GetContentRect(), (RectT<float>{9, 9, 81, 61}));
    // The size formula counts the borders and the ruler sizes but not the frame a missing ruler
    // leaves: 81 + 4 + 5 + 5 = 95, five short of the 100 that give this content.
    EXPECT_EQ(bare->GetSizeForContentSize({81, 61}), (PointT<float>{95, 75}));
    bare->SetFrame({0, 0, 0, 80});
    EXPECT_EQ(bare->GetContentRect(), (RectT<float>{0, 0, 0, 80})); // left alone when empty
}

// ---------------------------------------------------------------------------------------------
// Ranges

TEST(RulerGridBaseTest, NormalisationOrdersLimitsAndWidensAscendingRanges) {
    GridScene s;
    s.grid->SetCurrentRange(80, 20, 150, -50); // reversed, and past both bounds
    s.ExpectHorizontal(20, 80);
    s.ExpectVertical(0, 100);
    // Narrower than 0.1: widened symmetrically around the middle.
    s.grid->SetCurrentRange(50, 50.02, 0, 100);
    s.ExpectHorizontal(49.96, 50.06, 1e-12);
    // Widened past the start bound, then pushed back inside: (-0.05, 0.05) becomes (0, 0.1).
    s.grid->SetCurrentRange(0, 0, 100, 100);
    s.ExpectHorizontal(0, 0.1);
    s.ExpectVertical(99.9, 100);
    // Wholly outside: 120..130 is limited to 120..100, widened to 109.95..110.05 and pushed back.
    s.grid->SetCurrentRange(120, 130, 0, 100);
    s.ExpectHorizontal(99.9, 100);
    // NaN ends are mended to the bounds.
    s.grid->SetCurrentRange(std::nan(""), 50, 0, std::numeric_limits<double>::infinity());
    s.ExpectHorizontal(0, 50);
    s.ExpectVertical(0, 100);
}

TEST(RulerGridBaseTest, EqualBoundsPinBothEnds) {
    GridScene s;
    s.grid->SetRangeBounds(5, 5, 0, 100);
    s.ExpectHorizontal(5, 5);
    s.grid->SetCurrentRange(0, 100, 0, 100);
    s.ExpectHorizontal(5, 5);
    EXPECT_FALSE(s.grid->CanZoomOutHorizontal());
    EXPECT_FALSE(s.grid->CanZoomInHorizontal());
}

TEST(RulerGridBaseTest, SetRangeBoundsReappliesTheCurrentRange) {
    GridScene s;
    s.grid->SetCurrentRange(10, 90, 10, 90);
    s.grid->SetRangeBounds(20, 200, 0, 50);
    s.ExpectHorizontal(20, 90);
    s.ExpectVertical(10, 50);
    EXPECT_EQ(s.grid->GetHorizontalStartBounds(), 20);
    EXPECT_EQ(s.grid->GetHorizontalEndBounds(), 200);
    // SetRanges takes both.
    s.grid->SetRanges(-10, 10, 5, 6);
    s.ExpectHorizontal(-10, 10);
    s.ExpectVertical(5, 6);
    EXPECT_EQ(s.grid->GetHorizontalRuler()->GetValue1(), -10);
    EXPECT_EQ(s.grid->GetVerticalRuler()->GetValue2(), 6);
}

TEST(RulerGridBaseTest, RangeChangesFireOnceAndRepaintOnlyWhenSomethingChanged) {
    GridScene s;
    s.window.RenderAll();
    s.grid->SetCurrentRange(0, 100, 0, 100);
    EXPECT_EQ(s.changed, 0);
    EXPECT_TRUE(s.window.Render().empty());
    s.grid->SetCurrentRange(10, 100, 0, 100);
    EXPECT_EQ(s.changed, 1);
    EXPECT_FALSE(s.window.Render().empty());
    // A range that normalises to the stored one changes nothing either.
    s.grid->SetCurrentRange(100, 10, -5, 100);
    EXPECT_EQ(s.changed, 1);

    // Without rulers the signal fires, but nothing is repainted.
    HeadlessWindow window(200, 200);
    auto bare = qorcore::MakeIntrusive<TestGrid>(nullptr, nullptr);
    bare->SetFrame({0, 0, 150, 150});
    window.AddNode(bare);
    int bare_changed = 0;
    auto c = bare->ConnectCurrentRangeChanged([&] { ++bare_changed; });
    window.RenderAll();
    bare->SetCurrentRange(10, 20, 30, 40);
    EXPECT_EQ(bare_changed, 1);
    EXPECT_TRUE(window.Render().empty());
    bare->SetCurrentRange(10, 20, 30, 40);
    EXPECT_EQ(bare_changed, 1);
}

TEST(RulerGridBaseTest, DescendingAxisStaysDescendingThroughNormalisation) {
    GridScene s(Linear(), qorcore::MakeIntrusive<qorui::DecibelRuler>());
    s.grid->SetRanges(0, 100, 12, -60);
    s.ExpectVertical(12, -60);
    EXPECT_FALSE(s.grid->CanZoomOutVertical());
    s.grid->SetCurrentRange(0, 100, -70, 20); // ascending input, past both bounds
    s.ExpectVertical(12, -60);
    s.grid->SetCurrentRange(0, 100, -10, 0); // reversed into the axis's direction
    s.ExpectVertical(0, -10);
    s.grid->SetCurrentRange(0, 100, 3, 3); // widened: 3.05 to 2.95
    s.ExpectVertical(3.05, 2.95, 1e-12);
    s.grid->SetCurrentRange(0, 100, 12, 12); // widened past the top, pushed back: 12 to 11.9
    s.ExpectVertical(12, 11.9, 1e-12);
    s.grid->SetCurrentRange(0, 100, -60, -60);
    s.ExpectVertical(-59.9, -60, 1e-12);
    EXPECT_GT(s.grid->GetVerticalRuler()->GetValue1(), s.grid->GetVerticalRuler()->GetValue2());
}

// ---------------------------------------------------------------------------------------------
// Zooming

TEST(RulerGridBaseTest, ZoomAroundAValueMovesBothEndsTenPercentPerStep) {
    GridScene s;
    // Anchor 50 at pixel 50 of 100: each end moves trunc(50 * 0.3) = 15 pixels inward.
    s.grid->DoHorizontalZoomInAroundValue(50);
    s.ExpectHorizontal(15, 85);
    EXPECT_EQ(s.changed, 1);
    s.grid->SetCurrentRange(0, 100, 0, 100);
    // Anchor 0: the start stays, the end moves trunc(100 * 0.3) = 30 pixels.
    s.grid->DoHorizontalZoomInAroundValue(0);
    s.ExpectHorizontal(0, 70);
    // The vertical twin keeps the horizontal pair.
    s.grid->DoVerticalZoomInAroundValue(100);
    s.ExpectVertical(30, 100);
    s.ExpectHorizontal(0, 70);
    // Zooming out from 0..70 around 35 (pixel 50): 15 pixels of 0.7 outward each side.
    s.grid->DoHorizontalZoomOutAroundValue(35);
    s.ExpectHorizontal(0, 80.5); // -10.5 is limited by the bound, then 70 + 10.5
    // Steps of 0 go on and change nothing.
    const int before = s.changed;
    s.grid->DoHorizontalZoomAroundValue(35, 0);
    EXPECT_EQ(s.changed, before);
}

TEST(RulerGridBaseTest, ZoomRefusesOutsideAnchorsMinimumSpansAndFullViews) {
    GridScene s;
    s.grid->DoHorizontalZoomOutAroundValue(50); // exactly at the bounds
    EXPECT_EQ(s.changed, 0);
    s.grid->DoHorizontalZoomInAroundValue(150); // anchor past pixel 2
    s.grid->DoHorizontalZoomInAroundValue(-1);  // anchor before pixel 1
    EXPECT_EQ(s.changed, 0);
    s.ExpectHorizontal(0, 100);
    // 0..0 widens to exactly 0..0.1, the minimum span: no zoom in beyond it.
    s.grid->SetCurrentRange(0, 0, 0, 100);
    s.ExpectHorizontal(0, 0.1);
    EXPECT_FALSE(s.grid->CanZoomInHorizontal());
    const int before = s.changed;
    s.grid->DoHorizontalZoomInAroundValue(0.05);
    s.grid->DoSimpleHorizontalZoomIn();
    EXPECT_EQ(s.changed, before);
    EXPECT_TRUE(s.grid->CanZoomOutHorizontal());
}

TEST(RulerGridBaseTest, SimpleZoomAnchorsAtTheMiddleValue) {
    GridScene s;
    s.grid->DoSimpleHorizontalZoomIn();
    s.ExpectHorizontal(15, 85);
    s.grid->DoSimpleVerticalZoomIn();
    s.ExpectVertical(15, 85);
    // From 15..85 (0.7 a pixel) around 50, pixel 50: 15 pixels outward, 10.5 each side.
    s.grid->DoSimpleHorizontalZoomOut();
    s.ExpectHorizontal(4.5, 95.5, 1e-9);
    s.grid->DoSimpleVerticalZoomOut();
    s.ExpectVertical(4.5, 95.5, 1e-9);
}

TEST(RulerGridBaseTest, DescendingAxisStaysDescendingThroughZoom) {
    GridScene s(Linear(), qorcore::MakeIntrusive<qorui::DecibelRuler>());
    s.grid->SetRanges(0, 100, 12, -60);
    // -24 is halfway (pixel 50): 0.72 dB a pixel, the ends move 15 pixels = 10.8 dB inward.
    s.grid->DoVerticalZoomInAroundValue(-24);
    s.ExpectVertical(1.2, -49.2, 1e-9);
    EXPECT_TRUE(s.grid->CanZoomOutVertical());
    // Back out: 0.504 dB a pixel now, 15 pixels outward each side.
    s.grid->DoVerticalZoomOutAroundValue(-24);
    s.ExpectVertical(8.76, -56.76, 1e-9);
    s.grid->DoSimpleVerticalZoomOut();
    s.grid->DoSimpleVerticalZoomOut();
    s.ExpectVertical(12, -60);
}

TEST(RulerGridBaseTest, LogRulerZoomsInItsOwnScale) {
    auto log_ruler = qorcore::MakeIntrusive<qorui::LogRuler>();
    GridScene s(log_ruler, Linear(), 10.0);
    s.grid->SetRanges(10, 100000, 0, 100);
    // Four decades over 100 pixels; 1000 Hz sits at pixel 50. Both ends move 15 pixels, that
    // is 0.6 decades: 10^1.6 to 10^4.4.
    s.grid->DoHorizontalZoomInAroundValue(1000);
    s.ExpectHorizontal(std::pow(10.0, 1.6), std::pow(10.0, 4.4), 1e-6);
}

// ---------------------------------------------------------------------------------------------
// Pointer gestures

TEST(RulerGridBaseTest, RulersIgnoreTheMouseUntilZoomingIsSupported) {
    GridScene s;
    s.grid->SetCurrentRange(20, 60, 0, 100);
    s.window.MouseDown(59, kHorizontalRulerY);
    s.window.MouseMove(79, kHorizontalRulerY);
    s.window.MouseUp(79, kHorizontalRulerY);
    EXPECT_FALSE(s.window.MouseWheel(59, kHorizontalRulerY, 3));
    s.ExpectHorizontal(20, 60);
    s.window.MouseMove(59, kHorizontalRulerY);
    EXPECT_EQ(s.window.GetCursor(), 0);
}

TEST(RulerGridBaseTest, LeftDragScrollsAndStopsAtTheBounds) {
    GridScene s;
    s.grid->SetRulersSupportZooming(true);
    s.grid->SetCurrentRange(20, 60, 20, 60);
    // 0.4 a pixel: 10 pixels to the right move the view 4 towards lower values.
    s.window.MouseDown(59, kHorizontalRulerY);
    EXPECT_TRUE(s.grid->HasFocus());
    s.window.MouseMove(69, kHorizontalRulerY);
    s.ExpectHorizontal(16, 56);
    s.window.MouseMove(169, kHorizontalRulerY); // 40 more would pass the start bound
    s.ExpectHorizontal(0, 40);
    s.window.MouseMove(19, kHorizontalRulerY); // 150 to the left: stops at the end bound
    s.ExpectHorizontal(60, 100);
    s.window.MouseUp(19, kHorizontalRulerY);
    s.ExpectVertical(20, 60);

    // The vertical ruler scrolls on y.
    s.window.MouseDown(kVerticalRulerX, 50);
    s.window.MouseMove(kVerticalRulerX, 45);
    s.window.MouseUp(kVerticalRulerX, 45);
    s.ExpectVertical(22, 62);
}

TEST(RulerGridBaseTest, NothingToScrollInAFullView) {
    GridScene s;
    s.grid->SetRulersSupportZooming(true);
    s.window.MouseMove(59, kHorizontalRulerY);
    EXPECT_EQ(s.window.GetCursor(), 0);
    s.window.MouseDown(59, kHorizontalRulerY);
    s.window.MouseMove(79, kHorizontalRulerY);
    s.window.MouseUp(79, kHorizontalRulerY);
    s.ExpectHorizontal(0, 100);
    EXPECT_EQ(s.changed, 0);
}

TEST(RulerGridBaseTest, DescendingAxisStaysDescendingThroughScroll) {
    GridScene s(Linear(), qorcore::MakeIntrusive<qorui::DecibelRuler>());
    s.grid->SetRulersSupportZooming(true);
    s.grid->SetRanges(0, 100, 12, -60);
    s.grid->SetCurrentRange(0, 100, 0, -36); // -0.36 dB a pixel
    // Dragging up 10 pixels shows lower levels: (last - current) * -0.36 = -3.6.
    s.window.MouseDown(kVerticalRulerX, 60);
    s.window.MouseMove(kVerticalRulerX, 50);
    s.ExpectVertical(-3.6, -39.6, 1e-9);
    s.window.MouseMove(kVerticalRulerX, -100); // far past the bottom bound
    s.ExpectVertical(-24, -60, 1e-9);
    s.window.MouseMove(kVerticalRulerX, 170); // and past the top bound
    s.ExpectVertical(12, -24, 1e-9);
    s.window.MouseUp(kVerticalRulerX, 170);
    EXPECT_GT(s.grid->GetVerticalStart(), s.grid->GetVerticalEnd());
}

TEST(RulerGridBaseTest, RightDragZoomsToTheRubberBand) {
    GridScene s;
    s.grid->SetRulersSupportZooming(true);
    MenuAnswer answer;
    s.window.AdvanceTime(1.0); // two presses, not a double click
    s.window.MouseDown(69, kHorizontalRulerY, MouseButton::kRight);
    s.window.MouseMove(29, kHorizontalRulerY + 3);
    s.window.RenderAll();
    // The band is drawn over the ruler between the two pixels, in the focus colour.
    const auto band = s.window.GetPixel(49, 130);
    const auto outside = s.window.GetPixel(80, 130);
    EXPECT_NE(band, outside);
    s.window.MouseUp(29, kHorizontalRulerY + 3, MouseButton::kRight);
    s.ExpectHorizontal(20, 60); // pixels 29 and 69 are values 20 and 60
    EXPECT_EQ(answer.shown, 0);
    EXPECT_EQ(s.changed, 1);

    // The vertical ruler zooms on y.
    s.window.AdvanceTime(1.0); // two presses, not a double click
    s.window.MouseDown(kVerticalRulerX, 19, MouseButton::kRight);
    s.window.MouseMove(kVerticalRulerX, 89);
    s.window.MouseUp(kVerticalRulerX, 89, MouseButton::kRight);
    s.ExpectVertical(10, 80);
    s.ExpectHorizontal(20, 60);
}

TEST(RulerGridBaseTest, RightClickOpensTheMenuAndATwoPixelDragIsStillAClick) {
    GridScene s;
    s.grid->SetRulersSupportZooming(true);
    {
        MenuAnswer answer;         // cancels
        s.window.AdvanceTime(1.0); // two presses, not a double click
        s.window.Click(59, kHorizontalRulerY, MouseButton::kRight);
        EXPECT_EQ(answer.shown, 1);
        ASSERT_EQ(answer.items.size(), 3u);
        EXPECT_EQ(answer.items[0].id, 3040);
        EXPECT_EQ(answer.items[0].text, "Zoom In");
        EXPECT_TRUE(answer.items[0].enabled);
        EXPECT_EQ(answer.items[1].id, 3041);
        EXPECT_EQ(answer.items[1].text, "Zoom Out");
        EXPECT_FALSE(answer.items[1].enabled); // the full view
        EXPECT_EQ(answer.items[2].id, 3042);
        EXPECT_EQ(answer.items[2].text, "Zoom Out Full");
        EXPECT_FALSE(answer.items[2].enabled);
        // The menu opens at the click.
        EXPECT_EQ(answer.panel_origin, (PointT<float>{59, kHorizontalRulerY}));
        s.ExpectHorizontal(0, 100);
    }
    {
        // 2 pixels right: a click at the last position, 61 = value 52. Zoom In there moves the
        // start trunc(52 * 0.3) = 15 pixels and the end trunc(48 * 0.3) = 14 pixels inward.
        MenuAnswer answer;
        answer.choice = RulerGridBase::kMenuZoomIn;
        s.window.AdvanceTime(1.0); // two presses, not a double click
        s.window.MouseDown(59, kHorizontalRulerY, MouseButton::kRight);
        s.window.MouseMove(61, kHorizontalRulerY);
        s.window.MouseUp(61, kHorizontalRulerY, MouseButton::kRight);
        EXPECT_EQ(answer.shown, 1);
        s.ExpectHorizontal(15, 86);
    }
}

TEST(RulerGridBaseTest, EachMenuItemActsOnItsAxis) {
    GridScene s;
    s.grid->SetRulersSupportZooming(true);
    {
        MenuAnswer answer;
        answer.choice = RulerGridBase::kMenuZoomIn;
        s.window.AdvanceTime(1.0);                                // two presses, not a double click
        s.window.Click(kVerticalRulerX, 59, MouseButton::kRight); // value 50
        s.ExpectVertical(15, 85);
        s.ExpectHorizontal(0, 100);
    }
    {
        MenuAnswer answer;
        answer.choice = RulerGridBase::kMenuZoomOut;
        // Pixel 59 is 15 + 50 * 0.7 = 50 again: 15 pixels of 0.7 outward on each side.
        s.window.AdvanceTime(1.0); // two presses, not a double click
        s.window.Click(kVerticalRulerX, 59, MouseButton::kRight);
        EXPECT_TRUE(answer.items[1].enabled);
        s.ExpectVertical(4.5, 95.5, 1e-9);
    }
    {
        MenuAnswer answer;
        answer.choice = RulerGridBase::kMenuZoomOutFull;
        s.window.AdvanceTime(1.0); // two presses, not a double click
        s.window.Click(kVerticalRulerX, 30, MouseButton::kRight);
        EXPECT_TRUE(answer.items[2].enabled);
        s.ExpectVertical(0, 100);
    }
    {
        MenuAnswer answer;
        answer.choice = RulerGridBase::kMenuZoomIn;
        s.window.AdvanceTime(1.0); // two presses, not a double click
        s.window.Click(29, kHorizontalRulerY, MouseButton::kRight); // value 20, pixel 20
        s.ExpectHorizontal(6, 76); // trunc(20 * 0.3) = 6, trunc(80 * 0.3) = 24
        s.ExpectVertical(0, 100);
    }
    {
        MenuAnswer answer;
        answer.choice = RulerGridBase::kMenuZoomOutFull;
        s.window.AdvanceTime(1.0); // two presses, not a double click
        s.window.Click(29, kHorizontalRulerY, MouseButton::kRight);
        s.ExpectHorizontal(0, 100);
    }
}

TEST(RulerGridBaseTest, CancelledGestureOpensNoMenuAndMenuTextsAreLocalised) {
    GridScene s;
    s.grid->SetRulersSupportZooming(true);
    MenuAnswer answer;
    s.window.AdvanceTime(1.0); // two presses, not a double click
    s.window.MouseDown(59, kHorizontalRulerY, MouseButton::kRight);
    s.window.PressKey(qorui::KeyboardCode::kEscape);
    s.window.MouseUp(59, kHorizontalRulerY, MouseButton::kRight);
    EXPECT_EQ(answer.shown, 0);

    qorcore::Localizer::Get().AddEntry("$$$/qoraudiofiltersui/RulerGridBase/ZoomOutFull",
                                       "Alles zeigen");
    s.window.AdvanceTime(1.0); // two presses, not a double click
    s.window.Click(59, kHorizontalRulerY, MouseButton::kRight);
    qorcore::Localizer::Get().Clear();
    ASSERT_EQ(answer.items.size(), 3u);
    EXPECT_EQ(answer.items[0].text, "Zoom In");
    EXPECT_EQ(answer.items[2].text, "Alles zeigen");
}

TEST(RulerGridBaseTest, WheelZoomsAroundTheValueUnderThePointer) {
    GridScene s;
    s.grid->SetRulersSupportZooming(true);
    EXPECT_TRUE(s.window.MouseWheel(59, kHorizontalRulerY, 3));
    s.ExpectHorizontal(15, 85);
    // Back out by 3 notches at pixel 59, value 50: 15 pixels of 0.7 outward.
    s.window.MouseWheel(59, kHorizontalRulerY, -3);
    s.ExpectHorizontal(4.5, 95.5, 1e-9);
    // One notch on the vertical ruler at value 0 (pixel 9): the end moves trunc(10) pixels.
    s.window.MouseWheel(kVerticalRulerX, 9, 1);
    s.ExpectVertical(0, 90);
    // Over the content the wheel does nothing.
    EXPECT_FALSE(s.window.MouseWheel(50, 50, 3));
    s.ExpectVertical(0, 90);
}

TEST(RulerGridBaseTest, CursorsOverTheRulers) {
    GridScene s;
    s.grid->SetRulersSupportZooming(true);
    s.grid->SetCurrentRange(20, 60, 0, 100);
    s.window.MouseMove(59, kHorizontalRulerY);
    EXPECT_EQ(s.window.GetCursor(), 13);
    s.window.MouseMove(kVerticalRulerX, 50);
    EXPECT_EQ(s.window.GetCursor(), 0); // the vertical axis shows everything
    s.window.MouseMove(59, kHorizontalRulerY);
    s.window.AdvanceTime(1.0); // two presses, not a double click
    s.window.MouseDown(59, kHorizontalRulerY, MouseButton::kRight);
    s.window.MouseMove(79, kHorizontalRulerY);
    EXPECT_EQ(s.window.GetCursor(), 200);
    s.window.MouseUp(79, kHorizontalRulerY, MouseButton::kRight);
    s.window.AdvanceTime(1.0); // two presses, not a double click
    s.window.MouseDown(kVerticalRulerX, 30, MouseButton::kRight);
    s.window.MouseMove(kVerticalRulerX, 60);
    EXPECT_EQ(s.window.GetCursor(), 201);
    s.window.MouseUp(kVerticalRulerX, 60, MouseButton::kRight);
}

// ---------------------------------------------------------------------------------------------
// Mapping, ticks and state

TEST(RulerGridBaseTest, MappingsThroughRulersAndWithoutThem) {
    GridScene s;
    EXPECT_EQ(s.grid->GetPixelForHorizontalValue(50), 59.0f);
    EXPECT_EQ(s.grid->GetPixelForVerticalValue(25.2), 34.0f); // rounded to the nearest pixel
    EXPECT_EQ(s.grid->GetPixelForCoordinatePair({10, 90}), (PointT<float>{19, 99}));
    const auto pair = s.grid->GetCoordinatePairForPixel({59.9f, 19.2f});
    EXPECT_DOUBLE_EQ(pair.first, 50); // truncated to pixel 59
    EXPECT_DOUBLE_EQ(pair.second, 10);
    // Limited to the current range.
    const auto outside = s.grid->GetCoordinatePairForPixel({300, -40});
    EXPECT_DOUBLE_EQ(outside.first, 100);
    EXPECT_DOUBLE_EQ(outside.second, 0);

    auto bare = qorcore::MakeIntrusive<TestGrid>(nullptr, nullptr);
    bare->SetFrame({0, 0, 100, 80}); // content (9, 9, 81, 61)
    bare->SetRanges(0, 81, 100, 39); // a descending vertical axis
    EXPECT_FLOAT_EQ(bare->GetPixelForHorizontalValue(27), 36.0f);
    EXPECT_FLOAT_EQ(bare->GetPixelForVerticalValue(70), 39.0f); // 30 of 61 values down
    const auto back = bare->GetCoordinatePairForPixel({36, 39});
    EXPECT_DOUBLE_EQ(back.first, 27);
    EXPECT_DOUBLE_EQ(back.second, 70);
    const auto limited = bare->GetCoordinatePairForPixel({500, 500});
    EXPECT_DOUBLE_EQ(limited.first, 81);
    EXPECT_DOUBLE_EQ(limited.second, 39);
    bare->SetRangeBounds(5, 5, 0, 100);
    EXPECT_EQ(bare->GetPixelForHorizontalValue(5), 0.0f); // an empty range maps to 0
    bare->SetFrame({0, 0, 0, 0});
    EXPECT_EQ(bare->GetCoordinatePairForPixel({10, 10}).first, 5.0); // 0, limited to 5..5
}

TEST(RulerGridBaseTest, MajorTicksAreRelativeToTheContent) {
    GridScene s;
    const auto ticks = s.grid->GetMajorTicks(true);
    const auto pixels = s.grid->GetHorizontalRuler()->GetMajorPixels();
    ASSERT_FALSE(ticks.empty());
    std::vector<float> expected;
    for (int p : pixels)
        if (p >= 5 && p < 114) // the bordered rectangle spans x 5 to 114
            expected.push_back(float(p - 9));
    EXPECT_EQ(ticks, expected);
    EXPECT_EQ(ticks.front(), 0.0f); // value 0 at the content's first pixel
    auto bare = qorcore::MakeIntrusive<TestGrid>(nullptr, nullptr);
    EXPECT_TRUE(bare->GetMajorTicks(true).empty());
    EXPECT_TRUE(bare->GetMajorTicks(false).empty());
}

TEST(RulerGridBaseTest, OpaqueViewStateRestoresTheView) {
    GridScene s;
    s.grid->SetCurrentRange(10, 20, 30, 40);
    auto state = s.grid->GetOpaqueViewState();
    s.grid->SetCurrentRange(0, 100, 0, 100);
    s.grid->SetOpaqueViewState(state);
    s.ExpectHorizontal(10, 20);
    s.ExpectVertical(30, 40);
    // A state is still normalised against the bounds in force: 10..20 is limited to 15..20.
    s.grid->SetRangeBounds(15, 100, 0, 100);
    s.grid->SetOpaqueViewState(state);
    s.ExpectHorizontal(15, 20);
    // Foreign objects and null are ignored.
    struct Foreign : qorcore::RefCountedObject {};
    s.grid->SetOpaqueViewState(qorcore::MakeIntrusive<Foreign>());
    s.grid->SetOpaqueViewState(nullptr);
    s.ExpectHorizontal(15, 20);
}

TEST(RulerGridBaseTest, BadInputIsRefusedClearly) {
    GridScene s;
    EXPECT_THROW(s.grid->SetRanges(std::nan(""), 1, 0, 1), std::invalid_argument);
    EXPECT_THROW(s.grid->SetRangeBounds(0, 1, 0, std::numeric_limits<double>::infinity()),
                 std::invalid_argument);
    EXPECT_EQ(s.grid->GetHorizontalEndBounds(), 100);

    // A log ruler can't show 0: the range, the bounds and both rulers stay as they were.
    GridScene log(qorcore::MakeIntrusive<qorui::LogRuler>(), Linear(), 10.0);
    log.grid->SetRanges(20, 20000, 0, 50);
    EXPECT_THROW(log.grid->SetRanges(0, 100, 0, 10), std::invalid_argument);
    log.ExpectHorizontal(20, 20000);
    log.ExpectVertical(0, 50);
    EXPECT_EQ(log.grid->GetHorizontalStartBounds(), 20);
    EXPECT_EQ(log.grid->GetVerticalEndBounds(), 50);
    EXPECT_EQ(log.grid->GetVerticalRuler()->GetValue2(), 50);

    auto bare = qorcore::MakeIntrusive<TestGrid>(nullptr, nullptr);
    EXPECT_THROW(bare->DoHorizontalZoomInAroundValue(50), qorcore::NullPointerException);
    EXPECT_THROW(bare->DoSimpleVerticalZoomOut(), qorcore::NullPointerException);
}

// ---------------------------------------------------------------------------------------------
// Drawing

TEST(RulerGridBaseTest, DrawsContentIntoTheContentRectAndTheFocusBorder) {
    GridScene s;
    s.window.RenderAll();
    EXPECT_GE(s.grid->content_draws, 1);
    EXPECT_EQ(s.grid->last_content, (RectT<float>{9, 9, 100, 100}));
    // Inside the bordered rectangle: black, or the grid's green on a major line.
    const auto inside = s.window.GetPixel(30, 30);
    EXPECT_LT(inside.red, 0.01f);
    EXPECT_LT(inside.green, 0.25f);
    // The outer border in the divider colour, then the focus colour once focused.
    const auto divider = qorui::skins::GetDividerColor();
    EXPECT_NEAR(s.window.GetPixel(60, 0).red, divider.red, 0.01f);
    s.grid->UI_RequestFocus();
    s.window.RenderAll();
    const auto focus = qorui::skins::GetFocusColor();
    EXPECT_NEAR(s.window.GetPixel(60, 0).blue, focus.blue, 0.01f);
    s.grid->SetIndicateFocus(false);
    s.window.RenderAll();
    EXPECT_NEAR(s.window.GetPixel(60, 0).blue, divider.blue, 0.01f);
}

TEST(RulerGridBaseTest, GridLinesSitOnTheRulersMajorPixels) {
    GridScene s;
    s.window.RenderAll();
    const auto& ruler = *s.grid->GetHorizontalRuler();
    const auto grid_color = s.grid->GetGridColor();
    int lines = 0;
    for (int p : ruler.GetMajorPixels()) {
        if (p <= 5 || p >= 113)
            continue; // the first and last lie on the bordered rectangle's edges
        const auto on = s.window.GetPixel(p, 60);
        EXPECT_NEAR(on.green, grid_color.green, 0.01f) << p;
        EXPECT_LT(s.window.GetPixel(p + 1, 60).green, 0.01f) << p; // one pixel wide
        ++lines;
    }
    EXPECT_GT(lines, 2);
    s.grid->ShowGrid(false);
    s.window.RenderAll();
    for (int p : ruler.GetMajorPixels())
        if (p > 9 && p < 109) {
            EXPECT_LT(s.window.GetPixel(p, 60).green, 0.01f) << p;
        }
}

/// A frequency graph as effects show it: a log axis from 20 Hz to 20 kHz, a descending decibel
/// axis from +12 to -60 dB, minor lines on the frequency axis, a smooth test trace as content and
/// the hover indicator on the frequency ruler.
void RenderGoldenGrid(float scale, const std::string& name) {
    qorui::skins::ScopedSkin look(qorui::skins::Skin::kClassic);
    auto freq = qorcore::MakeIntrusive<qorui::LogRuler>();
    auto level = qorcore::MakeIntrusive<qorui::DecibelRuler>();
    auto grid = qorcore::MakeIntrusive<TestGrid>(freq, level);
    const PointT<float> size = grid->GetSizeForContentSize({360, 200});
    HeadlessWindow window(size.x + 20, size.y + 20, scale);
    grid->SetFrame({10, 10, size.x, size.y});
    window.AddNode(grid);
    grid->SetRanges(20, 20000, 12, -60);
    grid->SetDrawHorizontalMinorTicks(true);
    grid->draw = [g = grid.get()](qorui::penrig::Penrig& p, const RectT<float>& content) {
        qorui::penrig::Penrig::StateSaver saver(p);
        p.ClipToRect(content);
        p.SetPen(1.5f, qorcore::ColorRGBA::FromBytes(255, 214, 64));
        p.NewPath();
        for (float x = content.x; x <= content.Right(); x += 1.0f) {
            const double hz = g->GetHorizontalRuler()->GetValueFromPixelF(x);
            const double octaves = std::log2(hz / 1000.0);
            const double db = 9.0 * std::exp(-octaves * octaves) - 6.0 / (1.0 + hz / 200.0);
            const float y = float(g->GetVerticalRuler()->GetPixelFromValueF(db));
            if (x == content.x)
                p.MoveTo(x, y);
            else
                p.LineTo(x, y);
        }
        p.Stroke();
    };
    grid->GetHorizontalHandler().SetMouseIndicator(int(grid->GetPixelForHorizontalValue(1000)));
    window.RenderAll();
    EXPECT_TRUE(qafui_testing::MatchesGolden(window.GetImage(), name));
}

TEST(RulerGridBaseGoldenTest, FrequencyGraphAt1x) {
    RenderGoldenGrid(1.0f, "ruler_grid_1x");
}

TEST(RulerGridBaseGoldenTest, FrequencyGraphAt2x) {
    RenderGoldenGrid(2.0f, "ruler_grid_2x");
}

} // namespace
