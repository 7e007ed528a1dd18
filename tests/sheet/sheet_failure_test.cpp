// Every failure of building, solving and asking a sheet, with its fixed text.

#include "sheet_fixture.hpp"

using namespace vorlen;
using vorlen::testing::failure_of;
using vorlen::testing::script_sheet_t;

namespace {

/// The stream error that building `script` raises.
stream_error_t script_error(const std::string& script) {
    try {
        script_sheet_t s(script);
    } catch (const stream_error_t& error) {
        return error;
    }
    ADD_FAILURE() << "no error from:\n" << script;
    return stream_error_t("none", line_position_t());
}

/// The stream error that the first update of `script` raises.
stream_error_t update_error(const std::string& script) {
    script_sheet_t s(script);
    try {
        s.sheet.update();
    } catch (const stream_error_t& error) {
        return error;
    }
    ADD_FAILURE() << "no error from:\n" << script;
    return stream_error_t("none", line_position_t());
}

} // namespace

TEST(SheetFailure, DuplicateNamesCarryTheirPositionWhenTheyHaveOne) {
    const stream_error_t output = script_error(R"(sheet dup {
interface:
    a: 1;
output:
    a <== 2;
})");
    EXPECT_STREQ(output.what(), "cell named 'a'already exists.");
    EXPECT_EQ(format_stream_error(output), "test.mrl:5:5: cell named 'a'already exists.");

    // An interface's input half collides with a plain input of the same name.
    EXPECT_STREQ(script_error("sheet d { input: x: 1; interface: x: 2; }").what(),
                 "cell named 'x'already exists.");
    EXPECT_STREQ(script_error("sheet d { constant: x: 1; interface: x: 2; }").what(),
                 "cell named 'x'already exists.");
    EXPECT_STREQ(script_error("sheet d { interface: x: 1; invariant: x <== true; }").what(),
                 "cell named 'x'already exists.");

    sheet_t sheet;
    sheet.add_constant(name_t("k"), any_regular_t(1.0));
    try {
        sheet.add_constant(name_t("k"), any_regular_t(2.0));
        ADD_FAILURE() << "no error";
    } catch (const stream_error_t&) {
        ADD_FAILURE() << "a duplicate without a position is a plain logic error";
    } catch (const std::logic_error& error) {
        EXPECT_STREQ(error.what(), "cell named 'k'already exists.");
    }
    EXPECT_EQ(
        failure_of<std::logic_error>([&] { sheet.add_interface(name_t("k"), any_regular_t(2.0)); }),
        "cell named 'k'already exists.");
}

TEST(SheetFailure, RelationsTakeInterfaceCellsOnly) {
    const stream_error_t to_output = script_error(R"(sheet r {
interface:
    a: 1;
output:
    o <== a;
logic:
    relate { a <== o; o <== a; }
})");
    EXPECT_STREQ(to_output.what(), "interface cell o does not exist.");
    EXPECT_EQ(to_output.line_position_set().front().line_number, 7);

    EXPECT_STREQ(
        script_error("sheet r { interface: a: 1; logic: relate { a <== 1; ghost <== a; } }").what(),
        "interface cell ghost does not exist.");
    EXPECT_STREQ(
        script_error(
            "sheet r { input: i: 1; interface: a: 1; logic: relate { a <== i; i <== a; } }")
            .what(),
        "interface cell i does not exist.");
}

TEST(SheetFailure, InitialValuesReadOnlyEarlierInputsAndConstants) {
    // A constant and an earlier input can be read; an output cannot, nor a later input.
    script_sheet_t ok("sheet i { constant: k: 2; input: x: k * 3; interface: y: x + k; }");
    ok.sheet.update();
    EXPECT_EQ(ok.number("y"), 8);

    const stream_error_t reads_output =
        script_error("sheet i { interface: a: 1; output: o <== a; interface: b: o; }");
    EXPECT_STREQ(reads_output.what(), "variable o not found.");
    EXPECT_STREQ(script_error("sheet i { input: x: later; input: later: 1; }").what(),
                 "variable later not found.");
    EXPECT_STREQ(
        script_error("sheet i { logic: logic_cell <== 1; constant: k: logic_cell; }").what(),
        "variable logic_cell not found.");
}

TEST(SheetFailure, AccessToMissingCells) {
    script_sheet_t s(R"(
sheet access {
input:
    in0: 0;
interface:
    a: 1;
output:
    o <== a;
}
)");
    s.sheet.update();
    EXPECT_EQ(failure_of<std::logic_error>([&] { s.set("o", 1.0); }),
              "input cell o does not exist.");
    EXPECT_EQ(failure_of<std::logic_error>([&] { s.set("nothing", 1.0); }),
              "input cell nothing does not exist.");
    EXPECT_EQ(failure_of<std::logic_error>([&] { s.sheet.get(name_t("nothing")); }),
              "variable nothing not found.");
    // Through an expression the failure carries no position: inspect does not wrap.
    EXPECT_EQ(failure_of<std::logic_error>([&] { s.inspect("nothing + 1"); }),
              "variable nothing not found.");

    auto ignore_value = [](const any_regular_t&) {
    };
    auto ignore_flag = [](bool) {
    };
    EXPECT_EQ(
        failure_of<std::logic_error>([&] { s.sheet.monitor_value(name_t("in0"), ignore_value); }),
        "Attempt to monitor nonexistent cell: in0");
    EXPECT_EQ(failure_of<std::logic_error>(
                  [&] { s.sheet.monitor_invariant_dependent(name_t("zz"), ignore_flag); }),
              "Attempt to monitor nonexistent cell: zz");
    EXPECT_EQ(failure_of<std::logic_error>([&] {
                  s.sheet.monitor_contributing(name_t("zz"), dictionary_t(),
                                               [](const dictionary_t&) {});
              }),
              "Attempt to monitor nonexistent cell: zz");
    EXPECT_EQ(failure_of<std::logic_error>(
                  [&] { s.sheet.monitor_enabled(name_t("o"), nullptr, nullptr, ignore_flag); }),
              "Attempt to monitor nonexistent cell: o");
    const name_t touch[] = {name_t("a"), name_t("o")};
    EXPECT_EQ(failure_of<std::logic_error>(
                  [&] { s.sheet.monitor_enabled(name_t("a"), touch, touch + 2, ignore_flag); }),
              "Attempt to monitor nonexistent cell: o");
    EXPECT_EQ(failure_of<std::logic_error>([&] { s.sheet.contributing_to_cell(name_t("in0")); }),
              "No monitorable cell: in0");

    // touch skips names it does not know.
    const name_t unknown[] = {name_t("zz"), name_t("a")};
    s.sheet.touch(unknown, unknown + 2);
}

