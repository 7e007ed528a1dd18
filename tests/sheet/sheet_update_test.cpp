// Rounds of set, touch and update: relation solving by priority, lazy calculation, the
// self-reference rule, `when` conditions and reinitialisation.

#include "sheet_fixture.hpp"

#include <cmath>

using namespace vorlen;
using vorlen::testing::failure_of;
using vorlen::testing::script_sheet_t;
using vorlen::testing::text_of;
using vorlen::testing::updated;

namespace {

const char* const two_way_pair = "sheet pair { interface: a: 1; b: 2;"
                                 " logic: relate { a <== b * 2; b <== a / 2; } }";

} // namespace

TEST(SheetRelation, TwoWayPairFollowsTheSideSetLast) {
    script_sheet_t s(two_way_pair);
    // b was initialised after a, so it is the newer side at the start.
    s.sheet.update();
    EXPECT_EQ(s.numbers({"a", "b"}), (std::vector<double>{4, 2}));

    s.set_update("a", 10.0);
    EXPECT_EQ(s.numbers({"a", "b"}), (std::vector<double>{10, 5}));

    s.set_update("b", 7.0);
    EXPECT_EQ(s.numbers({"a", "b"}), (std::vector<double>{14, 7}));

    // An update with nothing new keeps the last direction and the values.
    s.sheet.update();
    EXPECT_EQ(s.numbers({"a", "b"}), (std::vector<double>{14, 7}));

    // Setting the same side twice in a row still wins over the computed side.
    s.set("b", 1.0);
    s.set_update("b", 3.0);
    EXPECT_EQ(s.number("a"), 6);

    // Touching both keeps their order: a, set after b, stays the newer side.
    s.set("b", 5.0);
    s.set("a", 30.0);
    s.touch({"a", "b"});
    s.sheet.update();
    EXPECT_EQ(s.number("b"), 15);
}

TEST(SheetRelation, ComputedValueFlowsBackIntoLinkedInputOnly) {
    script_sheet_t s("sheet links { interface: a: 1; unlink b: 2;"
                     " logic: relate { a <== b + 100; b <== a - 100; } }");
    s.set_update("a", 5.0);
    EXPECT_EQ(s.number("b"), -95);
    // b is unlinked: its input half kept 2, so reading b from a now gives 102.
    s.touch({"b"});
    s.sheet.update();
    EXPECT_EQ(s.numbers({"a", "b"}), (std::vector<double>{102, 2}));

    // a is linked: its computed 102 went back into its input, and stays after b is untouched.
    s.touch({"a"});
    s.sheet.update();
    EXPECT_EQ(s.numbers({"a", "b"}), (std::vector<double>{102, 2}));
}

TEST(SheetRelation, ThreeCellsComputeTheLowestPriorityFromTheTwoTouchedLast) {
    script_sheet_t s("sheet sum { interface: total: 10; x: 4; y: 6;"
                     " logic: relate { total <== x + y; x <== total - y; y <== total - x; } }");
    s.set("total", 20.0);
    s.set("x", 5.0);
    s.sheet.update();
    EXPECT_EQ(s.number("y"), 15);

    s.set("y", 1.0);
    s.sheet.update(); // x, then y were touched last: total follows
    EXPECT_EQ(s.numbers({"total", "x"}), (std::vector<double>{6, 5}));

    s.touch({"total", "y"}); // the group rises above x and keeps its inner order
    s.set_update("total", 30.0);
    EXPECT_EQ(s.numbers({"x", "y"}), (std::vector<double>{29, 1}));

    // touch orders the group by its current priorities, whatever the argument order.
    s.touch({"y", "x"}); // x is older than y, so y stays the newest
    s.sheet.update();
    EXPECT_EQ(s.number("total"), 30);
    s.set("x", 2.0);
    s.touch({"x", "total"}); // x was set after total: x stays the newest, y is computed
    s.sheet.update();
    EXPECT_EQ(s.number("y"), 28);
}

TEST(SheetRelation, WhenConditionSwitchesARelationOff) {
    script_sheet_t s("sheet gated { interface: coupled: true; a: 1; b: 2;"
                     " logic: when (coupled) relate { a <== b * 10; b <== a / 10; }"
                     " output: sum <== a + b; }");
    s.set_update("a", 50.0);
    EXPECT_EQ(s.number("b"), 5);

    s.set("coupled", false);
    s.set_update("a", 70.0);
    // Off: both keep their own input values.
    EXPECT_EQ(s.numbers({"a", "b"}), (std::vector<double>{70, 5}));
    s.set_update("b", 3.0);
    EXPECT_EQ(s.numbers({"a", "sum"}), (std::vector<double>{70, 73}));

    // On again: the newest side wins.
    s.set_update("coupled", true);
    EXPECT_EQ(s.number("a"), 30);

    // The condition's inputs count as contributors to every calculated cell.
    const dictionary_t contributors = s.sheet.contributing_to_cell(name_t("sum"));
    EXPECT_EQ(contributors.count(name_t("coupled")), 1u);
}

