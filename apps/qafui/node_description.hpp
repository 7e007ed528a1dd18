#pragma once

// What `qafui describe` prints of an editor: its node tree as a person sees it (what each node
// is, where, whether it is shown and enabled, its text, its value, its tip) and the effect's
// parameters, as text or as one JSON document.

#include "platform/core/rect.hpp"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace qorui {
class UI_Node;
}
namespace qoraudiofilterhost {
class ParameterStoreFilter;
}

namespace qafui::cli {

struct node_record_t {
    std::string class_name; ///< without namespaces: "UI_Popup", "EditNumber"
    std::string id;
    qorcore::RectT<float> frame;     ///< in the editor's coordinates, which event scripts use
    bool visible = true;             ///< shown: visible itself and through every ancestor
    bool enabled = true;             ///< enabled itself and through every ancestor
    std::optional<std::string> text; ///< the text a person reads on it
    std::optional<double> value;     ///< the value of a control, unless unknown
    std::string tip;
    std::vector<node_record_t> children;
};

struct parameter_record_t {
    int index = 0;
    std::string name;
    float value = 0.0f; ///< normalised
    std::string text;   ///< the plain value with its unit
};

struct editor_description_t {
    std::string effect;
    qorcore::RectT<float> size; ///< the editor's width and height (x and y are 0)
    node_record_t root;
    std::vector<parameter_record_t> parameters;
};

/// The record of `editor` and every node below it.
node_record_t describe_node(const qorui::UI_Node& editor);

editor_description_t describe_editor(const std::string& effect, const qorui::UI_Node& editor,
                                     const qoraudiofilterhost::ParameterStoreFilter& filter);

/// The tree one node a line, indented by depth, then the parameters one a line.
void write_description_text(std::ostream& out, const editor_description_t& description);

/// One JSON document: effect, size, nodes (a tree of objects) and parameters.
std::string description_json(const editor_description_t& description);

} // namespace qafui::cli
