// The two-pass solver on trees built by hand. Expected numbers follow from the placement rules
// by hand; the comments show the arithmetic.

#include "layout/tess.hpp"
#include "layout/test_boxes.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorlen {
namespace {

using testing::box_t;
using testing::size_of;
using testing::wrap_t;

using it_t = tess_t::iterator;

layout_attributes_t container(placement_t placement, std::vector<std::int32_t> spacing = {},
                              bool create = false) {
    layout_attributes_t a;
    a.placement = placement;
    a.spacing = std::move(spacing);
    a.create = create;
    return a;
}

layout_attributes_t aligned(alignment_t horizontal, alignment_t vertical = alignment_t::default_) {
    layout_attributes_t a;
    a.axis[0].alignment = horizontal;
    a.axis[1].alignment = vertical;
    return a;
}

extents_t guided(std::int32_t width, std::int32_t height, guide_set_t horizontal,
                 guide_set_t vertical = {}) {
    extents_t e = size_of(width, height);
    e.horizontal().guide_set = std::move(horizontal);
    e.vertical().guide_set = std::move(vertical);
    return e;
}

/// A tess with its boxes kept at hand.
struct tree_t {
    tess_t tess;
    std::vector<std::shared_ptr<box_t>> boxes;

    it_t add(it_t parent, const std::string& name, const extents_t& extents,
             const layout_attributes_t& attributes = {}, bool is_container = false) {
        boxes.push_back(std::make_shared<box_t>(name, extents));
        return tess.add_placeable(parent, attributes, is_container, boxes.back());
    }
    it_t add_container(it_t parent, const std::string& name, const layout_attributes_t& attributes,
                       const extents_t& extents = {}) {
        return add(parent, name, extents, attributes, true);
    }
    const place_data_t& at(it_t node) const { return tess.place_data(node); }
};

// ---------------------------------------------------------------------------------------------
// Records and texts

TEST(LayoutRecords, AlignmentAndPlacementTexts) {
    EXPECT_STREQ(alignment_text(alignment_t::forward), "forward");
    EXPECT_STREQ(alignment_text(alignment_t::reverse), "reverse");
    EXPECT_STREQ(alignment_text(alignment_t::center), "center");
    EXPECT_STREQ(alignment_text(alignment_t::proportional), "proportional");
    EXPECT_STREQ(alignment_text(alignment_t::forward_fill), "forward_fill");
    EXPECT_STREQ(alignment_text(alignment_t::reverse_fill), "reverse_fill");
    EXPECT_STREQ(alignment_text(alignment_t::default_), "default");
    EXPECT_STREQ(alignment_text(static_cast<alignment_t>(7)), "invalid");
    EXPECT_STREQ(alignment_text(static_cast<alignment_t>(-1)), "invalid");

    EXPECT_STREQ(placement_text(placement_t::leaf), "leaf");
    EXPECT_STREQ(placement_text(placement_t::column), "column");
    EXPECT_STREQ(placement_text(placement_t::row), "row");
    EXPECT_STREQ(placement_text(placement_t::overlay), "overlay");
    EXPECT_STREQ(placement_text(static_cast<placement_t>(4)), "invalid");
}

TEST(LayoutRecords, CompareFieldByField) {
    layout_attributes_t a;
    layout_attributes_t b;
    EXPECT_EQ(a, b);
    b.axis[1].margin.second = 1;
    EXPECT_NE(a, b);
    b = a;
    b.vertical().guide_set = {3};
    EXPECT_NE(a, b);
    EXPECT_NE(static_cast<const extents_t&>(a), static_cast<const extents_t&>(b));

    place_data_t p;
    place_data_t q;
    q.horizontal().outset.first = 2;
    EXPECT_NE(p, q);
}

TEST(LayoutRecords, ReportOfAnUnsolvedTreeShowsAnInvalidAlignment) {
    tree_t t;
    layout_attributes_t odd = aligned(static_cast<alignment_t>(9), alignment_t::center);
    odd.placement = static_cast<placement_t>(12);
    t.add(it_t(), "odd", size_of(1, 2), odd);
    EXPECT_EQ(t.tess.report(), "odd(left: 0, top: 0, width: 0, height: 0, horizontal: invalid, "
                               "vertical: center, placement: invalid);\n");
}

// ---------------------------------------------------------------------------------------------
// Construction

TEST(TessTree, OneRootOnlyContainersTakeChildrenAndPlaceablesAreRequired) {
    tree_t t;
    it_t root = t.add_container(it_t(), "row", container(placement_t::row));
    it_t leaf = t.add(root, "a", size_of(1, 1));
    EXPECT_THROW(t.add(it_t(), "second root", size_of(1, 1)), std::logic_error);
    EXPECT_THROW(t.add(leaf, "under a leaf", size_of(1, 1)), std::logic_error);
    EXPECT_THROW(t.tess.add_placeable(root, {}, false, nullptr), std::invalid_argument);
    EXPECT_EQ(t.tess.size(), 2u);
    t.tess.clear();
    EXPECT_TRUE(t.tess.empty());
    EXPECT_EQ(t.tess.evaluate(true), std::make_pair(0, 0));
}

// ---------------------------------------------------------------------------------------------
// Rows, columns, overlays

TEST(TessPlacement, RowReportWithSpacingAndDefaultAlignments) {
    tree_t t;
    // spacing [0, 10]: nothing before the first child, 10 before each later one.
    it_t row = t.add_container(it_t(), "row", container(placement_t::row, {0, 10}));
    t.add(row, "a", size_of(30, 20));
    t.add(row, "b", size_of(40, 10));
    t.add(row, "c", size_of(5, 5));
    // width 30 + 10 + 40 + 10 + 5 = 95; height max(20, 10, 5) = 20.
    EXPECT_EQ(t.tess.evaluate(true), std::make_pair(95, 20));
    EXPECT_EQ(t.tess.report(),
              "row(left: 0, top: 0, width: 95, height: 20, horizontal: forward, vertical: forward, "
              "placement: row) {\n"
              "    a(left: 0, top: 0, width: 30, height: 20, horizontal: forward, vertical: "
              "forward, placement: leaf);\n"
              "    b(left: 40, top: 0, width: 40, height: 10, horizontal: forward, vertical: "
              "forward, placement: leaf);\n"
              "    c(left: 90, top: 0, width: 5, height: 5, horizontal: forward, vertical: "
              "forward, placement: leaf);\n"
              "}\n");
}

TEST(TessPlacement, NestedReportIndentsByFourPerDepth) {
    tree_t t;
    it_t column = t.add_container(it_t(), "column", container(placement_t::column));
    it_t row = t.add_container(column, "row", container(placement_t::row));
    t.add(row, "a", size_of(1, 1));
    t.add_container(column, "empty", container(placement_t::overlay));
    t.tess.evaluate(true);
    const std::string report = t.tess.report();
    EXPECT_NE(report.find("\n    row(left: 0"), std::string::npos) << report;
    EXPECT_NE(report.find("\n        a(left: 0"), std::string::npos) << report;
    EXPECT_NE(report.find("placement: row) {\n"), std::string::npos) << report;
    EXPECT_NE(report.find("placement: overlay) {\n    }\n}\n"), std::string::npos) << report;
}

TEST(TessPlacement, ColumnMarginsAndSpacing) {
    tree_t t;
    layout_attributes_t a = container(placement_t::column, {0, 4});
    a.axis[0].margin = {5, 6};
    a.axis[1].margin = {7, 8};
    it_t column = t.add_container(it_t(), "column", a);
    it_t x = t.add(column, "x", size_of(30, 20));
    it_t y = t.add(column, "y", size_of(40, 10));
    // width 5 + 40 + 6 = 51; height 7 + 20 + 4 + 10 + 8 = 49.
    EXPECT_EQ(t.tess.evaluate(true), std::make_pair(51, 49));
    EXPECT_EQ(t.at(x).left(), 5);
    EXPECT_EQ(t.at(x).top(), 7);
    EXPECT_EQ(t.at(y).left(), 5);
    EXPECT_EQ(t.at(y).top(), 31);
}

TEST(TessPlacement, OverlayStacksChildrenInOneFrame) {
    tree_t t;
    layout_attributes_t a = container(placement_t::overlay, {0, 50});
    a.axis[0].child_alignment = alignment_t::center;
    it_t overlay = t.add_container(it_t(), "overlay", a);
    it_t big = t.add(overlay, "big", size_of(40, 30));
    it_t small = t.add(overlay, "small", size_of(10, 10));
    // No major axis: spacing plays no part; width max(40, 10), centred: (0 + 40 - 10) / 2 = 15.
    EXPECT_EQ(t.tess.evaluate(true), std::make_pair(40, 30));
    EXPECT_EQ(t.at(big).left(), 0);
    EXPECT_EQ(t.at(small).left(), 15);
    EXPECT_EQ(t.at(small).top(), 0);
    EXPECT_EQ(t.tess.attributes(small).axis[0].alignment, alignment_t::center);
}

TEST(TessPlacement, FrameReservesAStripInsideTheBox) {
    tree_t t;
    extents_t group = size_of(0, 0);
    group.horizontal().frame = {4, 4};
    group.vertical().frame = {16, 4};
    it_t g = t.add_container(it_t(), "group", container(placement_t::column), group);
    it_t x = t.add(g, "x", size_of(20, 10));
    // 4 + 20 + 4 = 28 by 16 + 10 + 4 = 30.
    EXPECT_EQ(t.tess.evaluate(true), std::make_pair(28, 30));
    EXPECT_EQ(t.at(x).left(), 4);
    EXPECT_EQ(t.at(x).top(), 16);
}

TEST(TessPlacement, NaturalLengthOfAContainerIsAMinimum) {
    tree_t t;
    it_t row = t.add_container(it_t(), "row", container(placement_t::row), size_of(200, 50));
    t.add(row, "a", size_of(20, 10));
    EXPECT_EQ(t.tess.evaluate(true), std::make_pair(200, 50));
    // A requested size replaces the natural one, even when smaller.
    EXPECT_EQ(t.tess.evaluate(true, 300, 10), std::make_pair(300, 10));
}

TEST(TessPlacement, CreatedContainersKeepChildrenRelativeUnlessAbsolute) {
    tree_t t;
    layout_attributes_t root = container(placement_t::row);
    root.axis[0].margin = {10, 0};
    root.axis[1].margin = {20, 0};
    it_t r = t.add_container(it_t(), "root", root);
    it_t group = t.add_container(r, "group", container(placement_t::column, {}, true));
    it_t inner = t.add_container(group, "inner", container(placement_t::row));
    layout_attributes_t shifted = container(placement_t::row);
    shifted.axis[0].margin = {3, 0};
    it_t inner2 = t.add_container(group, "inner2", shifted);
    it_t a = t.add(inner, "a", size_of(5, 5));
    it_t b = t.add(inner2, "b", size_of(5, 5));

    t.tess.evaluate(false);
    EXPECT_EQ(t.at(group).left(), 10);
    EXPECT_EQ(t.at(group).top(), 20);
    // Inside the created group: positions relative to it; the plain rows pass theirs on.
    EXPECT_EQ(t.at(a).left(), 0);
    EXPECT_EQ(t.at(a).top(), 0);
    EXPECT_EQ(t.at(b).left(), 3);
    EXPECT_EQ(t.at(b).top(), 5);

    t.tess.evaluate(true);
    EXPECT_EQ(t.at(a).left(), 10);
    EXPECT_EQ(t.at(a).top(), 20);
    EXPECT_EQ(t.at(b).left(), 13);
    EXPECT_EQ(t.at(b).top(), 25);
    // The placeables received what the tree holds.
    EXPECT_EQ(t.boxes[4]->placed(), t.at(a));
}

TEST(TessPlacement, InvisibleSubtreesAreSkipped) {
    tree_t t;
    it_t row = t.add_container(it_t(), "row", container(placement_t::row, {0, 10}));
    t.add(row, "a", size_of(30, 20));
    it_t hidden = t.add_container(row, "hidden", container(placement_t::column));
    t.add(hidden, "deep", size_of(500, 500));
    it_t c = t.add(row, "c", size_of(5, 5));
    t.tess.set_visible(hidden, false);
    EXPECT_FALSE(t.tess.visible(hidden));
    // a, c: 30 + 10 + 5.
    EXPECT_EQ(t.tess.evaluate(true), std::make_pair(45, 20));
    EXPECT_EQ(t.at(c).left(), 40);
    EXPECT_EQ(t.boxes[3]->place_count(), 0);
    EXPECT_EQ(t.tess.report().find("deep"), std::string::npos);

    t.tess.set_visible(hidden, true);
    EXPECT_EQ(t.tess.evaluate(true), std::make_pair(30 + 10 + 500 + 10 + 5, 500));
}

// ---------------------------------------------------------------------------------------------
// Alignments

TEST(TessAlignment, DefaultResolvesToTheParentsChildAlignment) {
    tree_t t;
    layout_attributes_t a = container(placement_t::column);
    a.axis[0].child_alignment = alignment_t::reverse;
    it_t column = t.add_container(it_t(), "column", a);
    it_t wide = t.add(column, "wide", size_of(50, 10));
    it_t narrow = t.add(column, "narrow", size_of(20, 10));
    it_t own = t.add(column, "own", size_of(20, 10), aligned(alignment_t::forward));
    t.tess.evaluate(true);
    EXPECT_EQ(t.tess.attributes(column).axis[0].alignment, alignment_t::forward); // the root
    EXPECT_EQ(t.tess.attributes(narrow).axis[0].alignment, alignment_t::reverse);
    EXPECT_EQ(t.tess.attributes(narrow).axis[1].alignment, alignment_t::forward);
    EXPECT_EQ(t.at(wide).left(), 0);
    EXPECT_EQ(t.at(narrow).left(), 30);
    EXPECT_EQ(t.at(own).left(), 0);
    EXPECT_EQ(t.tess.report().find("default"), std::string::npos);
}

TEST(TessAlignment, MinorAxisCenterReverseAndIndent) {
    tree_t t;
    it_t column = t.add_container(it_t(), "column", container(placement_t::column));
    it_t centered = t.add(column, "c", size_of(30, 1), aligned(alignment_t::center));
    layout_attributes_t r = aligned(alignment_t::reverse);
    r.indent = 7;
    it_t reversed = t.add(column, "r", size_of(30, 1), r);
    layout_attributes_t f = aligned(alignment_t::forward);
    f.indent = 7;
    it_t indented = t.add(column, "f", size_of(30, 1), f);
    it_t filled = t.add(column, "fill", size_of(30, 1), aligned(alignment_t::forward_fill));

    t.tess.evaluate(true, 101, 0);
    EXPECT_EQ(t.at(centered).left(), 35); // (0 + 101 - 30) / 2 = 35.5, truncated
    EXPECT_EQ(t.at(reversed).left(), 64); // 101 - 7 - 30
    EXPECT_EQ(t.at(indented).left(), 7);
    EXPECT_EQ(t.at(filled).left(), 0);
    EXPECT_EQ(t.at(filled).width(), 101);
    // The indent counts toward the column's natural width: 7 + 30.
    EXPECT_EQ(t.tess.evaluate(true).first, 37);
}

TEST(TessAlignment, MinorReverseFillTakesTheLengthButKeepsThePositionOfItsMinimum) {
    tree_t t;
    it_t column = t.add_container(it_t(), "column", container(placement_t::column));
    it_t item = t.add(column, "item", size_of(30, 1), aligned(alignment_t::reverse_fill));
    t.tess.evaluate(true, 100, 0);
    EXPECT_EQ(t.at(item).width(), 100);
    EXPECT_EQ(t.at(item).left(), 70);
}

TEST(TessAlignment, TwoFillsShareTheSpareLength) {
    tree_t t;
    it_t row = t.add_container(it_t(), "row", container(placement_t::row));
    it_t first = t.add(row, "first", size_of(10, 1), aligned(alignment_t::forward_fill));
    it_t fixed = t.add(row, "fixed", size_of(5, 1));
    it_t second = t.add(row, "second", size_of(10, 1), aligned(alignment_t::forward_fill));
    // Spare 126 - 25 = 101: the first takes 101 / 2 = 50, the second the other 51.
    t.tess.evaluate(true, 126, 0);
    EXPECT_EQ(t.at(first).left(), 0);
    EXPECT_EQ(t.at(first).width(), 60);
    EXPECT_EQ(t.at(fixed).left(), 60);
    EXPECT_EQ(t.at(second).left(), 65);
    EXPECT_EQ(t.at(second).width(), 61);
}

TEST(TessAlignment, ReverseAfterForwardSitsAtTheFarEdge) {
    tree_t t;
    layout_attributes_t a = container(placement_t::row, {0, 3});
    a.axis[0].margin = {2, 4};
    it_t row = t.add_container(it_t(), "row", a);
    it_t left = t.add(row, "left", size_of(20, 1));
    it_t right = t.add(row, "right", size_of(30, 1), aligned(alignment_t::reverse));
    it_t last = t.add(row, "last", size_of(10, 1), aligned(alignment_t::reverse_fill));
    // far = 100 - 4 = 96. "last" takes the whole spare: 100 - (2 + 20 + 3 + 30 + 3 + 10 + 4) = 28.
    t.tess.evaluate(true, 100, 0);
    EXPECT_EQ(t.at(left).left(), 2);
    EXPECT_EQ(t.at(last).width(), 38);
    EXPECT_EQ(t.at(last).left(), 58);  // 96 - 38
    EXPECT_EQ(t.at(right).left(), 25); // 58 - 3 - 30
}

TEST(TessAlignment, ReverseBeforeForwardFails) {
    tree_t t;
    it_t row = t.add_container(it_t(), "row", container(placement_t::row));
    t.add(row, "right", size_of(30, 1), aligned(alignment_t::reverse));
    t.add(row, "left", size_of(20, 1), aligned(alignment_t::forward));
    try {
        t.tess.evaluate(true);
        FAIL() << "expected a logic error";
    } catch (const std::logic_error& error) {
        EXPECT_STREQ(error.what(), "Right align item before other item.");
    }
}

TEST(TessAlignment, CenterAndProportionalOnTheMajorAxis) {
    tree_t t;
    it_t row = t.add_container(it_t(), "row", container(placement_t::row));
    it_t a = t.add(row, "a", size_of(30, 1));
    it_t p = t.add(row, "p", size_of(20, 1), aligned(alignment_t::proportional));
    it_t b = t.add(row, "b", size_of(30, 1));
    // Spare 100 - 80 = 20, all to p. Before it lie 30 of the free 100 - 20 - 20 = 60 pixels:
    // floor(30 / 60 * 20 + 0.5) = 10, so p sits at 30 + 10 and b after the share at 30 + 20 + 20.
    t.tess.evaluate(true, 100, 0);
    EXPECT_EQ(t.at(p).left(), 40);
    EXPECT_EQ(t.at(b).left(), 70);
    EXPECT_EQ(t.at(a).left(), 0);

    tree_t u;
    it_t row2 = u.add_container(it_t(), "row", container(placement_t::row));
    u.add(row2, "a", size_of(30, 1));
    it_t c = u.add(row2, "c", size_of(20, 1), aligned(alignment_t::center));
    it_t d = u.add(row2, "d", size_of(10, 1), aligned(alignment_t::center));
    // Spare 101 - 60 = 41: c gets 20 and sits at 30 + 10; d gets 21 and sits at 70 + 10.
    u.tess.evaluate(true, 101, 0);
    EXPECT_EQ(u.at(c).left(), 40);
    EXPECT_EQ(u.at(d).left(), 80);
}

TEST(TessAlignment, ProportionalAloneDoesNotDivideByZero) {
    tree_t t;
    it_t row = t.add_container(it_t(), "row", container(placement_t::row));
    it_t p = t.add(row, "p", size_of(20, 1), aligned(alignment_t::proportional));
    t.tess.evaluate(true, 100, 0);
    EXPECT_EQ(t.at(p).left(), 0);
    EXPECT_EQ(t.at(p).width(), 20);
}

// ---------------------------------------------------------------------------------------------
// Outsets

TEST(TessOutset, EmptyContainerTakesItsOwnSliceOutset) {
    tree_t t;
    extents_t own = size_of(10, 10);
    own.horizontal().outset = {3, 4};
    own.vertical().outset = {1, 2};
    it_t row = t.add_container(it_t(), "row", container(placement_t::row), own);
    it_t hidden = t.add(row, "hidden", size_of(5, 5));
    t.tess.set_visible(hidden, false);
    t.tess.evaluate(true);
    EXPECT_EQ(t.at(row).horizontal().outset, length_pair_t(3, 4));
    EXPECT_EQ(t.at(row).vertical().outset, length_pair_t(1, 2));
}

TEST(TessOutset, ChildrenInkReachingPastTheEdgesWidensTheContainers) {
    tree_t t;
    layout_attributes_t a = container(placement_t::row, {0, 5});
    a.axis[0].margin = {1, 1};
    it_t row = t.add_container(it_t(), "row", a);
    extents_t first = size_of(10, 10);
    first.horizontal().outset = {3, 0};
    first.vertical().outset = {2, 0};
    extents_t last = size_of(10, 6);
    last.horizontal().outset = {0, 4};
    last.vertical().outset = {0, 9};
    t.add(row, "first", first);
    t.add(row, "last", last);
    t.tess.evaluate(true);
    // Major: 3 - 1 before, 4 - 1 after. Minor (the vertical, row of height 10): the first
    // child reaches 2 above the top; the second 9 below its bottom at 6, so 5 below the row.
    EXPECT_EQ(t.at(row).horizontal().outset, length_pair_t(2, 3));
    EXPECT_EQ(t.at(row).vertical().outset, length_pair_t(2, 5));
}

// ---------------------------------------------------------------------------------------------
// Guides

/// A column of rows, each a label whose right edge is its guide, then a field.
struct labelled_rows_t : tree_t {
    it_t column;
    std::vector<it_t> labels, fields, rows;

