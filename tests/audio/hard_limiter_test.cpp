// The hard limiter against what a brickwall promises: on loud programme with sharp transients no
// sample passes the ceiling and the gain moves smoothly (no clipping), and a quiet signal comes
// out bit for bit, later by the latency the effect reports.
#include "audio/dsp/hard_limiter.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

using qoraudiofilters::HardLimiter;

namespace {

constexpr float kRate = 48000.0f;
constexpr std::size_t kBlock = 512;

void SetPlain(HardLimiter& limiter, int index, double plain) {
    limiter.SetParameterValue(index,
                              limiter.GetParameterInfo(index)->NormalisedFromPlain(float(plain)));
}

/// Seeded programme: noise whose level jumps every few milliseconds, with single-sample clicks
/// and sudden bursts at `peak`, so the limiter meets transients its look-ahead must catch.
std::vector<float> LoudProgramme(std::size_t length, double peak, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::vector<float> out(length);
    double level = 0.1;
    for (std::size_t i = 0; i < length; ++i) {
        if (i % 173 == 0)
            level = peak * std::pow(10.0, -std::abs(unit(random)) * 1.5);
        double x = level * unit(random);
        if (random() % 997 == 0)
            x = unit(random) > 0.0 ? peak : -peak; // a click at full height
        out[i] = float(x);
    }
    return out;
}

/// Both channels through in blocks; returns the two outputs.
std::vector<std::vector<float>> Through(HardLimiter& limiter, const std::vector<float>& left,
                                        const std::vector<float>& right) {
    std::vector<std::vector<float>> out(2, std::vector<float>(left.size()));
    for (std::size_t at = 0; at < left.size(); at += kBlock) {
        const std::size_t n = std::min(kBlock, left.size() - at);
        const float* inputs[] = {left.data() + at, right.data() + at};
        float* outputs[] = {out[0].data() + at, out[1].data() + at};
        limiter.Process(inputs, outputs, 2, n);
    }
    return out;
}

TEST(HardLimiter, LoudProgrammeNeverPassesTheCeilingAndIsNotClipped) {
    const struct {
        double ceiling, lookAhead, release, inputGain;
        bool linked, autoRelease, softKnee;
    } rows[] = {
        {-1.0, 5.0, 100.0, 0.0, true, false, false},
        {-6.0, 1.0, 10.0, 6.0, false, false, false},
        {-0.1, 20.0, 500.0, 0.0, true, true, true},
        {-12.0, 0.0, 50.0, 0.0, true, false, false}, // no look-ahead: still a brickwall
    };
    unsigned seed = 1;
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message()
                     << "ceiling " << row.ceiling << " look-ahead " << row.lookAhead);
        HardLimiter limiter(kRate, 2);
        SetPlain(limiter, HardLimiter::kCeiling, row.ceiling);
        SetPlain(limiter, HardLimiter::kLookAhead, row.lookAhead);
        SetPlain(limiter, HardLimiter::kRelease, row.release);
        SetPlain(limiter, HardLimiter::kInputGain, row.inputGain);
        limiter.SetParameterValue(HardLimiter::kLinkChannels, row.linked ? 1.0f : 0.0f);
        limiter.SetParameterValue(HardLimiter::kAutoRelease, row.autoRelease ? 1.0f : 0.0f);
        limiter.SetParameterValue(HardLimiter::kSoftKnee, row.softKnee ? 1.0f : 0.0f);

        const double ceiling = std::pow(10.0, row.ceiling / 20.0);
        const double peak = ceiling * 10.0; // 20 dB over
        const std::vector<float> left = LoudProgramme(96000, peak, seed++);
        const std::vector<float> right = LoudProgramme(96000, peak, seed++);
        const auto out = Through(limiter, left, right);
        const std::size_t latency = limiter.GetLatencySamples();
        EXPECT_EQ(latency, std::size_t(std::lround(row.lookAhead * 48.0)));
        const double inputGain = std::pow(10.0, row.inputGain / 20.0);

        double highest = 0.0;
        double largestStep = 0.0;
        for (int c = 0; c < 2; ++c) {
            const std::vector<float>& in = c == 0 ? left : right;
            double previous = NAN;
            for (std::size_t i = latency; i < in.size(); ++i) {
                highest = std::max(highest, double(std::abs(out[c][i])));
                // The gain applied, where the input is loud enough to read it from.
                const double x = double(in[i - latency]) * inputGain;
                if (std::abs(x) < 1e-2 * ceiling)
                    continue;
                const double gain = double(out[c][i]) / x;
                if (!std::isnan(previous))
                    largestStep = std::max(largestStep, std::abs(gain - previous));
                previous = gain;
            }
        }
        EXPECT_LE(highest, ceiling);
        EXPECT_GT(highest, ceiling * 0.9) << "it limits, it does not just turn down";
        if (row.lookAhead > 0.0) {
            // The gain is an average over the look-ahead: it moves by at most 1 / (L + 1) a
            // sample between two readings (readings skip quiet samples, so allow a few steps).
            EXPECT_LT(largestStep, 8.0 / double(latency + 1));
        }
    }
}

TEST(HardLimiter, AQuietSignalPassesUnchangedApartFromTheLatency) {
    HardLimiter limiter(kRate, 2);
    const std::vector<float> left = LoudProgramme(48000, 0.5, 11);
    const std::vector<float> right = LoudProgramme(48000, 0.5, 12);
    const auto out = Through(limiter, left, right);
    const std::size_t latency = limiter.GetLatencySamples();
    ASSERT_EQ(latency, 240u) << "5 ms at 48 kHz by default";
    for (std::size_t i = 0; i < latency; ++i)
        ASSERT_EQ(out[0][i], 0.0f);
    for (std::size_t i = latency; i < left.size(); ++i) {
        ASSERT_EQ(out[0][i], left[i - latency]) << i;
        ASSERT_EQ(out[1][i], right[i - latency]) << i;
    }
    EXPECT_EQ(limiter.GetLastGain(), 1.0);
}

TEST(HardLimiter, BadValuesGetDefinedBehaviour) {
    HardLimiter limiter(kRate, 2);
    limiter.StoreValue(HardLimiter::kCeiling, NAN);
    limiter.StoreValue(HardLimiter::kLookAhead, 7.0f); // far out of range
    limiter.UpdateFromParameters();
    EXPECT_NEAR(limiter.GetPlainSetting(HardLimiter::kCeiling), -0.1, 1e-6) << "the default";
    EXPECT_EQ(limiter.GetLatencySamples(), 960u) << "held at 20 ms";
    std::vector<float> signal(4096, 4.0f);
    signal[100] = NAN;
    signal[200] = INFINITY;
    const auto out = Through(limiter, signal, signal);
    for (float sample : out[0])
        ASSERT_TRUE(std::isfinite(sample) && std::abs(sample) <= 1.0f);
}

} // namespace
