#include "platform/skins/control_drawing.hpp"

#include "platform/draw/cairo_supplier.hpp"
#include "platform/skins/skins.hpp"

#include <cmath>
#include <memory>

namespace qorui::control_drawing {

penrig::TextMetrics MeasureText(std::string_view text, const penrig::Font& font) {
    // Text metrics are unhinted and the same at every scale, so one measurer serves all.
    // Kept for the life of the process on purpose: destroyed at exit it could outlive the
    // font system it measures with.
    static const penrig::CairoSupplier supplier(1.0f);
    static penrig::Penrig* const measurer = supplier.CreateMeasuringPenrig().release();
    measurer->SetFont(font);
    return measurer->MeasureText(text);
}

penrig::Font GetControlFont() {
    return penrig::Font(skins::GetPalette().fontSize);
}

penrig::Font GetSmallControlFont() {
    return penrig::Font(skins::GetPalette().smallFontSize);
}

qorcore::ColorRGBA GetSelectedFaceMarkColor() {
    const skins::Palette& p = skins::GetPalette();
    const qorcore::ColorRGBA& face = p.buttonFacePressedTop;
    const float luminance = 0.2126f * face.red + 0.7152f * face.green + 0.0722f * face.blue;
    return luminance < 0.5f ? p.selectionText : p.button;
}

} // namespace qorui::control_drawing
