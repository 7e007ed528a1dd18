#pragma once

#include "platform/draw/font.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/widgets/ui_interactive_control_view.hpp"

#include <string>
#include <string_view>

namespace qorui {

/// Text that is itself a control: it reads as text, with a dotted underline that says it can
/// be dragged or clicked. Subclasses say what it shows; a text label (a unit) may follow.
class UI_HotText : public UI_InteractiveControlView {
public:
    UI_HotText();

    void SetFontSize(float size);
    float GetFontSize() const { return font_.size; }
    const penrig::Font& GetFont() const { return font_; }
    /// A unit shown after the text, in the same font.
    void SetTextLabel(std::string_view label);
    const std::string& GetTextLabel() const { return label_; }
    void SetAlignment(penrig::HorizontalAlignment alignment);
    penrig::HorizontalAlignment GetAlignment() const { return alignment_; }

    /// What the control shows now, without the label.
    virtual std::string GetDisplayString() const = 0;
    /// The width of the text and label, measured without a window.
    float GetTextWidth() const;

    void UI_Draw(Penrig* penrig) override;

private:
    penrig::Font font_;
    std::string label_;
    penrig::HorizontalAlignment alignment_ = penrig::HorizontalAlignment::kRight;
};

namespace ui {
using ::qorui::UI_HotText;
}

} // namespace qorui
