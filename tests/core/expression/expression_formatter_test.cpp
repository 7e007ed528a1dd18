// expression_formatter_t: texts, indentation, one-line mode and failures.

#include "core/expression/expression_formatter.hpp"
#include "core/expression/virtual_machine.hpp"
#include "expression_test_support.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>

using namespace vorlen;
using namespace vorlen::testing;

namespace {

struct row_t {
    array_t stream;
    const char* text;
    std::size_t indent = 0;
    bool one_line = false;
};

void expect_texts(std::initializer_list<row_t> rows) {
    for (const row_t& row : rows)
        EXPECT_EQ(format_expression(row.stream, row.indent, row.one_line), row.text)
            << expression_text(row.stream) << " indent " << row.indent << " one line "
            << row.one_line;
}

template <typename E>
void expect_failures(std::initializer_list<array_t> streams, const char* message) {
    for (const array_t& stream : streams)
        EXPECT_EQ(failure<E>([&] { format_expression(stream); }), message)
            << expression_text(stream);
}

const array_t a_plus_b = join({V("a"), V("b"), S{op(".add")}});

} // namespace

TEST(ExpressionFormatter, LiteralsAndOperators) {
    dictionary_t d;
    d.insert({name_t("k"), any_regular_t(1.0)});
    expect_texts({
        {array_t(), ""},
        {array_t(), "", 8, true},
        {S{nm("x")}, "@x"},
        {S{str("text")}, "\"text\""},
        {S{str("a\"b")}, "\"a\"b\""}, // no escaping
        {S{true}, "true"},
        {S{false}, "false"},
        {S{any_regular_t()}, "empty"},
        {S{1.0}, "1"},
        {S{0.5}, "0.5"},
        {S{-2.0}, "-2"},
        {S{std::numeric_limits<double>::quiet_NaN()}, "NaN"},
        {S{std::numeric_limits<double>::infinity()}, "Infinity"},
        {S{any_regular_t(array_t())}, "[ ]"},
        {S{any_regular_t(d)}, "{ }"},
        {S{any_regular_t(dictionary_t())}, "{ }"},
        // A nested stream alone formats as its expression.
        {S{any_regular_t(a_plus_b)}, "(a + b)"},
        {V("some_cell"), "some_cell"}, // a variable drops the @
        {join({a_plus_b, V("c"), S{op(".multiply")}}), "((a + b) * c)"},
        {join({V("a"), S{any_regular_t(V("b")), op(".and")}}), "(a && b)"},
        {join({V("a"), S{any_regular_t(V("b")), op(".or")}}), "(a || b)"},
        {join({V("a"), S{any_regular_t(join({V("b"), V("c"), S{op(".less")}})), op(".or")}}),
         "(a || (b < c))"},
        {join({V("a"), S{op(".not")}}), "!a"},
        {join({V("a"), S{op(".unary_negate")}}), "-a"},
        {S{2.0, op(".unary_negate")}, "-2"},
        {join({a_plus_b, S{op(".unary_negate")}}), "-(a + b)"},
        {join({V("c"), S{any_regular_t(V("t")), any_regular_t(V("e")), op(".ifelse")}}),
         "(c ? t : e)"},
        // Indexing removes one pair of parentheses; a name index reads as a member.
        {join({V("a"), S{1.0, op(".index")}}), "a[1]"},
        {join({V("a"), V("i"), S{1.0, op(".add"), op(".index")}}), "a[i + 1]"},
        {join({V("a"), S{str("k"), op(".index")}}), "a[\"k\"]"},
        {join({V("a"), S{nm("k"), op(".index")}}), "a.k"},
        {join({V("a"), S{nm("k"), op(".index"), nm("m"), op(".index")}}), "a.k.m"},
    });
    // Binary operators always write their parentheses.
    const std::pair<const char*, const char*> binary[] = {
        {".add", "+"},     {".subtract", "-"},    {".multiply", "*"},
        {".modulus", "%"}, {".divide", "/"},      {".less", "<"},
        {".greater", ">"}, {".less_equal", "<="}, {".greater_equal", ">="},
        {".equal", "=="},  {".not_equal", "!="}};
    for (const auto& [token, text] : binary)
        EXPECT_EQ(format_expression(join({V("a"), V("b"), S{op(token)}})),
                  std::string("(a ") + text + " b)");
}

