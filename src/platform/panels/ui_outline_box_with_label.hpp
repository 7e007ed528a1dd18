#pragma once

#include "platform/draw/font.hpp"
#include "platform/ui/ui_sub_view.hpp"

#include <string>
#include <string_view>

namespace qorui {

/// An outline box with a caption set into its top edge. The frame starts half a caption's
/// height down, so controls inside begin below `GetContentTop()`.
class UI_OutlineBoxWithLabel : public UI_SubView {
public:
    explicit UI_OutlineBoxWithLabel(std::string label = {});

    void SetLabel(std::string_view label);
    const std::string& GetLabel() const { return label_; }
    void SetFont(const penrig::Font& font);
    /// Where the inside of the box begins, below the caption.
    float GetContentTop() const;

    void UI_Draw(Penrig* penrig) override;

private:
    std::string label_;
    penrig::Font font_;
};

namespace ui {
using ::qorui::UI_OutlineBoxWithLabel;
}

} // namespace qorui
