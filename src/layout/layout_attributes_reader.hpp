#pragma once

#include "core/any_regular.hpp"
#include "layout/layout_attributes.hpp"
#include "layout/layout_reader.hpp"

namespace vorlen {

/// What a widget of the layout vocabulary is before its arguments say more: `row`, `column`
/// and `overlay` arrange their children and are no widgets of their own (`create` false);
/// `group`, `subview`, `optional` and `radiogroup` are framed columns; `tab_group` and
/// `layout_script` overlay their children; everything else is a leaf.
layout_attributes_t default_layout_attributes(name_t widget);

/// A widget takes children when it has a block or its name is that of a container.
bool is_layout_container(const widget_description_t& widget);

/// Reads the layout arguments common to all widgets over `attributes`:
///
/// - `horizontal`, `vertical`, `child_horizontal`, `child_vertical`: @align_left, @align_top
///   (forward), @align_right, @align_bottom (reverse), @align_center, @align_proportional,
///   @align_fill (forward fill), @align_default; also @align_forward, @align_reverse,
///   @align_forward_fill, @align_reverse_fill.
/// - `placement`: @place_row, @place_column, @place_overlay.
/// - `spacing`: the gap between children, or an array of gaps in order, the last repeating.
/// - `margin`: one length for all four sides, or [left, top, right, bottom].
/// - `indent`, `width`, `height`: lengths.
/// - `guide_mask`: @guide_label, @guide_baseline, or an array of them: the guides the item
///   keeps out of alignment (label edges horizontally, baselines vertically).
///
/// A wrong value throws `std::runtime_error` naming the argument.
void read_layout_attributes(const dictionary_t& arguments, layout_attributes_t& attributes);

/// The defaults of the widget's name with its arguments read over them; a failure is a
/// `stream_error_t` at the widget.
layout_attributes_t layout_attributes_of(const widget_description_t& widget);

} // namespace vorlen
