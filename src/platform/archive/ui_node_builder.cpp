#include "platform/archive/ui_node_builder.hpp"

#include "platform/core/localizer.hpp"
#include "platform/core/trace.hpp"
#include "platform/draw/font.hpp"
#include "platform/panels/ui_divider.hpp"
#include "platform/panels/ui_outline_box.hpp"
#include "platform/panels/ui_outline_box_with_label.hpp"
#include "platform/panels/ui_static_text.hpp"
#include "platform/skins/skins.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_disclosure_triangle_button.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "platform/widgets/ui_picture_button.hpp"
#include "platform/widgets/ui_popup.hpp"
#include "platform/widgets/ui_radio_button.hpp"
#include "platform/widgets/ui_text_button.hpp"

#include <pugixml.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <mutex>
#include <optional>

namespace qorui {

namespace {

constexpr std::string_view kTraceCategory = "UI_NodeBuilder::LoadViewFromXML";
constexpr std::string_view kToolkitPrefix = "qorui::ui::";

struct AdapterRegistry {
    std::mutex mutex;
    std::map<std::string, UI_NodeBuilder::AdapterFunction, std::less<>> adapters;
    std::map<std::string, UI_NodeBuilder::SectionApplierFunction, std::less<>> appliers;
};

template <class T>
void AddToolkitAdapter(AdapterRegistry& registry, const char* shortName) {
    registry.adapters.emplace(std::string(kToolkitPrefix) + shortName,
                              [] { return IntrusivePtr<UI_Node>(qorcore::MakeIntrusive<T>()); });
}

AdapterRegistry& GetRegistry() {
    static AdapterRegistry registry;
    static const bool filled = [] {
        AdapterRegistry& r = registry;
        AddToolkitAdapter<UI_SubView>(r, "UI_SubView");
        AddToolkitAdapter<UI_OutlineBoxWithLabel>(r, "UI_OutlineBoxWithLabel");
        AddToolkitAdapter<UI_OutlineBox>(r, "UI_OutlineBox");
        AddToolkitAdapter<UI_Divider>(r, "UI_Divider");
        AddToolkitAdapter<UI_StaticText>(r, "UI_StaticText");
        AddToolkitAdapter<UI_HotTextNumber>(r, "UI_HotTextNumber");
        AddToolkitAdapter<UI_Checkbox>(r, "UI_Checkbox");
        AddToolkitAdapter<UI_RadioButton>(r, "UI_RadioButton");
        AddToolkitAdapter<UI_Popup>(r, "UI_Popup");
        AddToolkitAdapter<UI_TextButton>(r, "UI_TextButton");
        AddToolkitAdapter<UI_PictureButton>(r, "UI_PictureButton");
        AddToolkitAdapter<UI_DisclosureTriangleButton>(r, "UI_DisclosureTriangleButton");
        return true;
    }();
    (void)filled;
    return registry;
}

/// The toolkit's classes may appear with or without their namespace.
std::string FullClassName(std::string_view name) {
    if (name.find("::") == std::string_view::npos)
        return std::string(kToolkitPrefix) + std::string(name);
    return std::string(name);
}

std::string_view ShortClassName(std::string_view name) {
    if (name.starts_with(kToolkitPrefix))
        name.remove_prefix(kToolkitPrefix.size());
    return name;
}

std::string_view Trim(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos)
        return {};
    const auto last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

/// One key and its value element inside a `prop.list`.
struct Entry {
    std::string key;
    pugi::xml_node value;
};

/// The reading of one archive: the text (for line numbers), the report and the caller's hooks.
class ArchiveReader {
public:
    ArchiveReader(std::string_view text, const UI_NodeBuilder::ImageSupplyFunction& images,
                  UI_NodeBuilder::NodeMap* nodeMap,
                  const UI_NodeBuilder::CustomNodeFunction& customNode, NodeArchiveReport* report)
        : text_(text), images_(images), nodeMap_(nodeMap), customNode_(customNode),
          report_(report) {}

    IntrusivePtr<UI_Node> Load();

private:
    void Report(const std::string& path, pugi::xml_node where, const std::string& message);
    std::vector<Entry> ReadRecord(pugi::xml_node list, const std::string& path);
    const Entry* Find(const std::vector<Entry>& record, std::string_view key) const;

    std::optional<bool> ReadBool(const Entry& entry, const std::string& path);
    std::optional<double> ReadDouble(const Entry& entry, const std::string& path);
    std::optional<long long> ReadInt(const Entry& entry, const std::string& path);
    std::optional<std::string> ReadString(const Entry& entry, const std::string& path);
    std::optional<std::vector<std::string>> ReadStringArray(const Entry& entry,
                                                            const std::string& path);
    std::optional<std::vector<Entry>> ReadTyped(const Entry& entry, const std::string& path,
                                                int aptype);
    std::optional<RectT<float>> ReadRect(const Entry& entry, const std::string& path);
    std::optional<int> ReadEnumSelected(const Entry& entry, const std::string& path);
    /// The members of an indexed record (`children`, `sections`): `prefix`0 to `prefix`(count-1).
    std::vector<std::pair<Entry, std::string>>
    ReadIndexed(const Entry& entry, const std::string& path, std::string_view prefix);

