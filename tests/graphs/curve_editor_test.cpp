// The curve editor's points: the list rules, hit testing, adding by click, and the rules of
// dragging (anchored ends, pull-off delete, neighbour holding and jumping, keyboard moves,
// cancel), all driven through a headless window with real pointer and key events.
#include "curve_editor_scene.hpp"

#include "platform/ui/keyboard_code.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <vector>

using namespace curve_editor_testing;
using qorui::KeyboardCode;
namespace ModifierKey = qorui::ModifierKey;

namespace {

TEST(CurveEditorTest, DefaultRulesLookAtTheSelectionAndListsAtTheIndex) {
    CurveScene s;
    CurveEditor& e = *s.editor;
    s.SetPoints({{0, 0}, {100, 50}, {200, 100}, {400, 200}});
    // The ends are anchors: with one of them selected nothing may die or slide sideways.
    for (int end : {0, 3}) {
        e.SetSelectedNode(end);
        EXPECT_FALSE(e.IsPointDeletable(2) || e.IsPointMoveable(2, true)) << end;
        EXPECT_TRUE(e.IsPointMoveable(2, false)) << end;
    }
    // With an inner point selected the answer is about the selection, even when asked for 0.
    e.SetSelectedNode(1);
    EXPECT_TRUE(e.IsPointDeletable(0) && e.IsPointMoveable(3, true));
    e.SetEnableDeletePoints(false);
    EXPECT_FALSE(e.IsPointDeletable(1));
    // Lists answer by index; past their end they take the list default.
    e.SetDeletablePoints({1, 0});
    EXPECT_TRUE(e.IsPointDeletable(0));
    EXPECT_FALSE(e.IsPointDeletable(1) || e.IsPointDeletable(2)); // 2: delete is off
    e.SetEnableDeletePoints(true);
    EXPECT_TRUE(e.IsPointDeletable(2));
    e.SetMoveablePoints({0, 1}, true);
    EXPECT_FALSE(e.IsPointMoveable(0, true));
    EXPECT_TRUE(e.IsPointMoveable(1, true) && e.IsPointMoveable(3, true));
    e.SetMoveablePoints({1, 0}, false);
    EXPECT_FALSE(e.IsPointMoveable(1, false));
    EXPECT_TRUE(e.IsPointMoveable(3, false));
    e.SetVisiblePoints({1, 0});
    EXPECT_EQ((std::vector{e.IsPointVisible(0), e.IsPointVisible(1), e.IsPointVisible(2)}),
              (std::vector{true, false, true}));
    // Colours past the two curves are black.
    EXPECT_EQ(e.GetCurveColor(2), qorcore::ColorRGBAFixed::Black);
    EXPECT_EQ(e.GetCurveColor(-1), qorcore::ColorRGBAFixed::Black);
    s.Forget();
    e.SetSelectedNode(9); // out of range selects none
    EXPECT_EQ(e.GetSelectedNode(), -1);
    EXPECT_EQ(s.selections, (std::vector<int>{-1}));
}

TEST(CurveEditorTest, SetCurvePointsKeepsTheOrderAndClearsAStaleSelection) {
    CurveScene s;
    EXPECT_EQ(CurvePoint(7, 1, 2), CurvePoint(7, 1, 2));
    EXPECT_FALSE(CurvePoint(7, 1, 2) == CurvePoint(8, 1, 2) ||
                 CurvePoint(7, 1, 2) == CurvePoint(7, 1, 3));
    s.SetPoints({{0, 0}, {100, 50}, {200, 100}, {400, 200}});
    s.editor->SetSelectedNode(1);
    s.SetPoints({{300, 0}, {100, 50}, {200, 10}}); // unsorted, stays so
    EXPECT_EQ(s.Points(), "300,0 100,50* 200,10");
    s.editor->SetSelectedNode(3); // past the end
    EXPECT_EQ(s.editor->GetSelectedNode(), -1);
    s.editor->SetSelectedNode(2);
    s.Forget();
    s.editor->SetCurvePoints({CurvePoint(1, 0, 0), CurvePoint(2, 10, 10)});
    EXPECT_EQ(s.editor->GetSelectedNode(), -1);
    EXPECT_EQ(s.selections, (std::vector<int>{-1}));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THROW(s.editor->SetCurvePoints({CurvePoint(1, 0, 0), CurvePoint(2, nan, 1)}),
                 std::invalid_argument);
    EXPECT_EQ(s.editor->GetCurvePoints().size(), 2u);
}

TEST(CurveEditorTest, HitTestingUsesTheDotBoxOrThePixelColumn) {
    CurveScene s;
    s.SetPoints({{100, 100}, {200, 50}});
    // Point 0 sits at local pixel (109, 109). With the dot its box runs from 104.5 to 113.5,
    // ends included; without it the point's pixel and the next one count, with `column`
    // anywhere in the column.
    const struct {
        float x, y;
        bool column, dot;
        int hit;
    } rows[] = {
        {113.5f, 109, false, true, 0},  {104.5f, 104.5f, false, true, 0},
        {113.6f, 109, false, true, -1}, {109, 114, false, true, -1},
        {109, 114, true, true, 0},      {109, 0, true, false, 0},
        {110, 300, true, false, 0},     {111, 109, true, false, -1},
        {108.5f, 109, true, false, -1}, {110, 110, false, false, 0},
        {110, 111, false, false, -1},
    };
    for (const auto& r : rows)
        EXPECT_EQ(s.Hit({r.x, r.y}, r.column, r.dot), r.hit) << r.x << "," << r.y << r.column;
    // Hidden points and points outside the current range are never hit.
    s.editor->SetVisiblePoints({0});
    EXPECT_EQ(s.Hit({109, 109}, false, true), -1);
    EXPECT_EQ(s.Hit({209, 159}, false, true), 1);
    s.editor->SetVisiblePoints({});
    s.editor->SetCurrentRange(0, 400, 200, 60); // point 1 (v 50) drops out of view
    EXPECT_EQ(s.Hit(s.editor->GetPixelForCoordinatePair({200, 50}), false, true), -1);

    EXPECT_TRUE(s.editor->HasHorizontalPoint(100.5, 1.0));
    EXPECT_FALSE(s.editor->HasHorizontalPoint(101, 1.0)); // strictly closer than the tolerance
    EXPECT_EQ(CurveEditor::GetDotRect({10, 20}), (RectT<float>{7.5f, 17.5f, 5, 5}));
}

TEST(CurveEditorTest, ClicksAddPointsOnlyBelowTheMaximumAndNotInAPointsColumn) {
    CurveScene s;
    s.ClickAt(300, 150);
    s.ClickAt(50, 60);
    s.ClickAt(150, 20);
    EXPECT_EQ(s.Points(), "50,60 150,20* 300,150"); // the last one added is selected
    // Each click is one gesture: begin at the press, the release's move and the finish.
    EXPECT_EQ(s.changes, (std::vector<int>{0, 1, 2, 0, 1, 2, 0, 1, 2}));
    std::vector<std::uint32_t> ids;
    for (const CurvePoint& point : s.editor->GetCurvePoints()) {
        EXPECT_GE(point.id, CurveEditor::kFirstPointId);
        EXPECT_EQ(std::count(ids.begin(), ids.end(), point.id), 0);
        ids.push_back(point.id);
    }
    // A fourth click finds the editor full: no point, no selection, an empty gesture.
    s.Forget();
    s.ClickAt(250, 100);
    EXPECT_EQ(s.Points(), "50,60 150,20 300,150");
    EXPECT_EQ(s.changes, (std::vector<int>{0, 2}));
    s.editor->SetMaxPointCount(4);
    s.ClickAt(250, 100);
    EXPECT_EQ(s.Horizontal(), (Values{50, 150, 250, 300}));

    s.SetPoints({{100, 100}});
    s.ClickAt(100, 20); // the point's own column
    s.ClickAt(101, 20); // the column next to it still counts
    s.window.AdvanceTime(1);
    EXPECT_TRUE(s.window.Click(16, 250)) << "the border around the content is handled";
    s.window.AdvanceTime(1);
    EXPECT_FALSE(s.window.Click(200, 375)) << "the ruler below is not (rulers don't zoom here)";
    EXPECT_EQ(s.Points(), "100,100");
    s.ClickAt(102, 20);
    EXPECT_EQ(s.Horizontal(), (Values{100, 102}));
}

TEST(CurveEditorTest, DraggingAnEndMovesItOnlyVertically) {
    CurveScene s;
    s.SetPoints({{0, 100}, {200, 100}, {400, 100}});
    s.Press(0, 100);
    s.MoveTo(60, 150);
    EXPECT_EQ(s.window.GetCursor(), CurveEditor::kCursorMovePoint);
    EXPECT_EQ(s.Points(), "0,150* 200,100 400,100");
    s.MoveTo(300, 170);
    s.Release(300, 170);
    EXPECT_EQ(s.Points(), "0,170* 200,100 400,100");
    EXPECT_EQ(s.changes, (std::vector<int>{0, 1, 1, 1, 2}));
    s.Drag(400, 100, 250, 20);
    EXPECT_EQ(s.Points(), "0,170 200,100 400,20*");
}

TEST(CurveEditorTest, PullingAPointFarOffTheContentDeletesIt) {
    CurveScene s;
    s.SetPoints({{0, 100}, {200, 100}, {400, 100}});
    // The content's top is at window y 159: 100 pixels above holds the point at the top value.
    s.Press(200, 100);
    s.window.MouseMove(219, 59);
    EXPECT_EQ(s.Points(), "0,100 200,200* 400,100");
    ASSERT_NE(CurveScene::Capture(), nullptr);
    EXPECT_EQ(CurveScene::Capture()->GetIndex(), 1);
    s.window.MouseMove(219, 58); // 101 pixels above
    EXPECT_EQ(s.Points(), "0,100 400,100");
    EXPECT_EQ(s.selections.back(), -1);
    ASSERT_NE(CurveScene::Capture(), nullptr);
    EXPECT_EQ(CurveScene::Capture()->GetIndex(), -1);
    // The gesture lives on without a point: coming back changes nothing.
    s.MoveTo(200, 100);
    s.Release(200, 100);
    EXPECT_EQ(s.Points(), "0,100 400,100");
    EXPECT_EQ(s.changes.back(), 2);

    // Below: the bottom is at 359, so 459 keeps the point and 460 deletes it.
    s.SetPoints({{0, 100}, {200, 100}, {400, 100}});
    s.Press(200, 100);
    s.window.MouseMove(219, 459);
    EXPECT_EQ(s.Points(), "0,100 200,0* 400,100");
    s.window.MouseMove(219, 460);
    s.window.MouseUp(219, 460);
    EXPECT_EQ(s.Points(), "0,100 400,100");

    // Sideways far off, the point stops at the edge; an end can't be pulled off at all.
    s.SetPoints({{0, 100}, {200, 100}, {400, 100}});
    for (const auto& [h, x, y] : {std::tuple{200.0, -200.0f, 259.0f}, {0.0, 19.0f, 0.0f}}) {
        s.Press(h, 100);
        s.window.MouseMove(x, y);
        s.window.MouseUp(x, y);
    }
    EXPECT_EQ(s.Points(), "0,200* 1,100 400,100");
}

TEST(CurveEditorTest, AnInnerPointIsHeldBesideItsNeighbourUntilFiftyPixelsPast) {
    CurveScene s;
    s.SetPoints({{0, 100}, {100, 100}, {200, 100}, {400, 100}});
    s.Press(200, 100);
    s.MoveTo(101, 100); // a free move: the point moves and takes a new id
    EXPECT_EQ(s.Points(), "0,100 100,100 101,100* 400,100");
    const std::uint32_t moved_id = s.Point(2).id;
    EXPECT_NE(moved_id, 3u);
    s.MoveTo(99, 100); // past the neighbour at 100: held one pixel right of it
    EXPECT_EQ(s.Points(), "0,100 100,100 101,100* 400,100");
    s.MoveTo(51, 130); // 49 pixels past: still held, while the vertical value follows
    EXPECT_EQ(s.Points(), "0,100 100,100 101,130* 400,100");
    EXPECT_EQ(s.Point(2).id, moved_id);
    s.MoveTo(50, 130); // 50 pixels past: it jumps over, with a new id and index
    EXPECT_EQ(s.Points(), "0,100 50,130* 100,100 400,100");
    EXPECT_NE(s.Point(1).id, moved_id);
    EXPECT_EQ(s.Point(2).id, 2u); // the neighbour keeps its id
    EXPECT_EQ(CurveScene::Capture()->GetIndex(), 1);
    s.Release(50, 130);
    EXPECT_EQ(s.Points(), "0,100 50,130* 100,100 400,100");

    // Jumping straight past the neighbour in one move lands one pixel beside it.
    s.SetPoints({{0, 100}, {100, 100}, {200, 100}, {400, 100}});
    s.Drag(200, 100, 99, 100);
    EXPECT_EQ(s.Points(), "0,100 100,100 101,100* 400,100");
}

TEST(CurveEditorTest, HoldingMirrorsOnTheRightAndShrinksWithTheRoomLeft) {
    // The point at 200 dragged through `path`: after each step the points. Between the first
    // point and a neighbour at 20 there are only 20 pixels: the point passes once it is
    // 20 - 5 = 15 pixels past instead of 50.
    const struct {
        double neighbour;
        std::vector<std::pair<double, const char*>> path;
    } rows[] = {
        {300,
         {{301, "0,100 299,100* 300,100 400,100"},
          {349, "0,100 299,100* 300,100 400,100"},
          {350, "0,100 300,100 350,100* 400,100"}}},
        {20, {{6, "0,100 20,100 21,100* 400,100"}, {5, "0,100 5,100* 20,100 400,100"}}},
    };
    for (const auto& row : rows) {
        CurveScene s;
        s.SetPoints({{0, 100},
                     {std::min(200.0, row.neighbour), 100},
                     {std::max(200.0, row.neighbour), 100},
                     {400, 100}});
        s.Press(200, 100);
        for (const auto& [h, points] : row.path) {
            s.MoveTo(h, 100);
            EXPECT_EQ(s.Points(), points) << h;
        }
        s.Release(row.path.back().first, 100);
    }
}

TEST(CurveEditorTest, APointDroppedOnAnotherPixelStaysOrSlidesOffAnEnd) {
    CurveScene s;
    s.SetPoints({{0, 100}, {100, 100}, {200, 100}, {400, 100}});
    // Onto an inner point's pixel: the horizontal value stays, the vertical one follows.
    s.Press(200, 100, ModifierKey::kAlt); // Alt: no holding, only the collision rule applies
    s.MoveTo(100, 40, ModifierKey::kAlt);
    EXPECT_EQ(s.Points(), "0,100 100,100 200,40* 400,100");
    // Onto the first point's pixel: slid right to the first free pixel.
    s.MoveTo(0, 40, ModifierKey::kAlt);
    EXPECT_EQ(s.Points(), "0,100 1,40* 100,100 400,100");
    s.window.MouseUp(19 + 1, 359 - 40);
    EXPECT_EQ(s.Points(), "0,100 1,40* 100,100 400,100");
}

TEST(CurveEditorTest, KeyboardMovesPassNeighboursAtOnceWhereTheMouseIsHeld) {
    CurveScene s;
    // Points 1 and 2 share a pixel column (109 local).
    s.SetPoints({{0, 0}, {100.2, 50}, {100.4, 100}, {400, 0}});
    s.editor->UI_RequestFocus();
    s.window.PressKey(KeyboardCode::kPageDown);
    s.window.PressKey(KeyboardCode::kPageDown);
    ASSERT_EQ(s.editor->GetSelectedNode(), 1);
    s.Forget();
    EXPECT_TRUE(s.window.PressKey(KeyboardCode::kRight));
    EXPECT_EQ(s.Points(), "0,0 100.4,100 101,50* 400,0");
    EXPECT_EQ(s.changes, (std::vector<int>{0, 2}));
    EXPECT_TRUE(s.window.PressKey(KeyboardCode::kUp));
    EXPECT_EQ(s.Points(), "0,0 100.4,100 101,51* 400,0");
    // Down, then left onto the pixel of the point at 100.4: blocked sideways.
    EXPECT_TRUE(s.window.PressKey(KeyboardCode::kDown));
    EXPECT_TRUE(s.window.PressKey(KeyboardCode::kLeft));
    EXPECT_EQ(s.Points(), "0,0 100.4,100 101,50* 400,0");

    // The mouse, one pixel right, is held beside the neighbour and keeps the point as it is;
    // with Alt it passes at once too.
    for (const bool alt : {false, true}) {
        s.SetPoints({{0, 0}, {100.2, 50}, {100.4, 100}, {400, 0}});
        const PointT<float> at = s.At(100.2, 50);
        const qorui::ModifierFlags modifiers = alt ? ModifierKey::kAlt : qorui::ModifierFlags{};
        s.window.AdvanceTime(1);
        s.window.MouseDown(at.x, at.y, qorui::MouseButton::kLeft, modifiers);
        s.window.MouseMove(at.x + 1, at.y, modifiers);
        s.window.MouseUp(at.x + 1, at.y, qorui::MouseButton::kLeft, modifiers);
        EXPECT_EQ(s.Horizontal(),
                  (alt ? Values{0, 100.4, 101, 400} : Values{0, 100.2, 100.4, 400}));
        EXPECT_EQ(s.Point(1).id == 2u, !alt) << "the held point keeps its id";
    }
}

TEST(CurveEditorTest, WithoutUniquePositionsPointsCrossWithoutReordering) {
    CurveScene s;
    s.editor->SetUniqueHorizontalPositions(false);
    s.SetPoints({{0, 100}, {100, 100}, {200, 100}, {400, 100}});
    s.Drag(100, 100, 300, 80);
    EXPECT_EQ(s.Points(), "0,100 300,80* 200,100 400,100");
    EXPECT_EQ(s.Point(1).id, 2u);
    s.Drag(0, 100, 50, 120);
    EXPECT_EQ(s.Points(), "0,120* 300,80 200,100 400,100");
    EXPECT_EQ(s.Point(0).id, 1u);
}

TEST(CurveEditorTest, EscapeOrALostCaptureRestoresTheDraggedPoint) {
    CurveScene s;
    s.SetPoints({{0, 100}, {100, 100}, {200, 100}, {400, 100}});
    const CurveEditor::CurvePoints original = s.editor->GetCurvePoints();
    s.Press(200, 100);
    s.MoveTo(40, 150); // past the neighbour: it is now at index 1 with a new id
    ASSERT_EQ(s.Points(), "0,100 40,150* 100,100 400,100");
    s.window.PressKey(KeyboardCode::kEscape);
    EXPECT_EQ(s.editor->GetCurvePoints(), original);
    EXPECT_EQ(s.editor->GetSelectedNode(), 2);
    EXPECT_EQ(CurveScene::Capture(), nullptr);
    s.Release(40, 150);
    EXPECT_EQ(s.editor->GetCurvePoints(), original);
    EXPECT_EQ(s.changes, (std::vector<int>{0, 1, 3}));
    // A point that never left its place comes back with its first id and values.
    s.Forget();
    s.Press(100, 100);
    s.MoveTo(150, 20);
    s.window.LoseInputFocus();
    EXPECT_EQ(s.editor->GetCurvePoints(), original);
    EXPECT_EQ(s.changes, (std::vector<int>{0, 1, 3}));
}

TEST(CurveEditorTest, DeleteSelectedPointsFollowsTheRules) {
    CurveScene s;
    s.SetPoints({{0, 0}, {100, 50}, {400, 200}});
    EXPECT_FALSE(s.editor->DeleteSelectedPoints()); // nothing selected
    s.editor->SetSelectedNode(0);
    EXPECT_FALSE(s.editor->DeleteSelectedPoints()); // an anchor
    s.editor->SetSelectedNode(1);
    s.Forget();
    EXPECT_TRUE(s.editor->DeleteSelectedPoints());
    EXPECT_EQ(s.Points(), "0,0 400,200");
    EXPECT_EQ(s.selections, (std::vector<int>{-1}));
    EXPECT_EQ(s.changes, (std::vector<int>{0, 2}));
}

} // namespace
