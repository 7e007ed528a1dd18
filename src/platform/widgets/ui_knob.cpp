#include "platform/widgets/ui_knob.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qorui {

namespace {
constexpr float kPixelsPerRange = 200.0f;
constexpr double kFineFactor = 0.1;
// The arc runs over 270 degrees with the gap at the bottom.
constexpr float kStartAngle = float(std::numbers::pi * 0.75);
constexpr float kSweep = float(std::numbers::pi * 1.5);
} // namespace

UI_Knob::UI_Knob() {
    SetWantsKeyboardFocus(true);
}

void UI_Knob::SetValue(double value) {
    if (!std::isfinite(value))
        return;
    UI_InteractiveControlView::SetValue(
        std::clamp(value, std::min(min_, max_), std::max(min_, max_)));
}

bool UI_Knob::SetRange(double min, double max) {
    if (!std::isfinite(min) || !std::isfinite(max) || min == max)
        return false;
    min_ = min;
    max_ = max;
    SetValue(GetValue());
    EmitInvalidate();
    return true;
}

double UI_Knob::GetNormalizedValue() const {
    return std::clamp((GetValue() - min_) / (max_ - min_), 0.0, 1.0);
}

void UI_Knob::Step(double shares, ModifierFlags modifiers) {
    BeginInteractiveChange(modifiers);
    SetValue(GetValue() + shares * (max_ - min_));
    ContinueInteractiveChange(modifiers);
    FinishInteractiveChange(modifiers);
}

bool UI_Knob::UI_DoMouseEvent(const MouseEvent& event) {
    UI_InteractiveControlView::UI_DoMouseEvent(event);
    const bool fine = event.GetModKey().IsSet(ModifierKey::kShift);
    if (event.IsAction(PointerAction::kWheel)) {
        const float dy = event.GetWheelDelta().y;
        if (dy == 0)
            return false;
        Step((dy > 0 ? 0.01 : -0.01) * (fine ? kFineFactor : 1.0), event.GetModKey());
        return true;
    }
    if (!event.IsAction(PointerAction::kPress) || !event.IsButton(MouseButton::kLeft))
        return false;
    if (event.GetClickCount() == 2) {
        BeginInteractiveChange(event.GetModKey());
        SetValue(default_);
        ContinueInteractiveChange(event.GetModKey());
        FinishInteractiveChange(event.GetModKey());
        return true;
    }
    BeginInteractiveChange(event.GetModKey());
    dragStart_ = event.GetPosition();
    dragStartValue_ = GetValue();
    SetDownState(true);
    if (!BeginDrag(event)) {
        SetDownState(false);
        FinishInteractiveChange();
    }
    return true;
}

void UI_Knob::UI_DoDragEvent(const MouseEvent& event) {
    if (event.IsAction(PointerAction::kRelease))
        SetDownState(false);
    if (!event.IsAction(PointerAction::kMove))
        return;
    const PointT<float> d = event.GetPosition() - dragStart_;
    const double factor = event.GetModKey().IsSet(ModifierKey::kShift) ? kFineFactor : 1.0;
    const double before = GetValue();
    SetValue(dragStartValue_ + double(d.x - d.y) / kPixelsPerRange * factor * (max_ - min_));
    if (GetValue() != before)
        ContinueInteractiveChange(event.GetModKey());
}

void UI_Knob::UI_DoDragEnd(bool cancelled) {
    SetDownState(false);
    UI_InteractiveControlView::UI_DoDragEnd(cancelled);
}

bool UI_Knob::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    if (!event.IsActionKeyDown() || !HasFocus())
        return false;
    const double step = event.GetModKey().IsSet(ModifierKey::kShift) ? 0.001 : 0.01;
    switch (event.GetCode()) {
    case KeyboardCode::kUp:
    case KeyboardCode::kRight: Step(step, event.GetModKey()); return true;
    case KeyboardCode::kDown:
    case KeyboardCode::kLeft: Step(-step, event.GetModKey()); return true;
    default: return false;
    }
}

void UI_Knob::UI_Draw(Penrig* penrig) {
    const skins::Palette& palette = skins::GetPalette();
    const RectT<float> b = GetBounds();
    const float side = std::floor(std::min(b.width, b.height));
    const float cx = std::floor(b.width / 2);
    const float cy = std::floor(b.height / 2);
    const float radius = side / 2 - 3;
    if (radius <= 2) {
        UI_InteractiveControlView::UI_Draw(penrig);
        return;
    }
    const bool disabled = IsDisabled();
    const float angle = kStartAngle + float(GetNormalizedValue()) * kSweep;
    penrig->SetLineCap(penrig::LineCap::kRound);
    // The track, then the value's part of it.
    penrig->SetPen(3.0f, palette.textFieldBorder);
    penrig->NewPath();
    penrig->Arc(cx, cy, radius, kStartAngle, kStartAngle + kSweep);
    penrig->Stroke();
    if (!IsValueUnknown()) {
        penrig->SetPen(3.0f, disabled ? palette.disabledText : skins::GetButtonColor());
        penrig->NewPath();
        penrig->Arc(cx, cy, radius, kStartAngle, angle);
        penrig->Stroke();
    }
    // The cap, with a pointer line to the value.
    const float cap = radius - 4;
    penrig->FormEllipse({cx - cap, cy - cap, 2 * cap, 2 * cap});
    penrig->SetColor(GetDownState() ? palette.buttonFacePressedTop : palette.buttonFaceTop);
    penrig->Fill(true);
    penrig->SetPen(1.0f, palette.buttonBorder);
    penrig->Stroke();
    if (!IsValueUnknown()) {
        penrig->SetPen(2.0f, disabled ? palette.disabledText : palette.buttonText);
        penrig->DrawLine(cx + std::cos(angle) * cap * 0.3f, cy + std::sin(angle) * cap * 0.3f,
                         cx + std::cos(angle) * (cap - 1.5f), cy + std::sin(angle) * (cap - 1.5f));
    }
    DrawFocusIfNeeded(penrig, {cx - cap, cy - cap, 2 * cap, 2 * cap});
    UI_InteractiveControlView::UI_Draw(penrig);
}

} // namespace qorui
