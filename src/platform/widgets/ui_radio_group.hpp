#pragma once

#include "platform/widgets/ui_radio_button.hpp"

#include <vector>

namespace qorui {

/// Radio buttons that exclude each other. The group's value is the index of the button that is
/// on, -1 for none. A click on a button turns the others off and sends the group's changed
/// message (also when the button was on already: the click is the choice).
class UI_RadioGroup : public UI_ControlView {
public:
    UI_RadioGroup();

    /// Adds the button as a child and as the next choice; returns its index.
    std::size_t AddRadioButton(IntrusivePtr<UI_RadioButton> button);
    std::size_t GetRadioButtonCount() const { return buttons_.size(); }
    /// Null past the end.
    UI_RadioButton* GetRadioButtonAt(std::size_t index) const;

    using UI_ControlView::SetValue;
    /// Turns on the button of that index; any other index turns all off and the value to -1.
    void SetValue(double index) override;

    /// Moves the choice with the arrow keys while a button of the group has the focus.
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;

private:
    void Chosen(UI_RadioButton* button);

    std::vector<IntrusivePtr<UI_RadioButton>> buttons_;
};

namespace ui {
using ::qorui::UI_RadioGroup;
}

} // namespace qorui
