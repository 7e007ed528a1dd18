#include "platform/skins/skins.hpp"

#include "platform/draw/penrig.hpp"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace qorui::skins {

namespace {

constexpr ColorRGBA Rgb(int r, int g, int b, int a = 255) {
    return ColorRGBA::FromBytes(r, g, b, a);
}

// Light panels, bevelled faces with a soft gradient, a blue accent.
const Palette kClassic{
    .contentBackground = Rgb(236, 236, 236),
    .panelBackground = Rgb(226, 226, 226),
    .defaultText = Rgb(24, 24, 24),
    .disabledText = Rgb(150, 150, 150),
    .focus = Rgb(64, 128, 220),
    .divider = Rgb(170, 170, 170),
    .listBoxBorder = Rgb(140, 140, 140),
    .listBoxBackground = Rgb(255, 255, 255),
    .listBoxAlternateRow = Rgb(244, 246, 250),
    .selection = Rgb(56, 117, 215),
    .selectionText = Rgb(255, 255, 255),
    .button = Rgb(56, 117, 215),
    .buttonFaceTop = Rgb(252, 252, 252),
    .buttonFaceBottom = Rgb(222, 222, 222),
    .buttonFacePressedTop = Rgb(196, 196, 196),
    .buttonFacePressedBottom = Rgb(214, 214, 214),
    .buttonFaceHover = Rgb(244, 244, 244),
    .buttonBorder = Rgb(128, 128, 128),
    .buttonText = Rgb(24, 24, 24),
    .textFieldBackground = Rgb(255, 255, 255),
    .textFieldBorder = Rgb(120, 120, 120),
    .textFieldText = Rgb(0, 0, 0),
    .textFieldSelection = Rgb(170, 200, 245),
    .menuBackground = Rgb(248, 248, 248),
    .menuBorder = Rgb(150, 150, 150),
    .menuText = Rgb(20, 20, 20),
    .menuDisabledText = Rgb(160, 160, 160),
    .menuHighlight = Rgb(56, 117, 215),
    .menuHighlightText = Rgb(255, 255, 255),
    .menuSeparator = Rgb(215, 215, 215),
    .menuShadow = Rgb(0, 0, 0, 48),
    .toolTipBackground = Rgb(255, 252, 220),
    .toolTipBorder = Rgb(120, 120, 100),
    .toolTipText = Rgb(20, 20, 20),
    .dialogBackground = Rgb(236, 236, 236),
    .dialogBorder = Rgb(120, 120, 120),
    .dialogScrim = Rgb(0, 0, 0, 64),
    .rulerText = Rgb(32, 32, 32),
    .rulerTick = Rgb(64, 64, 64),
    .cornerRadius = 3.0f,
    .fontSize = 11.0f,
    .smallFontSize = 9.0f,
    .menuItemHeight = 20.0f,
    .menuSeparatorHeight = 7.0f,
};

// Dark panels, flat faces, a cyan accent.
const Palette kV7{
    .contentBackground = Rgb(46, 48, 52),
    .panelBackground = Rgb(38, 40, 44),
    .defaultText = Rgb(220, 222, 226),
    .disabledText = Rgb(110, 113, 118),
    .focus = Rgb(40, 170, 220),
    .divider = Rgb(78, 81, 87),
    .listBoxBorder = Rgb(90, 93, 99),
    .listBoxBackground = Rgb(30, 32, 35),
    .listBoxAlternateRow = Rgb(36, 38, 42),
    .selection = Rgb(28, 128, 170),
    .selectionText = Rgb(255, 255, 255),
    .button = Rgb(40, 170, 220),
    .buttonFaceTop = Rgb(70, 73, 79),
    .buttonFaceBottom = Rgb(70, 73, 79),
    .buttonFacePressedTop = Rgb(28, 128, 170),
    .buttonFacePressedBottom = Rgb(28, 128, 170),
    .buttonFaceHover = Rgb(82, 86, 93),
    .buttonBorder = Rgb(96, 100, 107),
    .buttonText = Rgb(230, 232, 236),
    .textFieldBackground = Rgb(24, 25, 28),
    .textFieldBorder = Rgb(40, 170, 220),
    .textFieldText = Rgb(236, 238, 240),
    .textFieldSelection = Rgb(28, 100, 140),
    .menuBackground = Rgb(52, 55, 60),
    .menuBorder = Rgb(24, 25, 28),
    .menuText = Rgb(226, 228, 232),
    .menuDisabledText = Rgb(116, 119, 125),
    .menuHighlight = Rgb(28, 128, 170),
    .menuHighlightText = Rgb(255, 255, 255),
    .menuSeparator = Rgb(76, 79, 85),
    .menuShadow = Rgb(0, 0, 0, 96),
    .toolTipBackground = Rgb(24, 25, 28),
    .toolTipBorder = Rgb(90, 93, 99),
    .toolTipText = Rgb(226, 228, 232),
    .dialogBackground = Rgb(52, 55, 60),
    .dialogBorder = Rgb(24, 25, 28),
    .dialogScrim = Rgb(0, 0, 0, 110),
    .rulerText = Rgb(200, 203, 208),
    .rulerTick = Rgb(150, 153, 158),
    .cornerRadius = 2.0f,
    .fontSize = 11.0f,
    .smallFontSize = 9.0f,
    .menuItemHeight = 22.0f,
    .menuSeparatorHeight = 9.0f,
};

Skin& CurrentSkin() {
    static Skin skin = GetSkinFromEnvironment();
    return skin;
}

} // namespace

