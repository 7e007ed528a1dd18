#include "platform/panels/ui_multi_column_tree.hpp"

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
constexpr float kBorder = 1.0f;
constexpr float kMinThumb = 18.0f;
constexpr float kWheelRows = 3.0f;
} // namespace

/// Drags the scroll bar's thumb.
class UI_MultiColumnTree::ThumbCapture : public InputCapture {
public:
    ThumbCapture(UI_MultiColumnTree* tree, const MouseEvent& start)
        : InputCapture(tree, start), tree_(tree), startScroll_(tree->GetScrollOffset()),
          startY_(start.GetPosition().y) {}

    bool UI_DoMouseEvent(const MouseEvent& event) override {
        const RectT<float> area = tree_->GetRowsArea();
        const float travel = area.height - tree_->GetScrollThumbRect().height;
        if (travel > 0)
            tree_->SetScrollOffset(startScroll_ + (event.GetPosition().y - startY_) / travel *
                                                      tree_->GetMaxScrollOffset());
        return true;
    }
    void UI_EndCapture(bool cancelled) override {
        if (cancelled)
            tree_->SetScrollOffset(startScroll_);
    }

private:
    UI_MultiColumnTree* tree_;
    float startScroll_;
    float startY_;
};

float UI_MultiColumnTree::GetDefaultRowHeight() {
    return std::ceil(skins::GetPalette().fontSize + 7.0f);
}

UI_MultiColumnTree::UI_MultiColumnTree(std::size_t columns, float rowHeight)
    : columns_(columns), rowHeight_(rowHeight),
      header_(qorcore::MakeIntrusive<UI_MultiColumnTreeHeaderRow>()) {
    if (columns == 0)
        throw std::invalid_argument("UI_MultiColumnTree: at least one column is needed");
    if (!(rowHeight > 0.0f) || !std::isfinite(rowHeight))
        throw std::invalid_argument("UI_MultiColumnTree: the row height must be positive");
    SetWantsKeyboardFocus(true);
    ChildPushBack(header_);
    Layout();
}

void UI_MultiColumnTree::SetNumberOfColumns(std::size_t columns) {
    if (columns == 0)
        throw std::invalid_argument("UI_MultiColumnTree::SetNumberOfColumns: at least one column");
    columns_ = columns;
    EmitInvalidate();
}

void UI_MultiColumnTree::SetRowHeight(float height) {
    if (!(height > 0.0f) || !std::isfinite(height))
        throw std::invalid_argument("UI_MultiColumnTree::SetRowHeight: must be positive");
    rowHeight_ = height;
    SetScrollOffset(scroll_);
    EmitInvalidate();
}

IntrusivePtr<UI_MultiColumnTreeRow> UI_MultiColumnTree::CreateAndAppendRow(bool last) {
    auto row = qorcore::MakeIntrusive<UI_MultiColumnTreeRow>();
    rows_.push_back(row);
    selected_.push_back(false);
    if (last)
        EmitInvalidate();
    return row;
}

UI_MultiColumnTreeRow* UI_MultiColumnTree::GetRowAt(std::size_t index) const {
    if (index >= rows_.size())
        throw std::out_of_range("UI_MultiColumnTree: no row " + std::to_string(index));
    return rows_[index].get();
}

int UI_MultiColumnTree::GetRowIndex(const UI_MultiColumnTreeRow* row) const {
    for (std::size_t i = 0; i < rows_.size(); ++i)
        if (rows_[i].get() == row)
            return int(i);
    return -1;
}

void UI_MultiColumnTree::RemoveRowAt(std::size_t index) {
    GetRowAt(index);
    rows_.erase(rows_.begin() + std::ptrdiff_t(index));
    selected_.erase(selected_.begin() + std::ptrdiff_t(index));
    if (anchor_ >= int(rows_.size()))
        anchor_ = int(rows_.size()) - 1;
    SetScrollOffset(scroll_);
    EmitInvalidate();
}