    /// Any value element as a typed value, for section appliers; records nest up to `depth`.
    std::optional<NodeArchiveValue> ReadValue(const Entry& entry, const std::string& path,
                                              int depth);
    /// Hands a section to the applier registered for its class; false when there is none.
    bool ApplyRegisteredSection(UI_Node& node, const std::vector<Entry>& section,
                                std::string_view name, const std::string& path);

    IntrusivePtr<UI_Node> BuildNode(const Entry& entry, const std::string& path, int depth);
    void ApplySection(UI_Node& node, const std::vector<Entry>& section, std::string_view name,
                      const std::string& path, bool isCustom, int depth);
    void ApplyNodeKey(UI_Node& node, const Entry& entry, const std::string& path);
    void ApplyControlKey(UI_Node& node, const Entry& entry, const std::string& path);
    void ApplyButtonKey(UI_Node& node, const Entry& entry, const std::string& path);
    void ApplyHotTextKey(UI_Node& node, const Entry& entry, const std::string& path);
    void ApplyHotTextNumberSection(UI_Node& node, const std::vector<Entry>& section,
                                   const std::string& path);
    void ApplyPopupKey(UI_Node& node, const Entry& entry, const std::string& path);
    void ApplyFurtherKey(UI_Node& node, const Entry& entry, const std::string& path);

    std::string_view text_;
    const UI_NodeBuilder::ImageSupplyFunction& images_;
    UI_NodeBuilder::NodeMap* nodeMap_;
    const UI_NodeBuilder::CustomNodeFunction& customNode_;
    NodeArchiveReport* report_;
};

void ArchiveReader::Report(const std::string& path, pugi::xml_node where,
                           const std::string& message) {
    NodeArchiveDiagnostic diagnostic{path, 0, 0, message};
    const std::ptrdiff_t offset = where ? where.offset_debug() : -1;
    if (offset >= 0 && std::size_t(offset) <= text_.size()) {
        const std::string_view before = text_.substr(0, std::size_t(offset));
        diagnostic.line = 1 + int(std::count(before.begin(), before.end(), '\n'));
        const std::size_t lineStart = before.rfind('\n');
        diagnostic.column =
            int(offset - (lineStart == std::string_view::npos ? 0 : lineStart + 1)) + 1;
    }
    static qorcore::debug::TraceSite site;
    if (site.IsEnabled(kTraceCategory, 5))
        qorcore::debug::Trace(5, kTraceCategory,
                              (path.empty() ? std::string("archive") : path) + ": " + message);
    if (report_)
        report_->diagnostics.push_back(std::move(diagnostic));
}

std::vector<Entry> ArchiveReader::ReadRecord(pugi::xml_node list, const std::string& path) {
    std::vector<Entry> record;
    for (pugi::xml_node pair = list.first_child(); pair; pair = pair.next_sibling()) {
        if (pair.type() != pugi::node_element)
            continue;
        if (std::string_view(pair.name()) != "prop.pair") {
            Report(path, pair, "unexpected element '" + std::string(pair.name()) + "' in a record");
            continue;
        }
        const pugi::xml_node key =
            pair.find_child([](pugi::xml_node n) { return n.type() == pugi::node_element; });
        if (!key || std::string_view(key.name()) != "key") {
            Report(path, pair, "a prop.pair without a key");
            continue;
        }
        const std::string name(Trim(key.child_value()));
        pugi::xml_node value = key.next_sibling();
        while (value && value.type() != pugi::node_element)
            value = value.next_sibling();
        if (!value) {
            Report(path.empty() ? name : path + "/" + name, pair, "the key has no value");
            continue;
        }
        record.push_back({name, value});
    }
    return record;
}

const Entry* ArchiveReader::Find(const std::vector<Entry>& record, std::string_view key) const {
    for (const Entry& entry : record)
        if (entry.key == key)
            return &entry;
    return nullptr;
}

std::optional<long long> ParseInteger(std::string_view text) {
    text = Trim(text);
    long long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || text.empty())
        return std::nullopt;
    return value;
}

std::optional<bool> ArchiveReader::ReadBool(const Entry& entry, const std::string& path) {
    const std::string_view kind = entry.value.name();
    if (kind == "true")
        return true;
    if (kind == "false")
        return false;
    if (kind == "int") {
        if (const auto value = ReadInt(entry, path))
            return *value != 0;
        return std::nullopt;
    }
    Report(path, entry.value, "expected a boolean, found '" + std::string(kind) + "'");
    return std::nullopt;
}

std::optional<double> ArchiveReader::ReadDouble(const Entry& entry, const std::string& path) {
    const std::string_view kind = entry.value.name();
    if (kind != "float" && kind != "double" && kind != "int") {
        Report(path, entry.value, "expected a number, found '" + std::string(kind) + "'");
        return std::nullopt;
    }
    const std::string_view text = Trim(entry.value.child_value());
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() ||
        !std::isfinite(value)) {
        Report(path, entry.value, "bad number '" + std::string(text) + "'");
        return std::nullopt;
    }
    return value;
}

