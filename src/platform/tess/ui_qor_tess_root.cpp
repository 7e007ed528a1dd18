#include "platform/tess/ui_qor_tess_root.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"

namespace qormarltess {

UI_QORTessRoot::UI_QORTessRoot() : holder_(std::make_unique<UI_TessViewHolder>()) {}

UI_QORTessRoot::~UI_QORTessRoot() = default;

void UI_QORTessRoot::RecalcLayout() {
    const auto [width, height] = holder_->Layout();
    SetSize(float(width), float(height));
}

} // namespace qormarltess

namespace qormarltess {

void UI_QORTessRoot::UI_Draw(qorui::Penrig* penrig) {
    penrig->FillRect(GetBounds(), qorui::skins::GetPalette().panelBackground);
    UI_TessSubView::UI_Draw(penrig);
}

} // namespace qormarltess
