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

#include <array>
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
using Texts = std::vector<std::string>;

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
IntrusivePtr<qorui::RulerBase> Decibel() {
    return qorcore::MakeIntrusive<qorui::DecibelRuler>();
}
IntrusivePtr<TestGrid> Bare() {
    return qorcore::MakeIntrusive<TestGrid>(nullptr, nullptr);
}

constexpr float kHorizontalRulerY = 125.0f; // inside the horizontal ruler's rectangle
constexpr float kVerticalRulerX = 130.0f;   // inside the vertical ruler's rectangle

/// What a ruler's context menu offered.
struct Menu {
    int shown = 0;
    std::vector<std::string> items; ///< "id text" each
    std::string enabled;            ///< "+" or "-" for each item
    PointT<float> origin;
};

/// A grid whose content is 100 by 100 pixels at (9, 9), over rulers from 0 to 100, so that a
/// pixel of the content is a value unit. The horizontal ruler lies over y 118 to 143 (content
/// y 9 + bordered height 109), the vertical one over x 118 to 158.
struct GridScene {
    explicit GridScene(IntrusivePtr<qorui::RulerBase> horizontal = Linear(),
                       IntrusivePtr<qorui::RulerBase> vertical = Linear(),
                       double horizontal_start = 0.0, bool zooming = false)
        : window(220, 400) {
        grid = qorcore::MakeIntrusive<TestGrid>(horizontal, vertical);
        const PointT<float> size = grid->GetSizeForContentSize({100, 100});
        grid->SetFrame({0, 0, size.x, size.y});
        window.AddNode(grid);
        grid->SetRanges(horizontal_start, 100, 0, 100);
        grid->SetRulersSupportZooming(zooming);
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
    void ExpectView(double h_start, double h_end, double v_start, double v_end) const {
        ExpectHorizontal(h_start, h_end);
        ExpectVertical(v_start, v_end);
    }

    /// A gesture of the given button from (x, y) through `path` (window coordinates), a new
    /// press rather than the second of a double click; a menu it opens is answered with
    /// `choice` (0: cancelled). `before_release` runs with the button still down.
    Menu Gesture(MouseButton button, float x, float y,
                 std::initializer_list<PointT<float>> path = {}, int choice = 0,
                 const std::function<void()>& before_release = nullptr) {
        Menu menu;
        qorui::testing::ScopedModalResponder responder{[&](qorui::UI_ModalOverlay& overlay) {
            auto& shown = dynamic_cast<qorui::UI_MenuOverlay&>(overlay);
            menu = {menu.shown + 1, {}, {}, shown.GetPanelRect().Origin()};
            for (const auto& item : shown.GetMenu().GetItems()) {
                menu.items.push_back(std::to_string(item.id) + " " + item.text);
                menu.enabled += item.enabled ? "+" : "-";
            }
            if (choice != 0) {
                EXPECT_TRUE(shown.ChooseItem(choice));
            }
        }};
        window.AdvanceTime(1.0);
        window.MouseDown(x, y, button);
        for (const PointT<float>& p : path) {
            window.MouseMove(p.x, p.y);
            x = p.x, y = p.y;
        }
        if (before_release)
            before_release();
        window.MouseUp(x, y, button);
        return menu;
    }
    Menu RightClick(float x, float y, int choice = 0) {
        return Gesture(MouseButton::kRight, x, y, {}, choice);
    }

    HeadlessWindow window;
    IntrusivePtr<TestGrid> grid;
    qorcore::Connection changes;
    int changed = 0;
};

TEST(RulerGridBaseTest, GeometryWithAndWithoutBordersAndRulers) {
    HeadlessWindow window(600, 500);
    auto grid = qorcore::MakeIntrusive<TestGrid>(Linear(), Linear());
    window.AddNode(grid);
    grid->SetFrame({10, 10, 500, 400});
    EXPECT_TRUE(grid->GetVerticalRuler()->IsVertical());
    EXPECT_FALSE(grid->GetHorizontalRuler()->IsVertical());
    // Frame 5 each side; the vertical ruler takes 40 - 5 of the width, the horizontal 25 - 5.
    EXPECT_EQ(grid->GetContentRectWithBorders(), (RectT<float>{5, 5, 455, 370}));
    EXPECT_EQ(grid->GetContentRect(), (RectT<float>{9, 9, 446, 361}));
    EXPECT_EQ(grid->GetSizeForContentSize({446, 361}), (PointT<float>{500, 400}));
    EXPECT_EQ(grid->GetBestSize(), (PointT<float>{370 + 54, 320 + 39}));
    // The outer frame, then the left, top, right and bottom content borders.
    EXPECT_EQ((std::array{grid->GetOuterFrame(), grid->GetLeftContentBorder(),
                          grid->GetTopContentBorder(), grid->GetRightContentBorder(),
                          grid->GetBottomContentBorder()}),
              (std::array{5.0f, 4.0f, 4.0f, 5.0f, 5.0f}));
    // The rulers span the content, the handlers the rulers' strips in the grid's coordinates.
    const auto& h = *grid->GetHorizontalRuler();
    const auto& v = *grid->GetVerticalRuler();
    EXPECT_EQ((std::array{h.GetPixel1(), h.GetPixel2(), v.GetPixel1(), v.GetPixel2()}),
              (std::array{9, 455, 9, 370}));
    EXPECT_EQ(grid->GetHorizontalHandler().GetRulerRect(), (RectT<int>{0, 9 + 370, 465, 25}));
    EXPECT_EQ(grid->GetVerticalHandler().GetRulerRect(), (RectT<int>{9 + 455, 0, 40, 380}));

    grid->SetDrawBorder(false);
    EXPECT_EQ(grid->GetContentRectWithBorders(), (RectT<float>{0, 0, 460, 375}));
    EXPECT_EQ(grid->GetContentRect(), (RectT<float>{0, 0, 460, 375}));
    EXPECT_EQ(grid->GetSizeForContentSize({460, 375}), (PointT<float>{500, 400}));
    EXPECT_EQ(grid->GetOuterFrame(), 0.0f);
    EXPECT_EQ(grid->GetHorizontalHandler().GetRulerRect(), (RectT<int>{0, 375, 470, 25}));

    auto bare = Bare();
    bare->SetFrame({0, 0, 100, 80});
    EXPECT_EQ(bare->GetContentRectWithBorders(), (RectT<float>{5, 5, 90, 70}));
    EXPECT_EQ(bare->GetContentRect(), (RectT<float>{9, 9, 81, 61}));
    // The size formula counts the borders and the ruler sizes but not the frame a missing ruler
    // leaves: 81 + 4 + 5 + 5 = 95, five short of the 100 that give this content.
    EXPECT_EQ(bare->GetSizeForContentSize({81, 61}), (PointT<float>{95, 75}));
    bare->SetFrame({0, 0, 0, 80});
    EXPECT_EQ(bare->GetContentRect(), (RectT<float>{0, 0, 0, 80})); // left alone when empty
}

TEST(RulerGridBaseTest, NormalisationOrdersLimitsAndWidensAscendingRanges) {
    GridScene s;
    s.grid->SetCurrentRange(80, 20, 150, -50); // reversed, and past both bounds
    s.ExpectView(20, 80, 0, 100);
    // Narrower than 0.1: widened symmetrically around the middle.
    s.grid->SetCurrentRange(50, 50.02, 0, 100);
    s.ExpectHorizontal(49.96, 50.06, 1e-12);
    // Widened past the start bound, then pushed back inside: (-0.05, 0.05) becomes (0, 0.1).
    s.grid->SetCurrentRange(0, 0, 100, 100);
    s.ExpectView(0, 0.1, 99.9, 100);
    // Wholly outside: 120..130 is limited to 120..100, widened to 109.95..110.05 and pushed back.
    s.grid->SetCurrentRange(120, 130, 0, 100);
    s.ExpectHorizontal(99.9, 100);
    // NaN ends are mended to the bounds.
    s.grid->SetCurrentRange(std::nan(""), 50, 0, std::numeric_limits<double>::infinity());
    s.ExpectView(0, 50, 0, 100);

    // New bounds reapply the current range; SetRanges takes both.
    s.grid->SetCurrentRange(10, 90, 10, 90);
    s.grid->SetRangeBounds(20, 200, 0, 50);
    s.ExpectView(20, 90, 10, 50);
    EXPECT_EQ(std::pair(s.grid->GetHorizontalStartBounds(), s.grid->GetHorizontalEndBounds()),
              std::pair(20.0, 200.0));
    s.grid->SetRanges(-10, 10, 5, 6);
    s.ExpectView(-10, 10, 5, 6);
    EXPECT_EQ(s.grid->GetHorizontalRuler()->GetValue1(), -10);
    EXPECT_EQ(s.grid->GetVerticalRuler()->GetValue2(), 6);
    // Equal bounds pin both ends.
    s.grid->SetRangeBounds(5, 5, 0, 100);
    s.ExpectHorizontal(5, 5);
    s.grid->SetCurrentRange(0, 100, 0, 100);
    s.ExpectHorizontal(5, 5);
    EXPECT_FALSE(s.grid->CanZoomOutHorizontal() || s.grid->CanZoomInHorizontal());
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
    s.grid->SetCurrentRange(100, 10, -5, 100); // normalises to the stored range
    EXPECT_EQ(s.changed, 1);

    // Without rulers the signal fires, but nothing is repainted.
    HeadlessWindow window(200, 200);
    auto bare = Bare();
    bare->SetFrame({0, 0, 150, 150});
    window.AddNode(bare);
    int bare_changed = 0;
    auto c = bare->ConnectCurrentRangeChanged([&] { ++bare_changed; });
    window.RenderAll();
    bare->SetCurrentRange(10, 20, 30, 40);
    bare->SetCurrentRange(10, 20, 30, 40);
    EXPECT_EQ(bare_changed, 1);
    EXPECT_TRUE(window.Render().empty());
}

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
    s.grid->DoVerticalZoomInAroundValue(100); // the vertical twin keeps the horizontal pair
    s.ExpectView(0, 70, 30, 100);
    // Out from 0..70 around 35 (pixel 50): 15 pixels of 0.7 outward each side, -10.5 limited
    // by the bound.
    s.grid->DoHorizontalZoomOutAroundValue(35);
    s.ExpectHorizontal(0, 80.5);
    const int before = s.changed;
    s.grid->DoHorizontalZoomAroundValue(35, 0); // steps of 0 go on and change nothing
    EXPECT_EQ(s.changed, before);

