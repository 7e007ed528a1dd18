// The sheet language: what it accepts, and how it refuses what it does not.

#include "sheet_fixture.hpp"

#include <random>
#include <sstream>

using namespace vorlen;
using vorlen::testing::outcome_of;
using vorlen::testing::script_sheet_t;
using vorlen::testing::updated;

namespace {

const char* const full_script = R"(// Every form of the language.
sheet Everything {
constant:
    unit: "°C";                       // a degree sign, in UTF-8
    lo: -18; hi: 6; range: hi - lo;
    settings: {
        type: 1,
        text_placement: @left_top,
        label1: '-18'
    };
input:
    in0: 0.5;
    in1: 0.25;
interface:
    linked_cell: in0 * range + lo;
    unlink plain: in1 * 4;
    derived <== linked_cell * 2;
    unlink unlinked_derived <== plain + 1;
    points: [ ] <== [plain, plain];
    a: 1;
    b: 2;
logic:
    when (in1 != 0.5) relate {
        a <== b * 2;
        b <== a / 2;
    }
    relate { a <== b + 0; null <== b; }
    doubled <== a * 2;
/* a block
   comment */
output:
    out0 <== (linked_cell - lo) / range;
    out1 <== plain / 4;
invariant:
    in_range <== linked_cell <= hi;
}
)";

} // namespace

TEST(SheetReader, ReadsEveryForm) {
    script_sheet_t s(full_script, updated);
    EXPECT_EQ(s.sheet.get(name_t("unit")), any_regular_t("\xC2\xB0"
                                                         "C"));
    EXPECT_EQ(s.number("range"), 24);
    EXPECT_EQ(s.inspect("settings.text_placement"), any_regular_t(name_t("left_top")));
    EXPECT_EQ(s.inspect("settings.label1"), any_regular_t("-18"));
    EXPECT_EQ(s.numbers({"linked_cell", "plain", "derived", "unlinked_derived"}),
              (std::vector<double>{-6, 1, -12, 2}));
    EXPECT_EQ(s.inspect("points"), s.inspect("[1, 1]"));
    EXPECT_EQ(s.numbers({"out0", "out1"}), (std::vector<double>{0.5, 0.25}));
    EXPECT_EQ(s.sheet.get(name_t("in_range")), any_regular_t(true));
    EXPECT_EQ(s.number("doubled"), s.number("a") * 2);

    // Kinds of cell land where they belong.
    EXPECT_TRUE(s.sheet.has_input(name_t("in0")));
    EXPECT_FALSE(s.sheet.has_output(name_t("in0")));
    EXPECT_TRUE(s.sheet.has_input(name_t("plain")));
    EXPECT_TRUE(s.sheet.has_output(name_t("plain")));
    EXPECT_TRUE(s.sheet.has_output(name_t("out0")));
    EXPECT_TRUE(s.sheet.has_output(name_t("in_range")));
    EXPECT_FALSE(s.sheet.has_output(name_t("doubled")));
    EXPECT_FALSE(s.sheet.has_output(name_t("unit")));

    // A computed interface cell ignores what a control writes to it.
    s.set_update("derived", 100.0);
    EXPECT_EQ(s.number("derived"), -12);
}

TEST(SheetReader, SameDeclaredNameLoadsIndependently) {
    script_sheet_t first("sheet LayoutName { interface: a: 1; }");
    script_sheet_t second("sheet LayoutName { interface: a: 2; b: 3; }");
    first.sheet.update();
    second.sheet.update();
    EXPECT_EQ(first.number("a"), 1);
    EXPECT_EQ(second.number("a"), 2);
    EXPECT_FALSE(first.sheet.has_input(name_t("b")));
}

TEST(SheetReader, ReadsFromAStream) {
    std::istringstream stream("sheet s {\n constant:\n  k: 2;\n}\n");
    sheet_t sheet;
    parse_sheet_script(stream, name_t("stream.mrl"), sheet);
    EXPECT_EQ(sheet.get(name_t("k")), any_regular_t(2.0));

    std::istringstream bad("sheet s {\n constant:\n  k 2;\n}\n");
    sheet_t other;
    try {
        parse_sheet_script(bad, name_t("stream.mrl"), other);
        FAIL() << "no error";
    } catch (const stream_error_t& error) {
        EXPECT_EQ(format_stream_error(error),
                  "stream.mrl:3:5: property model description: expected ':', found number 2");
    }
}

