#pragma once

#include <charconv>
#include <cmath>
#include <string_view>

namespace qafui::cli {

/// A finite number written whole, as options and event scripts take them: "0.5", "-6", "1e3";
/// false for anything else ("nan", "1x", "").
inline bool read_number(std::string_view text, double& out) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), out);
    return error == std::errc() && end == text.data() + text.size() && std::isfinite(out);
}

} // namespace qafui::cli