    // Simple zooms anchor at the middle value; from 15..85 (0.7 a pixel) around 50, pixel 50,
    // 15 pixels outward are 10.5 each side.
    s.grid->SetCurrentRange(0, 100, 0, 100);
    s.grid->DoSimpleHorizontalZoomIn();
    s.grid->DoSimpleVerticalZoomIn();
    s.ExpectView(15, 85, 15, 85);
    s.grid->DoSimpleHorizontalZoomOut();
    s.grid->DoSimpleVerticalZoomOut();
    s.ExpectView(4.5, 95.5, 4.5, 95.5);
}

TEST(RulerGridBaseTest, ZoomRefusesOutsideAnchorsMinimumSpansAndFullViews) {
    GridScene s;
    s.grid->DoHorizontalZoomOutAroundValue(50); // exactly at the bounds
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

TEST(RulerGridBaseTest, DescendingAxisStaysDescendingThroughNormalisationZoomAndScroll) {
    GridScene s(Linear(), Decibel(), 0.0, true);
    s.grid->SetRanges(0, 100, 12, -60);
    s.ExpectVertical(12, -60);
    EXPECT_FALSE(s.grid->CanZoomOutVertical());
    // Ascending input past both bounds; reversed into the axis's direction; widened to 3.05 to
    // 2.95; widened past the top and pushed back; widened past the bottom and pushed back.
    const double rows[][4] = {
        {-70, 20, 12, -60}, {-10, 0, 0, -10},       {3, 3, 3.05, 2.95},
        {12, 12, 12, 11.9}, {-60, -60, -59.9, -60},
    };
    for (const auto& r : rows) {
        s.grid->SetCurrentRange(0, 100, r[0], r[1]);
        s.ExpectVertical(r[2], r[3], 1e-12);
    }
    EXPECT_GT(s.grid->GetVerticalRuler()->GetValue1(), s.grid->GetVerticalRuler()->GetValue2());

    // -24 is halfway (pixel 50): 0.72 dB a pixel, the ends move 15 pixels = 10.8 dB inward.
    s.grid->SetCurrentRange(0, 100, 12, -60);
    s.grid->DoVerticalZoomInAroundValue(-24);
    s.ExpectVertical(1.2, -49.2);
    EXPECT_TRUE(s.grid->CanZoomOutVertical());
    // Back out: 0.504 dB a pixel now, 15 pixels outward each side.
    s.grid->DoVerticalZoomOutAroundValue(-24);
    s.ExpectVertical(8.76, -56.76);
    s.grid->DoSimpleVerticalZoomOut();
    s.grid->DoSimpleVerticalZoomOut();
    s.ExpectVertical(12, -60);

    // At -0.36 dB a pixel, dragging up 10 pixels shows lower levels: (last - current) * -0.36.
    s.grid->SetCurrentRange(0, 100, 0, -36);
    s.window.MouseDown(kVerticalRulerX, 60);
    s.window.MouseMove(kVerticalRulerX, 50);
    s.ExpectVertical(-3.6, -39.6);
    s.window.MouseMove(kVerticalRulerX, -100); // far past the bottom bound
    s.ExpectVertical(-24, -60);
    s.window.MouseMove(kVerticalRulerX, 170); // and past the top bound
    s.ExpectVertical(12, -24);
    s.window.MouseUp(kVerticalRulerX, 170);
}

TEST(RulerGridBaseTest, ALogRulerZoomsInItsOwnScaleAndRefusesZero) {
    GridScene log(qorcore::MakeIntrusive<qorui::LogRuler>(), Linear(), 10.0);
    log.grid->SetRanges(10, 100000, 0, 100);
    // Four decades over 100 pixels; 1000 Hz sits at pixel 50. Both ends move 15 pixels, that
    // is 0.6 decades: 10^1.6 to 10^4.4.
    log.grid->DoHorizontalZoomInAroundValue(1000);
    log.ExpectHorizontal(std::pow(10.0, 1.6), std::pow(10.0, 4.4), 1e-6);
    // It can't show 0: the range, the bounds and both rulers stay as they were.
    log.grid->SetRanges(20, 20000, 0, 50);
    EXPECT_THROW(log.grid->SetRanges(0, 100, 0, 10), std::invalid_argument);
    log.ExpectView(20, 20000, 0, 50);
    EXPECT_EQ(log.grid->GetHorizontalStartBounds(), 20);
    EXPECT_EQ(log.grid->GetVerticalEndBounds(), 50);
    EXPECT_EQ(log.grid->GetVerticalRuler()->GetValue2(), 50);

    GridScene s;
    EXPECT_THROW(s.grid->SetRanges(std::nan(""), 1, 0, 1), std::invalid_argument);
    EXPECT_THROW(s.grid->SetRangeBounds(0, 1, 0, std::numeric_limits<double>::infinity()),
                 std::invalid_argument);
    EXPECT_EQ(s.grid->GetHorizontalEndBounds(), 100);
    EXPECT_THROW(Bare()->DoHorizontalZoomInAroundValue(50), qorcore::NullPointerException);
    EXPECT_THROW(Bare()->DoSimpleVerticalZoomOut(), qorcore::NullPointerException);
}

TEST(RulerGridBaseTest, RulersIgnoreTheMouseUntilZoomingIsSupportedOrInAFullView) {
    GridScene s;
    s.grid->SetCurrentRange(20, 60, 0, 100);
    s.Gesture(MouseButton::kLeft, 59, kHorizontalRulerY, {{79, kHorizontalRulerY}});
    EXPECT_FALSE(s.window.MouseWheel(59, kHorizontalRulerY, 3));
    s.ExpectHorizontal(20, 60);
    s.window.MouseMove(59, kHorizontalRulerY);
    EXPECT_EQ(s.window.GetCursor(), 0);
    // With zooming, the open hand over a view that can scroll, the arrow over a full one.
    s.grid->SetRulersSupportZooming(true);
    s.window.MouseMove(60, kHorizontalRulerY);
    EXPECT_EQ(s.window.GetCursor(), RulerHandler::kCursorOpenHand);
    s.window.MouseMove(kVerticalRulerX, 50);
    EXPECT_EQ(s.window.GetCursor(), 0);
    s.grid->SetCurrentRange(0, 100, 0, 100);
    s.window.MouseMove(59, kHorizontalRulerY);
    EXPECT_EQ(s.window.GetCursor(), 0);
    s.Gesture(MouseButton::kLeft, 59, kHorizontalRulerY, {{79, kHorizontalRulerY}});
    s.ExpectView(0, 100, 0, 100);
    EXPECT_EQ(s.changed, 2);
}

TEST(RulerGridBaseTest, LeftDragScrollsAndStopsAtTheBounds) {
    GridScene s(Linear(), Linear(), 0.0, true);
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
    s.Gesture(MouseButton::kLeft, kVerticalRulerX, 50, {{kVerticalRulerX, 45}}); // on y
    s.ExpectVertical(22, 62);
}

TEST(RulerGridBaseTest, RightDragZoomsToTheRubberBandAndTheWheelAroundThePointer) {
    GridScene s(Linear(), Linear(), 0.0, true);
    const Menu menu = s.Gesture(
        MouseButton::kRight, 69, kHorizontalRulerY, {{29, kHorizontalRulerY + 3}}, 0, [&] {
            // The band is drawn over the ruler between the two pixels.
            s.window.RenderAll();
            EXPECT_NE(s.window.GetPixel(49, 130), s.window.GetPixel(80, 130));
        });
    s.ExpectHorizontal(20, 60); // pixels 29 and 69 are values 20 and 60
    EXPECT_EQ(menu.shown, 0);
    EXPECT_EQ(s.changed, 1);
    s.Gesture(MouseButton::kRight, kVerticalRulerX, 19, {{kVerticalRulerX, 89}});
    s.ExpectView(20, 60, 10, 80);

    s.grid->SetCurrentRange(0, 100, 0, 100);
    EXPECT_TRUE(s.window.MouseWheel(59, kHorizontalRulerY, 3));
    s.ExpectHorizontal(15, 85);
    s.window.MouseWheel(59, kHorizontalRulerY, -3); // at value 50: 15 pixels of 0.7 outward
    s.ExpectHorizontal(4.5, 95.5);
    // One notch on the vertical ruler at value 0 (pixel 9): the end moves trunc(10) pixels.
    s.window.MouseWheel(kVerticalRulerX, 9, 1);
    s.ExpectVertical(0, 90);
    EXPECT_FALSE(s.window.MouseWheel(50, 50, 3)); // over the content
    s.ExpectVertical(0, 90);
}

TEST(RulerGridBaseTest, TheRulerMenuActsOnTheAxisClickedAndATwoPixelDragIsStillAClick) {
    GridScene s(Linear(), Linear(), 0.0, true);
    const Menu menu = s.RightClick(59, kHorizontalRulerY); // cancelled
    EXPECT_EQ(menu.shown, 1);
    EXPECT_EQ(menu.items, (Texts{"3040 Zoom In", "3041 Zoom Out", "3042 Zoom Out Full"}));
    EXPECT_EQ(menu.enabled, "+--") << "a full view can't zoom out";
    EXPECT_EQ(menu.origin, (PointT<float>{59, kHorizontalRulerY})) << "the menu opens at the click";
    s.ExpectHorizontal(0, 100);

    const struct {
        float x, y;
        int choice;
        const char* enabled;
        double h_start, h_end, v_start, v_end;
    } rows[] = {
        {kVerticalRulerX, 59, RulerGridBase::kMenuZoomIn, "+--", 0, 100, 15, 85}, // value 50
        // Pixel 59 is 15 + 50 * 0.7 = 50 again: 15 pixels of 0.7 outward on each side.
        {kVerticalRulerX, 59, RulerGridBase::kMenuZoomOut, "+++", 0, 100, 4.5, 95.5},
        {kVerticalRulerX, 30, RulerGridBase::kMenuZoomOutFull, "+++", 0, 100, 0, 100},
        // Value 20, pixel 20: trunc(20 * 0.3) = 6, trunc(80 * 0.3) = 24.
        {29, kHorizontalRulerY, RulerGridBase::kMenuZoomIn, "+--", 6, 76, 0, 100},
        {29, kHorizontalRulerY, RulerGridBase::kMenuZoomOutFull, "+++", 0, 100, 0, 100},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.choice);
        EXPECT_EQ(s.RightClick(r.x, r.y, r.choice).enabled, r.enabled);
        s.ExpectView(r.h_start, r.h_end, r.v_start, r.v_end);
    }

    // 2 pixels right: a click at the last position, 61 = value 52. Zoom In there moves the
    // start trunc(52 * 0.3) = 15 pixels and the end trunc(48 * 0.3) = 14 pixels inward.
    EXPECT_EQ(s.Gesture(MouseButton::kRight, 59, kHorizontalRulerY, {{61, kHorizontalRulerY}},
                        RulerGridBase::kMenuZoomIn)
                  .shown,
              1);
    s.ExpectHorizontal(15, 86);
    // A cancelled gesture opens no menu; the texts are localised.
    EXPECT_EQ(s.Gesture(MouseButton::kRight, 59, kHorizontalRulerY, {}, 0,
                        [&] { s.window.PressKey(qorui::KeyboardCode::kEscape); })
                  .shown,
              0);
    qorcore::Localizer::Get().AddEntry("$$$/qoraudiofiltersui/RulerGridBase/ZoomOutFull",
                                       "Alles zeigen");
    const Menu localised = s.RightClick(59, kHorizontalRulerY);
    qorcore::Localizer::Get().Clear();
    EXPECT_EQ(localised.items, (Texts{"3040 Zoom In", "3041 Zoom Out", "3042 Alles zeigen"}));
}

