#pragma once

#include "core/any_regular.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace vorlen {

/// Turns a postfix token stream back into expression text. One instance serves one
/// call of `format_expression`; it is not shared.
class expression_formatter_t {
public:
    /// Literal arrays (deferred operands) nested deeper than this are refused with
    /// `std::runtime_error` rather than risking the stack.
    static constexpr int max_depth = 256;

    expression_formatter_t(std::size_t indent, bool one_line, int depth = 0);

    /// The text of the stream. Throws `std::runtime_error` "Expression invalid." when an operator
    /// lacks an operand, "Invalid expression token stream" when not exactly one text is left,
    /// and `std::logic_error` "static_table key not found" for an operator with no text form.
    std::string format(const array_t& token_stream);

    struct row_t;

private:
    /// The row of an operator token; throws `std::logic_error` "static_table key not found".
    static const row_t& find_row(name_t token);

    void push_literal(const any_regular_t& token);
    std::string pop();

    void op_unary(const char* text);
    void op_binary(const char* text);
    void op_variable(const char* text);
    void op_ifelse(const char* text);
    void op_index(const char* text);
    void op_function(const char* text);
    void op_array(const char* text);
    void op_dictionary(const char* text);

    /// The "[ ... ]" or "{ ... }" frame around `items`, with the indentation rules.
    std::string frame(char open, char close, const std::vector<std::string>& items,
                      bool dictionary);

    std::vector<std::string> stack_m;
    std::size_t indent_m;
    bool one_line_m;
    int depth_m;
};

/// The expression text of a token stream; an empty stream gives an empty string. `indent` is the
/// column the text's continuation lines start from; in one-line mode the first element and the
/// closing bracket of an array or dictionary stay on the line.
std::string format_expression(const array_t& token_stream, std::size_t indent = 0,
                              bool one_line = false);

} // namespace vorlen
