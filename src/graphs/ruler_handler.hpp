#pragma once

#include "platform/core/connection.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/point.hpp"
#include "platform/core/rect.hpp"
#include "platform/core/ref_counted_object.hpp"
#include "platform/core/scale_matrix.hpp"
#include "platform/core/signal.hpp"
#include "platform/rulers/ruler_base.hpp"
#include "platform/ui/input_capture.hpp"
#include "platform/ui/mouse_event.hpp"

#include <cstdint>
#include <functional>
#include <memory>

namespace qorui {
class UI_Node;
namespace penrig {
class Penrig;
}
} // namespace qorui

namespace qoraudiofiltersui {

class RulerHandler;

/// Keeps a ruler gesture alive while the button is down: moves go to the handler, the end of the
/// capture ends the gesture, and the cursor follows the gesture.
class RulerCapture : public qorui::PointerCapture {
public:
    /// A null handler throws the null-pointer exception.
    RulerCapture(RulerHandler* handler, qorui::UI_Node* node, const qorui::MouseEvent& start);

    bool UI_DoMouseEvent(const qorui::MouseEvent& event) override;
    bool UI_DoCursor(const qorcore::PointT<float>& local, qorui::ModifierFlags modifiers) override;
    void UI_EndCapture(bool cancelled) override;

private:
    // Counted, so that a handler dropped by its owner during a gesture outlives the gesture.
    qorcore::IntrusivePtr<RulerHandler> handler_;
};

/// The mouse behaviour of one ruler: a left drag scrolls, a right drag selects a region to zoom
/// to, a right click without a drag asks for a menu, the wheel zooms, and a hover indicator can
/// mark a pixel. It is no control: its owner passes events and cursor requests on and listens to
/// its signals. Coordinates are those of the owner.
class RulerHandler : public qorcore::RefCountedObject {
public:
    enum CaptureType : std::int32_t { kCaptureNone = 0, kCaptureScroll = 1, kCaptureZoom = 2 };

    /// Cursor numbers the handler sets.
    static constexpr int kCursorArrow = 0;
    static constexpr int kCursorOpenHand = 13;
    static constexpr int kCursorClosedHand = 14;
    static constexpr int kCursorZoomHorizontal = 200;
    static constexpr int kCursorZoomVertical = 201;
    /// A right drag shorter than this is a click.
    static constexpr int kDragZoomThreshold = 3;
    /// The indicator's value when nothing is shown.
    static constexpr int kNoMouseIndicator = -99;

    using CanZoomFunction = std::shared_ptr<std::function<bool()>>;

    RulerHandler();
    RulerHandler(const RulerHandler&) = delete;
    RulerHandler& operator=(const RulerHandler&) = delete;

    virtual void SetRuler(qorcore::IntrusivePtr<qorui::RulerBase> ruler);
    virtual qorcore::IntrusivePtr<qorui::RulerBase> GetRuler() const;
    /// Stores the active area; the matrix is accepted for callers that have one and not used.
    virtual void SetRulerRect(const qorcore::RectT<int>& rect,
                              const qorcore::ScaleMatrixT<float>& matrix = {});
    /// The ruler's orientation; without a ruler this throws the null-pointer exception.
    virtual bool IsVertical() const;
    /// The rubber band and the hover indicator, drawn by the owner after the ruler.
    virtual void Draw(qorui::penrig::Penrig* penrig) const;
    virtual void GetDragZoomPixels(int& first, int& second) const;
    virtual void BeginZoom(qorcore::PointT<int> position);
    /// The zoomed pixels in order, or 0 and 0 when the drag didn't pass the threshold or covers
    /// no pixel.
    virtual void EndZoom(int& first, int& second);
    virtual void DragZoom(qorcore::PointT<int> position);

    // Events from the owner. A null node throws the null-pointer exception.
    bool DoMouseEvent(qorui::UI_Node* node, const qorui::MouseEvent& event);
    /// The hover cursor; true only when it set one.
    bool DoCursor(qorui::UI_Node* node, const qorcore::PointT<float>& local,
                  qorui::ModifierFlags modifiers);

    // Gestures
    void BeginCapture(CaptureType type, qorui::UI_Node* node, const qorui::MouseEvent& event);
    void EndCapture(bool cancelled);
    void CapturedMouseMoved(const qorcore::PointT<int>& position, qorui::ModifierFlags modifiers);

