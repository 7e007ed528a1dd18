#include "controls/compressor_expander_list.hpp"

#include "platform/core/localizer.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <initializer_list>

namespace qoraudiofiltersui {

namespace {

using qorcore::PointT;
using qorcore::RectT;

/// The words of the table, looked up once and kept for the life of the library.
struct ListTexts {
    std::string columns[CompressorExpanderList::kColumnCount];
    std::string above;
    std::string below;
    std::string neutral;
    std::string compressor;
    std::string expander;
    std::string infinite;
    std::string thresholdTemplate;
};

const ListTexts& GetTexts() {
    static const ListTexts texts = [] {
        ListTexts t;
        t.columns[CompressorExpanderList::kColumnSegment] =
            qorcore::Localize("$$$/qoraudiofiltersui/CompressorExpanderList/Segment=Segment");
        t.columns[CompressorExpanderList::kColumnRatio] =
            qorcore::Localize("$$$/qoraudiofiltersui/CompressorExpanderList/Ratio=Ratio");
        t.columns[CompressorExpanderList::kColumnType] =
            qorcore::Localize("$$$/qoraudiofiltersui/CompressorExpanderList/Type=Type");
        t.columns[CompressorExpanderList::kColumnThreshold] =
            qorcore::Localize("$$$/qoraudiofiltersui/CompressorExpanderList/Threshold=Threshold");
        t.above =
            qorcore::Localize("$$$/qoraudiofiltersui/CompressorExpanderList/ThresholdAbove=Above");
        t.below =
            qorcore::Localize("$$$/qoraudiofiltersui/CompressorExpanderList/ThresholdBelow=Below");
        t.neutral =
            qorcore::Localize("$$$/qoraudiofiltersui/CompressorExpanderList/TypeNeutral=Neutral");
        t.compressor = qorcore::Localize(
            "$$$/qoraudiofiltersui/CompressorExpanderList/TypeCompressor=Compressor");
        t.expander =
            qorcore::Localize("$$$/qoraudiofiltersui/CompressorExpanderList/TypeExpander=Expander");
        t.infinite =
            qorcore::Localize("$$$/qoraudiofiltersui/CompressorExpanderList/Infinite=Infinite");
        t.thresholdTemplate = qorcore::Localize(
            "$$$/qoraudiofiltersui/CompressorExpanderList/ThresholdTemplate=@0 @1 dB");
        return t;
    }();
    return texts;
}

// Column widths that fit the texts of the default font; a double click on a divider fits a
// column to what it can show.
constexpr float kColumnWidths[CompressorExpanderList::kColumnCount] = {64.0f, 80.0f, 96.0f, 120.0f};
constexpr float kBestSizeMargin = 20.0f;
constexpr int kBestSizeRows = 6;

/// A number with one decimal place; a zero shows without its sign.
std::string OneDecimal(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.1f", value);
    std::string result(text);
    if (result == "-0.0")
        result = "0.0";
    return result;
}

/// The template with @0 and @1 replaced by the two texts.
std::string FillTemplate(const std::string& pattern, const std::string& first,
                         const std::string& second) {
    std::string result;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == '@' && i + 1 < pattern.size() &&
            (pattern[i + 1] == '0' || pattern[i + 1] == '1')) {
            result += pattern[i + 1] == '0' ? first : second;
            ++i;
        } else {
            result += pattern[i];
        }
    }
    return result;
}

float TextWidth(const std::string& text) {
    return qorui::control_drawing::MeasureText(text, qorui::control_drawing::GetControlFont())
        .width;
}

} // namespace

std::vector<CompressorExpanderRow> CompressorExpanderList::MakeRows(const Points& points) {
    const ListTexts& texts = GetTexts();
    std::vector<CompressorExpanderRow> rows;
    if (points.size() < 2)
        return rows;
    const std::size_t count = points.size() - 1;
    for (std::size_t row = 0; row != count; ++row) {
        // Row 1 is the topmost segment, the last two points.
        const auto [x0, y0] = points[count - 1 - row];
        const auto [x1, y1] = points[count - row];
        const double dx = double(x1) - double(x0);
        const double dy = double(y1) - double(y0);
        const double r = dy == 0.0 ? 0.0 : dx / dy;

        CompressorExpanderRow texts_of_row;
        texts_of_row.segment = std::to_string(row + 1);
        texts_of_row.threshold =
            row == 0 ? FillTemplate(texts.thresholdTemplate, texts.above, OneDecimal(x0))
                     : FillTemplate(texts.thresholdTemplate, texts.below, OneDecimal(x1));
        if (std::abs(r - 1.0) < 0.02) {
            texts_of_row.type = texts.neutral;
            texts_of_row.ratio = "1.0";
        } else if (r == 0.0) {
            texts_of_row.ratio = texts.infinite;
            texts_of_row.type = y0 == 0.0f ? texts.compressor : texts.expander;
        } else {
            texts_of_row.type = std::abs(r) >= 1.0 ? texts.compressor : texts.expander;
            // The ratio reads greater than one either way: input over output for a compressor,
            // output over input for an expander.
            const double ratio =
                std::abs(r - 1.0) < 0.001 ? 1.0 : (std::abs(r) > 1.0 ? dx / dy : dy / dx);
            texts_of_row.ratio = OneDecimal(ratio) + ":1";
        }
        rows.push_back(std::move(texts_of_row));
    }
    return rows;
}

