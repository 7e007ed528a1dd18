#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <utility>

namespace vorlen {

/// An immutable table of (key, value) rows, sorted once at first use and searched by binary
/// search. Used for the engine's built-in tables.
template <typename Key, typename Value, std::size_t N, typename Compare = std::less<Key>>
class static_table {
public:
    using entry_type = std::pair<Key, Value>;

    constexpr explicit static_table(const std::array<entry_type, N>& rows, Compare compare = {})
        : rows_m(rows), compare_m(compare) {}

    void sort() {
        std::sort(rows_m.begin(), rows_m.end(), [this](const entry_type& a, const entry_type& b) {
            return compare_m(a.first, b.first);
        });
    }

    /// The row for `key`, or null.
    const Value* find_if(const Key& key) const {
        auto found = std::lower_bound(
            rows_m.begin(), rows_m.end(), key,
            [this](const entry_type& row, const Key& k) { return compare_m(row.first, k); });
        if (found == rows_m.end() || compare_m(key, found->first))
            return nullptr;
        return &found->second;
    }

    const Value& find(const Key& key) const {
        if (const Value* value = find_if(key))
            return *value;
        throw std::logic_error("static_table key not found");
    }

    const std::array<entry_type, N>& rows() const noexcept { return rows_m; }

private:
    std::array<entry_type, N> rows_m;
    Compare compare_m;
};

} // namespace vorlen
