// The loudness meter's editor on the reference meter: the display rounding and the ruler around
// the target, absolute and relative units, the held true peak and its reset, the settings bound
// through the layout's parameter map, and both tabs against their goldens with a live programme.
#include "fft_filter_scene.hpp"
#include "golden_image.hpp"

#include "audio/dsp/loudness_meter.hpp"
#include "audio/host/audio_source.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/test_signal_source.hpp"
#include "effects/loudness_meter_editor_view.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/panels/ui_tab_group.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/skins/skins.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "platform/widgets/ui_popup.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <tuple>
#include <vector>

using namespace qoraudiofiltersui;
using qafui_testing::EditorScene;
using qoraudiofilters::LoudnessMeter;
namespace skins = qorui::skins;

namespace {

constexpr const char* kGuid = "43F746B7-B34E-402B-8FB4-479CF3466264";
constexpr float kRate = 48000.0f;

/// A stereo 1 kHz sine whose level can change as it plays.
class SineSource : public qafhost::AudioSource {
public:
    float GetSampleRate() const override { return kRate; }
    std::size_t GetChannelCount() const override { return 2; }
    void Read(float* const* channels, std::size_t channelCount, std::size_t frameCount) override {
        const double amplitude = std::pow(10.0, peakDecibels / 20.0);
        for (std::size_t i = 0; i < frameCount; ++i, ++position_) {
            const float s = float(
                amplitude * std::sin(2.0 * std::numbers::pi * 1000.0 * double(position_) / kRate));
            for (std::size_t c = 0; c < channelCount; ++c)
                channels[c][i] = s;
        }
    }
    void Rewind() override { position_ = 0; }

    double peakDecibels = -23.0;

private:
    std::size_t position_ = 0;
};

/// The editor on a meter that a virtual-clock host feeds with `source`.
class LoudnessScene : public EditorScene<LoudnessMeterEditorView> {
public:
    explicit LoudnessScene(
        std::unique_ptr<qafhost::AudioSource> source, float scale = 1.0f,
        std::shared_ptr<LoudnessMeter> theMeter = std::make_shared<LoudnessMeter>(kRate, 2))
        : EditorScene(kGuid, theMeter, scale), meter(std::move(theMeter)),
          host(meter, {512, qafhost::ProcessHost::Clock::kVirtual, {}}) {
        host.SetSource(std::move(source));
    }
    void Play(double seconds) {
        for (double t = 0; t < seconds; t += 0.05) {
            host.Advance(0.05);
            window->AdvanceTime(0.05);
        }
    }
    std::string Text(const char* id) const { return Find<qorui::UI_StaticText>(id).GetText(); }
    qorui::UI_LevelMeterView& Meter(const char* id) const {
        return Find<qorui::UI_LevelMeterView>(id);
    }
    /// Writes a parameter in its real unit, as the host would.
    void SetReal(int index, float real) {
        const auto info = meter->GetParameterInfo(index);
        meter->SetParameterValue(index, info->NormalisedFromPlain(real));
        Tick();
    }

