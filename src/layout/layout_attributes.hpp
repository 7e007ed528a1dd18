#pragma once

#include "layout/extents.hpp"

#include <array>
#include <cstdint>
#include <vector>

namespace vorlen {

/// How an item sits in its container along one axis.
enum class alignment_t : std::int32_t {
    forward = 0,      // near edge
    reverse = 1,      // far edge
    center = 2,       // centred
    proportional = 3, // centred, share kept proportional to position
    forward_fill = 4, // near edge, takes spare length
    reverse_fill = 5, // far edge, takes spare length
    default_ = 6      // the parent's child alignment, resolved before solving
};

/// How a container arranges its children. A column's major axis is the vertical, a row's the
/// horizontal; an overlay has none: all children share the same frame.
enum class placement_t : std::int32_t { leaf = 0, column = 1, row = 2, overlay = 3 };

/// "forward", "reverse", ..., "default"; "invalid" for a value outside the enumeration.
const char* alignment_text(alignment_t alignment) noexcept;
/// "leaf", "column", "row", "overlay"; "invalid" otherwise.
const char* placement_text(placement_t placement) noexcept;

/// What a layout script says about an item, on top of the extents it measures.
struct layout_attributes_t : extents_t {
    struct axis_t {
        alignment_t alignment = alignment_t::default_;
        /// The item takes no part in guide alignment.
        bool suppress = false;
        /// The container's inner margin at the near and far end.
        length_pair_t margin{0, 0};
        /// What a child's `default` alignment resolves to.
        alignment_t child_alignment = alignment_t::forward;

        friend bool operator==(const axis_t&, const axis_t&) = default;
    };

    axis_t& horizontal_axis() noexcept { return axis[0]; }
    const axis_t& horizontal_axis() const noexcept { return axis[0]; }
    axis_t& vertical_axis() noexcept { return axis[1]; }
    const axis_t& vertical_axis() const noexcept { return axis[1]; }

    /// Extra offset for an item aligned to an end; applied on both axes.
    std::int32_t indent = 0;
    /// The container is a real widget: its children's positions stay relative to it.
    bool create = true;
    /// A container's guides are re-spaced evenly.
    bool balance = false;
    /// Entry i is the gap before child i; the last entry repeats for the rest, none means 0.
    std::vector<std::int32_t> spacing;
    std::array<axis_t, 2> axis;
    placement_t placement = placement_t::leaf;

    friend bool operator==(const layout_attributes_t&, const layout_attributes_t&) = default;
};

} // namespace vorlen