TEST(SheetReader, AcceptsOrRefusesWithFileLineAndColumn) {
    const std::string description = ": property model description: ";
    const std::pair<const char*, std::string> rows[] = {
        {"sheet LoudnessMeterUI { }", "ok"},
        {"sheet VocalEnhancerUI\r\n{\r\nconstant:\r\ninput:\r\ninterface:\r\noutput:\r\n}\r\n",
         "ok"},
        // Sections may come in any order and repeat.
        {"sheet s { output: o <== 1; constant: k: 1; output: p <== k; }", "ok"},
        // CR LF and bare LF count lines alike.
        {"sheet x {\r\ninterface:\n  a: 1\r\n}", "4:1" + description + "expected ';', found '}'"},
        {"", "1:1" + description + "expected 'sheet', found end of input"},
        {"sheet { }", "1:7" + description + "expected a name, found '{'"},
        {"sheet x { a: 1; }",
         "1:11" + description + "expected a section such as 'interface:', found 'a'"},
        {"sheet x { } extra", "1:13" + description + "expected end of input, found 'extra'"},
        {"sheet x {\n constant:\n  k: ;\n}",
         "3:6" + description + "expected an expression, found ';'"},
        {"sheet x { interface: unlink a; }",
         "1:30" + description + "expected ':' or '<==', found ';'"},
        {"sheet x { output: o: 1; }", "1:20" + description + "expected '<==', found ':'"},
        {"sheet x { logic: when a relate { } }", "1:23" + description + "expected '(', found 'a'"},
        {"sheet x { interface: a: 1; logic: relate { a <== 1; } }",
         "1:35" + description + "a relate clause needs at least two terms"},
        // Section words are reserved: they cannot name cells.
        {"sheet x { interface: unlink input: 1; }",
         "1:29" + description + "expected a cell name, found 'input'"},
        // Errors of the token reader get the same prefix.
        {"sheet x {\n constant:\n  k: 1;\xff\n}", "3:8" + description + "unexpected byte 0xFF"},
        {"sheet x { constant: k: \"open\n; }", "1:24" + description + "unterminated string"},
        // Failures of the sheet keep their own texts, at the statement.
        {"sheet x {\n interface:\n  a: 1;\n  a: 2;\n}", "4:3: cell named 'a'already exists."},
        {"sheet x { interface: a: 1; logic: relate { a <== 1; b <== 2; } }",
         "1:35: interface cell b does not exist."},
        // The script builds in order: a statement sees only what came before it.
        {"sheet x { input: a: b; b: 1; }", "1:18: variable b not found."},
        {"sheet x { logic: relate { a <== b; b <== a; } interface: a: 1; b: 2; }",
         "1:18: interface cell a does not exist."},
        {"sheet x { interface: a: 1; b: 2; logic: relate { a <== b; b <== a; } }", "ok"},
    };
    for (const auto& [script, result] : rows)
        EXPECT_EQ(outcome_of(script), result == "ok" ? result : "test.mrl:" + result) << script;
}

TEST(SheetReader, TruncatedScriptsFailCleanly) {
    const std::string script = full_script;
    const std::size_t closing_brace = script.rfind('}');
    for (std::size_t length = 0; length <= closing_brace; ++length) {
        const std::string result = outcome_of(std::string_view(script).substr(0, length));
        ASSERT_EQ(result.rfind("test.mrl:", 0), 0u) << "prefix of " << length << ": " << result;
    }
    EXPECT_EQ(outcome_of(script), "ok");
}

TEST(SheetReader, DeepNestingFailsCleanly) {
    for (const char* open : {"[", "(", "{a: ", "-", "!", "f(", "a ? "}) {
        std::string script = "sheet x { constant: k: ";
        for (int i = 0; i != 100000; ++i)
            script += open;
        const std::string result = outcome_of(script);
        EXPECT_NE(result.find("test.mrl:1:"), std::string::npos) << open;
        EXPECT_NE(result.find("nested too deeply"), std::string::npos) << open << ": " << result;
    }
}

TEST(SheetReader, GarbledScriptsFailCleanly) {
    // Random damage to a valid script: each result is a success or a positioned error.
    const std::string script = full_script;
    std::mt19937 random(20240611);
    const std::string alphabet = "{}[]();:,.<=@'\"/*\\-+?!&|\r\n\t abz019\x80\xff";
    int errors = 0;
    for (int round = 0; round != 3000; ++round) {
        std::string damaged = script;
        const int edits = 1 + int(random() % 4);
        for (int e = 0; e != edits; ++e) {
            const std::size_t at = random() % damaged.size();
            const char c = alphabet[random() % alphabet.size()];
            switch (random() % 3) {
            case 0: damaged[at] = c; break;
            case 1: damaged.insert(damaged.begin() + std::ptrdiff_t(at), c); break;
            default: damaged.erase(at, 1 + random() % 8); break;
            }
        }
        const std::string result = outcome_of(damaged);
        if (result != "ok") {
            ++errors;
            ASSERT_EQ(result.rfind("test.mrl:", 0), 0u) << result;
        }
    }
    EXPECT_GT(errors, 1000);
}