void UI_MultiColumnTree::RemoveAllRows() {
    rows_.clear();
    selected_.clear();
    anchor_ = -1;
    scroll_ = 0.0f;
    EmitInvalidate();
}

void UI_MultiColumnTree::SetShowFocus(bool show) {
    showFocus_ = show;
    EmitInvalidate();
}

void UI_MultiColumnTree::SetAllowMultipleSelection(bool allow) {
    multiple_ = allow;
    if (!allow) {
        const int first = GetSelectedRowIndex();
        ClearSelection();
        if (first >= 0)
            SelectRow(first);
    }
}

void UI_MultiColumnTree::SetRowsSelectable(bool selectable) {
    selectable_ = selectable;
    if (!selectable)
        ClearSelection();
}

void UI_MultiColumnTree::SetDrawCellOfRowCallback(DrawCellFunction draw) {
    drawCell_ = std::move(draw);
    EmitInvalidate();
}

void UI_MultiColumnTree::SelectRow(int index, bool extend) {
    if (index >= int(rows_.size()))
        throw std::out_of_range("UI_MultiColumnTree::SelectRow: no row " + std::to_string(index));
    if (!selectable_)
        return;
    if (index < 0) {
        ClearSelection();
        return;
    }
    if (!extend || !multiple_)
        std::fill(selected_.begin(), selected_.end(), false);
    selected_[std::size_t(index)] = true;
    anchor_ = index;
    EmitInvalidate();
}

void UI_MultiColumnTree::ClearSelection() {
    std::fill(selected_.begin(), selected_.end(), false);
    anchor_ = -1;
    EmitInvalidate();
}

bool UI_MultiColumnTree::IsRowSelected(std::size_t index) const {
    return index < selected_.size() && selected_[index];
}

int UI_MultiColumnTree::GetSelectedRowIndex() const {
    for (std::size_t i = 0; i < selected_.size(); ++i)
        if (selected_[i])
            return int(i);
    return -1;
}

std::vector<std::size_t> UI_MultiColumnTree::GetSelectedRowIndices() const {
    std::vector<std::size_t> out;
    for (std::size_t i = 0; i < selected_.size(); ++i)
        if (selected_[i])
            out.push_back(i);
    return out;
}

RectT<float> UI_MultiColumnTree::GetRowsArea() const {
    const RectT<float> b = GetBounds();
    const float top = kBorder + header_->GetFrame().height;
    const float width = b.width - 2 * kBorder - (HasScrollBar() ? kScrollBarWidth : 0.0f);
    return {kBorder, top, std::max(0.0f, width), std::max(0.0f, b.height - top - kBorder)};
}

bool UI_MultiColumnTree::HasScrollBar() const {
    const float top = kBorder + header_->GetFrame().height;
    return float(rows_.size()) * rowHeight_ > GetBounds().height - top - kBorder;
}

float UI_MultiColumnTree::GetMaxScrollOffset() const {
    return std::max(0.0f, float(rows_.size()) * rowHeight_ - GetRowsArea().height);
}

void UI_MultiColumnTree::SetScrollOffset(float offset) {
    if (!std::isfinite(offset))
        return;
    // Whole pixels keep the rows crisp at 1x.
    const float limited = std::round(std::clamp(offset, 0.0f, GetMaxScrollOffset()));
    if (limited == scroll_)
        return;
    scroll_ = limited;
    EmitInvalidate();
}

void UI_MultiColumnTree::ScrollRowIntoView(std::size_t index) {
    GetRowAt(index);
    const float top = float(index) * rowHeight_;
    const float height = GetRowsArea().height;
    if (top < scroll_)
        SetScrollOffset(top);
    else if (top + rowHeight_ > scroll_ + height)
        SetScrollOffset(top + rowHeight_ - height);
}

RectT<float> UI_MultiColumnTree::GetRowRect(std::size_t index) const {
    const RectT<float> area = GetRowsArea();
    return {area.x, area.y + float(index) * rowHeight_ - scroll_, area.width, rowHeight_};
}

