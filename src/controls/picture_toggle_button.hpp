#pragma once

#include "platform/widgets/ui_picture_button.hpp"

namespace qoraudiofiltersui {

/// A two-state image button: it keeps a state and shows its down image while the state is on.
/// A press flips the state at once (one press, one toggle) and the changed listeners hear of it
/// in the same gesture; Space or Return toggles a focused button the same way.
class PictureToggleButton : public qorui::UI_PictureButton {
public:
    PictureToggleButton();

    bool GetState() const { return state_; }
    /// Stores the state and repaints, every time; nobody is told.
    void SetState(bool state);

    /// Going down flips the state; the down look itself is the base's.
    void SetDownState(bool down) override;
    /// The state, not the press, decides the image.
    bool IsShowingDownImage() const override { return state_; }

    bool UI_DoKeyboardEvent(const qorui::KeyboardEvent& event) override;

private:
    bool state_ = false;
};

} // namespace qoraudiofiltersui
