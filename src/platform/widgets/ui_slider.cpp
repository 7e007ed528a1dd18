#include "platform/widgets/ui_slider.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace qorui {

namespace {

constexpr float kDefaultThumbLength = 11.0f;
constexpr float kGrooveThickness = 4.0f;
constexpr float kDetentPixels = 4.0f;
constexpr double kModifierFactor = 0.1;
constexpr double kPage = 0.1;
constexpr double kKeyStep = 1.0; // in hundredths, through Scroll

double Clamp01(double v) {
    return std::clamp(v, 0.0, 1.0);
}

// The thumb every slider starts with: a face with a grip, pointed towards the scale for the
// pointing directions. It draws only; the slider handles the pointer.
class SliderThumb final : public UI_Button {
public:
    SliderThumb() {
        SetPassesPressesToParent(true);
        SetWantsKeyboardFocus(false);
    }

    void UI_Draw(Penrig* penrig) override {
        const auto* slider = dynamic_cast<const UI_Slider*>(GetParent());
        const SliderDirection direction =
            slider ? slider->GetDirection() : kSliderDirectionHorizontal;
        const skins::Palette& palette = skins::GetPalette();
        const RectT<float> b = GetBounds().Inset(0.5f, 0.5f);
        const bool pressed = GetDownState();
        const bool enabled = !IsDisabled();
        penrig->NewPath();
        const float point = 4.0f; // length of the point
        switch (direction) {
        case kSliderDirectionHorizontalPointingDown:
            penrig->MoveTo(b.x, b.y);
            penrig->LineTo(b.Right(), b.y);
            penrig->LineTo(b.Right(), b.Bottom() - point);
            penrig->LineTo(b.x + b.width / 2, b.Bottom());
            penrig->LineTo(b.x, b.Bottom() - point);
            break;
        case kSliderDirectionHorizontalPointingUp:
            penrig->MoveTo(b.x, b.Bottom());
            penrig->LineTo(b.Right(), b.Bottom());
            penrig->LineTo(b.Right(), b.y + point);
            penrig->LineTo(b.x + b.width / 2, b.y);
            penrig->LineTo(b.x, b.y + point);
            break;
        case kSliderDirectionVerticalPointingRight:
            penrig->MoveTo(b.x, b.y);
            penrig->LineTo(b.Right() - point, b.y);
            penrig->LineTo(b.Right(), b.y + b.height / 2);
            penrig->LineTo(b.Right() - point, b.Bottom());
            penrig->LineTo(b.x, b.Bottom());
            break;
        case kSliderDirectionVerticalPointingLeft:
            penrig->MoveTo(b.Right(), b.y);
            penrig->LineTo(b.x + point, b.y);
            penrig->LineTo(b.x, b.y + b.height / 2);
            penrig->LineTo(b.x + point, b.Bottom());
            penrig->LineTo(b.Right(), b.Bottom());
            break;
        default: penrig->FormRoundedRect(b, std::min(3.0f, palette.cornerRadius)); break;
        }
        penrig->ClosePath();
        penrig->SetColor(pressed                                ? palette.buttonFacePressedTop
                         : GetStateFlags().IsSet(kStateHovered) ? palette.buttonFaceHover
                                                                : palette.buttonFaceTop);
        penrig->Fill(true);
        penrig->SetPen(1.0f, enabled ? palette.buttonBorder : palette.disabledText);
        penrig->SetLineJoin(penrig::LineJoin::kMiter);
        penrig->Stroke();
        // The grip: a line across the thumb at its centre, where the value is read.
        penrig->SetPen(1.0f, enabled ? skins::GetButtonColor() : palette.disabledText);
        const RectT<float> g = GetBounds();
        if (slider && !slider->IsHorizontal()) {
            const float y = std::floor(g.height / 2) + 0.5f;
            penrig->DrawLine(3, y, g.width - 3, y);
        } else {
            const float x = std::floor(g.width / 2) + 0.5f;
            penrig->DrawLine(x, 3, x, g.height - 3);
        }
    }
};

} // namespace

