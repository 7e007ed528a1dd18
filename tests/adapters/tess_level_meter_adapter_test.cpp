// "qor_level_meter" in layouts: the meter as its arguments describe it, levels through the bound
// cell (an empty one clears the level), and the clip, freeze and reset cells.
#include "adapter_scene.hpp"

#include "adapters/tess_level_meter_adapter.hpp"
#include "core/bad_cast.hpp"
#include "layout/extents.hpp"
#include "platform/rulers/linear_ruler.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace adapter_testing;
using qorui::LevelMeterKind;
using qorui::LevelMeterOrientation;
using Meter = qorui::UI_LevelMeterView;
using Settings = qorui::LevelMeterSettings;
using MeterArgs = std::vector<Argument<Meter>>;
// One argument of the control; a function, since aggregates take no parentheses everywhere.
template <typename Value, typename Getter>
Argument<Meter> MeterArg(const char* name, Value value, Getter getter) {
    return Arg<Meter>(name, value, getter);
}

const char* const kSheet = R"(sheet Meter {
interface:
    level: 0.5;
    clipped: false;
    frozen: false;
    reset: false;
    valid: false;
})";

std::string Layout(const std::string& widgets) {
    return "layout Test { view row(margin: 4, spacing: 4) {\n" + widgets + "\n} }";
}

/// A getter of one field of the meter's settings.
template <typename Field>
auto Setting(Field Settings::*field) {
    return [field](const Meter& meter) {
        return meter.GetSettings().*field;
    };
}

