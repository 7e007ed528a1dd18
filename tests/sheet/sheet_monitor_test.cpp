// The four monitors: when they are called, with what, and in which order across cells.

#include "sheet_fixture.hpp"

using namespace vorlen;
using vorlen::testing::script_sheet_t;
using vorlen::testing::text_of;
using vorlen::testing::updated;

TEST(SheetMonitor, ValueIsCalledAtOnceAndThenOnChangeOnly) {
    script_sheet_t s("sheet values { interface: a: 1; output: sign <== a < 0 ? -1 : 1; }", updated);
    std::vector<double> calls;
    sheet_t::connection_t connection = s.sheet.monitor_value(
        name_t("sign"), [&](const any_regular_t& v) { calls.push_back(v.cast<double>()); });
    EXPECT_EQ(calls, std::vector<double>{1});

    s.set_update("a", 5.0); // sign stays 1
    s.set_update("a", -2.0);
    s.set_update("a", -3.0);
    s.set_update("a", 4.0);
    EXPECT_EQ(calls, (std::vector<double>{1, -1, 1}));

    connection.disconnect();
    s.set_update("a", -1.0);
    EXPECT_EQ(calls.size(), 3u);
}

TEST(SheetMonitor, InvariantPoisonsItsContributorsOnTheChangeOnly) {
    script_sheet_t s("sheet range { interface: low: 1; high: 5; gain: 0;"
                     " invariant: ordered <== low < high;"
                     " output: width <== high - low; level <== gain; }",
                     updated);
    std::vector<bool> width_calls, level_calls, low_enabled;
    s.sheet.monitor_invariant_dependent(name_t("width"), [&](bool v) { width_calls.push_back(v); });
    s.sheet.monitor_invariant_dependent(name_t("level"), [&](bool v) { level_calls.push_back(v); });
    s.monitor_enabled("low", {"low"}, low_enabled);

    s.set_update("low", 10.0); // breaks the invariant
    s.sheet.update();          // still broken: no second call
    s.set_update("gain", 3.0); // unrelated
    s.set_update("low", 2.0);  // holds again

    EXPECT_EQ(width_calls, (std::vector<bool>{true, false, true}));
    EXPECT_EQ(level_calls, std::vector<bool>{true});
    // Enabling follows what the published cells read, not the invariant.
    EXPECT_EQ(low_enabled, std::vector<bool>{true});
    // The poisoned cells still calculate.
    EXPECT_EQ(s.number("width"), 3);
}

TEST(SheetMonitor, ContributingIsCalledOnEveryUpdateWithItsMark) {
    script_sheet_t s("sheet contributors { interface: a: 1; b: 2; output: sum <== a + b; }",
                     updated);
    dictionary_t mark;
    mark[name_t("a")] = 1.0;
    mark[name_t("b")] = 2.0;
    std::vector<dictionary_t> calls;
    s.sheet.monitor_contributing(name_t("sum"), mark,
                                 [&](const dictionary_t& d) { calls.push_back(d); });
    s.sheet.update(); // no change: called all the same
    s.set_update("b", 7.0);
    mark[name_t("b")] = 5.0; // the monitor keeps its own copy of the mark
    s.sheet.update();

    dictionary_t changed;
    changed[name_t("b")] = 7.0;
    EXPECT_EQ(calls, (std::vector<dictionary_t>{dictionary_t(), dictionary_t(), changed, changed}));
}

TEST(SheetMonitor, EnabledFollowsTheSideThatFeedsTheOutputs) {
    script_sheet_t s("sheet sides { interface: a: 1; b: 2; c: 3;"
                     " logic: relate { a <== b * 2; b <== a / 2; } output: o <== a; }");
    std::vector<bool> a_calls, b_calls;
    s.monitor_enabled("a", {"a"}, a_calls);
    s.monitor_enabled("b", {"b"}, b_calls);
    // Before the first update nothing is published.
    EXPECT_EQ(a_calls, std::vector<bool>{false});
    EXPECT_EQ(b_calls, std::vector<bool>{false});

    s.set_update("a", 4.0); // o reads a itself
    s.set_update("a", 6.0); // nothing changes for enabling: no calls
    s.set_update("b", 1.0); // now o reads a computed from b
    EXPECT_EQ(a_calls, (std::vector<bool>{false, true, false}));
    // b's control is told again that it is disabled when the relation first touches it.
    EXPECT_EQ(b_calls, (std::vector<bool>{false, false, true}));
    EXPECT_EQ(s.number("o"), 2);
}

