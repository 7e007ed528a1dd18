#pragma once

#include "core/any_regular.hpp"

#include <string>

namespace qormarltess {

// Operations on regular values that the script languages offer through the editors' function
// pack.

/// The largest and the smallest number a control accepts when a script sets no limit.
double default_maximum();
double default_minimum();
/// Reads an expression's text and evaluates it (no variables, no functions beyond the
/// built-ins); `std::runtime_error` or `stream_error_t` when it can't.
vorlen::any_regular_t evaluate_serialization(const std::string& text);
/// Evaluates a postfix token stream the same way.
vorlen::any_regular_t evaluate_token_stream(const vorlen::array_t& tokens);
bool has_key(const vorlen::dictionary_t& dictionary, vorlen::name_t key);
std::string name_to_string(vorlen::name_t name);
vorlen::name_t string_to_name(const std::string& text);
/// The value in the text form of the engine's serialisation.
std::string serialize_regular(const vorlen::any_regular_t& value);
/// The expression text of a token stream.
std::string serialize_token_stream(const vorlen::array_t& tokens);
/// A token stream that evaluates to the value.
vorlen::array_t tokenize_regular(const vorlen::any_regular_t& value);
/// The token streams of expression texts, one per string of the array.
vorlen::array_t tokenize_serialization(const vorlen::array_t& texts);
/// The union of dictionaries; a later one's key wins.
vorlen::dictionary_t merge_dictionary_set(const vorlen::array_t& dictionaries);

} // namespace qormarltess
