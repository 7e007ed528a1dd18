#pragma once

#include "platform/ui/ui_node.hpp"

#include <string_view>

namespace qorui {

/// The base of menus and dialogs: a node laid over the whole window that takes every pointer
/// event and the keyboard focus while it runs, so nothing below reacts. `RunModal` adds it to
/// the window, runs a nested loop until `EndModal` and takes it away again.
///
/// The nested loop: in a real window it handles the window's events; with a responder installed
/// (`qorui::testing::ScopedModalResponder`) it calls the responder once, which answers directly
/// or drives the window with events. Whatever is still open after that, or in a window with no
/// event source of its own, ends cancelled (result 0), so a modal never hangs a headless run.
class UI_ModalOverlay : public UI_Node {
public:
    UI_ModalOverlay();

    /// Runs the overlay in `window` and returns the result given to `EndModal` (0 when
    /// cancelled). A running capture ends cancelled first; the focus comes back afterwards.
    /// Running an overlay that already runs throws std::logic_error.
    int RunModal(UI_Window& window);
    /// Ends the loop with a result; nothing happens when the overlay is not running.
    void EndModal(int result);
    void Cancel() { EndModal(0); }
    bool IsRunning() const { return running_; }
    int GetResult() const { return result_; }

    /// What kind of overlay this is, for responders: "menu", "note", "dialog", ...
    virtual std::string_view GetModalKind() const = 0;

    bool UI_HitTest(const PointT<float>& local) const override;
    bool UI_DoMouseEvent(const MouseEvent& event) override;
    /// Escape cancels.
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;
    void UI_SizeChanged() override;

protected:
    /// Called once the overlay hangs in the window with its full size, before the loop.
    virtual void UI_ModalStarted() {}
    /// A press outside the content; the base cancels.
    virtual void UI_PressOutside() { Cancel(); }
    /// The part of the overlay that is the menu or the dialog, in its own coordinates; presses
    /// elsewhere are outside.
    virtual RectT<float> GetContentRect() const = 0;

private:
    bool running_ = false;
    int result_ = 0;
};

} // namespace qorui
