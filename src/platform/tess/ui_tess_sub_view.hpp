#pragma once

#include "platform/ui/ui_sub_view.hpp"

namespace qormarltess {

/// The node of a `subview` widget, and of the panels that group others: a plain container that
/// may draw a one-pixel outline in the look's divider colour.
class UI_TessSubView : public qorui::UI_SubView {
public:
    void SetDrawOutline(bool draw);
    bool GetDrawOutline() const { return drawOutline_; }

    void UI_Draw(qorui::Penrig* penrig) override;

private:
    bool drawOutline_ = false;
};

} // namespace qormarltess
