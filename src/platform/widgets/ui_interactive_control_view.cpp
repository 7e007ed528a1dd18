#include "platform/widgets/ui_interactive_control_view.hpp"

#include "platform/ui/input_capture.hpp"
#include "platform/ui/ui_node_manager.hpp"

namespace qorui {

// Hands a pointer gesture back to the control that started it.
class UI_InteractiveControlView::DragCapture : public InputCapture {
public:
    DragCapture(UI_InteractiveControlView* control, const MouseEvent& start)
        : InputCapture(control, start), control_(control) {}

    bool UI_DoMouseEvent(const MouseEvent& event) override {
        if (control_->dragging_)
            control_->UI_DoDragEvent(event);
        return true;
    }
    void UI_EndCapture(bool cancelled) override {
        if (!control_->dragging_)
            return;
        control_->dragging_ = false;
        control_->UI_DoDragEnd(cancelled);
    }

private:
    UI_InteractiveControlView* control_; // kept alive by the capture's node reference
};

void UI_InteractiveControlView::NotifyWhenChangedInteractively(InteractiveChangedFunction handler) {
    kept_.push_back(interactive_.Connect(std::move(handler)));
}

qorcore::Connection
UI_InteractiveControlView::ConnectChangedInteractively(InteractiveChangedFunction handler) {
    return interactive_.Connect(std::move(handler));
}

void UI_InteractiveControlView::Send(int change, ModifierFlags modifiers) {
    IntrusivePtr<UI_Node> keep(this);
    interactive_(UI_InteractiveControlChangedMessage(this, change, modifiers));
}

void UI_InteractiveControlView::BeginInteractiveChange(ModifierFlags modifiers) {
    if (inGesture_)
        FinishInteractiveChange(modifiers);
    inGesture_ = true;
    valueAtBegin_ = GetValue();
    unknownAtBegin_ = IsValueUnknown();
    Send(kInteractiveChangeBegin, modifiers);
}

void UI_InteractiveControlView::ContinueInteractiveChange(ModifierFlags modifiers) {
    if (!inGesture_)
        BeginInteractiveChange(modifiers);
    Send(kInteractiveChangeContinue, modifiers);
}

void UI_InteractiveControlView::FinishInteractiveChange(ModifierFlags modifiers) {
    if (!inGesture_)
        return;
    inGesture_ = false;
    IntrusivePtr<UI_Node> keep(this);
    Send(kInteractiveChangeFinish, modifiers);
    if (GetValue() != valueAtBegin_ || IsValueUnknown() != unknownAtBegin_)
        SendControlMessages();
}

void UI_InteractiveControlView::CancelInteractiveChange() {
    if (!inGesture_)
        return;
    inGesture_ = false;
    if (unknownAtBegin_)
        SetValueUnknown();
    else
        SetValue(valueAtBegin_);
    Send(kInteractiveChangeCancel, {});
}

bool UI_InteractiveControlView::BeginDrag(const MouseEvent& start) {
    dragging_ = true;
    if (!UI_NodeManager::Get().BeginInputCapture(
            qorcore::MakeIntrusive<DragCapture>(this, start))) {
        dragging_ = false;
        return false;
    }
    return true;
}

void UI_InteractiveControlView::CancelDrag() {
    InputCapture* capture = UI_NodeManager::Get().GetCurrentCapture();
    if (dragging_ && capture && capture->GetNode() == this)
        UI_NodeManager::Get().EndInputCapture(true);
}

void UI_InteractiveControlView::UI_DoDragEvent(const MouseEvent&) {}

void UI_InteractiveControlView::UI_DoDragEnd(bool cancelled) {
    if (cancelled)
        CancelInteractiveChange();
    else
        FinishInteractiveChange();
}

} // namespace qorui