TEST(SheetRelation, NullTargetNamesTheOtherSideWithoutWriting) {
    script_sheet_t s("sheet mixer { input: in1: 0.25;"
                     " interface: gain0: 3; gain0_invert: true;"
                     " logic: when (in1 != 0.5)"
                     "     relate { gain0_invert <== in1 > 0.5 ? false : true; null <== gain0; }"
                     " output: out0 <== gain0_invert ? -gain0 : gain0; }",
                     updated);
    EXPECT_EQ(s.number("out0"), -3);
    s.set_update("gain0_invert", false);
    EXPECT_EQ(s.number("out0"), 3);
    s.set("in1", 0.5);
    s.set_update("gain0", 4.0);
    EXPECT_EQ(s.number("out0"), 4);
}

TEST(SheetRelation, TermWritingSeveralCellsPicksArrayElements) {
    sheet_t sheet;
    sheet.add_interface(name_t("left"), any_regular_t(0.0));
    sheet.add_interface(name_t("right"), any_regular_t(0.0));
    sheet.add_interface(name_t("width"), any_regular_t(8.0));
    const line_position_t here(name_t("api"), 1);
    std::vector<sheet_t::relation_t> terms(2);
    terms[0].name_set = {name_t("left"), name_t("right")};
    terms[0].position = here;
    terms[0].expression = parse_expression("[-width / 2, width / 2]");
    terms[1].name_set = {name_t("width")};
    terms[1].position = here;
    terms[1].expression = parse_expression("right - left");
    sheet.add_relation(here, array_t(), terms.data(), terms.data() + terms.size());

    sheet.update(); // width was added last, so it is the newest
    EXPECT_EQ(sheet.get(name_t("left")), any_regular_t(-4.0));
    EXPECT_EQ(sheet.get(name_t("right")), any_regular_t(4.0));

    sheet.set(name_t("right"), any_regular_t(10.0));
    sheet.update();
    EXPECT_EQ(sheet.get(name_t("width")), any_regular_t(14.0));

    // A result that is not an array is a wrong cast, not a silent pick.
    terms[0].expression = parse_expression("width");
    sheet_t other;
    other.add_interface(name_t("left"), any_regular_t(0.0));
    other.add_interface(name_t("right"), any_regular_t(0.0));
    other.add_interface(name_t("width"), any_regular_t(8.0));
    other.add_relation(here, array_t(), terms.data(), terms.data() + terms.size());
    EXPECT_THROW(other.update(), bad_cast);
}

TEST(SheetUpdate, SelfReferenceReadsTheTermOnceThenTheInput) {
    script_sheet_t s("sheet grow { interface: a: 1; b: 10;"
                     " logic: relate { a <== a + b; b <== a - b; } }",
                     updated);
    // a's term reads a: that inner read gives a's input, 1, not the term again.
    EXPECT_EQ(s.number("a"), 11);
    s.sheet.update();
    EXPECT_EQ(s.number("a"), 21);

    // An interface output whose expression names itself reads its own input half.
    script_sheet_t t("sheet doubling { interface: unlink x: 3 <== x * 2; }", updated);
    EXPECT_EQ(t.number("x"), 6);
    t.sheet.update(); // unlinked: the input keeps 3
    EXPECT_EQ(t.number("x"), 6);
}

TEST(SheetUpdate, CalculatesLazilyAndOnlyOnceARound) {
    script_sheet_t s("sheet lazy { interface: a: 1; logic: twice <== a * 2;"
                     " output: p <== twice + 1; q <== twice + 2; }",
                     updated);
    EXPECT_EQ(s.numbers({"p", "q"}), (std::vector<double>{3, 4}));
    // Before the next update nothing recalculates: a set is only recorded.
    s.set("a", 5.0);
    EXPECT_EQ(s.number("p"), 3);
    s.sheet.update();
    EXPECT_EQ(s.numbers({"p", "twice"}), (std::vector<double>{11, 10}));
}

