#include "graphs/ruler_handler.hpp"

#include "platform/core/null_pointer_exception.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/ui_node.hpp"
#include "platform/ui/ui_node_manager.hpp"

#include <algorithm>
#include <cstdlib>

namespace qoraudiofiltersui {

using qorcore::PointT;
using qorcore::RectT;
using qorui::MouseEvent;
using qorui::PointerAction;

namespace {

/// Event positions become whole pixels by rounding, halves away from zero.
PointT<int> ToPixel(const PointT<float>& position) {
    return qorcore::RoundPoint(position);
}

qorui::UI_Node* CheckNode(qorui::UI_Node* node) {
    if (!node)
        qorcore::config::DoThrowNullPtrException("UI_Node");
    return node;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// RulerCapture

RulerCapture::RulerCapture(RulerHandler* handler, qorui::UI_Node* node, const MouseEvent& start)
    : qorui::PointerCapture(node, start), handler_(handler) {
    if (!handler)
        qorcore::config::DoThrowNullPtrException("RulerHandler");
}

bool RulerCapture::UI_DoMouseEvent(const MouseEvent& event) {
    if (!event.IsAction(PointerAction::kMove))
        return false;
    handler_->CapturedMouseMoved(ToPixel(event.GetPosition()), event.GetModKey());
    return true;
}

bool RulerCapture::UI_DoCursor(const PointT<float>&, qorui::ModifierFlags) {
    return handler_->DoCaptureCursor(GetNode());
}

void RulerCapture::UI_EndCapture(bool cancelled) {
    handler_->EndCapture(cancelled);
}

// ---------------------------------------------------------------------------------------------
// RulerHandler

RulerHandler::RulerHandler() = default;
RulerHandler::~RulerHandler() = default;

void RulerHandler::SetRuler(qorcore::IntrusivePtr<qorui::RulerBase> ruler) {
    ruler_ = std::move(ruler);
}

qorcore::IntrusivePtr<qorui::RulerBase> RulerHandler::GetRuler() const {
    return ruler_;
}

void RulerHandler::SetRulerRect(const RectT<int>& rect, const qorcore::ScaleMatrixT<float>&) {
    rulerRect_ = rect;
}

bool RulerHandler::IsVertical() const {
    return qorcore::config::ThrowIfNull(ruler_, "RulerBase")->IsVertical();
}

bool RulerHandler::Call(const CanZoomFunction& function) {
    // A set pointer holding an empty function throws std::bad_function_call on purpose.
    return function && (*function)();
}

bool RulerHandler::CanZoom() const {
    return supportsZooming_ && Call(canZoomIn_);
}

bool RulerHandler::CanScroll() const {
    // A view can be scrolled exactly when it could be zoomed out: it doesn't show all it has.
    return supportsScrolling_ && Call(canZoomOut_);
}

bool RulerHandler::IsPointInRulerRect(const PointT<float>& p) const {
    const RectT<int>& r = rulerRect_;
    return r.width > 0 && r.height > 0 && float(r.x) <= p.x && p.x < float(r.x + r.width) &&
           float(r.y) <= p.y && p.y < float(r.y + r.height);
}

bool RulerHandler::DoMouseEvent(qorui::UI_Node* node, const MouseEvent& event) {
    CheckNode(node);
    if (captureType_ != kCaptureNone)
        return false;
    if (event.IsLeftButtonSingleDown()) {
        node->UI_RequestFocus();
        if (!CanScroll() || !IsPointInRulerRect(event.GetPosition()))
            return false;
        BeginCapture(kCaptureScroll, node, event);
        return true;
    }
    if (event.IsRightButtonSingleDown()) {
        node->UI_RequestFocus();
        // No CanZoom() here: a right click must reach the menu even where no zoom is possible.
        if (!IsPointInRulerRect(event.GetPosition()))
            return false;
        BeginCapture(kCaptureZoom, node, event);
        return true;
    }
    if (event.IsAction(PointerAction::kWheel) && handlesMouseWheelEvents_ &&
        IsPointInRulerRect(event.GetPosition())) {
        mouseWheelChanged_(event);
        return true;
    }
    return false;
}

bool RulerHandler::DoCursor(qorui::UI_Node* node, const PointT<float>& local,
                            qorui::ModifierFlags) {
    CheckNode(node);
    if (!IsPointInRulerRect(local) || !CanScroll())
        return false;
    node->UI_SetCursor(kCursorOpenHand);
    return true;
}

bool RulerHandler::DoCaptureCursor(qorui::UI_Node* node) const {
    int cursor = kCursorArrow;
    switch (captureType_) {
    case kCaptureNone: return false;
    case kCaptureScroll:
        if (supportsScrolling_ && Call(canZoomOut_))
            cursor = kCursorClosedHand;
        break;
    case kCaptureZoom:
        if (CanZoom())
            cursor = IsVertical() ? kCursorZoomVertical : kCursorZoomHorizontal;
        break;
    }
    CheckNode(node)->UI_SetCursor(cursor);
    return true;
}

void RulerHandler::BeginCapture(CaptureType type, qorui::UI_Node* node, const MouseEvent& event) {
    CheckNode(node);
    captureType_ = type;
    lastMousePosition_ = ToPixel(event.GetPosition());
    lastModifierKeys_ = event.GetModKey();
    if (type == kCaptureZoom) {
        BeginZoom(lastMousePosition_);
        pastDragZoomThreshold_ = false;
        zoomCaptureStarted_();
    } else if (type == kCaptureScroll) {
        scrollCaptureStarted_(lastMousePosition_);
    }
    auto capture = qorcore::MakeIntrusive<RulerCapture>(this, node, event);
    // A node outside any window gets no capture; end the gesture at once so that the handler
    // doesn't stay stuck in it.
    if (!qorui::UI_NodeManager::Get()->BeginInputCapture(capture))
        EndCapture(true);
}

void RulerHandler::CapturedMouseMoved(const PointT<int>& position, qorui::ModifierFlags modifiers) {
    if (captureType_ == kCaptureZoom) {
        DragZoom(position);
        if (!pastDragZoomThreshold_) {
            if (std::abs(zoomFirstPixel_ - zoomSecondPixel_) < kDragZoomThreshold) {
                lastMousePosition_ = position;
                lastModifierKeys_ = modifiers;
                return;
            }
            // Once passed, the threshold stays passed even if the mouse comes back.
            pastDragZoomThreshold_ = true;
        }
        zoomRegionChanged_();
    } else if (captureType_ == kCaptureScroll) {
        scrolled_(position, lastMousePosition_);
    }
    lastMousePosition_ = position;
    lastModifierKeys_ = modifiers;
}

void RulerHandler::EndCapture(bool cancelled) {
    const CaptureType type = captureType_;
    // Back to no gesture before the listeners run: one of them may open a menu.
    captureType_ = kCaptureNone;
    if (type == kCaptureZoom) {
        const bool zoomed = pastDragZoomThreshold_ && CanZoom();
        int first = 0;
        int second = 0;
        EndZoom(first, second);
        pastDragZoomThreshold_ = false;
        zoomCaptureEnded_(zoomed, first, second, cancelled);
    } else if (type == kCaptureScroll) {
        scrollCaptureEnded_(cancelled);
    }
}

void RulerHandler::BeginZoom(PointT<int> position) {
    const int pixel = IsVertical() ? position.y : position.x;
    zoomFirstPixel_ = pixel;
    zoomSecondPixel_ = pixel;
}

void RulerHandler::DragZoom(PointT<int> position) {
    zoomSecondPixel_ = IsVertical() ? position.y : position.x;
}

void RulerHandler::GetDragZoomPixels(int& first, int& second) const {
    first = zoomFirstPixel_;
    second = zoomSecondPixel_;
}

void RulerHandler::EndZoom(int& first, int& second) {
    first = 0;
    second = 0;
    if (pastDragZoomThreshold_ && zoomFirstPixel_ != zoomSecondPixel_) {
        first = std::min(zoomFirstPixel_, zoomSecondPixel_);
        second = std::max(zoomFirstPixel_, zoomSecondPixel_);
    }
}

void RulerHandler::GetRulerSpan(int& start, int& end) const {
    const bool vertical = IsVertical();
    start = vertical ? rulerRect_.y : rulerRect_.x;
    end = start + (vertical ? rulerRect_.height : rulerRect_.width);
}

bool RulerHandler::IsInRulerSpan(int pixel) const {
    if (!ruler_)
        return false;
    int start = 0;
    int end = 0;
    GetRulerSpan(start, end);
    return pixel >= start && pixel < end;
}

bool RulerHandler::SetMouseIndicator(int pixel) {
    const bool repaint = IsInRulerSpan(mouseIndicator_) || IsInRulerSpan(pixel);
    mouseIndicator_ = pixel;
    return repaint;
}

RectT<int> RulerHandler::GetMouseIndicatorRect() const {
    if (!IsInRulerSpan(mouseIndicator_))
        return {};
    RectT<int> rect = rulerRect_;
    if (IsVertical()) {
        rect.y = mouseIndicator_;
        rect.height = 2;
    } else {
        rect.x = mouseIndicator_;
        rect.width = 2;
    }
    return rect;
}

void RulerHandler::Draw(qorui::penrig::Penrig* penrig) const {
    if (!penrig || !ruler_)
        return;
    qorui::penrig::Penrig& p = *penrig;
    qorui::penrig::Penrig::StateSaver saver(p);
    const bool vertical = IsVertical();
    const RectT<float> rect(rulerRect_);
    const qorcore::ColorRGBA focus = qorui::skins::GetFocusColor();
    int start = 0;
    int end = 0;
    GetRulerSpan(start, end);

    if (CanZoom() && captureType_ == kCaptureZoom && pastDragZoomThreshold_ &&
        zoomFirstPixel_ != zoomSecondPixel_) {
        const int low = std::clamp(std::min(zoomFirstPixel_, zoomSecondPixel_), start, end);
        const int high = std::clamp(std::max(zoomFirstPixel_, zoomSecondPixel_), start, end);
        const float length = float(std::abs(high - low));
        const RectT<float> band = vertical ? RectT<float>(rect.x, float(low), rect.width, length)
                                           : RectT<float>(float(low), rect.y, length, rect.height);
        p.FillRect(band, focus.WithAlpha(0.5f));
    }

    if (IsInRulerSpan(mouseIndicator_)) {
        // A one-pixel line on the half pixel, so that it is crisp at every scale.
        const float at = float(mouseIndicator_) + 0.5f;
        p.SetPen(1.0f, focus.WithAlpha(0.5f));
        if (vertical)
            p.DrawLine(rect.x, at, rect.Right() - 1.0f, at);
        else
            p.DrawLine(at, rect.y, at, rect.Bottom() - 1.0f);
    }
}

qorcore::Connection
RulerHandler::ConnectRulerScrollCaptureStarted(std::function<void(const PointT<int>&)> slot) {
    return scrollCaptureStarted_.Connect(std::move(slot));
}

qorcore::Connection RulerHandler::ConnectRulerScrollCaptureEnded(std::function<void(bool)> slot) {
    return scrollCaptureEnded_.Connect(std::move(slot));
}

qorcore::Connection RulerHandler::ConnectRulerScrolled(
    std::function<void(const PointT<int>&, const PointT<int>&)> slot) {
    return scrolled_.Connect(std::move(slot));
}

qorcore::Connection RulerHandler::ConnectRulerZoomCaptureStarted(std::function<void()> slot) {
    return zoomCaptureStarted_.Connect(std::move(slot));
}

qorcore::Connection
RulerHandler::ConnectRulerZoomCaptureEnded(std::function<void(bool, int, int, bool)> slot) {
    return zoomCaptureEnded_.Connect(std::move(slot));
}

qorcore::Connection RulerHandler::ConnectRulerZoomRegionChanged(std::function<void()> slot) {
    return zoomRegionChanged_.Connect(std::move(slot));
}

qorcore::Connection
RulerHandler::ConnectMouseWheelChanged(std::function<void(const MouseEvent&)> slot) {
    return mouseWheelChanged_.Connect(std::move(slot));
}

} // namespace qoraudiofiltersui
