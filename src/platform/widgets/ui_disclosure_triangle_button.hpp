#pragma once

#include "platform/widgets/ui_picture_text_button.hpp"

namespace qorui {

/// The triangle that opens and closes a section: pointing right when closed (value 0), down
/// when open (value 1), with an optional caption. A click toggles it.
class UI_DisclosureTriangleButton : public UI_PictureTextButton {
public:
    explicit UI_DisclosureTriangleButton(std::string text = {});

    bool IsOpen() const { return !IsValueUnknown() && GetValue() >= 0.5; }

protected:
    void DrawContent(Penrig* penrig, const RectT<float>& rect) override;
    bool DrawsFace() const override { return false; }
};

namespace ui {
using ::qorui::UI_DisclosureTriangleButton;
}

} // namespace qorui
