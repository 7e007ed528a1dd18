#pragma once

#include "platform/core/color_rgba.hpp"
#include "platform/core/rect.hpp"
#include "platform/draw/font.hpp"
#include "platform/draw/penrig.hpp"

#include <string_view>

namespace qorui::control_drawing {

/// Text measured outside any window: controls size themselves before they are shown.
penrig::TextMetrics MeasureText(std::string_view text, const penrig::Font& font);

/// The font of control text in the current look.
penrig::Font GetControlFont();
penrig::Font GetSmallControlFont();

/// A colour that reads on a selected (pressed-in) face of the current look: the look's
/// selection text on a dark face, its accent on a light one.
qorcore::ColorRGBA GetSelectedFaceMarkColor();

} // namespace qorui::control_drawing