CompressorExpanderList::CompressorExpanderList() {
    tree_ = qorcore::MakeIntrusive<qorui::UI_MultiColumnTree>(
        std::size_t(kColumnCount), qorui::UI_MultiColumnTree::GetDefaultRowHeight());
    tree_->SetShowFocus(false);
    tree_->SetAllowNoneSelected(true);
    tree_->SetAllowMultipleSelection(false);
    tree_->SetRowsSelectable(false);
    tree_->SetNumberOfColumns(kColumnCount);
    qorui::UI_MultiColumnTreeHeaderRow* header = tree_->GetHeaderRow();
    const ListTexts& texts = GetTexts();
    for (std::size_t column = 0; column != kColumnCount; ++column)
        header->AppendColumn(texts.columns[column], kColumnWidths[column]);
    header->ShowSortIndicator(false);
    for (std::size_t column = 0; column != kColumnCount; ++column)
        header->SetColumnWidth(column, kColumnWidths[column]);
    header->SetColumnBestFitWidthCallback(
        [this](std::size_t column) { return GetBestFitWidth(column); });
    tree_->SetDrawCellOfRowCallback(
        [this](qorui::Penrig* penrig, const qorui::UI_MultiColumnTreeRow& row, std::size_t column,
               const RectT<float>& cell, bool) { DrawCell(penrig, row, column, cell); });
    ChildPushBack(tree_);
}

CompressorExpanderList::~CompressorExpanderList() = default;

void CompressorExpanderList::SetCurve(const Points& points) {
    points_ = points;
    rows_ = MakeRows(points);
    Refresh();
}

void CompressorExpanderList::Refresh() {
    if (tree_->CountRows() != rows_.size()) {
        tree_->RemoveAllRows();
        for (std::size_t i = 0; i != rows_.size(); ++i)
            tree_->CreateAndAppendRow(i + 1 == rows_.size());
    }
    for (std::size_t i = 0; i != rows_.size(); ++i) {
        qorui::UI_MultiColumnTreeRow* row = tree_->GetRowAt(i);
        row->SetText(kColumnSegment, rows_[i].segment);
        row->SetText(kColumnRatio, rows_[i].ratio);
        row->SetText(kColumnType, rows_[i].type);
        row->SetText(kColumnThreshold, rows_[i].threshold);
    }
    tree_->EmitInvalidate();
    EmitInvalidate();
}

PointT<float> CompressorExpanderList::GetBestSize() const {
    const qorui::UI_MultiColumnTreeHeaderRow* header = tree_->GetHeaderRow();
    float width = kBestSizeMargin;
    for (std::size_t column : {kColumnType, kColumnSegment, kColumnRatio, kColumnThreshold})
        width += header->GetColumnWidth(column);
    const float height =
        header->GetDesiredHeight() + float(kBestSizeRows) * tree_->GetRowHeight() + kBestSizeMargin;
    return {width, height};
}

void CompressorExpanderList::UI_SizeChanged() {
    tree_->SetFrame(GetBounds());
    UI_InteractiveControlView::UI_SizeChanged();
}

void CompressorExpanderList::DrawCell(qorui::Penrig* penrig,
                                      const qorui::UI_MultiColumnTreeRow& row, std::size_t column,
                                      const RectT<float>& cell) const {
    const float padding = qorui::UI_MultiColumnTreeHeaderRow::kCellPadding;
    const RectT<float> text{cell.x + padding, cell.y, std::max(0.0f, cell.width - 2 * padding),
                            cell.height};
    const qorui::skins::Palette& palette = qorui::skins::GetPalette();
    qorui::penrig::Penrig::StateSaver saver(*penrig);
    penrig->ClipToRect(cell);
    penrig->SetFont(qorui::control_drawing::GetControlFont());
    penrig->SetColor(IsEnabledInTree() ? qorui::skins::GetDefaultTextColor()
                                       : palette.disabledText);
    penrig->DrawText(penrig->TruncateString(row.GetText(column), text.width), text,
                     qorui::penrig::HorizontalAlignment::kLeft,
                     qorui::penrig::VerticalAlignment::kCenter, false);
}

float CompressorExpanderList::GetBestFitWidth(std::size_t column) const {
    const ListTexts& texts = GetTexts();
    std::vector<std::string> candidates;
    switch (column) {
    case kColumnSegment: candidates = {"99"}; break;
    case kColumnRatio: candidates = {texts.infinite, "1.0", "100.0:1"}; break;
    case kColumnType: candidates = {texts.neutral, texts.compressor, texts.expander}; break;
    case kColumnThreshold:
        candidates = {FillTemplate(texts.thresholdTemplate, texts.above, "-100.0"),
                      FillTemplate(texts.thresholdTemplate, texts.below, "-100.0")};
        break;
    default: return 0.0f;
    }
    // What the rows show now may be wider still (a steep ratio, a long segment number).
    for (const CompressorExpanderRow& row : rows_) {
        const std::string* shown[] = {&row.segment, &row.ratio, &row.type, &row.threshold};
        candidates.push_back(*shown[column]);
    }
    float widest = 0.0f;
    for (const std::string& candidate : candidates)
        widest = std::max(widest, TextWidth(candidate));
    return widest;
}

} // namespace qoraudiofiltersui
