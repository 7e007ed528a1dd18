#include "platform/panels/ui_multi_column_tree_header_row.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/input_capture.hpp"
#include "platform/ui/ui_node_manager.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace qorui {

namespace {
constexpr float kGrabDistance = 3.0f;
constexpr int kResizeCursor = 5; // west-east arrows
} // namespace

/// Follows the pointer while a divider is dragged; Escape puts the width back.
class UI_MultiColumnTreeHeaderRow::ResizeCapture : public InputCapture {
public:
    ResizeCapture(UI_MultiColumnTreeHeaderRow* header, std::size_t column, const MouseEvent& start)
        : InputCapture(header, start), header_(header), column_(column),
          startWidth_(header->GetColumnWidth(column)), startX_(start.GetPosition().x) {}

    bool UI_DoMouseEvent(const MouseEvent& event) override {
        if (event.IsAction(PointerAction::kMove) || event.IsAction(PointerAction::kRelease))
            header_->SetColumnWidth(column_,
                                    std::round(startWidth_ + event.GetPosition().x - startX_));
        return true;
    }
    bool UI_DoCursor(const PointT<float>&, ModifierFlags) override {
        header_->UI_SetCursor(kResizeCursor);
        return true;
    }
    void UI_EndCapture(bool cancelled) override {
        if (cancelled)
            header_->SetColumnWidth(column_, startWidth_);
    }

private:
    UI_MultiColumnTreeHeaderRow* header_;
    std::size_t column_;
    float startWidth_;
    float startX_;
};

UI_MultiColumnTreeHeaderRow::UI_MultiColumnTreeHeaderRow() = default;

std::size_t UI_MultiColumnTreeHeaderRow::AppendColumn(std::string title, float width) {
    if (!std::isfinite(width))
        throw std::invalid_argument("UI_MultiColumnTreeHeaderRow::AppendColumn: bad width");
    columns_.push_back({std::move(title), std::max(kMinColumnWidth, std::round(width))});
    ColumnsChanged();
    return columns_.size() - 1;
}

const UI_MultiColumnTreeHeaderRow::Column&
UI_MultiColumnTreeHeaderRow::GetColumnAt(std::size_t index) const {
    if (index >= columns_.size())
        throw std::out_of_range("UI_MultiColumnTreeHeaderRow: no column " + std::to_string(index));
    return columns_[index];
}

void UI_MultiColumnTreeHeaderRow::SetColumnWidth(std::size_t index, float width) {
    GetColumnAt(index); // checks the index
    if (!std::isfinite(width))
        throw std::invalid_argument("UI_MultiColumnTreeHeaderRow::SetColumnWidth: bad width");
    // Whole pixels keep the cell dividers crisp.
    const float w = std::max(kMinColumnWidth, std::round(width));
    if (w == columns_[index].width)
        return;
    columns_[index].width = w;
    ColumnsChanged();
}

float UI_MultiColumnTreeHeaderRow::GetColumnLeft(std::size_t index) const {
    GetColumnAt(index);
    float x = 0.0f;
    for (std::size_t i = 0; i < index; ++i)
        x += columns_[i].width;
    return x;
}

float UI_MultiColumnTreeHeaderRow::GetTotalWidth() const {
    float x = 0.0f;
    for (const Column& c : columns_)
        x += c.width;
    return x;
}

float UI_MultiColumnTreeHeaderRow::GetDesiredHeight() const {
    return std::ceil(skins::GetPalette().fontSize + 9.0f);
}

void UI_MultiColumnTreeHeaderRow::ShowSortIndicator(bool show) {
    showSort_ = show;
    EmitInvalidate();
}

void UI_MultiColumnTreeHeaderRow::SetSortColumn(int column, bool ascending) {
    if (column >= 0)
        GetColumnAt(std::size_t(column));
    sortColumn_ = column < 0 ? -1 : column;
    sortAscending_ = ascending;
    EmitInvalidate();
}

