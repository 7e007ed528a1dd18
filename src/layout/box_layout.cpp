#include "layout/box_layout.hpp"

#include "layout/layout_attributes_reader.hpp"

#include <memory>

namespace vorlen {

namespace {

class box_t : public placeable_t {
public:
    box_t(name_t name, std::int32_t width, std::int32_t height)
        : name_m(name), width_m(width), height_m(height) {}

    void measure(extents_t& result) override {
        result.width() = width_m;
        result.height() = height_m;
    }
    void place(const place_data_t&) override {}
    std::string type_name() const override { return name_m.c_str(); }

private:
    name_t name_m;
    std::int32_t width_m;
    std::int32_t height_m;
};

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
        std::make_shared<box_t>(widget.name, attributes.width(), attributes.height()));
    if (!container)
        return;
    for (const widget_description_t& child : widget.children)
        add(node, child);
}

} // namespace vorlen
