#include "platform/core/localizer.hpp"

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
    return std::string(text.substr(equal + 1));
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
