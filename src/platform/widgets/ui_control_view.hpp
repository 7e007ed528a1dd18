#pragma once

#include "platform/core/connection.hpp"
#include "platform/core/signal.hpp"
#include "platform/ui/ui_sub_view.hpp"

#include <functional>

namespace qorui {

class UI_ControlView;

/// What a control tells its listeners when the user changed it.
class UI_ControlChangedMessage {
public:
    explicit UI_ControlChangedMessage(UI_ControlView* sender) : sender_(sender) {}
    virtual ~UI_ControlChangedMessage() = default;

    UI_ControlView* GetSender() const { return sender_; }

private:
    UI_ControlView* sender_;
};

/// A node that shows and sets one value: a number (a flag, an index or a level, whatever the
/// control makes of it) that may also be unknown, a down state while pressed, enabling, and the
/// changed messages. Setting the value from code sends nothing; controls send
/// `SendControlMessages` when the user changed them.
class UI_ControlView : public UI_SubView {
public:
    using ChangedFunction = std::function<void(const UI_ControlChangedMessage&)>;

    /// What a control looks like now, for its drawing.
    enum ControlState {
        kControlStateNormal = 0,
        kControlStateHovered = 1,
        kControlStatePressed = 2,
        kControlStateDisabled = 3,
    };

    UI_ControlView();

    // Value. A value that is not finite is ignored.
    double GetValue() const { return value_; }
    virtual void SetValue(double value);
    /// Shows neither value: a mixed or not-yet-known state. Setting a value ends it.
    virtual void SetValueUnknown();
    bool IsValueUnknown() const { return unknown_; }

    // Down state: the look of a pressed control.
    virtual void SetDownState(bool down);
    bool GetDownState() const { return down_; }

    // Enabling, in the words callers use.
    void SetEnabled(bool enabled) { UI_SetEnabled(enabled); }
    void SetDisabled(bool disabled) { UI_SetEnabled(!disabled); }
    bool IsDisabled() const { return !IsEnabledInTree(); }
    ControlState GetControlState() const;

    // Messages
    /// Keeps `handler` for the life of the control; it runs each time the user changes it.
    void NotifyWhenChanged(ChangedFunction handler);
    /// The same for a listener that may go first: the connection ends with the returned handle.
    [[nodiscard]] qorcore::Connection ConnectChanged(ChangedFunction handler);
    /// Tells every changed listener.
    void SendControlMessages();

    // Drawing helpers for subclasses
    /// Draws the focus ring of the look around `rect` when the control has the focus.
    void DrawFocusIfNeeded(Penrig* penrig, const RectT<float>& rect) const;
    void SetSuppressFocusDrawing(bool suppress) { suppressFocus_ = suppress; }
    bool GetSuppressFocusDrawing() const { return suppressFocus_; }

    bool UI_DoMouseEvent(const MouseEvent& event) override;
    void UI_FocusChanged(bool hasFocus) override;

protected:
    /// Stores the value without redrawing or telling anyone; for subclasses that keep their
    /// own checks in `SetValue`.
    void StoreValue(double value);

private:
    qorcore::Signal<void(const UI_ControlChangedMessage&)> changed_;
    std::vector<qorcore::Connection> kept_;
    double value_ = 0.0;
    bool unknown_ = false;
    bool down_ = false;
    bool suppressFocus_ = false;
};

namespace ui {
using ::qorui::UI_ControlChangedMessage;
using ::qorui::UI_ControlView;
} // namespace ui

} // namespace qorui
