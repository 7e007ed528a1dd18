// "wex_curve_editor" in layouts: rulers and sizes from the arguments, the points cell both ways
// (mouse drags and commands write it back), the response, selection and settings cells, and
// commands pressed on buttons of the same layout through the sheet. And "wex_comp_exp_list",
// which follows the points cell of a curve editor beside it through the sheet.
#include "adapter_scene.hpp"

#include "adapters/tess_compressor_expander_list_adapter.hpp"
#include "adapters/tess_curve_editor_adapter.hpp"
#include "core/bad_cast.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/dialogs/curve_point_edit_dialog.hpp"
#include "platform/dialogs/ui_modal_dialog.hpp"
#include "platform/rulers/decibel_ruler.hpp"
#include "platform/ui/modal_testing.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <utility>
#include <vector>

namespace {

using namespace adapter_testing;
using qoraudiofiltersui::CompressorExpanderList;
using qoraudiofiltersui::CurveEditor;
using qormediaui::CurvePointEditDialog;
using vorlen::array_t;
using vorlen::dictionary_t;
using vorlen::name_t;
using Pairs = std::vector<std::pair<double, double>>;

// A transfer curve from -100 to 0 dB on both axes: the vertical axis runs from 0 at the top
// down to -100, the content is 200 by 100 pixels.
const char* const kSheet = R"(sheet Curve {
interface:
    points: { curve_points: [[-100, -100], [-60, -40], [-20, -10], [0, 0], [0, 0], [0, 0]],
              num_active_points: 4 };
    selected: -1;
    response: empty;
    settings: { horizontal_unit: 'dB', vertical_unit: 'dB', unique_horizontal: true };
    command: { command: @invert };
})";

const char* const kLayout = R"(layout Curve { view subview(margin: 4, spacing: 4) {
    wex_curve_editor(identifier: 'Curve', bind: @points, selected_node: @selected,
                     bind_response: @response, settings: @settings, command: @command,
                     horizontal_ruler_type: 1, horizontal_start_value: -100,
                     horizontal_end_value: 0, vertical_ruler_type: 1, vertical_start_value: 0,
                     vertical_end_value: -100, content_width: 200, content_height: 100,
                     horizontal_label1: 'in', vertical_label1: 'out',
                     horizontal_edit_label: 'Input:', vertical_edit_label: 'Output:',
                     draw_segment_numbers: true);
    row(spacing: 4) {
        button(identifier: 'Add', name: 'Add', bind_output: @command,
               value: { command: @add_node });
        button(identifier: 'Delete', name: 'Delete', bind_output: @command,
               value: { command: @delete_node });
        button(identifier: 'Invert', name: 'Invert', bind_output: @command,
               value: { command: @invert });
        button(identifier: 'Nothing', name: 'Nothing', bind_output: @command,
               value: { command: @sing });
    }
} })";

struct CurveScene : AdapterScene {
    CurveScene() : AdapterScene(kSheet, kLayout), editor(As<CurveEditor>("Curve")) {}

    Pairs Shown() const {
        Pairs pairs;
        for (const auto& point : editor.GetCurvePoints())
            pairs.push_back(point.position);
        return pairs;
    }
    /// The active pairs of the points cell, and its whole length.
    Pairs InCell(std::size_t* length = nullptr) {
        const any_regular_t value = Get("points");
        const dictionary_t& cell = value.cast<dictionary_t>();
        const array_t& all = vorlen::get_value(cell, name_t("curve_points")).cast<array_t>();
        const auto active =
            std::size_t(vorlen::get_value(cell, name_t("num_active_points")).cast<double>());
        if (length)
            *length = all.size();
        Pairs pairs;
        for (std::size_t i = 0; i != active; ++i) {
            const array_t& pair = all.at(i).cast<array_t>();
            pairs.emplace_back(pair[0].cast<double>(), pair[1].cast<double>());
        }
        return pairs;
    }
    qorcore::PointT<float> At(double h, double v) const {
        return editor.UI_LocalToGlobalF(editor.GetPixelForCoordinatePair({h, v}));
    }
    void Drag(std::pair<double, double> from, std::pair<double, double> to) {
        window->AdvanceTime(1.0);
        const auto a = At(from.first, from.second);
        const auto b = At(to.first, to.second);
        window->MouseMove(a.x, a.y);
        window->MouseDown(a.x, a.y);
        window->MouseMove((a.x + b.x) / 2, (a.y + b.y) / 2);
        window->MouseMove(b.x, b.y);
        window->MouseUp(b.x, b.y);
    }
    void ClickOn(double h, double v) { Drag({h, v}, {h, v}); }

