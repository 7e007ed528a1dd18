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

#include <functional>
#include <memory>
#include <vector>

using namespace qoraudiofiltersui;
using qorcore::IntrusivePtr;
using qorcore::PointT;
using qorcore::RectT;
using qorui::HeadlessWindow;
using qorui::MouseButton;
using qorui::MouseEvent;
using qorui::PointerAction;

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

/// Every signal of a handler, in the order it fired.
struct Recorder {
    explicit Recorder(RulerHandler& handler) {
        connections.push_back(handler.ConnectRulerScrollCaptureStarted(
            [this](const PointT<int>& p) { scroll_started.push_back(p); }));
        connections.push_back(handler.ConnectRulerScrollCaptureEnded(
            [this](bool cancelled) { scroll_ended.push_back(cancelled); }));
        connections.push_back(handler.ConnectRulerScrolled(
            [this](const PointT<int>& current, const PointT<int>& last) {
                scrolled.push_back({current, last});
            }));
        connections.push_back(handler.ConnectRulerZoomCaptureStarted([this] { ++zoom_started; }));
        connections.push_back(handler.ConnectRulerZoomCaptureEnded(
            [this](bool zoomed, int first, int second, bool cancelled) {
                zoom_ended.push_back({zoomed, first, second, cancelled});
            }));
        connections.push_back(
            handler.ConnectRulerZoomRegionChanged([this] { ++zoom_region_changed; }));
        connections.push_back(handler.ConnectMouseWheelChanged(
            [this](const MouseEvent& event) { wheel.push_back(event); }));
    }

    struct ZoomEnd {
        bool zoomed;
        int first;
        int second;
        bool cancelled;
    };

    std::vector<qorcore::Connection> connections;
    std::vector<PointT<int>> scroll_started;
    std::vector<bool> scroll_ended;
    std::vector<std::pair<PointT<int>, PointT<int>>> scrolled;
    int zoom_started = 0;
    std::vector<ZoomEnd> zoom_ended;
    int zoom_region_changed = 0;
    std::vector<MouseEvent> wheel;
};

/// A 200 by 100 window whose node has a horizontal ruler over y 50 to 75.
struct HandlerScene {
    explicit HandlerScene(bool vertical = false) : window(200, 100) {
        ruler = qorcore::MakeIntrusive<qorui::LinearRuler>();
        ruler->SetVertical(vertical);
        handler = qorcore::MakeIntrusive<RulerHandler>();
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

    bool can_zoom_in = true;
    bool can_zoom_out = true;
    HeadlessWindow window;
    IntrusivePtr<qorui::LinearRuler> ruler;
    IntrusivePtr<RulerHandler> handler;
    IntrusivePtr<HandlerHost> host;
};

TEST(RulerHandlerTest, StartsWithTheDocumentedState) {
    auto handler = qorcore::MakeIntrusive<RulerHandler>();
    EXPECT_EQ(handler->GetCaptureType(), RulerHandler::kCaptureNone);
    EXPECT_EQ(handler->GetMouseIndicator(), -99);
    EXPECT_TRUE(handler->GetSupportsZooming());
    EXPECT_TRUE(handler->GetSupportsScrolling());
    EXPECT_FALSE(handler->GetHandlesMouseWheelEvents());
    EXPECT_TRUE(handler->GetRulerRect().IsEmpty());
    // Without the functions neither gesture is possible.
    EXPECT_FALSE(handler->CanZoom());
    EXPECT_FALSE(handler->CanScroll());
    EXPECT_THROW(handler->IsVertical(), qorcore::NullPointerException);
    int first = -1, second = -1;
    handler->GetDragZoomPixels(first, second);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 0);
}

TEST(RulerHandlerTest, RectangleContainsHalfOpenAndEmptyContainsNothing) {
    HandlerScene scene;
    RulerHandler& h = *scene.handler;
    EXPECT_TRUE(h.IsPointInRulerRect({0.0f, 50.0f}));
    EXPECT_TRUE(h.IsPointInRulerRect({199.9f, 74.9f}));
    EXPECT_FALSE(h.IsPointInRulerRect({200.0f, 60.0f}));
    EXPECT_FALSE(h.IsPointInRulerRect({10.0f, 75.0f}));
    EXPECT_FALSE(h.IsPointInRulerRect({10.0f, 49.9f}));
    h.SetRulerRect({0, 50, 0, 25});
    EXPECT_FALSE(h.IsPointInRulerRect({0.0f, 60.0f}));
    // With width 0 no gesture starts.
    EXPECT_FALSE(scene.window.MouseDown(0, 60, MouseButton::kRight));
    EXPECT_EQ(h.GetCaptureType(), RulerHandler::kCaptureNone);
}