TEST(SheetMonitor, EnabledCountsAnInputReadAsItselfWhileTouched) {
    script_sheet_t s(
        "sheet accessed { interface: a: 1; b: 2; c: 3;"
        " logic: when (c > 0) relate { a <== b * 2; b <== a / 2; } output: o <== c; }");
    std::vector<bool> a_calls, b_calls, c_calls;
    s.monitor_enabled("a", {"a", "b"}, a_calls);
    s.monitor_enabled("b", {"a", "b"}, b_calls);
    s.monitor_enabled("c", {}, c_calls);

    // No output reads a or b, but a holds its value, read as itself, inside a touched relation.
    s.set_update("a", 4.0);
    EXPECT_EQ(a_calls, (std::vector<bool>{false, true}));
    EXPECT_EQ(b_calls, (std::vector<bool>{false, false}));
    EXPECT_EQ(c_calls, (std::vector<bool>{false, true}));
    // A control connected now is told the same at once.
    std::vector<bool> late_a, late_b;
    s.monitor_enabled("a", {"a", "b"}, late_a);
    s.monitor_enabled("b", {"a", "b"}, late_b);
    EXPECT_EQ(late_a, std::vector<bool>{true});
    EXPECT_EQ(late_b, std::vector<bool>{false});

    // The relation touches the same inputs as before and the published set is the same: the
    // controls are not told again, even though b now holds and a is computed.
    s.set_update("b", 4.0);
    EXPECT_EQ(a_calls.size(), 2u);
    EXPECT_EQ(b_calls.size(), 2u);

    // Switched off, the relation touches nothing: both controls hear that they are disabled.
    s.set_update("c", -1.0);
    EXPECT_EQ(a_calls, (std::vector<bool>{false, true, false}));
    EXPECT_EQ(b_calls, (std::vector<bool>{false, false, false}));
    EXPECT_EQ(c_calls.size(), 2u);
}

TEST(SheetMonitor, FireOutputByOutputInHashOrderThenEnabling) {
    // These names iterate in a table in an order other than the order they were added in;
    // monitors fire in the table's order.
    const char* const order[] = {"gain", "level", "out0", "out1", "out2", "out3"};
    dictionary_t table;
    std::vector<std::string> expected_order;
    for (const char* name : order)
        table[name_t(name)] = 0.0;
    for (const auto& entry : table)
        expected_order.emplace_back(entry.first.c_str());
    ASSERT_NE(expected_order, std::vector<std::string>(std::begin(order), std::end(order)));

    script_sheet_t s("sheet order { interface: gain: 1; level: 2; invariant: out0 <== gain < 10;"
                     " output: out1 <== gain; out2 <== gain + level; out3 <== level; }",
                     updated);
    std::vector<std::string> log;
    for (const char* name : order) {
        const std::string n = name;
        s.sheet.monitor_invariant_dependent(
            name_t(name), [&log, n](bool v) { log.push_back(n + " enabled " + (v ? "1" : "0")); });
        s.sheet.monitor_value(name_t(name), [&log, n](const any_regular_t& v) {
            log.push_back(n + " value " + text_of(v));
        });
        s.sheet.monitor_contributing(name_t(name), dictionary_t(), [&log, n](const dictionary_t&) {
            log.push_back(n + " contributing");
        });
    }
    const std::vector<name_t> touch = script_sheet_t::names_of({"level"});
    s.sheet.monitor_enabled(name_t("level"), touch.data(), touch.data() + 1, [&log](bool v) {
        log.push_back(std::string("level control ") + (v ? "1" : "0"));
    });
    // Every monitor is called once at once, in the order connected.
    EXPECT_EQ(log.size(), 6u * 3u + 1u);
    EXPECT_EQ(log.front(), "gain enabled 1");
    EXPECT_EQ(log[1], "gain value 1");
    log.clear();

    s.set_update("gain", 20.0); // breaks the invariant, which reads gain only

    std::vector<std::string> expected;
    auto changes = [](const std::string& name) {
        return name == "gain" || name == "out0" || name == "out1" || name == "out2";
    };
    for (const std::string& name : expected_order) {
        if (changes(name)) {
            expected.push_back(name + " enabled 0");
            expected.push_back(name + " value " + text_of(s.sheet.get(name_t(name.c_str()))));
        }
        expected.push_back(name + " contributing");
    }
    EXPECT_EQ(log, expected);

    // The enabling group fires after every cell, at the very end.
    script_sheet_t t("sheet late { interface: a: 1; output: o <== a; }");
    std::vector<std::string> late;
    t.sheet.monitor_enabled(name_t("a"), nullptr, nullptr,
                            [&late](bool v) { late.push_back(v ? "enabled" : "disabled"); });
    t.sheet.monitor_value(name_t("o"),
                          [&late](const any_regular_t& v) { late.push_back("o " + text_of(v)); });
    t.sheet.update();
    EXPECT_EQ(late, (std::vector<std::string>{"disabled", "o empty", "o 1", "enabled"}));
}

TEST(SheetMonitor, ConnectionsAreIndependent) {
    script_sheet_t s("sheet two { interface: a: 1; }");
    int first = 0, second = 0;
    sheet_t::connection_t c1 =
        s.sheet.monitor_value(name_t("a"), [&](const any_regular_t&) { ++first; });
    s.sheet.monitor_value(name_t("a"), [&](const any_regular_t&) { ++second; });
    s.set_update("a", 2.0);
    c1.disconnect();
    s.set_update("a", 3.0);
    EXPECT_EQ(first, 2);
    EXPECT_EQ(second, 3);
}
