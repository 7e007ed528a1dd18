// The FFT filter editor on the reference filter: the spectrum meter from the process thread to
// the painter, switched on and off and stopped when the graph goes, the drawn response against
// the level of sines that really went through the filter, and a curve over the live spectrum of
// the reference host's test signal against its goldens in both looks at 1x and 2x.
#include "../audio/audio_test_helpers.hpp"
#include "fft_filter_scene.hpp"
#include "golden_image.hpp"

#include "audio/dsp/fft_filter.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/test_signal_source.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/skins/skins.hpp"
#include "platform/widgets/ui_checkbox.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <tuple>
#include <vector>

using namespace qoraudiofiltersui;
using namespace qafui_testing;
using qoraudiofilters::FFTFilter;
namespace skins = qorui::skins;

namespace {

constexpr float kRate = 48000.0f;
constexpr std::size_t kBlock = 512;

/// Runs the filter as a process thread would, block by block, on `signal` in both channels,
/// with the editor's window keeping time: each block first takes the posted messages, then
/// processes, then the main thread catches up. Returns the first channel's output.
std::vector<float> RunFilter(FFTFilter& filter, qorui::HeadlessWindow& window,
                             const std::vector<float>& signal) {
    std::vector<float> left(signal.size()), right(signal.size());
    for (std::size_t first = 0; first < signal.size(); first += kBlock) {
        const std::size_t count = std::min(kBlock, signal.size() - first);
        const float* inputs[2] = {signal.data() + first, signal.data() + first};
        float* outputs[2] = {left.data() + first, right.data() + first};
        filter.ProcessPostedMessages();
        filter.Process(inputs, outputs, 2, count);
        window.AdvanceTime(double(count) / kRate);
    }
    return left;
}

std::vector<float> Sine(double hz, std::size_t length) {
    return audiotest::Sine(hz, 0.5, kRate, length);
}

/// The amplitude of the component at `hz` over the last `count` samples.
double AmplitudeAt(const std::vector<float>& signal, double hz, std::size_t count) {
    return audiotest::AmplitudeAt(signal, hz, kRate, signal.size() - count, count);
}

/// The meter the filter feeds now, taken off and put back.
bool HasMeter(FFTFilter& filter) {
    auto meter = filter.SwapSpectrumMeter(nullptr);
    const bool has = bool(meter);
    filter.SwapSpectrumMeter(std::move(meter));
    return has;
}

TEST(FFTFilterLive, TheMeterStartsWithTheGraphAndItsSpectraReachThePainter) {
    auto filter = std::make_shared<FFTFilter>(kRate, 2);
    FFTFilterScene scene(filter);
    FFTFilterGraph& graph = scene.Graph();
    EXPECT_TRUE(graph.IsMeterEnabled());
    EXPECT_FALSE(HasMeter(*filter)) << "the meter is installed on the process thread";
    EXPECT_GE(filter->GetPostedMessageCount(), 2u) << "the enable message and the first carrier";

    RunFilter(*filter, *scene.window, Sine(1000.0, 24000));
    EXPECT_TRUE(HasMeter(*filter));
    const auto& spectrum = graph.GetSpectrumDraw();
    ASSERT_TRUE(spectrum);
    // A 1 kHz sine lights the columns around 1 kHz and leaves 10 kHz dark.
    const qorcore::RectT<float> content = graph.GetContentRect();
    const float at1k = spectrum->HzToPixels(1000.0f, true).value;
    const float at10k = spectrum->HzToPixels(10000.0f, true).value;
    scene.window->RenderAll();
    // Lit pixels of a column: the spectrum's fill, brighter than the grid and the black.
    auto lit = [&](float x) {
        const auto origin = graph.UI_LocalToGlobalF({content.x + x, content.y});
        int count = 0;
        for (float y = 0; y < content.height; y += 1.0f) {
            const auto pixel = scene.window->GetPixel(int(origin.x), int(origin.y + y));
            count += pixel.red + pixel.green + pixel.blue > 1.0f;
        }
        return count;
    };
    EXPECT_GT(lit(at1k), lit(at10k) + 100);
    EXPECT_GT(lit(at1k), int(content.height * 0.6f));
}

TEST(FFTFilterLive, WhileTheFilterIsSuspendedTheLastPictureStays) {
    auto filter = std::make_shared<FFTFilter>(kRate, 2);
    FFTFilterScene scene(filter);
    RunFilter(*filter, *scene.window, Sine(1000.0, 12000));
    scene.window->RenderAll();
    filter->SetSuspended(true);
    RunFilter(*filter, *scene.window, Sine(5000.0, 12000));
    EXPECT_TRUE(scene.window->Render().empty()) << "no new spectrum, no repaint";
    filter->SetSuspended(false);
    RunFilter(*filter, *scene.window, Sine(5000.0, 4800));
    EXPECT_FALSE(scene.window->Render().empty());
}

TEST(FFTFilterLive, TheMeterSwitchesOffAndOnAgain) {
    auto filter = std::make_shared<FFTFilter>(kRate, 2);
    FFTFilterScene scene(filter);
    FFTFilterGraph& graph = scene.Graph();
    RunFilter(*filter, *scene.window, Sine(1000.0, 4800));
    ASSERT_TRUE(HasMeter(*filter));

    graph.EnableMeter(false);
    EXPECT_FALSE(graph.IsMeterEnabled());
    EXPECT_FALSE(graph.GetSpectrumDraw()) << "the painter goes with the meter";
    RunFilter(*filter, *scene.window, Sine(1000.0, 4800));
    EXPECT_FALSE(HasMeter(*filter));
    scene.window->RenderAll(); // the layer keeps its last picture and still draws

    graph.EnableMeter(true);
    ASSERT_TRUE(graph.GetSpectrumDraw());
    EXPECT_EQ(graph.GetContentLayers().size(), 1u) << "the new painter replaces the old layer";
    RunFilter(*filter, *scene.window, Sine(1000.0, 9600));
    EXPECT_TRUE(HasMeter(*filter));
    EXPECT_FALSE(graph.GetSpectrumDraw()->GetLinePixels().empty()) << "spectra arrive again";
}

TEST(FFTFilterLive, ClosingTheEditorStopsTheMeterBeforeTheGraphGoes) {
    auto filter = std::make_shared<FFTFilter>(kRate, 2);
    {
        FFTFilterScene scene(filter);
        RunFilter(*filter, *scene.window, Sine(1000.0, 4800));
        ASSERT_TRUE(HasMeter(*filter));
    }
    // The graph is gone; its last message takes the meter off the process thread, and the
    // carrier in flight finds nobody listening and stops travelling.
    qorui::HeadlessWindow window(10, 10);
    RunFilter(*filter, window, Sine(1000.0, 4800));
    EXPECT_FALSE(HasMeter(*filter));
    RunFilter(*filter, window, Sine(1000.0, 4800));
    EXPECT_EQ(filter->GetPostedMessageCount(), 0u);
}

TEST(FFTFilterLive, AnEditorClosedBeforeItsMessagesRanLeavesNoMeter) {
    auto filter = std::make_shared<FFTFilter>(kRate, 2);
    { FFTFilterScene scene(filter); }
    // The host still holds the enable message, the carrier and the disable message.
    EXPECT_GE(filter->GetPostedMessageCount(), 3u);
    qorui::HeadlessWindow window(10, 10);
    RunFilter(*filter, window, Sine(1000.0, 4800));
    EXPECT_FALSE(HasMeter(*filter));
    EXPECT_EQ(filter->GetPostedMessageCount(), 0u);
}

TEST(FFTFilterLive, TheDrawnResponseIsTheLevelOfSinesThroughTheFilter) {
    auto filter = std::make_shared<FFTFilter>(kRate, 2);
    FFTFilterScene scene(filter);
    FFTFilterGraph& graph = scene.Graph();
    const auto& fader = graph.GetFaderTranslator();
    // Spline curves off: straight segments, so that the drag below shapes a clear notch.
    if (scene.Find<qorui::UI_Checkbox>("SplineCurves").IsChecked())
        scene.Click("SplineCurves");
    ASSERT_LT(filter->GetParameterValue(0), 0.5f);

    // The user presses on the 0 dB line at about 1 kHz, which adds a point, and pulls it down.
    const float x = graph.GetPixelForHorizontalValue(1000.0);
    const float y = graph.GetPixelForVerticalValue(fader.GetNormalizedValue(0.0));
    const auto at = graph.UI_LocalToGlobalF({x, y});
    scene.window->MouseDown(at.x, at.y);
    scene.window->MouseMove(at.x, at.y + 30);
    scene.window->MouseMove(at.x, at.y + 60);
    scene.window->MouseUp(at.x, at.y + 60);
    scene.Tick();
    ASSERT_EQ(graph.GetCurvePoints().size(), 3u);
    const double notch = fader.GetDecibelValue(graph.GetCurvePoints()[1].position.second);
    ASSERT_LT(notch, -6.0);

    const std::vector<double>& response = graph.GetResponseData(0);
    ASSERT_EQ(response.size(), 4096u);
    const double low = graph.GetHorizontalStart();
    const double high = graph.GetHorizontalEnd();
    for (const double hz : {150.0, 700.0, 1000.0, 3000.0, 12000.0}) {
        // The response is spread over the axis as the axis is, logarithmic here.
        const double t = std::log(hz / low) / std::log(high / low);
        const std::size_t index = std::min<std::size_t>(4095, std::size_t(std::lround(t * 4096)));
        const double drawn = fader.GetDecibelValue(response[index]);

        auto through = std::make_shared<FFTFilter>(kRate, 2);
        for (int i = 0; i < FFTFilter::kParameterCount; ++i)
            through->StoreValue(i, filter->GetParameterValue(i));
        through->UpdateFromParameters();
        qorui::HeadlessWindow idle(10, 10);
        const std::vector<float> out = RunFilter(*through, idle, Sine(hz, 48000));
        const double measured = 20.0 * std::log10(AmplitudeAt(out, hz, 24000) / 0.5);
        EXPECT_NEAR(drawn, measured, 0.5) << hz << " Hz";
        if (hz == 1000.0) {
            EXPECT_NEAR(drawn, notch, 1.0) << "the drawn curve passes through the point";
        }
    }
}

/// A curve as a user draws it: a lift in the bass, a dip in the middle, a roll-off at the top.
void DrawCurve(FFTFilter& filter) {
    const auto& fader = filter.GetFaderTranslator();
    const std::pair<double, double> points[] = {{20.0, 0.0},    {120.0, 6.0},  {900.0, -9.0},
                                                {2500.0, -2.0}, {9000.0, 0.0}, {24000.0, -24.0}};
    filter.SetParameterQuietly(FFTFilter::kCurveWriteBracket, 1.0f);
    filter.SetParameterQuietly(FFTFilter::kPointCount, float(std::size(points)) / 128.0f);
    for (int i = 0; i < int(std::size(points)); ++i) {
        filter.SetParameterValue(FFTFilter::PointXIndex(i),
                                 float(points[i].first / (filter.GetSampleRate() * 0.5)));
        filter.SetParameterValue(FFTFilter::PointYIndex(i),
                                 float(fader.GetNormalizedValue(points[i].second)));
    }
    filter.SetParameterQuietly(FFTFilter::kCurveWriteBracket, 0.0f);
    filter.SetParameterValue(FFTFilter::kSplineCurves, 1.0f);
}

class FFTFilterGolden : public ::testing::TestWithParam<std::tuple<float, skins::Skin>> {};

TEST_P(FFTFilterGolden, ACurveOverTheLiveSpectrumDrawsLikeItsGolden) {
    const auto [scale, skin] = GetParam();
    const skins::ScopedSkin look(skin);
    auto filter = std::make_shared<FFTFilter>(48000.0f, 2);
    DrawCurve(*filter);
    qafhost::ProcessHost host(filter, {512, qafhost::ProcessHost::Clock::kVirtual, {}});
    host.SetSource(std::make_unique<qafhost::TestSignalSource>(
        qafhost::TestSignalSource::Kind::kMix, filter->GetSampleRate(), 2));
    auto scene = std::make_unique<FFTFilterScene>(filter, scale);
    scene->window->SetBackgroundColor(skins::GetContentBackgroundColor());
    for (int step = 0; step < 100; ++step) {
        host.Advance(0.01);
        scene->window->AdvanceTime(0.01);
    }
    ASSERT_GT(host.GetProcessedFrames(), 47000u);
    scene->window->RenderAll();
    const std::string name = std::string("fft_filter_") + std::string(skins::GetSkinName(skin)) +
                             (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(MatchesGolden(scene->window->GetImage(), name));

    // Closing: the graph's last message runs on the process thread before the host stops.
    scene.reset();
    host.Advance(0.02);
    qorcore::MainThreadQueue::Get().RunPending();
    EXPECT_EQ(filter->GetPostedMessageCount(), 0u);
    EXPECT_FALSE(filter->SwapSpectrumMeter(nullptr));
}

INSTANTIATE_TEST_SUITE_P(Looks, FFTFilterGolden,
                         ::testing::Combine(::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(skins::Skin::kClassic,
                                                              skins::Skin::kV7)));

} // namespace
