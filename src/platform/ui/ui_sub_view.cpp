#include "platform/ui/ui_sub_view.hpp"

#include <algorithm>

namespace qorui {

void UI_SubView::SizeToChildren() {
    float right = 0, bottom = 0;
    for (const auto& child : GetChildren()) {
        if (!child->IsVisible())
            continue;
        right = std::max(right, child->GetFrame().Right());
        bottom = std::max(bottom, child->GetFrame().Bottom());
    }
    SetSize(right, bottom);
}

} // namespace qorui
