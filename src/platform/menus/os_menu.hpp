#pragma once

#include <memory>
#include <string>
#include <vector>

namespace qorui {

/// The items of a pop-up menu: commands with identifiers above zero (0 is the answer "nothing
/// chosen"), separators, check marks and disabled items. It holds no window state; run it with
/// `UI_DoContextMenu`.
class OS_Menu {
public:
    struct Item {
        int id = 0; ///< 0 for a separator
        std::string text;
        bool enabled = true;
        bool checked = false;
        bool IsSeparator() const { return id == 0; }
    };

    /// Appends a command. An identifier not above zero, or one already in the menu, throws
    /// std::invalid_argument.
    void AppendItem(int id, std::string text, bool enabled = true, bool checked = false);
    void AppendSeparator();
    /// Both return false when no item has the identifier.
    bool SetItemChecked(int id, bool checked);
    bool SetItemEnabled(int id, bool enabled);
    void RemoveAllItems() { items_.clear(); }

    std::size_t GetItemCount() const { return items_.size(); }
    const Item& GetItem(std::size_t index) const { return items_.at(index); }
    const std::vector<Item>& GetItems() const { return items_; }
    /// The index of the item with the identifier, or -1.
    int FindItem(int id) const;
    /// Whether any enabled command is in the menu.
    bool HasEnabledItem() const;

private:
    std::vector<Item> items_;
};

std::unique_ptr<OS_Menu> CreateOSMenu();

} // namespace qorui
