#include "platform/ui/ui_dialog_hot_text_number.hpp"

#include "platform/ui/ui_window.hpp"

namespace qorui {

namespace {
constexpr int kRefocusTimer = 7301;
} // namespace

UI_DialogHotTextNumber::UI_DialogHotTextNumber(UI_Node* dialog) : dialog_(dialog) {
    SetNumericInput(true);
}

bool UI_DialogHotTextNumber::BeginDialogTyping() {
    if (!BeginTyping())
        return false;
    WatchTyping();
    return true;
}

bool UI_DialogHotTextNumber::UI_DoMouseEvent(const MouseEvent& event) {
    const bool consumed = UI_HotTextNumber::UI_DoMouseEvent(event);
    WatchTyping();
    return consumed;
}

bool UI_DialogHotTextNumber::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    const bool consumed = UI_HotTextNumber::UI_DoKeyboardEvent(event);
    WatchTyping();
    return consumed;
}

void UI_DialogHotTextNumber::UI_DoDragEnd(bool cancelled) {
    UI_HotTextNumber::UI_DoDragEnd(cancelled);
    WatchTyping();
}

void UI_DialogHotTextNumber::WatchTyping() {
    UI_TextField* field = GetTextField();
    if (!field)
        return;
    // The same commit as the number's own, with the focus handed back afterwards.
    field->SetCommitFunction([this](const std::string& text) {
        const std::optional<double> value = ParseNumber(text);
        if (!value)
            return false;
        IntrusivePtr<UI_Node> keep(this);
        BeginInteractiveChange();
        SetValue(*value);
        ContinueInteractiveChange();
        FinishInteractiveChange();
        // The field closes after this returns and takes the focus with it: the dialog takes
        // it back on the next turn of the loop.
        UI_InstallTimer(0.001f, kRefocusTimer);
        return true;
    });
    // Runs once the field has closed.
    field->SetCancelFunction([this] {
        if (dialog_->GetWindow() && !dialog_->GetWindow()->GetFocusNode())
            dialog_->UI_RequestFocus();
    });
}

bool UI_DialogHotTextNumber::UI_DoTimerNotify(int timerId) {
    if (timerId != kRefocusTimer)
        return UI_HotTextNumber::UI_DoTimerNotify(timerId);
    UI_RemoveTimer(kRefocusTimer);
    if (dialog_->GetWindow() && !dialog_->GetWindow()->GetFocusNode())
        dialog_->UI_RequestFocus();
    return true;
}

} // namespace qorui
