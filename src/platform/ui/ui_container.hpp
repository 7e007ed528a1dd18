#pragma once

#include "platform/core/color_rgba.hpp"
#include "platform/ui/ui_node.hpp"

#include <optional>

namespace qorui {

/// A node that groups children over an optional background and border.
class UI_Container : public UI_Node {
public:
    void SetBackgroundColor(std::optional<qorcore::ColorRGBA> color);
    const std::optional<qorcore::ColorRGBA>& GetBackgroundColor() const { return background_; }
    /// A one-pixel border just inside the bounds, drawn over the children.
    void SetBorderColor(std::optional<qorcore::ColorRGBA> color);
    const std::optional<qorcore::ColorRGBA>& GetBorderColor() const { return border_; }

    void UI_Draw(Penrig* penrig) override;

private:
    std::optional<qorcore::ColorRGBA> background_;
    std::optional<qorcore::ColorRGBA> border_;
};

namespace ui {
using ::qorui::UI_Container;
}

} // namespace qorui