std::optional<long long> ArchiveReader::ReadInt(const Entry& entry, const std::string& path) {
    const std::string_view kind = entry.value.name();
    if (kind != "int") {
        Report(path, entry.value, "expected an int, found '" + std::string(kind) + "'");
        return std::nullopt;
    }
    const std::string_view text = Trim(entry.value.child_value());
    const auto value = ParseInteger(text);
    const bool isUnsigned = std::string_view(entry.value.attribute("type").value()) == "unsigned";
    const long long low = isUnsigned ? 0 : std::numeric_limits<std::int32_t>::min();
    const long long high = isUnsigned ? std::numeric_limits<std::uint32_t>::max()
                                      : std::numeric_limits<std::int32_t>::max();
    if (!value || *value < low || *value > high) {
        Report(path, entry.value,
               "bad " + std::string(isUnsigned ? "unsigned" : "signed") + " 32-bit integer '" +
                   std::string(text) + "'");
        return std::nullopt;
    }
    return value;
}

/// "($$$/area/name=Text)" goes through the localiser; other strings stand as they are.
std::string LocalizeArchiveString(std::string text) {
    if (text.size() > 6 && text.starts_with("($$$/") && text.back() == ')')
        return qorcore::Localize(std::string_view(text).substr(1, text.size() - 2));
    return text;
}

std::optional<std::string> ArchiveReader::ReadString(const Entry& entry, const std::string& path) {
    const std::string_view kind = entry.value.name();
    if (kind != "string" && kind != "ustring") {
        Report(path, entry.value, "expected a string, found '" + std::string(kind) + "'");
        return std::nullopt;
    }
    return LocalizeArchiveString(entry.value.child_value());
}

std::optional<std::vector<std::string>> ArchiveReader::ReadStringArray(const Entry& entry,
                                                                       const std::string& path) {
    if (std::string_view(entry.value.name()) != "array") {
        Report(path, entry.value,
               "expected an array, found '" + std::string(entry.value.name()) + "'");
        return std::nullopt;
    }
    std::vector<std::string> items;
    int index = 0;
    for (pugi::xml_node item : entry.value.children()) {
        if (item.type() != pugi::node_element || std::string_view(item.name()) == "array.type")
            continue;
        const std::string itemPath = path + "[" + std::to_string(index++) + "]";
        if (const auto text = ReadString({"", item}, itemPath))
            items.push_back(*text);
    }
    return items;
}

std::optional<std::vector<Entry>> ArchiveReader::ReadTyped(const Entry& entry,
                                                           const std::string& path, int aptype) {
    if (std::string_view(entry.value.name()) != "prop.list") {
        Report(path, entry.value,
               "expected a record, found '" + std::string(entry.value.name()) + "'");
        return std::nullopt;
    }
    std::vector<Entry> record = ReadRecord(entry.value, path);
    const Entry* type = Find(record, ".aptype");
    if (!type) {
        Report(path, entry.value, "missing key '.aptype'");
        return std::nullopt;
    }
    const auto value = ReadInt(*type, path + "/.aptype");
    if (!value)
        return std::nullopt;
    if (*value != aptype) {
        Report(path, type->value,
               ".aptype " + std::to_string(*value) + " where " + std::to_string(aptype) +
                   " was expected");
        return std::nullopt;
    }
    return record;
}

std::optional<RectT<float>> ArchiveReader::ReadRect(const Entry& entry, const std::string& path) {
    const auto record = ReadTyped(entry, path, 1);
    if (!record)
        return std::nullopt;
    float fields[4] = {0, 0, 0, 0};
    const char* names[4] = {"left", "top", "width", "height"};
    for (int i = 0; i < 4; ++i) {
        const Entry* field = Find(*record, names[i]);
        if (!field) {
            Report(path, entry.value, std::string("missing key '") + names[i] + "'");
            continue; // the toolkit's default, zero, stands
        }
        if (const auto value = ReadDouble(*field, path + "/" + names[i]))
            fields[i] = float(*value);
    }
    return RectT<float>{fields[0], fields[1], fields[2], fields[3]};
}

std::optional<int> ArchiveReader::ReadEnumSelected(const Entry& entry, const std::string& path) {
    const auto record = ReadTyped(entry, path, 2);
    if (!record)
        return std::nullopt;
    const Entry* selected = Find(*record, "selected");
    if (!selected)
        return std::nullopt;
    if (const auto value = ReadInt(*selected, path + "/selected"))
        return int(*value);
    return std::nullopt;
}

