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
} // namespace

UI_MenuOverlay::UI_MenuOverlay(const OS_Menu& menu, const PointT<float>& windowPoint)
    : menu_(menu), anchor_(windowPoint) {}

void UI_MenuOverlay::UI_ModalStarted() {
    Layout();
}

void UI_MenuOverlay::Layout() {
    const skins::Palette& pal = skins::GetPalette();
    float textWidth = 0.0f;
    if (const penrig::SupplierInterface* supplier = UI_GetDrawSupplier()) {
        auto measure = supplier->CreateMeasuringPenrig();
        measure->SetFont(penrig::Font(pal.fontSize));
        for (const OS_Menu::Item& item : menu_.GetItems())
            if (!item.IsSeparator())
                textWidth = std::max(textWidth, measure->MeasureStringWidth(item.text));
    }
    float height = 2 * kPanelPadding;
    for (const OS_Menu::Item& item : menu_.GetItems())
        height += item.IsSeparator() ? pal.menuSeparatorHeight : pal.menuItemHeight;
    // Whole pixels everywhere, so that the frame and the highlight are crisp.
    const float width = std::ceil(std::max(kMinWidth, kCheckColumn + textWidth + kRightMargin));
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
        const float h = item.IsSeparator() ? pal.menuSeparatorHeight : pal.menuItemHeight;
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

bool UI_MenuOverlay::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    if (!event.IsActionKeyDown())
        return true;
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
    case KeyboardCode::kReturn:
    case KeyboardCode::kKeypadEnter:
    case KeyboardCode::kSpace:
        if (highlighted_ >= 0)
            ChooseItem(menu_.GetItem(std::size_t(highlighted_)).id);
        return true;
    default: return UI_ModalOverlay::UI_DoKeyboardEvent(event);
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
    p->SetFont(penrig::Font(pal.fontSize));
    for (std::size_t i = 0; i < itemRects_.size(); ++i) {
        const OS_Menu::Item& item = menu_.GetItem(i);
        const RectT<float>& r = itemRects_[i];
        if (item.IsSeparator()) {
            const float y = std::floor(r.y + r.height / 2) + 0.5f;
            p->SetPen(1.0f, pal.menuSeparator);
            p->DrawLine(r.x + 6, y, r.Right() - 6, y);
            continue;
        }
        const bool lit = int(i) == highlighted_;
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
            const float cx = r.x + 11;
            const float cy = r.y + r.height / 2;
            p->NewPath();
            p->MoveTo(cx - 4, cy);
            p->LineTo(cx - 1, cy + 3);
            p->LineTo(cx + 4, cy - 4);
            p->Stroke();
        }
        p->SetColor(textColor);
        p->DrawText(item.text, {r.x + kCheckColumn - 1, r.y, r.width - kCheckColumn - 8, r.height});
    }
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