    CurveEditor& editor;
};

/// Counts the writes of a cell after it is made.
struct WriteCounter {
    WriteCounter(vorlen::sheet_t& sheet, const char* cell) {
        connection = sheet.monitor_value(name_t(cell), [this](const any_regular_t&) { ++count; });
        count = 0;
    }
    ~WriteCounter() { connection.disconnect(); }
    int count = 0;
    boost::signals2::connection connection;
};

TEST(TessCurveEditorAdapter, ActivePointsShowAndTheArrayLengthCapsThem) {
    CurveScene s;
    EXPECT_EQ(s.Shown(), (Pairs{{-100, -100}, {-60, -40}, {-20, -10}, {0, 0}}));
    EXPECT_EQ(s.editor.GetMaxPointCount(), 6u);
    EXPECT_EQ(s.editor.GetCurvePoints()[2].id, 2u) << "ids count from 0";
    s.Set("points", Value("{ curve_points: [[-50, -50], [0, 0], [-50, -50], [-50, -50], "
                          "[-50, -50], [-50, -50]], num_active_points: 2 }"));
    EXPECT_EQ(s.Shown(), (Pairs{{-50, -50}, {0, 0}}));
    EXPECT_EQ(s.editor.GetMaxPointCount(), 6u);
}

TEST(TessCurveEditorAdapter, ADragWritesThePointsBackKeepingTheArrayLength) {
    CurveScene s;
    WriteCounter writes(*s.sheet, "points");
    s.Drag({-60, -40}, {-50, -30});
    std::size_t length = 0;
    const Pairs written = s.InCell(&length);
    EXPECT_EQ(length, 6u);
    ASSERT_EQ(written.size(), 4u);
    EXPECT_NEAR(written[1].first, -50, 1.0);
    EXPECT_NEAR(written[1].second, -30, 1.0);
    EXPECT_EQ(written, s.Shown()) << "the cell holds what the editor shows";
    EXPECT_GE(writes.count, 1);
    EXPECT_EQ(s.Get("selected"), any_regular_t(1.0)) << "the pressed point is selected";
    // A click that moves nothing writes nothing.
    writes.count = 0;
    s.ClickOn(-20, -10);
    EXPECT_EQ(writes.count, 0);
    EXPECT_EQ(s.Get("selected"), any_regular_t(2.0));
}

TEST(TessCurveEditorAdapter, SelectionResponseAndSettingsCellsReachTheEditor) {
    CurveScene s;
    s.Set("selected", any_regular_t(2.0));
    EXPECT_EQ(s.editor.GetSelectedNode(), 2);

    // The response as a sheet would compute it: a soft knee over the content's width.
    array_t response;
    std::vector<double> expected;
    for (int i = 0; i != 200; ++i) {
        const double in = -100.0 + i / 2.0;
        expected.push_back(in > -30 ? -30 + (in + 30) / 4 : in);
        response.emplace_back(expected.back());
    }
    s.Set("response", any_regular_t(response));
    EXPECT_EQ(s.editor.GetResponseData(0), expected);
    s.Set("response", any_regular_t(vorlen::empty_t()));
    EXPECT_TRUE(s.editor.GetResponseData(0).empty());

    s.Set("settings", Value(R"({
        visible: [true, false], can_delete: [false, true], can_move_vertically: [false, true],
        unique_horizontal: false, grid_color: { r: 0.25, g: 0.5, b: 1 },
        horizontal_font_size: 11, vertical_font_size: 7,
        ruler_ranges: { horizontal_start: -80, horizontal_end: -10, vertical_start: -10,
                        vertical_end: -80, vertical_min: -120, vertical_max: 6 } })"));
    EXPECT_TRUE(s.editor.IsPointVisible(0));
    EXPECT_FALSE(s.editor.IsPointVisible(1));
    EXPECT_FALSE(s.editor.IsPointDeletable(0));
    EXPECT_TRUE(s.editor.IsPointDeletable(1));
    EXPECT_FALSE(s.editor.IsPointMoveable(0, false));
    EXPECT_FALSE(s.editor.GetUniqueHorizontalPositions());
    EXPECT_EQ(s.editor.GetGridColor(), (qorcore::ColorRGBA{0.25f, 0.5f, 1.0f, 1.0f}));
    EXPECT_EQ(s.editor.GetHorizontalRuler()->GetFontSize(), 11.0f);
    EXPECT_EQ(s.editor.GetVerticalRuler()->GetFontSize(), 7.0f);
    EXPECT_EQ(std::pair(s.editor.GetHorizontalStart(), s.editor.GetHorizontalEnd()),
              std::pair(-80.0, -10.0));
    EXPECT_EQ(std::pair(s.editor.GetVerticalStart(), s.editor.GetVerticalEnd()),
              std::pair(-10.0, -80.0));
    EXPECT_EQ(std::pair(s.editor.GetVerticalStartBounds(), s.editor.GetVerticalEndBounds()),
              std::pair(6.0, -120.0))
        << "descending bounds, like the range";
    EXPECT_EQ(s.editor.GetVerticalRuler()->GetValue1(), -10.0);
}

