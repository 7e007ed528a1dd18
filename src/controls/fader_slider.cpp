#include "controls/fader_slider.hpp"

#include "controls/edit_number.hpp"
#include "platform/core/localizer.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/menus/os_menu.hpp"
#include "platform/menus/ui_menu_overlay.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/ui_node_manager.hpp"

#include <algorithm>
#include <cmath>

namespace qoraudiofiltersui {

using qorcore::ColorRGBA;
using qorcore::PointT;
using qorcore::RectT;
using qorui::KeyboardCode;
using qorui::ModifierFlags;
using qorui::MouseButton;
using qorui::PointerAction;

namespace {

constexpr const char* kZeroText = "$$$/qoraudiofiltersui/EditNumber/FaderSliderThumb/Zero=Zero";

/// A hue in degrees at the given saturation and brightness.
ColorRGBA ColorFromHue(double hue, float saturation, float value) {
    const double h = std::fmod(std::fmod(hue, 360.0) + 360.0, 360.0) / 60.0;
    const int sector = int(h) % 6;
    const float f = float(h - std::floor(h));
    const float p = value * (1 - saturation);
    const float q = value * (1 - saturation * f);
    const float t = value * (1 - saturation * (1 - f));
    switch (sector) {
    case 0: return {value, t, p};
    case 1: return {q, value, p};
    case 2: return {p, value, t};
    case 3: return {p, q, value};
    case 4: return {t, p, value};
    default: return {value, p, q};
    }
}

} // namespace

// ---- FaderSliderThumb ----

FaderSliderThumb::FaderSliderThumb() {
    SetPassesPressesToParent(true);
    SetWantsKeyboardFocus(false);
}

void FaderSliderThumb::SetHue(double hue) {
    hue_ = std::isnan(hue) ? -1.0 : hue;
    EmitInvalidate();
}

bool FaderSliderThumb::IsCaptured() const {
    const qorui::InputCapture* capture = qorui::UI_NodeManager::Get().GetCurrentCapture();
    return capture && (capture->GetNode() == this || capture->GetNode() == GetParent());
}

void FaderSliderThumb::ZeroInSliderGesture(EditNumber& editNumber) {
    auto* slider = dynamic_cast<qorui::UI_InteractiveControlView*>(GetParent());
    if (!slider)
        return;
    qorcore::IntrusivePtr<qorui::UI_Node> keep(slider);
    slider->BeginInteractiveChange();
    editNumber.SetValue(0.0);
    slider->ContinueInteractiveChange();
    slider->FinishInteractiveChange();
}

bool FaderSliderThumb::UI_DoMouseEvent(const qorui::MouseEvent& event) {
    const bool left = event.IsButton(MouseButton::kLeft);
    const bool zeroModifiers = event.GetModKey() == ModifierFlags(kZeroModifiers);
    if (event.IsLeftButtonDoubleClick()) {
        if (EditNumber* editNumber = EditNumber::FindEnclosing(this))
            ZeroInSliderGesture(*editNumber);
        return true;
    }
    // The press of an Alt-click or of a double click is no drag: the click acts on release.
    if (event.IsAction(PointerAction::kPress) && left &&
        (zeroModifiers || event.GetClickCount() == 2))
        return true;
    if (event.IsAction(PointerAction::kRelease) && left && zeroModifiers) {
        ZeroInSliderGesture(EditNumber::GetEnclosing(this));
        return true;
    }
    if (event.IsRightButtonSingleDown()) {
        DoContextMenu(event.GetPosition());
        return true;
    }
    return UI_Button::UI_DoMouseEvent(event);
}

void FaderSliderThumb::DoContextMenu(const PointT<float>& position) {
    if (!GetWindow())
        return;
    qorcore::IntrusivePtr<qorui::UI_Node> keep(this);
    auto menu = qorui::CreateOSMenu();
    menu->AppendItem(kMenuZero, qorcore::Localize(kZeroText));
    if (qorui::UI_DoContextMenu(*menu, *this, position) != kMenuZero)
        return;
    EditNumber* editNumber = EditNumber::FindEnclosing(this);
    auto* slider = dynamic_cast<qorui::UI_InteractiveControlView*>(GetParent());
    if (!editNumber || !slider)
        return;
    ZeroInSliderGesture(*editNumber);
}

void FaderSliderThumb::UI_Draw(qorui::Penrig* penrig) {
    const RectT<float> b = GetBounds();
    qorui::skins::FaceState face;
    face.pressed = IsCaptured() || GetDownState();
    face.hovered = GetStateFlags().IsSet(kStateHovered);
    face.enabled = !IsDisabled();
    qorui::skins::DrawButtonFace(*penrig, b, face);
    const qorui::skins::Palette& palette = qorui::skins::GetPalette();
    if (hue_ >= 0 && face.enabled) {
        const float radius = std::min({palette.cornerRadius, b.width / 4, b.height / 4});
        penrig->FormRoundedRect(b.Inset(1.5f, 1.5f), radius);
        penrig->SetColor(ColorFromHue(hue_, 0.6f, 0.95f).WithAlpha(face.pressed ? 0.6f : 0.45f));
        penrig->Fill();
    }
    // The cap's grooves: a strong line where the level is read, lighter ones either side.
    const ColorRGBA line = face.enabled ? palette.buttonBorder : palette.disabledText;
    const auto* slider = dynamic_cast<const qorui::UI_Slider*>(GetParent());
    const bool vertical = slider && !slider->IsHorizontal();
    const float middle = std::floor((vertical ? b.height : b.width) / 2) + 0.5f;
    const float across = vertical ? b.width : b.height;
    for (int i = -1; i <= 1; ++i) {
        const float at = middle + float(i) * 5.0f;
        penrig->SetPen(1.0f, i == 0 ? line : line.WithAlpha(line.alpha * 0.45f));
        if (vertical)
            penrig->DrawLine(3, at, across - 3, at);
        else
            penrig->DrawLine(at, 3, at, across - 3);
    }
    UI_ControlView::UI_Draw(penrig);
}

// ---- FaderSlider ----

FaderSlider::FaderSlider(qorui::SliderDirection direction, bool small)
    : UI_Slider(direction, small) {
    InstallSliderThumb(qorcore::MakeIntrusive<FaderSliderThumb>());
    SetLeftClickBackgroundClickBehavior(qorui::kSliderBackgroundClickJumpAndDrag);
    SetRightClickBackgroundClickBehavior(qorui::kSliderBackgroundClickPage);
    SetTreatAltLeftClickBackgroundClickAsARightClick(true);
    SetIgnoreThumbOverhangAreaWhenClickingOnSlider(true);
    SetIsShiftModifierAFactor(true);
    SetIsCmdModifierAFactor(true);
    std::vector<double> ticks;
    for (double level = kLowestDetentDecibels; level <= kHighestDetentDecibels;
         level += kStepDecibels)
        ticks.push_back(SliderValueFromFaderPosition(GetTranslator().GetNormalizedValue(level)));
    SetTicks(std::move(ticks));
}

const qorcore::FaderTranslator<double>& FaderSlider::GetTranslator() {
    static const qorcore::FaderTranslator<double> translator(0.75, 15.0, 15.0);
    return translator;
}

double FaderSlider::SliderValueFromFaderPosition(double position) const {
    return IsHorizontal() ? position : 1.0 - position;
}

double FaderSlider::FaderPositionFromSliderValue(double value) const {
    return IsHorizontal() ? value : 1.0 - value;
}

double FaderSlider::GetDecibels() const {
    return GetTranslator().GetDecibelValue(FaderPositionFromSliderValue(GetValue()));
}

void FaderSlider::SetHue(double hue) {
    if (FaderSliderThumb* thumb = GetFaderThumb())
        thumb->SetHue(hue);
}

FaderSliderThumb* FaderSlider::GetFaderThumb() const {
    return dynamic_cast<FaderSliderThumb*>(GetSliderThumb());
}

void FaderSlider::DoScrollThumb(const PointT<float>& pointer, ModifierFlags modifiers) {
    if (!modifiers.IsSet(kFreeDragModifiers)) {
        UI_Slider::DoScrollThumb(pointer, modifiers);
        return;
    }
    std::vector<double> detents = GetTicks();
    SetTicks({});
    UI_Slider::DoScrollThumb(pointer, modifiers);
    SetTicks(std::move(detents));
}

void FaderSlider::Scroll(bool up, bool modifier, double amount) {
    if (!modifier) {
        UI_Slider::Scroll(up, modifier, amount);
        return;
    }
    double level = GetDecibels();
    // The bottom is minus infinity; a step up from there starts at the lowest detent.
    if (!std::isfinite(level))
        level = kLowestDetentDecibels - kStepDecibels;
    const double target = level + (up ? kStepDecibels : -kStepDecibels);
    BeginInteractiveChange();
    SetValue(SliderValueFromFaderPosition(GetTranslator().GetNormalizedValue(target)));
    ContinueInteractiveChange();
    FinishInteractiveChange();
}

bool FaderSlider::UI_DoKeyboardEvent(const qorui::KeyboardEvent& event) {
    if (!HasFocus() || IsDisabled())
        return false;
    const bool pageKey =
        event.CompareCode(KeyboardCode::kPageUp) || event.CompareCode(KeyboardCode::kPageDown);
    if (event.IsActionKeyDown() && pageKey) {
        if (EditNumber* editNumber = EditNumber::FindEnclosing(this)) {
            qorcore::IntrusivePtr<qorui::UI_Node> keep(editNumber);
            // The edit number's value is the level the cap shows, without the law's rounding.
            const double level =
                editNumber->IsValueUnknown() ? GetDecibels() : editNumber->GetValue();
            const double step =
                event.CompareCode(KeyboardCode::kPageUp) ? kStepDecibels : -kStepDecibels;
            const ModifierFlags modifiers = event.GetModKey();
            editNumber->BeginInteractiveChange(modifiers);
            editNumber->SetValue(level + step);
            editNumber->ContinueInteractiveChange(modifiers);
            editNumber->FinishInteractiveChange(modifiers);
            return true;
        }
    }
    return UI_Slider::UI_DoKeyboardEvent(event);
}

} // namespace qoraudiofiltersui