UI_Slider::UI_Slider(SliderDirection direction, bool small) : direction_(direction), small_(small) {
    SetWantsKeyboardFocus(true);
    InstallSliderThumb(qorcore::MakeIntrusive<SliderThumb>());
}

float UI_Slider::GetDefaultSize(SliderDirection direction, int variation) {
    const bool pointed =
        direction != kSliderDirectionHorizontal && direction != kSliderDirectionVertical;
    if (variation == 1)
        return pointed ? 15.0f : 12.0f;
    return pointed ? 20.0f : 16.0f;
}

void UI_Slider::SetDirection(SliderDirection direction) {
    direction_ = direction;
    LayoutThumb();
    EmitInvalidate();
}

void UI_Slider::SetValue(double value) {
    if (!std::isfinite(value))
        return;
    UI_InteractiveControlView::SetValue(Clamp01(value));
    LayoutThumb();
}

void UI_Slider::InstallSliderThumb(IntrusivePtr<UI_Button> thumb) {
    if (!thumb)
        throw std::invalid_argument("UI_Slider::InstallSliderThumb: null thumb");
    if (thumb_)
        thumb_->RemoveFromParent();
    thumb_ = std::move(thumb);
    thumb_->SetPassesPressesToParent(true);
    // The focus belongs to the slider, which handles the keys.
    thumb_->SetWantsKeyboardFocus(false);
    ChildPushBack(thumb_);
    LayoutThumb();
}

float UI_Slider::GetMinThumbSize() const {
    return small_ ? kDefaultThumbLength - 2 : kDefaultThumbLength;
}

float UI_Slider::Length() const {
    return IsHorizontal() ? GetFrame().width : GetFrame().height;
}

float UI_Slider::Travel() const {
    return std::max(0.0f, Length() - GetMinThumbSize());
}

float UI_Slider::ValueToPosition(double value) const {
    return GetMinThumbSize() / 2 + float(Clamp01(value)) * Travel();
}

double UI_Slider::PositionToValue(float position) const {
    const float travel = Travel();
    return travel > 0 ? Clamp01((position - GetMinThumbSize() / 2) / travel) : 0.0;
}

RectT<float> UI_Slider::GetThumbRect() const {
    const float thumb = std::min(GetMinThumbSize(), Length());
    // Whole pixels keep the thumb's frame crisp; the value still moves it smoothly enough.
    const float start = std::round(ValueToPosition(GetValue()) - thumb / 2);
    const RectT<float> b = GetBounds();
    return IsHorizontal() ? RectT<float>(start, 0, thumb, b.height)
                          : RectT<float>(0, start, b.width, thumb);
}

RectT<float> UI_Slider::GetSlideableDrawRect() const {
    const RectT<float> b = GetBounds();
    const float thickness = IsHorizontal() ? b.height : b.width;
    const float inset = insetPercent_ >= 0 ? std::floor(thickness * insetPercent_)
                                           : std::floor((thickness - kGrooveThickness) / 2);
    const float start = GetMinThumbSize() / 2;
    return IsHorizontal() ? RectT<float>(start, inset, Travel(), b.height - 2 * inset)
                          : RectT<float>(inset, start, b.width - 2 * inset, Travel());
}

void UI_Slider::SetSlideableDrawInsetPercent(float percent) {
    insetPercent_ = std::isfinite(percent) && percent >= 0 ? std::min(percent, 0.45f) : -1.0f;
    EmitInvalidate();
}

DrawSliderParameters UI_Slider::GetDrawSliderParameters() const {
    DrawSliderParameters p;
    p.slideable = GetSlideableDrawRect();
    p.thumb = GetThumbRect();
    p.thumbPosition = ValueToPosition(GetValue());
    p.horizontal = IsHorizontal();
    return p;
}

void UI_Slider::SetTicks(std::vector<double> ticks) {
    ticks.erase(std::remove_if(ticks.begin(), ticks.end(),
                               [](double t) { return !(t >= 0.0 && t <= 1.0); }),
                ticks.end());
    std::sort(ticks.begin(), ticks.end());
    ticks_ = std::move(ticks);
}

void UI_Slider::SetLeftClickBackgroundClickBehavior(int behavior) {
    leftBehavior_ = std::clamp(behavior, 0, 2);
}

