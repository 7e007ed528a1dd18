#pragma once

#include "controls/compressor_expander_list.hpp"
#include "core/any_regular.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/tess/ui_tess_node_adapter_base.hpp"

#include <optional>
#include <utility>

namespace qoraudiofiltersui {

/// The widget "wex_comp_exp_list" of layout scripts: a `CompressorExpanderList` of the curve in
/// the cell of `bind`, the same points cell a curve editor binds ({curve_points: [[x, y], ...],
/// num_active_points: n}); an empty cell shows no rows. `width` sets the list's width; its
/// size is otherwise the list's best one, rounded to whole pixels.
class TessCompressorExpanderListAdapter : public qormarltess::UI_QORClientWidgetTessAdapter {
public:
    TessCompressorExpanderListAdapter(const vorlen::dictionary_t& arguments, qorui::UI_Node* parent,
                                      const qormarltess::FactoryToken& token);
    ~TessCompressorExpanderListAdapter() override;

    CompressorExpanderList* GetContainer() const { return list_.get(); }

protected:
    std::pair<int, int> GetNaturalSize() const override;

private:
    void ApplyPoints(const vorlen::any_regular_t& value);

    qorcore::IntrusivePtr<CompressorExpanderList> list_;
    std::optional<float> width_;
};

} // namespace qoraudiofiltersui
