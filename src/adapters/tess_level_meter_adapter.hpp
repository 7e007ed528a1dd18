#pragma once

#include "adapters/after_sheet_round.hpp"
#include "core/any_regular.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/tess/ui_tess_node_adapter_base.hpp"

#include <optional>
#include <utility>

namespace qoraudiofiltersui {

/// The widget "qor_level_meter" of layout scripts: a `UI_LevelMeterView` configured entirely
/// by the widget's arguments, fed through the cell of `bind` or by editor code.
///
/// The bound cell holds a linear level, or nothing (the meter shows no level); anything else
/// raises `std::logic_error` "value must be bound to either a number or an empty_t".
///
/// Three more cells may follow the meter's state: `clip_indicator` (true while a clip indicator
/// is lit; false from the sheet clears them), `freeze` (while true, levels from the cell wait
/// and the last one shows when it ends) and `reset` (a change to true clears peaks, valleys and
/// clip indicators). `loudness_valid` dims a loudness reading that is not valid yet.
class TessLevelMeterAdapter : public qormarltess::UI_QORClientWidgetTessAdapter {
public:
    TessLevelMeterAdapter(const vorlen::dictionary_t& arguments, qorui::UI_Node* parent,
                          const qormarltess::FactoryToken& token);
    ~TessLevelMeterAdapter() override;

    qorui::UI_LevelMeterView* GetContainer() const { return meter_.get(); }

    /// The natural size, with the `baseline` guide when the script gives one.
    void measure(vorlen::extents_t& result) override;

protected:
    std::pair<int, int> GetNaturalSize() const override;

private:
    void ApplyLevel(const vorlen::any_regular_t& value);
    void ApplyFreeze(const vorlen::any_regular_t& value);
    void ApplyReset(const vorlen::any_regular_t& value);
    void ApplyClipIndicator(const vorlen::any_regular_t& value);
    void OnClipStateChanged(bool anyClipped);

    qorcore::IntrusivePtr<qorui::UI_LevelMeterView> meter_;
    std::optional<int> baseline_;
    vorlen::name_t clipCell_;
    bool frozen_ = false;
    bool resetOn_ = false;
    /// A level that came while frozen, shown when the freeze ends.
    std::optional<float> waiting_;
    /// While a cell's value is applied the sheet is in its round: writes wait for its end.
    bool applying_ = false;
    AfterSheetRound afterRound_;
};

} // namespace qoraudiofiltersui
