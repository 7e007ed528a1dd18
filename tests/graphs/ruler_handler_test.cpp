// The mouse behaviour of one ruler, driven through a headless window with real pointer and key
// events: the scroll and zoom gestures, the 3-pixel threshold, the wheel, cursors, the rubber
// band and the hover indicator.
#include "graphs/ruler_handler.hpp"

#include "platform/core/null_pointer_exception.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/ui_node_manager.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace qoraudiofiltersui;
using qorcore::IntrusivePtr;
using qorcore::PointT;
using qorcore::RectT;
using qorui::HeadlessWindow;
using qorui::MouseButton;
using qorui::MouseEvent;
using qorui::PointerAction;
using Log = std::vector<std::string>;

namespace {

/// A node that hands its events to a handler and draws what the handler draws.
class HandlerHost : public qorui::UI_Node {
public:
    explicit HandlerHost(IntrusivePtr<RulerHandler> handler) : handler_(std::move(handler)) {
        SetWantsKeyboardFocus(true);
    }
    bool UI_DoMouseEvent(const MouseEvent& event) override {
        return handler_->DoMouseEvent(this, event);
    }
    bool UI_DoCursor(const PointT<float>& local, qorui::ModifierFlags modifiers) override {
        return handler_->DoCursor(this, local, modifiers);
    }
    void UI_Draw(qorui::penrig::Penrig* penrig) override {
        penrig->FillRect(GetBounds(), qorcore::ColorRGBAFixed::White);
        handler_->Draw(penrig);
        UI_Node::UI_Draw(penrig);
    }

private:
    IntrusivePtr<RulerHandler> handler_;
};

std::string Text(const PointT<int>& p) {
    return std::to_string(p.x) + "," + std::to_string(p.y);
}

/// Every signal of a handler as a line of text, in the order it fired.
struct Recorder {
    explicit Recorder(RulerHandler& h) {
        const auto put = [this](std::string line) {
            log.push_back(std::move(line));
        };
        connections = {
            h.ConnectRulerScrollCaptureStarted([=](auto& p) { put("scroll from " + Text(p)); }),
            h.ConnectRulerScrolled([=](auto& now, auto& last) {
                put("scrolled " + Text(now) + " after " + Text(last));
            }),
            h.ConnectRulerScrollCaptureEnded(
                [=](bool c) { put(c ? "scroll cancelled" : "scrolled"); }),
            h.ConnectRulerZoomCaptureStarted([=] { put("zoom"); }),
            h.ConnectRulerZoomRegionChanged([=] { put("region"); }),
            h.ConnectRulerZoomCaptureEnded([=](bool zoomed, int first, int second, bool cancelled) {
                put(std::string(zoomed ? "zoomed " : "clicked ") + std::to_string(first) + " " +
                    std::to_string(second) + (cancelled ? " cancelled" : ""));
            }),
            h.ConnectMouseWheelChanged([=](const MouseEvent& e) {
                put("wheel " + std::to_string(int(e.GetWheelDelta().y)) + " at " +
                    Text({int(e.GetPosition().x), int(e.GetPosition().y)}));
            }),
        };
    }
    std::vector<qorcore::Connection> connections;
    Log log;
};

/// A 200 by 100 window whose node has a horizontal ruler over y 50 to 75 (or a vertical one
/// over x 100 to 125), whose zoom permissions the test sets, and a recorder of its signals.
struct HandlerScene {
    explicit HandlerScene(bool vertical = false, float scale = 1.0f) : window(200, 100, scale) {
        ruler = qorcore::MakeIntrusive<qorui::LinearRuler>();
        ruler->SetVertical(vertical);
        handler->SetRuler(ruler);
        handler->SetRulerRect(vertical ? RectT<int>{100, 0, 25, 100} : RectT<int>{0, 50, 200, 25});
        handler->SetRulerCanZoomInFxn(
            std::make_shared<std::function<bool()>>([this] { return can_zoom_in; }));
        handler->SetRulerCanZoomOutFxn(
            std::make_shared<std::function<bool()>>([this] { return can_zoom_out; }));
        host = qorcore::MakeIntrusive<HandlerHost>(handler);
        host->SetFrame({0, 0, 200, 100});
        window.AddNode(host);
    }
    /// A right-button gesture through the given points.
    void RightDrag(std::initializer_list<PointT<float>> points) {
        window.AdvanceTime(1.0); // a new press, never a double click
        const PointT<float> first = *points.begin(), last = *(points.end() - 1);
        window.MouseDown(first.x, first.y, MouseButton::kRight);
        for (const PointT<float>& p : points)
            if (&p != points.begin())
                window.MouseMove(p.x, p.y);
        window.MouseUp(last.x, last.y, MouseButton::kRight);
    }

