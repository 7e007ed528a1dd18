#include "platform/dialogs/ui_modal_dialog.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/ui_window.hpp"

#include <cmath>
#include <stdexcept>

namespace qorui {

namespace {
constexpr float kMargin = 14.0f;
constexpr float kTitleHeight = 22.0f;
constexpr float kButtonWidth = 76.0f;
constexpr float kButtonHeight = 24.0f;
constexpr float kButtonGap = 8.0f;
} // namespace

UI_ModalDialog::UI_ModalDialog(std::string title, float contentWidth, float contentHeight)
    : title_(std::move(title)), contentWidth_(contentWidth), contentHeight_(contentHeight) {
    if (!(contentWidth > 0.0f) || !(contentHeight > 0.0f))
        throw std::invalid_argument("UI_ModalDialog: the content size must be positive");
}

void UI_ModalDialog::AddButton(int response, std::string text) {
    if (response <= 0)
        throw std::invalid_argument("UI_ModalDialog::AddButton: the response must be above 0");
    buttons_.push_back({response, std::move(text)});
}

void UI_ModalDialog::UI_ModalStarted() {
    const RectT<float> b = GetBounds();
    const float width = std::ceil(contentWidth_ + 2 * kMargin);
    const float height = std::ceil(kTitleHeight + contentHeight_ + kButtonHeight + 3 * kMargin);
    panel_ = {std::round(std::max(0.0f, (b.width - width) / 2)),
              std::round(std::max(0.0f, (b.height - height) / 3)), width, height};
    EmitInvalidate();
}

RectT<float> UI_ModalDialog::GetContentArea() const {
    return {panel_.x + kMargin, panel_.y + kMargin + kTitleHeight, contentWidth_, contentHeight_};
}

RectT<float> UI_ModalDialog::GetButtonRect(std::size_t index) const {
    if (index >= buttons_.size())
        return {};
    // The default (first) button is the rightmost.
    const float right = panel_.Right() - kMargin - float(index) * (kButtonWidth + kButtonGap);
    return UI_LocalToGlobalF(RectT<float>{right - kButtonWidth,
                                          panel_.Bottom() - kMargin - kButtonHeight, kButtonWidth,
                                          kButtonHeight});
}

bool UI_ModalDialog::PressButton(int response) {
    for (const Button& button : buttons_)
        if (button.response == response && IsRunning()) {
            EndModal(response);
            return true;
        }
    return false;
}

bool UI_ModalDialog::UI_DoMouseEvent(const MouseEvent& event) {
    const PointT<float> global = UI_LocalToGlobalF(event.GetPosition());
    int over = -1;
    for (std::size_t i = 0; i < buttons_.size(); ++i)
        if (GetButtonRect(i).Contains(global))
            over = int(i);
    if (event.IsAction(PointerAction::kPress) && event.IsButton(MouseButton::kLeft)) {
        pressed_ = over;
        EmitInvalidate();
    } else if (event.IsAction(PointerAction::kRelease)) {
        // A click needs press and release on the same button.
        if (pressed_ >= 0 && pressed_ == over)
            PressButton(buttons_[std::size_t(over)].response);
        pressed_ = -1;
        EmitInvalidate();
    }
    return UI_ModalOverlay::UI_DoMouseEvent(event);
}

bool UI_ModalDialog::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    if ((event.CompareShortcut(KeyboardCode::kReturn) ||
         event.CompareShortcut(KeyboardCode::kKeypadEnter)) &&
        !buttons_.empty()) {
        PressButton(buttons_.front().response);
        return true;
    }
    return UI_ModalOverlay::UI_DoKeyboardEvent(event);
}

void UI_ModalDialog::DrawContent(Penrig*, const RectT<float>&) const {}

void UI_ModalDialog::UI_Draw(Penrig* p) {
    const skins::Palette& pal = skins::GetPalette();
    p->FillRect(GetBounds(), pal.dialogScrim);
    if (panel_.IsEmpty())
        return;
    p->FillRect(panel_.Offset(2, 3), pal.menuShadow);
    p->FillRect(panel_, pal.dialogBackground);
    p->FrameRect(panel_, pal.dialogBorder);
    p->SetFont(penrig::Font(pal.fontSize + 1, true));
    p->SetColor(pal.defaultText);
    p->DrawText(title_, {panel_.x + kMargin, panel_.y + kMargin - 4, panel_.width - 2 * kMargin,
                         kTitleHeight});
    DrawContent(p, GetContentArea());
    p->SetFont(penrig::Font(pal.fontSize));
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        const RectT<float> g = GetButtonRect(i);
        const RectT<float> r(UI_GlobalToLocalF(g.Origin()), g.width, g.height);
        skins::DrawButtonFace(*p, r, {.pressed = int(i) == pressed_, .focused = i == 0});
        p->SetColor(pal.buttonText);
        p->DrawText(buttons_[i].text, r, penrig::HorizontalAlignment::kCenter);
    }
    UI_Node::UI_Draw(p);
}

namespace messagebox {

UI_NoteDialog::UI_NoteDialog(std::string title, std::string text)
    : UI_ModalDialog(std::move(title), 300, 48), text_(std::move(text)) {
    AddButton(1, "OK");
}

void UI_NoteDialog::DrawContent(Penrig* p, const RectT<float>& area) const {
    p->SetFont(penrig::Font(skins::GetPalette().fontSize));
    p->SetColor(skins::GetDefaultTextColor());
    p->DrawText(text_, {area.x, area.y, area.width, 20});
}

void ShowNote(const UI_Node* parent, const std::string& title, const std::string& text,
              UI_Window* window) {
    UI_Window* target = parent && parent->GetWindow() ? parent->GetWindow() : window;
    if (!target)
        throw std::invalid_argument("messagebox::ShowNote: no window to show the note in");
    IntrusivePtr<UI_NoteDialog> note(new UI_NoteDialog(title, text));
    note->RunModal(*target);
}

} // namespace messagebox

} // namespace qorui