TEST(RulerGridBaseTest, MappingsThroughRulersAndWithoutThem) {
    GridScene s;
    EXPECT_EQ(s.grid->GetPixelForHorizontalValue(50), 59.0f);
    EXPECT_EQ(s.grid->GetPixelForVerticalValue(25.2), 34.0f); // rounded to the nearest pixel
    EXPECT_EQ(s.grid->GetPixelForCoordinatePair({10, 90}), (PointT<float>{19, 99}));
    using Pair = std::pair<double, double>;
    EXPECT_EQ(s.grid->GetCoordinatePairForPixel({59.9f, 19.2f}), Pair(50, 10)); // truncated
    EXPECT_EQ(s.grid->GetCoordinatePairForPixel({300, -40}), Pair(100, 0)); // limited to the view

    auto bare = Bare();
    bare->SetFrame({0, 0, 100, 80}); // content (9, 9, 81, 61)
    bare->SetRanges(0, 81, 100, 39); // a descending vertical axis
    EXPECT_FLOAT_EQ(bare->GetPixelForHorizontalValue(27), 36.0f);
    EXPECT_FLOAT_EQ(bare->GetPixelForVerticalValue(70), 39.0f); // 30 of 61 values down
    EXPECT_EQ(bare->GetCoordinatePairForPixel({36, 39}), Pair(27, 70));
    EXPECT_EQ(bare->GetCoordinatePairForPixel({500, 500}), Pair(81, 39));
    bare->SetRangeBounds(5, 5, 0, 100);
    EXPECT_EQ(bare->GetPixelForHorizontalValue(5), 0.0f); // an empty range maps to 0
    bare->SetFrame({0, 0, 0, 0});
    EXPECT_EQ(bare->GetCoordinatePairForPixel({10, 10}).first, 5.0); // 0, limited to 5..5

    // Major ticks are relative to the content; the bordered rectangle spans x 5 to 114.
    const auto ticks = s.grid->GetMajorTicks(true);
    std::vector<float> expected;
    for (int p : s.grid->GetHorizontalRuler()->GetMajorPixels())
        if (p >= 5 && p < 114)
            expected.push_back(float(p - 9));
    ASSERT_FALSE(ticks.empty());
    EXPECT_EQ(ticks, expected);
    EXPECT_EQ(ticks.front(), 0.0f); // value 0 at the content's first pixel
    EXPECT_TRUE(Bare()->GetMajorTicks(true).empty() && Bare()->GetMajorTicks(false).empty());
}

