// Layout scripts solved as boxes: the common layout arguments, and the reports of small scripts.
// Every expected number is worked out by hand from the placement rules.

#include "layout/box_layout.hpp"
#include "layout/layout_attributes_reader.hpp"
#include "layout/layout_reader.hpp"

#include "core/stream_error.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace vorlen {
namespace {

using ::testing::HasSubstr;

widget_description_t view_of(const std::string& text) {
    return parse_layout_script(text, name_t("box.tss")).view;
}

/// The report of a script's view solved at its natural size, or at the size given.
std::string solved(const std::string& text, std::int32_t width = 0, std::int32_t height = 0) {
    box_layout_t layout(view_of(text));
    layout.solve(width, height);
    return layout.report();
}

layout_attributes_t attributes_of(const std::string& widget) {
    return layout_attributes_of(view_of("layout A { view " + widget + " }"));
}

/// The text of the first failure of `f`, with its place when it has one.
template <typename F>
std::string error_of(F f) {
    try {
        f();
    } catch (const std::exception& error) {
        return format_stream_error(error);
    }
    return "no error";
}

TEST(LayoutAttributes, ContainersSetThePlacement) {
    const std::pair<const char*, placement_t> rows[] = {
        {"row()", placement_t::row},
        {"column()", placement_t::column},
        {"overlay()", placement_t::overlay},
        {"group(name: 'G')", placement_t::column},
        {"tab_group()", placement_t::overlay},
        {"static_text()", placement_t::leaf},
        {"radiogroup(placement: @place_row)", placement_t::row},
        {"subview(placement: @place_overlay)", placement_t::overlay}};
    for (const auto& [widget, placement] : rows)
        EXPECT_EQ(attributes_of(widget).placement, placement) << widget;
    EXPECT_FALSE(attributes_of("row()").create);
    EXPECT_TRUE(attributes_of("group(name: 'G')").create);

    EXPECT_TRUE(is_layout_container(view_of("layout A { view row(); }")));
    EXPECT_TRUE(is_layout_container(view_of("layout A { view wex_thing() { } }")));
    EXPECT_FALSE(is_layout_container(view_of("layout A { view wex_thing(); }")));
}

TEST(LayoutAttributes, AlignmentNames) {
    const layout_attributes_t a = attributes_of(
        "row(horizontal: @align_right, vertical: @align_fill, child_horizontal: @align_center, "
        "child_vertical: @align_bottom)");
    EXPECT_EQ(a.axis[0].alignment, alignment_t::reverse);
    EXPECT_EQ(a.axis[1].alignment, alignment_t::forward_fill);
    EXPECT_EQ(a.axis[0].child_alignment, alignment_t::center);
    EXPECT_EQ(a.axis[1].child_alignment, alignment_t::reverse);

    const std::pair<const char*, alignment_t> horizontal[] = {
        {"knob(horizontal: @align_proportional)", alignment_t::proportional},
        {"knob(horizontal: @align_left)", alignment_t::forward},
        {"knob(horizontal: @align_reverse_fill)", alignment_t::reverse_fill},
        {"knob()", alignment_t::default_}};
    for (const auto& [widget, alignment] : horizontal)
        EXPECT_EQ(attributes_of(widget).axis[0].alignment, alignment) << widget;
    EXPECT_EQ(attributes_of("knob(vertical: @align_top)").axis[1].alignment, alignment_t::forward);
    EXPECT_EQ(attributes_of("knob(vertical: @align_default)").axis[1].alignment,
              alignment_t::default_);
}

TEST(LayoutAttributes, MarginSpacingIndentSizeAndGuideMask) {
    // The margin as one number or four: left, top, right, bottom; zero in either form is none.
    EXPECT_EQ(attributes_of("row(margin: 0)"), attributes_of("row()"));
    EXPECT_EQ(attributes_of("row(margin: [0, 0, 0, 0])"), attributes_of("row()"));
    const layout_attributes_t all = attributes_of("row(margin: 6)");
    EXPECT_EQ(all.axis[0].margin, length_pair_t(6, 6));
    EXPECT_EQ(all.axis[1].margin, length_pair_t(6, 6));
    const layout_attributes_t four = attributes_of("row(margin: [1, 2, 3, 4])");
    EXPECT_EQ(four.axis[0].margin, length_pair_t(1, 3));
    EXPECT_EQ(four.axis[1].margin, length_pair_t(2, 4));

    // Entry i is the gap before child i; the first child has none before it.
    EXPECT_EQ(attributes_of("row(spacing: 8)").spacing, std::vector<std::int32_t>({0, 8}));
    EXPECT_EQ(attributes_of("row(spacing: [2, 4])").spacing, std::vector<std::int32_t>({0, 2, 4}));
    EXPECT_TRUE(attributes_of("row()").spacing.empty());

    const layout_attributes_t a =
        attributes_of("knob(indent: 12.9, width: 30, height: 40, guide_mask: [@guide_label])");
    EXPECT_EQ(a.indent, 12); // truncated, as all the engine's integers
    EXPECT_EQ(a.width(), 30);
    EXPECT_EQ(a.height(), 40);
    EXPECT_TRUE(a.axis[0].suppress);
    EXPECT_FALSE(a.axis[1].suppress);
    EXPECT_TRUE(attributes_of("knob(guide_mask: @guide_baseline)").axis[1].suppress);
    EXPECT_FALSE(attributes_of("knob(guide_mask: [ ])").axis[0].suppress);
}

TEST(LayoutAttributes, WrongValuesNameTheArgumentAndTheWidget) {
    const std::pair<const char*, const char*> rows[] = {
        {"knob(horizontal: 3)",
         "horizontal: expected an alignment such as @align_left, found number"},
        {"knob(vertical: @align_sideways)", "vertical: unknown alignment @align_sideways"},
        {"row(margin: [1, 2, 3])",
         "margin: expected a number or an array of four numbers, found array"},
        {"row(spacing: 'wide')", "spacing: expected a number or an array of numbers, found string"},
        {"row(width: 1e20)", "width: 1e+20 is out of range"},
        {"row(placement: @place_diagonal)", "placement: unknown placement @place_diagonal"},
        {"row(guide_mask: [@guide_top])", "guide_mask: unknown guide @guide_top"}};
    for (const auto& row : rows)
        EXPECT_EQ(error_of([&] { attributes_of(row.first); }),
                  std::string("box.tss:1:17: ") + row.second);
    // Solving reports the widget's place too.
    EXPECT_EQ(error_of([] {
                  box_layout_t(view_of("layout E {\nview column() {\n  knob(width: 'wide');\n} }"));
              }),
              "box.tss:3:3: width: expected a number, found string");
}

TEST(BoxLayout, ReportOfARowInAGroup) {
    EXPECT_EQ(solved("layout R {\n"
                     "view group(name: 'G', margin: [1, 2, 3, 4]) {\n"
                     "    row(spacing: 5, child_vertical: @align_center) {\n"
                     "        static_text(width: 40, height: 10);\n"
                     "        knob(width: 20, height: 30)\n"
                     "    }\n"
                     "}\n"
                     "}\n"),
              // Row: 40 + 5 + 20 = 65 by 30; the text centred: (30 - 10) / 2 = 10 down.
              // Group: 1 + 65 + 3 = 69 by 2 + 30 + 4 = 36, the row at (1, 2).
              "group(left: 0, top: 0, width: 69, height: 36, horizontal: forward, vertical: "
              "forward, placement: column) {\n"
              "    row(left: 1, top: 2, width: 65, height: 30, horizontal: forward, vertical: "
              "forward, placement: row) {\n"
              "        static_text(left: 1, top: 12, width: 40, height: 10, horizontal: "
              "forward, vertical: center, placement: leaf);\n"
              "        knob(left: 46, top: 2, width: 20, height: 30, horizontal: forward, "
              "vertical: center, placement: leaf);\n"
              "    }\n"
              "}\n");
}

TEST(BoxLayout, FillsShareTheSpareWidthAndReversedItemsGoToTheFarEdge) {
    // Spare 101 - 50 = 51: the first fill 25, the second 26.
    const std::string fills = solved("layout F { view row() {\n"
                                     "    knob(width: 10, height: 5, horizontal: @align_fill);\n"
                                     "    knob(width: 30, height: 5);\n"
                                     "    knob(width: 10, height: 5, horizontal: @align_fill)\n"
                                     "} }",
                                     101);
    EXPECT_THAT(fills, HasSubstr("knob(left: 0, top: 0, width: 35,"));
    EXPECT_THAT(fills, HasSubstr("knob(left: 35, top: 0, width: 30,"));
    EXPECT_THAT(fills, HasSubstr("knob(left: 65, top: 0, width: 36,"));

    EXPECT_THAT(solved("layout R { view row(spacing: 4) {\n"
                       "    knob(width: 10, height: 5);\n"
                       "    button(width: 20, height: 5, horizontal: @align_right)\n"
                       "} }",
                       100),
                HasSubstr("button(left: 80, top: 0, width: 20"));
}

TEST(BoxLayout, CenteredColumnAndRequestedSize) {
    const std::string report =
        solved("layout C { view column(child_horizontal: @align_center, spacing: [3]) {\n"
               "    separator(width: 50, height: 2);\n"
               "    knob(width: 21, height: 20);\n"
               "    button(width: 30, height: 10, horizontal: @align_left, indent: 6);\n"
               "} }");
    // Width 50: the knob at (50 - 21) / 2 = 14, the button at its indent; tops 0, 5, 28.
    EXPECT_THAT(report, HasSubstr("column(left: 0, top: 0, width: 50, height: 38"));
    EXPECT_THAT(report,
                HasSubstr("knob(left: 14, top: 5, width: 21, height: 20, horizontal: center"));
    EXPECT_THAT(report,
                HasSubstr("button(left: 6, top: 28, width: 30, height: 10, horizontal: forward"));
    // At a requested 200 by 100 the knob moves to (200 - 21) / 2 = 89.
    EXPECT_THAT(solved("layout C { view column(child_horizontal: @align_center) {\n"
                       "    knob(width: 21, height: 20) } }",
                       200, 100),
                HasSubstr("knob(left: 89, top: 0"));
}

} // namespace
} // namespace vorlen
