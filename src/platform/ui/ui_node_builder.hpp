#pragma once

#include "platform/draw/image.hpp"
#include "platform/ui/ui_node.hpp"

#include <functional>
#include <map>
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
};

namespace ui {
using ::qorui::UI_NodeBuilder;
}

} // namespace qorui
