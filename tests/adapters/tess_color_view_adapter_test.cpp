// "wex_color_view" in layouts: a swatch of its `color` holding the widgets of its block, and
// following the cell of `bind`.
#include "adapter_scene.hpp"

#include "adapters/tess_color_view_adapter.hpp"
#include "platform/widgets/ui_checkbox.hpp"

#include <gtest/gtest.h>

namespace {

using adapter_testing::AdapterScene;
using adapter_testing::FailureOf;
using qoraudiofiltersui::ColorView;
using qorcore::ColorRGBA;
using vorlen::any_regular_t;
using vorlen::dictionary_t;
using vorlen::name_t;

const char* const kSheet = R"(sheet Bands {
interface:
    band_color: { r: 0.2, g: 0.4, b: 0.6 };
    solo: false;
})";

const char* const kLayout = R"(layout Bands { view row(margin: 4, spacing: 4) {
    wex_color_view(identifier: 'Band', color: { r: 1, g: 0, b: 0 }, bind: @band_color,
                   margin: 6, spacing: 2) {
        checkbox(identifier: 'Solo', name: 'S', bind: @solo);
        checkbox(identifier: 'Bypass', name: 'B');
    }
    wex_color_view(identifier: 'Fixed', color: { r: 0, g: 1, b: 0.5 }) {
        checkbox(identifier: 'Inner', name: 'I');
    }
} })";

TEST(TessColorViewAdapter, ASwatchOfItsColourOrItsCell) {
    AdapterScene scene(kSheet, kLayout);
    auto& band = scene.As<ColorView>("Band");
    EXPECT_EQ(band.GetValue(), (ColorRGBA{0.2f, 0.4f, 0.6f, 1.0f})) << "the cell wins at once";
    dictionary_t yellow;
    yellow[name_t("r")] = any_regular_t(1.0);
    yellow[name_t("g")] = any_regular_t(0.9);
    yellow[name_t("b")] = any_regular_t(0.1);
    scene.Set("band_color", any_regular_t(yellow));
    EXPECT_EQ(band.GetValue(), (ColorRGBA{1.0f, 0.9f, 0.1f, 1.0f}));

    EXPECT_EQ(scene.As<ColorView>("Fixed").GetValue(), (ColorRGBA{0.0f, 1.0f, 0.5f, 1.0f}))
        << "without bind the swatch stays at its colour";
}

TEST(TessColorViewAdapter, ItsChildrenHangInsideAndStackInAColumn) {
    AdapterScene scene(kSheet, kLayout);
    auto& band = scene.As<ColorView>("Band");
    auto& solo = scene.As<qorui::UI_Checkbox>("Solo");
    auto& bypass = scene.As<qorui::UI_Checkbox>("Bypass");
    EXPECT_EQ(solo.GetParent(), &band);
    EXPECT_EQ(solo.GetFrame().x, 6.0f) << "placed by the margin, inside the swatch";
    EXPECT_EQ(solo.GetFrame().y, 6.0f);
    EXPECT_EQ(bypass.GetFrame().y, solo.GetFrame().y + solo.GetFrame().height + 2);
    EXPECT_GE(band.GetFrame().height, bypass.GetFrame().y + bypass.GetFrame().height + 6);
    EXPECT_GT(scene.Control("Fixed").GetFrame().x, band.GetFrame().x);

    // The children work as anywhere else.
    scene.Click("Solo");
    EXPECT_EQ(scene.Get("solo"), any_regular_t(true));
}

TEST(TessColorViewAdapter, AColourOfAnotherTypeFails) {
    const std::string wrong = FailureOf(
        "", "layout L { view row() { wex_color_view(color: { r: 'red', g: 0, b: 0 }); } }");
    EXPECT_NE(wrong.find("bad_cast"), std::string::npos) << wrong;
    EXPECT_NE(
        FailureOf("", "layout L { view row() { wex_color_view(color: 0.5); } }").find("bad_cast"),
        std::string::npos);
}

} // namespace
