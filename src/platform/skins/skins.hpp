#pragma once

#include "platform/core/color_rgba.hpp"
#include "platform/core/connection.hpp"
#include "platform/core/rect.hpp"
#include "platform/core/signal.hpp"

#include <functional>
#include <optional>
#include <string_view>

namespace qorui {
namespace penrig {
class Penrig;
}

/// The two looks of the toolkit. Controls never branch on the look while drawing: they ask the
/// current skin for colours, metrics and faces, so a new look is a new table, not new `if`s.
///
/// The look in force at start is "classic" unless the environment variable QAFUI_SKIN says
/// "v7" (or "classic"); `SetSkin` changes it at run time and tells every listener.
namespace skins {

using qorcore::ColorRGBA;

enum class Skin { kClassic = 0, kV7 = 1 };

/// Everything a look decides, in one table per look.
struct Palette {
    // Content
    ColorRGBA contentBackground;
    ColorRGBA panelBackground;
    ColorRGBA defaultText;
    ColorRGBA disabledText;
    ColorRGBA focus;
    ColorRGBA divider;
    ColorRGBA listBoxBorder;
    ColorRGBA listBoxBackground;
    ColorRGBA listBoxAlternateRow;
    ColorRGBA selection;
    ColorRGBA selectionText;
    // Buttons
    ColorRGBA button; ///< the look's accent for selected buttons and frames
    ColorRGBA buttonFaceTop;
    ColorRGBA buttonFaceBottom;
    ColorRGBA buttonFacePressedTop;
    ColorRGBA buttonFacePressedBottom;
    ColorRGBA buttonFaceHover;
    ColorRGBA buttonBorder;
    ColorRGBA buttonText;
    // Text fields
    ColorRGBA textFieldBackground;
    ColorRGBA textFieldBorder;
    ColorRGBA textFieldText;
    ColorRGBA textFieldSelection;
    // Menus
    ColorRGBA menuBackground;
    ColorRGBA menuBorder;
    ColorRGBA menuText;
    ColorRGBA menuDisabledText;
    ColorRGBA menuHighlight;
    ColorRGBA menuHighlightText;
    ColorRGBA menuSeparator;
    ColorRGBA menuShadow;
    // Tool tips and dialogs
    ColorRGBA toolTipBackground;
    ColorRGBA toolTipBorder;
    ColorRGBA toolTipText;
    ColorRGBA dialogBackground;
    ColorRGBA dialogBorder;
    ColorRGBA dialogScrim; ///< laid over the window behind a modal dialog
    // Rulers
    ColorRGBA rulerText;
    ColorRGBA rulerTick;
    // Metrics, in logical pixels
    float cornerRadius;
    float fontSize;
    float smallFontSize;
    float menuItemHeight;
    float menuSeparatorHeight;
};

Skin GetSkin();
/// Changes the look; the theme-changed signal runs when it really changes.
void SetSkin(Skin skin);
bool IsRunningV7OrBeyond();
/// "classic" or "v7".
std::string_view GetSkinName(Skin skin);
/// The skin of a name as QAFUI_SKIN takes it ("classic", "v7", any case); empty for others.
std::optional<Skin> ParseSkinName(std::string_view name);
/// The look QAFUI_SKIN asks for; classic when unset. An unknown value is reported on standard
/// error and gives classic.
Skin GetSkinFromEnvironment();

const Palette& GetPalette();
const Palette& GetPalette(Skin skin);

/// Runs after every change of look, on the main thread.
qorcore::Signal<void()>& GetThemeChangedSignal();
[[nodiscard]] qorcore::Connection ConnectThemeChanged(std::function<void()> slot);
/// Keeps `slot` connected for as long as the returned handle lives.
[[nodiscard]] qorcore::Connection InstallThemeChangedFunction(std::function<void()> slot);

/// Sets a look for a scope and puts the previous one back (for tests and renderers).
class ScopedSkin {
public:
    explicit ScopedSkin(Skin skin) : previous_(GetSkin()) { SetSkin(skin); }
    ~ScopedSkin() { SetSkin(previous_); }
    ScopedSkin(const ScopedSkin&) = delete;
    ScopedSkin& operator=(const ScopedSkin&) = delete;

private:
    Skin previous_;
};

/// The states of a button face.
struct FaceState {
    bool pressed = false;
    bool hovered = false;
    bool selected = false;
    bool enabled = true;
    bool focused = false;
};

/// Draws a push-button face (fill, border, focus ring) in the current look, crisp at any scale.
void DrawButtonFace(penrig::Penrig& penrig, const qorcore::RectT<float>& rect,
                    const FaceState& state);
/// A focus ring just outside `rect`.
void DrawFocusRing(penrig::Penrig& penrig, const qorcore::RectT<float>& rect);

/// The theme colours, read from the current look each time.
namespace design {
ColorRGBA GetContentBackgroundColor();
ColorRGBA GetFocusColor();
ColorRGBA GetDividerColor();
ColorRGBA GetListBoxBorderColor();
ColorRGBA GetDefaultTextColor();
ColorRGBA GetButtonColor();
/// The greys of graphs on a dark background, from 0 (the darkest) to 10 (the lightest). An
/// index outside 0..10 throws std::out_of_range.
ColorRGBA GetSpectrumGrayColor(int index);
constexpr int kSpectrumGrayCount = 11;
} // namespace design

using design::GetButtonColor;
using design::GetContentBackgroundColor;
using design::GetDefaultTextColor;
using design::GetDividerColor;
using design::GetFocusColor;
using design::GetListBoxBorderColor;
using design::GetSpectrumGrayColor;

} // namespace skins
} // namespace qorui