TEST(RulerHandlerTest, CanZoomAndCanScrollFollowTheFlagsAndFunctions) {
    HandlerScene scene;
    RulerHandler& h = *scene.handler;
    EXPECT_TRUE(h.CanZoom());
    EXPECT_TRUE(h.CanScroll());
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

TEST(RulerHandlerTest, LeftDragScrollsWithCurrentAndLastPositions) {
    HandlerScene scene;
    Recorder rec(*scene.handler);
    EXPECT_TRUE(scene.window.MouseDown(40.4f, 60.6f));
    EXPECT_EQ(scene.handler->GetCaptureType(), RulerHandler::kCaptureScroll);
    EXPECT_TRUE(scene.host->HasFocus());
    ASSERT_EQ(rec.scroll_started.size(), 1u);
    EXPECT_EQ(rec.scroll_started[0], (PointT<int>{40, 61})); // rounded, not truncated
    scene.window.MouseMove(45, 61);
    scene.window.MouseMove(47, 90); // outside the rectangle the drag goes on
    ASSERT_EQ(rec.scrolled.size(), 2u);
    EXPECT_EQ(rec.scrolled[0].first, (PointT<int>{45, 61}));
    EXPECT_EQ(rec.scrolled[0].second, (PointT<int>{40, 61}));
    EXPECT_EQ(rec.scrolled[1].first, (PointT<int>{47, 90}));
    EXPECT_EQ(rec.scrolled[1].second, (PointT<int>{45, 61}));
    EXPECT_EQ(scene.handler->GetLastMousePosition(), (PointT<int>{47, 90}));
    scene.window.MouseUp(47, 90);
    ASSERT_EQ(rec.scroll_ended.size(), 1u);
    EXPECT_FALSE(rec.scroll_ended[0]);
    EXPECT_EQ(scene.handler->GetCaptureType(), RulerHandler::kCaptureNone);
    EXPECT_EQ(rec.zoom_started, 0);
}

TEST(RulerHandlerTest, EscapeCancelsTheScroll) {
    HandlerScene scene;
    Recorder rec(*scene.handler);
    scene.window.MouseDown(40, 60);
    scene.window.MouseMove(50, 60);
    scene.window.PressKey(qorui::KeyboardCode::kEscape);
    ASSERT_EQ(rec.scroll_ended.size(), 1u);
    EXPECT_TRUE(rec.scroll_ended[0]);
    EXPECT_EQ(scene.handler->GetCaptureType(), RulerHandler::kCaptureNone);
    scene.window.MouseUp(50, 60);
    EXPECT_EQ(rec.scroll_ended.size(), 1u);
}

TEST(RulerHandlerTest, LeftPressIsDeclinedWhereNoScrollIsPossible) {
    HandlerScene scene;
    Recorder rec(*scene.handler);
    scene.can_zoom_out = false; // the view shows all it has
    EXPECT_FALSE(scene.window.MouseDown(40, 60));
    scene.window.MouseUp(40, 60);
    scene.can_zoom_out = true;
    EXPECT_FALSE(scene.window.MouseDown(40, 20)); // above the ruler
    scene.window.MouseUp(40, 20);
    EXPECT_TRUE(rec.scroll_started.empty());
    // The owner still took the focus with the press.
    EXPECT_TRUE(scene.host->HasFocus());
}

TEST(RulerHandlerTest, RightDragShorterThanThreeIsAClick) {
    HandlerScene scene;
    Recorder rec(*scene.handler);
    EXPECT_TRUE(scene.window.MouseDown(100, 60, MouseButton::kRight));
    EXPECT_EQ(rec.zoom_started, 1);
    scene.window.MouseMove(102, 60);
    scene.window.MouseMove(98, 70);
    EXPECT_FALSE(scene.handler->IsPastDragZoomThreshold());
    EXPECT_EQ(rec.zoom_region_changed, 0);
    scene.window.MouseUp(98, 70, MouseButton::kRight);
    ASSERT_EQ(rec.zoom_ended.size(), 1u);
    EXPECT_FALSE(rec.zoom_ended[0].zoomed);
    EXPECT_EQ(rec.zoom_ended[0].first, 0);
    EXPECT_EQ(rec.zoom_ended[0].second, 0);
    EXPECT_FALSE(rec.zoom_ended[0].cancelled);
    // The position of the click is kept for the menu.
    EXPECT_EQ(scene.handler->GetLastMousePosition(), (PointT<int>{98, 70}));
}

TEST(RulerHandlerTest, RightDragOfThreeZoomsAndTheThresholdStaysPassed) {
    {
        HandlerScene scene;
        Recorder rec(*scene.handler);
        scene.window.MouseDown(100, 60, MouseButton::kRight);
        scene.window.MouseMove(97, 60);
        EXPECT_TRUE(scene.handler->IsPastDragZoomThreshold());
        EXPECT_EQ(rec.zoom_region_changed, 1);
        scene.window.MouseMove(60, 60);
        EXPECT_EQ(rec.zoom_region_changed, 2);
        int first = 0, second = 0;
        scene.handler->GetDragZoomPixels(first, second);
        EXPECT_EQ(first, 100);
        EXPECT_EQ(second, 60);
        scene.window.MouseUp(60, 60, MouseButton::kRight);
        ASSERT_EQ(rec.zoom_ended.size(), 1u);
        EXPECT_TRUE(rec.zoom_ended[0].zoomed);
        EXPECT_EQ(rec.zoom_ended[0].first, 60); // the lesser first
        EXPECT_EQ(rec.zoom_ended[0].second, 100);
        EXPECT_FALSE(rec.zoom_ended[0].cancelled);
        EXPECT_FALSE(scene.handler->IsPastDragZoomThreshold());
    }
    {
        // Past the threshold and back to the start: still zoomed, but 0 and 0.
        HandlerScene scene;
        Recorder rec(*scene.handler);
        scene.window.MouseDown(100, 60, MouseButton::kRight);
        scene.window.MouseMove(103, 60);
        scene.window.MouseMove(101, 60);
        EXPECT_EQ(rec.zoom_region_changed, 2); // below 3 again, but the flag stays
        scene.window.MouseMove(100, 60);
        scene.window.MouseUp(100, 60, MouseButton::kRight);
        ASSERT_EQ(rec.zoom_ended.size(), 1u);
        EXPECT_TRUE(rec.zoom_ended[0].zoomed);
        EXPECT_EQ(rec.zoom_ended[0].first, 0);
        EXPECT_EQ(rec.zoom_ended[0].second, 0);
    }
}

TEST(RulerHandlerTest, ZoomEndsUnzoomedWhenNothingCanZoomAndCancelledByEscape) {
    HandlerScene scene;
    Recorder rec(*scene.handler);
    scene.can_zoom_in = false;
    // The press is still taken: a right click must reach the menu.
    EXPECT_TRUE(scene.window.MouseDown(100, 60, MouseButton::kRight));
    scene.window.MouseMove(150, 60);
    scene.window.MouseUp(150, 60, MouseButton::kRight);
    ASSERT_EQ(rec.zoom_ended.size(), 1u);
    EXPECT_FALSE(rec.zoom_ended[0].zoomed);
    EXPECT_EQ(rec.zoom_ended[0].first, 100); // the pixels are given all the same
    EXPECT_EQ(rec.zoom_ended[0].second, 150);

    scene.can_zoom_in = true;
    scene.window.AdvanceTime(1.0); // a second press, not a double click
    scene.window.MouseDown(100, 60, MouseButton::kRight);
    scene.window.MouseMove(150, 60);
    scene.window.PressKey(qorui::KeyboardCode::kEscape);
    ASSERT_EQ(rec.zoom_ended.size(), 2u);
    EXPECT_TRUE(rec.zoom_ended[1].zoomed);
    EXPECT_TRUE(rec.zoom_ended[1].cancelled);
    scene.window.MouseUp(150, 60, MouseButton::kRight);
}

TEST(RulerHandlerTest, VerticalRulerZoomsOnY) {
    HandlerScene scene(true);
    Recorder rec(*scene.handler);
    scene.window.MouseDown(110, 20, MouseButton::kRight);
    scene.window.MouseMove(150, 22); // 40 across, 2 along: no drag yet
    EXPECT_EQ(rec.zoom_region_changed, 0);
    scene.window.MouseMove(150, 80);
    scene.window.MouseUp(150, 80, MouseButton::kRight);
    ASSERT_EQ(rec.zoom_ended.size(), 1u);
    EXPECT_TRUE(rec.zoom_ended[0].zoomed);
    EXPECT_EQ(rec.zoom_ended[0].first, 20);
    EXPECT_EQ(rec.zoom_ended[0].second, 80);
}

TEST(RulerHandlerTest, EventsAreDeclinedWhileACaptureRuns) {
    HandlerScene scene;
    Recorder rec(*scene.handler);
    scene.handler->SetHandlesMouseWheelEvents(true);
    scene.window.MouseDown(100, 60);
    const MouseEvent wheel(PointerAction::kWheel, {100, 60}, MouseButton::kNone, {}, 0, {0, 1});
    const MouseEvent right(PointerAction::kPress, {100, 60}, MouseButton::kRight, {}, 1);
    EXPECT_FALSE(scene.handler->DoMouseEvent(scene.host.get(), wheel));
    EXPECT_FALSE(scene.handler->DoMouseEvent(scene.host.get(), right));
    // Through the window the capture gets them and ignores them.
    scene.window.MouseWheel(100, 60, 1);
    EXPECT_TRUE(rec.wheel.empty());
    EXPECT_EQ(rec.zoom_started, 0);
    scene.window.MouseUp(100, 60);
    EXPECT_THROW(scene.handler->DoMouseEvent(nullptr, wheel), qorcore::NullPointerException);
}

TEST(RulerHandlerTest, WheelIsPassedOnOnlyWhenHandledAndInside) {
    HandlerScene scene;
    Recorder rec(*scene.handler);
    EXPECT_FALSE(scene.window.MouseWheel(100, 60, 2)); // handling is off by default
    scene.handler->SetHandlesMouseWheelEvents(true);
    EXPECT_FALSE(scene.window.MouseWheel(100, 20, 2)); // above the ruler
    EXPECT_TRUE(scene.window.MouseWheel(100, 60, -2));
    ASSERT_EQ(rec.wheel.size(), 1u);
    EXPECT_EQ(rec.wheel[0].GetWheelDelta().y, -2.0f);
    EXPECT_EQ(rec.wheel[0].GetPosition(), (PointT<float>{100, 60}));
}

TEST(RulerHandlerTest, CursorsFollowHoverAndGesture) {
    HandlerScene scene;
    HeadlessWindow& w = scene.window;
    w.MouseMove(100, 60);
    EXPECT_EQ(w.GetCursor(), 13); // open hand over a scrollable ruler
    w.MouseMove(100, 20);
    EXPECT_EQ(w.GetCursor(), 0);
    scene.can_zoom_out = false;
    w.MouseMove(100, 61);
    EXPECT_EQ(w.GetCursor(), 0); // nothing to scroll
    scene.can_zoom_out = true;

    w.MouseDown(100, 60);
    w.MouseMove(110, 60);
    EXPECT_EQ(w.GetCursor(), 14); // closed hand while scrolling
    scene.can_zoom_out = false;
    w.MouseMove(112, 60);
    EXPECT_EQ(w.GetCursor(), 0);
    w.MouseUp(112, 60);
    scene.can_zoom_out = true;

    w.MouseDown(100, 60, MouseButton::kRight);
    w.MouseMove(120, 60);
    EXPECT_EQ(w.GetCursor(), 200); // horizontal zoom
    scene.can_zoom_in = false;
    w.MouseMove(125, 60);
    EXPECT_EQ(w.GetCursor(), 0);
    w.MouseUp(125, 60, MouseButton::kRight);

    HandlerScene vertical(true);
    vertical.window.MouseDown(110, 20, MouseButton::kRight);
    vertical.window.MouseMove(110, 40);
    EXPECT_EQ(vertical.window.GetCursor(), 201);
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
        HandlerScene scene;
        HeadlessWindow window(200, 100, scale);
        window.AddNode(scene.host); // moves the node into the scaled window
        const auto focus = qorui::skins::GetFocusColor();
        const int s = int(scale);

        // The indicator: a one-pixel line at pixel 30 over the ruler only.
        scene.handler->SetMouseIndicator(30);
        window.RenderAll();
        const auto on = window.GetPixel(30 * s, 60 * s);
        EXPECT_LT(on.red, 0.95f);
        EXPECT_NEAR(on.blue, (1.0f + focus.blue) * 0.5f, 0.02f);
        EXPECT_GT(window.GetPixel(31 * s, 60 * s).red, 0.99f); // crisp: the next pixel is white
        EXPECT_GT(window.GetPixel(29 * s + s - 1, 60 * s).red, 0.99f);
        EXPECT_GT(window.GetPixel(30 * s, 40 * s).red, 0.99f); // not above the ruler
        scene.handler->SetMouseIndicator(-99);

        // The rubber band between 60 and 100, over the ruler's height, only once past 3 pixels.
        window.MouseDown(100, 60, MouseButton::kRight);
        window.MouseMove(98, 60);
        window.RenderAll();
        EXPECT_GT(window.GetPixel(99 * s, 60 * s).red, 0.99f);
        window.MouseMove(60, 60);
        window.RenderAll();
        EXPECT_LT(window.GetPixel(60 * s, 50 * s).red, 0.95f);
        EXPECT_LT(window.GetPixel(99 * s, 74 * s + s - 1).red, 0.95f);
        EXPECT_GT(window.GetPixel(100 * s, 60 * s).red, 0.99f);
        EXPECT_GT(window.GetPixel(59 * s + s - 1, 60 * s).red, 0.99f);
        EXPECT_GT(window.GetPixel(80 * s, 49 * s + s - 1).red, 0.99f);
        window.MouseUp(60, 60, MouseButton::kRight);
        window.RenderAll();
        EXPECT_GT(window.GetPixel(80 * s, 60 * s).red, 0.99f); // gone with the gesture
    }
}

TEST(RulerHandlerTest, BadArgumentsRaiseTheNullPointerException) {
    auto handler = qorcore::MakeIntrusive<RulerHandler>();
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
