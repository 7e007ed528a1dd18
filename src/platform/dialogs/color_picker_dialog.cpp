#include "platform/dialogs/color_picker_dialog.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/ui_window.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace sharedui {

using qorcore::ColorRGBA;
using qorui::RectT;

namespace {
constexpr float kSwatchWidth = 88.0f;
constexpr float kFieldHeight = 22.0f;
constexpr float kRowGap = 8.0f;
constexpr float kLabelWidth = 18.0f;
constexpr float kFieldWidth = 70.0f;
constexpr float kColumnGap = 14.0f;
constexpr float kContentWidth = kSwatchWidth + 2 * (kColumnGap + kLabelWidth + kFieldWidth);
constexpr float kContentHeight = 3 * kFieldHeight + 2 * kRowGap;

constexpr const char* kLabels[] = {"H", "S", "V", "R", "G", "B"};
constexpr const char* kUnits[] = {"\u00B0", "%", "%", "", "", ""};
constexpr double kMax[] = {360, 100, 100, 255, 255, 255};

float Limit01(float v) {
    return std::isfinite(v) ? std::clamp(v, 0.0f, 1.0f) : 0.0f;
}

ColorRGBA FromHSV(double h, double s, double v, float alpha) {
    h = std::fmod(h, 360.0) / 60.0;
    const double c = v * s;
    const double x = c * (1 - std::abs(std::fmod(h, 2.0) - 1));
    const double m = v - c;
    double r = 0, g = 0, b = 0;
    switch (int(h) % 6) {
    case 0: r = c, g = x; break;
    case 1: r = x, g = c; break;
    case 2: g = c, b = x; break;
    case 3: g = x, b = c; break;
    case 4: r = x, b = c; break;
    default: r = c, b = x; break;
    }
    return {float(r + m), float(g + m), float(b + m), alpha};
}
} // namespace

ColorPickerDialog::ColorPickerDialog(qorui::UI_Node* parent, std::string title)
    : UI_ModalDialog(std::move(title), kContentWidth, kContentHeight), parent_(parent) {
    AddButton(kResponseAccept, "OK");
    AddButton(kResponseCancelButton, "Cancel");
    for (int i = 0; i < kFieldCount; ++i) {
        auto field = qorcore::MakeIntrusive<qorui::UI_DialogHotTextNumber>(this);
        field->SetMinValue(0);
        field->SetMaxValue(kMax[i]);
        field->SetDecimalPlaces(0);
        field->SetTextLabel(kUnits[i]);
        field->SetAlignment(qorui::penrig::HorizontalAlignment::kCenter);
        field->NotifyWhenChangedInteractively(
            [this, i](const qorui::UI_InteractiveControlChangedMessage& message) {
                if (message.GetChangeMessage() != qorui::kInteractiveChangeBegin)
                    FieldChanged(Field(i));
            });
        fields_[std::size_t(i)] = field;
        ChildPushBack(field);
    }
    ShowColorInFields();
}

qorui::UI_HotTextNumber* ColorPickerDialog::GetField(Field field) const {
    if (field < 0 || field >= kFieldCount)
        throw std::out_of_range("ColorPickerDialog::GetField: no such field");
    return fields_[std::size_t(field)].get();
}

void ColorPickerDialog::SetColor(const ColorRGBA& color) {
    original_ = {Limit01(color.red), Limit01(color.green), Limit01(color.blue),
                 Limit01(color.alpha)};
    color_ = original_;
    hue_ = saturation_ = -1; // worked out from the colour
    ShowColorInFields();
    EmitInvalidate();
}

void ColorPickerDialog::ChangeColor(const ColorRGBA& color) {
    const ColorRGBA limited{Limit01(color.red), Limit01(color.green), Limit01(color.blue),
                            Limit01(color.alpha)};
    if (limited == color_)
        return;
    color_ = limited;
    hue_ = saturation_ = -1;
    ShowColorInFields();
    EmitInvalidate();
    if (changed_)
        changed_();
}

