#include "platform/tess/ui_tess_node_adapter_base.hpp"

#include "platform/tess/ui_tess_view_holder.hpp"

#include <cmath>

namespace qormarltess {

UI_TessNodeAdapterBase::UI_TessNodeAdapterBase(UI_Node* parent, const FactoryToken& token)
    : parent_(parent), token_(token) {}

UI_TessNodeAdapterBase::~UI_TessNodeAdapterBase() = default;

void UI_TessNodeAdapterBase::AddToParent() {
    if (node_ && parent_ && !node_->GetParent())
        parent_->ChildPushBack(node_);
}

void UI_TessNodeAdapterBase::UI_SetNodeID(const std::string& identifier) {
    UI_Node* control = GetControlNode();
    if (!control)
        return;
    control->SetID(identifier);
    token_.GetViewHolder().RegisterControl(identifier, control);
}

void UI_TessNodeAdapterBase::AdjustAttributes(vorlen::layout_attributes_t&) const {}

std::pair<int, int> UI_TessNodeAdapterBase::GetNaturalSize() const {
    if (!node_)
        return {0, 0};
    const auto& frame = node_->GetFrame();
    return {int(std::ceil(frame.width)), int(std::ceil(frame.height))};
}

void UI_TessNodeAdapterBase::measure(vorlen::extents_t& result) {
    const std::pair<int, int> natural = GetNaturalSize();
    result.width() = requested_.first > 0 ? requested_.first : natural.first;
    result.height() = requested_.second > 0 ? requested_.second : natural.second;
}

void UI_TessNodeAdapterBase::place(const vorlen::place_data_t& place) {
    if (node_)
        node_->SetFrame(
            {float(place.left()), float(place.top()), float(place.width()), float(place.height())});
}

} // namespace qormarltess
