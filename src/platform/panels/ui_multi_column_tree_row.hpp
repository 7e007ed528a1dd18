#pragma once

#include "platform/core/ref_counted_object.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qorui {

/// One row of a `UI_MultiColumnTree`: the texts its cells show by default and a tag for the
/// caller. Rows are made by the tree (`CreateAndAppendRow`); cell drawing callbacks read them.
class UI_MultiColumnTreeRow : public qorcore::RefCountedObject {
public:
    UI_MultiColumnTreeRow() = default;

    /// Columns past the end read as empty; setting one grows the row.
    void SetText(std::size_t column, std::string text);
    const std::string& GetText(std::size_t column) const;
    void SetTag(std::int64_t tag) { tag_ = tag; }
    std::int64_t GetTag() const { return tag_; }

private:
    std::vector<std::string> texts_;
    std::int64_t tag_ = 0;
};

namespace ui {
using ::qorui::UI_MultiColumnTreeRow;
}

} // namespace qorui
