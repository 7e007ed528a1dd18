// "wex_comp_exp_list" in layouts: the list follows the same points cell as the curve editor
// beside it, through the sheet, and takes its size from `width` and its best size.
#include "adapter_scene.hpp"

#include "adapters/tess_compressor_expander_list_adapter.hpp"
#include "graphs/curve_editor.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using adapter_testing::AdapterScene;
using adapter_testing::FailureOf;
using qoraudiofiltersui::CompressorExpanderList;
using qoraudiofiltersui::CurveEditor;
using vorlen::any_regular_t;

const char* const kSheet = R"(sheet Dynamics {
interface:
    curve_points: { curve_points: [[-100, -100], [-20, -20], [0, -10], [0, 0], [0, 0]],
                    num_active_points: 3 };
    nothing: empty;
})";

const char* const kLayout = R"(layout Dynamics { view column(margin: 4, spacing: 4) {
    wex_curve_editor(identifier: 'Curve', bind: @curve_points, horizontal_ruler_type: 1,
                     horizontal_start_value: -100, horizontal_end_value: 0,
                     vertical_ruler_type: 1, vertical_end_value: -100, content_width: 200,
                     content_height: 200);
    wex_comp_exp_list(identifier: 'List', bind: @curve_points, width: 400);
    wex_comp_exp_list(identifier: 'Empty', bind: @nothing);
} })";

std::string TypeColumn(const CompressorExpanderList& list) {
    std::string types;
    for (const auto& row : list.GetRows())
        types += (types.empty() ? "" : ", ") + row.type;
    return types;
}

TEST(TessCompressorExpanderListAdapter, TheListFollowsTheCurveThroughTheSheet) {
    AdapterScene scene(kSheet, kLayout);
    auto& list = scene.As<CompressorExpanderList>("List");
    ASSERT_EQ(list.GetRows().size(), 2u) << "three active points, two segments";
    EXPECT_EQ(TypeColumn(list), "Compressor, Neutral");
    EXPECT_EQ(list.GetRows()[0].ratio, "2.0:1");
    EXPECT_TRUE(scene.As<CompressorExpanderList>("Empty").GetRows().empty());

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

TEST(TessCompressorExpanderListAdapter, SizeFromTheWidthAndTheBestSize) {
    AdapterScene scene(kSheet, kLayout);
    auto& list = scene.As<CompressorExpanderList>("List");
    const auto best = list.GetBestSize();
    EXPECT_EQ(list.GetFrame().width, 400.0f);
    EXPECT_EQ(list.GetFrame().height, std::floor(best.y + 0.5f));
    auto& empty = scene.As<CompressorExpanderList>("Empty");
    EXPECT_EQ(empty.GetFrame().width, std::floor(best.x + 0.5f));
}

TEST(TessCompressorExpanderListAdapter, APointsCellOfAnotherShapeFails) {
    const std::string number =
        FailureOf("sheet S { interface: p: 2; }",
                  "layout L { view column() { wex_comp_exp_list(bind: @p); } }");
    EXPECT_NE(number.find("bad_cast"), std::string::npos) << number;
    EXPECT_TRUE(FailureOf("sheet S { interface: p: { num_active_points: 2 }; }",
                          "layout L { view column() { wex_comp_exp_list(bind: @p); } }")
                    .ends_with("dictionary_t: key 'curve_points' not found"));
}

} // namespace