std::vector<std::pair<Entry, std::string>>
ArchiveReader::ReadIndexed(const Entry& entry, const std::string& path, std::string_view prefix) {
    std::vector<std::pair<Entry, std::string>> members;
    if (std::string_view(entry.value.name()) != "prop.list") {
        Report(path, entry.value,
               "expected a record, found '" + std::string(entry.value.name()) + "'");
        return members;
    }
    const std::vector<Entry> record = ReadRecord(entry.value, path);
    const Entry* countEntry = Find(record, "count");
    if (!countEntry) {
        Report(path, entry.value, "missing key 'count'");
        return members;
    }
    const auto count = ReadInt(*countEntry, path + "/count");
    if (!count)
        return members;
    // A count beyond the record's size can only name missing members; don't loop over them all.
    const long long limit = std::min<long long>(*count, (long long)record.size());
    for (long long i = 0; i < limit; ++i) {
        const std::string key = std::string(prefix) + std::to_string(i);
        const Entry* member = Find(record, key);
        if (!member) {
            Report(path, entry.value, "missing key '" + key + "'");
            continue;
        }
        members.emplace_back(*member, path + "/" + key);
    }
    if (*count > limit)
        Report(path, entry.value,
               "count " + std::to_string(*count) + " but only " + std::to_string(limit) +
                   " members can be present");
    return members;
}

IntrusivePtr<UI_Node> ArchiveReader::Load() {
    pugi::xml_document document;
    const pugi::xml_parse_result parsed =
        document.load_buffer(text_.data(), text_.size(), pugi::parse_default, pugi::encoding_utf8);
    if (!parsed) {
        NodeArchiveDiagnostic diagnostic;
        const std::string_view before = text_.substr(
            0, std::min<std::size_t>(std::size_t(std::max<std::ptrdiff_t>(parsed.offset, 0)),
                                     text_.size()));
        diagnostic.line = 1 + int(std::count(before.begin(), before.end(), '\n'));
        const std::size_t lineStart = before.rfind('\n');
        diagnostic.column =
            int(before.size() - (lineStart == std::string_view::npos ? 0 : lineStart + 1)) + 1;
        diagnostic.message = std::string("malformed XML: ") + parsed.description();
        static qorcore::debug::TraceSite site;
        if (site.IsEnabled(kTraceCategory, 5))
            qorcore::debug::Trace(5, kTraceCategory, diagnostic.message);
        if (report_)
            report_->diagnostics.push_back(std::move(diagnostic));
        // What was parsed before the fault stays in the document; read what we can of it.
    }
    const pugi::xml_node root = document.document_element();
    if (!root || std::string_view(root.name()) != "prop.map") {
        Report("", root,
               root ? "the root element is '" + std::string(root.name()) + "', not 'prop.map'"
                    : "no root element");
        return nullptr;
    }
    const pugi::xml_node list = root.child("prop.list");
    if (!list) {
        Report("prop.map", root, "missing 'prop.list'");
        return nullptr;
    }
    const std::vector<Entry> top = ReadRecord(list, "");
    if (const Entry* version = Find(top, "UINodeArchive")) {
        const auto value = ReadInt(*version, "UINodeArchive");
        if (value && *value != 1)
            Report("UINodeArchive", version->value,
                   "unknown archive version " + std::to_string(*value));
    } else {
        Report("", list, "missing key 'UINodeArchive'");
    }
    const Entry* rootEntry = Find(top, "root");
    if (!rootEntry) {
        Report("", list, "missing key 'root'");
        return nullptr;
    }
    return BuildNode(*rootEntry, "root", 0);
}

