// The parametric dynamics' editor on the reference effect: the drawn curve is the band's gain as
// sines measured through the effect show it, the controls reach the filter through the layout's
// map, the lamps and meters follow a live programme and go quiet when the editor closes; the hard
// limiter's generic editor carries its parameters through its sheet; both draw like their goldens.
#include "../audio/audio_test_helpers.hpp"
#include "fft_filter_scene.hpp"
#include "golden_image.hpp"

#include "audio/dsp/hard_limiter.hpp"
#include "audio/dsp/parametric_dynamics.hpp"
#include "audio/host/audio_source.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/test_signal_source.hpp"
#include "controls/edit_number.hpp"
#include "effects/parametric_dynamics_editor_view.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/skins/skins.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <tuple>

using namespace qoraudiofiltersui;
using qafui_testing::EditorScene;
using qoraudiofilters::HardLimiter;
using qoraudiofilters::ParametricDynamics;
using PD = ParametricDynamics;
namespace skins = qorui::skins;

namespace {

constexpr const char* kGuid = "1EEE85A7-3087-439E-906D-DC6204330E25";
constexpr const char* kHardLimiterGuid = "E0B23F05-F1A7-4EF7-9B50-7EC3E3002058";
constexpr float kRate = 48000.0f;

void SetPlain(qoraudiofilterhost::AudioFilter& filter, int index, double plain) {
    filter.SetParameterValue(index,
                             filter.GetParameterInfo(index)->NormalisedFromPlain(float(plain)));
}

/// A stereo 1 kHz sine whose level can change as it plays.
class SineSource : public qafhost::AudioSource {
public:
    float GetSampleRate() const override { return kRate; }
    std::size_t GetChannelCount() const override { return 2; }
    void Read(float* const* channels, std::size_t count, std::size_t frames) override {
        for (std::size_t i = 0; i < frames; ++i, ++at_)
            for (std::size_t c = 0; c < count; ++c)
                channels[c][i] = float(amplitude * std::sin(2e3 * std::numbers::pi * at_ / kRate));
    }
    void Rewind() override { at_ = 0; }

    double amplitude = 0.0;

private:
    std::size_t at_ = 0;
};

/// The editor on an effect that a virtual-clock host feeds with `source`.
class DynamicsScene : public EditorScene<ParametricDynamicsEditorView> {
public:
    DynamicsScene(std::shared_ptr<PD> theEffect, std::unique_ptr<qafhost::AudioSource> source,
                  float scale = 1.0f)
        : EditorScene(kGuid, theEffect, scale), effect(std::move(theEffect)),
          host(effect, {512, qafhost::ProcessHost::Clock::kVirtual, {}}) {
        host.SetSource(std::move(source));
    }
    void Play(double seconds) {
        for (double t = 0; t < seconds; t += 0.02) {
            host.Advance(0.02);
            window->AdvanceTime(0.02);
        }
    }

