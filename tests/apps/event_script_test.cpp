#include "editor_session.hpp"
#include "event_script.hpp"

#include "effects/fft_filter_graph.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>

namespace {

using qafui::cli::event_script_error;
using qafui::cli::event_t;
using qafui::cli::parse_event_script;
using qafui_testing::EditorSession;
using qafui_testing::FindRecord;
using Kind = event_t::kind_t;

TEST(EventScript, EachLineReadsAsTheEventAPersonWouldMake) {
    const auto script = parse_event_script("# set up\n"
                                           "\n"
                                           "click Advanced\n"
                                           "shift+double-click 10,20.5   # a point\n"
                                           "right-click graph\n"
                                           "alt+drag a to 30,-4 steps 3\n"
                                           "wheel FFTSize -2\n"
                                           "key ctrl+shift+Left\n"
                                           "key F12\n"
                                           "key +\n"
                                           "type  -6 dB\n"
                                           "wait 0.25\n"
                                           "answer 0\r\n",
                                           "s.txt");
    ASSERT_EQ(script.events.size(), 11u);
    const auto& e = script.events;
    EXPECT_EQ(e[0].kind, Kind::click);
    EXPECT_EQ(e[0].target.id, "Advanced");
    EXPECT_EQ(e[0].line, 3);
    EXPECT_EQ(e[1].kind, Kind::double_click);
    EXPECT_TRUE(e[1].target.id.empty());
    EXPECT_EQ(e[1].target.point.x, 10.0f);
    EXPECT_EQ(e[1].target.point.y, 20.5f);
    EXPECT_TRUE(e[1].modifiers.IsSet(qorui::ModifierKey::kShift));
    EXPECT_EQ(e[2].kind, Kind::right_click);
    EXPECT_EQ(e[3].kind, Kind::drag);
    EXPECT_EQ(e[3].target.id, "a");
    EXPECT_EQ(e[3].to.point.y, -4.0f);
    EXPECT_EQ(e[3].steps, 3);
    EXPECT_TRUE(e[3].modifiers.IsSet(qorui::ModifierKey::kAlt));
    EXPECT_EQ(e[4].amount, -2.0);
    EXPECT_EQ(e[5].key, qorui::KeyboardCode::kLeft);
    EXPECT_TRUE(e[5].modifiers.IsSet(qorui::ModifierKey::kControl | qorui::ModifierKey::kShift));
    EXPECT_EQ(e[6].key, qorui::KeyboardCode::kF12);
    EXPECT_EQ(e[7].key, qorui::KeyboardCode::kPlus);
    EXPECT_EQ(e[8].text, "-6 dB");
    EXPECT_EQ(e[9].amount, 0.25);
    EXPECT_EQ(e[10].kind, Kind::answer);
    EXPECT_EQ(e[10].line, 13);
}

TEST(EventScript, ABadLineIsNamedWithItsFileAndLineBeforeAnythingRuns) {
    const std::pair<const char*, const char*> cases[] = {
        {"tap Advanced", "s.txt:2: unknown event 'tap'"},
        {"click", "s.txt:2: 'click' takes one TARGET"},
        {"click a b", "s.txt:2: 'click' takes one TARGET"},
        {"click 3,x", "s.txt:2: '3,x' is not a point X,Y"},
        {"click a;b", "s.txt:2: 'a;b' is neither an identifier nor a point X,Y"},
        {"meta+click a", "s.txt:2: unknown modifier 'meta' (shift, ctrl or alt)"},
        {"shift+wait 1", "s.txt:2: 'wait' takes no modifiers"},
        {"drag a 3,4", "s.txt:2: 'drag' takes TARGET to TARGET [steps N]"},
        {"drag a to 3,4 steps", "s.txt:2: 'drag' takes TARGET to TARGET [steps N]"},
        {"drag a to 3,4 steps 0", "s.txt:2: steps takes a whole number from 1 to 10000"},
        {"drag a to 3,4 steps 2.5", "s.txt:2: steps takes a whole number from 1 to 10000"},
        {"wheel a 0", "s.txt:2: '0' is not a number of wheel notches"},
        {"key Hyper", "s.txt:2: unknown key 'Hyper'"},
        {"key F13", "s.txt:2: unknown key 'F13'"},
        {"type", "s.txt:2: 'type' takes the TEXT to type"},
        {"wait -1", "s.txt:2: '-1' is not a number of seconds from 0 to 3600"},
        {"wait 1e9", "s.txt:2: '1e9' is not a number of seconds from 0 to 3600"},
        {"answer 1.5", "s.txt:2: '1.5' is not an item or button number (0 cancels)"},
    };
    for (const auto& [line, message] : cases) {
        try {
            parse_event_script(std::string("click Advanced\n") + line + "\nclick Advanced\n",
                               "s.txt");
            ADD_FAILURE() << line << " was taken";
        } catch (const event_script_error& error) {
            const std::string what = error.what();
            EXPECT_EQ(what.substr(0, std::string(message).size()), message) << what;
        }
    }
    EXPECT_THROW(qafui::cli::read_event_script("/nonexistent/events.txt"), event_script_error);
}

TEST(EventScript, PopupsAndTheCheckboxWriteTheParametersTheyShow) {
    EditorSession session("answer 1          # the menu opens below: its first row\n"
                          "click LinearLogMode\n"
                          "click SplineCurves\n"
                          "click Advanced\n"
                          "answer 3\n"
                          "click FFTSize\n");
    const auto description = session.Describe();
    const auto* scale = FindRecord(description.root, "LinearLogMode");
    const auto* size = FindRecord(description.root, "FFTSize");
    ASSERT_TRUE(scale && size);
    EXPECT_EQ(scale->text, "Linear");
    EXPECT_EQ(session.Value(4), 1.0f) << "the linear scale";
    EXPECT_EQ(session.Value(0), 1.0f) << "splines on";
    EXPECT_TRUE(size->visible) << "the advanced section opened";
    EXPECT_EQ(size->text, "128");
    EXPECT_EQ(session.Plain(1), 128.0f);
}

TEST(EventScript, APointAddedAndDraggedUpRisesWithoutMovingAcross) {
    const char* add = "answer 1\nclick LinearLogMode\nclick 260,150\n";
    EditorSession added(add);
    EditorSession dragged(std::string(add) + "drag 260,150 to 260,90 steps 6\n");
    EXPECT_EQ(added.Plain(9), 3.0f) << "a third point";
    EXPECT_EQ(dragged.Plain(9), 3.0f);
    EXPECT_EQ(dragged.Plain(12), added.Plain(12)) << "a vertical drag keeps the frequency";
    EXPECT_GT(dragged.Value(13), added.Value(13) + 0.05f);
    EXPECT_EQ(dragged.Plain(10), 20.0f) << "the ends stay";
}

TEST(EventScript, LinesAfterADialogOpensRunInsideItUntilItEnds) {
    EditorSession session("click 260,150\n"
                          "right-click 260,150\n"
                          "answer 1          # Edit Point...\n"
                          "type 1000\n"
                          "key Tab\n"
                          "type -6\n"
                          "key Return        # ends the typing\n"
                          "answer 1          # OK\n");
    auto* graph = dynamic_cast<qoraudiofiltersui::FFTFilterGraph*>(
        session->editor().view()->FindNodeByID("FFTFilterGraph"));
    ASSERT_NE(graph, nullptr);
    EXPECT_NEAR(session.Plain(12), 1000.0f, 0.01f);
    EXPECT_NEAR(session.Value(13), graph->GetFaderTranslator().GetNormalizedValue(-6.0), 1e-6);

    // The same dialog answered by its second button, written before it opens: cancelled.
    EditorSession cancelled("click 260,150\nanswer 1\nanswer 2\nright-click 260,150\n");
    EXPECT_NE(cancelled.Plain(12), 1000.0f);
    EXPECT_EQ(cancelled.Plain(9), 3.0f);
}

TEST(EventScript, ATargetOrAnswerThatDoesNotFitFailsWithItsLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"click NoSuchNode", ":1: no node 'NoSuchNode' in the editor"},
        {"click FFTSize", ":1: 'FFTSize' is not shown"},
        {"answer 2", ":1: no menu or dialog opened to take this answer"},
        {"answer 9\nclick LinearLogMode", ":1: answer 9: the menu has 2 items"},
        {"click 260,150\nright-click 260,150\nanswer 1\nanswer 5",
         ":4: answer 5: the curve point edit has 2 buttons"},
    };
    for (const auto& [script, message] : cases) {
        try {
            EditorSession session(script);
            ADD_FAILURE() << script << " ran";
        } catch (const event_script_error& error) {
            EXPECT_NE(std::string(error.what()).find(message), std::string::npos) << error.what();
        }
    }
}

} // namespace
