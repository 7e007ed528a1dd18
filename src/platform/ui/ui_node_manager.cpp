#include "platform/ui/ui_node_manager.hpp"

#include "platform/ui/ui_node.hpp"

#include <limits>

namespace qorui {

UI_NodeManager& UI_NodeManager::Get() {
    static UI_NodeManager manager;
    return manager;
}

int UI_NodeManager::GetUniqueTimerID() {
    const int id = nextTimerId_;
    nextTimerId_ = nextTimerId_ == std::numeric_limits<int>::max() ? 1 : nextTimerId_ + 1;
    return id;
}

bool UI_NodeManager::BeginInputCapture(qorcore::IntrusivePtr<InputCapture> capture) {
    if (!capture || !capture->GetNode() || !capture->GetNode()->GetWindow())
        return false;
    if (capture_ == capture)
        return true;
    EndInputCapture(true);
    capture_ = std::move(capture);
    capture_->active_ = true;
    return true;
}

void UI_NodeManager::EndInputCapture(bool cancelled) {
    if (!capture_)
        return;
    // Detach first: the end handler may start another capture.
    qorcore::IntrusivePtr<InputCapture> ending = std::move(capture_);
    capture_.reset();
    ending->active_ = false;
    ending->UI_EndCapture(cancelled);
}

void UI_NodeManager::RecordMouseEvent(const MouseEvent& windowEvent, std::uint32_t buttons) {
    previousEvent_ = windowEvent;
    buttons_ = buttons;
}

void UI_NodeManager::CancelCaptureUnder(const UI_Node* root) {
    if (capture_ && (capture_->GetNode() == root || root->IsAncestorOf(capture_->GetNode())))
        EndInputCapture(true);
}

void UI_NodeManager::CancelCaptureIn(const UI_Window* window) {
    if (capture_ && capture_->GetNode()->GetWindow() == window)
        EndInputCapture(true);
}

} // namespace qorui
