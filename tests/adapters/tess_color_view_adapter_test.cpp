// "wex_color_view" in layouts: a swatch of its `color` holding the widgets of its block, and
// following the cell of `bind`.
#include "adapter_scene.hpp"

#include "adapters/tess_color_view_adapter.hpp"
#include "platform/widgets/ui_checkbox.hpp"

#include <gtest/gtest.h>

namespace {

using namespace adapter_testing;
using qoraudiofiltersui::ColorView;
using qorcore::ColorRGBA;

TEST(TessColorViewAdapter, ASwatchOfItsColourOrItsCellHoldingAColumnOfChildren) {
    AdapterScene scene("sheet Bands { interface: band_color: { r: 0.2, g: 0.4, b: 0.6 }; "
                       "solo: false; }",
                       R"(layout Bands { view row(margin: 4, spacing: 4) {
        wex_color_view(identifier: 'Band', color: { r: 1, g: 0, b: 0 }, bind: @band_color,
                       margin: 6, spacing: 2) {
            checkbox(identifier: 'Solo', name: 'S', bind: @solo);
            checkbox(identifier: 'Bypass', name: 'B');
        }
        wex_color_view(identifier: 'Fixed', color: { r: 0, g: 1, b: 0.5 }) {
            checkbox(identifier: 'Inner', name: 'I');
        } } })");
    auto& band = scene.As<ColorView>("Band");
    EXPECT_EQ(band.GetValue(), (ColorRGBA{0.2f, 0.4f, 0.6f, 1.0f})) << "the cell wins at once";
    scene.Set("band_color", Value("{ r: 1, g: 0.9, b: 0.1 }"));
    EXPECT_EQ(band.GetValue(), (ColorRGBA{1.0f, 0.9f, 0.1f, 1.0f}));
    EXPECT_EQ(scene.As<ColorView>("Fixed").GetValue(), (ColorRGBA{0.0f, 1.0f, 0.5f, 1.0f}))
        << "without bind the swatch stays at its colour";

    // The children hang inside, placed by the margin and stacked in a column.
    auto& solo = scene.As<qorui::UI_Checkbox>("Solo");
    auto& bypass = scene.As<qorui::UI_Checkbox>("Bypass");
    EXPECT_EQ(solo.GetParent(), &band);
    EXPECT_EQ(solo.GetFrame().Origin(), (qorcore::PointT<float>{6, 6}));
    EXPECT_EQ(bypass.GetFrame().y, solo.GetFrame().y + solo.GetFrame().height + 2);
    EXPECT_GE(band.GetFrame().height, bypass.GetFrame().y + bypass.GetFrame().height + 6);
    EXPECT_GT(scene.Control("Fixed").GetFrame().x, band.GetFrame().x);
    // The children work as anywhere else.
    scene.Click("Solo");
    EXPECT_EQ(scene.Get("solo"), any_regular_t(true));
}

} // namespace
