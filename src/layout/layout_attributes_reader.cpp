#include "layout/layout_attributes_reader.hpp"

#include "core/stream_error.hpp"
#include "core/type_name.hpp"

#include <cmath>
#include <cstdint>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace vorlen {

namespace {

std::string number_text(double x) {
    std::ostringstream out;
    out << x;
    return out.str();
}

[[noreturn]] void wrong(name_t argument, const std::string& expected, const any_regular_t& value) {
    throw std::runtime_error(std::string(argument.c_str()) + ": expected " + expected + ", found " +
                             type_name(value.type_info()).c_str());
}

std::int32_t length_of(name_t argument, const any_regular_t& value) {
    if (!value.is<double>())
        wrong(argument, "a number", value);
    const double x = value.cast<double>();
    if (!(std::fabs(x) <= std::numeric_limits<std::int32_t>::max()))
        throw std::runtime_error(std::string(argument.c_str()) + ": " + number_text(x) +
                                 " is out of range");
    return static_cast<std::int32_t>(x); // the engine's integers are truncated numbers
}

alignment_t alignment_of(name_t argument, const any_regular_t& value) {
    static const std::pair<name_t, alignment_t> table[] = {
        {"align_left"_name, alignment_t::forward},
        {"align_top"_name, alignment_t::forward},
        {"align_forward"_name, alignment_t::forward},
        {"align_right"_name, alignment_t::reverse},
        {"align_bottom"_name, alignment_t::reverse},
        {"align_reverse"_name, alignment_t::reverse},
        {"align_center"_name, alignment_t::center},
        {"align_proportional"_name, alignment_t::proportional},
        {"align_fill"_name, alignment_t::forward_fill},
        {"align_forward_fill"_name, alignment_t::forward_fill},
        {"align_reverse_fill"_name, alignment_t::reverse_fill},
        {"align_default"_name, alignment_t::default_}};
    if (value.is<name_t>()) {
        const name_t name = value.cast<name_t>();
        for (const auto& [text, alignment] : table)
            if (name == text)
                return alignment;
        throw std::runtime_error(std::string(argument.c_str()) + ": unknown alignment @" +
                                 name.c_str());
    }
    wrong(argument, "an alignment such as @align_left", value);
}

placement_t placement_of(name_t argument, const any_regular_t& value) {
    if (!value.is<name_t>())
        wrong(argument, "a placement such as @place_row", value);
    const name_t name = value.cast<name_t>();
    if (name == "place_row"_name)
        return placement_t::row;
    if (name == "place_column"_name)
        return placement_t::column;
    if (name == "place_overlay"_name)
        return placement_t::overlay;
    throw std::runtime_error(std::string(argument.c_str()) + ": unknown placement @" +
                             name.c_str());
}

void read_guide_mask(name_t argument, const any_regular_t& value, layout_attributes_t& out) {
    auto mask = [&](const any_regular_t& entry) {
        if (!entry.is<name_t>())
            wrong(argument, "@guide_label or @guide_baseline", entry);
        const name_t name = entry.cast<name_t>();
        if (name == "guide_label"_name)
            out.axis[0].suppress = true;
        else if (name == "guide_baseline"_name)
            out.axis[1].suppress = true;
        else
            throw std::runtime_error(std::string(argument.c_str()) + ": unknown guide @" +
                                     name.c_str());
    };
    out.axis[0].suppress = false;
    out.axis[1].suppress = false;
    if (value.is<array_t>())
        for (const any_regular_t& entry : value.cast<array_t>())
            mask(entry);
    else
        mask(value);
}

void read_spacing(name_t argument, const any_regular_t& value, layout_attributes_t& out) {
    // Entry i is the gap before child i: nothing comes before the first.
    out.spacing.assign(1, 0);
    if (value.is<array_t>()) {
        for (const any_regular_t& entry : value.cast<array_t>())
            out.spacing.push_back(length_of(argument, entry));
    } else if (value.is<double>()) {
        out.spacing.push_back(length_of(argument, value));
    } else {
        wrong(argument, "a number or an array of numbers", value);
    }
}

void read_margin(name_t argument, const any_regular_t& value, layout_attributes_t& out) {
    if (value.is<double>()) {
        const std::int32_t m = length_of(argument, value);
        out.axis[0].margin = {m, m};
        out.axis[1].margin = {m, m};
        return;
    }
    if (!value.is<array_t>() || value.cast<array_t>().size() != 4)
        wrong(argument, "a number or an array of four numbers", value);
    const array_t& sides = value.cast<array_t>();
    out.axis[0].margin = {length_of(argument, sides[0]), length_of(argument, sides[2])};
    out.axis[1].margin = {length_of(argument, sides[1]), length_of(argument, sides[3])};
}

} // namespace

layout_attributes_t default_layout_attributes(name_t widget) {
    layout_attributes_t a;
    if (widget == "row"_name) {
        a.placement = placement_t::row;
        a.create = false;
    } else if (widget == "column"_name) {
        a.placement = placement_t::column;
        a.create = false;
    } else if (widget == "overlay"_name) {
        a.placement = placement_t::overlay;
        a.create = false;
    } else if (widget == "layout_script"_name) {
        a.placement = placement_t::overlay;
        a.create = false;
    } else if (widget == "tab_group"_name) {
        a.placement = placement_t::overlay;
    } else if (widget == "group"_name || widget == "subview"_name || widget == "optional"_name ||
               widget == "radiogroup"_name) {
        a.placement = placement_t::column;
    }
    return a;
}

bool is_layout_container(const widget_description_t& widget) {
    return widget.has_block || !widget.children.empty() ||
           default_layout_attributes(widget.name).placement != placement_t::leaf;
}

void read_layout_attributes(const dictionary_t& arguments, layout_attributes_t& attributes) {
    for (const auto& [key, value] : arguments) {
        if (key == "horizontal"_name)
            attributes.axis[0].alignment = alignment_of(key, value);
        else if (key == "vertical"_name)
            attributes.axis[1].alignment = alignment_of(key, value);
        else if (key == "child_horizontal"_name)
            attributes.axis[0].child_alignment = alignment_of(key, value);
        else if (key == "child_vertical"_name)
            attributes.axis[1].child_alignment = alignment_of(key, value);
        else if (key == "placement"_name)
            attributes.placement = placement_of(key, value);
        else if (key == "spacing"_name)
            read_spacing(key, value, attributes);
        else if (key == "margin"_name)
            read_margin(key, value, attributes);
        else if (key == "indent"_name)
            attributes.indent = length_of(key, value);
        else if (key == "guide_mask"_name)
            read_guide_mask(key, value, attributes);
        else if (key == "width"_name)
            attributes.width() = length_of(key, value);
        else if (key == "height"_name)
            attributes.height() = length_of(key, value);
    }
}

layout_attributes_t layout_attributes_of(const widget_description_t& widget) {
    layout_attributes_t attributes = default_layout_attributes(widget.name);
    try {
        read_layout_attributes(widget.arguments, attributes);
    } catch (const std::exception& error) {
        throw stream_error_t(error, widget.position);
    }
    return attributes;
}

} // namespace vorlen
