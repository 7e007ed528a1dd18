#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoraudiofiltersui {

/// Where the library's code lives: the file that holds it, found from the address of one of its
/// own functions.
struct ModuleHandle {
    std::string path;
};

/// Reads the resources of the library's own file by name and type ("mrl", "tss", "xml",
/// "png", "svg"). Names and types compare without case: resources are kept under upper-case
/// names and asked for in mixed case.
///
/// Two sources, in this order: an override folder (files named NAME.TYPE in any case), so that
/// a script author sees a change without rebuilding; then the resources embedded into the
/// program at build time.
class ResourceManager {
public:
    /// `overrideFolder` may be absent; a folder that does not exist is treated as empty.
    explicit ResourceManager(ModuleHandle module,
                             std::optional<std::filesystem::path> overrideFolder = std::nullopt);
    virtual ~ResourceManager();
    ResourceManager(const ResourceManager&) = delete;
    ResourceManager& operator=(const ResourceManager&) = delete;

    /// Replaces `out` with the resource's bytes; false (and `out` empty) when there is none or
    /// the override file can't be read.
    virtual bool GetBinary(std::string_view name, std::string_view type,
                           std::vector<char>& out) const;
    virtual bool HasBinary(std::string_view name, std::string_view type) const;
    /// Reads cursor `cursorID` (200 to 203 are the library's): its pictures "CURSORID-<n>" (32
    /// pixels) and "CURSORID-<n>_AT_2X" (64, may be absent) and the hot spot of its
    /// "CURSORDATAID-<n>" data, and enters them into the toolkit's cursor table, so that a node
    /// asking for that cursor number shows it. False when the picture or the data is missing or
    /// unreadable, or the hot spot lies outside the picture; the table is left as it was then.
    virtual bool MakeCursorFromPNG(int cursorID) const;
    /// The upper-case names of every resource of the type, sorted, without repeats.
    virtual std::vector<std::string> GetResourceDataNames(std::string_view type) const;

    const ModuleHandle& GetModule() const { return module_; }
    const std::optional<std::filesystem::path>& GetOverrideFolder() const {
        return overrideFolder_;
    }

    /// For the generated source of embedded resources: enters one resource for every manager.
    /// The bytes must outlive the program (static arrays). False for an empty name or type, or
    /// a (name, type) already entered.
    static bool RegisterEmbeddedResource(std::string_view name, std::string_view type,
                                         std::string_view bytes);

private:
    std::optional<std::filesystem::path> FindOverrideFile(std::string_view name,
                                                          std::string_view type) const;

    ModuleHandle module_;
    std::optional<std::filesystem::path> overrideFolder_;
};

} // namespace qoraudiofiltersui
