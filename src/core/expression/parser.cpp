#include "core/expression/parser.hpp"

namespace vorlen {

namespace {

// Operator names are made once; the parser compares them by pointer.
struct names_t {
    name_t question = "?"_name, colon = ":"_name, comma = ","_name, dot = "."_name;
    name_t open_paren = "("_name, close_paren = ")"_name;
    name_t open_bracket = "["_name, close_bracket = "]"_name;
    name_t open_brace = "{"_name, close_brace = "}"_name;
    name_t or_ = "||"_name, and_ = "&&"_name, bit_or = "|"_name, bit_xor = "^"_name,
           bit_and = "&"_name;
    name_t equal = "=="_name, not_equal = "!="_name;
    name_t less = "<"_name, greater = ">"_name, less_equal = "<="_name, greater_equal = ">="_name;
    name_t lshift = "<<"_name, rshift = ">>"_name;
    name_t plus = "+"_name, minus = "-"_name, times = "*"_name, divide = "/"_name,
           modulus = "%"_name;
    name_t not_ = "!"_name, tilde = "~"_name;
    name_t true_ = "true"_name, false_ = "false"_name, empty = "empty"_name;

    name_t op_ifelse = ".ifelse"_name, op_or = ".or"_name, op_and = ".and"_name;
    name_t op_bitwise_or = ".bitwise_or"_name, op_bitwise_xor = ".bitwise_xor"_name,
           op_bitwise_and = ".bitwise_and"_name;
    name_t op_equal = ".equal"_name, op_not_equal = ".not_equal"_name;
    name_t op_less = ".less"_name, op_greater = ".greater"_name, op_less_equal = ".less_equal"_name,
           op_greater_equal = ".greater_equal"_name;
    name_t op_lshift = ".bitwise_lshift"_name, op_rshift = ".bitwise_rshift"_name;
    name_t op_add = ".add"_name, op_subtract = ".subtract"_name;
    name_t op_multiply = ".multiply"_name, op_divide = ".divide"_name, op_modulus = ".modulus"_name;
    name_t op_not = ".not"_name, op_negate = ".unary_negate"_name,
           op_bitwise_negate = ".bitwise_negate"_name;
    name_t op_index = ".index"_name, op_function = ".function"_name, op_variable = ".variable"_name;
    name_t op_array = ".array"_name, op_dictionary = ".dictionary"_name;
};

// Made once at load time, so the hot path reads them without a guard.
const names_t names_table;

inline const names_t& names() { return names_table; }

bool is_punctuator(const lex_token_t& token, name_t text) {
    return token.kind == token_kind_t::punctuator && token.value.cast<name_t>() == text;
}

void push_operator(array_t& out, name_t op) {
    out.emplace_back(op);
}

} // namespace

struct expression_parser_t::depth_guard_t {
    explicit depth_guard_t(expression_parser_t& parser) : parser_m(parser) {
        if (++parser_m.depth_m > max_depth) {
            --parser_m.depth_m;
            parser_m.throw_error("expression nested too deeply (more than " +
                                 std::to_string(max_depth) + " levels)");
        }
    }
    ~depth_guard_t() { --parser_m.depth_m; }
    depth_guard_t(const depth_guard_t&) = delete;
    depth_guard_t& operator=(const depth_guard_t&) = delete;

private:
    expression_parser_t& parser_m;
};

expression_parser_t::expression_parser_t(std::string_view text, name_t file_name, int first_line)
    : lexer_m(text, file_name, first_line) {}

const line_position_t& expression_parser_t::next_position() {
    return lexer_m.peek().position;
}

void expression_parser_t::throw_error(const std::string& message, const line_position_t& position) {
    throw stream_error_t(description_m.empty() ? message : description_m + ": " + message,
                         position);
}

void expression_parser_t::throw_error(const std::string& message) {
    throw_error(message, next_position());
}

void expression_parser_t::throw_expected(const std::string& what) {
    throw_error("expected " + what + ", found " + lexer_m.peek().describe());
}

bool expression_parser_t::is_token(name_t punctuator) {
    if (!is_punctuator(lexer_m.peek(), punctuator))
        return false;
    lexer_m.next();
    return true;
}

void expression_parser_t::require_token(name_t punctuator) {
    if (!is_token(punctuator))
        throw_expected(std::string("'") + punctuator.c_str() + "'");
}

bool expression_parser_t::is_identifier(name_t& out) {
    const lex_token_t& token = lexer_m.peek();
    if (token.kind != token_kind_t::identifier)
        return false;
    out = token.value.cast<name_t>();
    lexer_m.next();
    return true;
}

void expression_parser_t::require_identifier(name_t& out) {
    if (!is_identifier(out))
        throw_expected("a name");
}

bool expression_parser_t::is_keyword(name_t keyword) {
    const lex_token_t& token = lexer_m.peek();
    if (token.kind != token_kind_t::keyword || token.value.cast<name_t>() != keyword)
        return false;
    lexer_m.next();
    return true;
}

void expression_parser_t::require_keyword(name_t keyword) {
    if (!is_keyword(keyword))
        throw_expected(std::string("'") + keyword.c_str() + "'");
}

bool expression_parser_t::is_end() {
    return lexer_m.peek().kind == token_kind_t::end;
}

void expression_parser_t::require_end() {
    if (!is_end())
        throw_expected("end of input");
}

bool expression_parser_t::is_expression(array_t& out) {
    return is_conditional(out);
}

void expression_parser_t::require_expression(array_t& out) {
    if (!is_expression(out))
        throw_expected("an expression");
}

// c ? t : e  ->  c, [t], [e], .ifelse; the branches stay unevaluated until chosen.
bool expression_parser_t::is_conditional(array_t& out) {
    depth_guard_t guard(*this);
    if (!is_or(out))
        return false;
    if (!is_token(names().question))
        return true;
    array_t then_branch;
    array_t else_branch;
    require_expression(then_branch);
    require_token(names().colon);
    require_expression(else_branch);
    out.emplace_back(std::move(then_branch));
    out.emplace_back(std::move(else_branch));
    push_operator(out, names().op_ifelse);
    return true;
}

// a || b  ->  a, [b], .or  (the right operand is deferred for short-circuiting)
bool expression_parser_t::is_or(array_t& out) {
    if (!is_and(out))
        return false;
    while (is_token(names().or_)) {
        array_t right;
        if (!is_and(right))
            throw_expected("an expression after '||'");
        out.emplace_back(std::move(right));
        push_operator(out, names().op_or);
    }
    return true;
}

bool expression_parser_t::is_and(array_t& out) {
    if (!is_bitwise_or(out))
        return false;
    while (is_token(names().and_)) {
        array_t right;
        if (!is_bitwise_or(right))
            throw_expected("an expression after '&&'");
        out.emplace_back(std::move(right));
        push_operator(out, names().op_and);
    }
    return true;
}

// Each binary level reads operands of the next tighter level, left to right.
bool expression_parser_t::is_binary(array_t& out, level_t next,
                                    std::initializer_list<operator_row_t> rows) {
    if (!(this->*next)(out))
        return false;
    for (;;) {
        const operator_row_t* matched = nullptr;
        for (const operator_row_t& row : rows) {
            if (is_token(row.text)) {
                matched = &row;
                break;
            }
        }
        if (!matched)
            return true;
        if (!(this->*next)(out))
            throw_expected(std::string("an expression after '") + matched->text.c_str() + "'");
        push_operator(out, matched->token);
    }
}

bool expression_parser_t::is_bitwise_or(array_t& out) {
    return is_binary(out, &expression_parser_t::is_bitwise_xor,
                     {{names().bit_or, names().op_bitwise_or}});
}
bool expression_parser_t::is_bitwise_xor(array_t& out) {
    return is_binary(out, &expression_parser_t::is_bitwise_and,
                     {{names().bit_xor, names().op_bitwise_xor}});
}
bool expression_parser_t::is_bitwise_and(array_t& out) {
    return is_binary(out, &expression_parser_t::is_equality,
                     {{names().bit_and, names().op_bitwise_and}});
}
bool expression_parser_t::is_equality(array_t& out) {
    return is_binary(
        out, &expression_parser_t::is_relational,
        {{names().equal, names().op_equal}, {names().not_equal, names().op_not_equal}});
}
bool expression_parser_t::is_relational(array_t& out) {
    return is_binary(out, &expression_parser_t::is_shift,
                     {{names().less_equal, names().op_less_equal},
                      {names().greater_equal, names().op_greater_equal},
                      {names().less, names().op_less},
                      {names().greater, names().op_greater}});
}
bool expression_parser_t::is_shift(array_t& out) {
    return is_binary(out, &expression_parser_t::is_additive,
                     {{names().lshift, names().op_lshift}, {names().rshift, names().op_rshift}});
}
bool expression_parser_t::is_additive(array_t& out) {
    return is_binary(out, &expression_parser_t::is_multiplicative,
                     {{names().plus, names().op_add}, {names().minus, names().op_subtract}});
}
bool expression_parser_t::is_multiplicative(array_t& out) {
    return is_binary(out, &expression_parser_t::is_unary,
                     {{names().times, names().op_multiply},
                      {names().divide, names().op_divide},
                      {names().modulus, names().op_modulus}});
}

bool expression_parser_t::is_unary(array_t& out) {
    const operator_row_t rows[] = {{names().not_, names().op_not},
                                   {names().minus, names().op_negate},
                                   {names().tilde, names().op_bitwise_negate}};
    for (const operator_row_t& row : rows) {
        if (!is_token(row.text))
            continue;
        depth_guard_t guard(*this);
        if (!is_unary(out))
            throw_expected(std::string("an expression after '") + row.text.c_str() + "'");
        push_operator(out, row.token);
        return true;
    }
    return is_postfix(out);
}

// a[i] -> a, i, .index;  a.k -> a, @k, .index
bool expression_parser_t::is_postfix(array_t& out) {
    if (!is_primary(out))
        return false;
    for (;;) {
        if (is_token(names().open_bracket)) {
            require_expression(out);
            require_token(names().close_bracket);
            push_operator(out, names().op_index);
        } else if (is_token(names().dot)) {
            name_t key;
            const lex_token_t& token = lexer_m.peek();
            // Keys may be spelled like keywords ("a.empty"); any word is a key here.
            if (token.kind == token_kind_t::identifier || token.kind == token_kind_t::keyword) {
                key = token.value.cast<name_t>();
                lexer_m.next();
            } else {
                throw_expected("a name after '.'");
            }
            out.emplace_back(key);
            push_operator(out, names().op_index);
        } else {
            return true;
        }
    }
}

bool expression_parser_t::is_primary(array_t& out) {
    const lex_token_t& token = lexer_m.peek();
    switch (token.kind) {
    case token_kind_t::number:
        out.push_back(token.value);
        lexer_m.next();
        return true;
    case token_kind_t::string: {
        // Adjacent string literals join into one, so long texts may be split across lines.
        std::string text = token.value.cast<std::string>();
        lexer_m.next();
        while (lexer_m.peek().kind == token_kind_t::string)
            text += lexer_m.next().value.cast<std::string>();
        out.emplace_back(std::move(text));
        return true;
    }
    case token_kind_t::name_literal:
        out.push_back(token.value);
        lexer_m.next();
        return true;
    case token_kind_t::identifier: {
        const name_t name = token.value.cast<name_t>();
        if (name == names().true_ || name == names().false_) {
            out.emplace_back(name == names().true_);
            lexer_m.next();
            return true;
        }
        if (name == names().empty) {
            out.emplace_back(empty_t());
            lexer_m.next();
            return true;
        }
        lexer_m.next();
        if (is_token(names().open_paren)) {
            require_arguments(out);
            out.emplace_back(name);
            push_operator(out, names().op_function);
        } else {
            out.emplace_back(name);
            push_operator(out, names().op_variable);
        }
        return true;
    }
    case token_kind_t::punctuator: {
        const name_t text = token.value.cast<name_t>();
        if (text == names().open_paren) {
            lexer_m.next();
            require_expression(out);
            require_token(names().close_paren);
            return true;
        }
        if (text == names().open_bracket) {
            lexer_m.next();
            require_array_literal(out);
            return true;
        }
        if (text == names().open_brace) {
            lexer_m.next();
            require_dictionary_literal(out);
            return true;
        }
        return false;
    }
    default:
        return false;
    }
}

// f(x, y) -> x, y, 2, .array;  f(k: v) -> @k, v, 1, .dictionary;  f() -> [ ]
void expression_parser_t::require_arguments(array_t& out) {
    if (is_token(names().close_paren)) {
        out.emplace_back(array_t());
        return;
    }
    const lex_token_t& first = lexer_m.peek();
    const bool named =
        (first.kind == token_kind_t::identifier || first.kind == token_kind_t::keyword) &&
        is_punctuator(lexer_m.peek(1), names().colon);
    std::size_t count = 0;
    do {
        if (named) {
            const lex_token_t& key = lexer_m.peek();
            if ((key.kind != token_kind_t::identifier && key.kind != token_kind_t::keyword) ||
                !is_punctuator(lexer_m.peek(1), names().colon))
                throw_expected("a named argument 'name: value'");
            out.push_back(key.value);
            lexer_m.next();
            lexer_m.next();
        }
        require_expression(out);
        ++count;
    } while (is_token(names().comma));
    require_token(names().close_paren);
    out.emplace_back(static_cast<double>(count));
    push_operator(out, named ? names().op_dictionary : names().op_array);
}

// [x, y] -> x, y, 2, .array;  [ ] -> an empty array literal
void expression_parser_t::require_array_literal(array_t& out) {
    if (is_token(names().close_bracket)) {
        out.emplace_back(array_t());
        return;
    }
    std::size_t count = 0;
    do {
        require_expression(out);
        ++count;
    } while (is_token(names().comma) && !is_punctuator(lexer_m.peek(), names().close_bracket));
    require_token(names().close_bracket);
    out.emplace_back(static_cast<double>(count));
    push_operator(out, names().op_array);
}

// { k: v, m: w } -> @k, v, @m, w, 2, .dictionary;  { } -> an empty dictionary literal
void expression_parser_t::require_dictionary_literal(array_t& out) {
    if (is_token(names().close_brace)) {
        out.emplace_back(dictionary_t());
        return;
    }
    std::size_t count = 0;
    do {
        const lex_token_t& key = lexer_m.peek();
        if (key.kind == token_kind_t::identifier || key.kind == token_kind_t::keyword)
            out.push_back(key.value);
        else if (key.kind == token_kind_t::string)
            out.emplace_back(name_t(key.value.cast<std::string>().c_str()));
        else
            throw_expected("a key");
        lexer_m.next();
        require_token(names().colon);
        require_expression(out);
        ++count;
    } while (is_token(names().comma) && !is_punctuator(lexer_m.peek(), names().close_brace));
    require_token(names().close_brace);
    out.emplace_back(static_cast<double>(count));
    push_operator(out, names().op_dictionary);
}

array_t parse_expression(std::string_view text, name_t file_name) {
    expression_parser_t parser(text, file_name);
    array_t result;
    parser.require_expression(result);
    parser.require_end();
    return result;
}

} // namespace vorlen