    std::shared_ptr<LoudnessMeter> meter;
    qafhost::ProcessHost host;
};

TEST(LoudnessMeterEditor, DisplayRoundingAndTheRulerAroundTheTarget) {
    const std::pair<float, float> rounding[] = {
        {-150.2f, -150.0f}, {-23.04f, -23.0f}, {-23.06f, -23.1f}, {-99.96f, -100.0f},
        {-100.5f, -101.0f}, {0.04f, 0.0f},     {-300.0f, -300.0f}};
    for (const auto& row : rounding)
        EXPECT_FLOAT_EQ(LoudnessMeterEditorView::RoundForDisplay(row.first), row.second)
            << row.first;

    // The target stands on the ruler in place of the nearest tick below it.
    EXPECT_EQ(LoudnessMeterEditorView::RulerValues(-41, -14, 3, -23),
              (std::vector<double>{-41, -38, -35, -32, -29, -26, -23, -20, -17, -14}));
    EXPECT_EQ(LoudnessMeterEditorView::RulerValues(-41, -14, 3, -24.5f),
              (std::vector<double>{-41, -38, -35, -32, -29, -26, -25, -20, -17, -14}));
    // Above the range it is left out, the ticks stay.
    EXPECT_EQ(LoudnessMeterEditorView::RulerValues(-18, 9, 3, 20).size(), 10u);
}

TEST(LoudnessMeterEditor, ScalesAndUnitsFollowTheParameters) {
    LoudnessScene scene(std::make_unique<SineSource>());
    struct Row {
        float scale, unit;
        float min, max;
        const char* unitText;
    } rows[] = {{0, 0, -41, -14, "LUFS"},
                {1, 0, -59, -5, "LUFS"},
                {0, 2, -18, 9, "LU"},
                {1, 3, -36, 18, "LU"},
                {0, 1, -41, -14, "LKFS"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "scale " << row.scale << " unit " << row.unit);
        scene.SetReal(LoudnessMeter::kScale, row.scale);
        scene.SetReal(LoudnessMeter::kUnit, row.unit);
        for (const char* id : {"ShortTermMeter", "IntegratedMeter", "MomentaryMeter"}) {
            EXPECT_EQ(scene.Meter(id).GetMinDBValue(), row.min) << id;
            EXPECT_EQ(scene.Meter(id).GetMaxDBValue(), row.max) << id;
        }
        EXPECT_EQ(scene.Text("ShortTermMeterUnit"), row.unitText);
        EXPECT_EQ(scene.Text("IntegratedUnit"), row.unitText);
        EXPECT_EQ(scene.Text("TruePeakUnit"), "dBTP");
    }
    // Absolute, the default scale: the target's tick is on the ruler.
    scene.SetReal(LoudnessMeter::kScale, 0);
    scene.SetReal(LoudnessMeter::kUnit, 0);
    auto* ruler = dynamic_cast<qorui::LinearRuler*>(scene.Meter("ShortTermMeter").GetRuler());
    ASSERT_NE(ruler, nullptr);
    const std::vector<double> ticks = ruler->GetMajorValues();
    EXPECT_NE(std::find(ticks.begin(), ticks.end(), -23.0), ticks.end());
}

TEST(LoudnessMeterEditor, ReadingsInAbsoluteAndRelativeUnits) {
    auto source = std::make_unique<SineSource>();
    SineSource* sine = source.get();
    LoudnessScene scene(std::move(source));
    EXPECT_EQ(scene.Text("ShortTerm"), "--") << "no reading before three seconds";
    EXPECT_EQ(scene.Text("LoudnessRange"), "--");
    scene.Play(4.0);
    EXPECT_EQ(scene.Text("ShortTerm"), "-23.0");
    EXPECT_EQ(scene.Text("Integrated"), "-23.0");

    // Relative: the distance to the target.
    scene.SetReal(LoudnessMeter::kTargetLevel, -20.0f);
    scene.SetReal(LoudnessMeter::kUnit, 2);
    EXPECT_EQ(scene.Text("ShortTerm"), "-3.0");
    EXPECT_EQ(scene.Text("ShortTermUnit"), "LU");

    // Above the target the reading turns orange.
    sine->peakDecibels = -12.0;
    scene.Play(4.0);
    EXPECT_EQ(scene.Text("ShortTerm"), "8.0");
    const auto color = scene.Find<qorui::UI_StaticText>("ShortTerm").GetTextColor();
    ASSERT_TRUE(color.has_value());
    EXPECT_NEAR(color->red, 0.901961f, 1e-5f);
}

TEST(LoudnessMeterEditor, TheTruePeakOnlyRisesUntilReset) {
    auto source = std::make_unique<SineSource>();
    SineSource* sine = source.get();
    LoudnessScene scene(std::move(source));
    EXPECT_EQ(scene.Text("TruePeak"), "-\u221E") << "nothing measured yet";
    sine->peakDecibels = -6.0;
    scene.Play(1.0);
    EXPECT_EQ(scene.Text("TruePeak"), "-6.0");
    sine->peakDecibels = -20.0;
    scene.Play(1.0);
    EXPECT_EQ(scene.Text("TruePeak"), "-6.0") << "held while the programme falls";
    EXPECT_NEAR(scene.meter->GetLoudnessMeterValues().truePeak, -6.0f, 0.05f);

    // The reset runs on the process thread while data keeps arriving; the view forgets its held
    // peak when the reset completes and shows what was measured since.
    scene.Click("ResetMeters");
    scene.Play(1.0);
    EXPECT_EQ(scene.Text("TruePeak"), "-20.0");
    EXPECT_EQ(scene.Text("ShortTerm"), "--") << "the short-term history went too";
}

TEST(LoudnessMeterEditor, SettingsAreBoundThroughTheParameterMap) {
    LoudnessScene scene(std::make_unique<SineSource>());
    auto& target = scene.Find<qorui::UI_HotTextNumber>("TargetLevel");
    EXPECT_EQ(target.GetMinValue(), -36.0);
    EXPECT_EQ(target.GetMaxValue(), -6.0);
    EXPECT_NEAR(target.GetValue(), -23.0, 1e-4);
    scene.SetReal(LoudnessMeter::kTargetLevel, -16.0f);
    EXPECT_NEAR(target.GetValue(), -16.0, 1e-4);
    EXPECT_NEAR(scene.Meter("ShortTermMeter").GetMaxDBValue(), -7.0f, 1e-4f) << "the scale follows";

    // The popup's first row is the +9 scale, its second the +18 one.
    scene.Find<qorui::UI_Popup>("Scale").ChooseItem(1);
    scene.Tick();
    EXPECT_NEAR(scene.Meter("ShortTermMeter").GetMinDBValue(), -52.0f, 1e-4f);
    EXPECT_NEAR(scene.Meter("ShortTermMeter").GetMaxDBValue(), 2.0f, 1e-4f);

    auto& unit = scene.Find<qorui::UI_Popup>("Unit");
    unit.ChooseItem(3);
    EXPECT_NEAR(scene.meter->GetParameterInfo(LoudnessMeter::kUnit)
                    ->PlainFromNormalised(scene.meter->GetParameterValue(LoudnessMeter::kUnit)),
                3.0f, 1e-5f);
    scene.Tick();
    EXPECT_EQ(scene.Text("IntegratedUnit"), "LU");
}

TEST(LoudnessMeterEditor, LiveRepaintsLeaveWhatAWholePaintShows) {
    // The meters repaint only their bars as readings arrive; the result must be the picture a
    // whole paint makes.
    LoudnessScene scene(std::make_unique<qafhost::TestSignalSource>(
        qafhost::TestSignalSource::Kind::kMix, kRate, 2));
    scene.window->RenderAll();
    for (int step = 0; step < 40; ++step) {
        scene.Play(0.1);
        scene.window->Render();
    }
    const auto& image = scene.window->GetImage();
    std::vector<std::uint32_t> live;
    for (int y = 0; y < image.GetPixelHeight(); ++y)
        for (int x = 0; x < image.GetPixelWidth(); ++x)
            live.push_back(image.GetRawPixel(x, y));
    scene.window->RenderAll();
    std::size_t differing = 0;
    for (int y = 0, i = 0; y < image.GetPixelHeight(); ++y)
        for (int x = 0; x < image.GetPixelWidth(); ++x, ++i)
            differing += image.GetRawPixel(x, y) != live[std::size_t(i)];
    EXPECT_EQ(differing, 0u);
}

class LoudnessMeterGolden : public ::testing::TestWithParam<std::tuple<float, skins::Skin, int>> {};

TEST_P(LoudnessMeterGolden, BothTabsDrawLikeTheirGoldens) {
    const auto [scale, skin, tab] = GetParam();
    const skins::ScopedSkin look(skin);
    auto scene =
        std::make_unique<LoudnessScene>(std::make_unique<qafhost::TestSignalSource>(
                                            qafhost::TestSignalSource::Kind::kMix, kRate, 2),
                                        scale);
    scene->window->SetBackgroundColor(skins::GetContentBackgroundColor());
    scene->Play(5.0);
    if (tab == 1) {
        auto& tabs = scene->Find<qorui::UI_TabGroup>("Tabs");
        const auto rect = tabs.GetTabRect(1);
        const auto at = tabs.UI_LocalToGlobalF({rect.x + rect.width / 2, rect.y + rect.height / 2});
        scene->window->Click(at.x, at.y);
        scene->Tick();
        ASSERT_EQ(tabs.GetSelectedTab(), 1);
    }
    scene->window->RenderAll();
    const std::string name = std::string("loudness_meter_") +
                             std::string(skins::GetSkinName(skin)) +
                             (tab == 1 ? "_settings" : "_levels") + (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(scene->window->GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(Looks, LoudnessMeterGolden,
                         ::testing::Combine(::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(skins::Skin::kClassic,
                                                              skins::Skin::kV7),
                                            ::testing::Values(0, 1)));

} // namespace
