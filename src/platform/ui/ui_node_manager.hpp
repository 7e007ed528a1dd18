#pragma once

#include "platform/core/intrusive_ptr.hpp"
#include "platform/ui/input_capture.hpp"
#include "platform/ui/mouse_event.hpp"

#include <cstdint>

namespace qorui {

class UI_Node;
class UI_Window;

/// What the toolkit knows across windows: the running input capture, the last mouse event and
/// the buttons held, and the source of timer ids. Main thread only.
class UI_NodeManager {
public:
    static UI_NodeManager& Get();
    /// So that both `Get().X()` and `Get()->X()` read naturally at call sites.
    UI_NodeManager* operator->() { return this; }

    /// A timer id not handed out before: 1, 2, 3, ... (never 0, which means "no timer").
    int GetUniqueTimerID();

    /// Starts a gesture. False (and nothing happens) for a null capture or one whose node is in
    /// no window; a capture already running is ended cancelled first.
    bool BeginInputCapture(qorcore::IntrusivePtr<InputCapture> capture);
    /// Ends the running capture, if any.
    void EndInputCapture(bool cancelled);
    InputCapture* GetCurrentCapture() const { return capture_.get(); }

    /// The last mouse event a window received, in that window's coordinates (while a window
    /// dispatches an event, that event).
    const MouseEvent& GetPreviousMouseEvent() const { return previousEvent_; }
    /// Bits of the buttons held now: 1 left, 2 right, 4 middle.
    std::uint32_t GetCurrentMouseButtonState() const { return buttons_; }

    // For windows.
    void RecordMouseEvent(const MouseEvent& windowEvent, std::uint32_t buttons);
    /// Cancels the capture if its node is `root` or lies below it.
    void CancelCaptureUnder(const UI_Node* root);
    void CancelCaptureIn(const UI_Window* window);

private:
    UI_NodeManager() = default;

    qorcore::IntrusivePtr<InputCapture> capture_;
    MouseEvent previousEvent_;
    std::uint32_t buttons_ = 0;
    int nextTimerId_ = 1;
};

namespace ui {
using ::qorui::InputCapture;
using ::qorui::UI_NodeManager;
} // namespace ui

} // namespace qorui