TEST(ExpressionFormatter, Failures) {
    // The machine runs the bitwise operators, but they have no text.
    virtual_machine_t vm;
    vm.evaluate(S{6.0, 3.0, op(".bitwise_and")});
    EXPECT_EQ(vm.back(), any_regular_t(2.0));
    expect_failures<std::logic_error>(
        {S{6.0, 3.0, op(".bitwise_and")}, S{1.0, 2.0, op(".bitwise_xor")},
         S{1.0, 2.0, op(".bitwise_or")}, S{1.0, 2.0, op(".bitwise_rshift")},
         S{1.0, 2.0, op(".bitwise_lshift")}, S{1.0, op(".bitwise_negate")}, S{1.0, op(".nosuch")}},
        "static_table key not found");
    // Two literals without an operator.
    expect_failures<std::runtime_error>({S{1.0, 2.0}, join({V("a"), V("b")})},
                                        "Invalid expression token stream");
    // Missing operands.
    expect_failures<std::runtime_error>(
        {S{op(".add")}, S{1.0, op(".add")}, S{op(".not")}, S{op(".variable")},
         S{S{1.0}, S{2.0}, op(".ifelse")}, S{1.0, op(".index")}, S{nm("f"), op(".function")},
         S{1.0, 2.0, op(".array")}, S{nm("k"), 1.0, op(".dictionary")}, S{op(".array")}},
        "Expression invalid.");

    array_t nested = S{true};
    for (int i = 0; i != 300; ++i)
        nested = S{true, std::move(nested), op(".and")};
    expect_failures<std::runtime_error>(
        {nested}, "format_expression: token streams nested deeper than 256 levels");
}

// Arrays, dictionaries and calls: indentation -----------------------------------------------

TEST(ExpressionFormatterFrames, Arrays) {
    const array_t one_two = S{1.0, 2.0, 2.0, op(".array")};
    const array_t nested = S{1.0, 2.0, 2.0, op(".array"), 3.0, 2.0, op(".array")};
    expect_texts({
        {one_two, "[\n    1,\n    2\n]"},
        {S{1.0, 1.0, op(".array")}, "[\n    1\n]"},
        {one_two, "[\n        1,\n        2\n    ]", 4},
        // Items lose their enclosing parentheses.
        {join({a_plus_b, S{1.0, op(".array")}}), "[\n    a + b\n]"},
        {S{0.0, op(".array")}, "[\n\n]"}, // no items: the frame alone
        // One-line mode affects only the first item and the closing bracket.
        {one_two, "[ 1,\n  2 ]", 0, true},
        {S{1.0, 1.0, op(".array")}, "[ 1 ]", 0, true},
        {S{1.0, 2.0, 3.0, 3.0, op(".array")}, "[ 1,\n      2,\n      3 ]", 4, true},
        {S{0.0, op(".array")}, "[  ]", 0, true},
        // The inner frame is written first at the base indent; its "\n    " become "\n      ".
        {S{1.0, 1.0, op(".array"), 1.0, op(".array")}, "[\n    [\n      1\n]\n]"},
        {nested, "[\n    [\n      1,\n      2\n],\n    3\n]"},
        // In one-line mode the inner text has no four-blank run to re-indent.
        {nested, "[ [ 1,\n  2 ],\n  3 ]", 0, true},
    });
}

TEST(ExpressionFormatterFrames, DictionariesAndCalls) {
    const array_t k_array = S{nm("k"), 1.0, 1.0, op(".array"), 1.0, op(".dictionary")};
    const array_t f_x_y = join({V("x"), V("y"), S{2.0, op(".array"), nm("f"), op(".function")}});
    const array_t scale = S{nm("x"), 2.0, 1.0, op(".dictionary"), nm("scale"), op(".function")};
    expect_texts({
        {S{nm("k"), 1.0, nm("m"), str("s"), 2.0, op(".dictionary")},
         "{\n    k: 1,\n    m: \"s\"\n}"},
        {join({S{nm("k")}, a_plus_b, S{1.0, op(".dictionary")}}), "{\n    k: a + b\n}"},
        // A value that opens a frame goes to the next line, re-indented by the key's length + 4.
        {k_array, "{\n    k:\n    [\n         1\n]\n}"},
        // The empty frames stay on the key's line.
        {S{nm("k"), array_t(), 1.0, op(".dictionary")}, "{\n    k: [ ]\n}"},
        {S{nm("k"), dictionary_t(), 1.0, op(".dictionary")}, "{\n    k: { }\n}"},
        {S{nm("k"), 1.0, nm("m"), 2.0, 2.0, op(".dictionary")}, "{ k: 1,\n  m: 2 }", 0, true},
        {k_array, "{ k: [ 1 ] }", 0, true},
        // Function calls drop the argument brackets.
        {f_x_y, "f(\n    x,\n    y\n)"},
        {f_x_y, "f( x,\n  y )", 0, true},
        {S{1.0, 1.0, op(".array"), nm("round"), op(".function")}, "round( 1 )", 0, true},
        {S{array_t(), nm("f"), op(".function")}, "f( )"},
        {scale, "scale( x: 2 )", 0, true},
        {scale, "scale(\n    x: 2\n)"},
    });
}

TEST(ExpressionFormatterFrames, DeferredOperandsAreFormattedFourFurtherIn) {
    // c ? [1, 2] : 0: the then-stream is formatted on its own with indent + 4, and the
    // one-line flag is not passed into nested streams.
    const array_t stream = join({V("c"), S{any_regular_t(S{1.0, 2.0, 2.0, op(".array")}),
                                           any_regular_t(S{0.0}), op(".ifelse")}});
    expect_texts({{stream, "(c ? [\n        1,\n        2\n    ] : 0)"},
                  {stream, "(c ? [\n        1,\n        2\n    ] : 0)", 0, true}});
}
