// The de-esser measured with steady signals: a band-limited burst around 7 kHz brought down by
// the amount the threshold sets (theory of a compressor of the effect's ratio on the burst's
// mean-square level), a tone below the band left alone in band-only mode and pulled down with
// the burst in wide-band mode, a signal below the threshold passed unchanged, and bad input.
#include "audio_test_helpers.hpp"

#include "audio/dsp/de_esser.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

namespace {

using qoraudiofilters::DeEsser;

constexpr float kRate = 48000.0f;
constexpr std::size_t kBlock = 256;
constexpr std::size_t kSettle = 12000;  // 0.25 s
constexpr std::size_t kMeasure = 48000; // 1 s: whole periods of every component
constexpr double kToneHz = 500.0;
constexpr double kBurstDb = -20.0; // mean square of the burst

void SetPlain(DeEsser& fx, int index, double plain) {
    fx.SetParameterValue(index, fx.GetParameterInfo(index)->NormalisedFromPlain(float(plain)));
}

/// Band-limited noise: sines every 10 Hz from 6600 to 7400 Hz in random phases, of a total
/// mean square of `decibels`.
std::vector<float> Burst(double decibels, std::size_t length) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> phase(0.0, 2.0 * std::numbers::pi);
    constexpr int kLines = 81;
    const double amplitude = std::sqrt(2.0 * std::pow(10.0, decibels / 10.0) / kLines);
    std::vector<double> sum(length, 0.0);
    for (int k = 0; k < kLines; ++k) {
        const std::vector<float> line =
            audiotest::Sine(6600.0 + 10.0 * k, amplitude, kRate, length, phase(random));
        for (std::size_t i = 0; i < length; ++i)
            sum[i] += line[i];
    }
    return {sum.begin(), sum.end()};
}

std::vector<float> Through(DeEsser& fx, const std::vector<float>& signal) {
    std::vector<float> left(signal.size()), right(signal.size());
    for (std::size_t first = 0; first < signal.size(); first += kBlock) {
        const std::size_t n = std::min(kBlock, signal.size() - first);
        const float* inputs[2] = {signal.data() + first, signal.data() + first};
        float* outputs[2] = {left.data() + first, right.data() + first};
        fx.Process(inputs, outputs, 2, n);
    }
    return left;
}

double PowerDb(const std::vector<float>& s, std::size_t first, std::size_t count) {
    double sum = 0.0;
    for (std::size_t i = first; i < first + count; ++i)
        sum += double(s[i]) * s[i];
    return 10.0 * std::log10(sum / double(count));
}

std::unique_ptr<DeEsser> Make(bool bandOnly, double thresholdDb) {
    auto fx = std::make_unique<DeEsser>(kRate, 2);
    fx->SetParameterValue(DeEsser::kMode, bandOnly ? 1.0f : 0.0f);
    SetPlain(*fx, DeEsser::kThreshold, thresholdDb);
    SetPlain(*fx, DeEsser::kCenterFrequency, 7000.0);
    SetPlain(*fx, DeEsser::kBandwidth, 4000.0);
    return fx;
}

// A compressor of ratio R on a level L over the threshold T takes (L - T)(1 - 1/R) off.
double ExpectedReduction(double thresholdDb) {
    return std::max(0.0, kBurstDb - thresholdDb) * (1.0 - 1.0 / DeEsser::kRatio);
}

class DeEsserDepth : public testing::TestWithParam<double> {};

TEST_P(DeEsserDepth, BandOnlyTakesTheSetAmountOffTheBurstAndLeavesTheToneBelow) {
    const double threshold = GetParam();
    const std::vector<float> burst = Burst(kBurstDb, kSettle + kMeasure);
    const auto fx = Make(true, threshold);
    const std::vector<float> out = Through(*fx, burst);
    const double reduction = PowerDb(burst, kSettle, kMeasure) - PowerDb(out, kSettle, kMeasure);
    EXPECT_NEAR(reduction, ExpectedReduction(threshold), 1.0);
    EXPECT_NEAR(-fx->GetGainReduction(), ExpectedReduction(threshold), 1.5) << "the meter";

    // The same burst over a tone at -20 dB: the tone comes out as it went in.
    std::vector<float> mix = audiotest::Sine(kToneHz, 0.1, kRate, burst.size());
    for (std::size_t i = 0; i < mix.size(); ++i)
        mix[i] += burst[i];
    const auto second = Make(true, threshold);
    const std::vector<float> mixed = Through(*second, mix);
    EXPECT_NEAR(
        audiotest::Decibels(audiotest::AmplitudeAt(mixed, kToneHz, kRate, kSettle, kMeasure) / 0.1),
        0.0, 0.1);

    // Wide band: the tone goes down with the burst, by the same amount.
    const auto wide = Make(false, threshold);
    const std::vector<float> ducked = Through(*wide, mix);
    EXPECT_NEAR(-audiotest::Decibels(
                    audiotest::AmplitudeAt(ducked, kToneHz, kRate, kSettle, kMeasure) / 0.1),
                ExpectedReduction(threshold), 1.0);
}

