#include "controls/picture_toggle_button.hpp"

namespace qoraudiofiltersui {

PictureToggleButton::PictureToggleButton() {
    // The click comes with the press, so that the listeners hear of the toggle as it happens,
    // and a pointer dragged off and back on can't toggle a second time.
    SetNotificationOnMouseDown(true);
}

void PictureToggleButton::SetState(bool state) {
    state_ = state;
    EmitInvalidate();
}

void PictureToggleButton::SetDownState(bool down) {
    if (down) {
        state_ = !state_;
        EmitInvalidate();
    }
    UI_PictureButton::SetDownState(down);
}

bool PictureToggleButton::UI_DoKeyboardEvent(const qorui::KeyboardEvent& event) {
    // The keys click the button without pressing it: press it here, as the pointer would.
    const bool clickKey = event.CompareShortcut(qorui::KeyboardCode::kSpace) ||
                          event.CompareShortcut(qorui::KeyboardCode::kReturn) ||
                          event.CompareShortcut(qorui::KeyboardCode::kKeypadEnter);
    if (clickKey && HasFocus() && !GetPassesPressesToParent() && !event.IsRepeat() &&
        !IsDisabled()) {
        SetDownState(true);
        SetDownState(false);
    }
    return UI_PictureButton::UI_DoKeyboardEvent(event);
}

} // namespace qoraudiofiltersui