TEST(SheetUpdate, CycleFailsWithItsMessageRatherThanOverflowing) {
    script_sheet_t s("sheet cycle { interface: a: 1;"
                     " output: p <== q + a; q <== r; r <== p; }");
    EXPECT_EQ(failure_of<std::logic_error>([&] { s.sheet.update(); }),
              "cycle detected, consider using a relate { } clause.");
    // The failed round does no lasting harm to reads that avoid the cycle.
    EXPECT_EQ(s.number("a"), 1);
    EXPECT_EQ(failure_of<std::logic_error>([&] { s.sheet.update(); }),
              "cycle detected, consider using a relate { } clause.");

    // A long chain, read from its far end first, nests as deep as it is long and evaluates.
    std::string chain = "sheet chain {\noutput:\n";
    for (int i = 0; i < 99; ++i)
        chain += " c" + std::to_string(i) + " <== c" + std::to_string(i + 1) + " + 1;\n";
    chain += " c99 <== 1;\n}\n";
    script_sheet_t c(chain, updated);
    EXPECT_EQ(c.number("c0"), 100);

    // A ring of the same length fails by the depth test.
    std::string ring = "sheet ring {\noutput:\n c0 <== c99;\n";
    for (int i = 1; i < 100; ++i)
        ring += " c" + std::to_string(i) + " <== c" + std::to_string(i - 1) + ";\n";
    ring += "}\n";
    script_sheet_t r(ring);
    EXPECT_EQ(failure_of<std::logic_error>([&] { r.sheet.update(); }),
              "cycle detected, consider using a relate { } clause.");
}

TEST(SheetUpdate, ReinitializeRerunsInitialValuesOfChangedInputs) {
    script_sheet_t s(
        "sheet init { constant: scale: 10; input: in0: 0.1; in1: 0.2;"
        " interface: unlink x: in0 * scale; unlink y: in1 * scale; unlink both: in0 + in1; }",
        updated);
    EXPECT_DOUBLE_EQ(s.number("x"), 1);
    s.set("x", 7.0);
    s.set("y", 8.0);
    s.set("in0", 0.5);
    s.sheet.reinitialize();
    s.sheet.update();
    EXPECT_DOUBLE_EQ(s.number("x"), 5); // followed in0
    EXPECT_DOUBLE_EQ(s.number("y"), 8); // in1 was not set: the control's value stays
    EXPECT_DOUBLE_EQ(s.number("both"), 0.7);

    // Once reinitialised, the set inputs are forgotten.
    s.set("x", 3.0);
    s.sheet.reinitialize();
    s.sheet.update();
    EXPECT_DOUBLE_EQ(s.number("x"), 3);
}

TEST(SheetUpdate, SetAndInspect) {
    script_sheet_t s("sheet values { input: empty_one; interface: a: 1; name: @left_top;"
                     " list: [1, [2, 3]]; settings: { min_value: 0, max_value: a * 4 }; }");
    dictionary_t values;
    values[name_t("a")] = 2.0;
    values[name_t("empty_one")] = std::string("text");
    s.sheet.set(values);
    s.sheet.update();
    EXPECT_EQ(s.number("a"), 2);
    EXPECT_EQ(s.sheet.get(name_t("empty_one")), any_regular_t("text"));
    EXPECT_EQ(s.inspect("list[1][0] + settings.max_value"), any_regular_t(6.0));
    EXPECT_EQ(s.inspect("name"), any_regular_t(name_t("left_top")));
    EXPECT_FALSE(s.sheet.has_input(name_t("nothing")));
}

TEST(SheetUpdate, ContributingSetsReportChangedAndTouchedInputs) {
    script_sheet_t s("sheet contributors { interface: a: 1; b: 2; c: 3;"
                     " output: ab <== a + b; cc <== c; }",
                     updated);
    const dictionary_t all = s.sheet.contributing();
    EXPECT_EQ(text_of(all), "{a: 1, b: 2, c: 3}");

    // Identical mark: nothing, even though a is touched.
    s.touch({"a"});
    s.sheet.update();
    EXPECT_TRUE(s.sheet.contributing(all).empty());

    // A changed value shows alone.
    s.set_update("b", 5.0);
    EXPECT_EQ(text_of(s.sheet.contributing(all)), "{b: 5}");

    // A key missing from the mark is new, and then touched values come along.
    dictionary_t partial = all;
    partial.erase(name_t("c"));
    partial[name_t("b")] = 5.0;
    const dictionary_t with_new = s.sheet.contributing(partial);
    EXPECT_EQ(with_new.count(name_t("c")), 1u);
    EXPECT_EQ(with_new.count(name_t("b")), 0u); // b was not accessed through a relation

    EXPECT_EQ(text_of(s.sheet.contributing_to_cell(name_t("ab"))), "{a: 1, b: 5}");
}

