#pragma once

#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/point.hpp"
#include "platform/panels/ui_multi_column_tree.hpp"
#include "platform/widgets/ui_interactive_control_view.hpp"

#include <string>
#include <utility>
#include <vector>

namespace qoraudiofiltersui {

/// The texts of one row of a `CompressorExpanderList`.
struct CompressorExpanderRow {
    std::string segment;
    std::string ratio;
    std::string type;
    std::string threshold;

    friend bool operator==(const CompressorExpanderRow&, const CompressorExpanderRow&) = default;
};

/// A dynamics transfer curve as a read-only table: one row per segment, the topmost segment
/// first, with its number, its ratio, whether it compresses or expands, and the threshold where
/// it begins. The user edits the curve in its graph; the list follows through `SetCurve`.
///
/// Columns: Segment, Ratio, Type, Threshold. Rows can't be selected.
class CompressorExpanderList : public qorui::UI_InteractiveControlView {
public:
    /// Input and output level in dB of each point, ascending in input.
    using Points = std::vector<std::pair<float, float>>;

    enum Column : std::size_t {
        kColumnSegment = 0,
        kColumnRatio = 1,
        kColumnType = 2,
        kColumnThreshold = 3,
        kColumnCount = 4,
    };

    /// The row rule: n points give n - 1 rows, row 1 for the segment between the last two
    /// points and each next row one segment lower. A slope within 0.02 of 1 is neutral ("1.0");
    /// a flat segment has an infinite ratio, a compressor's when it ends at 0 dB output and an
    /// expander's elsewhere; other segments compress when the input changes at least as much as
    /// the output ("2.0:1") and expand otherwise. The first row's threshold is the level above
    /// which it acts; the others' the level below which they act.
    static std::vector<CompressorExpanderRow> MakeRows(const Points& points);

    CompressorExpanderList();

    /// Applies the row rule and refreshes the table.
    void SetCurve(const Points& points);
    const Points& GetCurve() const { return points_; }
    const std::vector<CompressorExpanderRow>& GetRows() const { return rows_; }
    qorui::UI_MultiColumnTree* GetTree() const { return tree_.get(); }

    /// All four columns, the header and six rows, with a margin of 10 on each side.
    qorcore::PointT<float> GetBestSize() const;

    void UI_SizeChanged() override;

protected:
    ~CompressorExpanderList() override;

private:
    void Refresh();
    void DrawCell(qorui::Penrig* penrig, const qorui::UI_MultiColumnTreeRow& row,
                  std::size_t column, const qorcore::RectT<float>& cell) const;
    /// The widest text that can stand in a column.
    float GetBestFitWidth(std::size_t column) const;

    qorcore::IntrusivePtr<qorui::UI_MultiColumnTree> tree_;
    Points points_;
    std::vector<CompressorExpanderRow> rows_;
};

} // namespace qoraudiofiltersui