    // Queries
    bool CanScroll() const;
    bool CanZoom() const;
    bool IsPointInRulerRect(const qorcore::PointT<float>& point) const;
    bool IsPastDragZoomThreshold() const { return pastDragZoomThreshold_; }
    CaptureType GetCaptureType() const { return captureType_; }
    const qorcore::PointT<int>& GetLastMousePosition() const { return lastMousePosition_; }
    qorui::ModifierFlags GetLastModKey() const { return lastModifierKeys_; }
    const qorcore::RectT<int>& GetRulerRect() const { return rulerRect_; }

    // Hover indicator
    /// Stores the pixel and tells whether the old or the new one is shown, so that the caller
    /// knows whether to repaint.
    bool SetMouseIndicator(int pixel);
    int GetMouseIndicator() const { return mouseIndicator_; }
    /// Where the indicator is drawn, or an empty rectangle when it is hidden.
    qorcore::RectT<int> GetMouseIndicatorRect() const;

    // Configuration
    void SetRulerCanZoomInFxn(CanZoomFunction function) { canZoomIn_ = std::move(function); }
    void SetRulerCanZoomOutFxn(CanZoomFunction function) { canZoomOut_ = std::move(function); }
    void SetSupportsScrolling(bool supports) { supportsScrolling_ = supports; }
    void SetSupportsZooming(bool supports) { supportsZooming_ = supports; }
    void SetHandlesMouseWheelEvents(bool handles) { handlesMouseWheelEvents_ = handles; }
    bool GetSupportsScrolling() const { return supportsScrolling_; }
    bool GetSupportsZooming() const { return supportsZooming_; }
    bool GetHandlesMouseWheelEvents() const { return handlesMouseWheelEvents_; }

    // Signals
    [[nodiscard]] qorcore::Connection
    ConnectRulerScrollCaptureStarted(std::function<void(const qorcore::PointT<int>&)> slot);
    [[nodiscard]] qorcore::Connection
    ConnectRulerScrollCaptureEnded(std::function<void(bool cancelled)> slot);
    [[nodiscard]] qorcore::Connection ConnectRulerScrolled(
        std::function<void(const qorcore::PointT<int>& current, const qorcore::PointT<int>& last)>
            slot);
    [[nodiscard]] qorcore::Connection ConnectRulerZoomCaptureStarted(std::function<void()> slot);
    [[nodiscard]] qorcore::Connection ConnectRulerZoomCaptureEnded(
        std::function<void(bool zoomed, int first, int second, bool cancelled)> slot);
    [[nodiscard]] qorcore::Connection ConnectRulerZoomRegionChanged(std::function<void()> slot);
    [[nodiscard]] qorcore::Connection
    ConnectMouseWheelChanged(std::function<void(const qorui::MouseEvent&)> slot);

protected:
    ~RulerHandler() override;

private:
    friend class RulerCapture;

    /// The cursor of a running gesture; false when none runs.
    bool DoCaptureCursor(qorui::UI_Node* node) const;
    /// The span of the rectangle along the ruler: start inclusive, end exclusive.
    void GetRulerSpan(int& start, int& end) const;
    bool IsInRulerSpan(int pixel) const;
    static bool Call(const CanZoomFunction& function);

    int zoomFirstPixel_ = 0;
    int zoomSecondPixel_ = 0;
    qorcore::Signal<void(const qorcore::PointT<int>&)> scrollCaptureStarted_;
    qorcore::Signal<void(bool)> scrollCaptureEnded_;
    qorcore::Signal<void(const qorcore::PointT<int>&, const qorcore::PointT<int>&)> scrolled_;
    qorcore::Signal<void()> zoomCaptureStarted_;
    qorcore::Signal<void(bool, int, int, bool)> zoomCaptureEnded_;
    qorcore::Signal<void()> zoomRegionChanged_;
    qorcore::Signal<void(const qorui::MouseEvent&)> mouseWheelChanged_;
    CanZoomFunction canZoomIn_;
    CanZoomFunction canZoomOut_;
    qorcore::IntrusivePtr<qorui::RulerBase> ruler_;
    qorcore::RectT<int> rulerRect_;
    CaptureType captureType_ = kCaptureNone;
    bool pastDragZoomThreshold_ = false;
    qorcore::PointT<int> lastMousePosition_;
    qorui::ModifierFlags lastModifierKeys_;
    bool supportsZooming_ = true;
    bool supportsScrolling_ = true;
    bool handlesMouseWheelEvents_ = false;
    int mouseIndicator_ = kNoMouseIndicator;
};

} // namespace qoraudiofiltersui