std::string_view GetSkinName(Skin skin) {
    return skin == Skin::kV7 ? "v7" : "classic";
}

std::optional<Skin> ParseSkinName(std::string_view name) {
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (lower == "classic")
        return Skin::kClassic;
    if (lower == "v7")
        return Skin::kV7;
    return std::nullopt;
}

Skin GetSkinFromEnvironment() {
    const char* value = std::getenv("QAFUI_SKIN");
    if (!value || !*value)
        return Skin::kClassic;
    if (auto skin = ParseSkinName(value))
        return *skin;
    std::fprintf(stderr,
                 "qafui: QAFUI_SKIN=\"%s\" is neither \"classic\" nor \"v7\"; using classic\n",
                 value);
    return Skin::kClassic;
}

Skin GetSkin() {
    return CurrentSkin();
}

void SetSkin(Skin skin) {
    if (skin != Skin::kClassic && skin != Skin::kV7)
        throw std::invalid_argument("skins::SetSkin: unknown skin");
    if (CurrentSkin() == skin)
        return;
    CurrentSkin() = skin;
    GetThemeChangedSignal()();
}

bool IsRunningV7OrBeyond() {
    return CurrentSkin() == Skin::kV7;
}

const Palette& GetPalette(Skin skin) {
    return skin == Skin::kV7 ? kV7 : kClassic;
}

const Palette& GetPalette() {
    return GetPalette(CurrentSkin());
}

qorcore::Signal<void()>& GetThemeChangedSignal() {
    static qorcore::Signal<void()> signal;
    return signal;
}

qorcore::Connection ConnectThemeChanged(std::function<void()> slot) {
    return GetThemeChangedSignal().Connect(std::move(slot));
}

qorcore::Connection InstallThemeChangedFunction(std::function<void()> slot) {
    return ConnectThemeChanged(std::move(slot));
}

void DrawButtonFace(penrig::Penrig& penrig, const qorcore::RectT<float>& rect,
                    const FaceState& state) {
    const Palette& p = GetPalette();
    penrig::Penrig::StateSaver saver(penrig);
    // The border runs on half pixels so that it is one device pixel wide at 1x and two at 2x.
    const qorcore::RectT<float> frame = rect.Inset(0.5f, 0.5f);
    const bool down = state.pressed || state.selected;
    const ColorRGBA top = down            ? p.buttonFacePressedTop
                          : state.hovered ? p.buttonFaceHover
                                          : p.buttonFaceTop;
    const ColorRGBA bottom = down            ? p.buttonFacePressedBottom
                             : state.hovered ? p.buttonFaceHover
                                             : p.buttonFaceBottom;
    if (!state.enabled)
        penrig.SetAlpha(0.5f);
    // A vertical gradient in bands one logical pixel high: exact and identical at every scale.
    const int rows = std::max(1, static_cast<int>(rect.height));
    for (int i = 0; i < rows; ++i) {
        const float t = rows > 1 ? float(i) / float(rows - 1) : 0.0f;
        const ColorRGBA c{
            top.red + (bottom.red - top.red) * t, top.green + (bottom.green - top.green) * t,
            top.blue + (bottom.blue - top.blue) * t, top.alpha + (bottom.alpha - top.alpha) * t};
        const float bandHeight = i == rows - 1 ? rect.Bottom() - (rect.y + float(i)) : 1.0f;
        penrig.PushClip({rect.x, rect.y + float(i), rect.width, bandHeight});
        penrig.SetColor(c);
        penrig.NewPath();
        penrig.FormRoundedRect(frame, p.cornerRadius);
        penrig.Fill();
        penrig.PopClip();
    }
    penrig.SetPen(1.0f, state.selected ? p.button : p.buttonBorder);
    penrig.NewPath();
    penrig.FormRoundedRect(frame, p.cornerRadius);
    penrig.Stroke();
    if (state.focused && state.enabled)
        DrawFocusRing(penrig, rect);
}

void DrawFocusRing(penrig::Penrig& penrig, const qorcore::RectT<float>& rect) {
    const Palette& p = GetPalette();
    penrig::Penrig::StateSaver saver(penrig);
    penrig.SetPen(2.0f, p.focus.WithAlpha(0.8f));
    penrig.NewPath();
    penrig.FormRoundedRect(rect.Inset(-1.0f, -1.0f), p.cornerRadius + 1.0f);
    penrig.Stroke();
}

namespace design {

ColorRGBA GetContentBackgroundColor() {
    return GetPalette().contentBackground;
}
ColorRGBA GetFocusColor() {
    return GetPalette().focus;
}
ColorRGBA GetDividerColor() {
    return GetPalette().divider;
}
ColorRGBA GetListBoxBorderColor() {
    return GetPalette().listBoxBorder;
}
ColorRGBA GetDefaultTextColor() {
    return GetPalette().defaultText;
}
ColorRGBA GetButtonColor() {
    return GetPalette().button;
}

ColorRGBA GetSpectrumGrayColor(int index) {
    if (index < 0 || index >= kSpectrumGrayCount)
        throw std::out_of_range("skins::GetSpectrumGrayColor: index " + std::to_string(index) +
                                " is outside 0..10");
    // Even steps of lightness; the newer look is a touch cooler.
    const float level = 0.08f + 0.09f * float(index);
    if (IsRunningV7OrBeyond())
        return {level * 0.96f, level * 0.98f, std::min(1.0f, level * 1.04f), 1.0f};
    return {level, level, level, 1.0f};
}

} // namespace design

} // namespace qorui::skins
