// Every failure of building, solving and asking a sheet, with its fixed text.

#include "sheet_fixture.hpp"

#include <functional>

using namespace vorlen;
using vorlen::testing::failure_of;
using vorlen::testing::outcome_of;
using vorlen::testing::script_sheet_t;
using vorlen::testing::updated;

TEST(SheetFailure, BuildingFailsAtTheStatement) {
    const std::pair<const char*, const char*> rows[] = {
        {"sheet dup {\ninterface:\n    a: 1;\noutput:\n    a <== 2;\n}",
         "test.mrl:5:5: cell named 'a'already exists."},
        // An interface's input half collides with a plain input of the same name.
        {"sheet d { input: x: 1; interface: x: 2; }",
         "test.mrl:1:35: cell named 'x'already exists."},
        {"sheet d { constant: x: 1; interface: x: 2; }",
         "test.mrl:1:38: cell named 'x'already exists."},
        {"sheet d { interface: x: 1; invariant: x <== true; }",
         "test.mrl:1:39: cell named 'x'already exists."},
        // Relations take interface cells only.
        {"sheet r {\ninterface:\n    a: 1;\noutput:\n    o <== a;\nlogic:\n"
         "    relate { a <== o; o <== a; }\n}",
         "test.mrl:7:5: interface cell o does not exist."},
        {"sheet r { interface: a: 1; logic: relate { a <== 1; ghost <== a; } }",
         "test.mrl:1:35: interface cell ghost does not exist."},
        {"sheet r { input: i: 1; interface: a: 1; logic: relate { a <== i; i <== a; } }",
         "test.mrl:1:48: interface cell i does not exist."},
        // Initial values read only earlier inputs and constants, not outputs or later inputs.
        {"sheet i { interface: a: 1; output: o <== a; interface: b: o; }",
         "test.mrl:1:56: variable o not found."},
        {"sheet i { input: x: later; input: later: 1; }",
         "test.mrl:1:18: variable later not found."},
        {"sheet i { logic: logic_cell <== 1; constant: k: logic_cell; }",
         "test.mrl:1:46: variable logic_cell not found."},
        {"sheet k {\nconstant:\n  k: [1][3];\n}", "test.mrl:3:3: index: array index out of range"},
    };
    for (const auto& [script, error] : rows)
        EXPECT_EQ(outcome_of(script), error) << script;

    script_sheet_t ok("sheet i { constant: k: 2; input: x: k * 3; interface: y: x + k; }", updated);
    EXPECT_EQ(ok.number("y"), 8);

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

TEST(SheetFailure, AccessToMissingCells) {
    script_sheet_t s("sheet access { input: in0: 0; interface: a: 1; output: o <== a; }", updated);
    EXPECT_EQ(failure_of<std::logic_error>([&] { s.set("o", 1.0); }),
              "input cell o does not exist.");
    EXPECT_EQ(failure_of<std::logic_error>([&] { s.set("nothing", 1.0); }),
              "input cell nothing does not exist.");
    EXPECT_EQ(failure_of<std::logic_error>([&] { s.sheet.get(name_t("nothing")); }),
              "variable nothing not found.");
    // Through an expression the failure carries no position: inspect does not wrap.
    EXPECT_EQ(failure_of<std::logic_error>([&] { s.inspect("nothing + 1"); }),
              "variable nothing not found.");

    const auto ignore_flag = [](bool) {
    };
    const name_t touch[] = {name_t("a"), name_t("o")};
    const std::pair<std::function<void()>, const char*> monitors[] = {
        {[&] { s.sheet.monitor_value(name_t("in0"), [](const any_regular_t&) {}); }, "in0"},
        {[&] { s.sheet.monitor_invariant_dependent(name_t("zz"), ignore_flag); }, "zz"},
        {[&] { s.sheet.monitor_contributing(name_t("zz"), {}, [](const dictionary_t&) {}); }, "zz"},
        {[&] { s.sheet.monitor_enabled(name_t("o"), nullptr, nullptr, ignore_flag); }, "o"},
        {[&] { s.sheet.monitor_enabled(name_t("a"), touch, touch + 2, ignore_flag); }, "o"}};
    for (const auto& [monitor, cell] : monitors)
        EXPECT_EQ(failure_of<std::logic_error>(monitor),
                  std::string("Attempt to monitor nonexistent cell: ") + cell);
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
    EXPECT_EQ(outcome_of(script + "}\n"),
              "test.mrl:" + std::to_string(3 + sheet_t::max_cell_count) +
                  ":1: invalid bitset position");
}

TEST(SheetFailure, SolvingAndEvaluationFailures) {
    const std::pair<const char*, const char*> rows[] = {
        {"sheet over { interface: a: 1; c: 2; logic: relate { a <== c; c <== a; }"
         " relate { a <== c * 2; c <== a / 2; } }",
         "over constrained."},
        {"sheet same { interface: a: 1; logic: relate { a <== 1; a <== 2; } }",
         "all terms of relation resolve but relation not applied."},
        {"sheet condition {\ninterface:\n    a: 1;\n    b: 2;\nlogic:\n"
         "    when (a > 0) relate { a <== b; b <== a; }\n}",
         "test.mrl:6:5: cell a is attached to an unresolved relate clause."},
        {"sheet chain {\ninterface:\n    a: 1;\noutput:\n    y <== x + a;\n    x <== nosuch(a);\n}",
         "test.mrl:6:5: function 'nosuch' not defined."},
    };
    for (const auto& [script, error] : rows)
        EXPECT_EQ(outcome_of(script, true), error) << script;

    // The failure carries the chain of positions, innermost first.
    script_sheet_t chain(rows[3].first);
    try {
        chain.sheet.update();
        ADD_FAILURE() << "no error";
    } catch (const stream_error_t& error) {
        ASSERT_EQ(error.line_position_set().size(), 2u);
        EXPECT_EQ(error.line_position_set()[0].line_number, 6);
        EXPECT_EQ(error.line_position_set()[1].line_number, 5);
    }

    // Conditions and invariants must be booleans.
    for (const char* script :
         {"sheet w { interface: a: 1; b: 1; logic: when (1) relate { a <== b; b <== a; } }",
          "sheet v { interface: a: 1; invariant: fine <== a; }"}) {
        script_sheet_t s(script);
        EXPECT_THROW(s.sheet.update(), bad_cast) << script;
    }
}

TEST(SheetFailure, AFailedUpdateIsRetriedByTheNext) {
    script_sheet_t s("sheet retry { interface: k: 0; output: r <== k == 0 ? nosuch(1) : 10 / k; }");
    EXPECT_THROW(s.sheet.update(), stream_error_t);
    s.set_update("k", 2.0);
    EXPECT_EQ(s.number("r"), 5);
}
