// The FFT filter editor as it looks: a drawn curve over the live spectrum of the test signal,
// the reference filter running on the reference host for a second of virtual time, in both
// looks at 1x and 2x.
#include "fft_filter_scene.hpp"
#include "golden_image.hpp"

#include "audio/dsp/fft_filter.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/test_signal_source.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/skins/skins.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>

using namespace qafui_testing;
using qoraudiofilters::FFTFilter;
namespace skins = qorui::skins;

namespace {

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
