#include "controls/color_field.hpp"

#include "platform/dialogs/color_picker_dialog.hpp"
#include "platform/draw/font.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/ui_window.hpp"

#include <cmath>

namespace qoraudiofiltersui {

namespace {

const ColorRGBA kUnknownGrey{0.4f, 0.4f, 0.4f, 1.0f};
constexpr float kSlashWidth = 1.5f;
constexpr float kSlashMargin = 4.0f;
constexpr float kQuestionMarkSize = 11.0f;
constexpr float kSelectedFrameWidth = 2.0f;

float NotBelowZero(float v) {
    return v >= 0.0f ? v : 0.0f; // not-a-number fails the test too
}

bool IsSpace(const qorui::KeyboardEvent& event) {
    return event.GetOSCode() == ColorField::kSpaceOSCode ||
           event.CompareCode(qorui::KeyboardCode::kSpace);
}

bool IsReturn(const qorui::KeyboardEvent& event) {
    const int os = event.GetOSCode();
    return os == ColorField::kReturnOSCode || os == -ColorField::kReturnOSCode ||
           event.CompareCode(qorui::KeyboardCode::kReturn) ||
           event.CompareCode(qorui::KeyboardCode::kKeypadEnter);
}

} // namespace

ColorField::ColorField() {
    SetWantsKeyboardFocus(true);
}

ColorField::~ColorField() = default;

void ColorField::SetValue(const ColorRGBA& color) {
    StoreColor({NotBelowZero(color.red), NotBelowZero(color.green), NotBelowZero(color.blue),
                NotBelowZero(color.alpha)});
}

void ColorField::StoreColor(const ColorRGBA& color) {
    color_ = color;
    // The number behind the control is unused; storing it marks the value as known.
    StoreValue(UI_ControlView::GetValue());
    EmitInvalidate();
}

void ColorField::SetUserSelectable(bool selectable) {
    userSelectable_ = selectable;
    EmitInvalidate();
}

void ColorField::SetSelected(bool selected) {
    selected_ = selected;
    EmitInvalidate();
}

void ColorField::SetSlashed(bool slashed) {
    slashed_ = slashed;
    EmitInvalidate();
}

void ColorField::SetDrawSelectionState(bool draw) {
    drawSelectionState_ = draw;
    EmitInvalidate();
}

void ColorField::Fire(FieldSignal& signal) {
    // A handler may drop the last other reference to the field.
    qorcore::IntrusivePtr<ColorField> self(this);
    signal(self);
}

void ColorField::Select() {
    selected_ = true;
    EmitInvalidate();
    Fire(selectionChanged_);
}

bool ColorField::UI_DoKeyboardEvent(const qorui::KeyboardEvent& event) {
    if (!HasFocus() || !userSelectable_)
        return false;
    if (!selected_ && event.IsActionKeyDown() && IsSpace(event))
        Select();
    else if (event.IsActionKeyUp() && IsReturn(event))
        Fire(returnKeyPressed_);
    // Never consumed: the keys go on to the enclosing view (a dialog's default button).
    return false;
}

bool ColorField::UI_DoMouseEvent(const qorui::MouseEvent& event) {
    UI_InteractiveControlView::UI_DoMouseEvent(event);
    if (IsDisabled() || !event.IsButton(qorui::MouseButton::kLeft))
        return false;
    qorcore::IntrusivePtr<ColorField> keep(this);
    if (event.IsAction(qorui::PointerAction::kPress)) {
        UI_RequestFocus();
        if (!selected_)
            Select();
        if (allowUserColorChange_ && GetWindow())
            RunPicker();
        if (event.IsLeftButtonDoubleClick())
            Fire(doubleClick_);
        return true;
    }
    if (event.IsAction(qorui::PointerAction::kRelease)) {
        Fire(singleClick_);
        return true;
    }
    return false;
}

void ColorField::RunPicker() {
    qorui::UI_Window* window = parentForDialog_ ? parentForDialog_->GetWindow() : nullptr;
    if (!window)
        window = GetWindow();
    picker_ = qorcore::IntrusivePtr<sharedui::ColorPickerDialog>(
        new sharedui::ColorPickerDialog(parentForDialog_ ? parentForDialog_ : this));
    hasChanged_ = false;
    picker_->SetColor(color_);
    picker_->InstallColorChangedFunction([this] { OnColorChanged(); });
    picker_->RunModal(*window);
    const ColorRGBA picked = picker_->GetColor();
    picker_ = nullptr;
    EmitInvalidate();
    if (hasChanged_) {
        SetValue(picked);
        SendChangedMessage();
    }
}

void ColorField::OnColorChanged() {
    hasChanged_ = true;
    if (picker_)
        StoreColor(picker_->GetColor());
}

void ColorField::SendChangedMessage() {
    SendControlMessages();
}

void ColorField::UI_Draw(qorui::Penrig* penrig) {
    const bool grey = IsDisabled() || IsValueUnknown();
    const qorcore::RectT<float> b = GetBounds();
    // The frame's path, on half pixels so that a one-pixel line covers the swatch's outermost
    // pixels exactly. A selectable field keeps a pixel free around it for the selection frame.
    qorcore::RectT<float> rect = b.Inset(0.5f, 0.5f);
    if (userSelectable_)
        rect = rect.Inset(1.0f, 1.0f);
    if (rect.width > 0.0f && rect.height > 0.0f) {
        const qorcore::RectT<float> pixels = rect.Inset(-0.5f, -0.5f);
        penrig->FillRect(pixels, grey ? kUnknownGrey : color_);
        if (slashed_)
            DrawSlash(penrig, rect);
        if (IsValueUnknown())
            DrawQuestionMark(penrig);
        qorui::Penrig::StateSaver saver(*penrig);
        penrig->NewPath();
        if (selected_ && drawSelectionState_) {
            // Two pixels wide, centred on the swatch's edge: one inside, one in the free pixel.
            penrig->SetPen(kSelectedFrameWidth, qorui::skins::GetButtonColor());
            penrig->FormRect(pixels);
        } else {
            penrig->SetPen(1.0f, qorcore::ColorRGBAFixed::Black);
            penrig->FormRect(rect);
        }
        penrig->Stroke();
    }
    DrawFocusIfNeeded(penrig, b);
    UI_InteractiveControlView::UI_Draw(penrig);
}

void ColorField::DrawSlash(qorui::Penrig* penrig, const qorcore::RectT<float>& rect) const {
    if (rect.width <= 2 * kSlashMargin || rect.height <= 2 * kSlashMargin)
        return;
    qorui::Penrig::StateSaver saver(*penrig);
    penrig->SetPen(kSlashWidth, qorcore::ColorRGBAFixed::Red);
    penrig->DrawLine(rect.x + kSlashMargin, rect.y + rect.height - kSlashMargin,
                     rect.x + rect.width - kSlashMargin, rect.y + kSlashMargin);
}

void ColorField::DrawQuestionMark(qorui::Penrig* penrig) const {
    qorui::Penrig::StateSaver saver(*penrig);
    penrig->SetFont(qorui::penrig::Font(kQuestionMarkSize));
    penrig->SetColor(qorcore::ColorRGBAFixed::Black);
    const qorcore::RectT<float> b = GetBounds();
    penrig->DrawText("?", {b.x, b.y + 1.0f, b.width, b.height},
                     qorui::penrig::HorizontalAlignment::kCenter,
                     qorui::penrig::VerticalAlignment::kCenter, false);
}

} // namespace qoraudiofiltersui
