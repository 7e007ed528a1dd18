// expression_formatter_t: texts, indentation, one-line mode and failures.

#include "core/expression/expression_formatter.hpp"
#include "core/expression/virtual_machine.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>

using namespace vorlen;

namespace {

any_regular_t op(const char* token) {
    return any_regular_t(name_t(token));
}
any_regular_t nm(const char* text) {
    return any_regular_t(name_t(text));
}
any_regular_t str(const char* text) {
    return any_regular_t(std::string(text));
}
using S = array_t;

/// The tokens of a variable reference.
array_t V(const char* name) {
    return S{nm(name), op(".variable")};
}

array_t join(std::initializer_list<array_t> parts) {
    array_t result;
    for (const array_t& part : parts)
        result.insert(result.end(), part.begin(), part.end());
    return result;
}

template <typename E>
std::string failure(const array_t& stream, std::size_t indent = 0, bool one_line = false) {
    try {
        format_expression(stream, indent, one_line);
    } catch (const E& error) {
        return error.what();
    } catch (const std::exception& error) {
        return std::string("other exception: ") + error.what();
    }
    return "no exception";
}

} // namespace

// Worked examples --------------------------------------------------------------------------

TEST(ExpressionFormatter, EmptyStreamIsEmptyText) {
    EXPECT_EQ(format_expression(array_t()), "");
    EXPECT_EQ(format_expression(array_t(), 8, true), "");
}

TEST(ExpressionFormatter, SpecExamples) {
    EXPECT_EQ(format_expression(join({V("a"), V("b"), S{op(".add")}})), "(a + b)");
    EXPECT_EQ(format_expression(join({V("a"), S{1.0, op(".index")}})), "a[1]");
    EXPECT_EQ(format_expression(join({V("a"), S{nm("k"), op(".index")}})), "a.k");
}

TEST(ExpressionFormatter, BitwiseOperatorsHaveNoText) {
    const array_t stream = S{6.0, 3.0, op(".bitwise_and")};
    virtual_machine_t vm;
    vm.evaluate(stream);
    EXPECT_EQ(vm.back(), any_regular_t(2.0));
    EXPECT_EQ(failure<std::logic_error>(stream), "static_table key not found");
    for (const char* token : {".bitwise_xor", ".bitwise_or", ".bitwise_rshift", ".bitwise_lshift"})
        EXPECT_EQ(failure<std::logic_error>(S{1.0, 2.0, op(token)}), "static_table key not found");
    EXPECT_EQ(failure<std::logic_error>(S{1.0, op(".bitwise_negate")}),
              "static_table key not found");
    EXPECT_EQ(failure<std::logic_error>(S{1.0, op(".nosuch")}), "static_table key not found");
}

// Failures ----------------------------------------------------------------------------------

TEST(ExpressionFormatterFailures, TwoLiteralsWithoutAnOperator) {
    EXPECT_EQ(failure<std::runtime_error>(S{1.0, 2.0}), "Invalid expression token stream");
    EXPECT_EQ(failure<std::runtime_error>(join({V("a"), V("b")})),
              "Invalid expression token stream");
}

TEST(ExpressionFormatterFailures, MissingOperands) {
    EXPECT_EQ(failure<std::runtime_error>(S{op(".add")}), "Expression invalid.");
    EXPECT_EQ(failure<std::runtime_error>(S{1.0, op(".add")}), "Expression invalid.");
    EXPECT_EQ(failure<std::runtime_error>(S{op(".not")}), "Expression invalid.");
    EXPECT_EQ(failure<std::runtime_error>(S{op(".variable")}), "Expression invalid.");
    EXPECT_EQ(failure<std::runtime_error>(S{S{1.0}, S{2.0}, op(".ifelse")}), "Expression invalid.");
    EXPECT_EQ(failure<std::runtime_error>(S{1.0, op(".index")}), "Expression invalid.");
    EXPECT_EQ(failure<std::runtime_error>(S{nm("f"), op(".function")}), "Expression invalid.");
    EXPECT_EQ(failure<std::runtime_error>(S{1.0, 2.0, op(".array")}), "Expression invalid.");
    EXPECT_EQ(failure<std::runtime_error>(S{nm("k"), 1.0, op(".dictionary")}),
              "Expression invalid.");
    EXPECT_EQ(failure<std::runtime_error>(S{op(".array")}), "Expression invalid.");
}

TEST(ExpressionFormatterFailures, NestingIsBounded) {
    array_t stream = S{true};
    for (int i = 0; i != 300; ++i) {
        array_t outer;
        outer.push_back(any_regular_t(true));
        outer.push_back(any_regular_t(std::move(stream)));
        outer.push_back(op(".and"));
        stream = std::move(outer);
    }
    EXPECT_EQ(failure<std::runtime_error>(stream),
              "format_expression: token streams nested deeper than 256 levels");
}

// Literals ----------------------------------------------------------------------------------

