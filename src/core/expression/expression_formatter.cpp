// expression_formatter_t: the 21-row table, the texts, indentation and one-line mode.

#include "core/expression/expression_formatter.hpp"

#include "core/static_table.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <stdexcept>

namespace vorlen {

struct expression_formatter_t::row_t {
    void (expression_formatter_t::*handler)(const char*);
    const char* text;
};

namespace {

struct name_less_t {
    bool operator()(name_t a, name_t b) const noexcept {
        return std::strcmp(a.c_str(), b.c_str()) < 0;
    }
};

using row_t = expression_formatter_t::row_t;
using table_t = static_table<name_t, row_t, 21, name_less_t>;

/// Drops one pair of enclosing parentheses. It looks at no nesting: every parenthesis the
/// formatter writes encloses a whole sub-expression.
std::string remove_enclosing_parentheses(const std::string& text) {
    if (text.size() >= 2 && text.front() == '(' && text.back() == ')')
        return text.substr(1, text.size() - 2);
    return text;
}

/// Each line break followed by four blanks becomes a line break and extra + 4 blanks.
std::string reindent(const std::string& text, std::size_t extra) {
    static const std::string pattern = "\n    ";
    std::string result;
    result.reserve(text.size());
    std::size_t position = 0;
    while (true) {
        const std::size_t found = text.find(pattern, position);
        if (found == std::string::npos)
            break;
        result.append(text, position, found - position);
        result += '\n';
        result.append(extra + 4, ' ');
        position = found + pattern.size();
    }
    result.append(text, position, std::string::npos);
    return result;
}

/// The text without its first character (the "@" of a name literal).
std::string drop_first(const std::string& text) {
    return text.empty() ? text : text.substr(1);
}

} // namespace

const expression_formatter_t::row_t& expression_formatter_t::find_row(name_t token) {
    using F = expression_formatter_t;
    static const table_t table = [] {
        table_t t({{
            {name_t(".not"), {&F::op_unary, "!"}},
            {name_t(".unary_negate"), {&F::op_unary, "-"}},
            {name_t(".add"), {&F::op_binary, "+"}},
            {name_t(".subtract"), {&F::op_binary, "-"}},
            {name_t(".multiply"), {&F::op_binary, "*"}},
            {name_t(".modulus"), {&F::op_binary, "%"}},
            {name_t(".divide"), {&F::op_binary, "/"}},
            {name_t(".less"), {&F::op_binary, "<"}},
            {name_t(".greater"), {&F::op_binary, ">"}},
            {name_t(".less_equal"), {&F::op_binary, "<="}},
            {name_t(".greater_equal"), {&F::op_binary, ">="}},
            {name_t(".equal"), {&F::op_binary, "=="}},
            {name_t(".not_equal"), {&F::op_binary, "!="}},
            {name_t(".ifelse"), {&F::op_ifelse, "?:"}},
            {name_t(".index"), {&F::op_index, "[]"}},
            {name_t(".function"), {&F::op_function, "()"}},
            {name_t(".array"), {&F::op_array, "[]"}},
            {name_t(".dictionary"), {&F::op_dictionary, "{}"}},
            {name_t(".variable"), {&F::op_variable, ""}},
            {name_t(".and"), {&F::op_binary, "&&"}},
            {name_t(".or"), {&F::op_binary, "||"}},
        }});
        t.sort();
        return t;
    }();
    return table.find(token);
}

expression_formatter_t::expression_formatter_t(std::size_t indent, bool one_line, int depth)
    : indent_m(indent), one_line_m(one_line), depth_m(depth) {
    if (depth_m > max_depth)
        throw std::runtime_error("format_expression: token streams nested deeper than " +
                                 std::to_string(max_depth) + " levels");
}

std::string expression_formatter_t::format(const array_t& token_stream) {
    for (const any_regular_t& token : token_stream) {
        if (token.is<name_t>()) {
            const name_t name = token.cast<name_t>();
            if (name.c_str()[0] == '.') {
                const row_t& row = find_row(name);
                (this->*row.handler)(row.text);
                continue;
            }
        }
        push_literal(token);
    }
    if (stack_m.size() != 1)
        throw std::runtime_error("Invalid expression token stream");
    return std::move(stack_m.back());
}

void expression_formatter_t::push_literal(const any_regular_t& token) {
    if (token.is<name_t>()) {
        stack_m.push_back(std::string("@") + token.cast<name_t>().c_str());
    } else if (token.is<std::string>()) {
        stack_m.push_back("\"" + token.cast<std::string>() + "\"");
    } else if (token.is<array_t>()) {
        const array_t& array = token.cast<array_t>();
        if (array.empty())
            stack_m.push_back("[ ]");
        else
            stack_m.push_back(
                expression_formatter_t(indent_m + 4, false, depth_m + 1).format(array));
    } else if (token.is<dictionary_t>()) {
        stack_m.push_back("{ }");
    } else if (token.is<bool>()) {
        stack_m.push_back(token.cast<bool>() ? "true" : "false");
    } else {
        std::ostringstream text;
        token.serialize(text);
        stack_m.push_back(text.str());
    }
}

std::string expression_formatter_t::pop() {
    if (stack_m.empty())
        throw std::runtime_error("Expression invalid.");
    std::string result = std::move(stack_m.back());
    stack_m.pop_back();
    return result;
}

void expression_formatter_t::op_unary(const char* text) {
    std::string operand = pop();
    stack_m.push_back(text + operand);
}

void expression_formatter_t::op_binary(const char* text) {
    std::string right = pop();
    std::string left = pop();
    stack_m.push_back("(" + left + " " + text + " " + right + ")");
}

void expression_formatter_t::op_variable(const char*) {
    stack_m.push_back(drop_first(pop()));
}

void expression_formatter_t::op_ifelse(const char*) {
    std::string else_text = pop();
    std::string then_text = pop();
    std::string condition = pop();
    stack_m.push_back("(" + condition + " ? " + then_text + " : " + else_text + ")");
}

void expression_formatter_t::op_index(const char*) {
    std::string key = pop();
    std::string base = pop();
    if (!key.empty() && key.front() == '@')
        stack_m.push_back(base + "." + key.substr(1));
    else
        stack_m.push_back(base + "[" + remove_enclosing_parentheses(key) + "]");
}

void expression_formatter_t::op_function(const char*) {
    std::string name = drop_first(pop());
    std::string arguments = pop();
    // The argument text comes from `.array` or `.dictionary`: drop its bracket pair.
    arguments = arguments.size() >= 2 ? arguments.substr(1, arguments.size() - 2) : std::string();
    stack_m.push_back(name + "(" + arguments + ")");
}

void expression_formatter_t::op_array(const char*) {
    const long count = std::atoi(pop().c_str());
    std::vector<std::string> items;
    for (long i = 0; i < count; ++i)
        items.push_back(pop());
    std::reverse(items.begin(), items.end());
    stack_m.push_back(frame('[', ']', items, false));
}

void expression_formatter_t::op_dictionary(const char*) {
    const long count = std::atoi(pop().c_str());
    // Pairs are popped value first, then key; they are kept as key, value, key, value.
    std::vector<std::string> items;
    for (long i = 0; i < count; ++i) {
        std::string value = pop();
        std::string key = pop();
        items.push_back(std::move(value));
        items.push_back(std::move(key));
    }
    std::reverse(items.begin(), items.end());
    stack_m.push_back(frame('{', '}', items, true));
}

std::string expression_formatter_t::frame(char open, char close,
                                          const std::vector<std::string>& items, bool dictionary) {
    const std::size_t saved_indent = indent_m;
    indent_m += one_line_m ? 2 : 4;
    std::string result(1, open);
    result += one_line_m ? ' ' : '\n';
    const std::size_t step = dictionary ? 2 : 1;
    for (std::size_t i = 0; i < items.size(); i += step) {
        if (i != 0)
            result += ",\n";
        if (!(i == 0 && one_line_m))
            result.append(indent_m, ' ');
        if (!dictionary) {
            result += reindent(remove_enclosing_parentheses(items[i]), 2);
            continue;
        }
        const std::string key = drop_first(items[i]);
        const std::string& value = items[i + 1];
        result += key;
        result += ':';
        if (one_line_m) {
            result += ' ';
        } else if (!value.empty() && (value.front() == '[' || value.front() == '{') &&
                   value != "[ ]" && value != "{ }") {
            result += '\n';
            result.append(indent_m, ' ');
        } else {
            result += ' ';
        }
        result += reindent(remove_enclosing_parentheses(value), key.size() + 4);
    }
    indent_m = saved_indent;
    if (one_line_m) {
        result += ' ';
    } else {
        result += '\n';
        result.append(indent_m, ' ');
    }
    result += close;
    return result;
}

std::string format_expression(const array_t& token_stream, std::size_t indent, bool one_line) {
    if (token_stream.empty())
        return std::string();
    return expression_formatter_t(indent, one_line).format(token_stream);
}

} // namespace vorlen
