// "wex_edit_number" in layouts: arguments reach the edit number, the bound cell and the control
// follow each other through the sheet, dictionary arguments may be cells, and bad scripts fail
// with their messages.
#include "adapter_scene.hpp"

#include "adapters/tess_edit_number_adapter.hpp"
#include "core/bad_cast.hpp"
#include "platform/rulers/decibel_ruler.hpp"
#include "platform/rulers/log_ruler.hpp"
#include "platform/widgets/ui_slider.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using adapter_testing::AdapterScene;
using adapter_testing::FailureOf;
using qoraudiofiltersui::EditNumber;
using vorlen::any_regular_t;
using vorlen::name_t;

const char* const kSheet = R"(sheet Test {
constant:
    gain_min: -24;
    gain_max: 12;
interface:
    gain: -6;
    mix: 50;
    limits: { min_value: 0, max_value: 100 };
    ruler: { type: 3, position: 1, text_placement: @right_bottom, step_factor: 4,
             value1: gain_min, value2: gain_max, label1: 'lo', label2: 'hi' };
    text: 'not a number';
    nothing: empty;
output:
    doubled <== gain * 2;
})";

std::string Layout(const std::string& widgets) {
    return "layout Test { view subview(margin: 4, spacing: 4) {\n" + widgets + "\n} }";
}

qorcore::PointT<float> CentreOf(const qorui::UI_Node& node) {
    return node.UI_LocalToGlobalF(node.GetBounds().Center());
}

