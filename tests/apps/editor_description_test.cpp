#include "editor_session.hpp"
#include "node_description.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>
#include <string>

namespace {

using qafui_testing::EditorSession;
using qafui_testing::FindRecord;

TEST(EditorDescription, NodesShowWhatAPersonSeesWhereTheyCanBeClicked) {
    qafui::cli::editor_options_t options;
    options.parameters = {{"--param", "Spline Curves", "1", false},
                          {"--value", "FFT Size", "1024", true}};
    EditorSession session({}, options);
    const auto description = session.Describe();
    EXPECT_EQ(description.root.class_name, "FFTFilterEditorView");
    EXPECT_EQ(description.size.width, 520.0f);

    const auto* splines = FindRecord(description.root, "SplineCurves");
    const auto* reset = FindRecord(description.root, "ResetButton");
    const auto* section = FindRecord(description.root, "AdvancedSection");
    const auto* window = FindRecord(description.root, "WindowType");
    const auto* size = FindRecord(description.root, "FFTSize");
    ASSERT_TRUE(splines && reset && section && window && size);
    EXPECT_EQ(splines->class_name, "UI_Checkbox");
    EXPECT_EQ(splines->text, "Spline Curves");
    EXPECT_EQ(splines->value, 1.0) << "set before the editor opened";
    EXPECT_EQ(reset->tip, "Reset");
    EXPECT_FALSE(reset->value) << "a momentary button holds no value";
    EXPECT_FALSE(section->visible);
    EXPECT_FALSE(window->visible) << "hidden through its section";
    EXPECT_EQ(window->text, "Hann");
    EXPECT_EQ(size->text, "1024") << "set in its own unit before the editor opened";
    // Frames are in the editor's coordinates, not the section's.
    EXPECT_GE(window->frame.y, section->frame.y);

    ASSERT_EQ(description.parameters.size(), 266u);
    EXPECT_EQ(description.parameters[5].name, "Visible Low");
    EXPECT_EQ(description.parameters[5].text, "20 Hz");
    EXPECT_EQ(description.parameters[1].text, "1024 points");

    std::ostringstream text;
    qafui::cli::write_description_text(text, description);
    EXPECT_NE(text.str().find("      UI_Checkbox #SplineCurves [194 309 118 18] text=\"Spline "
                              "Curves\" value=1\n"),
              std::string::npos)
        << text.str();
    EXPECT_NE(text.str().find("  1 \"FFT Size\" 0.030303 1024 points\n"), std::string::npos);
}

TEST(EditorDescription, TheJSONDocumentHoldsTheSameTree) {
    EditorSession session;
    const auto description = session.Describe();
    const auto document = nlohmann::json::parse(qafui::cli::description_json(description));
    EXPECT_EQ(document["effect"], "FFTFilter");
    EXPECT_EQ(document["size"], nlohmann::json::array({520, 336}));
    const auto& root = document["nodes"];
    EXPECT_EQ(root["class"], "FFTFilterEditorView");
    const auto& panel = root["children"][0];
    EXPECT_EQ(panel["id"], "FFTFilterUI");
    std::size_t hidden = 0;
    for (const auto& node : panel["children"]) {
        ASSERT_EQ(node["frame"].size(), 4u);
        if (node["id"] == "LinearLogMode") {
            EXPECT_EQ(node["text"], "Logarithmic");
            EXPECT_EQ(node["value"], 1);
        }
        if (node["id"] == "AdvancedSection")
            for (const auto& child : node["children"])
                hidden += child["visible"] == false ? 1 : 0;
    }
    EXPECT_EQ(hidden, 4u);
    ASSERT_EQ(document["parameters"].size(), 266u);
    EXPECT_EQ(document["parameters"][6]["text"], "24000 Hz");
    EXPECT_EQ(document["parameters"][6]["value"], 1.0);
}

} // namespace
