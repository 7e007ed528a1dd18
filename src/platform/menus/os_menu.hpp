#pragma once

#include "platform/core/intrusive_ptr.hpp"
#include "platform/draw/image.hpp"

#include <memory>
#include <string>
#include <vector>

namespace qorui {

/// The items of a pop-up menu: commands with identifiers above zero (0 is the answer "nothing
/// chosen"), separators, check marks, pictures and disabled items. It holds no window state;
/// run it with `UI_DoContextMenu`.
class OS_Menu {
public:
    struct Item {
        int id = 0; ///< 0 for a separator
        std::string text;
        bool enabled = true;
        bool checked = false;
        /// Drawn in the icon column before the text; null for none.
        qorcore::IntrusivePtr<penrig::Image> icon;
        bool IsSeparator() const { return id == 0; }
    };

    /// How the rows are measured. A size that is zero, negative or not finite takes the look's
    /// own; very large ones are cut to a sane bound.
    struct Style {
        float itemHeight = 0.0f;
        float fontSize = 0.0f; ///< of the item text, in logical pixels
        float checkColumnWidth = 0.0f;
        /// Without one the column is as wide as the widest icon and 4 more, and is left out
        /// when no item has an icon.
        float iconColumnWidth = 0.0f;
        bool iconSeparator = false; ///< a line between the icon column and the text
        /// The same style with its sizes made valid (0 for the look's own).
        Style Sanitized() const;
        /// The icon column's width for items whose widest icon is `widestIcon` (0 for none).
        float IconColumnWidth(float widestIcon) const;
    };

    /// Appends a command. An identifier not above zero, or one already in the menu, throws
    /// std::invalid_argument.
    void AppendItem(int id, std::string text, bool enabled = true, bool checked = false);
    void AppendSeparator();
    /// These return false when no item has the identifier.
    bool SetItemChecked(int id, bool checked);
    bool SetItemEnabled(int id, bool enabled);
    bool SetItemIcon(int id, qorcore::IntrusivePtr<penrig::Image> icon);
    void RemoveAllItems() { items_.clear(); }

    void SetStyle(const Style& style) { style_ = style.Sanitized(); }
    const Style& GetStyle() const { return style_; }
    /// Typing while the menu is open moves the highlight to the first item that starts with
    /// what was typed.
    void SetSearchable(bool searchable) { searchable_ = searchable; }
    bool IsSearchable() const { return searchable_; }

    std::size_t GetItemCount() const { return items_.size(); }
    const Item& GetItem(std::size_t index) const { return items_.at(index); }
    const std::vector<Item>& GetItems() const { return items_; }
    /// The index of the item with the identifier, or -1.
    int FindItem(int id) const;
    /// Whether any enabled command is in the menu.
    bool HasEnabledItem() const;
    /// The width of the icon column by the style and the items' icons; 0 for none.
    float GetIconColumnWidth() const;

private:
    std::vector<Item> items_;
    Style style_;
    bool searchable_ = false;
};

std::unique_ptr<OS_Menu> CreateOSMenu();

} // namespace qorui
