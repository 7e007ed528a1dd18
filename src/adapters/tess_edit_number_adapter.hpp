#pragma once

#include "controls/edit_number.hpp"
#include "core/any_regular.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/tess/ui_tess_node_adapter_base.hpp"

#include <utility>

namespace qoraudiofiltersui {

/// The widget "wex_edit_number" of layout scripts: an `EditNumber` set up from the widget's
/// arguments, its value tied both ways to the cell of `bind`.
///
/// Every argument is optional; one that is absent leaves the control's own default. Names that
/// choose among fixed settings (`slider_knob`, `hottext_alignment`, `hottext_scale`, the
/// `text_placement` of `ruler_settings`) raise `std::invalid_argument` for a name outside
/// their list. `min_max_filter` and `ruler_settings` may name a cell, whose later values apply.
///
/// The bound cell holds a number, or nothing (the control shows no value); anything else raises
/// `std::logic_error` "edit number must be bound to either a number or an empty_t". Each step
/// of a user's gesture writes the cell, so that what depends on it follows the drag.
class TessEditNumberAdapter : public qormarltess::UI_QORClientWidgetTessAdapter {
public:
    TessEditNumberAdapter(const vorlen::dictionary_t& arguments, qorui::UI_Node* parent,
                          const qormarltess::FactoryToken& token);
    ~TessEditNumberAdapter() override;

    EditNumber* GetEditNumber() const { return control_.get(); }

protected:
    std::pair<int, int> GetNaturalSize() const override;

private:
    void ApplyRange(const vorlen::dictionary_t& range);
    void ApplyRulerSettings(const vorlen::dictionary_t& settings);
    void ShowValue(const vorlen::any_regular_t& value);
    void OnChangedInteractively(const qorui::UI_InteractiveControlChangedMessage& message);

    qorcore::IntrusivePtr<EditNumber> control_;
    vorlen::name_t cell_;
    /// The cell's last value, shown again when a new range would otherwise keep it clipped.
    vorlen::any_regular_t value_;
};

} // namespace qoraudiofiltersui
