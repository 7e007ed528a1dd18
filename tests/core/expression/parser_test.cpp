#include "core/expression/parser.hpp"
#include "expression_test_support.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using namespace vorlen;
using ::testing::HasSubstr;

namespace {

std::string shape(const std::string& source) {
    return vorlen::testing::expression_text(parse_expression(source));
}

/// Each text parses to the shape given.
void expect_shapes(std::initializer_list<std::pair<const char*, const char*>> rows) {
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(shape(text), expected) << text;
}

// "line:column: message" of the error a text raises.
std::string error_of(const std::string& source) {
    try {
        parse_expression(source, name_t("test.expr"));
    } catch (const stream_error_t& error) {
        const line_position_t& at = error.line_position_set().front();
        EXPECT_EQ(at.file_name, name_t("test.expr"));
        return std::to_string(at.line_number) + ":" + std::to_string(at.column()) + ": " +
               error.what();
    }
    ADD_FAILURE() << "no error for: " << source;
    return {};
}

} // namespace

TEST(ExpressionParser, EmitsThePostfixShapesOfLiteralsAndOperators) {
    expect_shapes({
        {"x", "[@x, @.variable]"},
        {"@x", "[@x]"},
        {"a + b", "[@a, @.variable, @b, @.variable, @.add]"},
        {"a && b", "[@a, @.variable, [@b, @.variable], @.and]"},
        {"a || b", "[@a, @.variable, [@b, @.variable], @.or]"},
        {"c ? t : e", "[@c, @.variable, [@t, @.variable], [@e, @.variable], @.ifelse]"},
        {"a[i]", "[@a, @.variable, @i, @.variable, @.index]"},
        {"a.k", "[@a, @.variable, @k, @.index]"},
        {"[x, y]", "[@x, @.variable, @y, @.variable, 2, @.array]"},
        {"{ k: v, m: w }", "[@k, @v, @.variable, @m, @w, @.variable, 2, @.dictionary]"},
        {"f(x, y)", "[@x, @.variable, @y, @.variable, 2, @.array, @f, @.function]"},
        {"f(k: v)", "[@k, @v, @.variable, 1, @.dictionary, @f, @.function]"},
        {"f()", "[[], @f, @.function]"},
        {"65536.0", "[65536]"},
        {"0.5", "[0.5]"},
        {"1.5e3", "[1500]"},
        {"-10", "[10, @.unary_negate]"},
        {"true", "[true]"},
        {"false", "[false]"},
        {"empty", "[empty]"},
        {"\"double\"", "[\"double\"]"},
        {"'single'", "[\"single\"]"},
        {"'two words'", "[\"two words\"]"},
        {"'it\\'s'", "[\"it's\"]"},
        {"'a' \"b\"", "[\"ab\"]"}, // adjacent strings join
        {"[ ]", "[[]]"},
        {"{ }", "[{}]"},
        // Postfix chains and nested literals; a trailing comma is allowed.
        {"curve_points.curve_points[2][0] / 100",
         "[@curve_points, @.variable, @curve_points, @.index, 2, @.index, 0, @.index, 100, "
         "@.divide]"},
        {"{ type: 1, text_placement: @left_top, label1: '-18' }",
         "[@type, 1, @text_placement, @left_top, @label1, \"-18\", 3, @.dictionary]"},
        {"[[1, 2], [ ]]", "[1, 2, 2, @.array, [], 2, @.array]"},
        {"get_curve_data({ a: 1 })",
         "[@a, 1, 1, @.dictionary, 1, @.array, @get_curve_data, @.function]"},
        {"[1, 2,]", "[1, 2, 2, @.array]"},
        {"a // note\r\n + /* block\r\n comment */ b", "[@a, @.variable, @b, @.variable, @.add]"},
    });
    EXPECT_EQ(parse_expression("'20\xC2\xB0'")[0].cast<std::string>(), "20\xC2\xB0")
        << "UTF-8 passes through strings untouched";
}

