#pragma once

#include "adapters/after_sheet_round.hpp"
#include "core/any_regular.hpp"
#include "graphs/curve_editor.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/tess/ui_tess_node_adapter_base.hpp"

#include <utility>

namespace qoraudiofiltersui {

/// The widget "wex_curve_editor" of layout scripts: a `CurveEditor` on two rulers made from the
/// widget's arguments, tied to up to five cells:
/// - `bind`, the points: {curve_points: [[x, y], ...], num_active_points: n}. The first n pairs
///   are shown; the array's length is the most points a click may lead to. Every interactive
///   change and every command writes the points back when they differ from those last seen.
/// - `bind_response`, an array of numbers drawn as the response curve over the content width.
/// - `selected_node`, the index of the selected point, both ways.
/// - `settings`, a dictionary of rules and looks (see `ApplySettings`).
/// - `command`, a dictionary whose `command` names "invert", "add_node" or "delete_node". Only
///   a new value runs a command, once the sheet's round is over: the value the cell holds
///   when the view is built does not. A command the editor refuses writes nothing.
///
/// Ruler types are 1 linear, 2 logarithmic, 3 decibel, 4 decibel on the fader law; 0 (the
/// default) makes none, which raises the null-pointer exception. The content is at least 50 by
/// 40 pixels.
class TessCurveEditorAdapter : public qormarltess::UI_QORClientWidgetTessAdapter {
public:
    static constexpr float kMinContentWidth = 50.0f;
    static constexpr float kMinContentHeight = 40.0f;

    TessCurveEditorAdapter(const vorlen::dictionary_t& arguments, qorui::UI_Node* parent,
                           const qormarltess::FactoryToken& token);
    ~TessCurveEditorAdapter() override;

    CurveEditor* GetContainer() const { return editor_.get(); }

protected:
    std::pair<int, int> GetNaturalSize() const override;

private:
    void ApplyPoints(const vorlen::any_regular_t& value);
    /// Writes the editor's points to the points cell unless they are the ones last seen.
    void WritePoints();
    void ApplyResponse(const vorlen::any_regular_t& value);
    void ApplySelectedNode(const vorlen::any_regular_t& value);
    void ApplySettings(const vorlen::any_regular_t& value);
    void ApplyRulerRanges(const vorlen::dictionary_t& ranges);
    void ApplyCommand(const vorlen::any_regular_t& value);
    void OnSelectionChanged(int index);

    qorcore::IntrusivePtr<CurveEditor> editor_;
    float contentWidth_ = kMinContentWidth;
    float contentHeight_ = kMinContentHeight;
    /// The points as last seen from the cell or last written to it.
    CurveEditor::CurvePoints points_;
    /// The pairs of the points cell beyond the active ones, kept when the points are written.
    vorlen::array_t pairs_;
    vorlen::name_t pointsCell_;
    vorlen::name_t selectedCell_;
    /// The cell's value being written now: it comes back from the sheet and is not applied.
    vorlen::any_regular_t writing_;
    bool isWriting_ = false;
    /// While a cell's value is applied, the editor's signals must not write cells back: the
    /// sheet is in the middle of its round.
    bool applying_ = false;
    bool commandsArmed_ = false;
    AfterSheetRound afterRound_;
};

} // namespace qoraudiofiltersui