    labelled_rows_t(std::vector<std::int32_t> label_widths, std::vector<extents_t> field_extents) {
        column = add_container(it_t(), "column", container(placement_t::column, {0, 4}));
        for (std::size_t i = 0; i != label_widths.size(); ++i) {
            rows.push_back(add_container(column, "row", container(placement_t::row, {0, 5})));
            const std::int32_t w = label_widths[i];
            labels.push_back(add(rows.back(), "label", guided(w, 14, {w}, {11})));
            fields.push_back(add(rows.back(), "field", field_extents[i]));
        }
    }
};

TEST(TessGuides, LabelsAlignAcrossAColumnOfRows) {
    labelled_rows_t t({30, 50, 40}, {guided(60, 20, {}, {14}), guided(60, 24, {}, {17}),
                                     guided(60, 20, {}, {14})});
    // Horizontal: the column's guide is the widest label edge, 50; each label moves right by
    // 50 - its width and every field starts at 50 + 5. Width 50 + 5 + 60 = 115.
    // Vertical: in a row the baselines meet at the deeper one: 14 (rows 1 and 3), 17 (row 2);
    // the label sits 3 or 6 down. Row heights 20, 24, 20 with spacing 4: 20 + 4 + 24 + 4 + 20.
    EXPECT_EQ(t.tess.evaluate(true), std::make_pair(115, 72));
    const std::int32_t label_left[] = {20, 0, 10};
    const std::int32_t row_top[] = {0, 24, 52};
    const std::int32_t label_down[] = {3, 6, 3};
    for (std::size_t i = 0; i != 3; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(t.at(t.labels[i]).left(), label_left[i]);
        EXPECT_EQ(t.at(t.labels[i]).left() + t.at(t.labels[i]).width(), 50);
        EXPECT_EQ(t.at(t.fields[i]).left(), 55);
        EXPECT_EQ(t.at(t.rows[i]).width(), 115);
        EXPECT_EQ(t.at(t.rows[i]).top(), row_top[i]);
        EXPECT_EQ(t.at(t.labels[i]).top(), row_top[i] + label_down[i]);
        EXPECT_EQ(t.at(t.fields[i]).top(), row_top[i]);
        // Label and field baselines on one line.
        EXPECT_EQ(t.at(t.labels[i]).top() + 11,
                  t.at(t.fields[i]).top() + t.at(t.fields[i]).vertical().guide_set[0]);
    }
    // The column passes its guides on in its own place data: one label edge, three baselines.
    EXPECT_EQ(t.at(t.column).horizontal().guide_set, guide_set_t({50}));
    EXPECT_EQ(t.at(t.column).vertical().guide_set, guide_set_t({14, 41, 66}));
    EXPECT_LE(t.tess.guide_rounds().first, t.tess.size() + 1);
}

TEST(TessGuides, SuppressedAndCenteredItemsTakeNoPart) {
    labelled_rows_t t({30, 50}, {size_of(60, 20), size_of(60, 20)});
    t.tess.attributes(t.rows[1]).axis[0].suppress = true;
    t.tess.evaluate(true);
    EXPECT_EQ(t.at(t.labels[0]).left(), 0);
    EXPECT_EQ(t.at(t.labels[1]).left(), 0);

    labelled_rows_t u({30, 50}, {size_of(60, 20), size_of(60, 20)});
    u.tess.attributes(u.labels[1]).axis[0].alignment = alignment_t::center;
    u.tess.evaluate(true);
    EXPECT_EQ(u.at(u.labels[0]).left(), 0);
    EXPECT_TRUE(u.tess.attributes(u.labels[1]).axis[0].suppress);
}

TEST(TessGuides, ReverseGuidesAlignAcrossRowsWithMargins) {
    tree_t t;
    it_t column = t.add_container(it_t(), "column", container(placement_t::column));
    std::vector<it_t> ends;
    for (std::int32_t w : {30, 40}) {
        layout_attributes_t a = container(placement_t::row);
        a.axis[0].margin = {5, 5};
        a.axis[0].alignment = alignment_t::reverse;
        it_t row = t.add_container(column, "row", a);
        t.add(row, "start", size_of(50, 10));
        // A guide 20 from the near edge: 10 and 20 from the far edge.
        ends.push_back(t.add(row, "end", guided(w, 10, {20}), aligned(alignment_t::reverse)));
    }
    // The far guide lies max(10, 20) + 5 = 25 from each row's far edge: the rows are
    // 5 + 50 + 40 + 5 = 100 wide and the first end item stands 10 off the margin.
    EXPECT_EQ(t.tess.evaluate(true).first, 100);
    EXPECT_EQ(t.at(ends[0]).left(), 55);
    EXPECT_EQ(t.at(ends[1]).left(), 55);
    EXPECT_EQ(t.at(ends[0]).left() + 20, t.at(ends[1]).left() + 20);
}

TEST(TessGuides, ReverseLeavesInAColumnAlignTheirGuides) {
    tree_t t;
    it_t column = t.add_container(it_t(), "column", container(placement_t::column));
    it_t a = t.add(column, "a", guided(40, 10, {10}), aligned(alignment_t::reverse));
    it_t b = t.add(column, "b", guided(30, 10, {25}), aligned(alignment_t::reverse));
    // From the far edge: 30 and 5. The guide sits 30 from the right of a column of width
    // max(40, 30 + 30 - 5) = 55.
    EXPECT_EQ(t.tess.evaluate(true).first, 55);
    EXPECT_EQ(t.at(a).left() + 10, 25);
    EXPECT_EQ(t.at(b).left() + 25, 25);
}

TEST(TessGuides, BalanceRespacesGuidesEvenly) {
    tree_t t;
    layout_attributes_t a = container(placement_t::row);
    a.balance = true;
    it_t row = t.add_container(it_t(), "row", a);
    it_t l1 = t.add(row, "l1", guided(10, 1, {5}));
    it_t l2 = t.add(row, "l2", guided(30, 1, {5}));
    it_t l3 = t.add(row, "l3", guided(10, 1, {5}));
    // Guides at 5, 15, 45: the largest gap, 30, becomes every gap: 5, 35, 65.
    EXPECT_EQ(t.tess.evaluate(true).first, 70);
    EXPECT_EQ(t.at(l1).left(), 0);
    EXPECT_EQ(t.at(l2).left(), 30);
    EXPECT_EQ(t.at(l3).left(), 60);
    EXPECT_EQ(t.at(row).horizontal().guide_set, guide_set_t({5, 35, 65}));
}

TEST(TessGuides, AGuideSolveThatCannotSettleStopsAfterNodeCountPlusOneRounds) {
    // The balanced outer row spreads the column's second guide. The inner row, of which the
    // column shows only the first two guides, re-spaces all four to that gap and grows; the
    // column grows with it and pushes the outer row's last guide out, which widens the gap again.
    tree_t t;
    layout_attributes_t outer = container(placement_t::row);
    outer.balance = true;
    it_t root = t.add_container(it_t(), "outer", outer);
    it_t column = t.add_container(root, "column", container(placement_t::column));
    layout_attributes_t inner = container(placement_t::row);
    inner.balance = true;
    inner.axis[0].alignment = alignment_t::reverse_fill;
    it_t row = t.add_container(column, "inner", inner);
    t.add(row, "a", guided(20, 10, {0, 10}));
    t.add(row, "b", guided(20, 10, {0, 10}));
    t.add(column, "c", guided(20, 10, {0, 10}));
    t.add(root, "d", guided(1, 10, {0}));

    const auto size = t.tess.evaluate(true);
    EXPECT_EQ(t.tess.guide_rounds().first, t.tess.size() + 1);
    EXPECT_EQ(t.tess.guide_rounds().second, 1u); // nothing to align vertically
    EXPECT_GT(size.first, 0);
    EXPECT_EQ(size.second, 20);

    // The same tree without the outer balance settles.
    t.tess.attributes(root).balance = false;
    t.tess.evaluate(true);
    EXPECT_LT(t.tess.guide_rounds().first, t.tess.size() + 1);
}

TEST(TessPlacement, AbsurdLengthsSaturateInsteadOfOverflowing) {
    tree_t t;
    it_t row = t.add_container(it_t(), "row", container(placement_t::row));
    const std::int32_t huge = std::numeric_limits<std::int32_t>::max();
    for (int i = 0; i != 3; ++i)
        t.add(row, "huge", guided(huge, huge, {huge}, {huge}));
    // Every sum is held at 2^30, far beyond any screen, rather than wrapping negative.
    const auto size = t.tess.evaluate(true);
    EXPECT_EQ(size.first, 1 << 30);
    EXPECT_EQ(size.second, 1 << 30);
}

// ---------------------------------------------------------------------------------------------
// The second pass

TEST(TessTwoPass, HeightFollowsTheSolvedWidth) {
    tess_t tess;
    it_t column = tess.add_placeable(it_t(), container(placement_t::column), true,
                                     std::make_shared<box_t>("column", extents_t()));
    auto wide = std::make_shared<box_t>("wide", size_of(100, 10));
    tess.add_placeable(column, {}, false, wide);
    auto wrap = std::make_shared<wrap_t>(40, 1200);
    it_t w = tess.add_placeable(column, aligned(alignment_t::forward_fill), false, wrap);

    // Filled to the column's 100: 1200 / 100 = 12 high, not the first pass's 1200 / 40 = 30.
    EXPECT_EQ(tess.evaluate(true), std::make_pair(100, 22));
    EXPECT_EQ(wrap->given_width(), 100);
    EXPECT_EQ(wrap->given_place_width(), 100);
    EXPECT_EQ(tess.place_data(w).height(), 12);
    EXPECT_EQ(wrap->placed().top(), 10);

    // Narrower: 1200 / 150 = 8.
    EXPECT_EQ(tess.evaluate(true, 150, 0), std::make_pair(150, 18));
    EXPECT_EQ(wrap->given_width(), 150);
}

TEST(TessTwoPass, ASinglePassPlaceableKeepsItsFirstVerticalSlice) {
    tree_t t;
    it_t column = t.add_container(it_t(), "column", container(placement_t::column));
    it_t b = t.add(column, "b", size_of(40, 30), aligned(alignment_t::forward_fill));
    EXPECT_EQ(t.tess.evaluate(true, 400, 0), std::make_pair(400, 30));
    EXPECT_EQ(t.at(b).height(), 30);
}

} // namespace
} // namespace vorlen
