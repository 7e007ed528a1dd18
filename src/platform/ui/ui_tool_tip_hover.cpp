#include "platform/ui/ui_tool_tip_hover.hpp"

#include <cmath>
#include <stdexcept>

namespace qorui {

void UI_ToolTipHover::SetText(std::string text) {
    text_ = std::move(text);
    if (text_.empty())
        Close();
    else if (tip_)
        tip_->SetText(text_);
}

void UI_ToolTipHover::SetDelay(double seconds) {
    if (!(seconds >= 0.0) || !std::isfinite(seconds))
        throw std::invalid_argument("UI_ToolTipHover::SetDelay: the delay must be a number >= 0");
    delay_ = seconds;
}

void UI_ToolTipHover::HandleMouseEvent(UI_Node& owner, const MouseEvent& event) {
    switch (event.GetAction()) {
    case PointerAction::kEnter:
    case PointerAction::kMove:
        if (text_.empty() || !owner.GetWindow())
            return;
        if (!tip_ || !tip_->GetWindow()) {
            tip_ = CreateUI_ToolTip(&owner, text_, event.GetPosition(), delay_);
        } else if (!tip_->IsShowing()) {
            // Still waiting: the tip will hang from where the pointer rests.
            tip_->SetAnchor(owner.UI_LocalToGlobalF(event.GetPosition()));
        }
        return;
    case PointerAction::kLeave:
    case PointerAction::kPress:
    case PointerAction::kWheel: Close(); return;
    default: return;
    }
}

void UI_ToolTipHover::Close() {
    if (tip_) {
        tip_->Close();
        tip_ = nullptr;
    }
}

} // namespace qorui
