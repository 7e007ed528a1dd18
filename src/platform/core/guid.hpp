#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace qorcore {

/// A 128-bit identifier in the classic four-part layout. Its text form is the 36-character upper
/// case "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX", which is how effects are keyed in registries.
class Guid {
public:
    constexpr Guid() = default;
    constexpr Guid(std::uint32_t data1, std::uint16_t data2, std::uint16_t data3, std::uint8_t b0,
                   std::uint8_t b1, std::uint8_t b2, std::uint8_t b3, std::uint8_t b4,
                   std::uint8_t b5, std::uint8_t b6, std::uint8_t b7)
        : data1_(data1), data2_(data2), data3_(data3), data4_{b0, b1, b2, b3, b4, b5, b6, b7} {}

    /// Reads the text form, upper or lower case, with or without surrounding braces. Anything
    /// else gives no value.
    static std::optional<Guid> FromString(std::string_view text);

    std::string AsString() const;
    constexpr bool IsNull() const { return *this == Guid(); }

    constexpr std::uint32_t GetData1() const { return data1_; }
    constexpr std::uint16_t GetData2() const { return data2_; }
    constexpr std::uint16_t GetData3() const { return data3_; }
    constexpr const std::array<std::uint8_t, 8>& GetData4() const { return data4_; }

    friend constexpr bool operator==(const Guid&, const Guid&) = default;
    friend constexpr auto operator<=>(const Guid&, const Guid&) = default;

private:
    std::uint32_t data1_ = 0;
    std::uint16_t data2_ = 0;
    std::uint16_t data3_ = 0;
    std::array<std::uint8_t, 8> data4_{};
};

namespace utility {
using ::qorcore::Guid;
}

} // namespace qorcore

template <>
struct std::hash<qorcore::Guid> {
    std::size_t operator()(const qorcore::Guid& g) const noexcept {
        std::size_t h =
            g.GetData1() ^ (std::size_t(g.GetData2()) << 32) ^ (std::size_t(g.GetData3()) << 48);
        for (auto b : g.GetData4())
            h = h * 131 + b;
        return h;
    }
};
