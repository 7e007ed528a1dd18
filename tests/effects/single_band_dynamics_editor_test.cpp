// The editors of the single-band dynamics, the tube-modelled compressor and the single-band
// compressor on their reference effects: the drawn transfer curve against sines measured
// through the effect, the order of the thresholds, the meters against what the host's output
// measures (and their silence once closed), the output gain's fader, the graph's look and its
// ranges kept by the effect, the generic editor's sheet, and all three against their goldens
// with a live programme.
#include "../audio/audio_test_helpers.hpp"
#include "fft_filter_scene.hpp"
#include "golden_image.hpp"

#include "audio/dsp/single_band_compressor.hpp"
#include "audio/dsp/single_band_dynamics.hpp"
#include "audio/dsp/tube_modeled_compressor.hpp"
#include "audio/host/audio_source.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/test_signal_source.hpp"
#include "controls/edit_number.hpp"
#include "effects/single_band_dynamics_editor_view.hpp"
#include "effects/tube_modeled_comp_editor_view.hpp"
#include "graphs/curve_editor.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/skins/skins.hpp"
#include "platform/widgets/ui_slider.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <mutex>
#include <numbers>
#include <string>
#include <tuple>
#include <vector>

using namespace qoraudiofiltersui;
using qafui_testing::EditorScene;
using qoraudiofilters::ReferenceEffect;
using qoraudiofilters::SingleBandCompressor;
using qoraudiofilters::SingleBandDynamics;
using qoraudiofilters::TubeModeledCompressor;
using HostView = qoraudiofilterhostui::AudioFilterEditorViewBase;
namespace skins = qorui::skins;

namespace {

constexpr const char* kDynamicsGuid = "114CB079-F1B9-44E5-A8BF-C38ACB04958F";
constexpr const char* kTubeGuid = "F527FD12-24BF-411F-A46E-5B997CEC32D4";
constexpr const char* kCompressorGuid = "2DA3E2BC-5005-481C-BBEB-7689D3169EDF";
constexpr float kRate = 48000.0f;

void SetPlain(ReferenceEffect& effect, int index, double plain) {
    effect.StoreValue(index, effect.GetParameterInfo(index)->NormalisedFromPlain(float(plain)));
    effect.UpdateFromParameters();
}

/// A stereo 1 kHz sine at a peak level in dB.
class SineSource : public qafhost::AudioSource {
public:
    explicit SineSource(double decibels) : amplitude_(std::pow(10.0, decibels / 20.0)) {}
    float GetSampleRate() const override { return kRate; }
    std::size_t GetChannelCount() const override { return 2; }
    void Read(float* const* channels, std::size_t channelCount, std::size_t frameCount) override {
        for (std::size_t i = 0; i < frameCount; ++i, ++position_) {
            const float s = float(amplitude_ * std::sin(2.0 * std::numbers::pi * 1000.0 *
                                                        double(position_) / double(kRate)));
            for (std::size_t c = 0; c < channelCount; ++c)
                channels[c][i] = s;
        }
    }
    void Rewind() override { position_ = 0; }

private:
    double amplitude_;
    std::size_t position_ = 0;
};

/// An editor made through the registry on `effect`, which a virtual-clock host plays; the
/// host's left output is kept.
template <class View>
class LiveScene : public EditorScene<View> {
public:
    LiveScene(const char* guid, std::shared_ptr<ReferenceEffect> theEffect,
              std::unique_ptr<qafhost::AudioSource> source, float scale = 1.0f)
        : EditorScene<View>(guid, theEffect, scale), effect(std::move(theEffect)),
          host(effect, {512, qafhost::ProcessHost::Clock::kVirtual,
                        [this](const float* const* channels, std::size_t, std::size_t frames) {
                            std::lock_guard lock(mutex);
                            output.insert(output.end(), channels[0], channels[0] + frames);
                        }}) {
        host.SetSource(std::move(source));
    }
    void Play(double seconds) {
        for (double t = 0; t < seconds - 1e-9; t += 0.01) {
            host.Advance(0.01);
            this->window->AdvanceTime(0.01);
        }
    }
    /// The level in dB of the last quarter second of output at 1 kHz.
    double OutputLevel() {
        std::lock_guard lock(mutex);
        return audiotest::Decibels(
            audiotest::AmplitudeAt(output, 1000.0, kRate, output.size() - 12000, 12000));
    }
    qorui::UI_LevelMeterView& Meter(const char* id) const {
        return this->template Find<qorui::UI_LevelMeterView>(id);
    }

