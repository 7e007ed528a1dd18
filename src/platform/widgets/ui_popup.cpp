#include "platform/widgets/ui_popup.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/menus/os_menu.hpp"
#include "platform/menus/ui_menu_overlay.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"

#include <algorithm>
#include <cmath>

namespace qorui {

namespace {
constexpr float kArrowArea = 18.0f;
constexpr float kTextLeft = 7.0f;
constexpr float kTextRightSlack = 9.0f; // 2 before the arrow, 7 to spare
} // namespace

UI_Popup::UI_Popup() : font_(control_drawing::GetControlFont()) {
    StoreValue(-1.0);
}

void UI_Popup::AddItem(std::string text) {
    items_.push_back(std::move(text));
    extras_.emplace_back();
    EmitInvalidate();
}

void UI_Popup::SetItems(std::vector<std::string> items) {
    items_ = std::move(items);
    extras_.assign(items_.size(), {});
    SetValue(GetValue());
    EmitInvalidate();
}

void UI_Popup::DeleteAllItems() {
    items_.clear();
    extras_.clear();
    SetValue(-1.0);
    EmitInvalidate();
}

std::string UI_Popup::GetItemText(std::size_t index) const {
    return index < items_.size() ? items_[index] : std::string();
}

void UI_Popup::SetItemIcon(std::size_t index, IntrusivePtr<penrig::Image> icon) {
    if (index >= extras_.size())
        return;
    extras_[index].icon = std::move(icon);
    EmitInvalidate();
}

const penrig::Image* UI_Popup::GetItemIcon(std::size_t index) const {
    return index < extras_.size() ? extras_[index].icon.get() : nullptr;
}

void UI_Popup::SetItemCommand(std::size_t index, bool command) {
    if (index >= extras_.size())
        return;
    extras_[index].command = command;
    if (command && !IsValueUnknown() && GetSelectedIndex() == int(index))
        SetValue(-1.0);
}

bool UI_Popup::IsItemCommand(std::size_t index) const {
    return index < extras_.size() && extras_[index].command;
}

void UI_Popup::SetCommandHandler(std::function<void(int index)> handler) {
    commandHandler_ = std::move(handler);
}

bool UI_Popup::IsChoosable(int index) const {
    return index >= 0 && std::size_t(index) < items_.size() &&
           !IsSeparator(items_[std::size_t(index)]);
}

bool UI_Popup::IsValueItem(int index) const {
    return IsChoosable(index) && !extras_[std::size_t(index)].command;
}

void UI_Popup::SetValue(double index) {
    if (!std::isfinite(index))
        return;
    const int i = int(std::floor(index));
    UI_Button::SetValue(IsValueItem(i) && double(i) == index ? double(i) : -1.0);
}

bool UI_Popup::SetValueString(std::string_view text) {
    for (std::size_t i = 0; i < items_.size(); ++i)
        if (items_[i] == text && IsValueItem(int(i))) {
            SetValue(double(i));
            return true;
        }
    SetValue(-1.0);
    return false;
}

std::string UI_Popup::GetValueString() const {
    if (IsValueUnknown() || GetSelectedIndex() < 0)
        return {};
    return GetItemText(std::size_t(GetSelectedIndex()));
}

std::string UI_Popup::GetDisplayedText() const {
    if (IsValueUnknown())
        return "--";
    if (GetSelectedIndex() >= 0)
        return GetValueString();
    return customText_.empty() ? placeholder_ : customText_;
}

void UI_Popup::SetDrawDivider(bool draw) {
    drawDivider_ = draw;
    EmitInvalidate();
}

void UI_Popup::SetFont(const penrig::Font& font) {
    font_ = font;
    EmitInvalidate();
}

void UI_Popup::SetPlaceholder(std::string text) {
    placeholder_ = std::move(text);
    EmitInvalidate();
}

void UI_Popup::SetCustomItemText(std::string text) {
    customText_ = std::move(text);
    EmitInvalidate();
}

void UI_Popup::SetMenuStyle(const OS_Menu::Style& style) {
    menuStyle_ = style.Sanitized();
    EmitInvalidate();
}

float UI_Popup::GetIconColumnWidth() const {
    float widest = 0.0f;
    for (const ItemExtras& extras : extras_)
        if (extras.icon)
            widest = std::max(widest, extras.icon->GetWidth());
    return menuStyle_.IconColumnWidth(widest);
}

float UI_Popup::GetBestWidth(Measure measure, float maxTextWidth) const {
    if (!(maxTextWidth >= 0.0f))
        maxTextWidth = kNoLimit;
    auto textWidth = [&](std::string_view text) {
        return std::min(maxTextWidth, control_drawing::MeasureText(text, font_).width);
    };
    float text = 0.0f;
    if (measure == Measure::kFirstItem) {
        for (std::size_t i = 0; i < items_.size(); ++i)
            if (IsChoosable(int(i))) {
                text = textWidth(items_[i]);
                break;
            }
    } else {
        for (std::size_t i = 0; i < items_.size(); ++i)
            if (IsChoosable(int(i)))
                text = std::max(text, textWidth(items_[i]));
        if (!customText_.empty())
            text = std::max(text, textWidth(customText_));
    }
    return std::ceil(kTextLeft + GetIconColumnWidth() + text + kTextRightSlack + kArrowArea);
}

void UI_Popup::ChooseItem(int index, ModifierFlags modifiers) {
    if (!IsChoosable(index) || IsDisabled())
        return;
    IntrusivePtr<UI_Node> keep(this);
    if (extras_[std::size_t(index)].command) {
        if (commandHandler_)
            commandHandler_(index);
        return;
    }
    const bool same = !IsValueUnknown() && GetSelectedIndex() == index;
    BeginInteractiveChange(modifiers);
    SetValue(double(index));
    ContinueInteractiveChange(modifiers);
    FinishInteractiveChange(modifiers);
    if (same && alwaysNotify_)
        SendControlMessages();
}

int UI_Popup::OpenMenu() {
    if (!GetWindow() || menuOpen_ || IsDisabled())
        return -1;
    OS_Menu menu;
    menu.SetStyle(menuStyle_);
    menu.SetSearchable(searchable_);
    for (std::size_t i = 0; i < items_.size(); ++i) {
        if (IsSeparator(items_[i])) {
            menu.AppendSeparator();
            continue;
        }
        menu.AppendItem(int(i) + 1, items_[i], true,
                        checkStyle_ && !IsValueUnknown() && GetSelectedIndex() == int(i));
        menu.SetItemIcon(int(i) + 1, extras_[i].icon);
    }
    // A value of no item shows as the last row, one that can't be chosen again.
    if (!customText_.empty() && !IsValueUnknown() && GetSelectedIndex() < 0) {
        menu.AppendSeparator();
        menu.AppendItem(int(items_.size()) + 1, customText_, false, true);
    }
    IntrusivePtr<UI_Node> keep(this);
    menuOpen_ = true;
    SetDownState(true);
    const int chosen = UI_DoContextMenu(menu, *this, {0, GetFrame().height});
    menuOpen_ = false;
    SetDownState(false);
    if (chosen <= 0 || !IsChoosable(chosen - 1))
        return -1;
    ChooseItem(chosen - 1);
    return chosen - 1;
}

bool UI_Popup::UI_DoMouseEvent(const MouseEvent& event) {
    UI_ControlView::UI_DoMouseEvent(event);
    if (!event.IsAction(PointerAction::kPress) || !event.IsButton(MouseButton::kLeft))
        return false;
    OpenMenu();
    return true;
}

bool UI_Popup::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    if (!event.IsActionKeyDown() || !HasFocus())
        return false;
    if (event.CompareShortcut(KeyboardCode::kSpace) ||
        event.CompareShortcut(KeyboardCode::kReturn)) {
        OpenMenu();
        return true;
    }
    const bool down = event.CompareCode(KeyboardCode::kDown);
    if (!down && !event.CompareCode(KeyboardCode::kUp))
        return false;
    // The next choosable item that way; the ends don't wrap, as in a list.
    int i = IsValueUnknown() ? -1 : GetSelectedIndex();
    if (i < 0 && !down)
        i = int(items_.size());
    for (i += down ? 1 : -1; i >= 0 && i < int(items_.size()); i += down ? 1 : -1)
        if (IsValueItem(i)) {
            ChooseItem(i, event.GetModKey());
            break;
        }
    return true;
}