void UI_MultiColumnTreeHeaderRow::SetColumnBestFitWidthCallback(BestFitWidthFunction callback) {
    bestFit_ = std::move(callback);
}

void UI_MultiColumnTreeHeaderRow::FitColumnWidth(std::size_t index) {
    const Column& column = GetColumnAt(index);
    float content =
        control_drawing::MeasureText(column.title, control_drawing::GetControlFont()).width;
    if (bestFit_) {
        const float fit = bestFit_(index);
        if (std::isfinite(fit))
            content = std::max(content, fit);
    }
    SetColumnWidth(index, std::ceil(content + 2 * kCellPadding));
}

int UI_MultiColumnTreeHeaderRow::GetDividerAt(float x) const {
    float right = 0.0f;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        right += columns_[i].width;
        if (std::abs(x - right) <= kGrabDistance)
            return int(i);
    }
    return -1;
}

void UI_MultiColumnTreeHeaderRow::ColumnsChanged() {
    // The tree below draws its cells with these widths.
    if (UI_Node* parent = GetParent())
        parent->EmitInvalidate();
    else
        EmitInvalidate();
}

bool UI_MultiColumnTreeHeaderRow::UI_DoMouseEvent(const MouseEvent& event) {
    if (!event.IsAction(PointerAction::kPress) || !event.IsButton(MouseButton::kLeft))
        return false;
    const PointT<float> at = event.GetPosition();
    const int divider = GetDividerAt(at.x);
    if (divider >= 0) {
        if (event.GetClickCount() == 2) {
            FitColumnWidth(std::size_t(divider));
            return true;
        }
        UI_NodeManager::Get().BeginInputCapture(
            qorcore::MakeIntrusive<ResizeCapture>(this, std::size_t(divider), event));
        return true;
    }
    if (!showSort_)
        return false;
    float left = 0.0f;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        if (at.x >= left && at.x < left + columns_[i].width) {
            const bool ascending = sortColumn_ == int(i) ? !sortAscending_ : true;
            SetSortColumn(int(i), ascending);
            if (sortChanged_)
                sortChanged_(i, ascending);
            return true;
        }
        left += columns_[i].width;
    }
    return false;
}

bool UI_MultiColumnTreeHeaderRow::UI_DoCursor(const PointT<float>& local, ModifierFlags) {
    if (GetDividerAt(local.x) < 0)
        return false;
    UI_SetCursor(kResizeCursor);
    return true;
}

void UI_MultiColumnTreeHeaderRow::UI_Draw(Penrig* p) {
    const skins::Palette& pal = skins::GetPalette();
    const RectT<float> b = GetBounds();
    p->FillRect(b, pal.panelBackground);
    // A hairline under the header separates it from the rows.
    p->FillRect({0, b.height - 1, b.width, 1}, pal.listBoxBorder);
    p->SetFont(control_drawing::GetControlFont());
    float left = 0.0f;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        const float w = columns_[i].width;
        RectT<float> text{left + kCellPadding, 0, w - 2 * kCellPadding, b.height - 1};
        const bool sorted = showSort_ && sortColumn_ == int(i);
        if (sorted)
            text.width -= 10;
        p->SetColor(pal.defaultText);
        p->DrawText(columns_[i].title, text);
        if (sorted) {
            // A small filled triangle at the right of the title.
            const float cx = std::round(left + w - kCellPadding - 4);
            const float cy = std::round(b.height / 2);
            p->NewPath();
            if (sortAscending_) {
                p->MoveTo(cx - 4, cy + 2);
                p->LineTo(cx + 4, cy + 2);
                p->LineTo(cx, cy - 2);
            } else {
                p->MoveTo(cx - 4, cy - 2);
                p->LineTo(cx + 4, cy - 2);
                p->LineTo(cx, cy + 2);
            }
            p->ClosePath();
            p->SetColor(pal.defaultText);
            p->Fill();
        }
        left += w;
        p->FillRect({left - 1, 4, 1, b.height - 9}, pal.divider);
    }
    UI_Node::UI_Draw(p);
}

} // namespace qorui