TEST(SheetFailure, AtMostMaxCellCountCells) {
    sheet_t sheet;
    for (std::size_t i = 0; i != sheet_t::max_cell_count; ++i)
        sheet.add_constant(name_t(("k" + std::to_string(i)).c_str()), any_regular_t(1.0));
    EXPECT_EQ(failure_of<std::out_of_range>(
                  [&] { sheet.add_constant(name_t("one_more"), any_regular_t(1.0)); }),
              "invalid bitset position");

    // An interface takes two cells: the second half past the limit fails too.
    sheet_t pairs;
    for (std::size_t i = 0; i + 1 != sheet_t::max_cell_count; ++i)
        pairs.add_constant(name_t(("k" + std::to_string(i)).c_str()), any_regular_t(1.0));
    EXPECT_EQ(failure_of<std::out_of_range>(
                  [&] { pairs.add_interface(name_t("split"), any_regular_t(1.0)); }),
              "invalid bitset position");

    // From a script the failure names the statement.
    std::string script = "sheet big {\nconstant:\n";
    for (std::size_t i = 0; i != sheet_t::max_cell_count + 1; ++i)
        script += "k" + std::to_string(i) + ": " + std::to_string(i) + ";\n";
    script += "}\n";
    const stream_error_t error = script_error(script);
    EXPECT_EQ(format_stream_error(error),
              "test.mrl:" + std::to_string(3 + sheet_t::max_cell_count) +
                  ":1: invalid bitset position");
}

TEST(SheetFailure, SolvingFailures) {
    EXPECT_EQ(failure_of<std::logic_error>([] {
                  script_sheet_t s(R"(
sheet over {
interface:
    a: 1;
    c: 2;
logic:
    relate { a <== c; c <== a; }
    relate { a <== c * 2; c <== a / 2; }
})");
                  s.sheet.update();
              }),
              "over constrained.");

    EXPECT_EQ(failure_of<std::logic_error>([] {
                  script_sheet_t s(
                      "sheet same { interface: a: 1; logic: relate { a <== 1; a <== 2; } }");
                  s.sheet.update();
              }),
              "all terms of relation resolve but relation not applied.");

    const stream_error_t unresolved = update_error(R"(
sheet condition {
interface:
    a: 1;
    b: 2;
logic:
    when (a > 0) relate { a <== b; b <== a; }
})");
    EXPECT_STREQ(unresolved.what(), "cell a is attached to an unresolved relate clause.");
    EXPECT_EQ(format_stream_error(unresolved),
              "test.mrl:7:5: cell a is attached to an unresolved relate clause.");
}

TEST(SheetFailure, ConditionsAndInvariantsMustBeBoolean) {
    EXPECT_THROW(
        {
            script_sheet_t s(
                "sheet w { interface: a: 1; b: 1; logic: when (1) relate { a <== b; b <== a; } }");
            s.sheet.update();
        },
        bad_cast);
    EXPECT_THROW(
        {
            script_sheet_t s("sheet v { interface: a: 1; invariant: fine <== a; }");
            s.sheet.update();
        },
        bad_cast);
}

TEST(SheetFailure, EvaluationFailuresCarryTheChainOfPositions) {
    const stream_error_t error = update_error(R"(sheet chain {
interface:
    a: 1;
output:
    y <== x + a;
    x <== nosuch(a);
})");
    EXPECT_STREQ(error.what(), "function 'nosuch' not defined.");
    ASSERT_EQ(error.line_position_set().size(), 2u);
    EXPECT_EQ(error.line_position_set()[0].line_number, 6); // innermost first
    EXPECT_EQ(error.line_position_set()[1].line_number, 5);
    EXPECT_EQ(format_stream_error(error), "test.mrl:6:5: function 'nosuch' not defined.");

    // Initial values fail at their own statement while the script is read.
    EXPECT_EQ(format_stream_error(script_error("sheet k {\nconstant:\n  k: [1][3];\n}")),
              "test.mrl:3:3: index: array index out of range");
}

TEST(SheetFailure, AFailedUpdateIsRetriedByTheNext) {
    script_sheet_t s(R"(
sheet retry {
interface:
    k: 0;
output:
    r <== k == 0 ? nosuch(1) : 10 / k;
}
)");
    EXPECT_THROW(s.sheet.update(), stream_error_t);
    s.set_update("k", 2.0);
    EXPECT_EQ(s.number("r"), 5);
}
