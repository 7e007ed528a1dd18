#pragma once

#include "platform/panels/ui_multi_column_tree_header_row.hpp"
#include "platform/panels/ui_multi_column_tree_row.hpp"
#include "platform/ui/ui_sub_view.hpp"

#include <cstddef>
#include <functional>
#include <vector>

namespace qorui {

/// A table of rows under a header row. Cells are drawn by a callback (by default the row's
/// text of the column). Rows are selected by clicks (Shift extends, Command toggles when
/// multiple selection is allowed) and by Up, Down, Home, End, Page Up and Page Down; rows that
/// do not fit scroll with the wheel, the keys and a scroll bar at the right.
class UI_MultiColumnTree : public UI_SubView {
public:
    /// Draws one cell; `cell` is in the tree's coordinates and already clipped.
    using DrawCellFunction =
        std::function<void(Penrig* penrig, const UI_MultiColumnTreeRow& row, std::size_t column,
                           const RectT<float>& cell, bool selected)>;
    using SelectionChangedFunction = std::function<void()>;
    /// A double click on a row.
    using RowActivatedFunction = std::function<void(std::size_t row)>;

    /// The row height that suits the current look's font.
    static float GetDefaultRowHeight();
    static constexpr float kScrollBarWidth = 10.0f;

    /// No columns or a row height that is not positive throws std::invalid_argument.
    UI_MultiColumnTree(std::size_t columns, float rowHeight);

    // Columns: the widths and titles are the header row's.
    void SetNumberOfColumns(std::size_t columns);
    std::size_t GetNumberOfColumns() const { return columns_; }
    UI_MultiColumnTreeHeaderRow* GetHeaderRow() const { return header_.get(); }
    /// A height that is not positive throws std::invalid_argument.
    void SetRowHeight(float height);
    float GetRowHeight() const { return rowHeight_; }

    // Rows
    /// Appends an empty row. With `last` false the layout waits for the last row of a batch.
    IntrusivePtr<UI_MultiColumnTreeRow> CreateAndAppendRow(bool last = true);
    std::size_t CountRows() const { return rows_.size(); }
    /// An index past the end throws std::out_of_range.
    UI_MultiColumnTreeRow* GetRowAt(std::size_t index) const;
    /// -1 for a row that is not in this tree.
    int GetRowIndex(const UI_MultiColumnTreeRow* row) const;
    /// An index past the end throws std::out_of_range.
    void RemoveRowAt(std::size_t index);
    void RemoveAllRows();

    // Options
    void SetShowFocus(bool show);
    /// When off, clicks on empty space keep the selection.
    void SetAllowNoneSelected(bool allow) { allowNone_ = allow; }
    void SetAllowMultipleSelection(bool allow);
    /// When off, nothing can be selected and rows are never highlighted.
    void SetRowsSelectable(bool selectable);
    void SetDrawCellOfRowCallback(DrawCellFunction draw);
    void SetSelectionChangedCallback(SelectionChangedFunction changed) {
        selectionChanged_ = std::move(changed);
    }
    void SetRowActivatedCallback(RowActivatedFunction activated) {
        activated_ = std::move(activated);
    }

    // Selection (from code: the callback does not run)
    /// Selects one row (or adds it with `extend`); -1 clears. Past the end throws
    /// std::out_of_range; ignored when rows are not selectable.
    void SelectRow(int index, bool extend = false);
    void ClearSelection();
    bool IsRowSelected(std::size_t index) const;
    /// The first selected row, or -1.
    int GetSelectedRowIndex() const;
    std::vector<std::size_t> GetSelectedRowIndices() const;

    // Scrolling
    float GetScrollOffset() const { return scroll_; }
    /// Limited to 0 .. `GetMaxScrollOffset()`.
    void SetScrollOffset(float offset);
    float GetMaxScrollOffset() const;
    void ScrollRowIntoView(std::size_t index);
    /// Where the rows are shown: the bounds without the border, the header and the scroll bar.
    RectT<float> GetRowsArea() const;
    /// A row's rectangle in the tree's coordinates at the current scroll offset.
    RectT<float> GetRowRect(std::size_t index) const;
    /// The row under a point in the tree's coordinates, or -1.
    int GetRowIndexAt(const PointT<float>& local) const;
    /// The scroll bar's thumb, empty when all rows fit.
    RectT<float> GetScrollThumbRect() const;

    void UI_Draw(Penrig* penrig) override;
    bool UI_DoMouseEvent(const MouseEvent& event) override;
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;
    void UI_SizeChanged() override;

private:
    class ThumbCapture;
    void Layout();
    void UserSelect(int index, ModifierFlags modifiers);
    void MoveSelectionTo(int index);
    void DrawDefaultCell(Penrig* penrig, const UI_MultiColumnTreeRow& row, std::size_t column,
                         const RectT<float>& cell, bool selected) const;
    bool HasScrollBar() const;

    std::size_t columns_;
    float rowHeight_;
    IntrusivePtr<UI_MultiColumnTreeHeaderRow> header_;
    std::vector<IntrusivePtr<UI_MultiColumnTreeRow>> rows_;
    std::vector<bool> selected_;
    int anchor_ = -1; ///< where Shift-selection and the keys start
    float scroll_ = 0.0f;
    bool showFocus_ = true;
    bool allowNone_ = true;
    bool multiple_ = false;
    bool selectable_ = true;
    DrawCellFunction drawCell_;
    SelectionChangedFunction selectionChanged_;
    RowActivatedFunction activated_;
};

namespace ui {
using ::qorui::UI_MultiColumnTree;
}

} // namespace qorui
