#pragma once

#include "platform/widgets/ui_hot_text_number.hpp"

namespace qorui {

/// A hot text number inside a modal dialog. Its text field lives in the window's root, so when
/// typing ends the keyboard focus would be lost and Return and Escape would no longer reach the
/// dialog; this number gives the focus back to the dialog once the field has closed. Tab in
/// its field commits and opens typing in the dialog's next number (Shift-Tab: the previous),
/// as a form does.
class UI_DialogHotTextNumber : public UI_HotTextNumber {
public:
    /// `dialog` gets the focus back; it must outlive the number (it is normally its parent).
    explicit UI_DialogHotTextNumber(UI_Node* dialog);

    /// Opens typing as `BeginTyping` does and keeps the focus with the dialog afterwards.
    bool BeginDialogTyping();

    bool UI_DoMouseEvent(const MouseEvent& event) override;
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;
    bool UI_DoTimerNotify(int timerId) override;

protected:
    /// A click without a drag opens typing here.
    void UI_DoDragEnd(bool cancelled) override;

private:
    void WatchTyping();
    /// The enabled dialog number after (or before) this one among the dialog's children,
    /// wrapping; null when this is the only one.
    UI_DialogHotTextNumber* Neighbour(bool forward) const;

    UI_Node* dialog_;
    /// Where typing goes once the field has closed; null: the focus goes to the dialog.
    IntrusivePtr<UI_DialogHotTextNumber> typeNext_;
};

} // namespace qorui
