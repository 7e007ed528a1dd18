#include "framework/editor_resources.hpp"

#include "framework/resource_manager.hpp"

#include <vector>

namespace qoraudiofiltersui {

namespace {

std::string Read(const ResourceManager& resources, std::string_view name, std::string_view type) {
    std::vector<char> bytes;
    if (!resources.GetBinary(name, type, bytes))
        return {};
    return std::string(bytes.begin(), bytes.end());
}

} // namespace

EditorResources ChooseEditorResources(const ResourceManager* resources, std::string_view name,
                                      bool hasSheet, bool newerLook) {
    EditorResources chosen;
    if (!resources)
        return chosen;
    if (hasSheet && resources->HasBinary(name, "mrl"))
        chosen.sheetText = Read(*resources, name, "mrl");
    const std::string newerName = std::string(name) + ".V7";
    if (newerLook && resources->HasBinary(newerName, "tss")) {
        chosen.layoutText = Read(*resources, newerName, "tss");
        chosen.layoutName = newerName;
    } else if (resources->HasBinary(name, "tss")) {
        chosen.layoutText = Read(*resources, name, "tss");
        chosen.layoutName = std::string(name);
    }
    return chosen;
}

} // namespace qoraudiofiltersui
