#pragma once

#include "core/any_regular.hpp"
#include "core/stream_error.hpp"

#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace vorlen {

enum class token_kind_t {
    end,          // end of text
    identifier,   // value: name
    keyword,      // value: name; an identifier the reader declared a keyword
    number,       // value: number
    string,       // value: string (quotes removed, escapes resolved)
    name_literal, // value: name, from "@name"
    punctuator    // value: name with the punctuator's text, such as "<==" or "("
};

struct lex_token_t {
    token_kind_t kind = token_kind_t::end;
    any_regular_t value;
    line_position_t position;

    /// The token as it would be quoted in a message: 'x', "text", end of input.
    std::string describe() const;
};

/// Splits script text into tokens. Accepts CR LF and bare LF, `//` and `/* */` comments,
/// numbers in decimal with optional fraction and exponent, strings in single or double quotes
/// (UTF-8 passes through untouched), identifiers of letters, digits and '_', and `@name`.
class lexer_t {
public:
    lexer_t(std::string_view text, name_t file_name, int first_line = 1);

    /// The token `ahead` places further on (0: the next one) without consuming it.
    const lex_token_t& peek(std::size_t ahead = 0);
    lex_token_t next();

    /// Identifiers in this set come out as keyword tokens.
    void add_keyword(name_t keyword);

    [[noreturn]] void throw_error(const std::string& message,
                                  const line_position_t& position) const;
    /// What the text is ("layout description"); it leads the message of every error, as it
    /// does the parser's.
    void set_description(std::string description) { description_m = std::move(description); }

    name_t file_name() const noexcept { return file_name_m; }

private:
    lex_token_t read_token();
    void skip_space_and_comments();
    line_position_t position_here() const;
    char current() const noexcept { return offset_m < text_m.size() ? text_m[offset_m] : '\0'; }
    char at(std::size_t ahead) const noexcept {
        return offset_m + ahead < text_m.size() ? text_m[offset_m + ahead] : '\0';
    }

    std::string_view text_m;
    name_t file_name_m;
    std::size_t offset_m = 0;
    int line_m;
    std::size_t line_start_m = 0;
    std::deque<lex_token_t> lookahead_m;
    std::vector<name_t> keywords_m;
    std::string description_m;
};

} // namespace vorlen
