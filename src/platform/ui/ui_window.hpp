#pragma once

#include "platform/core/color_rgba.hpp"
#include "platform/core/high_precision_time.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/ui/dirty_region.hpp"
#include "platform/ui/keyboard_event.hpp"
#include "platform/ui/mouse_event.hpp"
#include "platform/ui/timer_queue.hpp"
#include "platform/ui/ui_node.hpp"
#include "platform/ui/ui_tool_tip_hover.hpp"

#include <cstdint>
#include <optional>
#include <vector>

namespace qorui {

/// What every backend shares: a root node filling the window, the dirty region and painting,
/// event routing (captures first, then hit testing and bubbling to parents; keys to the focus),
/// hover, focus, cursors, the tool tips of the nodes and timers. A backend supplies the clock, the
/// pixels and the input.
///
/// Coordinates are logical pixels; the scale factor maps them to device pixels.
class UI_Window {
public:
    using TimeStamp = qorcore::HighPrecisionTime::TimeStamp;

    /// A size that is not positive and finite, or a scale outside (0, 8], throws
    /// std::invalid_argument.
    UI_Window(float width, float height, float scale);
    virtual ~UI_Window();
    UI_Window(const UI_Window&) = delete;
    UI_Window& operator=(const UI_Window&) = delete;

    /// The node that fills the window; views are added to it.
    UI_Node* GetRoot() const { return root_.get(); }
    void AddNode(IntrusivePtr<UI_Node> node) { root_->ChildPushBack(std::move(node)); }

    float GetWidth() const { return width_; }
    float GetHeight() const { return height_; }
    float GetScaleFactor() const { return supplier_.GetScaleFactor(); }
    RectT<float> GetBounds() const { return {0, 0, width_, height_}; }
    const penrig::SupplierInterface& GetDrawSupplier() const { return supplier_; }
    void SetBackgroundColor(const qorcore::ColorRGBA& color);
    const qorcore::ColorRGBA& GetBackgroundColor() const { return background_; }

    // Painting
    void InvalidateRect(const RectT<float>& windowRect);
    void InvalidateAll();
    const DirtyRegion& GetDirtyRegion() const { return dirty_; }
    /// Repaints the dirty areas and clears them; returns the areas painted.
    std::vector<RectT<float>> PaintDirty(Penrig& penrig);
    /// Repaints one area: the background, then the tree, clipped to it.
    void PaintRect(Penrig& penrig, const RectT<float>& windowRect);

    // Input, in window coordinates. Returns whether something consumed the event.
    bool DispatchMouseEvent(MouseEvent event);
    bool DispatchKeyboardEvent(const KeyboardEvent& event);
    /// The topmost shown node under the point whose `UI_HitTest` accepts it, or null outside.
    UI_Node* HitTest(const PointT<float>& windowPoint) const;
    UI_Node* GetHoverNode() const { return hover_.get(); }
    UI_Node* GetFocusNode() const { return focus_.get(); }
    /// Gives the focus to a shown, enabled node of this window that wants it; null clears.
    bool SetFocusNode(UI_Node* node);
    /// Tab order: the shown, enabled nodes that want the focus, in tree order, wrapping.
    bool MoveFocus(bool forward);
    /// The window lost the system's input focus: gestures end cancelled and held buttons are
    /// forgotten.
    void LoseInputFocus();
    int GetCursor() const { return cursor_; }
    void SetCursor(int cursor);

    // Node tool tips (`UI_Node::UI_SetToolTip`): one tip for the whole window, for the node under
    // the pointer. Nodes that keep a `UI_ToolTipHover` of their own show theirs as before.
    /// The tip, waiting for its delay or showing; null when there is none.
    UI_ToolTip* GetToolTip() const { return toolTipHover_.GetToolTip(); }
    /// The node the tip belongs to; null when there is no tip.
    UI_Node* GetToolTipNode() const { return GetToolTip() ? toolTipNode_.get() : nullptr; }
    /// Negative or not-a-number throws std::invalid_argument.
    void SetToolTipDelay(double seconds) { toolTipHover_.SetDelay(seconds); }
    double GetToolTipDelay() const { return toolTipHover_.GetDelay(); }

    // Timers
    bool InstallTimer(UI_Node* node, float seconds, int id);
    bool RemoveTimer(const UI_Node* node, int id) { return timers_.Remove(node, id); }
    bool HasTimer(const UI_Node* node, int id) const { return timers_.Has(node, id); }
    std::size_t GetTimerCount() const { return timers_.GetCount(); }
    std::optional<TimeStamp> GetNextTimerDue() const { return timers_.GetNextDue(); }
    /// Fires every timer due by `GetTime()`; returns how many fired.
    std::size_t FireDueTimers();
    /// The window's clock in nanoseconds.
    virtual TimeStamp GetTime() const = 0;
    /// Waits up to `timeoutMs` for events of the window's own source (a display) and handles
    /// them, with its timers and queued tasks; false when the window was closed or has no such
    /// source. Nested loops (modal overlays) turn on it.
    virtual bool ProcessEvents(int timeoutMs) {
        (void)timeoutMs;
        return false;
    }

protected:
    /// Takes the tree out of the window: the capture ends, timers stop, the views are removed
    /// and told. Backends call it first in their destructors, while the window is still whole
    /// for the handlers that run; after it no timer can be installed.
    void CloseTree();
    /// A new size, from the backend; the tree is told and everything repaints.
    void Resize(float width, float height);
    virtual void OnCursorChanged(int cursor);
    /// Whether a timer that fell behind fires once for every missed period (a virtual clock)
    /// or skips them (a real clock after a stall).
    virtual bool CatchesUpOnTimers() const { return true; }

private:
    friend class UI_Node;

    void NodeLeaving(UI_Node* subtree);
    void NodeUnavailable(UI_Node* subtree);
    void UpdateHover(UI_Node* node);
    void UpdateToolTip(UI_Node* target, const MouseEvent& windowEvent);
    void ToolTipTextChanged(UI_Node* node);
    void CloseToolTip();
    void UpdateCursor(UI_Node* target, const PointT<float>& at, ModifierFlags modifiers);
    bool Bubble(UI_Node* target, const MouseEvent& windowEvent);
    int CountClick(const MouseEvent& event);

    float width_;
    float height_;
    penrig::CairoSupplier supplier_;
    qorcore::ColorRGBA background_{0.93f, 0.93f, 0.93f, 1.0f};
    IntrusivePtr<UI_Node> root_;
    DirtyRegion dirty_;
    TimerQueue timers_;
    IntrusivePtr<UI_Node> hover_;
    IntrusivePtr<UI_Node> focus_;
    IntrusivePtr<UI_Node> pressed_;
    UI_ToolTipHover toolTipHover_;
    IntrusivePtr<UI_Node> toolTipNode_;
    std::uint32_t buttons_ = 0;
    int cursor_ = 0;
    bool closing_ = false;

    struct LastPress {
        MouseButton button = MouseButton::kNone;
        PointT<float> position;
        TimeStamp time = 0;
        int count = 0;
    } lastPress_;
};

} // namespace qorui
