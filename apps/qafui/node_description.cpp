#include "node_description.hpp"
#include "parameter_options.hpp"

#include "controls/edit_number.hpp"
#include "controls/picture_toggle_button.hpp"
#include "platform/host/parameter_store_filter.hpp"
#include "platform/panels/ui_outline_box_with_label.hpp"
#include "platform/panels/ui_static_text.hpp"
#include "platform/widgets/ui_button.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_control_view.hpp"
#include "platform/widgets/ui_disclosure_triangle_button.hpp"
#include "platform/widgets/ui_hot_text.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "platform/widgets/ui_knob.hpp"
#include "platform/widgets/ui_picture_text_button.hpp"
#include "platform/widgets/ui_popup.hpp"
#include "platform/widgets/ui_radio_group.hpp"
#include "platform/widgets/ui_slider.hpp"
#include "platform/widgets/ui_text_button.hpp"
#include "platform/widgets/ui_text_field.hpp"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <cxxabi.h>
#include <memory>
#include <ostream>
#include <typeinfo>

namespace qafui::cli {

namespace {

/// The class of a node as its source names it, without namespaces.
std::string class_name_of(const qorui::UI_Node& node) {
    const char* mangled = typeid(node).name();
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> demangled(
        abi::__cxa_demangle(mangled, nullptr, nullptr, &status), std::free);
    std::string name = status == 0 && demangled ? demangled.get() : mangled;
    // Namespaces and template arguments would only add noise; a nested name keeps its last part.
    if (const std::size_t angle = name.find('<'); angle != std::string::npos)
        name.erase(angle);
    if (const std::size_t colons = name.rfind("::"); colons != std::string::npos)
        name.erase(0, colons + 2);
    return name;
}

std::optional<std::string> text_of(const qorui::UI_Node& node) {
    if (auto* edit = dynamic_cast<const qoraudiofiltersui::EditNumber*>(&node)) {
        const qorui::UI_HotTextNumber* number = edit->GetHotTextNumber();
        if (!number)
            return std::nullopt;
        std::string text = number->GetDisplayString();
        if (!edit->GetUnitLabel().empty())
            text += " " + edit->GetUnitLabel();
        return text;
    }
    if (auto* hot = dynamic_cast<const qorui::UI_HotText*>(&node)) {
        std::string text = hot->GetDisplayString();
        if (!hot->GetTextLabel().empty())
            text += " " + hot->GetTextLabel();
        return text;
    }
    if (auto* popup = dynamic_cast<const qorui::UI_Popup*>(&node))
        return popup->GetValueString();
    if (auto* text = dynamic_cast<const qorui::UI_StaticText*>(&node))
        return text->GetText();
    if (auto* checkbox = dynamic_cast<const qorui::UI_Checkbox*>(&node))
        return checkbox->GetText();
    if (auto* button = dynamic_cast<const qorui::UI_TextButton*>(&node))
        return button->GetText();
    if (auto* button = dynamic_cast<const qorui::UI_PictureTextButton*>(&node))
        return button->GetText();
    if (auto* field = dynamic_cast<const qorui::UI_TextField*>(&node))
        return field->GetText();
    if (auto* box = dynamic_cast<const qorui::UI_OutlineBoxWithLabel*>(&node))
        return box->GetLabel();
    return std::nullopt;
}

/// Whether the node's value is something a person sets and reads: a momentary button's or a
/// label's is not.
bool holds_value(const qorui::UI_Node& node) {
    return dynamic_cast<const qorui::UI_Checkbox*>(&node) ||
           dynamic_cast<const qorui::UI_ToggleButton*>(&node) ||
           dynamic_cast<const qorui::UI_DisclosureTriangleButton*>(&node) ||
           dynamic_cast<const qorui::UI_RadioGroup*>(&node) ||
           dynamic_cast<const qorui::UI_Slider*>(&node) ||
           dynamic_cast<const qorui::UI_Knob*>(&node) ||
           dynamic_cast<const qorui::UI_Popup*>(&node) ||
           dynamic_cast<const qorui::UI_HotText*>(&node) ||
           dynamic_cast<const qoraudiofiltersui::EditNumber*>(&node);
}

std::optional<double> value_of(const qorui::UI_Node& node) {
    if (auto* toggle = dynamic_cast<const qoraudiofiltersui::PictureToggleButton*>(&node))
        return toggle->GetState() ? 1.0 : 0.0;
    auto* control = dynamic_cast<const qorui::UI_ControlView*>(&node);
    if (!control || !holds_value(node) || control->IsValueUnknown() ||
        !std::isfinite(control->GetValue()))
        return std::nullopt;
    return control->GetValue();
}

node_record_t describe(const qorui::UI_Node& node, const qorui::UI_Node& editor, bool shown,
                       bool enabled) {
    node_record_t record;
    record.class_name = class_name_of(node);
    record.id = node.GetID();
    const auto& frame = node.GetFrame();
    // The editor's own frame is where it sits in its window; inside it, frames are mapped to
    // its coordinates so that they can be clicked as they are written.
    if (&node == &editor) {
        record.frame = {0, 0, frame.width, frame.height};
    } else {
        const auto origin =
            editor.UI_GlobalToLocalF(node.UI_LocalToGlobalF(qorcore::PointT<float>{0, 0}));
        record.frame = {origin.x, origin.y, frame.width, frame.height};
    }
    record.visible = shown && node.IsVisible();
    record.enabled = enabled && node.IsEnabled();
    record.text = text_of(node);
    record.value = value_of(node);
    record.tip = node.GetToolTipText();
    for (const auto& child : node.GetChildren())
        record.children.push_back(describe(*child, editor, record.visible, record.enabled));
    return record;
}

std::string number_text(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (const char c : text) {
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\t': out += "\\t"; break;
        default: out += c;
        }
    }
    return out + "\"";
}

void write_node(std::ostream& out, const node_record_t& node, int depth) {
    out << std::string(std::size_t(depth) * 2, ' ') << node.class_name;
    if (!node.id.empty())
        out << " #" << node.id;
    out << " [" << number_text(node.frame.x) << " " << number_text(node.frame.y) << " "
        << number_text(node.frame.width) << " " << number_text(node.frame.height) << "]";
    if (!node.visible)
        out << " hidden";
    if (!node.enabled)
        out << " disabled";
    if (node.text)
        out << " text=" << quoted(*node.text);
    if (node.value)
        out << " value=" << number_text(*node.value);
    if (!node.tip.empty())
        out << " tip=" << quoted(node.tip);
    out << "\n";
    for (const node_record_t& child : node.children)
        write_node(out, child, depth + 1);
}

nlohmann::json node_json(const node_record_t& node) {
    nlohmann::json children = nlohmann::json::array();
    for (const node_record_t& child : node.children)
        children.push_back(node_json(child));
    return {
        {"class", node.class_name},
        {"id", node.id},
        {"frame", {node.frame.x, node.frame.y, node.frame.width, node.frame.height}},
        {"visible", node.visible},
        {"enabled", node.enabled},
        {"text", node.text ? nlohmann::json(*node.text) : nlohmann::json(nullptr)},
        {"value", node.value ? nlohmann::json(*node.value) : nlohmann::json(nullptr)},
        {"tip", node.tip},
        {"children", std::move(children)},
    };
}

} // namespace

