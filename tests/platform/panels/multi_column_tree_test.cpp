// The multi-column tree through the headless window: header columns and their resizing, rows,
// selection by clicks and keys, scrolling, cell drawing callbacks and the look at 1x and 2x.
#include "golden_image.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/panels/ui_multi_column_tree.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

using namespace qorui;

namespace {

struct TreeScene {
    explicit TreeScene(std::size_t rows, float scale = 1.0f, float height = 160)
        : window(320, 200, scale) {
        tree = qorcore::MakeIntrusive<UI_MultiColumnTree>(
            3, UI_MultiColumnTree::GetDefaultRowHeight());
        auto* header = tree->GetHeaderRow();
        header->AppendColumn("Segment", 70);
        header->AppendColumn("Ratio", 80);
        header->AppendColumn("Type", 100);
        for (std::size_t i = 0; i < rows; ++i) {
            auto row = tree->CreateAndAppendRow(i + 1 == rows);
            row->SetText(0, std::to_string(i + 1));
            row->SetText(1, std::to_string(i + 2) + ".0:1");
            row->SetText(2, i % 2 ? "Expander" : "Compressor");
        }
        tree->SetFrame({10, 10, 280, height});
        tree->SetSelectionChangedCallback([this] { ++selectionChanges; });
        window.AddNode(tree);
    }
    PointT<float> RowCenter(std::size_t row) const {
        return tree->UI_LocalToGlobalF(tree->GetRowRect(row)).Center();
    }
    // Clicks a row after a pause, so that no click counts as the second of a double click.
    void ClickRow(std::size_t row, ModifierFlags modifiers = {}, bool pause = true) {
        const PointT<float> c = RowCenter(row);
        if (pause)
            window.AdvanceTime(2);
        window.Click(c.x, c.y, MouseButton::kLeft, modifiers);
    }
    HeadlessWindow window;
    IntrusivePtr<UI_MultiColumnTree> tree;
    int selectionChanges = 0;
};

TEST(MultiColumnTreeTest, HeaderColumnsWidthsAndBadInput) {
    EXPECT_THROW(UI_MultiColumnTree(0, 18), std::invalid_argument);
    EXPECT_THROW(UI_MultiColumnTree(2, 0), std::invalid_argument);
    TreeScene scene(2);
    auto* header = scene.tree->GetHeaderRow();
    ASSERT_EQ(header->CountColumns(), 3u);
    EXPECT_EQ(header->GetColumnAt(1).title, "Ratio");
    EXPECT_EQ(header->GetColumnLeft(2), 150);
    EXPECT_THROW(header->GetColumnAt(3), std::out_of_range);
    EXPECT_THROW(header->SetColumnWidth(5, 10), std::out_of_range);
    EXPECT_THROW(header->AppendColumn("NaN", std::nanf("")), std::invalid_argument);
    header->SetColumnWidth(0, 2); // raised to the minimum
    EXPECT_EQ(header->GetColumnWidth(0), UI_MultiColumnTreeHeaderRow::kMinColumnWidth);
    header->SetColumnWidth(0, 70.4f); // whole pixels
    EXPECT_EQ(header->GetColumnWidth(0), 70);
    EXPECT_GT(header->GetDesiredHeight(), 10);
    EXPECT_EQ(header->GetFrame().height, header->GetDesiredHeight());
    // Fitting takes the wider of the title and what the callback reports, plus padding.
    header->SetColumnBestFitWidthCallback(
        [](std::size_t column) { return column == 2 ? 140.0f : 1.0f; });
    header->FitColumnWidth(2);
    EXPECT_EQ(header->GetColumnWidth(2), 140 + 2 * UI_MultiColumnTreeHeaderRow::kCellPadding);
    header->FitColumnWidth(1);
    EXPECT_GT(header->GetColumnWidth(1), 2 * UI_MultiColumnTreeHeaderRow::kCellPadding + 10);
    EXPECT_LT(header->GetColumnWidth(1), 80);
    EXPECT_THROW(scene.tree->SetNumberOfColumns(0), std::invalid_argument);
}

TEST(MultiColumnTreeTest, HeaderDividersResizeFitAndSort) {
    TreeScene scene(2);
    auto* header = scene.tree->GetHeaderRow();
    const PointT<float> origin = header->UI_LocalToGlobalF(PointT<float>{0, 0});
    const float y = origin.y + header->GetFrame().height / 2;
    const float divider = origin.x + 70; // right edge of column 0
    scene.window.MouseDown(divider, y);
    scene.window.MouseMove(divider + 25, y);
    scene.window.MouseUp(divider + 25, y);
    EXPECT_EQ(header->GetColumnWidth(0), 95);
    EXPECT_EQ(header->GetColumnWidth(1), 80);
    // Escape during the drag puts the width back.
    scene.window.MouseDown(origin.x + 95, y);
    scene.window.MouseMove(origin.x + 140, y);
    EXPECT_EQ(header->GetColumnWidth(0), 140);
    scene.window.PressKey(KeyboardCode::kEscape);
    scene.window.MouseUp(origin.x + 140, y);
    EXPECT_EQ(header->GetColumnWidth(0), 95);
    // A double click on the divider fits the column to its content.
    header->SetColumnBestFitWidthCallback([](std::size_t) { return 120.0f; });
    scene.window.AdvanceTime(2);
    scene.window.Click(origin.x + 95, y);
    scene.window.Click(origin.x + 95, y);
    EXPECT_EQ(header->GetColumnWidth(0), 120 + 2 * UI_MultiColumnTreeHeaderRow::kCellPadding);
    // A click on a title sorts by that column, a second one flips the order; without the sort
    // indicator titles do nothing.
    std::vector<std::pair<std::size_t, bool>> sorts;
    header->SetSortChangedCallback([&](std::size_t c, bool up) { sorts.emplace_back(c, up); });
    const float ratioX = origin.x + header->GetColumnLeft(1) + 30;
    scene.window.AdvanceTime(2);
    scene.window.Click(ratioX, y);
    scene.window.AdvanceTime(2);
    scene.window.Click(ratioX, y);
    ASSERT_EQ(sorts.size(), 2u);
    EXPECT_EQ(sorts[0], std::make_pair(std::size_t(1), true));
    EXPECT_EQ(sorts[1], std::make_pair(std::size_t(1), false));
    header->ShowSortIndicator(false);
    scene.window.AdvanceTime(2);
    scene.window.Click(ratioX, y);
    EXPECT_EQ(sorts.size(), 2u);
    EXPECT_THROW(header->SetSortColumn(7), std::out_of_range);
}

TEST(MultiColumnTreeTest, RowsAreCountedFoundAndRemoved) {
    TreeScene scene(4);
    auto& tree = *scene.tree;
    EXPECT_EQ(tree.CountRows(), 4u);
    EXPECT_EQ(tree.GetRowAt(2)->GetText(2), "Compressor");
    EXPECT_EQ(tree.GetRowAt(2)->GetText(9), "");
    EXPECT_EQ(tree.GetRowIndex(tree.GetRowAt(3)), 3);
    auto stranger = qorcore::MakeIntrusive<UI_MultiColumnTreeRow>();
    EXPECT_EQ(tree.GetRowIndex(stranger.get()), -1);
    EXPECT_EQ(tree.GetRowIndex(nullptr), -1);
    tree.SelectRow(3);
    UI_MultiColumnTreeRow* second = tree.GetRowAt(1);
    tree.RemoveRowAt(0);
    EXPECT_EQ(tree.CountRows(), 3u);
    EXPECT_EQ(tree.GetRowIndex(second), 0);
    EXPECT_EQ(tree.GetSelectedRowIndex(), 2); // the selection stays with its row
    EXPECT_THROW(tree.RemoveRowAt(3), std::out_of_range);
    EXPECT_THROW(tree.GetRowAt(3), std::out_of_range);
    EXPECT_THROW(tree.SelectRow(3), std::out_of_range);
    tree.RemoveAllRows();
    EXPECT_EQ(tree.CountRows(), 0u);
    EXPECT_EQ(tree.GetSelectedRowIndex(), -1);
    EXPECT_EQ(tree.GetMaxScrollOffset(), 0);
}

TEST(MultiColumnTreeTest, ClicksSelectRows) {
    TreeScene scene(4);
    auto& tree = *scene.tree;
    scene.ClickRow(2);
    EXPECT_EQ(tree.GetSelectedRowIndex(), 2);
    EXPECT_TRUE(tree.HasFocus());
    EXPECT_EQ(scene.selectionChanges, 1);
    scene.ClickRow(2); // no change, no callback
    EXPECT_EQ(scene.selectionChanges, 1);
    // Below the last row is empty space: it clears the selection only when that is allowed.
    const PointT<float> empty = tree.UI_LocalToGlobalF(tree.GetRowRect(6)).Center();
    tree.SetAllowNoneSelected(false);
    scene.window.AdvanceTime(2);
    scene.window.Click(empty.x, empty.y);
    EXPECT_EQ(tree.GetSelectedRowIndex(), 2);
    tree.SetAllowNoneSelected(true);
    scene.window.AdvanceTime(2);
    scene.window.Click(empty.x, empty.y);
    EXPECT_EQ(tree.GetSelectedRowIndex(), -1);
    EXPECT_EQ(scene.selectionChanges, 2);
    // Without multiple selection Shift and Command select one row; with it they extend.
    scene.ClickRow(0);
    scene.ClickRow(2, ModifierKey::kShift);
    EXPECT_EQ(tree.GetSelectedRowIndices(), std::vector<std::size_t>{2});
    tree.SetAllowMultipleSelection(true);
    scene.ClickRow(0);
    scene.ClickRow(2, ModifierKey::kShift);
    EXPECT_EQ(tree.GetSelectedRowIndices(), (std::vector<std::size_t>{0, 1, 2}));
    scene.ClickRow(1, ModifierKey::kCommand);
    EXPECT_EQ(tree.GetSelectedRowIndices(), (std::vector<std::size_t>{0, 2}));
    // A double click activates the row.
    int activated = -1;
    tree.SetRowActivatedCallback([&](std::size_t row) { activated = int(row); });
    scene.ClickRow(3);
    scene.ClickRow(3, {}, false);
    EXPECT_EQ(activated, 3);
    // Rows that are not selectable never are.
    tree.SetRowsSelectable(false);
    EXPECT_EQ(tree.GetSelectedRowIndex(), -1);
    scene.ClickRow(1);
    tree.SelectRow(1);
    EXPECT_EQ(tree.GetSelectedRowIndex(), -1);
}

TEST(MultiColumnTreeTest, KeysMoveTheSelectionAndScrollItIntoView) {
    TreeScene scene(30, 1.0f, 120);
    auto& tree = *scene.tree;
    EXPECT_GT(tree.GetMaxScrollOffset(), 0);
    EXPECT_FALSE(tree.GetScrollThumbRect().IsEmpty());
    scene.ClickRow(0);
    scene.window.PressKey(KeyboardCode::kDown);
    scene.window.PressKey(KeyboardCode::kDown);
    EXPECT_EQ(tree.GetSelectedRowIndex(), 2);
    scene.window.PressKey(KeyboardCode::kUp);
    EXPECT_EQ(tree.GetSelectedRowIndex(), 1);
    scene.window.PressKey(KeyboardCode::kUp);
    scene.window.PressKey(KeyboardCode::kUp); // stays on the first row
    EXPECT_EQ(tree.GetSelectedRowIndex(), 0);
    scene.window.PressKey(KeyboardCode::kEnd);
    EXPECT_EQ(tree.GetSelectedRowIndex(), 29);
    EXPECT_EQ(tree.GetScrollOffset(), tree.GetMaxScrollOffset());
    const RectT<float> last = tree.GetRowRect(29);
    EXPECT_LE(last.Bottom(), tree.GetRowsArea().Bottom());
    scene.window.PressKey(KeyboardCode::kPageUp);
    const int afterPage = tree.GetSelectedRowIndex();
    EXPECT_LT(afterPage, 29);
    EXPECT_GT(afterPage, 20);
    scene.window.PressKey(KeyboardCode::kHome);
    EXPECT_EQ(tree.GetSelectedRowIndex(), 0);
    EXPECT_EQ(tree.GetScrollOffset(), 0);
    EXPECT_EQ(scene.selectionChanges, 8); // the Up on the first row changed nothing
    // Unhandled keys go on to the parent (a dialog's Return, for one).
    EXPECT_FALSE(scene.window.PressKey(KeyboardCode::kReturn));
}

TEST(MultiColumnTreeTest, WheelTrackAndThumbScroll) {
    TreeScene scene(30, 1.0f, 120);
    auto& tree = *scene.tree;
    const float rowHeight = tree.GetRowHeight();
    const PointT<float> middle = tree.UI_LocalToGlobalF(tree.GetRowsArea()).Center();
    scene.window.MouseWheel(middle.x, middle.y, -1); // towards the user: down the list
    EXPECT_EQ(tree.GetScrollOffset(), 3 * rowHeight);
    scene.window.MouseWheel(middle.x, middle.y, 5);
    EXPECT_EQ(tree.GetScrollOffset(), 0);
    scene.window.MouseWheel(middle.x, middle.y, -100);
    EXPECT_EQ(tree.GetScrollOffset(), tree.GetMaxScrollOffset());
    tree.SetScrollOffset(-50);
    EXPECT_EQ(tree.GetScrollOffset(), 0);
    // The row under a point follows the scroll offset.
    tree.SetScrollOffset(2 * rowHeight);
    EXPECT_EQ(tree.GetRowIndexAt(tree.GetRowRect(5).Center()), 5);
    EXPECT_EQ(tree.GetRowIndexAt({tree.GetRowsArea().x + 4, tree.GetRowsArea().y + 1}), 2);
    // A press on the track below the thumb pages down; dragging the thumb to the bottom ends
    // at the last row.
    tree.SetScrollOffset(0);
    RectT<float> thumb = tree.UI_LocalToGlobalF(tree.GetScrollThumbRect());
    scene.window.Click(thumb.Center().x, thumb.Bottom() + 5);
    EXPECT_EQ(tree.GetScrollOffset(), tree.GetRowsArea().height);
    thumb = tree.UI_LocalToGlobalF(tree.GetScrollThumbRect());
    scene.window.MouseDown(thumb.Center().x, thumb.Center().y);
    scene.window.MouseMove(thumb.Center().x, thumb.Center().y + 500);
    scene.window.MouseUp(thumb.Center().x, thumb.Center().y + 500);
    EXPECT_EQ(tree.GetScrollOffset(), tree.GetMaxScrollOffset());
    // Without overflow there is no scroll bar and the wheel is left to the parent.
    TreeScene few(2);
    EXPECT_TRUE(few.tree->GetScrollThumbRect().IsEmpty());
    const PointT<float> c = few.RowCenter(0);
    EXPECT_FALSE(few.window.MouseWheel(c.x, c.y, -1));
}

TEST(MultiColumnTreeTest, CellCallbackDrawsEachVisibleCellInItsColumn) {
    TreeScene scene(3);
    auto& tree = *scene.tree;
    tree.SetNumberOfColumns(2); // the third header column is then not drawn
    tree.SelectRow(1);
    struct Cell {
        int row;
        std::size_t column;
        RectT<float> rect;
        bool selected;
    };
    std::vector<Cell> cells;
    tree.SetDrawCellOfRowCallback([&](Penrig*, const UI_MultiColumnTreeRow& row, std::size_t column,
                                      const RectT<float>& rect, bool selected) {
        cells.push_back({tree.GetRowIndex(&row), column, rect, selected});
    });
    scene.window.RenderAll();
    ASSERT_EQ(cells.size(), 6u);
    const RectT<float> area = tree.GetRowsArea();
    for (const Cell& cell : cells) {
        EXPECT_LT(cell.column, 2u);
        EXPECT_EQ(cell.rect.x, area.x + tree.GetHeaderRow()->GetColumnLeft(cell.column));
        EXPECT_EQ(cell.rect.width, tree.GetHeaderRow()->GetColumnWidth(cell.column));
        EXPECT_EQ(cell.rect.y, tree.GetRowRect(std::size_t(cell.row)).y);
        EXPECT_EQ(cell.selected, cell.row == 1);
    }
}

TEST(MultiColumnTreeGoldenTest, TreeLooksRightAt1xAnd2x) {
    for (const float scale : {1.0f, 2.0f}) {
        skins::ScopedSkin skin(skins::Skin::kClassic);
        TreeScene scene(12, scale, 150);
        scene.tree->GetHeaderRow()->SetSortColumn(0);
        scene.tree->SelectRow(2);
        scene.tree->SetScrollOffset(scene.tree->GetRowHeight());
        scene.window.RenderAll();
        EXPECT_TRUE(qafui_testing::MatchesGolden(
            scene.window.GetImage(), "multi_column_tree_" + std::to_string(int(scale)) + "x"));
    }
}

} // namespace