    bool can_zoom_in = true;
    bool can_zoom_out = true;
    HeadlessWindow window;
    IntrusivePtr<qorui::LinearRuler> ruler;
    IntrusivePtr<RulerHandler> handler = qorcore::MakeIntrusive<RulerHandler>();
    IntrusivePtr<HandlerHost> host;
    Recorder rec{*handler};
};

TEST(RulerHandlerTest, RectangleContainsHalfOpenAndEmptyContainsNothing) {
    HandlerScene scene;
    RulerHandler& h = *scene.handler;
    for (const auto& [x, y, inside] : {std::tuple{0.0f, 50.0f, true},
                                       {199.9f, 74.9f, true},
                                       {200.0f, 60.0f, false},
                                       {10.0f, 75.0f, false},
                                       {10.0f, 49.9f, false}})
        EXPECT_EQ(h.IsPointInRulerRect({x, y}), inside) << x << "," << y;
    h.SetRulerRect({0, 50, 0, 25});
    EXPECT_FALSE(h.IsPointInRulerRect({0.0f, 60.0f}));
    // With width 0 no gesture starts.
    EXPECT_FALSE(scene.window.MouseDown(0, 60, MouseButton::kRight));
    EXPECT_EQ(h.GetCaptureType(), RulerHandler::kCaptureNone);
}

TEST(RulerHandlerTest, CanZoomAndCanScrollFollowTheFlagsAndFunctions) {
    HandlerScene scene;
    RulerHandler& h = *scene.handler;
    EXPECT_TRUE(h.CanZoom() && h.CanScroll());
    scene.can_zoom_in = false;
    EXPECT_FALSE(h.CanZoom());
    scene.can_zoom_in = true;
    h.SetSupportsZooming(false);
    EXPECT_FALSE(h.CanZoom());
    scene.can_zoom_out = false;
    EXPECT_FALSE(h.CanScroll());
    scene.can_zoom_out = true;
    h.SetSupportsScrolling(false);
    EXPECT_FALSE(h.CanScroll());
    // A set pointer to an empty function is a programming error and says so.
    h.SetSupportsZooming(true);
    h.SetRulerCanZoomInFxn(std::make_shared<std::function<bool()>>());
    EXPECT_THROW(h.CanZoom(), std::bad_function_call);
}

TEST(RulerHandlerTest, LeftDragScrollsWithCurrentAndLastPositionsUntilEscapeWhereItCan) {
    HandlerScene scene;
    EXPECT_TRUE(scene.window.MouseDown(40.4f, 60.6f));
    EXPECT_EQ(scene.handler->GetCaptureType(), RulerHandler::kCaptureScroll);
    EXPECT_TRUE(scene.host->HasFocus());
    scene.window.MouseMove(45, 61);
    scene.window.MouseMove(47, 90); // outside the rectangle the drag goes on
    EXPECT_EQ(scene.handler->GetLastMousePosition(), (PointT<int>{47, 90}));
    scene.window.MouseUp(47, 90);
    // The press is rounded, not truncated.
    EXPECT_EQ(scene.rec.log, (Log{"scroll from 40,61", "scrolled 45,61 after 40,61",
                                  "scrolled 47,90 after 45,61", "scrolled"}));
    EXPECT_EQ(scene.handler->GetCaptureType(), RulerHandler::kCaptureNone);

    scene.rec.log.clear();
    scene.window.AdvanceTime(1.0);
    scene.window.MouseDown(40, 60);
    scene.window.PressKey(qorui::KeyboardCode::kEscape);
    EXPECT_EQ(scene.handler->GetCaptureType(), RulerHandler::kCaptureNone);
    scene.window.MouseUp(50, 60);
    EXPECT_EQ(scene.rec.log, (Log{"scroll from 40,60", "scroll cancelled"}));

    // Declined where no scroll is possible, though the owner takes the focus with the press.
    HandlerScene full;
    full.can_zoom_out = false; // the view shows all it has
    for (const float y : {60.0f, 20.0f}) {
        full.window.AdvanceTime(1.0);
        EXPECT_FALSE(full.window.MouseDown(40, y)) << y;
        full.window.MouseUp(40, y);
        full.can_zoom_out = true; // then above the ruler
    }
    EXPECT_TRUE(full.rec.log.empty());
    EXPECT_TRUE(full.host->HasFocus());
}

TEST(RulerHandlerTest, RightDragZoomsFromThreePixelsAndTheThresholdStaysPassed) {
    const struct {
        bool vertical;
        std::initializer_list<PointT<float>> path;
        Log log;
    } rows[] = {
        // Shorter than 3 is a click.
        {false, {{100, 60}, {102, 60}, {98, 70}}, {"zoom", "clicked 0 0"}},
        // The pixels are reported lesser first.
        {false, {{100, 60}, {97, 60}, {60, 60}}, {"zoom", "region", "region", "zoomed 60 100"}},
        // Past the threshold and back to the start: still zoomed, but 0 and 0.
        {false,
         {{100, 60}, {103, 60}, {101, 60}, {100, 60}},
         {"zoom", "region", "region", "region", "zoomed 0 0"}},
        // A vertical ruler zooms on y: 40 across and 2 along is no drag yet.
        {true, {{110, 20}, {150, 22}, {150, 80}}, {"zoom", "region", "zoomed 20 80"}},
    };
    for (const auto& row : rows) {
        HandlerScene scene(row.vertical);
        scene.RightDrag(row.path);
        EXPECT_EQ(scene.rec.log, row.log);
        EXPECT_FALSE(scene.handler->IsPastDragZoomThreshold());
    }
    HandlerScene scene;
    EXPECT_TRUE(scene.window.MouseDown(100, 60, MouseButton::kRight));
    scene.window.MouseMove(98, 70);
    EXPECT_FALSE(scene.handler->IsPastDragZoomThreshold());
    scene.window.MouseUp(98, 70, MouseButton::kRight);
    EXPECT_EQ(scene.handler->GetLastMousePosition(), (PointT<int>{98, 70})) << "kept for the menu";
    scene.window.AdvanceTime(1.0);
    scene.window.MouseDown(100, 60, MouseButton::kRight);
    scene.window.MouseMove(97, 60);
    EXPECT_TRUE(scene.handler->IsPastDragZoomThreshold());
    scene.window.MouseMove(60, 60);
    int first = 0, second = 0;
    scene.handler->GetDragZoomPixels(first, second);
    EXPECT_EQ(std::pair(first, second), std::pair(100, 60));
    scene.window.MouseUp(60, 60, MouseButton::kRight);
}

TEST(RulerHandlerTest, ZoomEndsUnzoomedWhenNothingCanZoomAndCancelledByEscape) {
    HandlerScene scene;
    scene.can_zoom_in = false;
    // The press is still taken: a right click must reach the menu; the pixels are given too.
    EXPECT_TRUE(scene.window.MouseDown(100, 60, MouseButton::kRight));
    scene.window.MouseMove(150, 60);
    scene.window.MouseUp(150, 60, MouseButton::kRight);
    EXPECT_EQ(scene.rec.log.back(), "clicked 100 150");

    scene.can_zoom_in = true;
    scene.rec.log.clear();
    scene.window.AdvanceTime(1.0); // a second press, not a double click
    scene.window.MouseDown(100, 60, MouseButton::kRight);
    scene.window.MouseMove(150, 60);
    scene.window.PressKey(qorui::KeyboardCode::kEscape);
    scene.window.MouseUp(150, 60, MouseButton::kRight);
    EXPECT_EQ(scene.rec.log, (Log{"zoom", "region", "zoomed 100 150 cancelled"}));
}

TEST(RulerHandlerTest, TheWheelIsPassedOnWhenHandledAndInsideAndNoEventDuringACapture) {
    HandlerScene scene;
    EXPECT_FALSE(scene.window.MouseWheel(100, 60, 2)); // handling is off by default
    scene.handler->SetHandlesMouseWheelEvents(true);
    EXPECT_FALSE(scene.window.MouseWheel(100, 20, 2)); // above the ruler
    EXPECT_TRUE(scene.window.MouseWheel(100, 60, -2));
    EXPECT_EQ(scene.rec.log, (Log{"wheel -2 at 100,60"}));

    scene.rec.log.clear();
    scene.window.MouseDown(100, 60);
    const MouseEvent wheel(PointerAction::kWheel, {100, 60}, MouseButton::kNone, {}, 0, {0, 1});
    const MouseEvent right(PointerAction::kPress, {100, 60}, MouseButton::kRight, {}, 1);
    EXPECT_FALSE(scene.handler->DoMouseEvent(scene.host.get(), wheel));
    EXPECT_FALSE(scene.handler->DoMouseEvent(scene.host.get(), right));
    scene.window.MouseWheel(100, 60, 1); // the capture gets it and ignores it
    scene.window.MouseUp(100, 60);
    EXPECT_EQ(scene.rec.log, (Log{"scroll from 100,60", "scrolled"}));
    EXPECT_THROW(scene.handler->DoMouseEvent(nullptr, wheel), qorcore::NullPointerException);
}

TEST(RulerHandlerTest, CursorsFollowHoverAndGesture) {
    HandlerScene scene;
    HeadlessWindow& w = scene.window;
    w.MouseMove(100, 60);
    EXPECT_EQ(w.GetCursor(), RulerHandler::kCursorOpenHand); // over a scrollable ruler
    w.MouseMove(100, 20);
    EXPECT_EQ(w.GetCursor(), RulerHandler::kCursorArrow);
    scene.can_zoom_out = false;
    w.MouseMove(100, 61);
    EXPECT_EQ(w.GetCursor(), RulerHandler::kCursorArrow); // nothing to scroll
    scene.can_zoom_out = true;

    w.MouseDown(100, 60);
    w.MouseMove(110, 60);
    EXPECT_EQ(w.GetCursor(), RulerHandler::kCursorClosedHand);
    scene.can_zoom_out = false;
    w.MouseMove(112, 60);
    EXPECT_EQ(w.GetCursor(), RulerHandler::kCursorArrow);
    w.MouseUp(112, 60);
    scene.can_zoom_out = true;

    w.MouseDown(100, 60, MouseButton::kRight);
    w.MouseMove(120, 60);
    EXPECT_EQ(w.GetCursor(), RulerHandler::kCursorZoomHorizontal);
    scene.can_zoom_in = false;
    w.MouseMove(125, 60);
    EXPECT_EQ(w.GetCursor(), RulerHandler::kCursorArrow);
    w.MouseUp(125, 60, MouseButton::kRight);

    HandlerScene vertical(true);
    vertical.window.MouseDown(110, 20, MouseButton::kRight);
    vertical.window.MouseMove(110, 40);
    EXPECT_EQ(vertical.window.GetCursor(), RulerHandler::kCursorZoomVertical);
    vertical.window.MouseUp(110, 40, MouseButton::kRight);
}

TEST(RulerHandlerTest, MouseIndicatorReportsRepaintsAndItsRectangle) {
    HandlerScene scene;
    RulerHandler& h = *scene.handler;
    EXPECT_TRUE(h.GetMouseIndicatorRect().IsEmpty());
    EXPECT_TRUE(h.SetMouseIndicator(0)); // new value inside (start inclusive)
    EXPECT_EQ(h.GetMouseIndicatorRect(), (RectT<int>{0, 50, 2, 25}));
    EXPECT_TRUE(h.SetMouseIndicator(199));  // both inside
    EXPECT_TRUE(h.SetMouseIndicator(200));  // old inside, new at the exclusive end
    EXPECT_FALSE(h.SetMouseIndicator(-99)); // neither
    EXPECT_EQ(h.GetMouseIndicator(), -99);
    EXPECT_TRUE(h.GetMouseIndicatorRect().IsEmpty());

    HandlerScene vertical(true);
    EXPECT_TRUE(vertical.handler->SetMouseIndicator(30));
    EXPECT_EQ(vertical.handler->GetMouseIndicatorRect(), (RectT<int>{100, 30, 25, 2}));
}

TEST(RulerHandlerTest, DrawsTheIndicatorAndTheRubberBandCrisply) {
    for (float scale : {1.0f, 2.0f}) {
        SCOPED_TRACE(scale);
        HandlerScene scene(false, scale);
        HeadlessWindow& window = scene.window;
        const int s = int(scale);
        // The red of the device pixel (dx, dy) within the logical pixel (x, y); 1 is white.
        const auto red = [&](int x, int y, int dx = 0, int dy = 0) {
            return window.GetPixel(x * s + dx, y * s + dy).red;
        };

        // The indicator: a one-pixel line at pixel 30 over the ruler only.
        scene.handler->SetMouseIndicator(30);
        window.RenderAll();
        EXPECT_LT(red(30, 60), 0.95f);
        EXPECT_NEAR(window.GetPixel(30 * s, 60 * s).blue,
                    (1.0f + qorui::skins::GetFocusColor().blue) * 0.5f, 0.02f);
        EXPECT_GT(std::min(red(31, 60), red(29, 60, s - 1)), 0.99f) << "crisp: white beside it";
        EXPECT_GT(red(30, 40), 0.99f) << "not above the ruler";
        scene.handler->SetMouseIndicator(-99);

        // The rubber band between 60 and 100, over the ruler's height, only once past 3 pixels.
        window.MouseDown(100, 60, MouseButton::kRight);
        window.MouseMove(98, 60);
        window.RenderAll();
        EXPECT_GT(red(99, 60), 0.99f);
        window.MouseMove(60, 60);
        window.RenderAll();
        EXPECT_LT(std::max(red(60, 50), red(99, 74, 0, s - 1)), 0.95f);
        EXPECT_GT(std::min({red(100, 60), red(59, 60, s - 1), red(80, 49, 0, s - 1)}), 0.99f);
        window.MouseUp(60, 60, MouseButton::kRight);
        window.RenderAll();
        EXPECT_GT(red(80, 60), 0.99f) << "gone with the gesture";
    }
}

TEST(RulerHandlerTest, MissingPiecesAndBadArgumentsAreRefused) {
    auto handler = qorcore::MakeIntrusive<RulerHandler>();
    // Without the functions neither gesture is possible, and without a ruler no direction.
    EXPECT_FALSE(handler->CanZoom() || handler->CanScroll());
    EXPECT_THROW(handler->IsVertical(), qorcore::NullPointerException);
    int first = -1, second = -1;
    handler->GetDragZoomPixels(first, second);
    EXPECT_EQ(std::pair(first, second), std::pair(0, 0));
    const MouseEvent press(PointerAction::kPress, {1, 1}, MouseButton::kLeft, {}, 1);
    EXPECT_THROW(handler->BeginCapture(RulerHandler::kCaptureScroll, nullptr, press),
                 qorcore::NullPointerException);
    EXPECT_THROW(handler->DoCursor(nullptr, {1, 1}, {}), qorcore::NullPointerException);
    EXPECT_THROW(RulerCapture(nullptr, nullptr, press), qorcore::NullPointerException);
    // A node in no window gets no capture, and the handler doesn't stay stuck in a gesture.
    auto lonely = qorcore::MakeIntrusive<HandlerHost>(handler);
    handler->SetRuler(qorcore::MakeIntrusive<qorui::LinearRuler>());
    handler->BeginCapture(RulerHandler::kCaptureZoom, lonely.get(), press);
    EXPECT_EQ(handler->GetCaptureType(), RulerHandler::kCaptureNone);
}

} // namespace
