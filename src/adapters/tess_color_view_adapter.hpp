#pragma once

#include "controls/color_view.hpp"
#include "core/any_regular.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/tess/ui_tess_node_adapter_base.hpp"

namespace qoraudiofiltersui {

/// The widget "wex_color_view" of layout scripts: a `ColorView` swatch whose children, written
/// in the widget's block, are laid out inside it (in a column unless the script says
/// otherwise). `color` ({r, g, b} from 0 to 1, opaque) sets the swatch when it is made; the
/// cell of `bind` sets it from then on, and without one the swatch keeps its `color`.
class TessColorViewAdapter : public qormarltess::UI_QORClientWidgetTessAdapter {
public:
    TessColorViewAdapter(const vorlen::dictionary_t& arguments, qorui::UI_Node* parent,
                         const qormarltess::FactoryToken& token);
    ~TessColorViewAdapter() override;

    ColorView* GetContainer() const { return view_.get(); }

    void AdjustAttributes(vorlen::layout_attributes_t& attributes) const override;

private:
    qorcore::IntrusivePtr<ColorView> view_;
};

} // namespace qoraudiofiltersui
