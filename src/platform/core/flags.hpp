#pragma once

#include <type_traits>

namespace qorcore {

/// A set of bits in an unsigned integer of type T, such as modifier keys or node state.
template <class T>
class Flags {
    static_assert(std::is_unsigned_v<T>, "Flags needs an unsigned integer type");

public:
    constexpr Flags() = default;
    constexpr Flags(T bits) : bits_(bits) {}

    constexpr T GetValue() const { return bits_; }
    /// True when every bit of `mask` is set (an empty mask is always set).
    constexpr bool IsSet(T mask) const { return (bits_ & mask) == mask; }
    constexpr bool IsAnySet(T mask) const { return (bits_ & mask) != 0; }
    constexpr bool IsEmpty() const { return bits_ == 0; }

    constexpr Flags& Set(T mask, bool on = true) {
        bits_ = on ? static_cast<T>(bits_ | mask) : static_cast<T>(bits_ & ~mask);
        return *this;
    }
    constexpr Flags& Clear(T mask) { return Set(mask, false); }
    constexpr Flags& Toggle(T mask) {
        bits_ = static_cast<T>(bits_ ^ mask);
        return *this;
    }

    constexpr Flags operator|(Flags o) const { return Flags(static_cast<T>(bits_ | o.bits_)); }
    constexpr Flags operator&(Flags o) const { return Flags(static_cast<T>(bits_ & o.bits_)); }
    friend constexpr bool operator==(Flags, Flags) = default;

private:
    T bits_ = 0;
};

} // namespace qorcore
