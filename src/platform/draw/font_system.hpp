#pragma once

#include "platform/draw/font.hpp"

#include <string>

typedef struct _PangoFontMap PangoFontMap;
typedef struct _PangoContext PangoContext;
typedef struct _PangoFontDescription PangoFontDescription;

namespace qorui::penrig {

/// The one font set-up of the process: a fontconfig configuration that sees nothing but the
/// DejaVu folder (QAFUI_FONT_DIR, or the system's DejaVu folder), Pango on top of it, and fixed
/// rendering options (grey antialiasing, no hinting, unhinted metrics, unrounded glyph
/// positions). That makes text render the same on every machine and measure the same at every
/// scale. Main thread only, like all drawing.
class FontSystem {
public:
    static FontSystem& Get();

    PangoFontMap* GetFontMap() const { return fontMap_; }
    /// A fresh Pango context with the fixed options; the caller unrefs it.
    PangoContext* CreateContext() const;
    /// True when the fonts came from the DejaVu folder; false when it was missing and the
    /// system's configuration is used instead.
    bool IsPinned() const { return pinned_; }
    const std::string& GetFontDirectory() const { return fontDirectory_; }

    /// A Pango description of the font; the caller frees it.
    static PangoFontDescription* CreateDescription(const Font& font);

private:
    FontSystem();

    PangoFontMap* fontMap_ = nullptr;
    bool pinned_ = false;
    std::string fontDirectory_;
};

} // namespace qorui::penrig
