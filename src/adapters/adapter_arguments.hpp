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

/// How the adapters of this library read the arguments of their widget: one typed reader for
/// every argument, so that they all fail alike. A key that is absent leaves the variable at its
/// default; a value of another type raises `vorlen::bad_cast`.
namespace qoraudiofiltersui::adapter_arguments {

/// Numbers of the engine are doubles; these narrow them for the controls.
bool Read(const vorlen::dictionary_t& arguments, vorlen::name_t key, double& variable);
bool Read(const vorlen::dictionary_t& arguments, vorlen::name_t key, float& variable);
bool Read(const vorlen::dictionary_t& arguments, vorlen::name_t key, int& variable);
bool Read(const vorlen::dictionary_t& arguments, vorlen::name_t key, bool& variable);
bool Read(const vorlen::dictionary_t& arguments, vorlen::name_t key, vorlen::name_t& variable);
bool Read(const vorlen::dictionary_t& arguments, vorlen::name_t key, vorlen::array_t& variable);
bool Read(const vorlen::dictionary_t& arguments, vorlen::name_t key,
          vorlen::dictionary_t& variable);
/// A text, through the localiser, so that "$$$/path/Key=Default" shows as the user's language.
bool ReadText(const vorlen::dictionary_t& arguments, vorlen::name_t key, std::string& variable);

/// The cell an argument names with `@cell`; the empty name when the key is absent.
vorlen::name_t ReadCell(const vorlen::dictionary_t& arguments, vorlen::name_t key);

/// An array of booleans, one per point (`visible`, `can_delete`, ...), as the curve editor
/// takes them.
std::vector<char> ToFlags(const vorlen::any_regular_t& value);
/// A dictionary of `r`, `g`, `b` from 0 to 1, opaque.
qorcore::ColorRGBA ToColor(const vorlen::dictionary_t& color);

/// The active points of a curve cell, {curve_points: [[x, y], ...], num_active_points: n}: the
/// first n pairs (all of them when n is larger). A missing key raises `std::out_of_range`
/// "dictionary_t: key 'curve_points' not found"; a pair of another length `std::runtime_error`.
std::vector<std::pair<double, double>> ReadCurvePoints(const vorlen::dictionary_t& cell);

/// A dictionary argument given in place or as a watched `@cell`: the engine's own reader.
using qormarltess::widget_support::WithDictionary;

/// Whether a control of an input cell should take input: calls `view` now and whenever that
/// changes. Nothing for an empty name or an output.
void BindEnabled(const qormarltess::FactoryToken& token, vorlen::name_t cell,
                 std::function<void(bool)> view);

} // namespace qoraudiofiltersui::adapter_arguments
