#include "audio/dsp/multi_band_compressor.hpp"

#include "audio_test_helpers.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

using qoraudiofilters::MultiBandCompressor;
using MBC = MultiBandCompressor;

namespace {

constexpr double kRate = 48000.0;
constexpr double kCutoffs[3] = {120.0, 1000.0, 6000.0};
constexpr std::size_t kSettle = 48000;
constexpr std::size_t kWindow = 24000; // 0.5 s: whole periods of every even frequency

float Norm(double plain, double low, double high) {
    return float((plain - low) / (high - low));
}

// One channel, every band at unity: no compression, no gain, the limiter out.
std::shared_ptr<MBC> Unity() {
    auto effect = std::make_shared<MBC>(float(kRate), 1);
    for (int b = 0; b < MBC::kBandCount; ++b) {
        effect->SetParameterValue(MBC::kRatio + b, 0.0f);
        effect->SetParameterValue(MBC::kThreshold + b, 1.0f);
        effect->SetParameterValue(MBC::kGain + b, 0.5f);
    }
    for (int i = 0; i < 3; ++i)
        effect->SetParameterValue(MBC::kCrossOver + i, Norm(kCutoffs[i], 20.0, 20000.0));
    effect->SetParameterValue(MBC::kLimiterBypass, 1.0f);
    return effect;
}

std::vector<float> RunEffect(MBC& effect, std::vector<float> signal) {
    for (std::size_t at = 0; at < signal.size(); at += 480) {
        float* channel = signal.data() + at;
        const std::size_t n = std::min<std::size_t>(480, signal.size() - at);
        effect.Process(&channel, &channel, 1, n);
    }
    return signal;
}

// The gain in dB of the effect at `hz` for a sine of `amplitude`, once settled.
double MeasuredGain(MBC& effect, double hz, double amplitude = 0.1) {
    effect.Reset();
    const std::vector<float> out =
        RunEffect(effect, audiotest::Sine(hz, amplitude, kRate, kSettle + kWindow));
    return audiotest::Decibels(audiotest::AmplitudeAt(out, hz, kRate, kSettle, kWindow) /
                               amplitude);
}

// Theory: a fourth-order Linkwitz-Riley pass is a squared Butterworth, |H| = 1 / (1 + r^4) low
// and r^4 / (1 + r^4) high, r the frequency ratio after the bilinear transform's warping.
double Warped(double hz, double cutoff) {
    return std::tan(std::numbers::pi * hz / kRate) / std::tan(std::numbers::pi * cutoff / kRate);
}
double LowPassDb(double hz, double cutoff) {
    return -20.0 * std::log10(1.0 + std::pow(Warped(hz, cutoff), 4));
}
double HighPassDb(double hz, double cutoff) {
    const double r4 = std::pow(Warped(hz, cutoff), 4);
    return 20.0 * std::log10(r4 / (1.0 + r4));
}
// The tree splits at the middle cutoff first: the lower bands pass its low side, the upper its
// high side, and each band its own outer cutoff; the other side's cutoff is an allpass.
double BandDb(int band, double hz) {
    const double middle = band < 2 ? LowPassDb(hz, kCutoffs[1]) : HighPassDb(hz, kCutoffs[1]);
    switch (band) {
    case 0: return middle + LowPassDb(hz, kCutoffs[0]);
    case 1: return middle + HighPassDb(hz, kCutoffs[0]);
    case 2: return middle + LowPassDb(hz, kCutoffs[2]);
    default: return middle + HighPassDb(hz, kCutoffs[2]);
    }
}

} // namespace

TEST(MultiBandCompressor, BandsAtUnitySumBackToTheInput) {
    const auto effect = Unity();
    for (double hz = 20.0; hz <= 20000.0; hz *= std::pow(2.0, 1.0 / 3.0)) {
        const double even = 2.0 * std::round(hz / 2.0);
        EXPECT_NEAR(MeasuredGain(*effect, even), 0.0, 0.1) << even << " Hz";
    }
    for (double cutoff : kCutoffs)
        EXPECT_NEAR(MeasuredGain(*effect, cutoff), 0.0, 0.1) << cutoff << " Hz";
}

TEST(MultiBandCompressor, SoloPassesOnlyItsBandWithTheCrossoverResponse) {
    const auto effect = Unity();
    const double probes[] = {60.0, 120.0, 350.0, 1000.0, 2500.0, 6000.0, 12000.0};
    for (int band = 0; band < MBC::kBandCount; ++band) {
        for (int b = 0; b < MBC::kBandCount; ++b)
            effect->SetParameterValue(MBC::kSolo + b, b == band ? 1.0f : 0.0f);
        for (double hz : probes) {
            const double expected = BandDb(band, hz);
            if (expected < -60.0)
                continue; // too far down to measure against the window's leakage
            EXPECT_NEAR(MeasuredGain(*effect, hz), expected, 0.1) << band << " at " << hz;
        }
        // At its own crossovers a band is 6.02 dB down.
        if (band > 0) {
            EXPECT_NEAR(MeasuredGain(*effect, kCutoffs[band - 1]), -6.02, 0.15);
        }
        if (band < 3) {
            EXPECT_NEAR(MeasuredGain(*effect, kCutoffs[band]), -6.02, 0.15);
        }
    }
}