TEST(TessEditNumberAdapter, ArgumentsSetUpTheControl) {
    AdapterScene scene(kSheet, Layout(R"(
        wex_edit_number(identifier: 'Gain', name: 'Gain:', unit_label: 'dB', use_slider: true,
                        slider_knob: @fader, horizontal_direction: false, invert_slider: true,
                        min_slider_width: 200, min_value: -24, max_value: 12,
                        decimal_places: 1, digits: 6, increment: 0.5, trailing_zeroes: false,
                        hottext_alignment: @center, hottext_scale: @hotttext_scale_db,
                        hottext_scale_range: 350, hottext_log_base: 2,
                        alt: '$$$/qafui/Test/GainTip=Output gain', alt_disabled: 'Off now',
                        logarithmic: true, log_step: 4, bind: @gain);
        wex_edit_number(identifier: 'Mix', use_inline: true, description1: 'Dry',
                        description2: 'Wet', name: 'Mix:');)"));
    auto& gain = scene.As<EditNumber>("Gain");
    EXPECT_EQ(gain.GetLabel(), "Gain:");
    EXPECT_EQ(gain.GetUnitLabel(), "dB");
    EXPECT_TRUE(gain.GetUsesSlider());
    EXPECT_FALSE(gain.IsHorizontal());
    EXPECT_TRUE(gain.GetInvertSlider());
    EXPECT_EQ(gain.GetSliderLength(), 200u);
    EXPECT_EQ(gain.GetMinValue(), -24.0);
    EXPECT_EQ(gain.GetMaxValue(), 12.0);
    EXPECT_EQ(gain.GetDecimalPlaces(), 1);
    EXPECT_EQ(gain.GetDigits(), 6);
    EXPECT_EQ(gain.GetIncrement(), 0.5);
    EXPECT_TRUE(gain.GetFormatFlags() & qorui::UI_HotTextNumber::kFormatNoTrailingZeros);
    EXPECT_EQ(gain.GetHotTextNumberAlignment(), qorui::penrig::HorizontalAlignment::kCenter);
    EXPECT_EQ(gain.GetHotTextScale(), qoraudiofiltersui::kHotTextScaleDecibel);
    EXPECT_EQ(gain.GetHotTextScaleRange(), 350.0);
    EXPECT_EQ(gain.GetHotTextLogBase(), 2.0);
    EXPECT_EQ(gain.GetEnabledTooltip(), "Output gain") << "texts are localised";
    EXPECT_EQ(gain.GetDisabledTooltip(), "Off now");
    EXPECT_TRUE(gain.GetSliderLogarithmic());
    EXPECT_EQ(gain.GetLogBase(), 4.0);
    EXPECT_EQ(gain.GetValue(), -6.0) << "the cell's value at once";
    // The fader knob of a vertical control is a vertical slider.
    ASSERT_NE(gain.GetSlider(), nullptr);
    EXPECT_FALSE(gain.GetSlider()->IsHorizontal());

    auto& mix = scene.As<EditNumber>("Mix");
    EXPECT_TRUE(mix.GetUsesInline());
    EXPECT_FALSE(mix.GetUsesSlider()) << "no slider unless asked";
    EXPECT_TRUE(mix.IsHorizontal());
    EXPECT_EQ(mix.GetDescription1(), "Dry");
    EXPECT_EQ(mix.GetDescription2(), "Wet");
    // Absent arguments keep the control's defaults.
    EXPECT_EQ(mix.GetIncrement(), 1.0);
    EXPECT_FALSE(mix.GetInvertSlider());
    EXPECT_EQ(mix.GetMinValue(), std::numeric_limits<double>::lowest());

    // The layout gives each control its recommended size.
    const auto recommended = gain.UI_GetRecommendedSize();
    EXPECT_EQ(gain.GetFrame().width, std::ceil(recommended.x));
    EXPECT_EQ(gain.GetFrame().height, std::ceil(recommended.y));
}

TEST(TessEditNumberAdapter, TheCellAndTheControlFollowEachOther) {
    AdapterScene scene(kSheet, Layout(R"(
        wex_edit_number(identifier: 'Gain', use_slider: true, min_value: -24, max_value: 12,
                        min_slider_width: 144, bind: @gain);
        wex_edit_number(identifier: 'Doubled', min_value: -100, max_value: 100,
                        bind: @doubled);)"));
    auto& gain = scene.As<EditNumber>("Gain");
    auto& doubled = scene.As<EditNumber>("Doubled");
    EXPECT_EQ(doubled.GetValue(), -12.0) << "an output binds as a view";

    scene.Set("gain", any_regular_t(3.0));
    EXPECT_EQ(gain.GetValue(), 3.0);
    EXPECT_EQ(doubled.GetValue(), 6.0);

    // A wheel step on the number writes the cell; what depends on it follows.
    const auto at = CentreOf(*gain.GetHotTextNumber());
    scene.window->MouseWheel(at.x, at.y, 1.0f);
    EXPECT_EQ(gain.GetValue(), 4.0);
    EXPECT_EQ(scene.Get("gain"), any_regular_t(4.0));
    EXPECT_EQ(doubled.GetValue(), 8.0);

    // Dragging the slider writes every step of the gesture, not only the last.
    qorui::UI_Slider& slider = *gain.GetSlider();
    const auto thumb = CentreOf(*slider.GetSliderThumb());
    const float travel = slider.GetSlideableDrawRect().width;
    std::vector<double> seen;
    auto watch = scene.sheet->monitor_value(name_t("doubled"), [&](const any_regular_t& value) {
        seen.push_back(value.cast<double>());
    });
    seen.clear();
    scene.window->MouseDown(thumb.x, thumb.y);
    scene.window->MouseMove(thumb.x - travel / 4, thumb.y);
    scene.window->MouseMove(thumb.x - travel / 2, thumb.y);
    scene.window->MouseUp(thumb.x - travel / 2, thumb.y);
    watch.disconnect();
    EXPECT_GE(seen.size(), 2u) << "the sheet heard the drag as it went";
    EXPECT_NEAR(scene.Get("gain").cast<double>(), 4.0 - 36.0 / 2, 1e-6);
    EXPECT_EQ(scene.Get("gain").cast<double>(), gain.GetValue());

    // Values from the sheet are not echoed back as user changes.
    scene.Set("gain", any_regular_t(100.0));
    EXPECT_EQ(gain.GetValue(), 12.0) << "shown limited to the range";
    EXPECT_EQ(scene.Get("gain"), any_regular_t(100.0)) << "while the cell keeps its value";
}

TEST(TessEditNumberAdapter, AnEmptyCellShowsNoValue) {
    AdapterScene scene(kSheet, Layout("wex_edit_number(identifier: 'N', bind: @nothing);"));
    auto& number = scene.As<EditNumber>("N");
    EXPECT_TRUE(number.IsValueUnknown());
    scene.Set("nothing", any_regular_t(7.0));
    EXPECT_FALSE(number.IsValueUnknown());
    EXPECT_EQ(number.GetValue(), 7.0);
    scene.Set("nothing", any_regular_t(vorlen::empty_t()));
    EXPECT_TRUE(number.IsValueUnknown());
}

TEST(TessEditNumberAdapter, RangesGivenInPlaceOrByACellThatLaterChanges) {
    AdapterScene scene(kSheet, Layout(R"(
        wex_edit_number(identifier: 'Fixed', min_max_filter: { min_value: -5, max_value: 5 });
        wex_edit_number(identifier: 'Mix', min_max_filter: @limits, bind: @mix);)"));
    auto& fixed = scene.As<EditNumber>("Fixed");
    EXPECT_EQ(fixed.GetMinValue(), -5.0);
    EXPECT_EQ(fixed.GetMaxValue(), 5.0);

    auto& mix = scene.As<EditNumber>("Mix");
    EXPECT_EQ(mix.GetMaxValue(), 100.0);
    EXPECT_EQ(mix.GetValue(), 50.0);
    vorlen::dictionary_t narrow;
    narrow[name_t("min_value")] = any_regular_t(0.0);
    narrow[name_t("max_value")] = any_regular_t(10.0);
    scene.Set("limits", any_regular_t(narrow));
    EXPECT_EQ(mix.GetMaxValue(), 10.0);
    EXPECT_EQ(mix.GetValue(), 10.0);
    // Widened again, the control shows the cell's value rather than the clipped one.
    narrow[name_t("max_value")] = any_regular_t(200.0);
    scene.Set("limits", any_regular_t(narrow));
    EXPECT_EQ(mix.GetMaxValue(), 200.0);
    EXPECT_EQ(mix.GetValue(), 50.0);
}

TEST(TessEditNumberAdapter, RulerSettingsMakeTheSlidersRuler) {
    AdapterScene scene(kSheet, Layout(R"(
        wex_edit_number(identifier: 'Gain', use_slider: true, min_value: -24, max_value: 12,
                        ruler_settings: @ruler);
        wex_edit_number(identifier: 'Freq', use_slider: true, min_value: 20, max_value: 20000,
                        logarithmic: true,
                        ruler_settings: { type: 2, log_step: 10, log_seed: 2, font_size: 8 });
        wex_edit_number(identifier: 'NoSlider', ruler_settings: @ruler);)"));
    auto& gain = scene.As<EditNumber>("Gain");
    auto* decibel = dynamic_cast<qorui::DecibelRuler*>(gain.GetRuler().get());
    ASSERT_NE(decibel, nullptr) << "type 3 is the linear decibel ruler";
    EXPECT_EQ(decibel->GetStyle(), qorui::DecibelRuler::kStyleLinear);
    EXPECT_EQ(gain.GetRulerPlacement(), qoraudiofiltersui::kRulerPlacementRightBottom);
    EXPECT_EQ(gain.GetRulerTextPlacement(), qoraudiofiltersui::kRulerTextPlacementRightBottom);
    EXPECT_EQ(decibel->GetStepFactor(), 4.0);
    EXPECT_EQ(decibel->GetValue1(), -24.0);
    EXPECT_EQ(decibel->GetValue2(), 12.0);
    EXPECT_EQ(decibel->GetLabel1(), "lo");
    EXPECT_EQ(decibel->GetLabel2(), "hi");

    // A later value of the cell replaces the ruler.
    vorlen::dictionary_t settings;
    settings[name_t("type")] = any_regular_t(4.0);
    settings[name_t("value1")] = any_regular_t(-60.0);
    settings[name_t("value2")] = any_regular_t(6.0);
    scene.Set("ruler", any_regular_t(settings));
    auto* fader = dynamic_cast<qorui::DecibelRuler*>(gain.GetRuler().get());
    ASSERT_NE(fader, nullptr);
    EXPECT_EQ(fader->GetStyle(), qorui::DecibelRuler::kStyleFader);
    EXPECT_EQ(fader->GetValue1(), -60.0);
    EXPECT_EQ(gain.GetRulerPlacement(), qoraudiofiltersui::kRulerPlacementLeftTop)
        << "absent keys take their defaults again";

    auto* log = dynamic_cast<qorui::LogRuler*>(scene.As<EditNumber>("Freq").GetRuler().get());
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(log->GetLogSeed(), 2.0);
    EXPECT_EQ(log->GetFontSize(), 8.0f);
    EXPECT_EQ(log->GetValue1(), 20.0) << "the control's range when the settings give none";
    EXPECT_EQ(log->GetValue2(), 20000.0);

    EXPECT_EQ(scene.As<EditNumber>("NoSlider").GetRuler(), nullptr);
}

TEST(TessEditNumberAdapter, BadScriptsFailWithTheirMessages) {
    EXPECT_EQ(FailureOf(kSheet, Layout("wex_edit_number(bind: @text);")),
              "test.tss:2:1: edit number must be bound to either a number or an empty_t");
    const std::string wrongType = FailureOf(kSheet, Layout("wex_edit_number(use_slider: 1);"));
    EXPECT_NE(wrongType.find("test.tss:2:1: bad_cast: double -> bool"), std::string::npos)
        << wrongType;
    EXPECT_EQ(FailureOf(kSheet, Layout("wex_edit_number(min_max_filter: { min_value: 1 });")),
              "test.tss:2:1: dictionary_t: key 'max_value' not found");
    const std::string knob = FailureOf(kSheet, Layout("wex_edit_number(slider_knob: @round);"));
    EXPECT_NE(knob.find("slider_knob 'round' is none of"), std::string::npos) << knob;
    const std::string scale =
        FailureOf(kSheet, Layout("wex_edit_number(hottext_scale: @hottext_scale_log);"));
    EXPECT_NE(scale.find("hottext_scale 'hottext_scale_log'"), std::string::npos)
        << "the scale names carry three letters t: " << scale;
    EXPECT_EQ(FailureOf(kSheet, Layout("wex_edit_number(min_max_filter: @nowhere);")),
              "test.tss:2:1: no cell named 'nowhere' to bind");
    EXPECT_EQ(FailureOf(kSheet, Layout("wex_edit_number(bind: @gain);")), "no failure");
}

TEST(TessEditNumberAdapter, TheTypedReaderRaisesBadCast) {
    AdapterScene scene(kSheet, Layout("static_text(name: 'host');"));
    const qormarltess::FactoryToken token(scene.Holder(), nullptr, nullptr, nullptr, false);
    vorlen::dictionary_t arguments;
    arguments[name_t("digits")] = any_regular_t(std::string("six"));
    EXPECT_THROW(qoraudiofiltersui::TessEditNumberAdapter(arguments, scene.root.get(), token),
                 vorlen::bad_cast);
    arguments.clear();
    arguments[name_t("ruler_settings")] = any_regular_t(name_t("text"));
    arguments[name_t("use_slider")] = any_regular_t(true);
    EXPECT_THROW(qoraudiofiltersui::TessEditNumberAdapter(arguments, scene.root.get(), token),
                 vorlen::bad_cast)
        << "a cell named for a dictionary must hold one";
}

TEST(TessEditNumberAdapter, AnInputThatCountsForNothingDisablesTheControl) {
    // `mix` feeds no output of the sheet, `gain` feeds `doubled`.
    AdapterScene scene(kSheet, Layout(R"(
        wex_edit_number(identifier: 'Mix', alt_disabled: 'Not now', bind: @mix);
        wex_edit_number(identifier: 'Gain', alt_disabled: 'Not now', bind: @gain);)"));
    auto& mix = scene.As<EditNumber>("Mix");
    EXPECT_TRUE(mix.IsDisabled());
    EXPECT_EQ(mix.GetToolTipText(), "Not now");
    EXPECT_FALSE(mix.GetHotTextNumber()->IsEnabled());
    auto& gain = scene.As<EditNumber>("Gain");
    EXPECT_FALSE(gain.IsDisabled());
    EXPECT_TRUE(gain.GetHotTextNumber()->IsEnabled());
}

} // namespace
