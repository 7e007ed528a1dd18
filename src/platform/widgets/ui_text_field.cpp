#include "platform/widgets/ui_text_field.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/ui_window.hpp"

#include <cmath>

namespace qorui {

namespace {

constexpr float kTextInset = 3.0f;

bool IsContinuationByte(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

std::size_t PreviousBoundary(const std::string& s, std::size_t at) {
    if (at == 0)
        return 0;
    --at;
    while (at > 0 && IsContinuationByte(s[at]))
        --at;
    return at;
}

std::size_t NextBoundary(const std::string& s, std::size_t at) {
    if (at >= s.size())
        return s.size();
    ++at;
    while (at < s.size() && IsContinuationByte(s[at]))
        ++at;
    return at;
}

} // namespace

UI_TextField::UI_TextField() : font_(control_drawing::GetControlFont()) {
    SetWantsKeyboardFocus(true);
}

void UI_TextField::SetText(std::string_view text) {
    text_ = std::string(text);
    caret_ = text_.size();
    allSelected_ = false;
    EmitInvalidate();
}

void UI_TextField::SelectAll() {
    allSelected_ = true;
    caret_ = text_.size();
    EmitInvalidate();
}

void UI_TextField::SetFont(const penrig::Font& font) {
    font_ = font;
    EmitInvalidate();
}

void UI_TextField::SetInvalid(bool invalid) {
    invalid_ = invalid;
    EmitInvalidate();
}

bool UI_TextField::OpenOver(UI_Node& control, std::string_view text) {
    UI_Window* window = control.GetWindow();
    if (!window)
        return false;
    const RectT<float> at = control.UI_LocalToGlobalF(control.GetBounds());
    closing_ = false;
    invalid_ = false;
    SetText(text);
    SelectAll();
    // At least a comfortable width for typing, even over a narrow control.
    SetFrame({std::floor(at.x), std::floor(at.y), std::ceil(std::max(at.width, 48.0f)),
              std::ceil(at.height)});
    UI_SetVisible(true); // it may have been hidden the last time it closed
    window->AddNode(IntrusivePtr<UI_Node>(this));
    UI_RequestFocus();
    return true;
}

void UI_TextField::Close() {
    closing_ = true;
    IntrusivePtr<UI_Node> keep(this);
    RemoveFromParent();
}

bool UI_TextField::Commit() {
    if (closing_ || !IsOpen())
        return false;
    IntrusivePtr<UI_Node> keep(this);
    if (commit_ && !commit_(text_)) {
        SetInvalid(true);
        SelectAll();
        return false;
    }
    Close();
    return true;
}

void UI_TextField::Cancel() {
    if (closing_ || !IsOpen())
        return;
    IntrusivePtr<UI_Node> keep(this);
    Close();
    if (cancel_)
        cancel_();
}

void UI_TextField::Insert(std::string_view typed) {
    if (filter_ && !filter_(typed))
        return;
    if (allSelected_) {
        text_.clear();
        caret_ = 0;
        allSelected_ = false;
    }
    text_.insert(caret_, typed);
    caret_ += typed.size();
    invalid_ = false;
    EmitInvalidate();
}

bool UI_TextField::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    if (!event.IsActionKeyDown())
        return true; // key-ups belong to the field while it is open
    if (event.CompareCode(KeyboardCode::kUnknown)) {
        if (!event.GetText().empty())
            Insert(event.GetText());
        return true;
    }
    const auto removeSelection = [this] {
        if (!allSelected_)
            return false;
        text_.clear();
        caret_ = 0;
        allSelected_ = false;
        return true;
    };
    switch (event.GetCode()) {
    case KeyboardCode::kReturn:
    case KeyboardCode::kKeypadEnter: Commit(); return true;
    case KeyboardCode::kEscape: Cancel(); return true;
    case KeyboardCode::kBackspace:
        if (!removeSelection() && caret_ > 0) {
            const std::size_t from = PreviousBoundary(text_, caret_);
            text_.erase(from, caret_ - from);
            caret_ = from;
        }
        break;
    case KeyboardCode::kDelete:
        if (!removeSelection() && caret_ < text_.size())
            text_.erase(caret_, NextBoundary(text_, caret_) - caret_);
        break;
    case KeyboardCode::kLeft:
        caret_ = allSelected_ ? 0 : PreviousBoundary(text_, caret_);
        allSelected_ = false;
        break;
    case KeyboardCode::kRight:
        caret_ = allSelected_ ? text_.size() : NextBoundary(text_, caret_);
        allSelected_ = false;
        break;
    case KeyboardCode::kHome:
        caret_ = 0;
        allSelected_ = false;
        break;
    case KeyboardCode::kEnd:
        caret_ = text_.size();
        allSelected_ = false;
        break;
    case KeyboardCode::kTab: {
        const TabFunction tab = tab_; // the commit may close and clear the field
        if (Commit() && tab)
            tab(!event.GetModKey().IsSet(ModifierKey::kShift));
        return true;
    }
    default:
        // Letters and digits come again as typed text; shortcuts go to the window.
        return !event.GetModKey().IsAnySet(ModifierKey::kCommand | ModifierKey::kAlt);
    }
    invalid_ = false;
    EmitInvalidate();
    return true;
}

bool UI_TextField::UI_DoMouseEvent(const MouseEvent& event) {
    if (event.IsAction(PointerAction::kPress)) {
        // A press puts the caret at the end; precise placement is not worth a layout here.
        caret_ = text_.size();
        allSelected_ = event.GetClickCount() >= 2;
        EmitInvalidate();
        return true;
    }
    return event.IsAction(PointerAction::kRelease);
}

void UI_TextField::UI_FocusChanged(bool hasFocus) {
    EmitInvalidate();
    if (hasFocus || closing_ || !IsOpen())
        return;
    // Focus given to another node (a click elsewhere) takes what was typed, as the user expects
    // of a field; focus lost to nothing means the field is going away, and takes nothing.
    if (!GetWindow()->GetFocusNode() || !Commit())
        Cancel();
}

void UI_TextField::UI_Draw(Penrig* penrig) {
    const skins::Palette& palette = skins::GetPalette();
    const RectT<float> b = GetBounds();
    penrig->FillRect(b, palette.textFieldBackground);
    penrig->FrameRect(b,
                      invalid_ ? qorcore::ColorRGBA(0.85f, 0.15f, 0.1f) : skins::GetFocusColor());
    penrig->SetFont(font_);
    const RectT<float> textRect = b.Inset(kTextInset, 0);
    const float before = penrig->MeasureStringWidth(std::string_view(text_).substr(0, caret_));
    const float textWidth = penrig->MeasureStringWidth(text_);
    // Scroll the text left when the caret would leave the field.
    const float scroll = std::max(0.0f, before - (textRect.width - 2));
    if (allSelected_ && !text_.empty())
        penrig->FillRect(
            {textRect.x - scroll, 3, std::min(textWidth, textRect.width + scroll), b.height - 6},
            palette.textFieldSelection);
    penrig->SetColor(palette.textFieldText);
    penrig->DrawText(text_, {textRect.x - scroll, 0, textWidth + 4, b.height},
                     penrig::HorizontalAlignment::kLeft, penrig::VerticalAlignment::kCenter, false);
    if (HasFocus() && !allSelected_) {
        const float x = std::round(textRect.x - scroll + before) + 0.5f;
        penrig->SetPen(1.0f, palette.textFieldText);
        penrig->DrawLine(x, 3, x, b.height - 3);
    }
    UI_Node::UI_Draw(penrig);
}

} // namespace qorui
