#pragma once

#include "core/expression/lexer.hpp"

#include <initializer_list>
#include <string>
#include <string_view>

namespace vorlen {

/// Reads expressions into postfix token streams, and offers the token tests that the script
/// readers built on it use for their own statements. Failures raise `stream_error_t` at the
/// offending token's position, the message prefixed with the description of the text (such as
/// "property model description") when one is set.
class expression_parser_t {
public:
    /// Nesting beyond this many levels is refused rather than risking the stack.
    static constexpr int max_depth = 256;

    expression_parser_t(std::string_view text, name_t file_name, int first_line = 1);
    virtual ~expression_parser_t() = default;

    void set_description(std::string description) {
        lexer_m.set_description(description);
        description_m = std::move(description);
    }

    /// Appends the tokens of one expression to `out` if one starts here.
    bool is_expression(array_t& out);
    void require_expression(array_t& out);

    /// Tests for and consumes a punctuator such as ";" or "<==".
    bool is_token(name_t punctuator);
    void require_token(name_t punctuator);
    bool is_identifier(name_t& out);
    void require_identifier(name_t& out);
    bool is_keyword(name_t keyword);
    void require_keyword(name_t keyword);
    bool is_end();
    void require_end();

    /// Raises a `stream_error_t` at the next token: "expected WHAT, found 'TOKEN'".
    [[noreturn]] void throw_expected(const std::string& what);
    [[noreturn]] void throw_error(const std::string& message);
    [[noreturn]] void throw_error(const std::string& message, const line_position_t& position);

    const line_position_t& next_position();
    lexer_t& lexer() noexcept { return lexer_m; }

private:
    struct depth_guard_t;
    struct operator_row_t {
        name_t text;  // as written
        name_t token; // the operator token it becomes
    };
    using level_t = bool (expression_parser_t::*)(array_t&);

    bool is_binary(array_t& out, level_t next, std::initializer_list<operator_row_t> rows);
    bool is_conditional(array_t& out);
    bool is_or(array_t& out);
    bool is_and(array_t& out);
    bool is_bitwise_or(array_t& out);
    bool is_bitwise_xor(array_t& out);
    bool is_bitwise_and(array_t& out);
    bool is_equality(array_t& out);
    bool is_relational(array_t& out);
    bool is_shift(array_t& out);
    bool is_additive(array_t& out);
    bool is_multiplicative(array_t& out);
    bool is_unary(array_t& out);
    bool is_postfix(array_t& out);
    bool is_primary(array_t& out);
    void require_arguments(array_t& out);
    void require_array_literal(array_t& out);
    void require_dictionary_literal(array_t& out);

    lexer_t lexer_m;
    std::string description_m;
    int depth_m = 0;
};

/// The token stream of a text that holds exactly one expression.
array_t parse_expression(std::string_view text, name_t file_name = name_t());

} // namespace vorlen