INSTANTIATE_TEST_SUITE_P(Thresholds, DeEsserDepth, testing::Values(-24.0, -28.0, -32.0));

TEST(DeEsser, BelowTheThresholdEveryModePassesTheSignalUnchanged) {
    std::vector<float> mix = Burst(-40.0, 24000);
    const std::vector<float> tone = audiotest::Sine(kToneHz, 0.1, kRate, mix.size());
    for (std::size_t i = 0; i < mix.size(); ++i)
        mix[i] += tone[i];
    for (const bool bandOnly : {true, false}) {
        const auto fx = Make(bandOnly, 0.0);
        const std::vector<float> out = Through(*fx, mix);
        double largest = 0.0;
        for (std::size_t i = 0; i < out.size(); ++i)
            largest = std::max(largest, double(std::fabs(out[i] - mix[i])));
        EXPECT_LT(largest, 1e-6) << "band only " << bandOnly;
        EXPECT_EQ(fx->GetGainReduction(), 0.0f);
    }
}

TEST(DeEsser, SibilanceOnlyPlaysTheBandAndNotTheToneBelow) {
    const auto fx = Make(true, 0.0);
    fx->SetParameterValue(DeEsser::kOutputSibilanceOnly, 1.0f);
    std::vector<float> mix = audiotest::Sine(kToneHz, 0.1, kRate, kSettle + kMeasure);
    const std::vector<float> line = audiotest::Sine(7000.0, 0.1, kRate, mix.size());
    for (std::size_t i = 0; i < mix.size(); ++i)
        mix[i] += line[i];
    const std::vector<float> out = Through(*fx, mix);
    // A band-pass of quality 7/4 passes its centre whole and 500 Hz at 1 / |Q (f/fc - fc/f)|.
    const double q = 7000.0 / 4000.0;
    const double expected = -audiotest::Decibels(q * (7000.0 / kToneHz - kToneHz / 7000.0));
    EXPECT_NEAR(
        audiotest::Decibels(audiotest::AmplitudeAt(out, 7000.0, kRate, kSettle, kMeasure) / 0.1),
        0.0, 0.05);
    EXPECT_NEAR(
        audiotest::Decibels(audiotest::AmplitudeAt(out, kToneHz, kRate, kSettle, kMeasure) / 0.1),
        expected, 1.0)
        << "the analog prototype, give or take the warping";
}

TEST(DeEsser, NotNumbersNeitherCrashNorStick) {
    const auto fx = Make(true, -40.0);
    for (int index = 0; index < DeEsser::kParameterCount; ++index)
        fx->SetParameterValue(index, std::numeric_limits<float>::quiet_NaN());
    std::vector<float> signal = Burst(-10.0, 24000);
    for (std::size_t i = 0; i < signal.size(); i += 97)
        signal[i] = i % 2 ? std::numeric_limits<float>::infinity()
                          : std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> out = Through(*fx, signal);
    for (const float v : out)
        ASSERT_TRUE(std::isfinite(v));
    // Defaults again: -30 dB, so the burst of -20 dB is brought down by the theory's amount.
    const std::vector<float> burst = Burst(kBurstDb, kSettle + kMeasure);
    const std::vector<float> clean = Through(*fx, burst);
    EXPECT_NEAR(PowerDb(burst, kSettle, kMeasure) - PowerDb(clean, kSettle, kMeasure),
                ExpectedReduction(-30.0), 1.0);
}

} // namespace
