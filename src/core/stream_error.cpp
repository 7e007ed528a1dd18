#include "core/stream_error.hpp"

namespace vorlen {

std::string format_position(const line_position_t& position) {
    std::string result = position.file_name ? position.file_name.c_str() : "<input>";
    if (position.line_number >= 0) {
        // Appended piece by piece: `":" + std::to_string(...)` makes GCC 12 at -O3 warn of
        // overlapping copies (-Wrestrict) inside the temporary's insert.
        result += ':';
        result += std::to_string(position.line_number);
        result += ':';
        result += std::to_string(position.column());
    }
    return result;
}

stream_error_t::stream_error_t(const std::string& message, const line_position_t& position)
    : std::logic_error(message), line_position_set_m{position} {}

stream_error_t::stream_error_t(const std::exception& base, const line_position_t& position)
    : std::logic_error(base.what()) {
    if (auto* inner = dynamic_cast<const stream_error_t*>(&base))
        line_position_set_m = inner->line_position_set_m;
    line_position_set_m.push_back(position);
}

std::string format_stream_error(const std::exception& error) {
    auto* stream_error = dynamic_cast<const stream_error_t*>(&error);
    if (!stream_error || stream_error->line_position_set().empty())
        return error.what();
    return format_position(stream_error->line_position_set().front()) + ": " + error.what();
}

} // namespace vorlen
