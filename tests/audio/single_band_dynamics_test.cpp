// The single-band processors measured with steady sines: the static curves against the theory
// of each stage (gate, compressor, make-up, limiter; the soft knee and the saturation of the
// tube), the meters' readings against what was measured, samples and settings that are no
// numbers, and the program-dependent release of auto smoothing.
#include "audio_test_helpers.hpp"

#include "audio/dsp/single_band_compressor.hpp"
#include "audio/dsp/single_band_dynamics.hpp"
#include "audio/dsp/tube_modeled_compressor.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <numbers>
#include <vector>

namespace {

using qoraudiofilters::ReferenceEffect;
using qoraudiofilters::SingleBandCompressor;
using qoraudiofilters::SingleBandDynamics;
using qoraudiofilters::TubeModeledCompressor;

constexpr float kRate = 48000.0f;
constexpr double kHz = 1000.0;
constexpr std::size_t kBlock = 512;
constexpr std::size_t kSettle = 72 * kBlock; // 0.77 s
constexpr std::size_t kMeasure = 12000;      // 250 whole periods

void SetPlain(ReferenceEffect& effect, int index, double plain) {
    effect.SetParameterValue(index,
                             effect.GetParameterInfo(index)->NormalisedFromPlain(float(plain)));
}

/// Runs `signal` through the effect on both channels in blocks; returns the left output.
std::vector<float> Through(ReferenceEffect& effect, const std::vector<float>& signal) {
    std::vector<float> left(signal.size()), right(signal.size());
    for (std::size_t first = 0; first < signal.size(); first += kBlock) {
        const std::size_t n = std::min(kBlock, signal.size() - first);
        const float* inputs[2] = {signal.data() + first, signal.data() + first};
        float* outputs[2] = {left.data() + first, right.data() + first};
        effect.Process(inputs, outputs, 2, n);
    }
    return left;
}

/// The output level in dB of a steady sine of peak level `decibels`, once settled.
double MeasureOutput(ReferenceEffect& effect, double decibels) {
    const double amplitude = std::pow(10.0, decibels / 20.0);
    const std::vector<float> out =
        Through(effect, audiotest::Sine(kHz, amplitude, kRate, kSettle + kMeasure));
    return audiotest::Decibels(audiotest::AmplitudeAt(out, kHz, kRate, kSettle, kMeasure));
}

/// The fundamental of tanh(a sin t): (2 / pi) times the integral of tanh(a sin t) sin t over
/// 0..pi, by the midpoint rule.
double SaturatedFundamental(double a) {
    constexpr int kSteps = 20000;
    double sum = 0.0;
    for (int i = 0; i < kSteps; ++i) {
        const double t = std::numbers::pi * (i + 0.5) / kSteps;
        sum += std::tanh(a * std::sin(t)) * std::sin(t);
    }
    return 2.0 / kSteps * sum;
}

/// A downward compressor's output level: straight above the threshold at 1 / ratio, the
/// quadratic of a soft knee of `knee` dB around it.
double CompressedLevel(double x, double threshold, double ratio, double knee) {
    const double over = x - threshold;
    if (2 * over <= -knee)
        return x;
    if (2 * over < knee)
        return x + (1 / ratio - 1) * (over + knee / 2) * (over + knee / 2) / (2 * knee);
    return threshold + over / ratio;
}

TEST(SingleBandDynamics, SinesFollowTheCurveOfGateCompressorMakeUpAndLimiter) {
    // Gate 3:1 below -50 dB, compressor 3:1 above -30 dB with its reduction at full scale
    // (20 dB) made up, limiter 10:1 above -6 dB, output +2 dB.
    const auto theory = [](double x) {
        double y = x < -50 ? std::max(x - 90, -50 + (x + 50) * 3) : x;
        y = CompressedLevel(y, -30, 3, 0) + 20;
        return CompressedLevel(y, -6, 10, 0) + 2;
    };
    for (bool rms : {false, true}) {
        SCOPED_TRACE(rms ? "RMS" : "peak");
        for (double input = -62; input <= 0; input += 6.5) {
            SingleBandDynamics effect(kRate, 2);
            const double settings[][2] = {{0, 10},  {1, -6}, {4, 3},
                                          {5, -30}, {8, 3},  {9, -50},
                                          {12, 2},  {13, 1}, {14, rms ? 1.0 : 0.0}};
            for (const auto& s : settings)
                SetPlain(effect, int(s[0]), s[1]);
            for (int stage = 0; stage < 3; ++stage) {
                SetPlain(effect, SingleBandDynamics::AttackIndex(stage), 2);
                SetPlain(effect, SingleBandDynamics::ReleaseIndex(stage), 40);
            }
            // The RMS detector reads a sine 3 dB below its peak.
            const double detected = rms ? input - 10 * std::log10(2.0) : input;
            const double expected = input + theory(detected) - detected;
            EXPECT_NEAR(MeasureOutput(effect, input), expected, 0.1) << input << " dB";
            EXPECT_NEAR(effect.GetStaticOutputDecibels(detected), theory(detected), 1e-3);
        }
    }
}

struct CompressorRow {
    const char* name;
    std::function<std::unique_ptr<SingleBandCompressor>()> make;
    double knee;
    double outputGain;
    bool saturates;
};

TEST(SingleBandCompressor, SinesFollowTheKneeTheOutputGainAndTheSaturation) {
    const CompressorRow rows[] = {
        {"single band", [] { return std::make_unique<SingleBandCompressor>(kRate, 2); }, 0, 6,
         false},
        {"tube", [] { return std::make_unique<TubeModeledCompressor>(kRate, 2); },
         TubeModeledCompressor::kKneeDecibels, 20, true},
    };
    for (const CompressorRow& row : rows) {
        SCOPED_TRACE(row.name);
        for (double input = -45; input <= 0; input += 5) {
            auto effect = row.make();
            const double settings[][2] = {{0, -24}, {1, 4}, {2, 2}, {3, 40}, {4, row.outputGain}};
            for (const auto& s : settings)
                SetPlain(*effect, int(s[0]), s[1]);
            double expected = CompressedLevel(input, -24, 4, row.knee) + row.outputGain;
            if (row.saturates)
                expected = audiotest::Decibels(SaturatedFundamental(std::pow(10, expected / 20)));
            EXPECT_NEAR(MeasureOutput(*effect, input), expected, 0.1) << input << " dB";
        }
    }
}

TEST(SingleBandProcessors, TheMetersReadWhatWasMeasured) {
    const std::function<std::unique_ptr<ReferenceEffect>()> makers[] = {
        [] { return std::make_unique<SingleBandDynamics>(kRate, 2); },
        [] { return std::make_unique<SingleBandCompressor>(kRate, 2); },
        [] {
            return std::make_unique<TubeModeledCompressor>(kRate, 2);
        }};
    for (const auto& make : makers) {
        auto effect = make();
        auto* dynamics = dynamic_cast<SingleBandDynamics*>(effect.get());
        auto* compressor = dynamic_cast<SingleBandCompressor*>(effect.get());
        const double input = -8.0;
        const std::vector<float> signal =
            audiotest::Sine(kHz, std::pow(10.0, input / 20.0), kRate, kSettle + kMeasure);
        if (dynamics)
            dynamics->SetMeterActive(true);
        const std::vector<float> settle(signal.begin(), signal.begin() + kSettle);
        Through(*effect, settle);
        float levels[3] = {-1, -1, -1};
        if (dynamics)
            dynamics->ReadOutputLevels(levels, 3);
        else
            compressor->GetLevels(levels, 3);

        // After the read, only what follows counts.
        const std::vector<float> tail(signal.begin() + kSettle, signal.end());
        const std::vector<float> out = Through(*effect, tail);
        const double measured =
            audiotest::Decibels(audiotest::AmplitudeAt(out, kHz, kRate, 0, kMeasure)) - input;
        const float reduction =
            dynamics ? dynamics->GetGainReduction() : compressor->GetGainReduction();
        EXPECT_LT(reduction, -3.0f);
        EXPECT_NEAR(reduction, measured, 0.2);
        if (dynamics)
            dynamics->ReadOutputLevels(levels, 3);
        else
            compressor->GetLevels(levels, 3);
        const float peak = *std::max_element(
            out.begin(), out.end(), [](float a, float b) { return std::fabs(a) < std::fabs(b); });
        EXPECT_FLOAT_EQ(levels[0], std::fabs(peak));
        EXPECT_FLOAT_EQ(levels[1], std::fabs(peak)) << "both channels carry the sine";
        EXPECT_EQ(levels[2], 0.0f) << "a channel the effect does not have";
        if (dynamics) {
            EXPECT_NEAR(dynamics->GetDetectedLevel(), input, 0.2);
            dynamics->SetMeterActive(false);
            Through(*effect, tail);
            dynamics->ReadOutputLevels(levels, 2);
            EXPECT_EQ(levels[0], 0.0f) << "nothing is gathered while the meter is off";
        }
    }
}

TEST(SingleBandDynamics, SamplesAndSettingsThatAreNoNumbers) {
    SingleBandDynamics effect(kRate, 2);
    SetPlain(effect, SingleBandDynamics::kRMSDetection, 1);
    const double clean = MeasureOutput(effect, -10);
    // A burst of non-finite samples comes out silent and leaves the detector as it was.
    std::vector<float> signal = audiotest::Sine(kHz, std::pow(10.0, -0.5), kRate, kSettle);
    for (std::size_t i = 1000; i < 1100; ++i)
        signal[i] = i % 2 ? std::numeric_limits<float>::quiet_NaN()
                          : std::numeric_limits<float>::infinity();
    const std::vector<float> out = Through(effect, signal);
    for (std::size_t i = 1000; i < 1100; ++i)
        ASSERT_EQ(out[i], 0.0f) << i;
    EXPECT_TRUE(std::all_of(out.begin(), out.end(), [](float v) { return std::isfinite(v); }));
    EXPECT_NEAR(MeasureOutput(effect, -10), clean, 0.05);

    // A stored value that is no number reads as the default; one out of range is limited.
    effect.StoreValue(SingleBandDynamics::kCompressorRatio,
                      std::numeric_limits<float>::quiet_NaN());
    effect.StoreValue(SingleBandDynamics::kGateRatio, 1.5f);
    effect.UpdateFromParameters();
    EXPECT_FLOAT_EQ(effect.GetCompRatio(), 4.0f);
    EXPECT_FLOAT_EQ(effect.GetGateRatio(), 30.0f);
    effect.SetCompThreshold(std::numeric_limits<float>::quiet_NaN());
    EXPECT_FLOAT_EQ(effect.GetCompThreshold(), -20.0f) << "ignored";
    effect.SetCompThreshold(-100.0f);
    EXPECT_FLOAT_EQ(effect.GetCompThreshold(), -60.0f);
    EXPECT_TRUE(std::isnan(effect.GetStaticOutputDecibels(std::nan(""))));
}

TEST(SingleBandDynamics, AutoSmoothingLetsShortPeaksGoFasterThanLongStretches) {
    // The reduction left 0.3 s after a burst of `seconds` at -6 dB over a -40 dB sine.
    const auto reductionAfter = [](double seconds, bool automatic) {
        SingleBandDynamics effect(kRate, 1);
        const double settings[][2] = {
            {0, 1}, {4, 10}, {5, -30}, {6, 1}, {7, 50}, {8, 1}, {15, automatic ? 1.0 : 0.0}};
        for (const auto& s : settings)
            SetPlain(effect, int(s[0]), s[1]);
        const auto burst = std::size_t(seconds * kRate);
        std::vector<float> signal = audiotest::Sine(kHz, 0.01, kRate, burst + 14400);
        for (std::size_t i = 0; i < burst; ++i)
            signal[i] *= 50.0f;
        Through(effect, signal);
        return -effect.GetGainReduction();
    };
    EXPECT_GT(reductionAfter(2.0, true), 2.0f * reductionAfter(0.02, true));
    EXPECT_NEAR(reductionAfter(2.0, false), reductionAfter(0.02, false), 0.5);
}

} // namespace
