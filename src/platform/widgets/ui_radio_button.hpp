#pragma once

#include "platform/widgets/ui_checkbox.hpp"

namespace qorui {

/// One choice of several: a click turns it on (value 1) and never off; the other choices are
/// turned off by their `UI_RadioGroup` or by the code that listens.
class UI_RadioButton : public UI_Checkbox {
public:
    explicit UI_RadioButton(std::string text = {});

    /// Drawn as a push button that stays down while chosen, the caption centred on it; a row
    /// of them reads as one segmented switch.
    void SetButtonStyle(bool buttonStyle);
    bool GetButtonStyle() const { return buttonStyle_; }
    /// The width the button style needs for its caption.
    float GetButtonStyleWidth() const;

protected:
    void DrawContent(Penrig* penrig, const RectT<float>& rect) override;

private:
    void DrawButtonStyle(Penrig* penrig);

    bool buttonStyle_ = false;
};

namespace ui {
using ::qorui::UI_RadioButton;
}

} // namespace qorui