TEST(ExpressionFormatterLiterals, EachKind) {
    EXPECT_EQ(format_expression(S{nm("x")}), "@x");
    EXPECT_EQ(format_expression(S{str("text")}), "\"text\"");
    EXPECT_EQ(format_expression(S{str("a\"b")}), "\"a\"b\""); // no escaping
    EXPECT_EQ(format_expression(S{true}), "true");
    EXPECT_EQ(format_expression(S{false}), "false");
    EXPECT_EQ(format_expression(S{any_regular_t()}), "empty");
    EXPECT_EQ(format_expression(S{1.0}), "1");
    EXPECT_EQ(format_expression(S{0.5}), "0.5");
    EXPECT_EQ(format_expression(S{-2.0}), "-2");
    EXPECT_EQ(format_expression(S{std::numeric_limits<double>::quiet_NaN()}), "NaN");
    EXPECT_EQ(format_expression(S{std::numeric_limits<double>::infinity()}), "Infinity");
    EXPECT_EQ(format_expression(S{any_regular_t(array_t())}), "[ ]");
    dictionary_t d;
    d.insert({name_t("k"), any_regular_t(1.0)});
    EXPECT_EQ(format_expression(S{any_regular_t(d)}), "{ }");
    EXPECT_EQ(format_expression(S{any_regular_t(dictionary_t())}), "{ }");
}

TEST(ExpressionFormatterLiterals, NonEmptyArrayLiteralIsANestedStream) {
    // A nested stream alone formats as its expression.
    EXPECT_EQ(format_expression(S{any_regular_t(join({V("a"), V("b"), S{op(".add")}}))}),
              "(a + b)");
}

// Operators ---------------------------------------------------------------------------------

TEST(ExpressionFormatterOperators, BinaryOperatorsAlwaysWriteParentheses) {
    const std::pair<const char*, const char*> rows[] = {
        {".add", "+"},     {".subtract", "-"},    {".multiply", "*"},
        {".modulus", "%"}, {".divide", "/"},      {".less", "<"},
        {".greater", ">"}, {".less_equal", "<="}, {".greater_equal", ">="},
        {".equal", "=="},  {".not_equal", "!="}};
    for (const auto& [token, text] : rows)
        EXPECT_EQ(format_expression(join({V("a"), V("b"), S{op(token)}})),
                  std::string("(a ") + text + " b)");
    EXPECT_EQ(format_expression(join({V("a"), V("b"), S{op(".add")}, V("c"), S{op(".multiply")}})),
              "((a + b) * c)");
}

TEST(ExpressionFormatterOperators, LogicalOperatorsFormatTheirDeferredOperand) {
    EXPECT_EQ(format_expression(join({V("a"), S{any_regular_t(V("b")), op(".and")}})), "(a && b)");
    EXPECT_EQ(format_expression(join({V("a"), S{any_regular_t(V("b")), op(".or")}})), "(a || b)");
    EXPECT_EQ(format_expression(join(
                  {V("a"), S{any_regular_t(join({V("b"), V("c"), S{op(".less")}})), op(".or")}})),
              "(a || (b < c))");
}

TEST(ExpressionFormatterOperators, UnaryOperators) {
    EXPECT_EQ(format_expression(join({V("a"), S{op(".not")}})), "!a");
    EXPECT_EQ(format_expression(join({V("a"), S{op(".unary_negate")}})), "-a");
    EXPECT_EQ(format_expression(S{2.0, op(".unary_negate")}), "-2");
    EXPECT_EQ(format_expression(join({V("a"), V("b"), S{op(".add"), op(".unary_negate")}})),
              "-(a + b)");
}

TEST(ExpressionFormatterOperators, Conditional) {
    EXPECT_EQ(format_expression(
                  join({V("c"), S{any_regular_t(V("t")), any_regular_t(V("e")), op(".ifelse")}})),
              "(c ? t : e)");
}

TEST(ExpressionFormatterOperators, IndexRemovesOnePairOfParentheses) {
    EXPECT_EQ(format_expression(join({V("a"), V("i"), S{1.0, op(".add"), op(".index")}})),
              "a[i + 1]");
    EXPECT_EQ(format_expression(join({V("a"), S{str("k"), op(".index")}})), "a[\"k\"]");
    EXPECT_EQ(format_expression(join({V("a"), S{nm("k"), op(".index"), nm("m"), op(".index")}})),
              "a.k.m");
}

TEST(ExpressionFormatterOperators, VariableDropsTheAt) {
    EXPECT_EQ(format_expression(V("some_cell")), "some_cell");
}

// Arrays, dictionaries and calls: indentation -----------------------------------------------

TEST(ExpressionFormatterFrames, ArrayOnSeveralLines) {
    EXPECT_EQ(format_expression(S{1.0, 2.0, 2.0, op(".array")}), "[\n    1,\n    2\n]");
    EXPECT_EQ(format_expression(S{1.0, 1.0, op(".array")}), "[\n    1\n]");
    EXPECT_EQ(format_expression(S{1.0, 2.0, 2.0, op(".array")}, 4),
              "[\n        1,\n        2\n    ]");
    // Items lose their enclosing parentheses.
    EXPECT_EQ(format_expression(join({V("a"), V("b"), S{op(".add"), 1.0, op(".array")}})),
              "[\n    a + b\n]");
    // No items: the frame alone.
    EXPECT_EQ(format_expression(S{0.0, op(".array")}), "[\n\n]");
}

