#include "platform/ui/ui_modal_overlay.hpp"

#include "platform/ui/modal_testing.hpp"
#include "platform/ui/ui_node_manager.hpp"
#include "platform/ui/ui_window.hpp"

#include <stdexcept>

namespace qorui {

UI_ModalOverlay::UI_ModalOverlay() {
    SetWantsKeyboardFocus(true);
}

int UI_ModalOverlay::RunModal(UI_Window& window) {
    if (running_)
        throw std::logic_error("UI_ModalOverlay::RunModal: the overlay is already running");
    IntrusivePtr<UI_ModalOverlay> self(this);
    UI_NodeManager::Get().CancelCaptureIn(&window);
    IntrusivePtr<UI_Node> previousFocus(window.GetFocusNode());
    running_ = true;
    result_ = 0;
    SetFrame(window.GetBounds());
    window.AddNode(self);
    window.SetFocusNode(this);
    EmitInvalidate();
    UI_ModalStarted();

    if (const auto& responder = testing::GetModalResponder()) {
        responder(*this);
    } else {
        // A window with no event source of its own answers false at once: the modal ends
        // cancelled, so it never hangs a headless run.
        while (running_ && window.ProcessEvents(16)) {
        }
    }
    running_ = false;

    EmitInvalidate();
    RemoveFromParent();
    if (previousFocus && previousFocus->GetWindow() == &window)
        window.SetFocusNode(previousFocus.get());
    return result_;
}

void UI_ModalOverlay::EndModal(int result) {
    if (!running_)
        return;
    result_ = result;
    running_ = false;
}

bool UI_ModalOverlay::UI_HitTest(const PointT<float>&) const {
    return true;
}

bool UI_ModalOverlay::UI_DoMouseEvent(const MouseEvent& event) {
    if (event.IsAction(PointerAction::kPress) && !GetContentRect().Contains(event.GetPosition()))
        UI_PressOutside();
    return true;
}

bool UI_ModalOverlay::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    if (event.CompareShortcut(KeyboardCode::kEscape)) {
        Cancel();
        return true;
    }
    // Keys never reach the views below while a modal runs.
    return true;
}

void UI_ModalOverlay::UI_SizeChanged() {
    EmitInvalidate();
}

} // namespace qorui