void UI_Slider::SetRightClickBackgroundClickBehavior(int behavior) {
    rightBehavior_ = std::clamp(behavior, 0, 2);
}

void UI_Slider::LayoutThumb() {
    if (thumb_)
        thumb_->SetFrame(GetThumbRect());
}

void UI_Slider::UI_SizeChanged() {
    LayoutThumb();
}

void UI_Slider::JumpTo(double value, ModifierFlags modifiers) {
    BeginInteractiveChange(modifiers);
    SetValue(value);
    ContinueInteractiveChange(modifiers);
    FinishInteractiveChange(modifiers);
}

void UI_Slider::Scroll(bool up, bool modifier, double amount) {
    if (!std::isfinite(amount))
        return;
    const double step = amount * (modifier ? 0.001 : 0.01);
    // Up is towards the top of a vertical slider, where its value is 0.
    const double sign = IsHorizontal() == up ? 1.0 : -1.0;
    JumpTo(GetValue() + sign * step, {});
}

void UI_Slider::DoScrollThumb(const PointT<float>& pointer, ModifierFlags modifiers) {
    const float along = Along(pointer);
    double factor = 1.0;
    if (shiftIsFactor_ && modifiers.IsSet(ModifierKey::kShift))
        factor *= kModifierFactor;
    if (cmdIsFactor_ && modifiers.IsSet(ModifierKey::kCommand))
        factor *= kModifierFactor;
    const float travel = Travel();
    if (travel > 0)
        dragValue_ += double(along - lastAlong_) * factor / travel;
    lastAlong_ = along;
    double value = Clamp01(dragValue_);
    for (double tick : ticks_)
        if (std::abs(dragValue_ - tick) * travel <= kDetentPixels) {
            value = tick;
            break;
        }
    if (value != GetValue() || IsValueUnknown()) {
        SetValue(value);
        ContinueInteractiveChange(modifiers);
    }
}

void UI_Slider::BackgroundPress(const MouseEvent& event, int behavior) {
    const float along = Along(event.GetPosition());
    const ModifierFlags modifiers = event.GetModKey();
    if (behavior == kSliderBackgroundClickPage) {
        const double target = PositionToValue(along);
        const double value = GetValue();
        JumpTo(target > value ? std::min(target, value + kPage) : std::max(target, value - kPage),
               modifiers);
        return;
    }
    BeginInteractiveChange(modifiers);
    SetValue(PositionToValue(along));
    ContinueInteractiveChange(modifiers);
    dragValue_ = GetValue();
    lastAlong_ = along;
    thumb_->SetDownState(true);
    if (!BeginDrag(event)) {
        thumb_->SetDownState(false);
        FinishInteractiveChange(modifiers);
    }
}

bool UI_Slider::UI_DoMouseEvent(const MouseEvent& event) {
    UI_ControlView::UI_DoMouseEvent(event);
    const PointT<float> at = event.GetPosition();
    if (event.IsAction(PointerAction::kWheel)) {
        const PointT<float> d = event.GetWheelDelta();
        const float delta = std::abs(d.y) >= std::abs(d.x) ? d.y : d.x;
        if (delta == 0)
            return false;
        const ModifierFlags m = event.GetModKey();
        Scroll(delta > 0, m.IsAnySet(ModifierKey::kShift | ModifierKey::kCommand), std::abs(delta));
        return true;
    }
    if (!event.IsAction(PointerAction::kPress))
        return false;
    const bool onThumb = GetThumbRect().Contains(at);
    if (onThumb && event.IsButton(MouseButton::kLeft) &&
        !(altLeftIsRight_ && event.GetModKey().IsSet(ModifierKey::kAlt))) {
        BeginInteractiveChange(event.GetModKey());
        dragValue_ = GetValue();
        lastAlong_ = Along(at);
        thumb_->SetDownState(true);
        if (!BeginDrag(event)) {
            thumb_->SetDownState(false);
            FinishInteractiveChange();
        }
        return true;
    }
    if (onThumb && event.IsButton(MouseButton::kRight))
        return false; // the thumb's own menu, if it has one
    int behavior = kSliderBackgroundClickIgnore;
    if (event.IsButton(MouseButton::kLeft))
        behavior = altLeftIsRight_ && event.GetModKey().IsSet(ModifierKey::kAlt) ? rightBehavior_
                                                                                 : leftBehavior_;
    else if (event.IsButton(MouseButton::kRight))
        behavior = rightBehavior_;
    const float along = Along(at);
    const bool inOverhang =
        along < GetMinThumbSize() / 2 || along > Length() - GetMinThumbSize() / 2;
    if (behavior == kSliderBackgroundClickIgnore || (ignoreOverhang_ && inOverhang && !onThumb))
        return false;
    BackgroundPress(event, behavior);
    return true;
}

