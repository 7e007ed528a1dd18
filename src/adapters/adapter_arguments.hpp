#pragma once

#include "core/any_regular.hpp"
#include "platform/core/color_rgba.hpp"
#include "platform/tess/factory_token.hpp"
#include "platform/tess/tess_widgets.hpp"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace qormarltess {
class Assemblage;
}

/// What the adapters of this library make of their arguments. They read them with the view
/// engine's reader (`Read`, `ReadText`, `Cell`, `WithDictionary`, `BindEnabled`), so that the
/// engine's widgets and the adapters fail alike; the conversions of values only adapters take
/// live here.
namespace qoraudiofiltersui::adapter_arguments {

using qormarltess::widget_support::BindEnabled;
using qormarltess::widget_support::Cell;
using qormarltess::widget_support::Read;
using qormarltess::widget_support::ReadText;
using qormarltess::widget_support::WithDictionary;

/// An array of booleans, one per point (`visible`, `can_delete`, ...), as the curve editor
/// takes them.
std::vector<char> ToFlags(const vorlen::any_regular_t& value);
/// A dictionary of `r`, `g`, `b` from 0 to 1, opaque.
qorcore::ColorRGBA ToColor(const vorlen::dictionary_t& color);

/// The active points of a curve cell, {curve_points: [[x, y], ...], num_active_points: n}: the
/// first n pairs (all of them when n is larger). A missing key raises `std::out_of_range`
/// "dictionary_t: key 'curve_points' not found"; a pair of another length `std::runtime_error`.
std::vector<std::pair<double, double>> ReadCurvePoints(const vorlen::dictionary_t& cell);

} // namespace qoraudiofiltersui::adapter_arguments
