#include "platform/menus/os_menu.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace qorui {

namespace {
constexpr float kMaxExtent = 1000.0f; // no menu row or column is wider than a screen
constexpr float kMaxFontSize = 200.0f;
constexpr float kIconColumnPadding = 4.0f;

float Valid(float size, float limit) {
    return std::isfinite(size) && size > 0.0f ? std::min(size, limit) : 0.0f;
}
} // namespace

OS_Menu::Style OS_Menu::Style::Sanitized() const {
    Style style = *this;
    style.itemHeight = Valid(itemHeight, kMaxExtent);
    style.fontSize = Valid(fontSize, kMaxFontSize);
    style.checkColumnWidth = Valid(checkColumnWidth, kMaxExtent);
    style.iconColumnWidth = Valid(iconColumnWidth, kMaxExtent);
    return style;
}

float OS_Menu::Style::IconColumnWidth(float widestIcon) const {
    if (iconColumnWidth > 0.0f)
        return iconColumnWidth;
    return widestIcon > 0.0f ? std::ceil(widestIcon) + kIconColumnPadding : 0.0f;
}

void OS_Menu::AppendItem(int id, std::string text, bool enabled, bool checked) {
    if (id <= 0)
        throw std::invalid_argument("OS_Menu::AppendItem: identifier " + std::to_string(id) +
                                    " is not above zero");
    if (FindItem(id) >= 0)
        throw std::invalid_argument("OS_Menu::AppendItem: identifier " + std::to_string(id) +
                                    " is already in the menu");
    items_.push_back({id, std::move(text), enabled, checked, {}});
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

bool OS_Menu::SetItemIcon(int id, qorcore::IntrusivePtr<penrig::Image> icon) {
    const int index = FindItem(id);
    if (index < 0)
        return false;
    items_[std::size_t(index)].icon = std::move(icon);
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

float OS_Menu::GetIconColumnWidth() const {
    float widest = 0.0f;
    for (const Item& item : items_)
        if (item.icon)
            widest = std::max(widest, item.icon->GetWidth());
    return style_.IconColumnWidth(widest);
}

std::unique_ptr<OS_Menu> CreateOSMenu() {
    return std::make_unique<OS_Menu>();
}

} // namespace qorui
