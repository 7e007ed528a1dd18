#pragma once

#include "core/any_regular.hpp"

#include <deque>

namespace vorlen {

// Reading one member of a large cell, `points.curve_points[2][0]`, would make the machine copy
// the whole value of `points` before indexing it. A sheet rewrites such reads in the streams it
// keeps into operators of its own that read the member in place:
//
//     [x, .variable, k, .index]                  ->  [x, k, .sheet_member]
//     [x, .variable, k1, .index, k2, .index ...]  ->  [x, n, .sheet_path]   (path n = [k1, k2 ...])
//
// Only literal keys (names and numbers) take part. The sheet installs both operators as
// operator overrides of its machine.

inline constexpr static_name_t variable_token = ".variable"_name;
inline constexpr static_name_t index_token = ".index"_name;
inline constexpr static_name_t member_read_token = ".sheet_member"_name;
inline constexpr static_name_t path_read_token = ".sheet_path"_name;

/// The stream with its member reads rewritten; nested streams (the deferred operands) too.
/// Paths of more than one key are appended to `paths`, which must outlive the stream.
array_t fuse_member_reads(const array_t& stream, std::deque<array_t>& paths);

} // namespace vorlen
