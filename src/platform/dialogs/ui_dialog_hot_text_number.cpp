#include "platform/dialogs/ui_dialog_hot_text_number.hpp"

#include "platform/ui/ui_window.hpp"

#include <algorithm>
#include <vector>

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
        IntrusivePtr<UI_Node> keep(this);
        if (!CommitTyped(text))
            return false;
        // The field closes after this returns and takes the focus with it: the dialog takes
        // it back on the next turn of the loop.
        UI_InstallTimer(0.001f, kRefocusTimer);
        return true;
    });
    field->SetTabFunction([this](bool forward) {
        typeNext_ = Neighbour(forward);
        UI_InstallTimer(0.001f, kRefocusTimer);
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
    const IntrusivePtr<UI_DialogHotTextNumber> next = std::move(typeNext_);
    if (next && next->GetWindow() && next->BeginDialogTyping())
        return true;
    if (dialog_->GetWindow() && !dialog_->GetWindow()->GetFocusNode())
        dialog_->UI_RequestFocus();
    return true;
}

UI_DialogHotTextNumber* UI_DialogHotTextNumber::Neighbour(bool forward) const {
    std::vector<UI_DialogHotTextNumber*> numbers;
    for (const auto& child : dialog_->GetChildren())
        if (auto* number = dynamic_cast<UI_DialogHotTextNumber*>(child.get());
            number && (number == this || number->IsEnabledInTree()))
            numbers.push_back(number);
    const auto at = std::find(numbers.begin(), numbers.end(), this);
    if (numbers.size() < 2 || at == numbers.end())
        return nullptr;
    const std::size_t i = std::size_t(at - numbers.begin());
    return numbers[forward ? (i + 1) % numbers.size() : (i + numbers.size() - 1) % numbers.size()];
}

} // namespace qorui