TEST(TessLevelMeterAdapter, ArgumentsDescribeTheMeter) {
    const MeterArgs arguments = {
        MeterArg("num_channels", 1, &Meter::GetChannelCount),
        MeterArg("show_gradient", false, Setting(&Settings::showGradient)),
        MeterArg("show_ruler", true, &Meter::GetShowRuler),
        MeterArg("show_LED", true, Setting(&Settings::showLED)),
        MeterArg("show_clip", false, &Meter::GetShowClipIndicators),
        MeterArg("show_peaks", false, &Meter::GetShowPeaks),
        MeterArg("show_valley", true, Setting(&Settings::showValley)),
        MeterArg("use_spectrum_colors", true, Setting(&Settings::useSpectrumColors)),
        MeterArg("min_dB", -48, &Meter::GetMinDBValue),
        MeterArg("max_dB", 0, &Meter::GetMaxDBValue),
        MeterArg("meter_gap", 3, &Meter::GetMeterGap),
        MeterArg("caution_level", -20, Setting(&Settings::cautionLevel)),
        MeterArg("warning_level", -6, Setting(&Settings::warningLevel)),
        MeterArg("zero_ref_Value", 0.5, Setting(&Settings::zeroRefValue)),
        MeterArg("clipped_ref_level", 0.875, Setting(&Settings::clippedRefLevel)),
        MeterArg("width", 36, [](const Meter& m) { return m.GetFrame().width; }),
        MeterArg("height", 200, [](const Meter& m) { return m.GetFrame().height; }),
        MeterArg("ruler_step", 2, [](const Meter& m) { return m.GetRuler()->GetStepFactor(); }),
        MeterArg("ruler_label2", "dB", [](const Meter& m) { return m.GetRuler()->GetLabel2(); }),
    };
    ExpectRoundTrip<Meter>(kSheet, "qor_level_meter", arguments,
                           ", type: @gain_reduction, orientation: @vertical, "
                           "ruler_label1: '$$$/qafui/Test/Reduction=GR'",
                           [](auto&, Meter& gr) {
                               EXPECT_EQ(gr.GetMeterKind(0), LevelMeterKind::kGainReduction);
                               EXPECT_EQ(gr.GetOrientation(), LevelMeterOrientation::kVertical);
                               EXPECT_EQ(gr.GetRuler()->GetLabel1(), "GR");
                           });

    AdapterScene scene(kSheet, Layout(R"(
        qor_level_meter(identifier: 'Stereo', num_channels: ['L', 'R'], orientation: @sideways,
                        type: @loudness, ruler_values: [-60, -23, -18, 0]);
        qor_level_meter(identifier: 'Wide', orientation: @horizontal, width: 150, height: 20,
                        min_dB: -30, max_dB: 6, ruler_increment: 6, value: -99.0);)"));
    auto& stereo = scene.As<Meter>("Stereo");
    EXPECT_EQ(stereo.GetChannelCount(), 2u) << "a list of channels counts them";
    EXPECT_EQ(stereo.GetOrientation(), LevelMeterOrientation::kVertical)
        << "anything but horizontal is vertical";
    EXPECT_EQ(stereo.GetMeterKind(0), LevelMeterKind::kLoudness);
    auto* custom = dynamic_cast<qorui::LinearRuler*>(stereo.GetRuler());
    ASSERT_NE(custom, nullptr);
    EXPECT_EQ(custom->GetCustomValues(), (std::vector<double>{-60, -23, -18, 0}));

    auto& wide = scene.As<Meter>("Wide");
    EXPECT_EQ(wide.GetOrientation(), LevelMeterOrientation::kHorizontal);
    auto* stepped = dynamic_cast<qorui::LinearRuler*>(wide.GetRuler());
    ASSERT_NE(stepped, nullptr);
    EXPECT_EQ(stepped->GetCustomValues(), (std::vector<double>{-30, -24, -18, -12, -6, 0, 6}));
    EXPECT_EQ(wide.GetLevelDB(0), -30.0f) << "a first value of -99 shows the meter empty";
    EXPECT_TRUE(wide.GetBarRect(0, wide.GetLevelDB(0)).IsEmpty());
    // Meters sit side by side in the row, each at the size it was given.
    EXPECT_EQ(wide.GetFrame().width, 150.0f);
    EXPECT_GT(wide.GetFrame().x, stereo.GetFrame().x);
}

TEST(TessLevelMeterAdapter, TheBoundCellFeedsTheLevelAndEmptyClearsIt) {
    AdapterScene scene(kSheet, Layout("qor_level_meter(identifier: 'M', min_dB: -60, "
                                      "max_dB: 6, show_valley: true, bind: @level);"));
    auto& meter = scene.As<Meter>("M");
    const double half = 20 * std::log10(0.5);
    EXPECT_NEAR(meter.GetLevelDB(0), half, 1e-4);
    scene.Set("level", any_regular_t(1.0));
    EXPECT_NEAR(meter.GetLevelDB(0), 0.0, 1e-6);
    EXPECT_NEAR(meter.GetValleyDB(0), half, 1e-4);

    // No level is not a level of 0: the valley mark is not pulled down by it.
    scene.Set("level", any_regular_t(vorlen::empty_t()));
    EXPECT_EQ(meter.GetLevelDB(0), -60.0f);
    scene.Set("level", any_regular_t(1.0));
    EXPECT_NEAR(meter.GetValleyDB(0), half, 1e-4);
    scene.Set("level", any_regular_t(0.0));
    scene.Set("level", any_regular_t(1.0));
    EXPECT_EQ(meter.GetValleyDB(0), -60.0f) << "a level of 0 is a level";
    EXPECT_THROW(scene.Set("level", any_regular_t(std::string("loud"))), std::logic_error);
}

TEST(TessLevelMeterAdapter, ClipFreezeAndResetCellsFollowTheMeter) {
    AdapterScene scene(kSheet, Layout(R"(qor_level_meter(identifier: 'M', height: 150,
        clip_indicator: @clipped, freeze: @frozen, reset: @reset, loudness_valid: @valid,
        bind: @level);)"));
    auto& meter = scene.As<Meter>("M");
    EXPECT_FALSE(meter.IsLoudnessValid());
    scene.Set("valid", any_regular_t(true));
    EXPECT_TRUE(meter.IsLoudnessValid());

    // A clipping level lights the indicator; the cell hears of it once the round is over.
    scene.Set("level", any_regular_t(1.5));
    EXPECT_TRUE(meter.IsAnyClipped());
    EXPECT_EQ(scene.Get("clipped"), any_regular_t(true));
    // The sheet puts it out.
    scene.Set("clipped", any_regular_t(false));
    EXPECT_FALSE(meter.IsAnyClipped());
    // So does a click on the indicator, and the cell follows.
    scene.Set("level", any_regular_t(0.25));
    scene.Set("level", any_regular_t(2.0));
    ASSERT_EQ(scene.Get("clipped"), any_regular_t(true));
    const auto clip = meter.UI_LocalToGlobalF(meter.GetClipIndicatorRect(0).Center());
    scene.window->Click(clip.x, clip.y);
    EXPECT_FALSE(meter.IsAnyClipped());
    EXPECT_EQ(scene.Get("clipped"), any_regular_t(false));

    // Frozen, the meter keeps its level; the last one comes when the freeze ends.
    scene.Set("level", any_regular_t(0.5));
    scene.Set("frozen", any_regular_t(true));
    scene.Set("level", any_regular_t(0.1));
    scene.Set("level", any_regular_t(0.25));
    EXPECT_NEAR(meter.GetLevelDB(0), 20 * std::log10(0.5), 1e-4);
    scene.Set("frozen", any_regular_t(false));
    EXPECT_NEAR(meter.GetLevelDB(0), 20 * std::log10(0.25), 1e-4);

    // Reset clears the peak marks, which otherwise hold at the loudest level.
    EXPECT_EQ(meter.GetPeakDB(0), 0.0f) << "the clipping level's peak, at the top of the scale";
    scene.Set("reset", any_regular_t(true));
    EXPECT_NEAR(meter.GetPeakDB(0), 20 * std::log10(0.25), 1e-4) << "down to the level";
}

TEST(TessLevelMeterAdapter, ABaselineIsAGuideForTheLayout) {
    AdapterScene scene(kSheet, Layout("static_text(name: 'host');"));
    qoraudiofiltersui::TessLevelMeterAdapter adapter(
        Value("{ width: 30, height: 90, baseline: 12 }").cast<vorlen::dictionary_t>(),
        scene.root.get(), scene.Token());
    vorlen::extents_t extents;
    adapter.measure(extents);
    EXPECT_EQ(extents.width(), 30);
    EXPECT_EQ(extents.height(), 90);
    EXPECT_EQ(extents.vertical().guide_set, (vorlen::guide_set_t{12}));
    EXPECT_TRUE(extents.horizontal().guide_set.empty());
    EXPECT_THROW(qoraudiofiltersui::TessLevelMeterAdapter(
                     Value("{ baseline: 'middle' }").cast<vorlen::dictionary_t>(), scene.root.get(),
                     scene.Token()),
                 vorlen::bad_cast);
    scene.root->RemoveAllChildren();
}

} // namespace
