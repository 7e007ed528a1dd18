#include "platform/core/guid.hpp"

#include <cstdio>

namespace qorcore {

namespace {

int HexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Reads `digits` hex digits at `pos`; false if any is not a hex digit.
bool ReadHex(std::string_view text, std::size_t pos, int digits, std::uint64_t& out) {
    out = 0;
    for (int i = 0; i < digits; ++i) {
        const int v = HexValue(text[pos + i]);
        if (v < 0)
            return false;
        out = out * 16 + static_cast<std::uint64_t>(v);
    }
    return true;
}

} // namespace

std::optional<Guid> Guid::FromString(std::string_view text) {
    if (text.size() == 38 && text.front() == '{' && text.back() == '}')
        text = text.substr(1, 36);
    if (text.size() != 36 || text[8] != '-' || text[13] != '-' || text[18] != '-' ||
        text[23] != '-')
        return std::nullopt;
    std::uint64_t d1, d2, d3, d4a, d4b;
    if (!ReadHex(text, 0, 8, d1) || !ReadHex(text, 9, 4, d2) || !ReadHex(text, 14, 4, d3) ||
        !ReadHex(text, 19, 4, d4a) || !ReadHex(text, 24, 12, d4b))
        return std::nullopt;
    auto byte = [](std::uint64_t v, int shift) {
        return static_cast<std::uint8_t>(v >> shift);
    };
    return Guid(static_cast<std::uint32_t>(d1), static_cast<std::uint16_t>(d2),
                static_cast<std::uint16_t>(d3), byte(d4a, 8), byte(d4a, 0), byte(d4b, 40),
                byte(d4b, 32), byte(d4b, 24), byte(d4b, 16), byte(d4b, 8), byte(d4b, 0));
}

std::string Guid::AsString() const {
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X",
                  static_cast<unsigned>(data1_), static_cast<unsigned>(data2_),
                  static_cast<unsigned>(data3_), data4_[0], data4_[1], data4_[2], data4_[3],
                  data4_[4], data4_[5], data4_[6], data4_[7]);
    return buffer;
}

} // namespace qorcore