IntrusivePtr<UI_Node> ArchiveReader::BuildNode(const Entry& entry, const std::string& path,
                                               int depth) {
    if (depth >= UI_NodeBuilder::kMaxNodeDepth) {
        Report(path, entry.value,
               "nodes nest deeper than " + std::to_string(UI_NodeBuilder::kMaxNodeDepth) +
                   "; the subtree is skipped");
        return nullptr;
    }
    if (std::string_view(entry.value.name()) != "prop.list") {
        Report(path, entry.value,
               "expected a node record, found '" + std::string(entry.value.name()) + "'");
        return nullptr;
    }
    const std::vector<Entry> record = ReadRecord(entry.value, path);
    const Entry* adapterEntry = Find(record, "adapter");
    if (!adapterEntry) {
        Report(path, entry.value, "missing key 'adapter'");
        return nullptr;
    }
    const auto adapter = ReadString(*adapterEntry, path + "/adapter");
    if (!adapter)
        return nullptr;
    const Entry* sectionsEntry = Find(record, "sections");
    if (!sectionsEntry) {
        Report(path, entry.value, "missing key 'sections'");
        return nullptr;
    }
    struct Section {
        std::vector<Entry> record;
        std::string name;
        std::string path;
    };
    std::vector<Section> sections;
    for (auto& [member, memberPath] : ReadIndexed(*sectionsEntry, path + "/sections", "section-")) {
        if (std::string_view(member.value.name()) != "prop.list") {
            Report(memberPath, member.value, "expected a section record");
            continue;
        }
        Section section{ReadRecord(member.value, memberPath), {}, memberPath};
        const Entry* name = Find(section.record, "sectionName");
        if (!name) {
            Report(memberPath, member.value, "missing key 'sectionName'");
            continue;
        }
        if (const auto text = ReadString(*name, memberPath + "/sectionName"))
            section.name = *text;
        sections.push_back(std::move(section));
    }
    if (!sections.empty() && ShortClassName(sections.front().name) != ShortClassName(*adapter))
        Report(path + "/sections", sectionsEntry->value,
               "the first section is '" + sections.front().name + "', not the adapter '" +
                   *adapter + "'");

    // The id decides whether the caller supplies this node in place of the archived one.
    std::string id;
    for (const Section& section : sections)
        if (ShortClassName(section.name) == "UI_Node")
            if (const Entry* idEntry = Find(section.record, "id"))
                if (const auto text = ReadString(*idEntry, section.path + "/id"))
                    id = *text;
    IntrusivePtr<UI_Node> node;
    bool isCustom = false;
    if (customNode_ && !id.empty()) {
        node = customNode_(id);
        isCustom = bool(node);
    }
    if (!node) {
        UI_NodeBuilder::AdapterFunction make;
        {
            AdapterRegistry& registry = GetRegistry();
            std::lock_guard lock(registry.mutex);
            const auto found = registry.adapters.find(FullClassName(*adapter));
            if (found != registry.adapters.end())
                make = found->second;
        }
        if (make)
            node = make();
        else if (customNode_) {
            node = customNode_(*adapter);
            isCustom = bool(node);
        }
    }
    if (!node) {
        Report(path + "/adapter", adapterEntry->value,
               "unknown adapter '" + *adapter + "'; the node is skipped");
        return nullptr;
    }
    // Base classes first, so that a derived class's properties have the last word.
    for (auto section = sections.rbegin(); section != sections.rend(); ++section)
        ApplySection(*node, section->record, ShortClassName(section->name), section->path, isCustom,
                     depth);
    if (nodeMap_ && !node->GetID().empty())
        (*nodeMap_)[node->GetID()] = node;
    return node;
}

std::optional<NodeArchiveValue> ArchiveReader::ReadValue(const Entry& entry,
                                                         const std::string& path, int depth) {
    const std::string_view kind = entry.value.name();
    NodeArchiveValue value;
    if (kind == "true" || kind == "false") {
        value.boolean = kind == "true";
    } else if (kind == "int") {
        const auto integer = ReadInt(entry, path);
        if (!integer)
            return std::nullopt;
        value.kind = NodeArchiveValue::Kind::kInteger;
        value.integer = *integer;
    } else if (kind == "float" || kind == "double") {
        const auto number = ReadDouble(entry, path);
        if (!number)
            return std::nullopt;
        value.kind = NodeArchiveValue::Kind::kNumber;
        value.number = *number;
    } else if (kind == "string" || kind == "ustring") {
        value.kind = NodeArchiveValue::Kind::kString;
        value.text = *ReadString(entry, path);
    } else if (kind == "array") {
        value.kind = NodeArchiveValue::Kind::kStringArray;
        value.items = *ReadStringArray(entry, path);
    } else if (kind == "prop.list") {
        if (depth <= 0) {
            Report(path, entry.value, "records nest too deep; the value is skipped");
            return std::nullopt;
        }
        value.kind = NodeArchiveValue::Kind::kRecord;
        for (const Entry& member : ReadRecord(entry.value, path))
            if (auto read = ReadValue(member, path + "/" + member.key, depth - 1))
                value.members.push_back({member.key, std::move(*read)});
    } else {
        Report(path, entry.value, "unknown value element '" + std::string(kind) + "'");
        return std::nullopt;
    }
    return value;
}

