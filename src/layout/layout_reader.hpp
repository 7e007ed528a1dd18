#pragma once

#include "core/any_regular.hpp"
#include "core/stream_error.hpp"

#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlen {

class sheet_t;

/// One widget statement of a layout script, with its arguments evaluated.
struct widget_description_t {
    name_t name;
    /// The arguments by name, `parameters:` merged in (what a widget says itself wins).
    dictionary_t arguments;
    std::vector<widget_description_t> children;
    /// Written with a block of children, even an empty one, rather than as a leaf.
    bool has_block = false;
    /// Where the widget's name stands.
    line_position_t position;
    /// Set on the root of a layout and on that of each layout inserted by `layout_script`: the
    /// layout's own sheet, holding its `constant:` and `interface:` cells.
    std::shared_ptr<sheet_t> sheet;
};

/// A layout script read whole.
struct layout_description_t {
    /// The declared name; nothing reads it.
    name_t name;
    /// The widget of the `view` statement.
    widget_description_t view;
};

/// The text of a layout resource, and the name to report its positions under.
struct layout_source_t {
    std::string text;
    name_t file_name;
};

struct layout_reader_options_t {
    /// Finds the layout resource that `layout_script(identifier: ...)` names; none without it.
    std::function<std::optional<layout_source_t>(const std::string& identifier)> provider;
    /// Called with each new layout sheet before its cells are read, to install what arguments
    /// may call (the function pack, say).
    std::function<void(sheet_t&)> prepare_sheet;
};

/// Reads a layout script:
///
///     layout name {
///     constant:  gap: 4;
///     interface: shown: true;
///     view subview(name: "Main") {
///         row(spacing: gap) { static_text(name: 'Gain:'); wex_edit_number(identifier: "Gain") }
///     }
///     }
///
/// Arguments are evaluated at once against the layout's own sheet. `layout_script(identifier:
/// 'Band', layoutId: 2)` reads the layout that the provider gives for "Band" and hangs its view
/// under the `layout_script` widget; each `identifier` inside it becomes "Band2_" + identifier.
/// Failures raise `stream_error_t` at the offending place ("file:line:column" from the file
/// name), with the place of each `layout_script` that led there after it; errors of the text
/// are prefixed "layout description".
layout_description_t parse_layout_script(std::string_view text, name_t file_name,
                                         const layout_reader_options_t& options = {});
layout_description_t parse_layout_script(std::istream& stream, name_t file_name,
                                         const layout_reader_options_t& options = {});

} // namespace vorlen