    std::shared_ptr<ReferenceEffect> effect;
    std::mutex mutex;
    std::vector<float> output;
    qafhost::ProcessHost host;
};

/// Clicks the number of an edit number, types `text` and presses Return: one user's change.
template <class Scene>
void Type(Scene& scene, const char* id, const std::string& text) {
    const auto& hot = *scene.template Find<EditNumber>(id).GetHotTextNumber();
    const auto at = hot.UI_LocalToGlobalF({hot.GetFrame().width / 2, hot.GetFrame().height / 2});
    scene.window->Click(at.x, at.y);
    scene.window->TypeText(text);
    scene.window->PressKey(qorui::KeyboardCode::kReturn);
    scene.Tick();
}

/// The drawn output level at `input` dB, between the curve's samples.
double DrawnOutput(const SingleBandDynamicsContentLayer& layer, double input) {
    const auto& curve = layer.GetCurve();
    for (std::size_t i = 1; i < curve.size(); ++i)
        if (curve[i].first >= input) {
            const double t = (input - curve[i - 1].first) / (curve[i].first - curve[i - 1].first);
            return curve[i - 1].second + t * (curve[i].second - curve[i - 1].second);
        }
    return std::nan("");
}

TEST(SingleBandDynamicsEditor, TheDrawnCurveIsWhatSinesMeasureThroughTheEffect) {
    auto effect = std::make_shared<SingleBandDynamics>(kRate, 2);
    const double settings[][2] = {{0, 8},   {1, -4}, {4, 5},  {5, -28}, {8, 4},
                                  {9, -48}, {12, 3}, {13, 1}, {14, 0}};
    for (const auto& s : settings)
        SetPlain(*effect, int(s[0]), s[1]);
    EditorScene<SingleBandDynamicsEditorView> scene(kDynamicsGuid, effect);
    const auto& layer = scene.view->GetContentLayer();
    EXPECT_EQ(layer.GetCurve().front().first, scene.view->GetCurveEditor().GetHorizontalStart());
    EXPECT_EQ(layer.GetCurve().back().first, scene.view->GetCurveEditor().GetHorizontalEnd());

    for (double input = -57; input <= 0; input += 6) {
        SingleBandDynamics through(kRate, 2);
        for (int i = 0; i < SingleBandDynamics::kParameterCount; ++i)
            through.StoreValue(i, effect->GetParameterValue(i));
        through.UpdateFromParameters();
        const std::vector<float> signal =
            audiotest::Sine(1000.0, std::pow(10.0, input / 20.0), kRate, 96 * 512);
        std::vector<float> left(signal.size()), right(signal.size());
        for (std::size_t first = 0; first < signal.size(); first += 512) {
            const float* inputs[2] = {signal.data() + first, signal.data() + first};
            float* outputs[2] = {left.data() + first, right.data() + first};
            through.Process(inputs, outputs, 2, 512);
        }
        const double measured = audiotest::Decibels(
            audiotest::AmplitudeAt(left, 1000.0, kRate, left.size() - 12000, 12000));
        EXPECT_NEAR(DrawnOutput(layer, input), measured, 0.5) << input << " dB";
    }
}

struct OrderRow {
    const char* field;
    const char* typed;
    float limiter, compressor, gate; // from -1, -20, -50
};

TEST(SingleBandDynamicsEditor, ThresholdsKeepLimiterOverCompressorOverGate) {
    const OrderRow rows[] = {
        {"LimThreshold", "-30", -30, -30, -50},         // a lowered limiter pulls the compressor
        {"LimThreshold", "-55", -55, -55, -55},         // ... and then the gate down
        {"CompThreshold", "-0.5", -0.5f, -0.5f, -50},   // a raised compressor lifts the limiter
        {"CompThreshold", "-56", -1, -56, -56},         // a lowered one lowers the gate
        {"CompThreshold", "-30", -1, -30, -50},         // in order already: nothing else moves
        {"GateThreshold", "-10", -1, -10, -10},         // a raised gate lifts the compressor
        {"GateThreshold", "-0.2", -0.2f, -0.2f, -0.2f}, // ... and the limiter
    };
    for (const OrderRow& row : rows) {
        SCOPED_TRACE(std::string(row.field) + " " + row.typed);
        auto effect = std::make_shared<SingleBandDynamics>(kRate, 2);
        EditorScene<SingleBandDynamicsEditorView> scene(kDynamicsGuid, effect);
        Type(scene, row.field, row.typed);
        EXPECT_NEAR(effect->GetLimThreshold(), row.limiter, 1e-4);
        EXPECT_NEAR(effect->GetCompThreshold(), row.compressor, 1e-4);
        EXPECT_NEAR(effect->GetGateThreshold(), row.gate, 1e-4);
        // The numbers and the graph follow.
        EXPECT_NEAR(scene.Find<EditNumber>("LimThreshold").GetValue(), row.limiter, 1e-4);
        EXPECT_NEAR(scene.Find<EditNumber>("CompThreshold").GetValue(), row.compressor, 1e-4);
        EXPECT_NEAR(scene.Find<EditNumber>("GateThreshold").GetValue(), row.gate, 1e-4);
        const double at = row.compressor - 1.0;
        EXPECT_NEAR(DrawnOutput(scene.view->GetContentLayer(), at),
                    effect->GetStaticOutputDecibels(at), 0.05);
    }
}

struct MeterRow {
    const char* guid;
    std::function<std::shared_ptr<ReferenceEffect>()> make;
};

TEST(SingleBandEditors, MetersReadTheHostsOutputWhileOpenAndFallSilentAfterClose) {
    const MeterRow rows[] = {{kDynamicsGuid,
                              [] {
                                  return std::make_shared<SingleBandDynamics>(kRate, 2);
                              }},
                             {kTubeGuid, [] {
                                  return std::make_shared<TubeModeledCompressor>(kRate, 2);
                              }}};
    for (const MeterRow& row : rows) {
        SCOPED_TRACE(row.guid);
        const double input = -6.0;
        auto effect = row.make();
        auto scene = std::make_unique<LiveScene<HostView>>(row.guid, effect,
                                                           std::make_unique<SineSource>(input));
        auto& reduction = scene->Meter("GainReductionMeter");
        auto& output = scene->Meter("OutputMeter");
        ASSERT_EQ(output.GetChannelCount(), 2u) << "one meter per output channel";
        EXPECT_EQ(reduction.GetLevelDB(0), reduction.GetMaxDBValue()) << "no reduction yet";
        for (std::size_t c = 0; c < 2; ++c)
            EXPECT_EQ(output.GetLevelDB(c), output.GetMinDBValue()) << "no data yet";

        scene->Play(1.0);
        const double out = scene->OutputLevel();
        EXPECT_LT(out - input, -3.0) << "it compresses";
        EXPECT_NEAR(reduction.GetLevelDB(0), out - input, 0.3);
        for (std::size_t c = 0; c < 2; ++c)
            EXPECT_NEAR(output.GetLevelDB(c), out, 0.3);

        scene.reset();
        if (auto* dynamics = dynamic_cast<SingleBandDynamics*>(effect.get())) {
            EXPECT_FALSE(dynamics->IsMeterActive());
        }
        qafhost::ProcessHost host(effect, {512, qafhost::ProcessHost::Clock::kVirtual, {}});
        host.Advance(0.05);
        qorcore::MainThreadQueue::Get().RunPending();
        host.Advance(0.05);
        EXPECT_EQ(effect->GetPostedMessageCount(), 0u) << "nothing travels once closed";
    }
}

TEST(SingleBandEditors, TheFaderAndTheNumberShowTheOutputGainTogether) {
    const MeterRow rows[] = {{kDynamicsGuid,
                              [] {
                                  return std::make_shared<SingleBandDynamics>(kRate, 2);
                              }},
                             {kTubeGuid, [] {
                                  return std::make_shared<TubeModeledCompressor>(kRate, 2);
                              }}};
    for (const MeterRow& row : rows) {
        SCOPED_TRACE(row.guid);
        auto effect = row.make();
        const int index = effect->GetParameterCount() == 5 ? 4 : 12;
        EditorScene<HostView> scene(row.guid, effect);
        auto& fader = scene.Find<qorui::UI_Slider>("OutputGainSlider");
        effect->SetParameterValue(index, 0.75f);
        scene.Tick();
        EXPECT_DOUBLE_EQ(fader.GetValue(), 0.25) << "the top is the highest gain";
        EXPECT_NEAR(scene.Find<EditNumber>("OutputGain").GetValue(), 15.0, 1e-4);

        // A press near the fader's top end: the number follows within the gesture.
        const auto top = fader.UI_LocalToGlobalF({fader.GetFrame().width / 2, 12.0f});
        scene.window->MouseDown(top.x, top.y);
        EXPECT_GT(effect->GetParameterValue(index), 0.9f);
        EXPECT_NEAR(scene.Find<EditNumber>("OutputGain").GetValue(),
                    effect->GetParameterValue(index) * 60.0 - 30.0, 1e-3);
        scene.window->MouseUp(top.x, top.y);
    }
}

TEST(SingleBandDynamicsEditor, TheGraphFollowsTheLookAndOpensWhereTheLastEditorLeftIt) {
    auto effect = std::make_shared<SingleBandDynamics>(kRate, 2);
    double start = 0.0, top = 0.0;
    {
        const skins::ScopedSkin classic(skins::Skin::kClassic);
        EditorScene<SingleBandDynamicsEditorView> scene(kDynamicsGuid, effect);
        CurveEditor& graph = scene.view->GetCurveEditor();
        {
            // The grid takes the colour of a new look.
            const skins::ScopedSkin newer(skins::Skin::kV7);
            EXPECT_EQ(graph.GetGridColor(), skins::GetSpectrumGrayColor(2));
        }
        EXPECT_EQ(graph.GetGridColor(), skins::GetSpectrumGrayColor(2));
        graph.DoHorizontalZoomInAroundValue(-20.0);
        graph.DoVerticalZoomInAroundValue(-20.0);
        start = graph.GetHorizontalStart();
        top = graph.GetVerticalStart();
        ASSERT_GT(start, -72.0);
        EXPECT_NEAR(scene.view->GetContentLayer().GetCurve().front().first, start, 1e-9)
            << "the curve is drawn anew over the range shown";
    }
    EXPECT_NEAR(effect->GetHorizontalDisplayRange().low, start, 1e-4);
    EXPECT_NEAR(effect->GetVerticalDisplayRange().high, top, 1e-4);
    EditorScene<SingleBandDynamicsEditorView> again(kDynamicsGuid, effect);
    EXPECT_NEAR(again.view->GetCurveEditor().GetHorizontalStart(), start, 1e-4);
    EXPECT_NEAR(again.view->GetCurveEditor().GetVerticalStart(), top, 1e-4);
}

TEST(SingleBandCompressorEditor, EveryParameterGoesThroughTheSheetAndBackUnchanged) {
    auto effect = std::make_shared<SingleBandCompressor>(kRate, 2);
    const float values[] = {0.123f, 0.456f, 0.0789f, 0.321f, 0.654f};
    for (int i = 0; i < 5; ++i)
        effect->StoreValue(i, values[i]);
    EditorScene<HostView> scene(kCompressorGuid, effect);
    for (int tick = 0; tick < 5; ++tick)
        scene.Tick();
    const char* fields[] = {"Threshold", "Ratio", "Attack", "Release", "OutputGain"};
    for (int i = 0; i < 5; ++i) {
        EXPECT_NEAR(effect->GetParameterValue(i), values[i], 2e-7) << fields[i];
        EXPECT_NEAR(scene.Find<EditNumber>(fields[i]).GetValue(), effect->GetPlainValue(i), 1e-3)
            << fields[i];
    }
    Type(scene, "Ratio", "6");
    EXPECT_NEAR(effect->GetParameterValue(SingleBandCompressor::kRatio), 5.0f / 29.0f, 1e-6);
}

class SingleBandGolden
    : public ::testing::TestWithParam<std::tuple<const char*, float, skins::Skin>> {};

TEST_P(SingleBandGolden, LiveEditorsDrawLikeTheirGoldens) {
    const auto [guid, scale, skin] = GetParam();
    const skins::ScopedSkin look(skin);
    const std::string which(guid);
    std::shared_ptr<ReferenceEffect> effect;
    std::string name;
    if (which == kDynamicsGuid) {
        effect = std::make_shared<SingleBandDynamics>(kRate, 2);
        SetPlain(*effect, SingleBandDynamics::kAutoMakeupGain, 1);
        name = "single_band_dynamics_";
    } else if (which == kTubeGuid) {
        effect = std::make_shared<TubeModeledCompressor>(kRate, 2);
        name = "tube_modeled_comp_";
    } else {
        effect = std::make_shared<SingleBandCompressor>(kRate, 2);
        name = "single_band_compressor_";
    }
    auto scene =
        std::make_unique<LiveScene<HostView>>(guid, effect,
                                              std::make_unique<qafhost::TestSignalSource>(
                                                  qafhost::TestSignalSource::Kind::kMix, kRate, 2),
                                              scale);
    scene->window->SetBackgroundColor(skins::GetContentBackgroundColor());
    scene->Play(1.0);
    scene->window->RenderAll();
    name += std::string(skins::GetSkinName(skin)) + (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(scene->window->GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(
    Looks, SingleBandGolden,
    ::testing::Combine(::testing::Values(kDynamicsGuid, kTubeGuid, kCompressorGuid),
                       ::testing::Values(1.0f, 2.0f),
                       ::testing::Values(skins::Skin::kClassic, skins::Skin::kV7)));

} // namespace