TEST(MultiBandCompressor, BandCompressesSteadySinesByItsStaticCurve) {
    struct Case {
        double inputDb, thresholdDb, ratio, bandGainDb;
    };
    const Case cases[] = {
        {-6.0, -30.0, 4.0, 0.0},   {-6.0, -30.0, 2.0, 6.0},  {-20.0, -10.0, 8.0, -3.0},
        {-12.0, -24.0, 30.0, 0.0}, {-3.0, -40.0, 3.0, 12.0},
    };
    constexpr double kHz = 350.0; // well inside band 1 (120..1000 Hz)
    constexpr int kBand = 1;
    for (const Case& c : cases) {
        const auto effect = Unity();
        effect->SetParameterValue(MBC::kSolo + kBand, 1.0f);
        const double amplitude = std::pow(10.0, c.inputDb / 20.0);
        const double unity = MeasuredGain(*effect, kHz, amplitude);
        effect->SetParameterValue(MBC::kThreshold + kBand, Norm(c.thresholdDb, -60.0, 0.0));
        effect->SetParameterValue(MBC::kRatio + kBand, Norm(c.ratio, 1.0, 30.0));
        effect->SetParameterValue(MBC::kGain + kBand, Norm(c.bandGainDb, -18.0, 18.0));
        effect->SetParameterValue(MBC::kAttack + kBand, Norm(1.0, 0.0, 500.0));
        effect->SetParameterValue(MBC::kRelease + kBand, Norm(500.0, 0.0, 5000.0));
        // Above the threshold the output rises 1/ratio dB per input dB.
        const double bandDb = c.inputDb + unity;
        const double expected =
            c.bandGainDb + std::min(0.0, (c.thresholdDb - bandDb) * (1.0 - 1.0 / c.ratio));
        EXPECT_NEAR(MeasuredGain(*effect, kHz, amplitude) - unity, expected, 0.3)
            << c.inputDb << " dB into " << c.thresholdDb << " dB at " << c.ratio << ":1";
        EXPECT_NEAR(effect->GetGainReduction(kBand), std::min(0.0, expected - c.bandGainDb), 0.5);
    }
}

TEST(MultiBandCompressor, LimiterNeverPassesItsCeiling) {
    for (const float mode : {0.25f, 0.0f, 0.75f}) {
        for (const double lookAheadMs : {0.0, 2.0, 10.0}) {
            const auto effect = Unity();
            effect->SetParameterValue(MBC::kLimiterBypass, 0.0f);
            effect->SetParameterValue(MBC::kBrickwallLimiter, mode);
            effect->SetParameterValue(MBC::kLimiterThreshold, Norm(-12.0, -30.0, 0.0));
            effect->SetParameterValue(MBC::kLimiterMargin, Norm(-1.0, -12.0, 0.0));
            effect->SetParameterValue(MBC::kLimiterAttack, Norm(lookAheadMs, 0.0, 10.0));
            effect->SetParameterValue(MBC::kOutputGain, 1.0f); // +18 dB into it
            std::vector<float> signal = audiotest::Sine(97.0, 0.8, kRate, 48000);
            const std::vector<float> burst = audiotest::Sine(3100.0, 0.5, kRate, 48000, 1.0);
            for (std::size_t i = 0; i < signal.size(); ++i)
                signal[i] += (i / 4000) % 2 ? burst[i] : 0.0f;
            signal[1000] = std::numeric_limits<float>::quiet_NaN();
            signal[2000] = std::numeric_limits<float>::infinity();
            const std::vector<float> out = RunEffect(*effect, signal);
            const float ceiling = float(std::pow(10.0, -1.0 / 20.0));
            float largest = 0.0f;
            for (float v : out) {
                ASSERT_TRUE(std::isfinite(v));
                largest = std::max(largest, std::fabs(v));
            }
            EXPECT_LE(largest, ceiling * 1.0001f) << mode << ", " << lookAheadMs << " ms";
            EXPECT_GT(largest, ceiling * 0.8f); // and it did reach it: a limiter, not a mute
        }
    }
}

TEST(MultiBandCompressor, TrimmedCutoffsKeepTheirOrderAndGap) {
    using CrossOver = MBC::CrossOver;
    const std::vector<float> cutoffs{200.0f, 1000.0f, 5000.0f};
    struct Case {
        int index;
        float frequency, gap, expected;
    };
    const Case cases[] = {
        {1, 100.0f, 0.5f, 200.0f * std::sqrt(2.0f)}, // past the lower neighbour
        {1, 9000.0f, 1.0f, 2500.0f},                 // past the upper one
        {1, 700.0f, 1.0f, 700.0f},                   // free
        {0, 5.0f, 0.1f, 20.0f},                      // below the range
        {2, 30000.0f, 0.1f, 20000.0f},               // above it
        {0, 3000.0f, -1.0f, 500.0f},                 // the gap's sign is no matter
    };
    for (const Case& c : cases)
        EXPECT_NEAR(CrossOver::TrimCutoffFreq(cutoffs, c.index, c.frequency, c.gap), c.expected,
                    c.expected * 1e-4f)
            << c.index << " to " << c.frequency;
    EXPECT_EQ(CrossOver::TrimCutoffFreq(cutoffs, 1, std::nanf(""), 0.1f), 1000.0f);
    EXPECT_TRUE(std::isnan(CrossOver::TrimCutoffFreq(cutoffs, 3, 100.0f, 0.1f)));

    // The effect itself keeps any order it is given in order.
    const auto effect = Unity();
    effect->SetParameterValue(MBC::kCrossOver, Norm(8000.0, 20.0, 20000.0));
    effect->SetParameterValue(MBC::kCrossOver + 2, Norm(100.0, 20.0, 20000.0));
    EXPECT_NEAR(MeasuredGain(*effect, 500.0), 0.0, 0.1);
}
