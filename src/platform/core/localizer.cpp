#include "platform/core/localizer.hpp"

#include <charconv>
#include <cstdint>

#include <mutex>
#include <stdexcept>
#include <vector>

namespace qorcore {

namespace {

constexpr std::string_view keyPrefix = "$$$/";

std::string Unescape(std::string_view text, bool& ok) {
    std::string out;
    out.reserve(text.size());
    ok = true;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            out += text[i];
            continue;
        }
        if (++i == text.size()) {
            ok = false;
            break;
        }
        switch (text[i]) {
        case 'n': out += '\n'; break;
        case 't': out += '\t'; break;
        case '\\': out += '\\'; break;
        default: ok = false; return out;
        }
    }
    return out;
}

} // namespace

Localizer& Localizer::Get() {
    static Localizer localizer;
    return localizer;
}

namespace {

void AppendUtf8(std::string& out, std::uint32_t c) {
    if (c < 0x80) {
        out += char(c);
    } else if (c < 0x800) {
        out += char(0xC0 | (c >> 6));
        out += char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += char(0xE0 | (c >> 12));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    } else {
        out += char(0xF0 | (c >> 18));
        out += char(0x80 | ((c >> 12) & 0x3F));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    }
}

/// Default texts write characters outside ASCII as "#{U+221E}"; a sequence that is no code point
/// stays as it is.
std::string ExpandCodePoints(std::string_view text) {
    std::string out;
    std::size_t at = 0;
    while (true) {
        const std::size_t open = text.find("#{U+", at);
        if (open == std::string_view::npos)
            break;
        const std::size_t close = text.find('}', open);
        std::uint32_t c = 0;
        const std::string_view digits = close == std::string_view::npos
                                            ? std::string_view()
                                            : text.substr(open + 4, close - open - 4);
        const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), c, 16);
        if (digits.empty() || digits.size() > 6 || parsed.ptr != digits.data() + digits.size() ||
            c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
            out.append(text.substr(at, open + 4 - at));
            at = open + 4;
            continue;
        }
        out.append(text.substr(at, open - at));
        AppendUtf8(out, c);
        at = close + 1;
    }
    out.append(text.substr(at));
    return out;
}

} // namespace

std::string Localizer::Localize(std::string_view text) const {
    if (text.substr(0, keyPrefix.size()) != keyPrefix)
        return std::string(text);
    const std::size_t equal = text.find('=');
    const std::string_view key = text.substr(0, equal);
    {
        std::shared_lock lock(mutex_);
        if (auto it = entries_.find(key); it != entries_.end())
            return it->second;
    }
    if (equal == std::string_view::npos)
        return std::string(text);
    return ExpandCodePoints(text.substr(equal + 1));
}

std::size_t Localizer::AddTable(std::string_view tableText, std::string_view tableName) {
    std::vector<std::pair<std::string, std::string>> parsed;
    std::size_t lineNumber = 0;
    while (!tableText.empty()) {
        ++lineNumber;
        const std::size_t end = tableText.find('\n');
        std::string_view line = tableText.substr(0, end);
        tableText = end == std::string_view::npos ? std::string_view() : tableText.substr(end + 1);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        if (line.empty() || line.front() == '#')
            continue;
        auto fail = [&](const char* why) {
            throw std::runtime_error(std::string(tableName) + ":" + std::to_string(lineNumber) +
                                     ": " + why);
        };
        const std::size_t equal = line.find('=');
        if (equal == std::string_view::npos)
            fail("entry without '='");
        const std::string_view key = line.substr(0, equal);
        if (key.substr(0, keyPrefix.size()) != keyPrefix || key.size() == keyPrefix.size())
            fail("key does not start with \"$$$/\"");
        bool ok = true;
        std::string text = Unescape(line.substr(equal + 1), ok);
        if (!ok)
            fail("bad escape in text");
        parsed.emplace_back(std::string(key), std::move(text));
    }
    std::unique_lock lock(mutex_);
    for (auto& [key, text] : parsed)
        entries_.insert_or_assign(std::move(key), std::move(text));
    return parsed.size();
}

void Localizer::AddEntry(std::string_view key, std::string_view text) {
    if (key.substr(0, keyPrefix.size()) != keyPrefix || key.size() == keyPrefix.size() ||
        key.find('=') != std::string_view::npos)
        throw std::invalid_argument("Localizer::AddEntry: bad key \"" + std::string(key) + "\"");
    std::unique_lock lock(mutex_);
    entries_.insert_or_assign(std::string(key), std::string(text));
}

bool Localizer::HasKey(std::string_view key) const {
    std::shared_lock lock(mutex_);
    return entries_.find(key) != entries_.end();
}

std::size_t Localizer::GetEntryCount() const {
    std::shared_lock lock(mutex_);
    return entries_.size();
}

void Localizer::Clear() {
    std::unique_lock lock(mutex_);
    entries_.clear();
}

} // namespace qorcore