int UI_MultiColumnTree::GetRowIndexAt(const PointT<float>& local) const {
    const RectT<float> area = GetRowsArea();
    if (!area.Contains(local))
        return -1;
    const auto index = long(std::floor((local.y - area.y + scroll_) / rowHeight_));
    return index >= 0 && index < long(rows_.size()) ? int(index) : -1;
}

RectT<float> UI_MultiColumnTree::GetScrollThumbRect() const {
    if (!HasScrollBar())
        return {};
    const RectT<float> area = GetRowsArea();
    const float total = float(rows_.size()) * rowHeight_;
    const float thumb = std::max(kMinThumb, std::round(area.height * area.height / total));
    const float max = GetMaxScrollOffset();
    const float y = area.y + (max > 0 ? std::round((area.height - thumb) * scroll_ / max) : 0.0f);
    return {area.Right(), y, kScrollBarWidth, thumb};
}

void UI_MultiColumnTree::Layout() {
    const RectT<float> b = GetBounds();
    header_->SetFrame(
        {kBorder, kBorder, std::max(0.0f, b.width - 2 * kBorder), header_->GetDesiredHeight()});
    SetScrollOffset(scroll_);
}

void UI_MultiColumnTree::UI_SizeChanged() {
    Layout();
    UI_SubView::UI_SizeChanged();
}

void UI_MultiColumnTree::UserSelect(int index, ModifierFlags modifiers) {
    if (!selectable_)
        return;
    const std::vector<bool> before = selected_;
    if (index < 0) {
        if (allowNone_)
            ClearSelection();
    } else if (multiple_ && modifiers.IsSet(ModifierKey::kShift) && anchor_ >= 0) {
        const int from = std::min(anchor_, index), to = std::max(anchor_, index);
        std::fill(selected_.begin(), selected_.end(), false);
        for (int i = from; i <= to; ++i)
            selected_[std::size_t(i)] = true;
        EmitInvalidate();
    } else if (multiple_ && modifiers.IsSet(ModifierKey::kCommand)) {
        selected_[std::size_t(index)] = !selected_[std::size_t(index)];
        anchor_ = index;
        if (!allowNone_ && GetSelectedRowIndex() < 0)
            selected_[std::size_t(index)] = true;
        EmitInvalidate();
    } else {
        SelectRow(index);
    }
    if (index >= 0)
        ScrollRowIntoView(std::size_t(index));
    if (selected_ != before && selectionChanged_)
        selectionChanged_();
}

void UI_MultiColumnTree::MoveSelectionTo(int index) {
    if (rows_.empty())
        return;
    UserSelect(std::clamp(index, 0, int(rows_.size()) - 1), {});
}

bool UI_MultiColumnTree::UI_DoMouseEvent(const MouseEvent& event) {
    const PointT<float> at = event.GetPosition();
    if (event.IsAction(PointerAction::kWheel)) {
        if (GetMaxScrollOffset() <= 0)
            return false;
        SetScrollOffset(scroll_ - event.GetWheelDelta().y * kWheelRows * rowHeight_);
        return true;
    }
    if (!event.IsAction(PointerAction::kPress) || !event.IsButton(MouseButton::kLeft))
        return false;
    const RectT<float> thumb = GetScrollThumbRect();
    if (!thumb.IsEmpty() && at.x >= thumb.x) {
        if (thumb.Contains(at))
            UI_NodeManager::Get().BeginInputCapture(
                qorcore::MakeIntrusive<ThumbCapture>(this, event));
        else // a press on the track pages towards it
            SetScrollOffset(scroll_ + (at.y < thumb.y ? -1.0f : 1.0f) * GetRowsArea().height);
        return true;
    }
    const int index = GetRowIndexAt(at);
    if (index < 0 && !GetRowsArea().Contains(at))
        return false;
    UserSelect(index, event.GetModKey());
    if (index >= 0 && event.GetClickCount() == 2 && activated_)
        activated_(std::size_t(index));
    return true;
}

