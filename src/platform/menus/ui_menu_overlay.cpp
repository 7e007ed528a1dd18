#include "platform/menus/ui_menu_overlay.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/draw/supplier_interface.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/ui_window.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace qorui {

namespace {
constexpr float kPanelPadding = 4.0f; // above the first and below the last item
constexpr float kCheckColumn = 22.0f; // room for the check mark left of the text
constexpr float kRightMargin = 18.0f;
constexpr float kMinWidth = 120.0f;
constexpr float kArmDistance = 3.0f; // how far the pointer moves before a release chooses
constexpr float kIconTextGap = 4.0f;
constexpr float kIconRowPadding = 4.0f;  // a row is this much taller than its tallest icon
constexpr float kTypeSelectPause = 1.0f; // seconds without typing that start a new search
constexpr int kTypeSelectTimer = 1;

std::string LowerAscii(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
    return lower;
}
} // namespace

UI_MenuOverlay::UI_MenuOverlay(const OS_Menu& menu, const PointT<float>& windowPoint)
    : menu_(menu), anchor_(windowPoint) {}

void UI_MenuOverlay::UI_ModalStarted() {
    Layout();
}

void UI_MenuOverlay::Layout() {
    const skins::Palette& pal = skins::GetPalette();
    const OS_Menu::Style& style = menu_.GetStyle();
    font_ = penrig::Font(style.fontSize > 0.0f ? style.fontSize : pal.fontSize);
    checkColumn_ = style.checkColumnWidth > 0.0f ? style.checkColumnWidth : kCheckColumn;
    iconColumn_ = menu_.GetIconColumnWidth();
    textLeft_ = checkColumn_ + iconColumn_;
    if (iconColumn_ > 0.0f)
        textLeft_ += kIconTextGap + (style.iconSeparator ? 1.0f : 0.0f);
    float textWidth = 0.0f;
    float tallestIcon = 0.0f;
    if (const penrig::SupplierInterface* supplier = UI_GetDrawSupplier()) {
        auto measure = supplier->CreateMeasuringPenrig();
        measure->SetFont(font_);
        for (const OS_Menu::Item& item : menu_.GetItems())
            if (!item.IsSeparator())
                textWidth = std::max(textWidth, measure->MeasureStringWidth(item.text));
    }
    for (const OS_Menu::Item& item : menu_.GetItems())
        if (item.icon)
            tallestIcon = std::max(tallestIcon, item.icon->GetHeight());
    // Whole pixels everywhere, so that the frame, the highlight and the pictures are crisp.
    const float itemHeight =
        style.itemHeight > 0.0f
            ? std::max(1.0f, std::round(style.itemHeight))
            : std::max(pal.menuItemHeight, std::ceil(tallestIcon) + kIconRowPadding);
    float height = 2 * kPanelPadding;
    for (const OS_Menu::Item& item : menu_.GetItems())
        height += item.IsSeparator() ? pal.menuSeparatorHeight : itemHeight;
    const float width = std::ceil(std::max(kMinWidth, textLeft_ + textWidth + kRightMargin));
    height = std::ceil(height);
    const RectT<float> bounds = GetBounds();
    float x = std::round(anchor_.x);
    float y = std::round(anchor_.y);
    if (x + width > bounds.width)
        x = std::max(0.0f, std::min(x - width, bounds.width - width));
    if (y + height > bounds.height)
        y = std::max(0.0f, std::min(y - height, bounds.height - height));
    panel_ = {x, y, width, height};
    itemRects_.clear();
    float top = y + kPanelPadding;
    for (const OS_Menu::Item& item : menu_.GetItems()) {
        const float h = item.IsSeparator() ? pal.menuSeparatorHeight : itemHeight;
        itemRects_.push_back({x + 1, top, width - 2, h});
        top += h;
    }
    EmitInvalidate();
}

RectT<float> UI_MenuOverlay::GetItemRect(std::size_t index) const {
    if (index >= itemRects_.size())
        return {};
    return UI_LocalToGlobalF(itemRects_[index]);
}

