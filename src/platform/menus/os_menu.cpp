#include "platform/menus/os_menu.hpp"

#include <algorithm>
#include <stdexcept>

namespace qorui {

void OS_Menu::AppendItem(int id, std::string text, bool enabled, bool checked) {
    if (id <= 0)
        throw std::invalid_argument("OS_Menu::AppendItem: identifier " + std::to_string(id) +
                                    " is not above zero");
    if (FindItem(id) >= 0)
        throw std::invalid_argument("OS_Menu::AppendItem: identifier " + std::to_string(id) +
                                    " is already in the menu");
    items_.push_back({id, std::move(text), enabled, checked});
}

void OS_Menu::AppendSeparator() {
    items_.push_back({});
}

bool OS_Menu::SetItemChecked(int id, bool checked) {
    const int index = FindItem(id);
    if (index < 0)
        return false;
    items_[std::size_t(index)].checked = checked;
    return true;
}

bool OS_Menu::SetItemEnabled(int id, bool enabled) {
    const int index = FindItem(id);
    if (index < 0)
        return false;
    items_[std::size_t(index)].enabled = enabled;
    return true;
}

int OS_Menu::FindItem(int id) const {
    if (id <= 0)
        return -1;
    for (std::size_t i = 0; i < items_.size(); ++i)
        if (items_[i].id == id)
            return int(i);
    return -1;
}

bool OS_Menu::HasEnabledItem() const {
    return std::any_of(items_.begin(), items_.end(),
                       [](const Item& item) { return !item.IsSeparator() && item.enabled; });
}

std::unique_ptr<OS_Menu> CreateOSMenu() {
    return std::make_unique<OS_Menu>();
}

} // namespace qorui
