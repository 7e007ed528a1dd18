#pragma once

#include "platform/tess/ui_tess_sub_view.hpp"
#include "platform/tess/ui_tess_view_holder.hpp"

#include <memory>

namespace qormarltess {

/// The root of a view made from a layout script: it holds the node of the layout's `view`
/// widget as its one child, and the view holder with everything else the script made.
class UI_QORTessRoot : public UI_TessSubView {
public:
    UI_QORTessRoot();

    UI_TessViewHolder& GetTessViewHolder() { return *holder_; }
    const UI_TessViewHolder& GetTessViewHolder() const { return *holder_; }

    /// Solves the layout with no limits and takes the solved size.
    void RecalcLayout();

    /// Fills the look's panel colour under the widgets.
    void UI_Draw(qorui::Penrig* penrig) override;

protected:
    ~UI_QORTessRoot() override;

private:
    std::unique_ptr<UI_TessViewHolder> holder_;
};

} // namespace qormarltess
