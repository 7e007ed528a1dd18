#pragma once

#include "core/name.hpp"
#include "sheet/sheet.hpp"

#include <iosfwd>
#include <string_view>

namespace vorlen {

/// Reads a sheet script and builds it into `sheet` through the `add_` operations, in script
/// order:
///
///     sheet name {
///     constant:   x_min: -18;  x_max: 6;  x_range: x_max - x_min;
///     input:      in0: 0.5;
///     interface:  unlink x: in0 * x_range + x_min;   // also `x <== e;`, `x: init <== e;`
///     logic:      when (in1 != 0.5) relate { a <== b * 2; b <== a / 2; }   // target may be null
///     output:     out0 <== (x - x_min) / x_range;
///     invariant:  ordered <== x_min < x_max;
///     }
///
/// Sections may come in any order and repeat. A failure raises `stream_error_t` at the
/// offending place, "file:line:column" from `file_name`; errors of the text itself are prefixed
/// "property model description". After a failure the sheet is not to be used.
void parse_sheet_script(std::string_view text, name_t file_name, sheet_t& sheet);
void parse_sheet_script(std::istream& stream, name_t file_name, sheet_t& sheet);

} // namespace vorlen
