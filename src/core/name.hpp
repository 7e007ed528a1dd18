#pragma once

#include <cstdint>
#include <cstring>
#include <iosfwd>

namespace vorlen {

/// FNV-1a over the text with each byte sign-extended before the XOR. The sign extension is part
/// of the contract: bytes at or above 0x80 hash differently from the common zero-extending form.
constexpr std::uint64_t name_hash(const char* text) noexcept {
    std::uint64_t h = 0xcbf29ce484222325ULL;
    for (; *text; ++text) {
        h ^= static_cast<std::uint64_t>(static_cast<std::int64_t>(static_cast<signed char>(*text)));
        h *= 0x100000001b3ULL;
    }
    return h;
}

/// A name known at compile time: the text and its hash, computed by the compiler.
struct static_name_t {
    const char* text;
    std::uint64_t hash;

    consteval static_name_t(const char* t) : text(t), hash(name_hash(t)) {}
};

consteval static_name_t operator""_name(const char* text, std::size_t) {
    return static_name_t(text);
}

inline namespace version_1 {

/// An interned string: one pointer. Equal texts made through the table share one pointer, so a
/// name copies, compares for identity and stores without allocating.
class name_t {
public:
    name_t() noexcept : text_m(empty_text()) {}
    explicit name_t(const char* text);
    name_t(static_name_t name);

    explicit operator bool() const noexcept { return text_m != empty_text(); }
    const char* c_str() const noexcept { return text_m; }

    /// Interning makes equal texts share a pointer, so identity is equality.
    friend bool operator==(name_t a, name_t b) noexcept { return a.text_m == b.text_m; }
    friend bool operator<(name_t a, name_t b) noexcept {
        return std::strcmp(a.text_m, b.text_m) < 0;
    }

private:
    static const char* empty_text() noexcept;

    const char* text_m;
};

std::ostream& operator<<(std::ostream& stream, name_t name);

/// Hash and equality on the text, for hash containers keyed by names: a name caches no hash.
struct name_hash_t {
    std::uint64_t operator()(name_t name) const noexcept { return name_hash(name.c_str()); }
};
struct name_equal_t {
    bool operator()(name_t a, name_t b) const noexcept {
        // Interned texts that are equal share a pointer; the text decides otherwise.
        return a.c_str() == b.c_str() || std::strcmp(a.c_str(), b.c_str()) == 0;
    }
};

} // namespace version_1
} // namespace vorlen
