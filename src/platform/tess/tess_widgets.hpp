#pragma once

#include "core/any_regular.hpp"
#include "platform/draw/font.hpp"
#include "platform/tess/ui_tess_node_adapter_base.hpp"

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace qormarltess {

/// The engine's own widgets. Each returns null for a name that is not of its kind.
std::shared_ptr<UI_TessNodeAdapterBase> MakeContainerWidget(vorlen::name_t widget,
                                                            const vorlen::dictionary_t& arguments,
                                                            UI_Node* parent,
                                                            const FactoryToken& token);
std::shared_ptr<UI_TessNodeAdapterBase> MakeControlWidget(vorlen::name_t widget,
                                                          const vorlen::dictionary_t& arguments,
                                                          UI_Node* parent,
                                                          const FactoryToken& token);

namespace widget_support {

/// The one reader of widget arguments, for the engine's widgets and the library's adapters
/// alike: a key that is absent leaves the variable as it was and answers false; a value of
/// another type raises `bad_cast`. Numbers of the engine are doubles; the narrower forms cut
/// them for the controls.
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

/// A text argument, localised; "" when absent. Another type raises `bad_cast`.
std::string Text(const vorlen::dictionary_t& arguments, vorlen::name_t key);
/// The cell an argument names with `@cell`; the empty name when absent. Another type raises
/// `bad_cast`.
vorlen::name_t Cell(const vorlen::dictionary_t& arguments, vorlen::name_t key);
/// A number argument; `fallback` when absent. Another type raises `bad_cast`.
double Number(const vorlen::dictionary_t& arguments, vorlen::name_t key, double fallback);
bool Boolean(const vorlen::dictionary_t& arguments, vorlen::name_t key, bool fallback);
/// Whether a cell's value counts as on: true, or a number other than 0.
bool IsOn(const vorlen::any_regular_t& value);
/// A value as a label shows it: numbers in their shortest form, strings and names as they are.
std::string DisplayText(const vorlen::any_regular_t& value);
/// The size a line of text takes in the font, in whole pixels.
std::pair<int, int> TextSize(std::string_view text, const qorui::penrig::Font& font);
/// A dictionary argument given in place, or as the name of a cell whose value is a dictionary.
/// `apply` runs with the dictionary now and, for a cell, again with every later value. A cell
/// that no sheet has raises `std::logic_error` "no cell named 'x' to bind"; another type
/// raises `bad_cast`.
void WithDictionary(const vorlen::dictionary_t& arguments, vorlen::name_t key,
                    const FactoryToken& token,
                    std::function<void(const vorlen::dictionary_t&)> apply);
/// Calls `view` with whether a control of the input `cell` should take input, now and whenever
/// that changes. Nothing for an empty name or a cell that is no input.
void BindEnabled(const FactoryToken& token, vorlen::name_t cell, std::function<void(bool)> view);
/// Enables `node` while the input `cell` counts.
void BindEnabled(const FactoryToken& token, vorlen::name_t cell, UI_Node* node);

} // namespace widget_support

} // namespace qormarltess