TEST(SheetUpdate, ContributingAddsTouchedRelationCellsWhenAKeyIsNew) {
    script_sheet_t s("sheet touched { interface: a: 1; b: 2; c: 3;"
                     " logic: relate { a <== b * 2; b <== a / 2; }"
                     " output: o <== a + b + c; }");
    s.set_update("a", 4.0);
    // b is computed from a, so o depends on a and c; the relation accessed a and b.
    const dictionary_t all = s.sheet.contributing();
    EXPECT_EQ(text_of(all), "{a: 4, c: 3}");
    EXPECT_TRUE(s.sheet.contributing(all).empty());

    // c is new to the mark: a comes along, unchanged, because the relation touched it.
    dictionary_t mark;
    mark[name_t("a")] = 4.0;
    EXPECT_EQ(text_of(s.sheet.contributing(mark)), "{a: 4, c: 3}");
}

TEST(SheetUpdate, MemberReadsAgreeWithReadingTheWholeValue) {
    // Cells read member by member give what reading the whole value and indexing it gives,
    // failures included. `inspect` reads whole values, so it is the reference here.
    const char* const expressions[] = {"d.a",
                                       "d.list[1][0]",
                                       "d.list[1][0] + d.list[0][1]",
                                       "d.nested.deep.leaf",
                                       "d.list[1.7][0]",
                                       "d.list[-0.5][1]",
                                       "flag ? d.a : d.nested.deep",
                                       "flag && d.list[0][1] > 1",
                                       "[d.a, d.list[0]]",
                                       "{k: d.a}.k",
                                       "d.list[5]",
                                       "d.missing",
                                       "d.a.b",
                                       "d.list.a",
                                       "n.a",
                                       "n[0]",
                                       "arr[0].k",
                                       "arr[1][0]",
                                       "nothing.a",
                                       "label.a",
                                       "d.list[1][0][0]"};
    const std::string cells =
        "sheet members { interface:"
        " d: { a: 1, list: [[1, 2], [3, 4]], nested: { deep: { leaf: @leaf } } };"
        " flag: true; n: 5; arr: [{ k: 'text' }, 7]; label: \"x\";";
    script_sheet_t s(cells + " }", updated);
    for (const char* expression : expressions) {
        std::string expected;
        try {
            expected = "value " + ::testing::PrintToString(s.inspect(expression));
        } catch (const std::exception& error) {
            expected = std::string("failure ") + error.what();
        }
        std::string actual;
        try {
            script_sheet_t t(cells + " output: o <== " + expression + "; }", updated);
            actual = "value " + ::testing::PrintToString(t.sheet.get(name_t("o")));
        } catch (const std::exception& error) {
            actual = std::string("failure ") + error.what();
        }
        EXPECT_EQ(actual, expected) << expression;
    }

    // A member read counts its cell as a contributor, like a whole read.
    script_sheet_t c("sheet contributing { interface: d: { a: 1, b: 2 }; e: 3;"
                     " output: o <== d.b + e; }",
                     updated);
    EXPECT_EQ(c.sheet.contributing_to_cell(name_t("o")).size(), 2u);
    dictionary_t changed;
    changed[name_t("a")] = 1.0;
    changed[name_t("b")] = 9.0;
    c.set_update("d", changed);
    EXPECT_EQ(c.number("o"), 12);

    // Initial values and self-references read members too.
    script_sheet_t i("sheet initial { constant: range: { min: -18, max: 6 };"
                     " input: in0: { value: 0.5 };"
                     " interface: unlink gain: in0.value * (range.max - range.min) + range.min;"
                     "     unlink swap: { a: 1, b: 2 } <== { a: swap.b, b: swap.a }; }",
                     updated);
    EXPECT_EQ(i.number("gain"), -6);
    EXPECT_EQ(i.inspect("swap.a"), any_regular_t(2.0));
    EXPECT_EQ(i.inspect("swap.b"), any_regular_t(1.0));
}

TEST(SheetUpdate, LongChainsOfCellsEvaluateThroughNestedReads) {
    // Each output reads the one before it, so reading the last nests one machine entry per cell.
    std::string script = "sheet Chain {\ninput: c0: 1;\noutput:\n";
    constexpr int length = 900;
    for (int i = 1; i <= length; ++i)
        script += "c" + std::to_string(i) + " <== c" + std::to_string(i - 1) + " + 1;\n";
    script += "}\n";
    vorlen::testing::script_sheet_t chain(script, updated);
    EXPECT_EQ(chain.number(("c" + std::to_string(length)).c_str()), length + 1.0);
    chain.set_update("c0", vorlen::any_regular_t(10.0));
    EXPECT_EQ(chain.number(("c" + std::to_string(length)).c_str()), length + 10.0);
}