int UI_MenuOverlay::ItemAt(const PointT<float>& point) const {
    for (std::size_t i = 0; i < itemRects_.size(); ++i) {
        const OS_Menu::Item& item = menu_.GetItem(i);
        if (!item.IsSeparator() && item.enabled && itemRects_[i].Contains(point))
            return int(i);
    }
    return -1;
}

void UI_MenuOverlay::SetHighlighted(int index) {
    if (index == highlighted_)
        return;
    if (highlighted_ >= 0 && std::size_t(highlighted_) < itemRects_.size())
        EmitInvalidate(itemRects_[std::size_t(highlighted_)]);
    highlighted_ = index;
    if (highlighted_ >= 0)
        EmitInvalidate(itemRects_[std::size_t(highlighted_)]);
}

void UI_MenuOverlay::MoveHighlight(int direction) {
    const int count = int(menu_.GetItemCount());
    if (count == 0 || !menu_.HasEnabledItem())
        return;
    int index = highlighted_;
    if (index < 0)
        index = direction > 0 ? -1 : count;
    for (int step = 0; step < count; ++step) {
        index = (index + direction + count) % count;
        const OS_Menu::Item& item = menu_.GetItem(std::size_t(index));
        if (!item.IsSeparator() && item.enabled) {
            SetHighlighted(index);
            return;
        }
    }
}

bool UI_MenuOverlay::ChooseItem(int id) {
    const int index = menu_.FindItem(id);
    if (index < 0 || !menu_.GetItem(std::size_t(index)).enabled || !IsRunning())
        return false;
    EndModal(id);
    return true;
}

bool UI_MenuOverlay::UI_DoMouseEvent(const MouseEvent& event) {
    const PointT<float> at = event.GetPosition();
    switch (event.GetAction()) {
    case PointerAction::kMove:
    case PointerAction::kEnter:
        if (std::abs(at.x - anchor_.x) >= kArmDistance ||
            std::abs(at.y - anchor_.y) >= kArmDistance)
            armed_ = true;
        SetHighlighted(ItemAt(at));
        return true;
    case PointerAction::kLeave: SetHighlighted(-1); return true;
    case PointerAction::kPress:
        if (!panel_.Contains(at)) {
            UI_PressOutside();
            return true;
        }
        armed_ = true;
        SetHighlighted(ItemAt(at));
        return true;
    case PointerAction::kRelease: {
        // The release of the press that opened the menu chooses nothing unless the pointer
        // travelled to an item first, so that press-drag-release and click-click both work.
        const int index = ItemAt(at);
        if (armed_ && index >= 0)
            ChooseItem(menu_.GetItem(std::size_t(index)).id);
        return true;
    }
    default: return true;
    }
}

void UI_MenuOverlay::TypeSelect(std::string_view text) {
    // A lone space is the text of a Space key that has already chosen; within a search it is
    // part of what is sought.
    if (text == " " && typed_.empty())
        return;
    typed_ += LowerAscii(text);
    UI_InstallTimer(kTypeSelectPause, kTypeSelectTimer);
    for (std::size_t i = 0; i < menu_.GetItemCount(); ++i) {
        const OS_Menu::Item& item = menu_.GetItem(i);
        if (!item.IsSeparator() && item.enabled && LowerAscii(item.text).starts_with(typed_)) {
            SetHighlighted(int(i));
            return;
        }
    }
}

bool UI_MenuOverlay::UI_DoTimerNotify(int timerId) {
    if (timerId != kTypeSelectTimer)
        return UI_ModalOverlay::UI_DoTimerNotify(timerId);
    typed_.clear();
    UI_RemoveTimer(kTypeSelectTimer);
    return true;
}

bool UI_MenuOverlay::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    if (!event.IsActionKeyDown())
        return true;
    if (menu_.IsSearchable() && event.GetCode() == KeyboardCode::kUnknown &&
        !event.GetText().empty()) {
        TypeSelect(event.GetText());
        return true;
    }
    switch (event.GetCode()) {
    case KeyboardCode::kDown: MoveHighlight(1); return true;
    case KeyboardCode::kUp: MoveHighlight(-1); return true;
    case KeyboardCode::kHome:
        SetHighlighted(-1);
        MoveHighlight(1);
        return true;
    case KeyboardCode::kEnd:
        SetHighlighted(-1);
        MoveHighlight(-1);
        return true;
    case KeyboardCode::kSpace:
        if (!typed_.empty())
            return true; // part of the search: its text follows
        [[fallthrough]];
    case KeyboardCode::kReturn:
    case KeyboardCode::kKeypadEnter:
        if (highlighted_ >= 0)
            ChooseItem(menu_.GetItem(std::size_t(highlighted_)).id);
        return true;
    default: return UI_ModalOverlay::UI_DoKeyboardEvent(event);
    }
}

