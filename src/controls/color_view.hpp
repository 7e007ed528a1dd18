#pragma once

#include "platform/core/color_rgba.hpp"
#include "platform/ui/ui_sub_view.hpp"

namespace qoraudiofiltersui {

/// A passive swatch: its bounds filled with one colour, under its children. Panels use it as a
/// tinted background for the controls they hold.
class ColorView : public qorui::UI_SubView {
public:
    /// Opaque black, the colour of a new view.
    static constexpr qorcore::ColorRGBA GetDefaultValue() { return {0.0f, 0.0f, 0.0f, 1.0f}; }

    const qorcore::ColorRGBA& GetValue() const { return color_; }
    /// Components are limited to 0..1 (not-a-number to 0); a change repaints the view.
    void SetValue(const qorcore::ColorRGBA& color);

    void UI_Draw(qorui::Penrig* penrig) override;

private:
    qorcore::ColorRGBA color_ = GetDefaultValue();
};

} // namespace qoraudiofiltersui
