#include "layout/box_layout.hpp"

#include "layout/layout_attributes_reader.hpp"

#include "core/stream_error.hpp"

#include <cmath>
#include <memory>
#include <utility>

namespace vorlen {

namespace {

class box_t : public placeable_t {
public:
    box_t(name_t name, std::int32_t width, std::int32_t height, guide_set_t guides,
          guide_set_t baselines)
        : name_m(name), width_m(width), height_m(height), guides_m(std::move(guides)),
          baselines_m(std::move(baselines)) {}

    void measure(extents_t& result) override {
        result.width() = width_m;
        result.height() = height_m;
        result.horizontal().guide_set = guides_m;
        result.vertical().guide_set = baselines_m;
    }
    void place(const place_data_t&) override {}
    std::string type_name() const override { return name_m.c_str(); }

private:
    name_t name_m;
    std::int32_t width_m;
    std::int32_t height_m;
    guide_set_t guides_m;
    guide_set_t baselines_m;
};

/// A box's `guides` or `baselines`: ascending whole offsets within the box's length.
guide_set_t guide_argument(const widget_description_t& widget, name_t argument,
                           std::int32_t length) {
    const auto found = widget.arguments.find(argument);
    if (found == widget.arguments.end())
        return {};
    const std::string wanted = std::string("'") + argument.c_str() +
                               "' takes an array of ascending offsets from 0 to the box's length";
    if (!found->second.is<array_t>())
        throw stream_error_t(wanted, widget.position);
    guide_set_t guides;
    for (const any_regular_t& entry : found->second.cast<array_t>()) {
        if (!entry.is<double>())
            throw stream_error_t(wanted, widget.position);
        const double offset = entry.cast<double>();
        if (!(offset >= 0.0 && offset <= double(length)) || offset != std::floor(offset) ||
            (!guides.empty() && offset < double(guides.back())))
            throw stream_error_t(wanted, widget.position);
        guides.push_back(std::int32_t(offset));
    }
    return guides;
}

} // namespace

box_layout_t::box_layout_t(const widget_description_t& view) {
    add(tess_t::iterator(), view);
}

// The reader bounds how deep a description nests, and so this recursion.
void box_layout_t::add(tess_t::iterator parent, const widget_description_t& widget) {
    const layout_attributes_t attributes = layout_attributes_of(widget);
    const bool container = is_layout_container(widget);
    const tess_t::iterator node = tess_m.add_placeable(
        parent, attributes, container,
        std::make_shared<box_t>(widget.name, attributes.width(), attributes.height(),
                                guide_argument(widget, "guides"_name, attributes.width()),
                                guide_argument(widget, "baselines"_name, attributes.height())));
    if (!container)
        return;
    for (const widget_description_t& child : widget.children)
        add(node, child);
}

} // namespace vorlen
