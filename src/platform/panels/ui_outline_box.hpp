#pragma once

#include "platform/widgets/ui_control_view.hpp"

namespace qorui {

/// A rounded frame that groups the controls inside it.
class UI_OutlineBox : public UI_ControlView {
public:
    void UI_Draw(Penrig* penrig) override;

    /// Draws the frame of the look on `rect`, leaving out the top edge between `gapLeft` and
    /// `gapRight` (for a caption); no gap when they are equal.
    static void DrawOutline(Penrig* penrig, const RectT<float>& rect, float gapLeft = 0,
                            float gapRight = 0);
};

namespace ui {
using ::qorui::UI_OutlineBox;
} // namespace ui

} // namespace qorui
