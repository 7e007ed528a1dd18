#include "framework/resource_manager.hpp"

#include "framework/embedded_resources.hpp"
#include "platform/core/ascii_case.hpp"
#include "platform/draw/image.hpp"
#include "platform/ui/cursor_pictures.hpp"

#include <pugixml.hpp>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <system_error>

namespace qoraudiofiltersui {

namespace {

struct EmbeddedTable {
    std::mutex mutex;
    std::map<std::pair<std::string, std::string>, std::string_view> entries;
};

EmbeddedTable& Embedded() {
    static EmbeddedTable table;
    return table;
}

std::optional<std::string_view> FindEmbedded(std::string_view name, std::string_view type) {
    EmbeddedTable& table = Embedded();
    std::lock_guard lock(table.mutex);
    auto found = table.entries.find({qorcore::ToUpperAscii(name), qorcore::ToUpperAscii(type)});
    if (found == table.entries.end())
        return std::nullopt;
    return found->second;
}

/// Splits "NAME.TYPE" at the last dot (names themselves may hold dots, "PARAMETRICEQ.V7").
std::optional<std::pair<std::string, std::string>> SplitFileName(const std::string& file) {
    const auto dot = file.rfind('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == file.size())
        return std::nullopt;
    return std::make_pair(qorcore::ToUpperAscii(std::string_view(file).substr(0, dot)),
                          qorcore::ToUpperAscii(std::string_view(file).substr(dot + 1)));
}

} // namespace

ResourceManager::ResourceManager(ModuleHandle module,
                                 std::optional<std::filesystem::path> overrideFolder)
    : module_(std::move(module)), overrideFolder_(std::move(overrideFolder)) {
    static const bool registered = (RegisterEmbeddedResources(), true);
    (void)registered;
}

ResourceManager::~ResourceManager() = default;

std::optional<std::filesystem::path>
ResourceManager::FindOverrideFile(std::string_view name, std::string_view type) const {
    if (!overrideFolder_ || name.empty() || type.empty())
        return std::nullopt;
    const std::string wantedName = qorcore::ToUpperAscii(name);
    const std::string wantedType = qorcore::ToUpperAscii(type);
    std::error_code error;
    for (std::filesystem::directory_iterator it(*overrideFolder_, error), end; !error && it != end;
         it.increment(error)) {
        if (!it->is_regular_file(error))
            continue;
        auto parts = SplitFileName(it->path().filename().string());
        if (parts && parts->first == wantedName && parts->second == wantedType)
            return it->path();
    }
    return std::nullopt;
}

bool ResourceManager::GetBinary(std::string_view name, std::string_view type,
                                std::vector<char>& out) const {
    out.clear();
    if (auto file = FindOverrideFile(name, type)) {
        std::ifstream stream(*file, std::ios::binary);
        if (!stream)
            return false;
        out.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
        if (stream.bad()) {
            out.clear();
            return false;
        }
        return true;
    }
    if (auto bytes = FindEmbedded(name, type)) {
        out.assign(bytes->begin(), bytes->end());
        return true;
    }
    return false;
}

bool ResourceManager::HasBinary(std::string_view name, std::string_view type) const {
    return FindOverrideFile(name, type).has_value() || FindEmbedded(name, type).has_value();
}

std::vector<std::string> ResourceManager::GetResourceDataNames(std::string_view type) const {
    const std::string wantedType = qorcore::ToUpperAscii(type);
    std::set<std::string> names;
    if (overrideFolder_) {
        std::error_code error;
        for (std::filesystem::directory_iterator it(*overrideFolder_, error), end;
             !error && it != end; it.increment(error)) {
            auto parts = SplitFileName(it->path().filename().string());
            if (parts && parts->second == wantedType && it->is_regular_file(error))
                names.insert(parts->first);
        }
    }
    {
        EmbeddedTable& table = Embedded();
        std::lock_guard lock(table.mutex);
        for (const auto& entry : table.entries)
            if (entry.first.second == wantedType)
                names.insert(entry.first.first);
    }
    return {names.begin(), names.end()};
}

bool ResourceManager::RegisterEmbeddedResource(std::string_view name, std::string_view type,
                                               std::string_view bytes) {
    if (name.empty() || type.empty())
        return false;
    EmbeddedTable& table = Embedded();
    std::lock_guard lock(table.mutex);
    return table.entries
        .emplace(std::make_pair(qorcore::ToUpperAscii(name), qorcore::ToUpperAscii(type)), bytes)
        .second;
}

namespace {

/// The hot spot of cursor data: the two numbers of the `kHotSpot` array of a version 1
/// container; none when the document is not one.
std::optional<qorcore::PointT<int>> ReadHotSpot(const std::vector<char>& data) {
    pugi::xml_document document;
    if (!document.load_buffer(data.data(), data.size()))
        return std::nullopt;
    const pugi::xml_node root = document.child("prop.map");
    if (std::string_view(root.attribute("version").value()) != "1")
        return std::nullopt;
    for (const pugi::xml_node pair : root.child("prop.list").children("prop.pair")) {
        if (std::string_view(pair.child_value("key")) != "kHotSpot")
            continue;
        std::vector<int> numbers;
        for (const pugi::xml_node number : pair.child("array").children("int"))
            numbers.push_back(number.text().as_int());
        if (numbers.size() != 2)
            return std::nullopt;
        return qorcore::PointT<int>{numbers[0], numbers[1]};
    }
    return std::nullopt;
}

qorcore::IntrusivePtr<qorui::penrig::Image> ReadPNG(const std::vector<char>& bytes, float scale) {
    try {
        return qorui::penrig::Image::LoadPNG(
            std::span<const std::uint8_t>(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                          bytes.size()),
            scale);
    } catch (const std::exception&) {
        return nullptr;
    }
}

} // namespace

bool ResourceManager::MakeCursorFromPNG(int cursorID) const {
    const std::string number = std::to_string(cursorID);
    std::vector<char> bytes;
    if (!GetBinary("CURSORID-" + number, "png", bytes))
        return false;
    qorui::CursorPicture picture;
    picture.picture = ReadPNG(bytes, 1.0f);
    if (GetBinary("CURSORID-" + number + "_AT_2X", "png", bytes))
        picture.picture2x = ReadPNG(bytes, 2.0f);
    if (!picture.picture || !GetBinary("CURSORDATAID-" + number, "xml", bytes))
        return false;
    const std::optional<qorcore::PointT<int>> hotSpot = ReadHotSpot(bytes);
    if (!hotSpot || hotSpot->x < 0 || hotSpot->y < 0 ||
        hotSpot->x >= picture.picture->GetPixelWidth() ||
        hotSpot->y >= picture.picture->GetPixelHeight())
        return false;
    picture.hotSpot = *hotSpot;
    qorui::SetCursorPicture(cursorID, std::move(picture));
    return true;
}

} // namespace qoraudiofiltersui