void UI_MenuOverlay::DrawItem(Penrig* p, std::size_t index) {
    const skins::Palette& pal = skins::GetPalette();
    const OS_Menu::Item& item = menu_.GetItem(index);
    const RectT<float>& r = itemRects_[index];
    if (item.IsSeparator()) {
        const float y = std::floor(r.y + r.height / 2) + 0.5f;
        p->SetPen(1.0f, pal.menuSeparator);
        p->DrawLine(r.x + 6, y, r.Right() - 6, y);
        return;
    }
    const bool lit = int(index) == highlighted_;
    if (lit)
        p->FillRect(r, pal.menuHighlight);
    const qorcore::ColorRGBA textColor = !item.enabled ? pal.menuDisabledText
                                         : lit         ? pal.menuHighlightText
                                                       : pal.menuText;
    if (item.checked) {
        penrig::Penrig::StateSaver saver(*p);
        p->SetPen(1.5f, textColor);
        p->SetLineCap(penrig::LineCap::kRound);
        p->SetLineJoin(penrig::LineJoin::kRound);
        const float cx = r.x + std::floor(checkColumn_ / 2);
        const float cy = r.y + r.height / 2;
        p->NewPath();
        p->MoveTo(cx - 4, cy);
        p->LineTo(cx - 1, cy + 3);
        p->LineTo(cx + 4, cy - 4);
        p->Stroke();
    }
    if (item.icon) {
        const float w = item.icon->GetWidth();
        const float h = item.icon->GetHeight();
        const RectT<float> at(std::floor(panel_.x + checkColumn_ + (iconColumn_ - w) / 2),
                              std::floor(r.y + (r.height - h) / 2), w, h);
        p->DrawImage(*item.icon, at, item.enabled ? 1.0f : 0.4f);
    }
    p->SetColor(textColor);
    const float left = panel_.x + textLeft_;
    p->DrawText(item.text, {left, r.y, r.Right() - 9 - left, r.height});
    // The line between pictures and text runs along the rows but not through the highlight.
    if (iconColumn_ > 0.0f && menu_.GetStyle().iconSeparator && !lit) {
        const float x = panel_.x + checkColumn_ + iconColumn_ + 0.5f;
        p->SetPen(1.0f, pal.menuSeparator);
        p->DrawLine(x, r.y, x, r.Bottom());
    }
}

void UI_MenuOverlay::UI_Draw(Penrig* p) {
    const skins::Palette& pal = skins::GetPalette();
    if (panel_.IsEmpty())
        return;
    // A soft shadow one and two pixels down and right.
    p->FillRect(panel_.Offset(2, 2), pal.menuShadow.WithAlpha(pal.menuShadow.alpha * 0.5f));
    p->FillRect(panel_.Offset(1, 1), pal.menuShadow);
    p->FillRect(panel_, pal.menuBackground);
    p->SetFont(font_);
    for (std::size_t i = 0; i < itemRects_.size(); ++i)
        DrawItem(p, i);
    p->FrameRect(panel_, pal.menuBorder);
    UI_Node::UI_Draw(p);
}

int UI_DoContextMenu(const OS_Menu& menu, const UI_Node& node, const PointT<float>& position) {
    UI_Window* window = node.GetWindow();
    if (!window)
        throw std::invalid_argument("UI_DoContextMenu: the node is in no window");
    if (!menu.HasEnabledItem())
        return 0;
    IntrusivePtr<UI_MenuOverlay> overlay(
        new UI_MenuOverlay(menu, node.UI_LocalToGlobalF(position)));
    return overlay->RunModal(*window);
}

} // namespace qorui
