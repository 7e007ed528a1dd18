#include "platform/tess/ui_tess_view_holder.hpp"

#include "platform/ui/ui_node.hpp"
#include "sheet/sheet.hpp"

namespace qormarltess {

UI_TessViewHolder::UI_TessViewHolder() {
    rootBehavior_.append([this] { queue_.Process(); });
}

UI_TessViewHolder::~UI_TessViewHolder() {
    Release();
}

qorcore::IntrusivePtr<qorui::UI_Node>
UI_TessViewHolder::GetControl(std::string_view identifier) const {
    const auto it = controls_.find(identifier);
    return it == controls_.end() ? nullptr : qorcore::IntrusivePtr<qorui::UI_Node>(it->second);
}

void UI_TessViewHolder::RegisterControl(const std::string& identifier, qorui::UI_Node* node) {
    if (!identifier.empty() && node)
        controls_[identifier] = node;
}

std::pair<int, int> UI_TessViewHolder::Layout(int width, int height) {
    if (tess_.empty())
        return {0, 0};
    return tess_.evaluate(false, width, height);
}

void UI_TessViewHolder::Release() {
    assemblage_.Clear();
    tess_.clear();
    controls_.clear();
    layoutSheet.reset();
}

} // namespace qormarltess
