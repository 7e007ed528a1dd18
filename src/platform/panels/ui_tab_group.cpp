#include "platform/panels/ui_tab_group.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"

#include <cmath>
#include <stdexcept>

namespace qorui {

namespace {
constexpr float kStripInset = 8.0f;
constexpr float kTabPadding = 12.0f;
constexpr float kMinTabWidth = 48.0f;
} // namespace

UI_TabGroup::UI_TabGroup() {
    SetWantsKeyboardFocus(true);
}

std::size_t UI_TabGroup::AddTab(std::string title, IntrusivePtr<UI_Node> panel) {
    if (!panel)
        throw std::invalid_argument("UI_TabGroup::AddTab: the panel is null");
    const float text = control_drawing::MeasureText(title, control_drawing::GetControlFont()).width;
    const float width = std::max(kMinTabWidth, std::ceil(text + 2 * kTabPadding));
    tabs_.push_back({std::move(title), panel, width});
    panel->SetFrame(GetPanelArea());
    panel->UI_SetVisible(tabs_.size() == 1);
    ChildPushBack(panel);
    if (selected_ < 0)
        selected_ = 0;
    EmitInvalidate();
    return tabs_.size() - 1;
}

const UI_TabGroup::Tab& UI_TabGroup::GetTab(std::size_t index) const {
    if (index >= tabs_.size())
        throw std::out_of_range("UI_TabGroup: no tab " + std::to_string(index));
    return tabs_[index];
}

UI_Node* UI_TabGroup::GetPanelAt(std::size_t index) const {
    return GetTab(index).panel.get();
}

const std::string& UI_TabGroup::GetTabTitle(std::size_t index) const {
    return GetTab(index).title;
}

void UI_TabGroup::SelectTab(std::size_t index) {
    GetTab(index);
    if (int(index) == selected_)
        return;
    for (std::size_t i = 0; i < tabs_.size(); ++i)
        tabs_[i].panel->UI_SetVisible(i == index);
    selected_ = int(index);
    EmitInvalidate();
}

void UI_TabGroup::UserSelect(std::size_t index) {
    if (int(index) == selected_)
        return;
    SelectTab(index);
    if (changed_)
        changed_(index);
}

float UI_TabGroup::GetTabHeight() const {
    return std::ceil(skins::GetPalette().fontSize + 11.0f);
}

RectT<float> UI_TabGroup::GetTabRect(std::size_t index) const {
    GetTab(index);
    float x = kStripInset;
    for (std::size_t i = 0; i < index; ++i)
        x += tabs_[i].width - 1; // neighbours share their border
    return {x, 0, tabs_[index].width, GetTabHeight()};
}

RectT<float> UI_TabGroup::GetPanelArea() const {
    const RectT<float> b = GetBounds();
    const float top = GetTabHeight();
    return {1, top, std::max(0.0f, b.width - 2), std::max(0.0f, b.height - top - 1)};
}

void UI_TabGroup::UI_SizeChanged() {
    for (Tab& tab : tabs_)
        tab.panel->SetFrame(GetPanelArea());
    UI_SubView::UI_SizeChanged();
}

bool UI_TabGroup::UI_DoMouseEvent(const MouseEvent& event) {
    if (!event.IsAction(PointerAction::kPress) || !event.IsButton(MouseButton::kLeft))
        return false;
    for (std::size_t i = 0; i < tabs_.size(); ++i)
        if (GetTabRect(i).Contains(event.GetPosition())) {
            UserSelect(i);
            return true;
        }
    return false;
}

bool UI_TabGroup::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    if (!HasFocus() || tabs_.empty())
        return false;
    const int last = int(tabs_.size()) - 1;
    if (event.CompareShortcut(KeyboardCode::kLeft)) {
        UserSelect(std::size_t(std::max(0, selected_ - 1)));
        return true;
    }
    if (event.CompareShortcut(KeyboardCode::kRight)) {
        UserSelect(std::size_t(std::min(last, selected_ + 1)));
        return true;
    }
    return false;
}

void UI_TabGroup::UI_Draw(Penrig* p) {
    const skins::Palette& pal = skins::GetPalette();
    const RectT<float> area = GetPanelArea();
    const RectT<float> panel{0, area.y - 1, GetBounds().width, area.height + 2};
    p->FillRect(panel, pal.panelBackground);
    p->FrameRect(panel, pal.listBoxBorder);
    p->SetFont(control_drawing::GetControlFont());
    // The tabs are drawn only where the paint reaches: a live panel repaints often.
    const RectT<float> clip = p->GetClipBounds();
    for (std::size_t i = 0; i < tabs_.size(); ++i) {
        const bool selected = int(i) == selected_;
        RectT<float> r = GetTabRect(i);
        if (!clip.Intersects({r.x - 2, r.y - 2, r.width + 4, area.y - r.y + 6}))
            continue;
        if (!selected)
            r = {r.x, r.y + 2, r.width, r.height - 2};
        skins::DrawButtonFace(*p, {r.x, r.y, r.width, r.height + 4}, {.selected = selected});
        if (selected) // opens the tab into its panel
            p->FillRect({r.x + 1, area.y - 1, r.width - 2, 4}, pal.panelBackground);
        else
            p->FillRect({r.x, area.y - 1, r.width, 1}, pal.listBoxBorder);
        p->SetColor(IsEnabledInTree() ? pal.defaultText : pal.disabledText);
        p->DrawText(tabs_[i].title, {r.x, r.y, r.width, r.height},
                    penrig::HorizontalAlignment::kCenter);
    }
    if (HasFocus() && selected_ >= 0)
        skins::DrawFocusRing(*p, GetTabRect(std::size_t(selected_)).Inset(3, 3));
    UI_Node::UI_Draw(p);
}

} // namespace qorui