TEST(ExpressionFormatterFrames, ArrayOnOneLine) {
    // One-line mode affects only the first item and the closing bracket.
    EXPECT_EQ(format_expression(S{1.0, 2.0, 2.0, op(".array")}, 0, true), "[ 1,\n  2 ]");
    EXPECT_EQ(format_expression(S{1.0, 1.0, op(".array")}, 0, true), "[ 1 ]");
    EXPECT_EQ(format_expression(S{1.0, 2.0, 3.0, 3.0, op(".array")}, 4, true),
              "[ 1,\n      2,\n      3 ]");
    EXPECT_EQ(format_expression(S{0.0, op(".array")}, 0, true), "[  ]");
}

TEST(ExpressionFormatterFrames, NestedArraysAreReindented) {
    // The inner frame is written first at the base indent; its "\n    " become "\n      ".
    EXPECT_EQ(format_expression(S{1.0, 1.0, op(".array"), 1.0, op(".array")}),
              "[\n    [\n      1\n]\n]");
    EXPECT_EQ(format_expression(S{1.0, 2.0, 2.0, op(".array"), 3.0, 2.0, op(".array")}),
              "[\n    [\n      1,\n      2\n],\n    3\n]");
    // In one-line mode the inner text has no four-blank run to re-indent.
    EXPECT_EQ(format_expression(S{1.0, 2.0, 2.0, op(".array"), 3.0, 2.0, op(".array")}, 0, true),
              "[ [ 1,\n  2 ],\n  3 ]");
}

TEST(ExpressionFormatterFrames, DictionaryOnSeveralLines) {
    EXPECT_EQ(format_expression(S{nm("k"), 1.0, nm("m"), str("s"), 2.0, op(".dictionary")}),
              "{\n    k: 1,\n    m: \"s\"\n}");
    EXPECT_EQ(format_expression(
                  join({S{nm("k")}, V("a"), V("b"), S{op(".add")}, S{1.0}, S{op(".dictionary")}})),
              "{\n    k: a + b\n}");
    // A value that opens a frame goes to the next line, re-indented by the key's length + 4.
    EXPECT_EQ(format_expression(S{nm("k"), 1.0, 1.0, op(".array"), 1.0, op(".dictionary")}),
              "{\n    k:\n    [\n         1\n]\n}");
    // The empty frames stay on the key's line.
    EXPECT_EQ(format_expression(S{nm("k"), array_t(), 1.0, op(".dictionary")}), "{\n    k: [ ]\n}");
    EXPECT_EQ(format_expression(S{nm("k"), dictionary_t(), 1.0, op(".dictionary")}),
              "{\n    k: { }\n}");
}

TEST(ExpressionFormatterFrames, DictionaryOnOneLine) {
    EXPECT_EQ(format_expression(S{nm("k"), 1.0, nm("m"), 2.0, 2.0, op(".dictionary")}, 0, true),
              "{ k: 1,\n  m: 2 }");
    EXPECT_EQ(
        format_expression(S{nm("k"), 1.0, 1.0, op(".array"), 1.0, op(".dictionary")}, 0, true),
        "{ k: [ 1 ] }");
}

TEST(ExpressionFormatterFrames, FunctionCallsDropTheArgumentBrackets) {
    EXPECT_EQ(
        format_expression(join({V("x"), V("y"), S{2.0, op(".array"), nm("f"), op(".function")}})),
        "f(\n    x,\n    y\n)");
    EXPECT_EQ(format_expression(
                  join({V("x"), V("y"), S{2.0, op(".array"), nm("f"), op(".function")}}), 0, true),
              "f( x,\n  y )");
    EXPECT_EQ(format_expression(S{1.0, 1.0, op(".array"), nm("round"), op(".function")}, 0, true),
              "round( 1 )");
    EXPECT_EQ(format_expression(S{array_t(), nm("f"), op(".function")}), "f( )");
    EXPECT_EQ(format_expression(
                  S{nm("x"), 2.0, 1.0, op(".dictionary"), nm("scale"), op(".function")}, 0, true),
              "scale( x: 2 )");
    EXPECT_EQ(
        format_expression(S{nm("x"), 2.0, 1.0, op(".dictionary"), nm("scale"), op(".function")}),
        "scale(\n    x: 2\n)");
}

TEST(ExpressionFormatterFrames, DeferredOperandsAreFormattedFourFurtherIn) {
    // c ? [1, 2] : 0: the then-stream is formatted on its own with indent + 4.
    const array_t stream = join({V("c"), S{any_regular_t(S{1.0, 2.0, 2.0, op(".array")}),
                                           any_regular_t(S{0.0}), op(".ifelse")}});
    EXPECT_EQ(format_expression(stream), "(c ? [\n        1,\n        2\n    ] : 0)");
    // The one-line flag is not passed into nested streams.
    EXPECT_EQ(format_expression(stream, 0, true), "(c ? [\n        1,\n        2\n    ] : 0)");
}
