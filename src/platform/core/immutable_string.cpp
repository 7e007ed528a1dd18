#include "platform/core/immutable_string.hpp"

namespace qorcore {

namespace {

const std::shared_ptr<const std::string>& EmptyText() {
    static const auto empty = std::make_shared<const std::string>();
    return empty;
}

} // namespace

ImmutableString::ImmutableString() : text_(EmptyText()) {}

ImmutableString::ImmutableString(const char* text)
    : ImmutableString(text ? std::string_view(text) : std::string_view()) {}

ImmutableString::ImmutableString(std::string_view text)
    : text_(text.empty() ? EmptyText() : std::make_shared<const std::string>(text)) {}

ImmutableString::ImmutableString(std::string text)
    : text_(text.empty() ? EmptyText() : std::make_shared<const std::string>(std::move(text))) {}

} // namespace qorcore