TEST(ExpressionParser, PrecedenceFromLoosestToTightest) {
    expect_shapes({
        {"a || b && c", "[@a, @.variable, [@b, @.variable, [@c, @.variable], @.and], @.or]"},
        {"a == b < c", "[@a, @.variable, @b, @.variable, @c, @.variable, @.less, @.equal]"},
        {"a + b * c", "[@a, @.variable, @b, @.variable, @c, @.variable, @.multiply, @.add]"},
        {"a - b - c", "[@a, @.variable, @b, @.variable, @.subtract, @c, @.variable, @.subtract]"},
        {"-a * b", "[@a, @.variable, @.unary_negate, @b, @.variable, @.multiply]"},
        {"!a.b", "[@a, @.variable, @b, @.index, @.not]"},
        {"(a + b) * c", "[@a, @.variable, @b, @.variable, @.add, @c, @.variable, @.multiply]"},
        // ?: binds loosest and nests to the right.
        {"a > 0.5 ? b * 96 - 48 : c", "[@a, @.variable, 0.5, @.greater, [@b, @.variable, 96, "
                                      "@.multiply, 48, @.subtract], [@c, @.variable], @.ifelse]"},
        {"a ? b : c ? d : e", "[@a, @.variable, [@b, @.variable], [@c, @.variable, [@d, "
                              "@.variable], [@e, @.variable], @.ifelse], @.ifelse]"},
        // The bitwise operators bind as in C.
        {"1 << 33", "[1, 33, @.bitwise_lshift]"},
        {"a & b == c", "[@a, @.variable, @b, @.variable, @c, @.variable, @.equal, @.bitwise_and]"},
        {"a | b ^ c & d", "[@a, @.variable, @b, @.variable, @c, @.variable, @d, @.variable, "
                          "@.bitwise_and, @.bitwise_xor, @.bitwise_or]"},
        {"a | b && c", "[@a, @.variable, @b, @.variable, @.bitwise_or, [@c, @.variable], @.and]"},
        {"1 + 2 << 3", "[1, 2, @.add, 3, @.bitwise_lshift]"},
        {"~x", "[@x, @.variable, @.bitwise_negate]"},
    });
}

TEST(ExpressionParser, ErrorsNameTheirPlace) {
    const std::pair<const char*, const char*> rows[] = {
        {"(1", "1:3: expected ')', found end of input"},
        {"a b", "1:3: expected end of input, found 'b'"},
        {"", "1:1: expected an expression, found end of input"},
        {"a ? b", "1:6: expected ':', found end of input"},
        {"'open", "1:1: unterminated string"},
        {"/* open", "1:1: unterminated comment"},
        {"1 # 2", "1:3: unexpected character '#'"},
        {"\x01", "1:1: unexpected byte 0x01"},
        {"@ 1", "1:1: expected a name after '@'"},
        {"12abc", "1:1: malformed number"},
        {"1e999", "1:1: number out of range"},
        {"{ 1: 2 }", "1:3: expected a key, found number 1"},
        {"f(a: 1, 2)", "1:9: expected a named argument 'name: value', found number 2"},
        {"a.", "1:3: expected a name after '.', found end of input"},
        // CR LF and bare LF count lines alike.
        {"1 +\r\n\r\n  ;", "3:3: expected an expression after '+', found ';'"},
        {"1 +\n  2 +\n   )", "3:4: expected an expression after '+', found ')'"}};
    for (const auto& [text, error] : rows)
        EXPECT_EQ(error_of(text), error) << text;
}

TEST(ExpressionParser, DeepNestingIsRefusedNotOverflowed) {
    const auto nested = [](int depth, const char* open, const char* close) {
        std::string before, after;
        for (int i = 0; i != depth; ++i)
            before += open, after += close;
        return before + "1" + after;
    };
    EXPECT_NO_THROW(parse_expression(nested(200, "(", ")")));
    EXPECT_NO_THROW(parse_expression(nested(200, "[", "]")));
    for (const auto& [open, close] :
         {std::pair{"(", ")"}, {"[", "]"}, {"f(", ")"}, {"-", ""}, {"!", ""}, {"{a:", "}"}})
        EXPECT_THAT(error_of(nested(100000, open, close)), HasSubstr("nested too deeply"));
}

TEST(ExpressionParser, ReadersBuildStatementsFromTheTokenTests) {
    // The script readers drive the parser token by token, with their own keywords.
    expression_parser_t parser("when (x > 1) relate { y <== x; }", name_t("s.mrl"));
    parser.lexer().add_keyword("when"_name);
    parser.lexer().add_keyword("relate"_name);
    parser.set_description("property model description");
    EXPECT_TRUE(parser.is_keyword("when"_name));
    parser.require_token("("_name);
    array_t condition;
    parser.require_expression(condition);
    parser.require_token(")"_name);
    EXPECT_FALSE(parser.is_keyword("when"_name));
    parser.require_keyword("relate"_name);
    parser.require_token("{"_name);
    name_t target;
    EXPECT_TRUE(parser.is_identifier(target));
    EXPECT_EQ(target, name_t("y"));
    parser.require_token("<=="_name);
    array_t term;
    parser.require_expression(term);
    EXPECT_EQ(term.size(), 2u);
    EXPECT_EQ(parser.next_position().column(), 30); // the ";"
    try {
        parser.require_token("}"_name);
        FAIL();
    } catch (const stream_error_t& error) {
        EXPECT_STREQ(error.what(), "property model description: expected '}', found ';'");
    }
}
