#include "core/name.hpp"

#include "core/closed_hash.hpp"

#include <array>
#include <memory>
#include <mutex>
#include <ostream>
#include <vector>

namespace vorlen {
inline namespace version_1 {

namespace {

constexpr char empty_string[] = "";

struct cstring_identity_t {
    const char* const& operator()(const char* const& text) const noexcept { return text; }
};
struct cstring_hash_t {
    std::uint64_t operator()(const char* text) const noexcept { return name_hash(text); }
};
struct cstring_equal_t {
    bool operator()(const char* a, const char* b) const noexcept { return std::strcmp(a, b) == 0; }
};

/// Pooled strings never move or die, so readers of a name's text need no lock.
class string_pool_t {
public:
    const char* add(const char* text, std::size_t length) {
        const std::size_t needed = length + 1;
        if (needed > remaining_m) {
            const std::size_t size = needed > chunk_size ? needed : chunk_size;
            chunks_m.push_back(std::make_unique<char[]>(size));
            next_m = chunks_m.back().get();
            remaining_m = size;
        }
        char* result = next_m;
        std::memcpy(result, text, needed);
        next_m += needed;
        remaining_m -= needed;
        return result;
    }

private:
    static constexpr std::size_t chunk_size = 4096;

    std::vector<std::unique_ptr<char[]>> chunks_m;
    char* next_m = nullptr;
    std::size_t remaining_m = 0;
};

struct shard_t {
    std::mutex mutex;
    string_pool_t pool;
    closed_hash_set<const char*, cstring_identity_t, cstring_hash_t, cstring_equal_t> set;
};

class name_table_t {
public:
    const char* intern(const char* text) {
        const std::uint64_t hash = name_hash(text);
        shard_t& shard = shards_m[hash & 7];
        std::lock_guard<std::mutex> lock(shard.mutex);
        auto found = shard.set.find_hashed(text, hash);
        if (found != shard.set.end())
            return *found;
        const char* pooled = shard.pool.add(text, std::strlen(text));
        return *shard.set.insert_hashed(pooled, hash).first;
    }

    /// Static names skip the look-up: the text is pooled and an existing entry wins the insert.
    const char* intern_static(const char* text, std::uint64_t hash) {
        shard_t& shard = shards_m[hash & 7];
        std::lock_guard<std::mutex> lock(shard.mutex);
        const char* pooled = shard.pool.add(text, std::strlen(text));
        return *shard.set.insert_hashed(pooled, hash).first;
    }

private:
    std::array<shard_t, 8> shards_m;
};

name_table_t& name_table() {
    static name_table_t table;
    return table;
}

} // namespace

const char* name_t::empty_text() noexcept {
    return empty_string;
}

name_t::name_t(const char* text)
    : text_m(text && *text ? name_table().intern(text) : empty_text()) {}

name_t::name_t(static_name_t name)
    : text_m(*name.text ? name_table().intern_static(name.text, name.hash) : empty_text()) {}

std::ostream& operator<<(std::ostream& stream, name_t name) {
    return stream << name.c_str();
}

} // namespace version_1
} // namespace vorlen
