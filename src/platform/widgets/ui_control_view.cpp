#include "platform/widgets/ui_control_view.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"

#include <cmath>

namespace qorui {

UI_ControlView::UI_ControlView() = default;

void UI_ControlView::SetValue(double value) {
    if (!std::isfinite(value))
        return;
    if (value == value_ && !unknown_)
        return;
    StoreValue(value);
    EmitInvalidate();
}

void UI_ControlView::StoreValue(double value) {
    value_ = value;
    unknown_ = false;
}

void UI_ControlView::SetValueUnknown() {
    if (unknown_)
        return;
    unknown_ = true;
    EmitInvalidate();
}

void UI_ControlView::SetDownState(bool down) {
    if (down == down_)
        return;
    down_ = down;
    EmitInvalidate();
}

UI_ControlView::ControlState UI_ControlView::GetControlState() const {
    if (IsDisabled())
        return kControlStateDisabled;
    if (down_)
        return kControlStatePressed;
    if (GetStateFlags().IsSet(kStateHovered))
        return kControlStateHovered;
    return kControlStateNormal;
}

void UI_ControlView::NotifyWhenChanged(ChangedFunction handler) {
    kept_.push_back(changed_.Connect(std::move(handler)));
}

qorcore::Connection UI_ControlView::ConnectChanged(ChangedFunction handler) {
    return changed_.Connect(std::move(handler));
}

void UI_ControlView::SendControlMessages() {
    // A handler may drop the last reference to the control.
    IntrusivePtr<UI_Node> keep(this);
    changed_(UI_ControlChangedMessage(this));
}

void UI_ControlView::DrawFocusIfNeeded(Penrig* penrig, const RectT<float>& rect) const {
    if (HasFocus() && !suppressFocus_)
        skins::DrawFocusRing(*penrig, rect);
}

bool UI_ControlView::UI_DoMouseEvent(const MouseEvent& event) {
    // Hover changes the look of most controls.
    if (event.IsAction(PointerAction::kEnter) || event.IsAction(PointerAction::kLeave))
        EmitInvalidate();
    return false;
}

void UI_ControlView::UI_FocusChanged(bool) {
    // The focus ring lies just outside the control: redraw the parent's area around it.
    if (UI_Node* parent = GetParent())
        parent->EmitInvalidate(GetFrame().Inset(-3, -3));
    EmitInvalidate();
}

} // namespace qorui