TEST(RulerGridBaseTest, OpaqueViewStateRestoresTheView) {
    GridScene s;
    s.grid->SetCurrentRange(10, 20, 30, 40);
    auto state = s.grid->GetOpaqueViewState();
    s.grid->SetCurrentRange(0, 100, 0, 100);
    s.grid->SetOpaqueViewState(state);
    s.ExpectView(10, 20, 30, 40);
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

TEST(RulerGridBaseTest, DrawsContentGridLinesAndTheFocusBorder) {
    GridScene s;
    s.window.RenderAll();
    EXPECT_GE(s.grid->content_draws, 1);
    EXPECT_EQ(s.grid->last_content, (RectT<float>{9, 9, 100, 100}));
    // Inside the bordered rectangle: black, or the grid's green on a major line.
    EXPECT_LT(s.window.GetPixel(30, 30).red, 0.01f);
    EXPECT_LT(s.window.GetPixel(30, 30).green, 0.25f);
    // Grid lines one pixel wide on the ruler's major pixels; the first and last lie on the
    // bordered rectangle's edges.
    const auto& ruler = *s.grid->GetHorizontalRuler();
    int lines = 0;
    for (int p : ruler.GetMajorPixels())
        if (p > 5 && p < 113) {
            EXPECT_NEAR(s.window.GetPixel(p, 60).green, s.grid->GetGridColor().green, 0.01f) << p;
            EXPECT_LT(s.window.GetPixel(p + 1, 60).green, 0.01f) << p;
            ++lines;
        }
    EXPECT_GT(lines, 2);
    // The outer border in the divider colour, then the focus colour once focused.
    const auto divider = qorui::skins::GetDividerColor();
    EXPECT_NEAR(s.window.GetPixel(60, 0).red, divider.red, 0.01f);
    s.grid->UI_RequestFocus();
    s.grid->ShowGrid(false);
    s.window.RenderAll();
    EXPECT_NEAR(s.window.GetPixel(60, 0).blue, qorui::skins::GetFocusColor().blue, 0.01f);
    for (int p : ruler.GetMajorPixels())
        if (p > 9 && p < 109) {
            EXPECT_LT(s.window.GetPixel(p, 60).green, 0.01f) << p;
        }
    s.grid->SetIndicateFocus(false);
    s.window.RenderAll();
    EXPECT_NEAR(s.window.GetPixel(60, 0).blue, divider.blue, 0.01f);
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
