#pragma once

#include "platform/draw/font.hpp"
#include "platform/draw/image.hpp"
#include "platform/menus/os_menu.hpp"
#include "platform/widgets/ui_button.hpp"

#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace qorui {

/// A button that shows the chosen item of a list and opens the list as a menu when pressed.
/// The value is the chosen item's index, -1 when none. An item "-" is a separator. Choosing
/// from the menu, or Up and Down on a focused popup, is one interactive change; the changed
/// message follows when the choice changed (or always, with `SetAlwaysNotify`).
///
/// Items may carry a picture, drawn in an icon column before the text in the menu and in the
/// closed popup. A command item is never the value: choosing it leaves the value as it was and
/// calls the command handler instead.
class UI_Popup : public UI_Button {
public:
    /// Which items the natural width is made for.
    enum class Measure { kWidestItem, kFirstItem };
    static constexpr float kNoLimit = std::numeric_limits<float>::infinity();

    UI_Popup();

    // Items
    void AddItem(std::string text);
    /// New items, without pictures and commands.
    void SetItems(std::vector<std::string> items);
    void DeleteAllItems();
    std::size_t GetItemCount() const { return items_.size(); }
    /// Empty past the end.
    std::string GetItemText(std::size_t index) const;
    const std::vector<std::string>& GetItems() const { return items_; }
    static bool IsSeparator(std::string_view text) { return text == "-"; }
    /// Null clears the picture; an index past the end does nothing.
    void SetItemIcon(std::size_t index, IntrusivePtr<penrig::Image> icon);
    /// Null for none and past the end.
    const penrig::Image* GetItemIcon(std::size_t index) const;
    /// Makes an item a command (or an item to choose again). A chosen item that becomes a
    /// command leaves the value -1.
    void SetItemCommand(std::size_t index, bool command);
    bool IsItemCommand(std::size_t index) const;
    /// Called with the index of a command item the user chose.
    void SetCommandHandler(std::function<void(int index)> handler);

    // Value
    using UI_Button::SetValue;
    /// An index that names no choosable item makes the value -1.
    void SetValue(double index) override;
    int GetSelectedIndex() const { return int(GetValue()); }
    /// Chooses the first item with exactly this text; -1 and false when none has it.
    bool SetValueString(std::string_view text);
    /// The chosen item's text; empty when none is chosen.
    std::string GetValueString() const;
    /// What the closed popup shows: the chosen item's text, "--" for an unknown value, else
    /// the custom item's text, else the placeholder.
    std::string GetDisplayedText() const;

    // Behaviour and look
    /// The menu marks the chosen item with a check.
    void SetCheckStyle(bool check) { checkStyle_ = check; }
    bool GetCheckStyle() const { return checkStyle_; }
    void SetAlwaysNotify(bool always) { alwaysNotify_ = always; }
    void SetDrawDivider(bool draw);
    void SetFont(const penrig::Font& font);
    const penrig::Font& GetFont() const { return font_; }
    /// What shows when nothing is chosen.
    void SetPlaceholder(std::string text);
    /// With a text, a value of no item shows it, and the menu ends with a separator and a
    /// disabled, checked row of it; empty for none.
    void SetCustomItemText(std::string text);
    /// The rows of the menu; its icon column width is also the closed popup's.
    void SetMenuStyle(const OS_Menu::Style& style);
    const OS_Menu::Style& GetMenuStyle() const { return menuStyle_; }
    /// Typing in the open menu moves to the item that starts with what was typed.
    void SetSearchable(bool searchable) { searchable_ = searchable; }

    /// The width that shows the widest item (or the first choosable one) whole, with the icon
    /// column, the arrow and the padding; the custom item counts as an item. Text wider than
    /// `maxTextWidth` counts as that wide and shows cut with an ellipsis.
    float GetBestWidth(Measure measure = Measure::kWidestItem, float maxTextWidth = kNoLimit) const;

    /// Opens the menu under the popup and applies the choice; the index chosen, or -1 when the
    /// menu was cancelled or the popup is in no window.
    int OpenMenu();
    /// Chooses an item as the user would, with the change messages (or the command).
    void ChooseItem(int index, ModifierFlags modifiers = {});

    bool UI_DoMouseEvent(const MouseEvent& event) override;
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;

protected:
    void DrawContent(Penrig* penrig, const RectT<float>& rect) override;

private:
    struct ItemExtras {
        IntrusivePtr<penrig::Image> icon;
        bool command = false;
    };

    bool IsChoosable(int index) const;
    bool IsValueItem(int index) const;
    float GetIconColumnWidth() const;

    std::vector<std::string> items_;
    std::vector<ItemExtras> extras_; // one for each item
    std::function<void(int)> commandHandler_;
    std::string placeholder_;
    std::string customText_;
    penrig::Font font_;
    OS_Menu::Style menuStyle_;
    bool checkStyle_ = true;
    bool alwaysNotify_ = false;
    bool drawDivider_ = true;
    bool searchable_ = false;
    bool menuOpen_ = false;
};

namespace ui {
using ::qorui::UI_Popup;
}

} // namespace qorui
