#pragma once

#include "platform/ui/mouse_event.hpp"
#include "platform/ui/ui_tool_tip.hpp"

#include <string>

namespace qorui {

/// The hover behaviour of a node's tool tip: a node keeps one of these and passes it its mouse
/// events. The tip appears after the delay while the pointer rests over the node, and goes on
/// leaving, pressing or scrolling. The node keeps handling its events as before.
class UI_ToolTipHover {
public:
    UI_ToolTipHover() = default;
    ~UI_ToolTipHover() { Close(); }
    UI_ToolTipHover(const UI_ToolTipHover&) = delete;
    UI_ToolTipHover& operator=(const UI_ToolTipHover&) = delete;

    /// An empty text shows no tip. A showing tip takes the new text at once.
    void SetText(std::string text);
    const std::string& GetText() const { return text_; }
    /// Negative or not-a-number throws std::invalid_argument.
    void SetDelay(double seconds);
    double GetDelay() const { return delay_; }

    /// Call from the owner's `UI_DoMouseEvent` with the event in the owner's coordinates.
    void HandleMouseEvent(UI_Node& owner, const MouseEvent& event);
    /// The tip, waiting or showing; null when there is none.
    UI_ToolTip* GetToolTip() const { return tip_.get(); }
    void Close();

private:
    std::string text_;
    double delay_ = UI_ToolTip::kDefaultDelaySeconds;
    IntrusivePtr<UI_ToolTip> tip_;
};

namespace ui {
using ::qorui::UI_ToolTipHover;
}

} // namespace qorui