bool UI_MultiColumnTree::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    if (!event.IsActionKeyDown() || !HasFocus() || !selectable_ || rows_.empty())
        return false;
    const int page = std::max(1, int(GetRowsArea().height / rowHeight_) - 1);
    const int current = anchor_;
    switch (event.GetCode()) {
    case KeyboardCode::kUp:
        MoveSelectionTo(current < 0 ? int(rows_.size()) - 1 : current - 1);
        return true;
    case KeyboardCode::kDown: MoveSelectionTo(current + 1); return true;
    case KeyboardCode::kHome: MoveSelectionTo(0); return true;
    case KeyboardCode::kEnd: MoveSelectionTo(int(rows_.size()) - 1); return true;
    case KeyboardCode::kPageUp: MoveSelectionTo(std::max(0, current) - page); return true;
    case KeyboardCode::kPageDown: MoveSelectionTo(current + page); return true;
    default: return false;
    }
}

void UI_MultiColumnTree::DrawDefaultCell(Penrig* p, const UI_MultiColumnTreeRow& row,
                                         std::size_t column, const RectT<float>& cell,
                                         bool selected) const {
    const skins::Palette& pal = skins::GetPalette();
    p->SetFont(control_drawing::GetControlFont());
    p->SetColor(IsEnabledInTree() ? (selected ? pal.selectionText : pal.defaultText)
                                  : pal.disabledText);
    const float pad = UI_MultiColumnTreeHeaderRow::kCellPadding;
    p->DrawText(row.GetText(column), {cell.x + pad, cell.y, cell.width - 2 * pad, cell.height});
}

void UI_MultiColumnTree::UI_Draw(Penrig* p) {
    const skins::Palette& pal = skins::GetPalette();
    const RectT<float> b = GetBounds();
    const RectT<float> area = GetRowsArea();
    p->FillRect(b, pal.listBoxBackground);

    p->PushClip(area);
    // Stripes continue below the last row so the table reads as one surface.
    const auto first = std::size_t(std::max(0.0f, std::floor(scroll_ / rowHeight_)));
    const auto visible = std::size_t(std::ceil(area.height / rowHeight_)) + 1;
    const std::size_t columns = std::min(columns_, header_->CountColumns());
    for (std::size_t i = first; i < first + visible; ++i) {
        const RectT<float> r = GetRowRect(i);
        const bool selected = i < rows_.size() && selectable_ && selected_[i];
        if (selected)
            p->FillRect(r, pal.selection);
        else if (i % 2 == 1)
            p->FillRect(r, pal.listBoxAlternateRow);
        if (i >= rows_.size())
            continue;
        for (std::size_t c = 0; c < columns; ++c) {
            const RectT<float> cell(area.x + header_->GetColumnLeft(c), r.y,
                                    header_->GetColumnWidth(c), r.height);
            const RectT<float> clip = cell.Intersection(area);
            if (clip.IsEmpty())
                continue;
            p->PushClip(clip);
            if (drawCell_)
                drawCell_(p, *rows_[i], c, cell, selected);
            else
                DrawDefaultCell(p, *rows_[i], c, cell, selected);
            p->PopClip();
        }
    }
    p->PopClip();

    const RectT<float> thumb = GetScrollThumbRect();
    if (!thumb.IsEmpty()) {
        p->FillRect({thumb.x, area.y, thumb.width, area.height}, pal.panelBackground);
        p->FillRect({thumb.x, area.y, 1, area.height}, pal.divider);
        p->SetColor(pal.buttonBorder);
        p->FormRoundedRect(thumb.Inset(2.5f, 1.0f), 3.0f);
        p->Fill();
    }
    UI_Node::UI_Draw(p); // the header
    const bool focused = HasFocus() && showFocus_;
    p->FrameRect(b, focused ? pal.focus : pal.listBoxBorder);
}

} // namespace qorui
