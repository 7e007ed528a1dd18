#include "platform/widgets/ui_radio_group.hpp"

#include <cmath>

namespace qorui {

UI_RadioGroup::UI_RadioGroup() {
    StoreValue(-1.0);
}

std::size_t UI_RadioGroup::AddRadioButton(IntrusivePtr<UI_RadioButton> button) {
    if (!button)
        throw std::invalid_argument("UI_RadioGroup::AddRadioButton: null button");
    UI_RadioButton* raw = button.get();
    buttons_.push_back(button);
    ChildPushBack(button);
    raw->SetValue(0.0);
    // The button lives no longer than the group that holds it, so the raw pointers are safe.
    raw->NotifyWhenChanged([this, raw](const UI_ControlChangedMessage&) { Chosen(raw); });
    return buttons_.size() - 1;
}

UI_RadioButton* UI_RadioGroup::GetRadioButtonAt(std::size_t index) const {
    return index < buttons_.size() ? buttons_[index].get() : nullptr;
}

void UI_RadioGroup::SetValue(double index) {
    if (!std::isfinite(index))
        return;
    const double chosen = index >= 0 && index < double(buttons_.size()) ? std::floor(index) : -1.0;
    for (std::size_t i = 0; i < buttons_.size(); ++i)
        buttons_[i]->SetValue(double(i) == chosen ? 1.0 : 0.0);
    UI_ControlView::SetValue(chosen);
}

void UI_RadioGroup::Chosen(UI_RadioButton* button) {
    for (std::size_t i = 0; i < buttons_.size(); ++i)
        if (buttons_[i].get() == button) {
            SetValue(double(i));
            SendControlMessages();
            return;
        }
}

bool UI_RadioGroup::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    const bool next =
        event.CompareShortcut(KeyboardCode::kDown) || event.CompareShortcut(KeyboardCode::kRight);
    const bool previous =
        event.CompareShortcut(KeyboardCode::kUp) || event.CompareShortcut(KeyboardCode::kLeft);
    if ((!next && !previous) || buttons_.empty())
        return false;
    const long count = long(buttons_.size());
    long index = long(GetValue());
    index = index < 0 ? (next ? 0 : count - 1) : (index + (next ? 1 : -1) + count) % count;
    for (long tries = 0; tries < count && buttons_[std::size_t(index)]->IsDisabled(); ++tries)
        index = (index + (next ? 1 : -1) + count) % count;
    UI_RadioButton* button = buttons_[std::size_t(index)].get();
    if (button->IsDisabled())
        return true;
    button->UI_RequestFocus();
    button->Click();
    return true;
}

} // namespace qorui
