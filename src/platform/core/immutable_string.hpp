#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace qorcore {

/// A UTF-8 string that never changes once made. Copies share one buffer, so it is cheap to pass
/// around and safe to read from any thread.
class ImmutableString {
public:
    ImmutableString();
    ImmutableString(const char* text);
    ImmutableString(std::string_view text);
    ImmutableString(std::string text);

    const std::string& str() const noexcept { return *text_; }
    const char* c_str() const noexcept { return text_->c_str(); }
    std::size_t size() const noexcept { return text_->size(); }
    bool empty() const noexcept { return text_->empty(); }
    operator std::string_view() const noexcept { return *text_; }

    /// True when both share one buffer (a copy of each other); equality compares the text.
    bool SharesBufferWith(const ImmutableString& other) const noexcept {
        return text_ == other.text_;
    }

    friend bool operator==(const ImmutableString& a, const ImmutableString& b) noexcept {
        return a.text_ == b.text_ || *a.text_ == *b.text_;
    }
    friend std::strong_ordering operator<=>(const ImmutableString& a,
                                            const ImmutableString& b) noexcept {
        return *a.text_ <=> *b.text_;
    }

private:
    std::shared_ptr<const std::string> text_;
};

namespace utility {
using ::qorcore::ImmutableString;
}

} // namespace qorcore

template <>
struct std::hash<qorcore::ImmutableString> {
    std::size_t operator()(const qorcore::ImmutableString& s) const noexcept {
        return std::hash<std::string_view>()(std::string_view(s));
    }
};