TEST(TessCurveEditorAdapter, ButtonsRunCommandsThroughTheCommandCell) {
    CurveScene s;
    EXPECT_EQ(s.Shown(), (Pairs{{-100, -100}, {-60, -40}, {-20, -10}, {0, 0}}))
        << "the command the cell holds at first runs nothing";
    // Delete the selected point.
    s.ClickOn(-60, -40);
    ASSERT_EQ(s.Get("selected"), any_regular_t(1.0));
    s.Click("Delete");
    EXPECT_EQ(s.Shown(), (Pairs{{-100, -100}, {-20, -10}, {0, 0}}));
    EXPECT_EQ(s.InCell(), s.Shown());
    EXPECT_EQ(s.Get("selected"), any_regular_t(-1.0));

    // Add one through the point dialog, with the labels and the units of the settings; notes
    // are kept.
    std::function<void(CurvePointEditDialog&)> dialog = [](CurvePointEditDialog& d) {
        EXPECT_EQ(d.GetLabel1(), "Input:");
        EXPECT_EQ(d.GetLabel2(), "Output:");
        EXPECT_EQ(d.GetHotTextNumber1()->GetTextLabel(), "dB");
        d.GetHotTextNumber1()->SetValue(-50);
        d.GetHotTextNumber2()->SetValue(-30);
        EXPECT_TRUE(d.PressButton(CurvePointEditDialog::kResponseAccept));
    };
    std::vector<std::string> notes;
    qorui::testing::ScopedModalResponder responder([&](qorui::UI_ModalOverlay& overlay) {
        if (auto* d = dynamic_cast<CurvePointEditDialog*>(&overlay))
            dialog(*d);
        else if (auto* n = dynamic_cast<qorui::messagebox::UI_NoteDialog*>(&overlay))
            notes.push_back(n->GetText());
    });
    s.Click("Add");
    EXPECT_EQ(s.Shown(), (Pairs{{-100, -100}, {-50, -30}, {-20, -10}, {0, 0}}));
    EXPECT_EQ(s.InCell(), s.Shown());

    // Invert a strictly rising curve: the inner points swap their values.
    s.Click("Invert");
    EXPECT_EQ(s.Shown(), (Pairs{{-100, -100}, {-30, -50}, {-10, -20}, {0, 0}}));
    EXPECT_EQ(s.InCell(), s.Shown());
    EXPECT_TRUE(notes.empty());

    // A command no one knows runs nothing; a refused one writes nothing.
    WriteCounter writes(*s.sheet, "points");
    s.Click("Nothing");
    EXPECT_EQ(writes.count, 0);
    s.Drag({-30, -50}, {-30, -5}); // no longer rising
    ASSERT_GE(writes.count, 1) << "each step of the drag writes";
    EXPECT_NEAR(s.InCell()[1].second, -5, 1.0);
    writes.count = 0;
    s.Click("Invert");
    EXPECT_EQ(notes, std::vector<std::string>{"Current graph is not invertable"});
    EXPECT_EQ(writes.count, 0);

    // A cancelled dialog adds nothing and writes nothing.
    dialog = [](CurvePointEditDialog& d) {
        d.PressButton(CurvePointEditDialog::kResponseCancelButton);
    };
    s.Click("Add");
    EXPECT_EQ(s.editor.GetCurvePoints().size(), 4u);
    EXPECT_EQ(writes.count, 0);
}

