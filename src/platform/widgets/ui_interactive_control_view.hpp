#pragma once

#include "platform/widgets/ui_control_view.hpp"

namespace qorui {

/// Which step of a user gesture an interactive change is.
enum InteractiveChange {
    kInteractiveChangeBegin = 0,
    kInteractiveChangeContinue = 1,
    kInteractiveChangeFinish = 2,
    kInteractiveChangeCancel = 3,
};

/// A changed message that also says where in the gesture the change is, and with which
/// modifier keys it continues.
class UI_InteractiveControlChangedMessage : public UI_ControlChangedMessage {
public:
    UI_InteractiveControlChangedMessage(UI_ControlView* sender, int changeMessage,
                                        ModifierFlags modifiers)
        : UI_ControlChangedMessage(sender), change_(changeMessage), modifiers_(modifiers) {}

    /// 0 begin, 1 continue, 2 finish, 3 cancel.
    int GetChangeMessage() const { return change_; }
    ModifierFlags GetModifiers() const { return modifiers_; }

private:
    int change_;
    ModifierFlags modifiers_;
};

/// A control whose user changes come as gestures: one begin, any number of continues, then a
/// finish or a cancel. Editors open an undoable edit on the begin and close it at the end. A
/// cancel puts back the value the gesture began with.
///
/// The changed listeners of `UI_ControlView` hear once per gesture, at a finish that changed
/// the value.
class UI_InteractiveControlView : public UI_ControlView {
public:
    using InteractiveChangedFunction =
        std::function<void(const UI_InteractiveControlChangedMessage&)>;

    /// Keeps `handler` for the life of the control.
    void NotifyWhenChangedInteractively(InteractiveChangedFunction handler);
    [[nodiscard]] qorcore::Connection
    ConnectChangedInteractively(InteractiveChangedFunction handler);

    /// Starts a gesture (a running one is finished first) and sends 0.
    void BeginInteractiveChange(ModifierFlags modifiers = {});
    /// Sends 1; begins a gesture first when none runs.
    void ContinueInteractiveChange(ModifierFlags modifiers = {});
    /// Sends 2 and ends the gesture; nothing when none runs.
    void FinishInteractiveChange(ModifierFlags modifiers = {});
    /// Puts the starting value back, sends 3 and ends the gesture; nothing when none runs.
    void CancelInteractiveChange();
    bool IsInteractiveChangeInProgress() const { return inGesture_; }
    /// The value when the running gesture began.
    double GetValueAtBegin() const { return valueAtBegin_; }

protected:
    /// Starts a pointer gesture that sends every later pointer event of the window to
    /// `UI_DoDragEvent` until the button is released (`UI_DoDragEnd(false)`), or Escape or a lost
    /// capture ends it (`UI_DoDragEnd(true)`). False if no capture could start.
    bool BeginDrag(const MouseEvent& start);
    bool IsDragging() const { return dragging_; }
    /// Ends a running drag as if cancelled, from the control itself.
    void CancelDrag();
    virtual void UI_DoDragEvent(const MouseEvent& event);
    virtual void UI_DoDragEnd(bool cancelled);

private:
    class DragCapture;
    void Send(int change, ModifierFlags modifiers);

    qorcore::Signal<void(const UI_InteractiveControlChangedMessage&)> interactive_;
    std::vector<qorcore::Connection> kept_;
    double valueAtBegin_ = 0.0;
    bool unknownAtBegin_ = false;
    bool inGesture_ = false;
    bool dragging_ = false;
};

namespace ui {
using ::qorui::UI_InteractiveControlChangedMessage;
using ::qorui::UI_InteractiveControlView;
} // namespace ui

} // namespace qorui
