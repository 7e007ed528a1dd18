#pragma once

#include <cstddef>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace qorcore {

/// Resolves localisation keys of the form "$$$/area/name=Default text". A key found in the loaded
/// tables gives the table's text; a missing key gives the default behind the first "=". Text that
/// is no key comes back unchanged.
///
/// A table is UTF-8 text, one entry a line: `$$$/area/name=Text`. Blank lines and lines starting
/// with '#' are skipped; in the text, "\n", "\t" and "\\" stand for a line end, a tab and a
/// backslash. Later entries replace earlier ones.
class Localizer {
public:
    static Localizer& Get();

    std::string Localize(std::string_view text) const;

    /// Adds the entries of a table and returns how many it held. A malformed line throws
    /// std::runtime_error naming the table and the line; nothing of that table is kept then.
    std::size_t AddTable(std::string_view tableText, std::string_view tableName = "table");
    void AddEntry(std::string_view key, std::string_view text);
    bool HasKey(std::string_view key) const;
    std::size_t GetEntryCount() const;
    void Clear();

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view s) const noexcept {
            return std::hash<std::string_view>()(s);
        }
    };

    mutable std::shared_mutex mutex_;
    std::unordered_map<std::string, std::string, Hash, std::equal_to<>> entries_;
};

/// Shorthand for `Localizer::Get().Localize(text)`.
inline std::string Localize(std::string_view text) {
    return Localizer::Get().Localize(text);
}

} // namespace qorcore