void ColorPickerDialog::ShowColorInFields() {
    const double r = color_.red, g = color_.green, b = color_.blue;
    const double max = std::max({r, g, b}), min = std::min({r, g, b});
    const double delta = max - min;
    // Grey has no hue and black no saturation: keep the ones the user set.
    if (delta > 0 || hue_ < 0) {
        double h = 0;
        if (delta > 0) {
            if (max == r)
                h = 60 * std::fmod((g - b) / delta + 6, 6.0);
            else if (max == g)
                h = 60 * ((b - r) / delta + 2);
            else
                h = 60 * ((r - g) / delta + 4);
        }
        hue_ = h;
    }
    if (max > 0 || saturation_ < 0)
        saturation_ = max > 0 ? delta / max : 0.0;
    const double values[] = {hue_, saturation_ * 100, max * 100, r * 255.0, g * 255.0, b * 255.0};
    updating_ = true;
    for (int i = 0; i < kFieldCount; ++i)
        fields_[std::size_t(i)]->SetValue(std::round(values[i]));
    updating_ = false;
}

void ColorPickerDialog::FieldChanged(Field field) {
    if (updating_)
        return;
    auto value = [this](Field f) {
        return fields_[std::size_t(f)]->GetValue();
    };
    ColorRGBA next;
    if (field <= kValue) {
        const double h = value(kHue), s = value(kSaturation) / 100;
        next = FromHSV(h >= 360 ? 0 : h, s, value(kValue) / 100, color_.alpha);
        if (next == color_)
            return;
        color_ = next;
        hue_ = h >= 360 ? 0 : h; // the user's hue and saturation stand even on grey
        saturation_ = s;
    } else {
        next = {float(value(kRed) / 255), float(value(kGreen) / 255), float(value(kBlue) / 255),
                color_.alpha};
        if (next == color_)
            return;
        color_ = next;
    }
    ShowColorInFields();
    EmitInvalidate();
    if (changed_)
        changed_();
}

int ColorPickerDialog::RunModal(qorui::UI_Window& window) {
    const int response = UI_ModalDialog::RunModal(window);
    if (response != kResponseAccept)
        ChangeColor(original_);
    return response;
}

int ColorPickerDialog::RunModal() {
    qorui::UI_Window* window = parent_ ? parent_->GetWindow() : nullptr;
    if (!window)
        throw std::invalid_argument("ColorPickerDialog::RunModal: the parent is in no window");
    return RunModal(*window);
}

RectT<float> ColorPickerDialog::GetFieldRect(int field) const {
    if (field < 0 || field >= kFieldCount)
        return {};
    const RectT<float> area = GetContentArea();
    const int column = field / 3, row = field % 3;
    const float x = area.x + kSwatchWidth + kColumnGap +
                    float(column) * (kLabelWidth + kFieldWidth + kColumnGap) + kLabelWidth;
    return {x, area.y + float(row) * (kFieldHeight + kRowGap), kFieldWidth, kFieldHeight};
}

RectT<float> ColorPickerDialog::GetSwatchRect() const {
    const RectT<float> area = GetContentArea();
    return {area.x, area.y, kSwatchWidth, area.height};
}

void ColorPickerDialog::UI_ModalStarted() {
    UI_ModalDialog::UI_ModalStarted();
    for (int i = 0; i < kFieldCount; ++i)
        fields_[std::size_t(i)]->SetFrame(GetFieldRect(i));
}

void ColorPickerDialog::DrawContent(qorui::Penrig* p, const RectT<float>& area) const {
    const qorui::skins::Palette& pal = qorui::skins::GetPalette();
    const RectT<float> swatch = GetSwatchRect();
    const float half = std::floor(swatch.height / 2);
    p->FillRect({swatch.x, swatch.y, swatch.width, half}, color_.WithAlpha(1));
    p->FillRect({swatch.x, swatch.y + half, swatch.width, swatch.height - half},
                original_.WithAlpha(1));
    p->FrameRect(swatch, pal.textFieldBorder);
    p->SetFont(qorui::penrig::Font(pal.fontSize));
    for (int i = 0; i < kFieldCount; ++i) {
        const RectT<float> field = GetFieldRect(i);
        p->SetColor(pal.defaultText);
        p->DrawText(kLabels[i], {field.x - kLabelWidth, field.y, kLabelWidth - 4, field.height});
        p->FillRect(field, pal.textFieldBackground);
        p->FrameRect(field, pal.textFieldBorder);
    }
    (void)area;
}

} // namespace sharedui
