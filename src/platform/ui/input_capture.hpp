#pragma once

#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/ref_counted_object.hpp"
#include "platform/ui/keyboard_event.hpp"
#include "platform/ui/mouse_event.hpp"

namespace qorui {

class UI_Node;

/// A gesture in progress. Started with `UI_NodeManager::BeginInputCapture`, it receives every
/// pointer event of its window, in its node's coordinates, until the last button is released;
/// then it ends normally. Escape, a new capture, the node leaving its window or being hidden,
/// and the window losing the input focus end it cancelled.
class InputCapture : public qorcore::RefCountedObject {
public:
    /// A null node throws the null-pointer exception.
    InputCapture(UI_Node* node, const MouseEvent& startEvent);

    UI_Node* GetNode() const { return node_.get(); }
    /// The event that started the gesture, in the node's coordinates.
    const MouseEvent& GetStartEvent() const { return startEvent_; }
    bool IsActive() const { return active_; }

    /// Pointer events while the capture runs. The return value is the capture's own business:
    /// the window treats every event as consumed.
    virtual bool UI_DoMouseEvent(const MouseEvent& event);
    /// Keys while the capture runs; Escape ends it cancelled unless this consumes it.
    virtual bool UI_DoKeyboardEvent(const KeyboardEvent& event);
    /// The cursor while the capture runs; false keeps the current one.
    virtual bool UI_DoCursor(const PointT<float>& local, ModifierFlags modifiers);
    /// Called once when the capture ends, after it stopped receiving events.
    virtual void UI_EndCapture(bool cancelled);

protected:
    ~InputCapture() override;

private:
    friend class UI_NodeManager;

    qorcore::IntrusivePtr<UI_Node> node_;
    MouseEvent startEvent_;
    bool active_ = false;
};

/// The pointer gestures of controls are input captures.
using PointerCapture = InputCapture;

} // namespace qorui
