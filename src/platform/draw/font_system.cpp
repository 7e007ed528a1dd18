#include "platform/draw/font_system.hpp"

#include "platform/core/trace.hpp"

#include <cairo.h>
#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>

#include <cstdlib>
#include <filesystem>

namespace qorui::penrig {

namespace {

constexpr const char* kSystemDejaVuDirectory = "/usr/share/fonts/truetype/dejavu";

// Builds a fontconfig configuration that knows only the fonts of one folder, or null if the
// folder holds none.
FcConfig* CreatePinnedConfig(const std::string& directory) {
    FcConfig* config = FcConfigCreate();
    if (!config)
        return nullptr;
    // The folder and a cache of our own; without a cache folder fontconfig complains on every
    // start.
    std::error_code error;
    const auto cache = std::filesystem::temp_directory_path(error) / "qafui-fontconfig";
    std::filesystem::create_directories(cache, error);
    const std::string xml = "<?xml version=\"1.0\"?><fontconfig><dir>" + directory +
                            "</dir><cachedir>" + cache.string() + "</cachedir></fontconfig>";
    if (!FcConfigParseAndLoadFromMemory(config, reinterpret_cast<const FcChar8*>(xml.c_str()),
                                        FcFalse) ||
        !FcConfigBuildFonts(config)) {
        FcConfigDestroy(config);
        return nullptr;
    }
    FcFontSet* fonts = FcConfigGetFonts(config, FcSetSystem);
    if (!fonts || fonts->nfont == 0) {
        FcConfigDestroy(config);
        return nullptr;
    }
    return config;
}

} // namespace

FontSystem& FontSystem::Get() {
    static FontSystem system;
    return system;
}

FontSystem::FontSystem() {
    const char* env = std::getenv("QAFUI_FONT_DIR");
    fontDirectory_ = env && *env ? env : kSystemDejaVuDirectory;
    fontMap_ = pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT);
    if (FcConfig* config = CreatePinnedConfig(fontDirectory_)) {
        pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(fontMap_), config);
        FcConfigDestroy(config); // the font map holds its own reference
        pinned_ = true;
    } else {
        qorcore::debug::Trace(1, "FontSystem::FontSystem",
                              "no fonts in " + fontDirectory_ +
                                  "; using the system's fonts, text may differ between machines");
    }
}

PangoContext* FontSystem::CreateContext() const {
    PangoContext* context = pango_font_map_create_context(fontMap_);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context, options);
    cairo_font_options_destroy(options);
    pango_context_set_round_glyph_positions(context, FALSE);
    return context;
}

PangoFontDescription* FontSystem::CreateDescription(const Font& font) {
    PangoFontDescription* description = pango_font_description_new();
    pango_font_description_set_family(description, font.family.empty() ? Font::kDefaultFamily
                                                                       : font.family.c_str());
    const double size = font.size > 0.5f && font.size < 1000.0f ? font.size : 11.0;
    pango_font_description_set_absolute_size(description, size * PANGO_SCALE);
    pango_font_description_set_weight(description,
                                      font.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_font_description_set_style(description,
                                     font.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
    return description;
}

} // namespace qorui::penrig
