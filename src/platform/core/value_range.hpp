#pragma once

#include "platform/core/checked_value.hpp"

#include <algorithm>

namespace qorcore {

/// A closed range `low` to `high`. The default (1, 0) is inverted on purpose: it means "unset".
/// An inverted range has length 0 and contains nothing.
template <class T>
struct value_range {
    T low = T(1);
    T high = T(0);

    constexpr value_range() = default;
    constexpr value_range(T lo, T hi) : low(lo), high(hi) {}

    constexpr bool is_set() const { return high >= low; }
    constexpr T length() const { return high >= low ? high - low : T(0); }
    constexpr T lesser() const { return high >= low ? low : high; }
    constexpr bool contains(T v) const { return v >= low && v <= high; }

    /// The value limited to the range, and whether it lay inside. An unset range, and NaN, leave
    /// the value as it is and report it outside.
    constexpr checked_value<T> clamp(T v) const {
        if (!is_set())
            return {v, false};
        if (v < low)
            return {low, false};
        if (v > high)
            return {high, false};
        return {v, v == v};
    }

    /// Ranges are equal when their lengths and lesser ends are: all inverted ranges with the same
    /// lesser end compare equal.
    friend constexpr bool operator==(const value_range& a, const value_range& b) {
        return a.length() == b.length() && a.lesser() == b.lesser();
    }
};

} // namespace qorcore
