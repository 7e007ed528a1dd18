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

using adapter_testing::AdapterScene;
using adapter_testing::FailureOf;
using qorui::LevelMeterKind;
using qorui::LevelMeterOrientation;
using qorui::UI_LevelMeterView;
using vorlen::any_regular_t;
using vorlen::name_t;

const char* const kSheet = R"(sheet Meter {
interface:
    level: 0.5;
    clipped: false;
    frozen: false;
    reset: false;
    valid: false;
    text: 'loud';
})";

std::string Layout(const std::string& widgets) {
    return "layout Test { view row(margin: 4, spacing: 4) {\n" + widgets + "\n} }";
}

TEST(TessLevelMeterAdapter, ArgumentsDescribeTheMeter) {
    AdapterScene scene(kSheet, Layout(R"(
        qor_level_meter(identifier: 'GR', num_channels: 1, type: @gain_reduction,
                        orientation: @vertical, show_gradient: false, show_ruler: true,
                        show_LED: true, show_clip: false, show_peaks: false, show_valley: true,
                        use_spectrum_colors: true, min_dB: -48, max_dB: 0, meter_gap: 3,
                        caution_level: -20, warning_level: -6, zero_ref_Value: 0.5,
                        clipped_ref_level: 0.9, width: 36, height: 200, ruler_step: 2,
                        ruler_label1: '$$$/qafui/Test/Reduction=GR', ruler_label2: 'dB');
        qor_level_meter(identifier: 'Stereo', num_channels: ['L', 'R'], orientation: @sideways,
                        type: @loudness, ruler_values: [-60, -23, -18, 0]);
        qor_level_meter(identifier: 'Wide', orientation: @horizontal, width: 150, height: 20,
                        min_dB: -30, max_dB: 6, ruler_increment: 6, value: -99.0);)"));
    auto& gr = scene.As<UI_LevelMeterView>("GR");
    EXPECT_EQ(gr.GetChannelCount(), 1u);
    EXPECT_EQ(gr.GetMeterKind(0), LevelMeterKind::kGainReduction);
    EXPECT_EQ(gr.GetOrientation(), LevelMeterOrientation::kVertical);
    const qorui::LevelMeterSettings& settings = gr.GetSettings();
    EXPECT_EQ(settings.minDB, -48.0f);
    EXPECT_EQ(settings.maxDB, 0.0f);
    EXPECT_FALSE(settings.showGradient);
    EXPECT_TRUE(settings.showLED);
    EXPECT_TRUE(settings.showValley);
    EXPECT_TRUE(settings.useSpectrumColors);
    EXPECT_EQ(settings.cautionLevel, -20.0f);
    EXPECT_EQ(settings.warningLevel, -6.0f);
    EXPECT_EQ(settings.zeroRefValue, 0.5f);
    EXPECT_EQ(settings.clippedRefLevel, 0.9f);
    EXPECT_TRUE(gr.GetShowRuler());
    EXPECT_FALSE(gr.GetShowClipIndicators());
    EXPECT_FALSE(gr.GetShowPeaks());
    EXPECT_EQ(gr.GetMeterGap(), 3.0f);
    EXPECT_EQ(gr.GetRuler()->GetStepFactor(), 2.0);
    EXPECT_EQ(gr.GetRuler()->GetLabel1(), "GR");
    EXPECT_EQ(gr.GetRuler()->GetLabel2(), "dB");
    EXPECT_EQ(gr.GetFrame().width, 36.0f);
    EXPECT_EQ(gr.GetFrame().height, 200.0f);

    auto& stereo = scene.As<UI_LevelMeterView>("Stereo");
    EXPECT_EQ(stereo.GetChannelCount(), 2u) << "a list of channels counts them";
    EXPECT_EQ(stereo.GetOrientation(), LevelMeterOrientation::kVertical)
        << "anything but horizontal is vertical";
    EXPECT_EQ(stereo.GetMeterKind(0), LevelMeterKind::kLoudness);
    auto* custom = dynamic_cast<qorui::LinearRuler*>(stereo.GetRuler());
    ASSERT_NE(custom, nullptr);
    EXPECT_EQ(custom->GetCustomValues(), (std::vector<double>{-60, -23, -18, 0}));

    auto& wide = scene.As<UI_LevelMeterView>("Wide");
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
    auto& meter = scene.As<UI_LevelMeterView>("M");
    EXPECT_NEAR(meter.GetLevelDB(0), 20 * std::log10(0.5), 1e-4);
    scene.Set("level", any_regular_t(1.0));
    EXPECT_NEAR(meter.GetLevelDB(0), 0.0, 1e-6);
    EXPECT_NEAR(meter.GetValleyDB(0), 20 * std::log10(0.5), 1e-4);

    // No level is not a level of 0: the valley mark is not pulled down by it.
    scene.Set("level", any_regular_t(vorlen::empty_t()));
    EXPECT_EQ(meter.GetLevelDB(0), -60.0f);
    scene.Set("level", any_regular_t(1.0));
    EXPECT_NEAR(meter.GetValleyDB(0), 20 * std::log10(0.5), 1e-4);
    scene.Set("level", any_regular_t(0.0));
    scene.Set("level", any_regular_t(1.0));
    EXPECT_EQ(meter.GetValleyDB(0), -60.0f) << "a level of 0 is a level";

    EXPECT_THROW(scene.Set("level", any_regular_t(std::string("loud"))), std::logic_error);
    EXPECT_EQ(FailureOf(kSheet, Layout("qor_level_meter(bind: @text);")),
              "test.tss:2:1: value must be bound to either a number or an empty_t");
}

TEST(TessLevelMeterAdapter, ClipFreezeAndResetCellsFollowTheMeter) {
    AdapterScene scene(kSheet, Layout(R"(qor_level_meter(identifier: 'M', height: 150,
        clip_indicator: @clipped, freeze: @frozen, reset: @reset, loudness_valid: @valid,
        bind: @level);)"));
    auto& meter = scene.As<UI_LevelMeterView>("M");
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
    const qormarltess::FactoryToken token(scene.Holder(), nullptr, nullptr, nullptr, false);
    vorlen::dictionary_t arguments;
    arguments[name_t("width")] = any_regular_t(30.0);
    arguments[name_t("height")] = any_regular_t(90.0);
    arguments[name_t("baseline")] = any_regular_t(12.0);
    qoraudiofiltersui::TessLevelMeterAdapter adapter(arguments, scene.root.get(), token);
    vorlen::extents_t extents;
    adapter.measure(extents);
    EXPECT_EQ(extents.width(), 30);
    EXPECT_EQ(extents.height(), 90);
    EXPECT_EQ(extents.vertical().guide_set, (vorlen::guide_set_t{12}));
    EXPECT_TRUE(extents.horizontal().guide_set.empty());

    arguments[name_t("baseline")] = any_regular_t(std::string("middle"));
    EXPECT_THROW(qoraudiofiltersui::TessLevelMeterAdapter(arguments, scene.root.get(), token),
                 vorlen::bad_cast);
    scene.root->RemoveAllChildren();
}

TEST(TessLevelMeterAdapter, BadArgumentsFailWithTheirMessages) {
    const std::string type = FailureOf(kSheet, Layout("qor_level_meter(type: @peak);"));
    EXPECT_NE(type.find("type 'peak' is none of"), std::string::npos) << type;
    const std::string range = FailureOf(kSheet, Layout("qor_level_meter(min_dB: 0, max_dB: -6);"));
    EXPECT_NE(range.find("min dB must be below max dB"), std::string::npos) << range;
    const std::string step =
        FailureOf(kSheet, Layout("qor_level_meter(min_dB: -60, ruler_increment: 0);"));
    EXPECT_NE(step.find("ruler_increment"), std::string::npos) << step;
    const std::string wrong = FailureOf(kSheet, Layout("qor_level_meter(show_LED: 'yes');"));
    EXPECT_NE(wrong.find("bad_cast"), std::string::npos) << wrong;
}

} // namespace
