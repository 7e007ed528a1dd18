#pragma once

#include "platform/widgets/ui_checkbox.hpp"

namespace qorui {

/// One choice of several: a click turns it on (value 1) and never off; the other choices are
/// turned off by their `UI_RadioGroup` or by the code that listens.
class UI_RadioButton : public UI_Checkbox {
public:
    explicit UI_RadioButton(std::string text = {});

protected:
    void DrawContent(Penrig* penrig, const RectT<float>& rect) override;
};

namespace ui {
using ::qorui::UI_RadioButton;
}

} // namespace qorui
