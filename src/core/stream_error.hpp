#pragma once

#include "core/name.hpp"

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorlen {

/// Where a piece of script text sits: enough to report an error against its source.
struct line_position_t {
    using getline_proc_t = std::shared_ptr<std::function<std::string(int, std::streamoff)>>;

    line_position_t() = default;
    line_position_t(name_t file, int line, std::streamoff line_start = 0,
                    std::streamoff position = 0, getline_proc_t getline = {})
        : line_number(line), line_start(line_start), position(position), file_name(file),
          getline_proc(std::move(getline)) {}

    /// The 1-based column of the token within its line.
    std::int32_t column() const noexcept {
        return static_cast<std::int32_t>(position - line_start) + 1;
    }

    std::int32_t line_number = -1;
    std::streamoff line_start = 0;
    std::streamoff position = 0;
    name_t file_name;
    getline_proc_t getline_proc;
};

/// "file:line:column" (or as much of it as is known).
std::string format_position(const line_position_t& position);

/// A failure tied to script text. Passing through several evaluation levels appends a position
/// at each, innermost first, so the whole chain can be reported.
class stream_error_t : public std::logic_error {
public:
    stream_error_t(const std::string& message, const line_position_t& position);
    stream_error_t(const std::exception& base, const line_position_t& position);

    const std::vector<line_position_t>& line_position_set() const noexcept {
        return line_position_set_m;
    }

private:
    std::vector<line_position_t> line_position_set_m;
};

/// The message prefixed with the innermost position, for people: "file:3:7: message".
std::string format_stream_error(const std::exception& error);

} // namespace vorlen
