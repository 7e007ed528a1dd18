// The modulation effects and the latency generator against theory, by measurement: steady sines
// at known levels through the running effect, read back by correlation.
#include "audio/dsp/chorus_flanger.hpp"
#include "audio/dsp/flanger.hpp"
#include "audio/dsp/latency_generator.hpp"
#include "audio/dsp/phaser.hpp"
#include "audio_test_helpers.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

using qoraudiofilters::ChorusFlanger;
using qoraudiofilters::Flanger;
using qoraudiofilters::LatencyGenerator;
using qoraudiofilters::Phaser;
using qoraudiofilters::ReferenceEffect;

namespace {

constexpr float kRate = 48000.0f;
constexpr std::size_t kBlock = 512;
using Stereo = std::array<std::vector<float>, 2>;

void SetPlain(ReferenceEffect& effect, int index, double plain) {
    effect.SetParameterValue(index,
                             effect.GetParameterInfo(index)->NormalisedFromPlain(float(plain)));
}

/// Both channels of `input` through the effect in blocks.
Stereo ProcessAll(ReferenceEffect& effect, const Stereo& input) {
    Stereo out{std::vector<float>(input[0].size()), std::vector<float>(input[1].size())};
    for (std::size_t first = 0; first < input[0].size(); first += kBlock) {
        const std::size_t count = std::min(kBlock, input[0].size() - first);
        const float* in[2] = {input[0].data() + first, input[1].data() + first};
        float* o[2] = {out[0].data() + first, out[1].data() + first};
        effect.Process(in, o, 2, count);
    }
    return out;
}

Stereo SineBoth(double hz, double seconds) {
    auto sine = audiotest::Sine(hz, 0.5, kRate, std::size_t(seconds * kRate));
    return {sine, sine};
}

/// The gain in dB at `hz` over whole periods (about `seconds` of them) from `from` seconds on.
double GainDb(const std::vector<float>& out, double hz, double from, double seconds) {
    const auto count = std::size_t(std::round(std::round(seconds * hz) * kRate / hz));
    return audiotest::Decibels(
        audiotest::AmplitudeAt(out, hz, kRate, std::size_t(from * kRate), count) / 0.5);
}

TEST(LatencyGenerator, DelaysAClickByExactlyItsLatencyAndFailsOnlyWhenAsked) {
    for (const double ms : {0.0, 1.0, 10.0, 333.3}) {
        LatencyGenerator effect(kRate, 2);
        SetPlain(effect, LatencyGenerator::kLatency, ms);
        const std::size_t latency = effect.GetLatencySamples();
        EXPECT_EQ(latency, std::size_t(std::lround(ms * kRate / 1000.0))) << ms;
        Stereo clicks{std::vector<float>(20000), std::vector<float>(20000)};
        clicks[0][100] = 0.75f;
        clicks[1][300] = -0.25f;
        const Stereo out = ProcessAll(effect, clicks);
        for (int c = 0; c < 2; ++c)
            for (std::size_t i = 0; i < out[c].size(); ++i) {
                const float expected = i >= latency ? clicks[c][i - latency] : 0.0f;
                ASSERT_EQ(out[c][i], expected) << ms << " ms, channel " << c << " sample " << i;
            }
        EXPECT_FALSE(effect.HasFailed());
    }
    LatencyGenerator effect(kRate, 2);
    effect.SetParameterValue(LatencyGenerator::kFailOnProcess, 1.0f);
    const Stereo failed = ProcessAll(effect, SineBoth(1000.0, 0.1));
    EXPECT_TRUE(effect.HasFailed());
    for (const auto& channel : failed)
        EXPECT_EQ(*std::max_element(channel.begin(), channel.end()), 0.0f);
    effect.SetParameterValue(LatencyGenerator::kFailOnProcess, 0.0f);
    ProcessAll(effect, SineBoth(1000.0, 0.1));
    EXPECT_FALSE(effect.HasFailed());
}

TEST(Phaser, WithoutSweepOrFeedbackTheWetChainIsAllpass) {
    for (const int stages : {2, 4, 12})
        for (const double hz : {40.0, 200.0, 1000.0, 5000.0, 15000.0}) {
            Phaser effect(kRate, 2);
            SetPlain(effect, Phaser::kStages, stages);
            SetPlain(effect, Phaser::kDepth, 0.0);
            SetPlain(effect, Phaser::kFeedback, 0.0);
            SetPlain(effect, Phaser::kMix, 100.0);
            SetPlain(effect, Phaser::kOutputGain, 0.0);
            const Stereo out = ProcessAll(effect, SineBoth(hz, 0.6));
            EXPECT_NEAR(GainDb(out[0], hz, 0.3, 0.25), 0.0, 0.02) << stages << " stages " << hz;
            EXPECT_NEAR(GainDb(out[1], hz, 0.3, 0.25), 0.0, 0.02) << stages << " stages " << hz;
        }
}

// N stages at corner fc turn by -2N atan(tan(pi f / fs) / tan(pi fc / fs)); half wet, the
// sum cancels where that reaches -180 degrees.
double FirstNotch(double corner, int stages) {
    const double t =
        std::tan(std::numbers::pi * corner / kRate) * std::tan(std::numbers::pi / (2.0 * stages));
    return std::atan(t) * kRate / std::numbers::pi;
}

TEST(Phaser, NotchesSitWhereTheoryPutsThemAndMoveWithTheLfo) {
    Phaser effect(kRate, 2);
    SetPlain(effect, Phaser::kStages, 4);
    SetPlain(effect, Phaser::kFrequency, 200.0);
    SetPlain(effect, Phaser::kDepth, 100.0);
    SetPlain(effect, Phaser::kRate, 0.05);
    SetPlain(effect, Phaser::kFeedback, 0.0);
    SetPlain(effect, Phaser::kStereoPhase, 180.0);
    SetPlain(effect, Phaser::kMix, 50.0);
    SetPlain(effect, Phaser::kOutputGain, 0.0);
    const double low = FirstNotch(200.0, 4);
    const double high = FirstNotch(200.0 * std::exp2(Phaser::kSweepOctaves), 4);
    // The right LFO starts half a cycle on, at the top of the sweep; the left reaches it after
    // half a period (10 s at 0.05 Hz).
    struct Case {
        double hz;
        bool leftAtStart, rightAtStart, leftAtTop;
    };
    for (const Case& c : {Case{low, true, false, false}, Case{high, false, true, true}}) {
        const double hz = c.hz;
        Phaser fresh(kRate, 2);
        for (int i = 0; i < Phaser::kParameterCount; ++i)
            fresh.SetParameterValue(i, effect.GetParameterValue(i));
        const Stereo out = ProcessAll(fresh, SineBoth(hz, 10.2));
        const auto check = [&](const std::vector<float>& channel, double from, bool notch) {
            const double db = GainDb(channel, hz, from, 0.1);
            if (notch)
                EXPECT_LT(db, -30.0) << hz << " Hz from " << from << " s";
            else
                EXPECT_GT(db, -10.0) << hz << " Hz from " << from << " s";
        };
        check(out[0], 0.1, c.leftAtStart);
        check(out[1], 0.1, c.rightAtStart);
        check(out[0], 9.95, c.leftAtTop);
    }
}

// Half wet through W = z^-d / (1 - g z^-d): gain |1 + W| / 2 on the unit circle. Without
// feedback that is |cos(pi f d)|, with notches at odd multiples of 1/(2d).
TEST(Flanger, AFixedDelayMakesTheCombTheoryPredicts) {
    struct Case {
        double delayMs;
        double feedback;
        bool cubic;
    };
    for (const Case& c : {Case{1.0, 0.0, false}, Case{2.5, 0.0, true}, Case{1.0, 0.5, true},
                          Case{2.5, -0.5, false}}) {
        const double d = c.delayMs / 1000.0;
        for (const double periods : {0.25, 0.5, 1.0, 1.5, 2.0}) {
            const double hz = periods / d;
            const std::complex<double> z = std::polar(1.0, -2.0 * std::numbers::pi * periods);
            const double expected = std::abs(1.0 + z / (1.0 - c.feedback * z)) / 2.0;
            Flanger effect(kRate, 2);
            SetPlain(effect, Flanger::kDelay, c.delayMs);
            SetPlain(effect, Flanger::kDepth, 0.0);
            SetPlain(effect, Flanger::kFeedback, c.feedback * 100.0);
            SetPlain(effect, Flanger::kMix, 50.0);
            SetPlain(effect, Flanger::kOutputGain, 0.0);
            effect.SetParameterValue(Flanger::kHighQuality, c.cubic ? 1.0f : 0.0f);
            const Stereo out = ProcessAll(effect, SineBoth(hz, 0.5));
            for (int ch = 0; ch < 2; ++ch) {
                const double db = GainDb(out[ch], hz, 0.25, 0.2);
                if (expected < 1e-6)
                    EXPECT_LT(db, -60.0) << c.delayMs << " ms at " << hz << " Hz";
                else
                    EXPECT_NEAR(db, audiotest::Decibels(expected), 0.05)
                        << c.delayMs << " ms, feedback " << c.feedback << " at " << hz << " Hz";
            }
        }
    }
}

double Rms(const std::vector<float>& signal, std::size_t first) {
    double sum = 0.0;
    for (std::size_t i = first; i < signal.size(); ++i)
        sum += double(signal[i]) * signal[i];
    return std::sqrt(sum / double(signal.size() - first));
}

// The voices are averaged, so however many there are the wet level cannot pass the input's;
// on noise the voices decorrelate, so it cannot fall under 1/sqrt(voices) by much either.
TEST(ChorusFlanger, ChorusVoicesKeepTheRmsWithinBounds) {
    std::mt19937 random(7);
    std::normal_distribution<float> noise(0.0f, 0.2f);
    Stereo input{std::vector<float>(96000), std::vector<float>(96000)};
    for (auto& channel : input)
        for (float& x : channel)
            x = noise(random);
    const double inRms = Rms(input[0], 4800);
    for (const int voices : {1, 2, 5, 8})
        for (const double mix : {50.0, 100.0}) {
            ChorusFlanger effect(kRate, 2);
            SetPlain(effect, ChorusFlanger::kVoices, voices);
            SetPlain(effect, ChorusFlanger::kDepth, 100.0);
            SetPlain(effect, ChorusFlanger::kRate, 3.0);
            SetPlain(effect, ChorusFlanger::kMix, mix);
            const Stereo out = ProcessAll(effect, input);
            for (int c = 0; c < 2; ++c) {
                const double ratio = Rms(out[c], 4800) / inRms;
                EXPECT_LE(ratio, 1.01) << voices << " voices, mix " << mix;
                EXPECT_GE(ratio, 0.8 / std::sqrt(double(voices)) * mix / 100.0)
                    << voices << " voices, mix " << mix;
            }
            // It is no plain copy: at full wet the output is the delayed voices.
            if (mix == 100.0) {
                EXPECT_GT(std::abs(out[0][10000] - input[0][10000]), 0.0f);
            }
        }
}

TEST(ModulationEffects, BadParametersAndSamplesGiveFiniteOutput) {
    const std::vector<std::function<std::unique_ptr<ReferenceEffect>()>> makers = {
        [] { return std::make_unique<Flanger>(kRate, 2); },
        [] { return std::make_unique<ChorusFlanger>(kRate, 2); },
        [] { return std::make_unique<Phaser>(kRate, 2); },
        [] {
            return std::make_unique<LatencyGenerator>(kRate, 2);
        }};
    constexpr float kBad[] = {std::numeric_limits<float>::quiet_NaN(),
                              std::numeric_limits<float>::infinity(), -1e9f, 1e9f};
    Stereo input = SineBoth(440.0, 0.5);
    for (std::size_t i = 0; i < input[0].size(); i += 97) {
        input[0][i] = std::numeric_limits<float>::quiet_NaN();
        input[1][i] = -std::numeric_limits<float>::infinity();
    }
    for (std::size_t m = 0; m < makers.size(); ++m)
        for (const float bad : kBad) {
            auto effect = makers[m]();
            for (int i = 0; i < int(effect->GetParameterCount()); ++i)
                effect->SetParameterValue(i, bad);
            const Stereo out = ProcessAll(*effect, input);
            for (const auto& channel : out)
                for (const float x : channel)
                    ASSERT_TRUE(std::isfinite(x)) << "effect " << m << ", setting " << bad;
            // Settings stay inside their ranges, so the effect is still usable.
            for (int i = 0; i < int(effect->GetParameterCount()); ++i) {
                const double v = effect->GetAppliedValue(i);
                EXPECT_TRUE(v >= 0.0 && v <= 1.0) << i;
            }
        }
}

} // namespace
