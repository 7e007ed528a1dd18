#include "platform/panels/ui_multi_column_tree_row.hpp"

namespace qorui {

void UI_MultiColumnTreeRow::SetText(std::size_t column, std::string text) {
    if (column >= texts_.size())
        texts_.resize(column + 1);
    texts_[column] = std::move(text);
}

const std::string& UI_MultiColumnTreeRow::GetText(std::size_t column) const {
    static const std::string kEmpty;
    return column < texts_.size() ? texts_[column] : kEmpty;
}

} // namespace qorui