void UI_Popup::DrawContent(Penrig* penrig, const RectT<float>& rect) {
    const skins::Palette& palette = skins::GetPalette();
    const bool disabled = IsDisabled();
    float left = rect.x + kTextLeft;
    if (const float column = GetIconColumnWidth(); column > 0.0f) {
        const int chosen = IsValueUnknown() ? -1 : GetSelectedIndex();
        if (const penrig::Image* icon = chosen >= 0 ? GetItemIcon(std::size_t(chosen)) : nullptr) {
            // Whole pixels keep the picture on the device grid.
            const float w = icon->GetWidth();
            const float h = icon->GetHeight();
            penrig->DrawImage(*icon,
                              {std::floor(left + (column - w) / 2),
                               std::floor(rect.y + (rect.height - h) / 2), w, h},
                              disabled ? 0.4f : 1.0f);
        }
        left += column;
    }
    penrig->SetFont(font_);
    penrig->SetColor(disabled ? palette.disabledText : palette.buttonText);
    penrig->DrawText(
        GetDisplayedText(),
        RectT<float>::FromEdges(left, rect.y, rect.Right() - kArrowArea - 2, rect.Bottom()));
    const float arrowLeft = rect.Right() - kArrowArea;
    if (drawDivider_) {
        const float x = std::floor(arrowLeft) + 0.5f;
        penrig->SetPen(1.0f, palette.buttonBorder.WithAlpha(0.5f));
        penrig->DrawLine(x, rect.y + 4, x, rect.Bottom() - 4);
    }
    // Two small chevrons, up and down: a list to choose from.
    const float cx = std::floor(arrowLeft + kArrowArea / 2) + 0.5f;
    const float cy = std::floor(rect.y + rect.height / 2) + 0.5f;
    penrig->SetPen(1.5f, disabled ? palette.disabledText : palette.buttonText);
    penrig->SetLineJoin(penrig::LineJoin::kRound);
    penrig->SetLineCap(penrig::LineCap::kRound);
    penrig->NewPath();
    penrig->MoveTo(cx - 3, cy - 2);
    penrig->LineTo(cx, cy - 5);
    penrig->LineTo(cx + 3, cy - 2);
    penrig->MoveTo(cx - 3, cy + 2);
    penrig->LineTo(cx, cy + 5);
    penrig->LineTo(cx + 3, cy + 2);
    penrig->Stroke();
}

} // namespace qorui
