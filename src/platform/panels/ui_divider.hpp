#pragma once

#include "platform/widgets/ui_control_view.hpp"

namespace qorui {

/// A divider line: horizontal in a node wider than tall, vertical otherwise, centred across.
class UI_Divider : public UI_ControlView {
public:
    bool IsHorizontal() const { return GetFrame().width >= GetFrame().height; }
    void UI_Draw(Penrig* penrig) override;
};

/// A thin separator between groups of controls: a divider under another name, as layouts use.
using UI_Separator = UI_Divider;

namespace ui {
using ::qorui::UI_Divider;
using ::qorui::UI_Separator;
} // namespace ui

} // namespace qorui
