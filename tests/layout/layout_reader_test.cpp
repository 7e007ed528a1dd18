// The layout-language reader: statements, sections, arguments, inserted layouts and errors.

#include "layout/layout_reader.hpp"

#include "core/stream_error.hpp"
#include "sheet/sheet.hpp"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

namespace vorlen {
namespace {

layout_description_t read(const std::string& text, const layout_reader_options_t& options = {}) {
    return parse_layout_script(text, name_t("test.tss"), options);
}

/// The first error of reading `text`, as a person sees it: "file:line:column: message".
std::string error_of(const std::string& text, const layout_reader_options_t& options = {}) {
    try {
        read(text, options);
    } catch (const stream_error_t& error) {
        return format_stream_error(error);
    } catch (const std::exception& error) {
        return std::string("not a stream error: ") + error.what();
    }
    return "no error";
}

double number(const widget_description_t& w, const char* key) {
    return get_value(w.arguments, name_t(key)).cast<double>();
}
std::string text(const widget_description_t& w, const char* key) {
    return get_value(w.arguments, name_t(key)).cast<std::string>();
}

/// Layout resources by name, as a provider for `layout_script`.
layout_reader_options_t with_layouts(std::map<std::string, std::string> layouts) {
    layout_reader_options_t options;
    options.provider = [layouts](const std::string& name) -> std::optional<layout_source_t> {
        auto found = layouts.find(name);
        if (found == layouts.end())
            return std::nullopt;
        return layout_source_t{found->second, name_t((name + ".tss").c_str())};
    };
    return options;
}

TEST(LayoutReader, TreeOfWidgetsWithEvaluatedArgumentsAndPositions) {
    const layout_description_t d = read("layout Example\n"
                                        "{\n"
                                        "    view subview(name: \"Main\", show_border: true)\n"
                                        "    {\n"
                                        "        row(spacing: 2 * 5, margin: [1, 2, 3, 4]) {\n"
                                        "            static_text(name: 'Gain:', align: @left);\n"
                                        "            knob(identifier: \"Gain\", value_range: "
                                        "{min: -18, max: 6});\n"
                                        "        }\n"
                                        "        separator();\n"
                                        "    }\n"
                                        "}\n");
    EXPECT_EQ(d.name, name_t("Example"));
    const widget_description_t& view = d.view;
    EXPECT_EQ(view.name, name_t("subview"));
    EXPECT_EQ(text(view, "name"), "Main");
    EXPECT_EQ(get_value(view.arguments, "show_border"_name), any_regular_t(true));
    EXPECT_TRUE(view.has_block);
    ASSERT_TRUE(view.sheet);
    EXPECT_EQ(format_position(view.position), "test.tss:3:10");

    ASSERT_EQ(view.children.size(), 2u);
    const widget_description_t& row = view.children[0];
    EXPECT_EQ(row.name, name_t("row"));
    EXPECT_EQ(number(row, "spacing"), 10);
    EXPECT_EQ(get_value(row.arguments, "margin"_name), any_regular_t(array_t{1, 2, 3, 4}));
    EXPECT_EQ(format_position(row.position), "test.tss:5:9");
    ASSERT_EQ(row.children.size(), 2u);
    EXPECT_EQ(text(row.children[0], "name"), "Gain:");
    EXPECT_EQ(get_value(row.children[0].arguments, "align"_name), any_regular_t("left"_name));
    const dictionary_t& range =
        get_value(row.children[1].arguments, "value_range"_name).cast<dictionary_t>();
    EXPECT_EQ(get_value(range, "min"_name), any_regular_t(-18.0));
    EXPECT_FALSE(row.children[1].has_block);
    EXPECT_EQ(format_position(row.children[1].position), "test.tss:7:13");

    EXPECT_EQ(view.children[1].name, name_t("separator"));
    EXPECT_TRUE(view.children[1].arguments.empty());
    EXPECT_FALSE(view.children[1].sheet); // only a layout's root holds the sheet
}

TEST(LayoutReader, OwnCellsFeedTheArguments) {
    const layout_description_t d =
        read("layout Cells { constant: gap: 4; wide: gap * 25;"
             " interface: shown: true; unlink label: 'Level'; doubled <== wide * 2;"
             " view subview() { row(spacing: gap, width: wide, text: label, twice: doubled); } }");
    const widget_description_t& row = d.view.children.at(0);
    EXPECT_EQ(number(row, "spacing"), 4);
    EXPECT_EQ(number(row, "width"), 100);
    EXPECT_EQ(text(row, "text"), "Level");
    EXPECT_EQ(number(row, "twice"), 200);
    // The cells stay in the layout's sheet for the widgets to bind to.
    EXPECT_EQ(d.view.sheet->get("shown"_name), any_regular_t(true));
    EXPECT_EQ(d.view.sheet->get("gap"_name), any_regular_t(4.0));
}

TEST(LayoutReader, PrepareSheetInstallsFunctionsBeforeCellsAreRead) {
    layout_reader_options_t options;
    options.prepare_sheet = [](sheet_t& sheet) {
        sheet.machine_m.set_array_function_lookup([](name_t name, const array_t& arguments) {
            if (name != "get_input_channel_abbrev"_name)
                throw std::logic_error("function not defined");
            return any_regular_t(arguments.at(0).cast<double>() == 0 ? "L" : "R");
        });
    };
    const layout_description_t d = read("layout F { constant: first: get_input_channel_abbrev(0);"
                                        " view subview(a: first, b: get_input_channel_abbrev(1)) "
                                        "{ } }",
                                        options);
    EXPECT_EQ(text(d.view, "a"), "L");
    EXPECT_EQ(text(d.view, "b"), "R");
}

TEST(LayoutReader, CommentsQuotesLineEndsAndALastLeafWithoutSemicolon) {
    const layout_description_t d = read("layout Forms {\r\n"
                                        "view subview() {\r\n"
                                        "    /* column(name: 'hidden');\r\n"
                                        "       still a comment */\r\n"
                                        "    column() {\r\n"
                                        "        checkbox(identifier: 'Link Bands')\r\n"
                                        "    }\n"
                                        "    checkbox(identifier: \"Link Bands\")\r\n"
                                        "}\r\n"
                                        "}\r\n");
    ASSERT_EQ(d.view.children.size(), 2u);
    const widget_description_t& column = d.view.children[0];
    EXPECT_EQ(column.name, name_t("column"));
    EXPECT_EQ(format_position(column.position), "test.tss:5:5");
    ASSERT_EQ(column.children.size(), 1u);
    // Two-word identifiers in either quotes are the same value.
    EXPECT_EQ(get_value(column.children[0].arguments, "identifier"_name),
              get_value(d.view.children[1].arguments, "identifier"_name));
    EXPECT_EQ(format_position(d.view.children[1].position), "test.tss:8:5");

    // The root itself may go without a semicolon too, and a block may follow a ';'-less block.
    const layout_description_t bare = read("layout B { view subview(width: 5) }");
    EXPECT_EQ(number(bare.view, "width"), 5);
    EXPECT_FALSE(bare.view.has_block);
    const layout_description_t empty = read("layout E { view subview() { row() { }; } }");
    EXPECT_TRUE(empty.view.children.at(0).has_block);
    EXPECT_TRUE(empty.view.children.at(0).children.empty());
}

TEST(LayoutReader, ParametersMergeIntoTheArguments) {
    const layout_description_t d =
        read("layout P { constant: slider_params:"
             " { orientation: @horizontal, width: 80, name: 'from parameters' };"
             " view subview() { slider(parameters: slider_params, name: 'own');"
             " slider(name: 'first', parameters: slider_params); } }");
    for (const widget_description_t& slider : d.view.children) {
        EXPECT_EQ(get_value(slider.arguments, "orientation"_name),
                  any_regular_t("horizontal"_name));
        EXPECT_EQ(number(slider, "width"), 80);
        EXPECT_EQ(slider.arguments.count("parameters"_name), 0u);
    }
    // What the widget says itself wins, wherever it stands.
    EXPECT_EQ(text(d.view.children[0], "name"), "own");
    EXPECT_EQ(text(d.view.children[1], "name"), "first");
}

TEST(LayoutReader, LayoutScriptInsertsALayoutWithUniqueIdentifiers) {
    const layout_reader_options_t options = with_layouts({
        {"CompressorBand",
         "layout Band { constant: band_width: 60; view subview(identifier: 'Panel') {"
         " wex_edit_number(identifier: 'Threshold', width: band_width);"
         " wex_edit_number(identifier: @Gain); static_text(name: 'no identifier');"
         " layout_script(identifier: 'Meter', layoutId: 7); } }"},
        {"Meter", "layout M { view qor_level_meter(identifier: 'LevelMeter') }"},
    });
    const layout_description_t d =
        read("layout Main { constant: band_width: 10; view subview() {"
             " layout_script(identifier: 'CompressorBand', layoutId: 1);"
             " layout_script(identifier: 'CompressorBand', layoutId: 2) } }",
             options);
    ASSERT_EQ(d.view.children.size(), 2u);
    for (int band = 1; band <= 2; ++band) {
        SCOPED_TRACE(band);
        const widget_description_t& script = d.view.children[band - 1];
        EXPECT_EQ(script.name, name_t("layout_script"));
        EXPECT_EQ(text(script, "identifier"), "CompressorBand"); // names the resource
        ASSERT_EQ(script.children.size(), 1u);
        const widget_description_t& panel = script.children[0];
        ASSERT_TRUE(panel.sheet);
        EXPECT_NE(panel.sheet, d.view.sheet);
        EXPECT_EQ(panel.position.file_name, name_t("CompressorBand.tss"));
        const std::string prefix = "CompressorBand" + std::to_string(band) + "_";
        EXPECT_EQ(text(panel, "identifier"), prefix + "Panel");
        ASSERT_EQ(panel.children.size(), 4u);
        EXPECT_EQ(text(panel.children[0], "identifier"), prefix + "Threshold");
        // The inserted layout reads its own cells, not those of the one inserting it.
        EXPECT_EQ(number(panel.children[0], "width"), 60);
        EXPECT_EQ(get_value(panel.children[1].arguments, "identifier"_name),
                  any_regular_t(name_t((prefix + "Gain").c_str())));
        EXPECT_EQ(panel.children[2].arguments.count("identifier"_name), 0u);
        // Nested insertions add their own part.
        const widget_description_t& meter = panel.children[3];
        EXPECT_EQ(text(meter, "identifier"), "Meter");
        EXPECT_EQ(text(meter.children.at(0), "identifier"), prefix + "Meter7_LevelMeter");
    }
}

TEST(LayoutReader, LayoutScriptFailuresNameBothPlaces) {
    const layout_reader_options_t options = with_layouts({
        {"Broken", "layout Broken {\nview subview() {\n  row(width: missing_cell);\n}\n}\n"},
        {"Self", "layout Self { view layout_script(identifier: 'Self') }"},
    });
    try {
        read("layout Main {\nview subview() {\n    layout_script(identifier: 'Broken');\n}\n}\n",
             options);
        FAIL() << "expected an error";
    } catch (const stream_error_t& error) {
        ASSERT_EQ(error.line_position_set().size(), 2u);
        EXPECT_EQ(format_position(error.line_position_set()[0]), "Broken.tss:3:7");
        EXPECT_EQ(format_position(error.line_position_set()[1]), "test.tss:3:5");
    }
    EXPECT_EQ(error_of("layout M {\nview subview() {\n  layout_script(identifier: 'Nowhere');\n"
                       "}\n}\n",
                       options),
              "test.tss:3:3: layout description: layout_script: no layout named 'Nowhere'");
    EXPECT_NE(error_of("layout M { view layout_script(identifier: 'Self') }", options)
                  .find("layout_script inserts layouts more than 16 deep"),
              std::string::npos);
    EXPECT_EQ(error_of("layout M { view layout_script(layoutId: 1) }", options),
              "test.tss:1:17: layout description: layout_script needs an 'identifier' naming "
              "a layout");
    EXPECT_EQ(error_of("layout M { view layout_script(identifier: 'Broken') }"),
              "test.tss:1:17: layout description: layout_script: no layouts to insert 'Broken' "
              "from");
}

TEST(LayoutReader, ErrorsCarryFileLineAndColumn) {
    const std::pair<const char*, const char*> rows[] = {
        {"sheet X { }", "1:1: layout description: expected 'layout', found 'sheet'"},
        {"layout X {\n}\n",
         "2:1: layout description: expected 'constant:', 'interface:' or 'view', found '}'"},
        {"layout X {\nview subview(\n  width 3) }",
         "3:9: layout description: expected ':', found number 3"},
        {"layout X {\nview subview() {\n  row() row() } }",
         "3:9: layout description: expected ';', '{' or '}', found 'row'"},
        {"layout X { view subview(); } extra",
         "1:30: layout description: expected end of input, found 'extra'"},
        {"layout X {\nconstant:\n  a: 1\n  b: 2;\nview subview() }",
         "4:3: layout description: expected ';', found 'b'"},
        {"layout X { view subview() { row(); ",
         "1:36: layout description: expected a widget name, found end of input"},
        {"layout P {\nview subview() {\n  slider(parameters: 3); } }",
         "3:10: layout description: 'parameters' must be a dictionary of arguments"},
        // The token reader's own errors name the text too.
        {"layout X { view row() { a(x: 1 $ 2); } }",
         "1:32: layout description: unexpected character '$'"},
        {"layout X { view row() { a(name: 'open); } }",
         "1:33: layout description: unterminated string"}};
    for (const auto& [script, error] : rows)
        EXPECT_EQ(error_of(script), std::string("test.tss:") + error) << script;
    // An argument or a cell that fails to evaluate is reported where it stands.
    for (const auto& [script, place] :
         {std::pair{"layout X {\nview subview() {\n  row(spacing: 1, width: nothing + 1);\n} }",
                    "test.tss:3:19: "},
          {"layout X {\nconstant:\n  a: 1 / [];\nview subview() }", "test.tss:3:3: "}}) {
        const std::string error = error_of(script);
        EXPECT_EQ(error.rfind(place, 0), 0u) << error;
    }
}

TEST(LayoutReader, DeepNestingIsRefusedNotOverflowed) {
    std::string text = "layout Deep { view subview() {";
    for (int i = 0; i != 300; ++i)
        text += " row() {";
    for (int i = 0; i != 300; ++i)
        text += " }";
    text += " } }";
    const std::string error = error_of(text);
    EXPECT_NE(error.find("layout nested too deeply (more than 128 levels)"), std::string::npos)
        << error;
}

} // namespace
} // namespace vorlen
