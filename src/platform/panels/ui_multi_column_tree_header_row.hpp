#pragma once

#include "platform/ui/ui_node.hpp"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace qorui {

/// The header of a `UI_MultiColumnTree`: one titled cell per column. It owns the column widths:
/// dragging the divider at a column's right edge resizes that column, a double click on the
/// divider fits the column to its content (the best-fit callback) and its title, and with the
/// sort indicator shown a click on a title makes that column the sort column or flips its order.
class UI_MultiColumnTreeHeaderRow : public UI_Node {
public:
    struct Column {
        std::string title;
        float width = 0.0f;
    };
    /// The width a column needs for its content, in logical pixels, without padding.
    using BestFitWidthFunction = std::function<float(std::size_t column)>;
    using SortChangedFunction = std::function<void(std::size_t column, bool ascending)>;

    static constexpr float kMinColumnWidth = 16.0f;
    /// The space on each side of a cell's text.
    static constexpr float kCellPadding = 6.0f;

    UI_MultiColumnTreeHeaderRow();

    /// Adds a column on the right and returns its index. A width that is not finite throws
    /// std::invalid_argument; widths below `kMinColumnWidth` are raised to it.
    std::size_t AppendColumn(std::string title, float width = 100.0f);
    std::size_t CountColumns() const { return columns_.size(); }
    /// An index past the end throws std::out_of_range (so do the width calls).
    const Column& GetColumnAt(std::size_t index) const;
    float GetColumnWidth(std::size_t index) const { return GetColumnAt(index).width; }
    void SetColumnWidth(std::size_t index, float width);
    /// The left edge of a column in the header's coordinates.
    float GetColumnLeft(std::size_t index) const;
    float GetTotalWidth() const;
    /// The height the header wants in the current look.
    float GetDesiredHeight() const;

    void ShowSortIndicator(bool show);
    bool IsSortIndicatorShown() const { return showSort_; }
    /// -1 for none. An index past the end throws std::out_of_range.
    void SetSortColumn(int column, bool ascending = true);
    int GetSortColumn() const { return sortColumn_; }
    bool IsSortAscending() const { return sortAscending_; }
    void SetSortChangedCallback(SortChangedFunction callback) {
        sortChanged_ = std::move(callback);
    }

    void SetColumnBestFitWidthCallback(BestFitWidthFunction callback);
    /// Sets the column to the wider of its title and its content (plus padding).
    void FitColumnWidth(std::size_t index);

    /// The column whose right divider is within grabbing distance of x, or -1.
    int GetDividerAt(float x) const;

    void UI_Draw(Penrig* penrig) override;
    bool UI_DoMouseEvent(const MouseEvent& event) override;
    bool UI_DoCursor(const PointT<float>& local, ModifierFlags modifiers) override;

private:
    class ResizeCapture;
    void ColumnsChanged();

    std::vector<Column> columns_;
    BestFitWidthFunction bestFit_;
    SortChangedFunction sortChanged_;
    bool showSort_ = true;
    int sortColumn_ = -1;
    bool sortAscending_ = true;
};

namespace ui {
using ::qorui::UI_MultiColumnTreeHeaderRow;
}

} // namespace qorui
