// The parametric dynamics measured with steady sines: the band's static gain follows the
// textbook compressor and expander, tones outside the band pass while it is compressed, an
// untouched signal passes bit for bit (later by the reported latency), the gate closes on its
// own and opens again, the limiter holds its ceiling, and the meters read the band.
#include "audio/dsp/parametric_dynamics.hpp"

#include "audio_test_helpers.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

using qoraudiofilters::ParametricDynamics;
using qoraudiofilters::parametricdynamics::AutoGateState;
using PD = ParametricDynamics;

namespace {

constexpr float kRate = 48000.0f;
constexpr std::size_t kBlock = 512;

struct Plain {
    int index;
    double value;
};

std::unique_ptr<PD> Make(std::initializer_list<Plain> settings) {
    auto effect = std::make_unique<PD>(kRate, 2);
    for (const Plain& s : settings)
        effect->SetParameterValue(
            s.index, effect->GetParameterInfo(s.index)->NormalisedFromPlain(float(s.value)));
    return effect;
}

// A band at 2 kHz, 4:1 above -30 dB with a hard knee, 1:2 below -50 dB.
std::unique_ptr<PD> Compressing() {
    return Make({{PD::kFrequency, 2000},
                 {PD::kQ, 2},
                 {PD::kThreshold, -30},
                 {PD::kRatio, 4},
                 {PD::kKnee, 0},
                 {PD::kExpanderThreshold, -50},
                 {PD::kExpanderRatio, 2}});
}

double TextbookOutput(double level) {
    if (level > -30.0)
        return -30.0 + (level + 30.0) / 4.0;
    if (level < -50.0)
        return -50.0 + (level + 50.0) * 2.0;
    return level;
}

/// The same signal in both channels through the effect in blocks; the left output.
std::vector<float> Through(PD& effect, const std::vector<float>& signal) {
    std::vector<float> left(signal.size()), right(signal.size());
    for (std::size_t at = 0; at < signal.size(); at += kBlock) {
        const std::size_t n = std::min(kBlock, signal.size() - at);
        const float* inputs[] = {signal.data() + at, signal.data() + at};
        float* outputs[] = {left.data() + at, right.data() + at};
        effect.Process(inputs, outputs, 2, n);
    }
    return left;
}

/// The level in dB of the component at `hz` over the last half second.
double LevelAt(const std::vector<float>& out, double hz) {
    return audiotest::Decibels(audiotest::AmplitudeAt(out, hz, kRate, out.size() - 24000, 24000));
}

TEST(ParametricDynamics, TheBandsStaticGainIsTheTextbookCurve) {
    for (double level : {-70.0, -62.0, -55.0, -45.0, -38.0, -31.0, -25.0, -18.0, -12.0, -6.0}) {
        auto effect = Compressing();
        const auto sine = audiotest::Sine(2000.0, std::pow(10.0, level / 20.0), kRate, 72000);
        EXPECT_NEAR(LevelAt(Through(*effect, sine), 2000.0), TextbookOutput(level), 0.2) << level;
        EXPECT_NEAR(effect->GetStaticOutputDecibels(level), TextbookOutput(level), 1e-4);
    }
}

TEST(ParametricDynamics, TonesOutsideTheBandPassWhileItIsCompressed) {
    auto effect = Compressing();
    auto signal = audiotest::Sine(2000.0, 0.5, kRate, 72000);
    for (double hz : {100.0, 16000.0})
        for (std::size_t i = 0; const float s : audiotest::Sine(hz, 0.25, kRate, 72000))
            signal[i++] += s;
    const auto out = Through(*effect, signal);
    EXPECT_NEAR(LevelAt(out, 2000.0), TextbookOutput(-6.0206), 0.2) << "18 dB down";
    EXPECT_NEAR(LevelAt(out, 100.0), -12.0412, 0.1);
    EXPECT_NEAR(LevelAt(out, 16000.0), -12.0412, 0.1);
}

TEST(ParametricDynamics, WithoutAGainChangeTheSignalPassesBitForBit) {
    auto effect = Make({{PD::kFrequency, 2000}, {PD::kThreshold, -30}, {PD::kKnee, 0}});
    std::mt19937 random(5);
    std::uniform_real_distribution<float> noise(-0.02f, 0.02f); // under -30 dB in any band
    std::vector<float> signal(48000);
    for (float& s : signal)
        s = noise(random);
    const auto out = Through(*effect, signal);
    const std::size_t latency = effect->GetLatencySamples();
    ASSERT_EQ(latency, 72u) << "1.5 ms at 48 kHz";
    for (std::size_t i = latency; i < signal.size(); ++i)
        ASSERT_EQ(out[i], signal[i - latency]) << i;
}

TEST(ParametricDynamics, TheGateClosesByItselfAndTheLimiterHoldsItsCeiling) {
    auto effect = Make({{PD::kGateEnable, 1},
                        {PD::kGateThreshold, -40},
                        {PD::kGateHold, 50},
                        {PD::kCeiling, -6},
                        {PD::kFrequency, 5000}});
    // Under the threshold for longer than the hold: closed, and the output is silent.
    auto out = Through(*effect, audiotest::Sine(300.0, 0.001, kRate, 24000));
    EXPECT_EQ(effect->GetAutoGateState(), AutoGateState::kClosed);
    EXPECT_TRUE(std::all_of(out.end() - 4800, out.end(), [](float s) { return s == 0.0f; }));
    EXPECT_FALSE(effect->IsLimiting());

    // Full scale: open at once, limited to -6 dB.
    out = Through(*effect, audiotest::Sine(300.0, 1.0, kRate, 24000));
    EXPECT_EQ(effect->GetAutoGateState(), AutoGateState::kOpen);
    EXPECT_TRUE(effect->IsLimiting());
    const double ceiling = std::pow(10.0, -6.0 / 20.0);
    EXPECT_LE(*std::max_element(out.begin(), out.end()), ceiling);
    EXPECT_NEAR(LevelAt(out, 300.0), -6.0, 0.5) << "held at the ceiling, not crushed under it";

    effect->SetParameterValue(PD::kGateEnable, 0.0f);
    effect->SetParameterValue(PD::kLimiterEnable, 0.0f);
    Through(*effect, audiotest::Sine(300.0, 1.0, kRate, 4800));
    EXPECT_EQ(effect->GetAutoGateState(), AutoGateState::kOff);
    EXPECT_FALSE(effect->IsLimiting());
}

TEST(ParametricDynamics, MetersReadTheBandWhileActive) {
    auto effect = Compressing();
    const auto sine = audiotest::Sine(2000.0, std::pow(10.0, -12.0 / 20.0), kRate, 48000);
    Through(*effect, sine);
    EXPECT_EQ(effect->TakeMeterData().bandLevel, -300.0f) << "nothing gathered while inactive";
    effect->SetMeterActive(true);
    Through(*effect, sine);
    effect->TakeMeterData();
    Through(*effect, std::vector<float>(sine.begin(), sine.begin() + 4800));
    const auto data = effect->TakeMeterData();
    EXPECT_NEAR(data.bandLevel, -12.0, 0.15);
    EXPECT_NEAR(data.gainChange, TextbookOutput(-12.0) + 12.0, 0.15);
    EXPECT_FALSE(data.limiting);
    EXPECT_EQ(data.gate, AutoGateState::kOff);
}

} // namespace
