#pragma once

#include "platform/draw/image.hpp"
#include "platform/ui/ui_node.hpp"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qorui {

/// One problem found while reading a node archive. `path` names the element by its keys
/// ("root/sections/section-0/bounds"); `line` and `column` are 1-based, 0 when unknown.
struct NodeArchiveDiagnostic {
    std::string path;
    int line = 0;
    int column = 0;
    std::string message;
};

/// What a load found besides the tree: every problem.
struct NodeArchiveReport {
    std::vector<NodeArchiveDiagnostic> diagnostics;
};

struct NodeArchiveProperty;

/// A property value of an archived section, read into its type for a section applier of a
/// higher layer. The element decides the kind: `true`/`false`, `int` (signed or unsigned),
/// `float`/`double`, `string`/`ustring` (localised as the loader does), an `array` of strings,
/// or a nested `prop.list` record (typed records carry their ".aptype" as a member).
struct NodeArchiveValue {
    enum class Kind { kBoolean, kInteger, kNumber, kString, kStringArray, kRecord };

    Kind kind = Kind::kBoolean;
    bool boolean = false;
    long long integer = 0;
    double number = 0.0;
    std::string text;
    std::vector<std::string> items;
    std::vector<NodeArchiveProperty> members;

    /// A boolean, or an integer where a boolean may stand.
    std::optional<bool> GetBool() const;
    /// A number, or an integer.
    std::optional<double> GetNumber() const;
    const std::string* GetString() const { return kind == Kind::kString ? &text : nullptr; }
    /// A member of a record; null for other kinds and absent keys.
    const NodeArchiveValue* Find(std::string_view key) const;
    /// The `selected` index of an enumeration record (".aptype" 2); empty for anything else.
    std::optional<int> GetEnumSelected() const;
};

struct NodeArchiveProperty {
    std::string key;
    NodeArchiveValue value;
};

/// One section of a node record as a section applier sees it: the class name and the class's
/// own properties in archive order. `Report` adds a problem about one of them to the load's
/// report, with its place in the archive.
class NodeArchiveSection {
public:
    using ReportFunction = std::function<void(std::string_view key, const std::string& message)>;

    NodeArchiveSection(std::string name, std::vector<NodeArchiveProperty> properties,
                       ReportFunction report)
        : name_(std::move(name)), properties_(std::move(properties)), report_(std::move(report)) {}

    const std::string& GetName() const { return name_; }
    const std::vector<NodeArchiveProperty>& GetProperties() const { return properties_; }
    const NodeArchiveValue* Find(std::string_view key) const;
    void Report(std::string_view key, const std::string& message) const;

private:
    std::string name_;
    std::vector<NodeArchiveProperty> properties_;
    ReportFunction report_;
};

/// Makes live node trees from archived ones: a `prop.map` container (version "4") whose
/// `root` is a node record with an `adapter` class name and a chain of `sections`, one per
/// class, most derived first. Nodes are made by a registry of adapters keyed by class name;
/// each section's properties are applied to the node when it is of that class.
///
/// Archives are resources of the library, so a bad one never throws: a missing key keeps the
/// toolkit's default, a bad value is skipped, an unknown adapter is traced and skipped with its
/// subtree, and a document whose root is not `prop.map` gives a null node. Every such problem
/// goes to the report.
class UI_NodeBuilder {
public:
    /// Nodes entered by id; a later node of the same id replaces an earlier one.
    using NodeMap = std::map<std::string, IntrusivePtr<UI_Node>>;
    /// Asked for nodes the archive only holds a place for; null lets the loader go on.
    using CustomNodeFunction = std::function<IntrusivePtr<UI_Node>(const std::string& name)>;
    /// Reads the resource of that name and type "xml"; false when there is none.
    using ResourceReadFunction = std::function<bool(std::string_view name, std::vector<char>& out)>;
    using ImageSupplyFunction = std::function<IntrusivePtr<penrig::Image>(const std::string& name)>;
    using AdapterFunction = std::function<IntrusivePtr<UI_Node>()>;
    /// Applies the properties of one section of a class the toolkit doesn't know to a node
    /// made for it. Whatever it throws is reported and the load goes on.
    using SectionApplierFunction =
        std::function<void(UI_Node& node, const NodeArchiveSection& section)>;

    /// Node records nest no deeper than this; deeper ones are reported and skipped.
    static constexpr int kMaxNodeDepth = 64;

    /// Loads the archive `resourceName`; under the newer look the ".V7" variant is read when it
    /// exists. Null when neither reads or the archive has no usable root.
    static IntrusivePtr<UI_Node> LoadViewFromXML(const ResourceReadFunction& readResource,
                                                 const ImageSupplyFunction& images,
                                                 std::string_view resourceName, NodeMap* nodeMap,
                                                 const CustomNodeFunction& customNode,
                                                 NodeArchiveReport* report = nullptr);

    /// The same for archive text already in memory.
    static IntrusivePtr<UI_Node>
    LoadViewFromXMLText(std::string_view text, const ImageSupplyFunction& images, NodeMap* nodeMap,
                        const CustomNodeFunction& customNode, NodeArchiveReport* report = nullptr);

    /// Enters an adapter for a full class name ("qoraudiofiltersui::ColorField"); false when
    /// the name is empty or taken. The toolkit's own classes are entered from the start, under
    /// "qorui::ui::" names.
    static bool RegisterAdapter(std::string className, AdapterFunction adapter);
    static bool IsAdapterRegistered(std::string_view className);
    /// Enters the applier of the sections named `className`, so that a layer above the toolkit
    /// reads its own classes' properties; false when the name is empty or taken. The toolkit's
    /// own sections keep their built-in reading.
    static bool RegisterSectionApplier(std::string className, SectionApplierFunction applier);
};

namespace ui {
using ::qorui::UI_NodeBuilder;
}

} // namespace qorui
