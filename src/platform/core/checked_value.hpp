#pragma once

namespace qorcore {

/// A value and whether it lay inside the range that was asked about. Mapping functions return
/// it instead of failing: a value outside is still given (clamped or not, as the function says).
template <class T>
struct checked_value {
    T value{};
    bool valid = false;

    constexpr checked_value() = default;
    constexpr checked_value(T v, bool inside) : value(v), valid(inside) {}

    constexpr explicit operator bool() const { return valid; }
    friend constexpr bool operator==(const checked_value&, const checked_value&) = default;
};

} // namespace qorcore
