#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string_view>

namespace qorcore::debug {

/// Traces are off unless switched on, from the environment variable QAFUI_TRACE or with
/// `SetTraceSettings`. The settings are a comma-separated list of `LEVEL` (every category) and
/// `CATEGORY=LEVEL` entries; a category ending in '*' matches every category that starts with the
/// rest. A trace of level L is written when the best matching entry has a level of at least L:
/// an exact category first, then the longest prefix, then the bare level. Level 0 is off.
/// Example: QAFUI_TRACE="2,MarlTess*=5".

/// Whether a trace of this category and level would be written. With `useGlobalLevel` false
/// only entries that name the category count.
bool TraceEnabled(std::string_view category, int level, bool useGlobalLevel = true);

/// Raised whenever the settings change, so that call sites can cache `TraceEnabled`.
std::uint32_t TraceChangeCount();

/// Replaces the settings. Malformed text throws std::invalid_argument and changes nothing.
void SetTraceSettings(std::string_view settings);

/// Writes one trace if it is enabled. A line end is added if the text has none.
void Trace(int level, std::string_view category, std::string_view text);

using TraceSink = std::function<void(int level, std::string_view category, std::string_view text)>;
/// Where traces go; standard error by default, and again after an empty sink.
void SetTraceSink(TraceSink sink);

/// The cache of one call site: `TraceEnabled` is asked again only when `TraceChangeCount` has
/// moved. Declare it `static` next to the trace; it is safe from any thread.
class TraceSite {
public:
    bool IsEnabled(std::string_view category, int level);

private:
    // Change count in the upper 32 bits, 1 + the answer in the lowest bit pair (0 = not asked).
    std::atomic<std::uint64_t> cache_{0};
};

} // namespace qorcore::debug
