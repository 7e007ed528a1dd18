#include "golden_image.hpp"
#include "tess_scene.hpp"

#include "platform/skins/skins.hpp"

#include <gtest/gtest.h>

#include <tuple>

namespace {

namespace skins = qorui::skins;

// Every built-in widget of the layout vocabulary, bound to a small sheet.
const char* const kSheet = R"(sheet Gallery {
interface:
    on: true;
    mode: 1;
    amount: 0.25;
    gain: -6;
    size: 1;
    tab: 0;
    pressed: 0;
})";

const char* const kLayout = R"(layout Gallery {
view subview(margin: 10, spacing: 6) {
    row(spacing: 12) {
        column(spacing: 4) {
            group(name: 'Group', spacing: 4) {
                checkbox(name: 'Checkbox', bind: @on);
                radiogroup(identifier: 'Mode', spacing: 2) {
                    radio_button(name: 'First', bind: @mode, value: 0);
                    radio_button(name: 'Second', bind: @mode, value: 1);
                }
            }
            static_text(name: 'Static text');
            display_text(value: @gain);
        }
        column(spacing: 4) {
            popup(bind: @size, items: [{name: '512', value: 0}, {name: '1024', value: 1}]);
            row(spacing: 4) {
                button(name: 'Button', bind_output: @pressed, value: 1);
                toggle_button(name: 'Toggle', bind: @on);
            }
            row(spacing: 8) {
                knob(bind: @amount, value_range: [0, 1]);
                slider(bind: @gain, min_max_filter: {min_value: -24, max_value: 0});
            }
            inline_edit_number(name: 'Gain:', value: @gain, label: ' dB', decimal_places: 1,
                               min_max_filter: {min_value: -24, max_value: 0});
        }
    }
    separator();
    subview(show_border: true, margin: 4) {
        tab_group(bind: @tab, items: [{name: 'One', value: 0}, {name: 'Two', value: 1}]) {
            optional(bind: @tab, value: 0, margin: 6) { static_text(name: 'First page'); }
            optional(bind: @tab, value: 1, margin: 6) { static_text(name: 'Second page'); }
        }
    }
    optional(bind: @on) { static_text(name: 'Shown while the checkbox is on'); }
}
})";

class TessGolden : public ::testing::TestWithParam<std::tuple<float, skins::Skin>> {};

TEST_P(TessGolden, EveryBuiltInWidgetDrawsLikeItsGolden) {
    const auto [scale, skin] = GetParam();
    skins::ScopedSkin look(skin);
    qafui_testing::TessScene scene(kSheet, kLayout, scale);
    scene.window->RenderAll();
    const std::string name = std::string("tess_widgets_") +
                             (skin == skins::Skin::kV7 ? "v7" : "classic") +
                             (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(scene.window->GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(LooksAndScales, TessGolden,
                         ::testing::Combine(::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(skins::Skin::kClassic,
                                                              skins::Skin::kV7)));

} // namespace
