#include "core/expression/lexer.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace vorlen {

namespace {

bool is_identifier_start(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}
bool is_identifier_char(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}
bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// Longest first, so "<==" wins over "<=" and "<".
constexpr const char* punctuators[] = {
    "<==", "==", "!=", "<=", ">=", "&&", "||", "<<", ">>", "<", ">", "!", "~", "+", "-", "*",
    "/",   "%",  "&",  "|",  "^",  "?",  ":",  "(",  ")",  "[", "]", "{", "}", ",", ";", "."};

} // namespace

std::string lex_token_t::describe() const {
    switch (kind) {
    case token_kind_t::end:
        return "end of input";
    case token_kind_t::identifier:
    case token_kind_t::keyword:
    case token_kind_t::punctuator:
        return "'" + std::string(value.cast<name_t>().c_str()) + "'";
    case token_kind_t::name_literal:
        return "'@" + std::string(value.cast<name_t>().c_str()) + "'";
    case token_kind_t::number: {
        char buffer[32];
        auto result = std::to_chars(buffer, buffer + sizeof buffer, value.cast<double>());
        return "number " + std::string(buffer, result.ptr);
    }
    case token_kind_t::string:
        return "string \"" + value.cast<std::string>() + "\"";
    }
    return "token";
}

lexer_t::lexer_t(std::string_view text, name_t file_name, int first_line)
    : text_m(text), file_name_m(file_name), line_m(first_line) {}

void lexer_t::add_keyword(name_t keyword) {
    keywords_m.push_back(keyword);
}

const lex_token_t& lexer_t::peek(std::size_t ahead) {
    while (lookahead_m.size() <= ahead)
        lookahead_m.push_back(read_token());
    return lookahead_m[ahead];
}

lex_token_t lexer_t::next() {
    peek();
    lex_token_t result = std::move(lookahead_m.front());
    lookahead_m.pop_front();
    return result;
}

line_position_t lexer_t::position_here() const {
    return line_position_t(file_name_m, line_m, static_cast<std::streamoff>(line_start_m),
                           static_cast<std::streamoff>(offset_m));
}

void lexer_t::throw_error(const std::string& message, const line_position_t& position) const {
    throw stream_error_t(description_m.empty() ? message : description_m + ": " + message,
                         position);
}

void lexer_t::skip_space_and_comments() {
    while (offset_m < text_m.size()) {
        const char c = current();
        if (c == '\n') {
            ++offset_m;
            ++line_m;
            line_start_m = offset_m;
        } else if (c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v') {
            ++offset_m;
        } else if (c == '/' && at(1) == '/') {
            while (offset_m < text_m.size() && current() != '\n')
                ++offset_m;
        } else if (c == '/' && at(1) == '*') {
            const line_position_t start = position_here();
            offset_m += 2;
            for (;;) {
                if (offset_m >= text_m.size())
                    throw_error("unterminated comment", start);
                if (current() == '*' && at(1) == '/') {
                    offset_m += 2;
                    break;
                }
                if (current() == '\n') {
                    ++line_m;
                    line_start_m = offset_m + 1;
                }
                ++offset_m;
            }
        } else {
            return;
        }
    }
}

lex_token_t lexer_t::read_token() {
    skip_space_and_comments();
    lex_token_t token;
    token.position = position_here();
    if (offset_m >= text_m.size())
        return token;

    const char c = current();
    if (is_identifier_start(c)) {
        const std::size_t start = offset_m;
        while (is_identifier_char(current()))
            ++offset_m;
        const std::string text(text_m.substr(start, offset_m - start));
        const name_t name(text.c_str());
        token.kind = std::find(keywords_m.begin(), keywords_m.end(), name) != keywords_m.end()
                         ? token_kind_t::keyword
                         : token_kind_t::identifier;
        token.value = any_regular_t(name);
        return token;
    }
    if (c == '@') {
        ++offset_m;
        if (!is_identifier_start(current()))
            throw_error("expected a name after '@'", token.position);
        const std::size_t start = offset_m;
        while (is_identifier_char(current()))
            ++offset_m;
        token.kind = token_kind_t::name_literal;
        token.value =
            any_regular_t(name_t(std::string(text_m.substr(start, offset_m - start)).c_str()));
        return token;
    }
    if (is_digit(c)) {
        const std::size_t start = offset_m;
        while (is_digit(current()))
            ++offset_m;
        if (current() == '.' && is_digit(at(1))) {
            ++offset_m;
            while (is_digit(current()))
                ++offset_m;
        }
        if ((current() == 'e' || current() == 'E') &&
            (is_digit(at(1)) || ((at(1) == '+' || at(1) == '-') && is_digit(at(2))))) {
            offset_m += 2;
            while (is_digit(current()))
                ++offset_m;
        }
        if (is_identifier_char(current()))
            throw_error("malformed number", token.position);
        double value = 0;
        const char* first = text_m.data() + start;
        const char* last = text_m.data() + offset_m;
        auto result = std::from_chars(first, last, value);
        if (result.ec == std::errc::result_out_of_range)
            throw_error("number out of range", token.position);
        token.kind = token_kind_t::number;
        token.value = any_regular_t(value);
        return token;
    }
    if (c == '"' || c == '\'') {
        const char quote = c;
        ++offset_m;
        std::string text;
        for (;;) {
            if (offset_m >= text_m.size() || current() == '\n')
                throw_error("unterminated string", token.position);
            char x = current();
            ++offset_m;
            if (x == quote)
                break;
            if (x == '\\') {
                const char escaped = current();
                ++offset_m;
                switch (escaped) {
                case 'n':
                    x = '\n';
                    break;
                case 't':
                    x = '\t';
                    break;
                case 'r':
                    x = '\r';
                    break;
                case '\\':
                    x = '\\';
                    break;
                case '"':
                    x = '"';
                    break;
                case '\'':
                    x = '\'';
                    break;
                default:
                    throw_error("unknown escape sequence in string", token.position);
                }
            }
            text += x;
        }
        token.kind = token_kind_t::string;
        token.value = any_regular_t(std::move(text));
        return token;
    }
    static const auto punctuator_names = [] {
        std::array<name_t, std::size(punctuators)> names;
        for (std::size_t i = 0; i != names.size(); ++i)
            names[i] = name_t(punctuators[i]);
        return names;
    }();
    for (std::size_t i = 0; i != std::size(punctuators); ++i) {
        if (punctuators[i][0] != c) continue;
        const std::size_t length = std::strlen(punctuators[i]);
        if (text_m.compare(offset_m, length, punctuators[i]) == 0) {
            offset_m += length;
            token.kind = token_kind_t::punctuator;
            token.value = any_regular_t(punctuator_names[i]);
            return token;
        }
    }
    const unsigned char byte = static_cast<unsigned char>(c);
    char description[48];
    if (std::isprint(byte))
        std::snprintf(description, sizeof description, "unexpected character '%c'", c);
    else
        std::snprintf(description, sizeof description, "unexpected byte 0x%02X", byte);
    throw_error(description, token.position);
}

} // namespace vorlen
