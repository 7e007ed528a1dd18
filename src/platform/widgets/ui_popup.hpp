#pragma once

#include "platform/draw/font.hpp"
#include "platform/widgets/ui_button.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace qorui {

/// A button that shows the chosen item of a list and opens the list as a menu when pressed.
/// The value is the chosen item's index, -1 when none. An item "-" is a separator. Choosing
/// from the menu, or Up and Down on a focused popup, is one interactive change; the changed
/// message follows when the choice changed (or always, with `SetAlwaysNotify`).
class UI_Popup : public UI_Button {
public:
    UI_Popup();

    // Items
    void AddItem(std::string text);
    void SetItems(std::vector<std::string> items);
    void DeleteAllItems();
    std::size_t GetItemCount() const { return items_.size(); }
    /// Empty past the end.
    std::string GetItemText(std::size_t index) const;
    const std::vector<std::string>& GetItems() const { return items_; }
    static bool IsSeparator(std::string_view text) { return text == "-"; }

    // Value
    using UI_Button::SetValue;
    /// An index that names no choosable item makes the value -1.
    void SetValue(double index) override;
    int GetSelectedIndex() const { return int(GetValue()); }
    /// Chooses the first item with exactly this text; -1 and false when none has it.
    bool SetValueString(std::string_view text);
    /// The chosen item's text; empty when none is chosen.
    std::string GetValueString() const;

    // Behaviour and look
    /// The menu marks the chosen item with a check.
    void SetCheckStyle(bool check) { checkStyle_ = check; }
    bool GetCheckStyle() const { return checkStyle_; }
    void SetAlwaysNotify(bool always) { alwaysNotify_ = always; }
    void SetDrawDivider(bool draw);
    void SetFont(const penrig::Font& font);
    /// What shows when nothing is chosen.
    void SetPlaceholder(std::string text);

    /// Opens the menu under the popup and applies the choice; the index chosen, or -1 when the
    /// menu was cancelled or the popup is in no window.
    int OpenMenu();
    /// Chooses an item as the user would, with the change messages.
    void ChooseItem(int index, ModifierFlags modifiers = {});

    bool UI_DoMouseEvent(const MouseEvent& event) override;
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;

protected:
    void DrawContent(Penrig* penrig, const RectT<float>& rect) override;

private:
    bool IsChoosable(int index) const;

    std::vector<std::string> items_;
    std::string placeholder_;
    penrig::Font font_;
    bool checkStyle_ = true;
    bool alwaysNotify_ = false;
    bool drawDivider_ = true;
    bool menuOpen_ = false;
};

namespace ui {
using ::qorui::UI_Popup;
}

} // namespace qorui
