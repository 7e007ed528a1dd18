#include "platform/core/trace.hpp"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>

namespace qorcore::debug {

namespace {

struct Settings {
    int globalLevel = 0;
    std::map<std::string, int, std::less<>> exact;
    std::map<std::string, int, std::less<>> prefixes;
};

std::string_view Trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t'))
        s.remove_suffix(1);
    return s;
}

int ParseLevel(std::string_view text, std::string_view entry) {
    int level = 0;
    text = Trim(text);
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), level);
    if (error != std::errc() || end != text.data() + text.size() || level < 0)
        throw std::invalid_argument("trace settings: bad level in \"" + std::string(entry) + "\"");
    return level;
}

Settings Parse(std::string_view text) {
    Settings settings;
    while (!text.empty()) {
        const std::size_t comma = text.find(',');
        const std::string_view entry = Trim(text.substr(0, comma));
        text = comma == std::string_view::npos ? std::string_view() : text.substr(comma + 1);
        if (entry.empty())
            continue;
        const std::size_t equal = entry.find('=');
        if (equal == std::string_view::npos) {
            settings.globalLevel = ParseLevel(entry, entry);
            continue;
        }
        std::string_view category = Trim(entry.substr(0, equal));
        const int level = ParseLevel(entry.substr(equal + 1), entry);
        if (category.empty() || category == "*")
            throw std::invalid_argument("trace settings: empty category in \"" +
                                        std::string(entry) + "\"");
        if (category.back() == '*') {
            category.remove_suffix(1);
            settings.prefixes.insert_or_assign(std::string(category), level);
        } else {
            settings.exact.insert_or_assign(std::string(category), level);
        }
    }
    return settings;
}

struct State {
    std::mutex mutex;
    Settings settings;
    TraceSink sink;
    std::atomic<std::uint32_t> changeCount{1};

    State() {
        if (const char* env = std::getenv("QAFUI_TRACE")) {
            try {
                settings = Parse(env);
            } catch (const std::invalid_argument& e) {
                std::fprintf(stderr, "QAFUI_TRACE ignored: %s\n", e.what());
            }
        }
    }
};

State& GetState() {
    static State state;
    return state;
}

} // namespace

bool TraceEnabled(std::string_view category, int level, bool useGlobalLevel) {
    if (level <= 0)
        return false;
    State& state = GetState();
    std::lock_guard lock(state.mutex);
    const Settings& s = state.settings;
    if (auto it = s.exact.find(category); it != s.exact.end())
        return it->second >= level;
    const std::string* best = nullptr;
    int bestLevel = 0;
    for (const auto& [prefix, prefixLevel] : s.prefixes) {
        if (category.substr(0, prefix.size()) == prefix &&
            (!best || prefix.size() > best->size())) {
            best = &prefix;
            bestLevel = prefixLevel;
        }
    }
    if (best)
        return bestLevel >= level;
    return useGlobalLevel && s.globalLevel >= level;
}

std::uint32_t TraceChangeCount() {
    return GetState().changeCount.load(std::memory_order_acquire);
}

void SetTraceSettings(std::string_view text) {
    Settings parsed = Parse(text);
    State& state = GetState();
    std::lock_guard lock(state.mutex);
    state.settings = std::move(parsed);
    state.changeCount.fetch_add(1, std::memory_order_acq_rel);
}

void SetTraceSink(TraceSink sink) {
    State& state = GetState();
    std::lock_guard lock(state.mutex);
    state.sink = std::move(sink);
}

void Trace(int level, std::string_view category, std::string_view text) {
    if (!TraceEnabled(category, level))
        return;
    State& state = GetState();
    TraceSink sink;
    {
        std::lock_guard lock(state.mutex);
        sink = state.sink;
    }
    if (sink) {
        sink(level, category, text);
        return;
    }
    const bool needsLineEnd = text.empty() || text.back() != '\n';
    std::fprintf(stderr, "[%d] %.*s: %.*s%s", level, int(category.size()), category.data(),
                 int(text.size()), text.data(), needsLineEnd ? "\n" : "");
}

bool TraceSite::IsEnabled(std::string_view category, int level) {
    const std::uint64_t count = TraceChangeCount();
    const std::uint64_t cached = cache_.load(std::memory_order_acquire);
    if ((cached >> 32) == count && (cached & 3u) != 0)
        return (cached & 3u) == 2;
    const bool enabled = TraceEnabled(category, level);
    cache_.exchange((count << 32) | (enabled ? 2u : 1u), std::memory_order_acq_rel);
    return enabled;
}

} // namespace qorcore::debug
