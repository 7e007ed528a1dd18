#include "platform/tess/marl_library.hpp"

#include "core/expression/expression_formatter.hpp"
#include "core/expression/parser.hpp"
#include "core/expression/virtual_machine.hpp"

#include <limits>
#include <sstream>

namespace qormarltess {

using vorlen::any_regular_t;
using vorlen::array_t;
using vorlen::dictionary_t;
using vorlen::name_t;

double default_maximum() {
    return std::numeric_limits<double>::max();
}

double default_minimum() {
    return std::numeric_limits<double>::lowest();
}

any_regular_t evaluate_token_stream(const array_t& tokens) {
    vorlen::virtual_machine_t machine;
    machine.evaluate(tokens);
    any_regular_t result = machine.back();
    machine.pop_back();
    return result;
}

any_regular_t evaluate_serialization(const std::string& text) {
    return evaluate_token_stream(vorlen::parse_expression(text));
}

bool has_key(const dictionary_t& dictionary, name_t key) {
    return dictionary.find(key) != dictionary.end();
}

std::string name_to_string(name_t name) {
    return name.c_str();
}

name_t string_to_name(const std::string& text) {
    return name_t(text.c_str());
}

std::string serialize_regular(const any_regular_t& value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

std::string serialize_token_stream(const array_t& tokens) {
    return vorlen::format_expression(tokens);
}

array_t tokenize_regular(const any_regular_t& value) {
    return vorlen::parse_expression(serialize_token_stream(array_t{value}));
}

array_t tokenize_serialization(const array_t& texts) {
    array_t result;
    for (const any_regular_t& text : texts)
        result.push_back(any_regular_t(vorlen::parse_expression(text.cast<std::string>())));
    return result;
}

dictionary_t merge_dictionary_set(const array_t& dictionaries) {
    dictionary_t result;
    for (const any_regular_t& entry : dictionaries)
        for (const auto& [key, value] : entry.cast<dictionary_t>())
            result[key] = value;
    return result;
}

} // namespace qormarltess