    std::shared_ptr<PD> effect;
    qafhost::ProcessHost host;
};

/// The curve's output at `input` dB, between its points.
double DrawnAt(const std::vector<std::array<double, 2>>& curve, double input) {
    for (std::size_t i = 1; i < curve.size(); ++i)
        if (curve[i][0] >= input) {
            const double t = (input - curve[i - 1][0]) / (curve[i][0] - curve[i - 1][0]);
            return curve[i - 1][1] + t * (curve[i][1] - curve[i - 1][1]);
        }
    return NAN;
}

TEST(ParametricDynamicsEditor, TheDrawnCurveIsTheBandsGainMeasuredWithSines) {
    auto effect = std::make_shared<PD>(kRate, 2);
    DynamicsScene scene(effect, std::make_unique<SineSource>());
    // Written by a host while the editor is open: the fields and the curve follow.
    const std::pair<int, double> settings[] = {
        {PD::kThreshold, -30},         {PD::kRatio, 4},         {PD::kKnee, 8},
        {PD::kExpanderThreshold, -55}, {PD::kExpanderRatio, 2}, {PD::kOutputGain, 3}};
    for (const auto& setting : settings)
        SetPlain(*effect, setting.first, setting.second);
    scene.Tick();
    EXPECT_NEAR(scene.Find<EditNumber>("Threshold").GetValue(), -30.0, 1e-4);
    EXPECT_NEAR(scene.Find<EditNumber>("ExpanderRatio").GetValue(), 2.0, 1e-4);
    const auto& curve = scene.view->GetDrawnCurve();
    ASSERT_GT(curve.size(), 100u);

    for (double level : {-66.0, -58.0, -52.0, -44.0, -36.0, -32.0, -28.0, -24.0, -15.0, -8.0}) {
        PD through(kRate, 2);
        for (int i = 0; i < PD::kParameterCount; ++i)
            through.SetParameterValue(i, effect->GetParameterValue(i));
        const auto sine = audiotest::Sine(1000.0, std::pow(10.0, level / 20.0), kRate, 72000);
        std::vector<float> left(sine.size()), right(sine.size());
        for (std::size_t at = 0; at < sine.size(); at += 512) {
            const float* inputs[] = {sine.data() + at, sine.data() + at};
            float* outputs[] = {left.data() + at, right.data() + at};
            through.Process(inputs, outputs, 2, std::min<std::size_t>(512, sine.size() - at));
        }
        const double measured = audiotest::Decibels(
            audiotest::AmplitudeAt(left, 1000.0, kRate, left.size() - 24000, 24000));
        EXPECT_NEAR(DrawnAt(curve, level), measured, 0.5) << level << " dB";
    }
}

TEST(ParametricDynamicsEditor, LampsAndMetersFollowTheProgrammeAndStopWithTheEditor) {
    auto effect = std::make_shared<PD>(kRate, 2);
    SetPlain(*effect, PD::kGateEnable, 1);
    SetPlain(*effect, PD::kGateThreshold, -50);
    SetPlain(*effect, PD::kCeiling, -20); // under the compressed band (-16 dB at full scale)
    auto source = std::make_unique<SineSource>();
    SineSource* sine = source.get();
    auto scene = std::make_unique<DynamicsScene>(effect, std::move(source));

    const struct {
        double amplitude;
        bool gate, limiter;
    } rows[] = {{0.0, true, false}, {1.0, false, true}, {0.01, false, false}, {0.0, true, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.amplitude);
        sine->amplitude = row.amplitude;
        scene->Play(1.0);
        EXPECT_EQ(scene->view->IsGateIndicatorLit(), row.gate);
        EXPECT_EQ(scene->view->IsLimiterIndicatorLit(), row.limiter);
        if (row.amplitude > 0.0) {
            // The band meter reads the sine's level; the reduction meter the band's static gain.
            const double level = 20.0 * std::log10(row.amplitude);
            EXPECT_NEAR(scene->Find<qorui::UI_LevelMeterView>("BandLevelMeter").GetLevelDB(0),
                        level, 0.3);
            EXPECT_NEAR(scene->Find<qorui::UI_LevelMeterView>("GainReductionMeter").GetLevelDB(0),
                        effect->GetBandGainDecibels(level), 0.3);
        }
    }

    // Closed: the filter stops gathering and the message in flight ends.
    scene.reset();
    EXPECT_FALSE(effect->IsMeterActive());
    qafhost::ProcessHost host(effect, {512, qafhost::ProcessHost::Clock::kVirtual, {}});
    host.Advance(0.05);
    qorcore::MainThreadQueue::Get().RunPending();
    EXPECT_EQ(effect->GetPostedMessageCount(), 0u);
}

TEST(HardLimiterEditor, EveryParameterGoesThroughTheSheetAndBack) {
    auto limiter = std::make_shared<HardLimiter>(kRate, 2);
    const float values[] = {0.137f, 0.61f, 0.0421f, 0.9f, 0.0f, 1.0f, 1.0f};
    for (int i = 0; i < HardLimiter::kParameterCount; ++i)
        limiter->SetParameterValue(i, values[i]);
    EditorScene<MarlTessAudioFilterEditorView> scene(kHardLimiterGuid, limiter);
    for (int tick = 0; tick < 3; ++tick)
        scene.Tick();
    for (int i = 0; i < HardLimiter::kParameterCount; ++i)
        EXPECT_NEAR(limiter->GetParameterValue(i), values[i], 2e-7) << i;
    EXPECT_NEAR(scene.Find<EditNumber>("InputGain").GetValue(), 0.137 * 48 - 24, 1e-4);
    EXPECT_NEAR(scene.Find<EditNumber>("Ceiling").GetValue(), 0.61 * 24 - 24, 1e-4);
    EXPECT_NEAR(scene.Find<EditNumber>("LookAhead").GetValue(), 18.0, 1e-4);
}

class ParametricDynamicsGolden
    : public ::testing::TestWithParam<std::tuple<bool, float, skins::Skin>> {};

TEST_P(ParametricDynamicsGolden, DrawLikeTheirGoldensOverALiveProgramme) {
    const auto [limiter, scale, skin] = GetParam();
    const skins::ScopedSkin look(skin);
    std::shared_ptr<qoraudiofilters::ReferenceEffect> effect;
    if (limiter)
        effect = std::make_shared<HardLimiter>(kRate, 2);
    else
        effect = std::make_shared<PD>(kRate, 2);
    qafhost::ProcessHost host(effect, {512, qafhost::ProcessHost::Clock::kVirtual, {}});
    host.SetSource(std::make_unique<qafhost::TestSignalSource>(
        qafhost::TestSignalSource::Kind::kMix, kRate, 2));
    EditorScene<qoraudiofilterhostui::AudioFilterEditorViewBase> scene(
        limiter ? kHardLimiterGuid : kGuid, effect, scale);
    scene.window->SetBackgroundColor(skins::GetContentBackgroundColor());
    for (int step = 0; step < 100; ++step) {
        host.Advance(0.01);
        scene.window->AdvanceTime(0.01);
    }
    scene.window->RenderAll();
    const std::string name = std::string(limiter ? "hard_limiter_" : "parametric_dynamics_") +
                             std::string(skins::GetSkinName(skin)) +
                             (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(scene.window->GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(Looks, ParametricDynamicsGolden,
                         ::testing::Combine(::testing::Bool(), ::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(skins::Skin::kClassic,
                                                              skins::Skin::kV7)));

} // namespace