bool ArchiveReader::ApplyRegisteredSection(UI_Node& node, const std::vector<Entry>& section,
                                           std::string_view name, const std::string& path) {
    UI_NodeBuilder::SectionApplierFunction applier;
    {
        AdapterRegistry& registry = GetRegistry();
        std::lock_guard lock(registry.mutex);
        const auto found = registry.appliers.find(FullClassName(name));
        if (found == registry.appliers.end())
            return false;
        applier = found->second;
    }
    constexpr int kMaxRecordDepth = 16;
    std::vector<NodeArchiveProperty> properties;
    for (const Entry& entry : section)
        if (entry.key != "sectionName")
            if (auto value = ReadValue(entry, path + "/" + entry.key, kMaxRecordDepth))
                properties.push_back({entry.key, std::move(*value)});
    const NodeArchiveSection typed(std::string(name), std::move(properties),
                                   [&](std::string_view key, const std::string& message) {
                                       const std::string keyPath = path + "/" + std::string(key);
                                       pugi::xml_node where;
                                       for (const Entry& entry : section)
                                           if (entry.key == key)
                                               where = entry.value;
                                       Report(keyPath, where, message);
                                   });
    try {
        applier(node, typed);
    } catch (const std::exception& e) {
        // At the section's own record: the parent of any of its pairs.
        const pugi::xml_node where =
            section.empty() ? pugi::xml_node() : section.front().value.parent().parent();
        Report(path, where, "section '" + std::string(name) + "': " + e.what());
    }
    return true;
}

void ArchiveReader::ApplySection(UI_Node& node, const std::vector<Entry>& section,
                                 std::string_view name, const std::string& path, bool isCustom,
                                 int depth) {
    if (ApplyRegisteredSection(node, section, name, path))
        return;
    if (name == "UI_HotTextNumber")
        ApplyHotTextNumberSection(node, section, path);
    for (const Entry& entry : section) {
        const std::string entryPath = path + "/" + entry.key;
        if (entry.key == "sectionName")
            continue;
        if (name == "UI_Node")
            ApplyNodeKey(node, entry, entryPath);
        else if (name == "UI_SubView") {
            if (entry.key != "children")
                continue; // layout flags and constraints: the toolkit places nothing itself
            if (isCustom)
                continue; // the supplied node brings its own content
            for (auto& [child, childPath] : ReadIndexed(entry, entryPath, "child-"))
                if (auto made = BuildNode(child, childPath, depth + 1))
                    node.ChildPushBack(std::move(made));
        } else if (name == "UI_ControlView")
            ApplyControlKey(node, entry, entryPath);
        else if (name == "UI_Button")
            ApplyButtonKey(node, entry, entryPath);
        else if (name == "UI_HotText")
            ApplyHotTextKey(node, entry, entryPath);
        else if (name == "UI_Popup")
            ApplyPopupKey(node, entry, entryPath);
        else if (name != "UI_HotTextNumber")
            ApplyFurtherKey(node, entry, entryPath);
    }
}

void ArchiveReader::ApplyNodeKey(UI_Node& node, const Entry& entry, const std::string& path) {
    if (entry.key == "bounds") {
        if (const auto rect = ReadRect(entry, path))
            node.SetFrame(*rect);
    } else if (entry.key == "id") {
        if (const auto text = ReadString(entry, path))
            node.SetID(*text);
    } else if (entry.key == "tooltip") {
        if (const auto text = ReadString(entry, path))
            node.UI_SetToolTip(*text);
    } else if (entry.key == "visible") {
        if (const auto visible = ReadBool(entry, path))
            node.UI_SetVisible(*visible);
    }
}

void ArchiveReader::ApplyControlKey(UI_Node& node, const Entry& entry, const std::string& path) {
    auto* control = dynamic_cast<UI_ControlView*>(&node);
    if (!control)
        return;
    const bool known = entry.key == "downState" || entry.key == "enabled" ||
                       entry.key == "suppressFocusDrawing" || entry.key == "wantsFocus";
    if (!known)
        return ApplyFurtherKey(node, entry, path);
    const auto value = ReadBool(entry, path);
    if (!value)
        return;
    if (entry.key == "downState")
        control->SetDownState(*value);
    else if (entry.key == "enabled")
        control->SetEnabled(*value);
    else if (entry.key == "suppressFocusDrawing")
        control->SetSuppressFocusDrawing(*value);
    else
        control->SetWantsKeyboardFocus(*value);
}

void ArchiveReader::ApplyButtonKey(UI_Node& node, const Entry& entry, const std::string& path) {
    auto* button = dynamic_cast<UI_Button*>(&node);
    if (!button)
        return;
    if (entry.key == "variant") {
        if (const auto selected = ReadEnumSelected(entry, path); selected && *selected >= 0)
            button->SetVariant(*selected);
    } else if (entry.key == "notificationOnMouseDown" || entry.key == "emphasized" ||
               entry.key == "quiet" || entry.key == "selected") {
        // Here `selected` is the boolean form; inside a type 2 record it is an index.
        const auto value = ReadBool(entry, path);
        if (!value)
            return;
        if (entry.key == "notificationOnMouseDown")
            button->SetNotificationOnMouseDown(*value);
        else if (entry.key == "emphasized")
            button->GetComponents().emphasized = *value;
        else if (entry.key == "quiet")
            button->GetComponents().quiet = *value;
        else if (*value)
            button->SetValue(1);
    } else {
        ApplyFurtherKey(node, entry, path);
    }
}

