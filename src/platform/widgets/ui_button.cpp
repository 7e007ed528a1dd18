#include "platform/widgets/ui_button.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"

namespace qorui {

UI_Button::UI_Button() {
    SetWantsKeyboardFocus(true);
}

void UI_Button::SetVariant(int variant) {
    components_.SetVariant(variant);
    EmitInvalidate();
}

bool UI_Button::IsSelectedLook() const {
    return behavior_ != kButtonBehaviorPush && !IsValueUnknown() && GetValue() >= 0.5;
}

void UI_Button::UI_DoClick(ModifierFlags) {
    switch (behavior_) {
    case kButtonBehaviorPush: break;
    case kButtonBehaviorToggle: SetValue(IsValueUnknown() || GetValue() < 0.5 ? 1.0 : 0.0); break;
    case kButtonBehaviorSetOn: SetValue(1.0); break;
    }
}

void UI_Button::ClickAndFinish(ModifierFlags modifiers) {
    IntrusivePtr<UI_Node> keep(this);
    const double before = GetValue();
    const bool unknownBefore = IsValueUnknown();
    UI_DoClick(modifiers);
    ContinueInteractiveChange(modifiers);
    const bool changed = GetValue() != before || IsValueUnknown() != unknownBefore;
    FinishInteractiveChange(modifiers);
    // A push button's value doesn't move: the click itself is the news.
    if (!changed)
        SendControlMessages();
}

void UI_Button::Click(ModifierFlags modifiers) {
    if (IsDisabled())
        return;
    BeginInteractiveChange(modifiers);
    ClickAndFinish(modifiers);
}

bool UI_Button::UI_DoMouseEvent(const MouseEvent& event) {
    UI_ControlView::UI_DoMouseEvent(event);
    if (passesPresses_)
        return false;
    if (!event.IsAction(PointerAction::kPress) || !event.IsButton(MouseButton::kLeft))
        return false;
    BeginInteractiveChange(event.GetModKey());
    SetDownState(true);
    clickedAtPress_ = false;
    if (notifyOnDown_) {
        clickedAtPress_ = true;
        SetDownState(false);
        ClickAndFinish(event.GetModKey());
        return true;
    }
    if (!BeginDrag(event)) {
        SetDownState(false);
        CancelInteractiveChange();
    }
    return true;
}

void UI_Button::UI_DoDragEvent(const MouseEvent& event) {
    if (clickedAtPress_)
        return;
    // The down look follows the pointer in and out, as the click would. Only changes are
    // passed on: a subclass may act on each new down state.
    const bool inside = GetBounds().Contains(event.GetPosition());
    if (inside != GetDownState())
        SetDownState(inside);
    if (event.IsAction(PointerAction::kRelease) && GetDownState()) {
        SetDownState(false);
        clickedAtPress_ = true;
        ClickAndFinish(event.GetModKey());
    }
}

void UI_Button::UI_DoDragEnd(bool cancelled) {
    if (clickedAtPress_)
        return;
    SetDownState(false);
    if (cancelled || IsInteractiveChangeInProgress())
        CancelInteractiveChange();
}

bool UI_Button::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    if (passesPresses_ || !HasFocus())
        return false;
    if (event.CompareShortcut(KeyboardCode::kSpace) ||
        event.CompareShortcut(KeyboardCode::kReturn) ||
        event.CompareShortcut(KeyboardCode::kKeypadEnter)) {
        if (!event.IsRepeat())
            Click(event.GetModKey());
        return true;
    }
    return false;
}

void UI_Button::DrawContent(Penrig*, const RectT<float>&) {}

void UI_Button::UI_Draw(Penrig* penrig) {
    const RectT<float> bounds = GetBounds();
    if (DrawsFace()) {
        skins::FaceState face;
        face.pressed = GetDownState();
        face.hovered = GetStateFlags().IsSet(kStateHovered);
        face.selected = IsSelectedLook() || components_.emphasized;
        face.enabled = !IsDisabled();
        face.focused = HasFocus() && !GetSuppressFocusDrawing();
        if (!components_.quiet || face.hovered || face.pressed || face.selected)
            skins::DrawButtonFace(*penrig, bounds, face);
    }
    DrawContent(penrig, bounds);
    UI_ControlView::UI_Draw(penrig);
}

} // namespace qorui
