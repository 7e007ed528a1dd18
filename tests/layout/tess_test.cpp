// The two-pass solver on trees built by hand. Expected numbers follow from the placement rules
// by hand; the comments show the arithmetic.

#include "layout/placeable.hpp"
#include "layout/tess.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vorlen {
namespace {

using it_t = tess_t::iterator;
using xy_t = std::pair<std::int32_t, std::int32_t>;

extents_t size_of(std::int32_t width, std::int32_t height) {
    extents_t e;
    e.width() = width;
    e.height() = height;
    return e;
}

/// A placeable of fixed extents that remembers where it was put.
class box_t : public placeable_t {
public:
    box_t(std::string name, extents_t extents) : name_m(std::move(name)), extents_m(extents) {}

    void measure(extents_t& result) override { result = extents_m; }
    void place(const place_data_t& place) override {
        placed_m = place;
        ++place_count_m;
    }
    std::string type_name() const override { return name_m; }

    const place_data_t& placed() const { return placed_m; }
    int place_count() const { return place_count_m; }

private:
    std::string name_m;
    extents_t extents_m;
    place_data_t placed_m;
    int place_count_m = 0;
};

/// Text that wraps: it covers a fixed area, so its height follows the width it is given.
class wrap_t : public poly_placeable_twopass {
public:
    wrap_t(std::int32_t natural_width, std::int32_t area) : width_m(natural_width), area_m(area) {}

    void measure(extents_t& result) override { result = size_of(width_m, height_for(width_m)); }
    void measure_vertical(extents_t& calculated, const place_data_t& place) override {
        given_width_m = calculated.width();
        given_place_width_m = place.width();
        calculated.height() = height_for(calculated.width());
    }
    void place(const place_data_t& place) override { placed_m = place; }
    std::string type_name() const override { return "wrap"; }

    std::int32_t given_width_m = -1;
    std::int32_t given_place_width_m = -1;
    place_data_t placed_m;

private:
    std::int32_t height_for(std::int32_t width) const {
        return width > 0 ? (area_m + width - 1) / width : area_m;
    }
    std::int32_t width_m;
    std::int32_t area_m;
};

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
    /// A row or column root and one leaf per width, all of height 1, with the attributes given.
    std::vector<it_t> line(placement_t placement,
                           std::vector<std::pair<std::int32_t, layout_attributes_t>> leaves) {
        const it_t root = add_container(it_t(), "root", container(placement));
        std::vector<it_t> result;
        for (const auto& [width, attributes] : leaves)
            result.push_back(add(root, "leaf", size_of(width, 1), attributes));
        return result;
    }
    const place_data_t& at(it_t node) const { return tess.place_data(node); }
    xy_t xy(it_t node) const { return {at(node).left(), at(node).top()}; }
    /// Left edge and width.
    xy_t span(it_t node) const { return {at(node).left(), at(node).width()}; }
};

TEST(LayoutRecords, AlignmentAndPlacementTexts) {
    const std::pair<alignment_t, const char*> alignments[] = {
        {alignment_t::forward, "forward"},
        {alignment_t::reverse, "reverse"},
        {alignment_t::center, "center"},
        {alignment_t::proportional, "proportional"},
        {alignment_t::forward_fill, "forward_fill"},
        {alignment_t::reverse_fill, "reverse_fill"},
        {alignment_t::default_, "default"},
        {static_cast<alignment_t>(7), "invalid"},
        {static_cast<alignment_t>(-1), "invalid"}};
    for (const auto& [alignment, text] : alignments)
        EXPECT_STREQ(alignment_text(alignment), text);
    const std::pair<placement_t, const char*> placements[] = {
        {placement_t::leaf, "leaf"},
        {placement_t::column, "column"},
        {placement_t::row, "row"},
        {placement_t::overlay, "overlay"},
        {static_cast<placement_t>(4), "invalid"}};
    for (const auto& [placement, text] : placements)
        EXPECT_STREQ(placement_text(placement), text);
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
    for (const char* part : {"\n    row(left: 0", "\n        a(left: 0", "placement: row) {\n",
                             "placement: overlay) {\n    }\n}\n"})
        EXPECT_NE(report.find(part), std::string::npos) << part << " in " << report;
}

