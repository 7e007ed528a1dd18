#pragma once

#include "controls/picture_toggle_button.hpp"
#include "core/any_regular.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/tess/ui_tess_node_adapter_base.hpp"

#include <utility>

namespace qoraudiofiltersui {

/// The widget "wex_picture_toggle_button" of layout scripts: a `PictureToggleButton` showing
/// the image `off_image` while off and `on_image` while on, both by the names the view's image
/// supply knows. The boolean cell of `bind` sets the state (without a write back), and a press
/// writes the new state to the cell.
class TessPictureToggleButtonAdapter : public qormarltess::UI_QORClientWidgetTessAdapter {
public:
    /// The size of a toggle whose images are missing.
    static constexpr int kDefaultSize = 22;

    TessPictureToggleButtonAdapter(const vorlen::dictionary_t& arguments, qorui::UI_Node* parent,
                                   const qormarltess::FactoryToken& token);
    ~TessPictureToggleButtonAdapter() override;

    PictureToggleButton* GetContainer() const { return button_.get(); }

protected:
    std::pair<int, int> GetNaturalSize() const override;

private:
    qorcore::IntrusivePtr<PictureToggleButton> button_;
    std::pair<int, int> natural_{kDefaultSize, kDefaultSize};
};

} // namespace qoraudiofiltersui