void UI_Slider::UI_DoDragEvent(const MouseEvent& event) {
    if (event.IsAction(PointerAction::kMove))
        DoScrollThumb(event.GetPosition(), event.GetModKey());
}

void UI_Slider::UI_DoDragEnd(bool cancelled) {
    thumb_->SetDownState(false);
    UI_InteractiveControlView::UI_DoDragEnd(cancelled);
}

bool UI_Slider::UI_DoKeyboardEvent(const KeyboardEvent& event) {
    if (!event.IsActionKeyDown() || !HasFocus())
        return false;
    const bool fine = event.GetModKey().IsSet(ModifierKey::kShift);
    const bool horizontal = IsHorizontal();
    switch (event.GetCode()) {
    case KeyboardCode::kUp: Scroll(true, fine, kKeyStep); return true;
    case KeyboardCode::kDown: Scroll(false, fine, kKeyStep); return true;
    case KeyboardCode::kRight: Scroll(horizontal, fine, kKeyStep); return true;
    case KeyboardCode::kLeft: Scroll(!horizontal, fine, kKeyStep); return true;
    case KeyboardCode::kPageUp: Scroll(true, false, kPage * 100); return true;
    case KeyboardCode::kPageDown: Scroll(false, false, kPage * 100); return true;
    case KeyboardCode::kHome: JumpTo(0.0, event.GetModKey()); return true;
    case KeyboardCode::kEnd: JumpTo(1.0, event.GetModKey()); return true;
    default: return false;
    }
}

void UI_Slider::DrawTrack(Penrig* penrig, const DrawSliderParameters& p) {
    const skins::Palette& palette = skins::GetPalette();
    RectT<float> groove = p.slideable;
    // The groove reaches under the thumb at both ends so the thumb never hangs over nothing.
    if (p.horizontal)
        groove = groove.Inset(-2, 0);
    else
        groove = groove.Inset(0, -2);
    groove = RectT<float>::FromEdges(std::floor(groove.x), std::floor(groove.y),
                                     std::ceil(groove.Right()), std::ceil(groove.Bottom()));
    const float radius = std::min({2.0f, groove.width / 2, groove.height / 2});
    penrig->FormRoundedRect(groove, radius);
    penrig->SetColor(palette.textFieldBackground);
    penrig->Fill();
    // The filled part runs from the value's start (left, or bottom of a vertical slider).
    RectT<float> filled =
        p.horizontal
            ? RectT<float>::FromEdges(groove.x, groove.y, p.thumbPosition, groove.Bottom())
            : RectT<float>::FromEdges(groove.x, p.thumbPosition, groove.Right(), groove.Bottom());
    if (!filled.IsEmpty() && !IsValueUnknown()) {
        penrig->FormRoundedRect(filled, radius);
        penrig->SetColor(IsDisabled() ? palette.disabledText : skins::GetButtonColor());
        penrig->Fill();
    }
    penrig->FormRoundedRect(groove.Inset(0.5f, 0.5f), radius);
    penrig->SetPen(1.0f, palette.textFieldBorder);
    penrig->Stroke();
}

void UI_Slider::UI_Draw(Penrig* penrig) {
    const DrawSliderParameters p = GetDrawSliderParameters();
    DrawTrack(penrig, p);
    UI_InteractiveControlView::UI_Draw(penrig);
    if (HasFocus() && !GetSuppressFocusDrawing())
        skins::DrawFocusRing(*penrig, p.thumb.Inset(2, 2));
}

} // namespace qorui
