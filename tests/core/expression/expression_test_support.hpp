#pragma once

// Token-stream builders and outcome helpers shared by the expression tests.

#include "core/any_regular.hpp"
#include "core/expression_value_format.hpp"

#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

namespace vorlen::testing {

using S = array_t;

inline any_regular_t op(const char* token) {
    return any_regular_t(name_t(token));
}
inline any_regular_t nm(const char* text) {
    return any_regular_t(name_t(text));
}
inline any_regular_t str(const char* text) {
    return any_regular_t(std::string(text));
}

/// The tokens of a variable reference.
inline array_t V(const char* name) {
    return S{nm(name), op(".variable")};
}

inline array_t join(std::initializer_list<array_t> parts) {
    array_t result;
    for (const array_t& part : parts)
        result.insert(result.end(), part.begin(), part.end());
    return result;
}

/// A value as expression text, so whole streams compare and print in one readable line.
inline std::string expression_text(const any_regular_t& value) {
    std::ostringstream out;
    expression_value_format_t format;
    format_scope_t scope(out, format);
    out << value;
    return out.str();
}

/// Every operator token the machine knows.
inline std::vector<std::string> operator_tokens() {
    std::istringstream in(
        ".not .unary_negate .add .subtract .multiply .modulus .divide .less "
        ".greater .less_equal .greater_equal .equal .not_equal .ifelse .index "
        ".function .array .dictionary .variable .and .or .bitwise_and "
        ".bitwise_xor .bitwise_or .bitwise_rshift .bitwise_lshift .bitwise_negate");
    std::vector<std::string> tokens;
    for (std::string token; in >> token;)
        tokens.push_back(token);
    return tokens;
}

/// The text of the exception of type E that `f` raises; another outcome is reported as such.
template <typename E, typename F>
std::string failure(F f) {
    try {
        f();
    } catch (const E& error) {
        return error.what();
    } catch (...) {
        return "other exception";
    }
    return "no exception";
}

} // namespace vorlen::testing
