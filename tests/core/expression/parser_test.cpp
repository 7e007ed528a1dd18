#include "core/expression/parser.hpp"
#include "core/expression_value_format.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using namespace vorlen;

namespace {

// The stream as expression text, so whole shapes compare in one readable line.
std::string shape(const std::string& source) {
    std::ostringstream out;
    expression_value_format_t format;
    format_scope_t scope(out, format);
    out << any_regular_t(parse_expression(source));
    return out.str();
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

TEST(ExpressionParser, EmitsThePostfixShapes) {
    EXPECT_EQ(shape("x"), "[@x, @.variable]");
    EXPECT_EQ(shape("@x"), "[@x]");
    EXPECT_EQ(shape("a + b"), "[@a, @.variable, @b, @.variable, @.add]");
    EXPECT_EQ(shape("a && b"), "[@a, @.variable, [@b, @.variable], @.and]");
    EXPECT_EQ(shape("a || b"), "[@a, @.variable, [@b, @.variable], @.or]");
    EXPECT_EQ(shape("c ? t : e"), "[@c, @.variable, [@t, @.variable], [@e, @.variable], @.ifelse]");
    EXPECT_EQ(shape("a[i]"), "[@a, @.variable, @i, @.variable, @.index]");
    EXPECT_EQ(shape("a.k"), "[@a, @.variable, @k, @.index]");
    EXPECT_EQ(shape("[x, y]"), "[@x, @.variable, @y, @.variable, 2, @.array]");
    EXPECT_EQ(shape("{ k: v, m: w }"), "[@k, @v, @.variable, @m, @w, @.variable, 2, @.dictionary]");
    EXPECT_EQ(shape("f(x, y)"), "[@x, @.variable, @y, @.variable, 2, @.array, @f, @.function]");
    EXPECT_EQ(shape("f(k: v)"), "[@k, @v, @.variable, 1, @.dictionary, @f, @.function]");
    EXPECT_EQ(shape("f()"), "[[], @f, @.function]");
}

TEST(ExpressionParser, ReadsLiterals) {
    EXPECT_EQ(shape("65536.0"), "[65536]");
    EXPECT_EQ(shape("0.5"), "[0.5]");
    EXPECT_EQ(shape("1.5e3"), "[1500]");
    EXPECT_EQ(shape("-10"), "[10, @.unary_negate]");
    EXPECT_EQ(shape("true"), "[true]");
    EXPECT_EQ(shape("false"), "[false]");
    EXPECT_EQ(shape("empty"), "[empty]");
    EXPECT_EQ(shape("\"double\""), "[\"double\"]");
    EXPECT_EQ(shape("'single'"), "[\"single\"]");
    EXPECT_EQ(shape("'two words'"), shape("\"two words\""));
    EXPECT_EQ(shape("'it\\'s'"), "[\"it's\"]");
    EXPECT_EQ(shape("'a' \"b\""), "[\"ab\"]") << "adjacent strings join";
    EXPECT_EQ(shape("[ ]"), "[[]]");
    EXPECT_EQ(shape("{ }"), "[{}]");
    EXPECT_EQ(parse_expression("'20\xC2\xB0'")[0].cast<std::string>(), "20\xC2\xB0")
        << "UTF-8 passes through strings untouched";
}

TEST(ExpressionParser, PrecedenceFromLoosestToTightest) {
    EXPECT_EQ(shape("a || b && c"),
              "[@a, @.variable, [@b, @.variable, [@c, @.variable], @.and], @.or]");
    EXPECT_EQ(shape("a == b < c"), "[@a, @.variable, @b, @.variable, @c, @.variable, @.less, "
                                   "@.equal]");
    EXPECT_EQ(shape("a + b * c"),
              "[@a, @.variable, @b, @.variable, @c, @.variable, @.multiply, @.add]");
    EXPECT_EQ(shape("a - b - c"),
              "[@a, @.variable, @b, @.variable, @.subtract, @c, @.variable, @.subtract]");
    EXPECT_EQ(shape("-a * b"), "[@a, @.variable, @.unary_negate, @b, @.variable, @.multiply]");
    EXPECT_EQ(shape("!a.b"), "[@a, @.variable, @b, @.index, @.not]");
    EXPECT_EQ(shape("(a + b) * c"),
              "[@a, @.variable, @b, @.variable, @.add, @c, @.variable, @.multiply]");
    // ?: binds loosest and nests to the right.
    EXPECT_EQ(shape("a > 0.5 ? b * 96 - 48 : c"),
              "[@a, @.variable, 0.5, @.greater, [@b, @.variable, 96, @.multiply, 48, "
              "@.subtract], [@c, @.variable], @.ifelse]");
    EXPECT_EQ(shape("a ? b : c ? d : e"),
              "[@a, @.variable, [@b, @.variable], [@c, @.variable, [@d, @.variable], "
              "[@e, @.variable], @.ifelse], @.ifelse]");
}

TEST(ExpressionParser, BitwiseOperatorsBindAsInC) {
    EXPECT_EQ(shape("1 << 33"), "[1, 33, @.bitwise_lshift]");
    EXPECT_EQ(shape("a & b == c"),
              "[@a, @.variable, @b, @.variable, @c, @.variable, @.equal, @.bitwise_and]");
    EXPECT_EQ(shape("a | b ^ c & d"),
              "[@a, @.variable, @b, @.variable, @c, @.variable, @d, @.variable, "
              "@.bitwise_and, @.bitwise_xor, @.bitwise_or]");
    EXPECT_EQ(shape("a | b && c"),
              "[@a, @.variable, @b, @.variable, @.bitwise_or, [@c, @.variable], @.and]");
    EXPECT_EQ(shape("1 + 2 << 3"), "[1, 2, @.add, 3, @.bitwise_lshift]");
    EXPECT_EQ(shape("~x"), "[@x, @.variable, @.bitwise_negate]");
}

TEST(ExpressionParser, PostfixChainsAndNestedLiterals) {
    EXPECT_EQ(shape("curve_points.curve_points[2][0] / 100"),
              "[@curve_points, @.variable, @curve_points, @.index, 2, @.index, 0, @.index, 100, "
              "@.divide]");
    EXPECT_EQ(shape("{ type: 1, text_placement: @left_top, label1: '-18' }"),
              "[@type, 1, @text_placement, @left_top, @label1, \"-18\", 3, @.dictionary]");
    EXPECT_EQ(shape("[[1, 2], [ ]]"), "[1, 2, 2, @.array, [], 2, @.array]");
    EXPECT_EQ(shape("get_curve_data({ a: 1 })"),
              "[@a, 1, 1, @.dictionary, 1, @.array, @get_curve_data, @.function]");
    EXPECT_EQ(shape("[1, 2,]"), "[1, 2, 2, @.array]") << "a trailing comma is allowed";
}

TEST(ExpressionParser, CommentsAndLineEnds) {
    EXPECT_EQ(shape("a // note\r\n + /* block\r\n comment */ b"),
              "[@a, @.variable, @b, @.variable, @.add]");
    EXPECT_EQ(error_of("1 +\r\n\r\n  ;"), "3:3: expected an expression after '+', found ';'");
    EXPECT_EQ(error_of("1 +\n  2 +\n   )"), "3:4: expected an expression after '+', found ')'");
}

TEST(ExpressionParser, ErrorsNameTheirPlace) {
    EXPECT_EQ(error_of("(1"), "1:3: expected ')', found end of input");
    EXPECT_EQ(error_of("a b"), "1:3: expected end of input, found 'b'");
    EXPECT_EQ(error_of(""), "1:1: expected an expression, found end of input");
    EXPECT_EQ(error_of("a ? b"), "1:6: expected ':', found end of input");
    EXPECT_EQ(error_of("'open"), "1:1: unterminated string");
    EXPECT_EQ(error_of("/* open"), "1:1: unterminated comment");
    EXPECT_EQ(error_of("1 # 2"), "1:3: unexpected character '#'");
    EXPECT_EQ(error_of("\x01"), "1:1: unexpected byte 0x01");
    EXPECT_EQ(error_of("@ 1"), "1:1: expected a name after '@'");
    EXPECT_EQ(error_of("12abc"), "1:1: malformed number");
    EXPECT_EQ(error_of("1e999"), "1:1: number out of range");
    EXPECT_EQ(error_of("{ 1: 2 }"), "1:3: expected a key, found number 1");
    EXPECT_EQ(error_of("f(a: 1, 2)"),
              "1:9: expected a named argument 'name: value', found number 2");
    EXPECT_EQ(error_of("a."), "1:3: expected a name after '.', found end of input");
}

TEST(ExpressionParser, DeepNestingIsRefusedNotOverflowed) {
    const auto nested = [](int depth, const char* open, const char* close) {
        std::string text;
        for (int i = 0; i != depth; ++i)
            text += open;
        text += "1";
        for (int i = 0; i != depth; ++i)
            text += close;
        return text;
    };
    EXPECT_NO_THROW(parse_expression(nested(200, "(", ")")));
    EXPECT_NO_THROW(parse_expression(nested(200, "[", "]")));
    for (const auto& [open, close] :
         {std::pair{"(", ")"}, {"[", "]"}, {"f(", ")"}, {"-", ""}, {"!", ""}, {"{a:", "}"}}) {
        try {
            parse_expression(nested(100000, open, close));
            ADD_FAILURE() << "no error for deep " << open;
        } catch (const stream_error_t& error) {
            EXPECT_NE(std::string(error.what()).find("nested too deeply"), std::string::npos)
                << error.what();
        }
    }
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