void ArchiveReader::ApplyHotTextKey(UI_Node& node, const Entry& entry, const std::string& path) {
    auto* hotText = dynamic_cast<UI_HotText*>(&node);
    if (!hotText)
        return;
    if (entry.key == "fontSize") {
        if (const auto size = ReadDouble(entry, path); size && *size > 0)
            hotText->SetFontSize(float(*size));
    } else if (entry.key == "textLabel") {
        if (const auto text = ReadString(entry, path))
            hotText->SetTextLabel(*text);
    }
}

void ArchiveReader::ApplyHotTextNumberSection(UI_Node& node, const std::vector<Entry>& section,
                                              const std::string& path) {
    auto* number = dynamic_cast<UI_HotTextNumber*>(&node);
    if (!number)
        return;
    auto readDouble = [&](std::string_view key) -> std::optional<double> {
        const Entry* entry = Find(section, key);
        return entry ? ReadDouble(*entry, path + "/" + std::string(key)) : std::nullopt;
    };
    // The range first, so that the value is limited by the archived range and not the default.
    if (const auto v = readDouble("minValue"))
        number->SetMinValue(*v);
    if (const auto v = readDouble("maxValue"))
        number->SetMaxValue(*v);
    if (const auto v = readDouble("increment"))
        number->SetIncrement(*v);
    if (const auto v = readDouble("shiftIncrement"))
        number->SetShiftIncrement(*v);
    if (const auto v = readDouble("cmdIncrement"))
        number->SetCmdIncrement(*v);
    if (const Entry* places = Find(section, "decimalPlaces"))
        if (const auto v = ReadInt(*places, path + "/decimalPlaces"))
            number->SetDecimalPlaces(int(*v));
    if (const Entry* numeric = Find(section, "numericInput"))
        if (const auto v = ReadBool(*numeric, path + "/numericInput"))
            number->SetNumericInput(*v);
    static const std::pair<const char*, unsigned> kFlags[] = {
        {"formatAlwaysSign", UI_HotTextNumber::kFormatAlwaysSign},
        {"formatPadSign", UI_HotTextNumber::kFormatPadSign},
        {"formatNoTrailingZeros", UI_HotTextNumber::kFormatNoTrailingZeros},
        {"formatUseSeparator", UI_HotTextNumber::kFormatUseSeparator},
        {"formatLeadingSpaces", UI_HotTextNumber::kFormatLeadingSpaces},
        {"formatNoLocalization", UI_HotTextNumber::kFormatNoLocalization},
    };
    unsigned flags = number->GetFormatFlags();
    bool anyFlag = false;
    for (const auto& [key, bit] : kFlags)
        if (const Entry* entry = Find(section, key))
            if (const auto on = ReadBool(*entry, path + "/" + key)) {
                flags = *on ? (flags | bit) : (flags & ~bit);
                anyFlag = true;
            }
    if (const Entry* normal = Find(section, "formatNormal"))
        if (const auto on = ReadBool(*normal, path + "/formatNormal"); on && *on && !anyFlag)
            flags = UI_HotTextNumber::kFormatNormal;
    number->SetFormatFlags(flags);
    if (const auto v = readDouble("value"))
        number->SetValue(*v);
}

void ArchiveReader::ApplyPopupKey(UI_Node& node, const Entry& entry, const std::string& path) {
    auto* popup = dynamic_cast<UI_Popup*>(&node);
    if (!popup)
        return;
    if (entry.key == "popupItems") {
        if (auto items = ReadStringArray(entry, path))
            popup->SetItems(std::move(*items));
    } else if (entry.key == "alwaysNotify" || entry.key == "drawDivider") {
        if (const auto value = ReadBool(entry, path))
            entry.key == "alwaysNotify" ? popup->SetAlwaysNotify(*value)
                                        : popup->SetDrawDivider(*value);
    } else if (entry.key == "fontSize") {
        if (const auto size = ReadDouble(entry, path); size && *size > 0)
            popup->SetFont(penrig::Font(float(*size)));
    }
}