TEST(TessPlacement, ColumnMarginsSpacingAndFrames) {
    tree_t t;
    layout_attributes_t a = container(placement_t::column, {0, 4});
    a.axis[0].margin = {5, 6};
    a.axis[1].margin = {7, 8};
    it_t column = t.add_container(it_t(), "column", a);
    it_t x = t.add(column, "x", size_of(30, 20));
    it_t y = t.add(column, "y", size_of(40, 10));
    // width 5 + 40 + 6 = 51; height 7 + 20 + 4 + 10 + 8 = 49.
    EXPECT_EQ(t.tess.evaluate(true), std::make_pair(51, 49));
    EXPECT_EQ(t.xy(x), xy_t(5, 7));
    EXPECT_EQ(t.xy(y), xy_t(5, 31));

    // A frame reserves a strip inside the box: 4 + 20 + 4 = 28 by 16 + 10 + 4 = 30.
    tree_t f;
    extents_t group = size_of(0, 0);
    group.horizontal().frame = {4, 4};
    group.vertical().frame = {16, 4};
    it_t inside = f.add(f.add_container(it_t(), "group", container(placement_t::column), group),
                        "x", size_of(20, 10));
    EXPECT_EQ(f.tess.evaluate(true), std::make_pair(28, 30));
    EXPECT_EQ(f.xy(inside), xy_t(4, 16));
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
    EXPECT_EQ(t.xy(small), xy_t(15, 0));
    EXPECT_EQ(t.tess.attributes(small).axis[0].alignment, alignment_t::center);
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
    EXPECT_EQ(t.xy(group), xy_t(10, 20));
    // Inside the created group: positions relative to it; the plain rows pass theirs on.
    EXPECT_EQ(t.xy(a), xy_t(0, 0));
    EXPECT_EQ(t.xy(b), xy_t(3, 5));

    t.tess.evaluate(true);
    EXPECT_EQ(t.xy(a), xy_t(10, 20));
    EXPECT_EQ(t.xy(b), xy_t(13, 25));
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

TEST(TessPlacement, AbsurdLengthsSaturateInsteadOfOverflowing) {
    tree_t t;
    it_t row = t.add_container(it_t(), "row", container(placement_t::row));
    const std::int32_t huge = std::numeric_limits<std::int32_t>::max();
    for (int i = 0; i != 3; ++i)
        t.add(row, "huge", guided(huge, huge, {huge}, {huge}));
    // Every sum is held at 2^30, far beyond any screen, rather than wrapping negative.
    EXPECT_EQ(t.tess.evaluate(true), std::make_pair(1 << 30, 1 << 30));

    // A spacing of the largest int added to a place (undefined behaviour if summed in 32
    // bits): the second child lands at the far limit, after the first, never wrapped back.
    tree_t spaced;
    it_t wide = spaced.add_container(it_t(), "row", container(placement_t::row, {huge}));
    it_t a = spaced.add(wide, "a", size_of(0, 0));
    it_t b = spaced.add(wide, "b", size_of(1, 1));
    EXPECT_EQ(spaced.tess.evaluate(true).first, 1 << 30);
    EXPECT_EQ(spaced.at(b).left(), 1 << 30);
    EXPECT_GE(spaced.at(b).left(), spaced.at(a).left());
}

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

TEST(TessAlignment, MinorAxisCenterReverseIndentAndFills) {
    tree_t t;
    layout_attributes_t reverse = aligned(alignment_t::reverse);
    reverse.indent = 7;
    layout_attributes_t forward = aligned(alignment_t::forward);
    forward.indent = 7;
    const std::vector<it_t> items =
        t.line(placement_t::column, {{30, aligned(alignment_t::center)},
                                     {30, reverse},
                                     {30, forward},
                                     {30, aligned(alignment_t::forward_fill)},
                                     {30, aligned(alignment_t::reverse_fill)}});
    t.tess.evaluate(true, 101, 0);
    EXPECT_EQ(t.span(items[0]), xy_t(35, 30)); // (0 + 101 - 30) / 2 = 35.5, truncated
    EXPECT_EQ(t.span(items[1]), xy_t(64, 30)); // 101 - 7 - 30
    EXPECT_EQ(t.span(items[2]), xy_t(7, 30));
    EXPECT_EQ(t.span(items[3]), xy_t(0, 101));
    // A reverse fill takes the length but keeps the position of its minimum: 101 - 30.
    EXPECT_EQ(t.span(items[4]), xy_t(71, 101));
    // The indent counts toward the column's natural width: 7 + 30.
    EXPECT_EQ(t.tess.evaluate(true).first, 37);
}

TEST(TessAlignment, MajorAxisFillsReversesCentersAndProportions) {
    // Spare 126 - 25 = 101: the first fill takes 101 / 2 = 50, the second the other 51.
    tree_t fills;
    const std::vector<it_t> f =
        fills.line(placement_t::row, {{10, aligned(alignment_t::forward_fill)},
                                      {5, {}},
                                      {10, aligned(alignment_t::forward_fill)}});
    fills.tess.evaluate(true, 126, 0);
    EXPECT_EQ(fills.span(f[0]), xy_t(0, 60));
    EXPECT_EQ(fills.span(f[1]), xy_t(60, 5));
    EXPECT_EQ(fills.span(f[2]), xy_t(65, 61));

    // Spare 100 - 80 = 20, all to p. Before it lie 30 of the free 100 - 20 - 20 = 60 pixels:
    // floor(30 / 60 * 20 + 0.5) = 10, so p sits at 30 + 10 and b after the share at 30 + 20 + 20.
    tree_t share;
    const std::vector<it_t> p = share.line(
        placement_t::row, {{30, {}}, {20, aligned(alignment_t::proportional)}, {30, {}}});
    share.tess.evaluate(true, 100, 0);
    EXPECT_EQ(share.at(p[0]).left(), 0);
    EXPECT_EQ(share.at(p[1]).left(), 40);
    EXPECT_EQ(share.at(p[2]).left(), 70);

    // Spare 101 - 60 = 41: c gets 20 and sits at 30 + 10; d gets 21 and sits at 70 + 10.
    tree_t centred;
    const std::vector<it_t> c = centred.line(
        placement_t::row,
        {{30, {}}, {20, aligned(alignment_t::center)}, {10, aligned(alignment_t::center)}});
    centred.tess.evaluate(true, 101, 0);
    EXPECT_EQ(centred.at(c[1]).left(), 40);
    EXPECT_EQ(centred.at(c[2]).left(), 80);

    // Proportional alone does not divide by zero.
    tree_t alone;
    const it_t lone = alone.line(placement_t::row, {{20, aligned(alignment_t::proportional)}})[0];
    alone.tess.evaluate(true, 100, 0);
    EXPECT_EQ(alone.span(lone), xy_t(0, 20));
}

TEST(TessAlignment, ReverseAfterForwardSitsAtTheFarEdgeAndNeverBefore) {
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
    EXPECT_EQ(t.span(last), xy_t(58, 38)); // 96 - 38
    EXPECT_EQ(t.at(right).left(), 25);     // 58 - 3 - 30

    tree_t wrong;
    wrong.line(placement_t::row,
               {{30, aligned(alignment_t::reverse)}, {20, aligned(alignment_t::forward)}});
    try {
        wrong.tess.evaluate(true);
        FAIL() << "expected a logic error";
    } catch (const std::logic_error& error) {
        EXPECT_STREQ(error.what(), "Right align item before other item.");
    }
}

TEST(TessOutset, EmptyContainerTakesItsOwnSliceOutset) {
    tree_t t;
    extents_t own = size_of(10, 10);
    own.horizontal().outset = {3, 4};
    own.vertical().outset = {1, 2};
    it_t row = t.add_container(it_t(), "row", container(placement_t::row), own);
    t.tess.set_visible(t.add(row, "hidden", size_of(5, 5)), false);
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
        EXPECT_EQ(t.span(t.labels[i]), xy_t(label_left[i], 50 - label_left[i]));
        EXPECT_EQ(t.xy(t.fields[i]), xy_t(55, row_top[i]));
        EXPECT_EQ(t.at(t.rows[i]).width(), 115);
        EXPECT_EQ(t.at(t.rows[i]).top(), row_top[i]);
        EXPECT_EQ(t.at(t.labels[i]).top(), row_top[i] + label_down[i]);
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

TEST(TessGuides, ReverseGuidesAlignAcrossRowsAndInAColumn) {
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

    // Reverse leaves in a column: from the far edge 30 and 5. The guide sits 30 from the right
    // of a column of width max(40, 30 + 30 - 5) = 55.
    tree_t leaves;
    it_t col = leaves.add_container(it_t(), "column", container(placement_t::column));
    it_t a = leaves.add(col, "a", guided(40, 10, {10}), aligned(alignment_t::reverse));
    it_t b = leaves.add(col, "b", guided(30, 10, {25}), aligned(alignment_t::reverse));
    EXPECT_EQ(leaves.tess.evaluate(true).first, 55);
    EXPECT_EQ(leaves.at(a).left() + 10, 25);
    EXPECT_EQ(leaves.at(b).left() + 25, 25);
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

TEST(TessTwoPass, HeightFollowsTheSolvedWidth) {
    tree_t t;
    it_t column = t.add_container(it_t(), "column", container(placement_t::column));
    t.add(column, "wide", size_of(100, 10));
    auto wrap = std::make_shared<wrap_t>(40, 1200);
    it_t w = t.tess.add_placeable(column, aligned(alignment_t::forward_fill), false, wrap);

    // Filled to the column's 100: 1200 / 100 = 12 high, not the first pass's 1200 / 40 = 30.
    EXPECT_EQ(t.tess.evaluate(true), std::make_pair(100, 22));
    EXPECT_EQ(wrap->given_width_m, 100);
    EXPECT_EQ(wrap->given_place_width_m, 100);
    EXPECT_EQ(t.at(w).height(), 12);
    EXPECT_EQ(wrap->placed_m.top(), 10);

    // Narrower: 1200 / 150 = 8.
    EXPECT_EQ(t.tess.evaluate(true, 150, 0), std::make_pair(150, 18));
    EXPECT_EQ(wrap->given_width_m, 150);

    // A single-pass placeable keeps its first vertical slice.
    tree_t single;
    it_t b = single.add(single.add_container(it_t(), "column", container(placement_t::column)), "b",
                        size_of(40, 30), aligned(alignment_t::forward_fill));
    EXPECT_EQ(single.tess.evaluate(true, 400, 0), std::make_pair(400, 30));
    EXPECT_EQ(single.at(b).height(), 30);
}

} // namespace
} // namespace vorlen
