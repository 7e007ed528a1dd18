#pragma once

#include "platform/core/flags.hpp"

#include <cstdint>

namespace qorui {

/// Bits of the modifier keys in `Flags<unsigned char>`. On this platform the command key of
/// shortcuts is Control.
namespace ModifierKey {
constexpr std::uint8_t kNone = 0;
constexpr std::uint8_t kShift = 1;
constexpr std::uint8_t kControl = 2;
constexpr std::uint8_t kAlt = 4;
constexpr std::uint8_t kMeta = 8;
constexpr std::uint8_t kCommand = kControl;
} // namespace ModifierKey

using ModifierFlags = qorcore::Flags<std::uint8_t>;

} // namespace qorui
