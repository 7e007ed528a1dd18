// "wex_edit_number" in layouts: arguments reach the edit number, the bound cell and the control
// follow each other through the sheet, and dictionary arguments may be cells.
#include "adapter_scene.hpp"

#include "adapters/tess_edit_number_adapter.hpp"
#include "core/bad_cast.hpp"
#include "platform/rulers/decibel_ruler.hpp"
#include "platform/rulers/log_ruler.hpp"
#include "platform/widgets/ui_slider.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace adapter_testing;
using qoraudiofiltersui::EditNumber;
using EditNumberArgs = std::vector<Argument<EditNumber>>;
// One argument of the control; a function, since aggregates take no parentheses everywhere.
template <typename Value, typename Getter>
Argument<EditNumber> EditArg(const char* name, Value value, Getter getter) {
    return Arg<EditNumber>(name, value, getter);
}
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
    const EditNumberArgs gain = {
        EditArg("name", "Gain:", &EditNumber::GetLabel),
        EditArg("unit_label", "dB", &EditNumber::GetUnitLabel),
        EditArg("use_slider", true, &EditNumber::GetUsesSlider),
        EditArg("horizontal_direction", false, &EditNumber::IsHorizontal),
        EditArg("invert_slider", true, &EditNumber::GetInvertSlider),
        EditArg("min_slider_width", 200, &EditNumber::GetSliderLength),
        EditArg("min_value", -24, &EditNumber::GetMinValue),
        EditArg("max_value", 12, &EditNumber::GetMaxValue),
        EditArg("decimal_places", 1, &EditNumber::GetDecimalPlaces),
        EditArg("digits", 6, &EditNumber::GetDigits),
        EditArg("increment", 0.5, &EditNumber::GetIncrement),
        EditArg("trailing_zeroes", false,
                [](const EditNumber& c) {
                    return !(c.GetFormatFlags() & qorui::UI_HotTextNumber::kFormatNoTrailingZeros);
                }),
        EditArg("hottext_scale_range", 350, &EditNumber::GetHotTextScaleRange),
        EditArg("hottext_log_base", 2, &EditNumber::GetHotTextLogBase),
        EditArg("alt_disabled", "Off now", &EditNumber::GetDisabledTooltip),
        EditArg("logarithmic", true, &EditNumber::GetSliderLogarithmic),
        EditArg("log_step", 4, &EditNumber::GetLogBase),
    };
    ExpectRoundTrip<EditNumber>(
        kSheet, "wex_edit_number", gain,
        ", slider_knob: @fader, hottext_alignment: @center, hottext_scale: @hotttext_scale_db, "
        "alt: '$$$/qafui/Test/GainTip=Output gain', bind: @gain",
        [](auto&, EditNumber& c) {
            EXPECT_EQ(c.GetHotTextNumberAlignment(), qorui::penrig::HorizontalAlignment::kCenter);
            EXPECT_EQ(c.GetHotTextScale(), qoraudiofiltersui::kHotTextScaleDecibel);
            EXPECT_EQ(c.GetEnabledTooltip(), "Output gain") << "texts are localised";
            EXPECT_EQ(c.GetValue(), -6.0) << "the cell's value at once";
            // The fader knob of a vertical control is a vertical slider.
            ASSERT_NE(c.GetSlider(), nullptr);
            EXPECT_FALSE(c.GetSlider()->IsHorizontal());
            // The layout gives the control its recommended size.
            const auto recommended = c.UI_GetRecommendedSize();
            EXPECT_EQ(c.GetFrame().width, std::ceil(recommended.x));
            EXPECT_EQ(c.GetFrame().height, std::ceil(recommended.y));
        });
    const EditNumberArgs mix = {
        EditArg("use_inline", true, &EditNumber::GetUsesInline),
        EditArg("description1", "Dry", &EditNumber::GetDescription1),
        EditArg("description2", "Wet", &EditNumber::GetDescription2),
    };
    ExpectRoundTrip<EditNumber>(kSheet, "wex_edit_number", mix, "", [](auto&, EditNumber& c) {
        // Absent arguments keep the control's defaults.
        EXPECT_FALSE(c.GetUsesSlider()) << "no slider unless asked";
        EXPECT_TRUE(c.IsHorizontal());
        EXPECT_EQ(c.GetIncrement(), 1.0);
        EXPECT_FALSE(c.GetInvertSlider());
        EXPECT_EQ(c.GetMinValue(), std::numeric_limits<double>::lowest());
    });
}

TEST(TessEditNumberAdapter, TheCellAndTheControlFollowEachOther) {
    AdapterScene scene(kSheet, Layout(R"(
        wex_edit_number(identifier: 'Gain', use_slider: true, min_value: -24, max_value: 12,
                        min_slider_width: 144, bind: @gain);
        wex_edit_number(identifier: 'Doubled', min_value: -100, max_value: 100,
                        bind: @doubled);
        wex_edit_number(identifier: 'N', bind: @nothing);)"));
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

    // An empty cell shows no value.
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
    scene.Set("limits", Value("{ min_value: 0, max_value: 10 }"));
    EXPECT_EQ(mix.GetMaxValue(), 10.0);
    EXPECT_EQ(mix.GetValue(), 10.0);
    // Widened again, the control shows the cell's value rather than the clipped one.
    scene.Set("limits", Value("{ min_value: 0, max_value: 200 }"));
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

    // A later value of the cell replaces the ruler; absent keys take their defaults again.
    scene.Set("ruler", Value("{ type: 4, value1: -60, value2: 6 }"));
    auto* fader = dynamic_cast<qorui::DecibelRuler*>(gain.GetRuler().get());
    ASSERT_NE(fader, nullptr);
    EXPECT_EQ(fader->GetStyle(), qorui::DecibelRuler::kStyleFader);
    EXPECT_EQ(fader->GetValue1(), -60.0);
    EXPECT_EQ(gain.GetRulerPlacement(), qoraudiofiltersui::kRulerPlacementLeftTop);

    auto* log = dynamic_cast<qorui::LogRuler*>(scene.As<EditNumber>("Freq").GetRuler().get());
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(log->GetLogSeed(), 2.0);
    EXPECT_EQ(log->GetFontSize(), 8.0f);
    EXPECT_EQ(log->GetValue1(), 20.0) << "the control's range when the settings give none";
    EXPECT_EQ(log->GetValue2(), 20000.0);
    EXPECT_EQ(scene.As<EditNumber>("NoSlider").GetRuler(), nullptr);
}

TEST(TessEditNumberAdapter, TheTypedReaderRaisesBadCast) {
    AdapterScene scene(kSheet, Layout("static_text(name: 'host');"));
    // A cell named for a dictionary must hold one.
    for (const char* arguments :
         {"{ digits: 'six' }", "{ ruler_settings: @text, use_slider: true }"})
        EXPECT_THROW(
            qoraudiofiltersui::TessEditNumberAdapter(Value(arguments).cast<vorlen::dictionary_t>(),
                                                     scene.root.get(), scene.Token()),
            vorlen::bad_cast)
            << arguments;
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