void ArchiveReader::ApplyFurtherKey(UI_Node& node, const Entry& entry, const std::string& path) {
    const std::string& key = entry.key;
    if (key == "text" || key == "label") {
        const auto text = ReadString(entry, path);
        if (!text)
            return;
        if (auto* staticText = dynamic_cast<UI_StaticText*>(&node))
            staticText->SetText(*text);
        else if (auto* textButton = dynamic_cast<UI_TextButton*>(&node))
            textButton->SetText(*text);
        else if (auto* checkbox = dynamic_cast<UI_Checkbox*>(&node))
            checkbox->SetText(*text);
        else if (auto* pictureText = dynamic_cast<UI_PictureTextButton*>(&node))
            pictureText->SetText(*text);
        else if (auto* box = dynamic_cast<UI_OutlineBoxWithLabel*>(&node))
            box->SetLabel(*text);
    } else if (key == "checked") {
        if (auto* checkbox = dynamic_cast<UI_Checkbox*>(&node))
            if (const auto value = ReadBool(entry, path))
                checkbox->SetValue(*value);
    } else if (key == "textTruncation") {
        if (auto* staticText = dynamic_cast<UI_StaticText*>(&node))
            if (std::string_view(entry.value.name()) != "prop.list")
                if (const auto value = ReadBool(entry, path))
                    staticText->SetTruncate(*value);
    } else if (key == "imageName") {
        if (auto* picture = dynamic_cast<UI_PictureButton*>(&node))
            if (const auto name = ReadString(entry, path)) {
                if (images_)
                    picture->SetImageSupplyFunction(images_);
                picture->SetImageName(*name);
            }
    } else if (key == "fontSize") {
        if (auto* staticText = dynamic_cast<UI_StaticText*>(&node))
            if (const auto size = ReadDouble(entry, path); size && *size > 0)
                staticText->SetFontSize(float(*size));
    }
    // Every other key is the toolkit's own business and stays unread.
}

} // namespace

IntrusivePtr<UI_Node> UI_NodeBuilder::LoadViewFromXMLText(std::string_view text,
                                                          const ImageSupplyFunction& images,
                                                          NodeMap* nodeMap,
                                                          const CustomNodeFunction& customNode,
                                                          NodeArchiveReport* report) {
    return ArchiveReader(text, images, nodeMap, customNode, report).Load();
}

IntrusivePtr<UI_Node> UI_NodeBuilder::LoadViewFromXML(const ResourceReadFunction& readResource,
                                                      const ImageSupplyFunction& images,
                                                      std::string_view resourceName,
                                                      NodeMap* nodeMap,
                                                      const CustomNodeFunction& customNode,
                                                      NodeArchiveReport* report) {
    std::vector<char> bytes;
    bool found = false;
    if (readResource) {
        if (skins::IsRunningV7OrBeyond())
            found = readResource(std::string(resourceName) + ".V7", bytes);
        if (!found)
            found = readResource(resourceName, bytes);
    }
    if (!found) {
        const std::string message = "no archive '" + std::string(resourceName) + "'";
        static qorcore::debug::TraceSite site;
        if (site.IsEnabled(kTraceCategory, 5))
            qorcore::debug::Trace(5, kTraceCategory, message);
        if (report)
            report->diagnostics.push_back({"", 0, 0, message});
        return nullptr;
    }
    return LoadViewFromXMLText(std::string_view(bytes.data(), bytes.size()), images, nodeMap,
                               customNode, report);
}

bool UI_NodeBuilder::RegisterAdapter(std::string className, AdapterFunction adapter) {
    if (className.empty() || !adapter)
        return false;
    AdapterRegistry& registry = GetRegistry();
    std::lock_guard lock(registry.mutex);
    return registry.adapters.emplace(FullClassName(className), std::move(adapter)).second;
}

bool UI_NodeBuilder::RegisterSectionApplier(std::string className, SectionApplierFunction applier) {
    if (className.empty() || !applier || FullClassName(className).starts_with(kToolkitPrefix))
        return false;
    AdapterRegistry& registry = GetRegistry();
    std::lock_guard lock(registry.mutex);
    return registry.appliers.emplace(std::move(className), std::move(applier)).second;
}

std::optional<bool> NodeArchiveValue::GetBool() const {
    if (kind == Kind::kBoolean)
        return boolean;
    if (kind == Kind::kInteger)
        return integer != 0;
    return std::nullopt;
}

std::optional<double> NodeArchiveValue::GetNumber() const {
    if (kind == Kind::kNumber)
        return number;
    if (kind == Kind::kInteger)
        return double(integer);
    return std::nullopt;
}

const NodeArchiveValue* NodeArchiveValue::Find(std::string_view key) const {
    for (const NodeArchiveProperty& member : members)
        if (member.key == key)
            return &member.value;
    return nullptr;
}

std::optional<int> NodeArchiveValue::GetEnumSelected() const {
    const NodeArchiveValue* type = Find(".aptype");
    const NodeArchiveValue* selected = Find("selected");
    if (kind != Kind::kRecord || !type || type->kind != Kind::kInteger || type->integer != 2 ||
        !selected || selected->kind != Kind::kInteger)
        return std::nullopt;
    return int(selected->integer);
}

const NodeArchiveValue* NodeArchiveSection::Find(std::string_view key) const {
    for (const NodeArchiveProperty& property : properties_)
        if (property.key == key)
            return &property.value;
    return nullptr;
}

void NodeArchiveSection::Report(std::string_view key, const std::string& message) const {
    if (report_)
        report_(key, message);
}

bool UI_NodeBuilder::IsAdapterRegistered(std::string_view className) {
    AdapterRegistry& registry = GetRegistry();
    std::lock_guard lock(registry.mutex);
    return registry.adapters.find(FullClassName(className)) != registry.adapters.end();
}

} // namespace qorui