TEST(TessCurveEditorAdapter, SizesAndRulersFromTheArguments) {
    const auto editorOf = [](const std::string& arguments) {
        return "layout T { view subview() { wex_curve_editor(identifier: 'C', " + arguments +
               "); } }";
    };
    AdapterScene small("", editorOf("horizontal_ruler_type: 1, vertical_ruler_type: 3, "
                                    "horizontal_end_value: 10, vertical_start_value: 6, "
                                    "vertical_end_value: -60, content_width: 10, "
                                    "content_height: 12"));
    auto& editor = small.As<CurveEditor>("C");
    EXPECT_EQ(editor.GetContentRect().width, 50.0f) << "content_width is raised to 50";
    EXPECT_EQ(editor.GetContentRect().height, 40.0f);
    const auto size = editor.GetSizeForContentSize({50, 40});
    EXPECT_EQ(editor.GetFrame().width, std::ceil(size.x));
    EXPECT_EQ(editor.GetFrame().height, std::ceil(size.y));
    auto* linear = dynamic_cast<qorui::DecibelRuler*>(editor.GetVerticalRuler().get());
    ASSERT_NE(linear, nullptr);
    EXPECT_EQ(linear->GetStyle(), qorui::DecibelRuler::kStyleLinear);
    EXPECT_TRUE(linear->IsVertical());
    EXPECT_EQ(std::pair(editor.GetVerticalStart(), editor.GetVerticalEnd()), std::pair(6.0, -60.0));

    AdapterScene fader("", editorOf("horizontal_ruler_type: 2, horizontal_start_value: 20, "
                                    "horizontal_end_value: 20000, horizontal_log_seed: 2, "
                                    "vertical_ruler_type: 4, vertical_start_value: 6, "
                                    "vertical_end_value: -60, vertical_step_factor: 3"));
    auto& other = fader.As<CurveEditor>("C");
    auto* decibel = dynamic_cast<qorui::DecibelRuler*>(other.GetVerticalRuler().get());
    ASSERT_NE(decibel, nullptr);
    EXPECT_EQ(decibel->GetStyle(), qorui::DecibelRuler::kStyleFader);
    EXPECT_EQ(decibel->GetStepFactor(), 3.0);
    EXPECT_EQ(other.GetContentRect().width, 50.0f) << "the floor is also the default";
}

std::string TypeColumn(const CompressorExpanderList& list) {
    std::string types;
    for (const auto& row : list.GetRows())
        types += (types.empty() ? "" : ", ") + row.type;
    return types;
}

TEST(TessCompressorExpanderListAdapter, TheListFollowsTheCurveThroughTheSheetAtItsSize) {
    AdapterScene scene(R"(sheet Dynamics { interface:
        curve_points: { curve_points: [[-100, -100], [-20, -20], [0, -10], [0, 0], [0, 0]],
                        num_active_points: 3 };
        nothing: empty; })",
                       R"(layout Dynamics { view column(margin: 4, spacing: 4) {
        wex_curve_editor(identifier: 'Curve', bind: @curve_points, horizontal_ruler_type: 1,
                         horizontal_start_value: -100, horizontal_end_value: 0,
                         vertical_ruler_type: 1, vertical_end_value: -100, content_width: 200,
                         content_height: 200);
        wex_comp_exp_list(identifier: 'List', bind: @curve_points, width: 400);
        wex_comp_exp_list(identifier: 'Empty', bind: @nothing); } })");
    auto& list = scene.As<CompressorExpanderList>("List");
    ASSERT_EQ(list.GetRows().size(), 2u) << "three active points, two segments";
    EXPECT_EQ(TypeColumn(list), "Compressor, Neutral");
    EXPECT_EQ(list.GetRows()[0].ratio, "2.0:1");
    auto& empty = scene.As<CompressorExpanderList>("Empty");
    EXPECT_TRUE(empty.GetRows().empty());
    // Its size comes from `width` and its best size.
    const auto best = list.GetBestSize();
    EXPECT_EQ(list.GetFrame().width, 400.0f);
    EXPECT_EQ(list.GetFrame().height, std::floor(best.y + 0.5f));
    EXPECT_EQ(empty.GetFrame().width, std::floor(best.x + 0.5f));

    // Drag the knee down: the upper segment compresses harder, the lower one expands.
    auto& curve = scene.As<CurveEditor>("Curve");
    const auto from = curve.UI_LocalToGlobalF(curve.GetPixelForCoordinatePair({-20, -20}));
    const auto to = curve.UI_LocalToGlobalF(curve.GetPixelForCoordinatePair({-20, -60}));
    scene.window->MouseMove(from.x, from.y);
    scene.window->MouseDown(from.x, from.y);
    scene.window->MouseMove(to.x, to.y);
    scene.window->MouseUp(to.x, to.y);
    ASSERT_EQ(list.GetRows().size(), 2u);
    EXPECT_EQ(TypeColumn(list), "Expander, Compressor");
    EXPECT_EQ(list.GetRows()[0].ratio, "2.5:1") << "20 dB in, 50 dB out";
    EXPECT_EQ(list.GetRows()[1].ratio, "2.0:1") << "80 dB in, 40 dB out";
    EXPECT_EQ(list.GetRows()[0].threshold, "Above -20.0 dB");
}

} // namespace
