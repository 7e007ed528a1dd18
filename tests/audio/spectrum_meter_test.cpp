// The analyser effect: the audio leaves it unchanged, and each analysis setting changes what its
// meter reports as theory and the band tables say.
#include "audio/dsp/spectrum_meter.hpp"

#include "audio_test_helpers.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

using qoraudiofilters::SpectrumMeter;
using qoraudiotoolkit::SpectrumFrame;
using qoraudiotoolkit::SpectrumMeterDSP;

namespace {

constexpr float kRate = 48000.0f;
using Settings = std::vector<std::pair<int, float>>;

/// The effect with its meter on, averaging off unless the settings ask for it.
struct Analyser {
    explicit Analyser(const Settings& settings) {
        effect.SetParameterValue(SpectrumMeter::kWindowSize, 0.0f);
        for (const auto& [index, value] : settings)
            effect.SetParameterValue(index, value);
        effect.SetMeterActive(true);
    }
    /// Feeds whole blocks of 512 and returns the last spectrum.
    const SpectrumFrame& Feed(const std::vector<float>& left, const std::vector<float>& right) {
        std::vector<float> out(512);
        for (std::size_t at = 0; at + 512 <= left.size(); at += 512) {
            const float* in[] = {left.data() + at, right.data() + at};
            float* outs[] = {out.data(), out.data()};
            effect.Process(in, outs, 2, 512);
        }
        effect.GetSpectrumMeter()->ReadSpectrum(frame);
        return frame;
    }

    SpectrumMeter effect{kRate, 2};
    SpectrumFrame frame;
};

SpectrumFrame AnalyseMono(const Settings& settings, const std::vector<float>& signal) {
    return Analyser(settings).Feed(signal, signal);
}

} // namespace

TEST(SpectrumMeter, PassesTheAudioBitForBitWhateverItAnalyses) {
    SpectrumMeter effect(kRate, 2);
    effect.SetParameterValue(SpectrumMeter::kFlipChannelPhase, 1.0f);
    effect.SetMeterActive(true);
    std::vector<float> left = audiotest::Sine(997.0, 0.9, kRate, 3000);
    left[7] = 1e-40f; // a denormal
    left[8] = std::nanf("");
    std::vector<float> right = audiotest::Sine(50.0, 1.5, kRate, 3000), outLeft(3000),
                       outRight(3000, 1.0f), third(3000, 2.0f);
    const float* in[] = {left.data(), nullptr, right.data()};
    float* out[] = {outLeft.data(), outRight.data(), third.data()};
    effect.Process(in, out, 3, 3000);
    EXPECT_EQ(std::memcmp(outLeft.data(), left.data(), 3000 * sizeof(float)), 0);
    EXPECT_EQ(outRight, std::vector<float>(3000, 0.0f)) << "a null input is silence";
    EXPECT_EQ(third, right) << "a channel past the effect's own passes too";
    float* inPlace[] = {left.data(), right.data()};
    effect.Process(inPlace, inPlace, 2, 3000);
    EXPECT_EQ(std::memcmp(outLeft.data(), left.data(), 3000 * sizeof(float)), 0);
    SpectrumFrame frame;
    ASSERT_TRUE(effect.GetSpectrumMeter()->ReadSpectrum(frame));
    EXPECT_TRUE(std::all_of(frame.data.begin(), frame.data.end(), [](float v) {
        return std::isfinite(v);
    })) << "the sample that is no number was analysed as silence";
}

TEST(SpectrumMeter, ASinesLineOrBandLandsAtItsFrequency) {
    // 3 kHz is line size / 16 of every size, in third-octave band 22 (3150 Hz) and critical
    // band 15 (2700 to 3150 Hz); a size that is no number reads as 4096 points.
    const struct {
        int parameter;
        float value;
        unsigned int size;
        std::size_t count;
        std::size_t at;
    } rows[] = {{0, 0.0f, 512, 256, 32},
                {0, 0.25f, 1024, 512, 64},
                {0, 0.5f, 2048, 1024, 128},
                {0, 1.0f, 8192, 4096, 512},
                {0, NAN, 4096, 2048, 256},
                {1, 0.5f, 4096, SpectrumMeterDSP::GetNumThirdOctaveBands(), 22},
                {1, 1.0f, 4096, SpectrumMeterDSP::GetNumCriticalBands(), 15}};
    const std::vector<float> sine = audiotest::Sine(3000.0, 0.5, kRate, 24576);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.count);
        const SpectrumFrame frame = AnalyseMono({{row.parameter, row.value}}, sine);
        EXPECT_EQ(frame.fftSize, row.size);
        EXPECT_EQ(frame.count, row.count);
        EXPECT_EQ(std::max_element(frame.data.begin(), frame.data.end()) - frame.data.begin(),
                  std::ptrdiff_t(row.at));
        EXPECT_NEAR(audiotest::Decibels(frame.data[row.at] / 0.5), 0.0, 0.2);
    }
}

TEST(SpectrumMeter, TheWindowSetsTheLeakageFarFromASine) {
    // Half a line off line 200 of 4096 points; line 300 lies 99.5 lines away. The Bartlett
    // window's spectrum is sinc^2(d / 2) there; the Kaiser window is designed 140 dB down.
    const std::vector<float> sine = audiotest::Sine(200.5 * kRate / 4096.0, 1.0, kRate, 8192);
    const double x = std::numbers::pi * 99.5 / 2.0;
    EXPECT_NEAR(
        audiotest::Decibels(AnalyseMono({{SpectrumMeter::kWindow, 2.0f / 7.0f}}, sine).data[300]),
        audiotest::Decibels(std::pow(std::sin(x) / x, 2.0)), 1.0);
    EXPECT_LT(
        audiotest::Decibels(AnalyseMono({{SpectrumMeter::kWindow, 3.0f / 7.0f}}, sine).data[300]),
        -120.0);
}

TEST(SpectrumMeter, FlippingTheSecondChannelShowsWhatTheChannelsDoNotShare) {
    const std::vector<float> sine = audiotest::Sine(3000.0, 0.5, kRate, 8192);
    std::vector<float> inverted(sine.size());
    std::transform(sine.begin(), sine.end(), inverted.begin(), [](float v) { return -v; });
    const auto line = [&](float flip, const std::vector<float>& right) {
        return Analyser({{SpectrumMeter::kFlipChannelPhase, flip}}).Feed(sine, right).data[256];
    };
    EXPECT_EQ(line(0.0f, inverted), 0.0f) << "an antiphase pair cancels";
    EXPECT_NEAR(line(1.0f, inverted), 0.5f, 0.005f);
    EXPECT_EQ(line(1.0f, sine), 0.0f) << "a mono signal cancels";
}

TEST(SpectrumMeter, OverlapSetsHowOftenItAnalyses) {
    // At 4096 points, rate / (4096 * (1 - overlap)) analyses a second.
    const std::vector<float> second(48128, 0.0f);
    for (const double overlap : {0.0, 25.0, 50.0, 75.0}) {
        Analyser analyser({{SpectrumMeter::kOverlap, float(overlap / 75.0)}});
        const std::uint64_t before = analyser.Feed(second, second).serial;
        const std::uint64_t after = analyser.Feed(second, second).serial;
        EXPECT_NEAR(double(after - before), 48128.0 / (4096.0 * (1.0 - overlap / 100.0)), 1.0)
            << overlap;
    }
}