node_record_t describe_node(const qorui::UI_Node& editor) {
    return describe(editor, editor, true, true);
}

editor_description_t describe_editor(const std::string& effect, const qorui::UI_Node& editor,
                                     const qoraudiofilterhost::ParameterStoreFilter& filter) {
    editor_description_t description;
    description.effect = effect;
    description.size = {0, 0, editor.GetFrame().width, editor.GetFrame().height};
    description.root = describe_node(editor);
    for (int i = 0; i < int(filter.GetParameterCount()); ++i)
        description.parameters.push_back({i, filter.GetDescriptor(i).name,
                                          filter.GetParameterValue(i),
                                          plain_value_text(filter, i)});
    return description;
}

void write_description_text(std::ostream& out, const editor_description_t& description) {
    out << description.effect << " " << number_text(description.size.width) << "x"
        << number_text(description.size.height) << "\n";
    write_node(out, description.root, 1);
    out << "parameters:\n";
    for (const parameter_record_t& parameter : description.parameters)
        out << "  " << parameter.index << " " << quoted(parameter.name) << " "
            << number_text(parameter.value) << " " << parameter.text << "\n";
}

std::string description_json(const editor_description_t& description) {
    nlohmann::json parameters = nlohmann::json::array();
    for (const parameter_record_t& parameter : description.parameters)
        parameters.push_back({{"index", parameter.index},
                              {"name", parameter.name},
                              {"value", parameter.value},
                              {"text", parameter.text}});
    const nlohmann::json document = {
        {"effect", description.effect},
        {"size", {description.size.width, description.size.height}},
        {"nodes", node_json(description.root)},
        {"parameters", std::move(parameters)},
    };
    // Texts come from scripts and archives; a stray byte must not stop the whole document.
    return document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

} // namespace qafui::cli
