// The reference graphic equaliser measured with steady sines through Process: each band's gain
// at its centre, a flat chain that changes nothing, the smooth sum of equal neighbours, the
// range, bypass and master gain, changes without clicks and inputs that are not numbers.
#include "audio_test_helpers.hpp"

#include "audio/dsp/graphic_eq.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

using qoraudiofilters::GraphicEQ;

namespace {

constexpr float kRate = 48000.0f;

float GainValue(double dB) {
    return float((dB + 24.0) / 48.0);
}

std::vector<float> RunThrough(GraphicEQ& eq, const std::vector<float>& in) {
    std::vector<float> out(in.size());
    const float* inputs[] = {in.data()};
    float* outputs[] = {out.data()};
    eq.Process(inputs, outputs, 1, in.size());
    return out;
}

// The gain of a sine through the running effect, once settled, by correlation over the same
// samples of input and output.
double MeasuredDecibels(GraphicEQ& eq, double hz) {
    eq.Reset();
    const std::size_t settle = 24000;
    const std::size_t window = 24000;
    const std::vector<float> in = audiotest::Sine(hz, 0.25, kRate, settle + window);
    const std::vector<float> out = RunThrough(eq, in);
    return audiotest::Decibels(audiotest::AmplitudeAt(out, hz, kRate, settle, window) /
                               audiotest::AmplitudeAt(in, hz, kRate, settle, window));
}

class GraphicEQBands : public ::testing::TestWithParam<int> {};

TEST_P(GraphicEQBands, EachBandAloneGivesItsGainAtItsCentre) {
    GraphicEQ eq(GetParam(), kRate, 1);
    for (int b = 0; b < eq.GetBandCount(); ++b) {
        const double dB = (b % 2 == 0 ? 1.0 : -1.0) * (3.0 + 2.0 * (b % 9)); // +-3 .. +-19
        eq.SetParameterValue(b, GainValue(dB));
        EXPECT_NEAR(MeasuredDecibels(eq, eq.GetBandCentre(b)), dB, 0.5) << "band " << b;
        eq.SetParameterValue(b, GainValue(0.0));
    }
}

TEST_P(GraphicEQBands, AllBandsAtZeroPassASineUnchanged) {
    GraphicEQ eq(GetParam(), kRate, 1);
    for (double hz : {30.0, 440.0, 1000.0, 7000.0, 19000.0})
        EXPECT_NEAR(MeasuredDecibels(eq, hz), 0.0, 0.01) << hz << " Hz";
}

TEST_P(GraphicEQBands, EqualNeighboursAddUpToASmoothCurve) {
    GraphicEQ eq(GetParam(), kRate, 1);
    for (int b = 0; b < eq.GetBandCount(); ++b)
        eq.SetParameterValue(b, GainValue(6.0));
    const double first = eq.GetBandCentre(0);
    const double last = eq.GetBandCentre(eq.GetBandCount() - 1);
    for (int i = 0; i <= 40; ++i) {
        const double hz = first * std::pow(last / first, i / 40.0);
        EXPECT_NEAR(MeasuredDecibels(eq, hz), 6.0, 1.0) << hz << " Hz";
    }
}

INSTANTIATE_TEST_SUITE_P(Counts, GraphicEQBands, ::testing::Values(10, 20, 30));

TEST(GraphicEQ, RangeBypassAndMasterGain) {
    GraphicEQ eq(10, kRate, 1);
    const int kilo = 5; // the 1 kHz band
    eq.SetParameterValue(kilo, GainValue(18.0));
    eq.SetParameterValue(eq.RangeIndex(), float((12.0 - 6.0) / 18.0));
    EXPECT_NEAR(MeasuredDecibels(eq, 1000.0), 12.0, 0.5) << "the range holds the band";
    eq.SetParameterValue(eq.MasterGainIndex(), GainValue(-10.0));
    EXPECT_NEAR(MeasuredDecibels(eq, 1000.0), 2.0, 0.5);
    EXPECT_NEAR(MeasuredDecibels(eq, 100.0) - MeasuredDecibels(eq, 10000.0), 0.0, 0.05);
    eq.SetParameterValue(eq.BypassIndex(), 1.0f);
    EXPECT_NEAR(MeasuredDecibels(eq, 1000.0), 0.0, 0.01);
}

TEST(GraphicEQ, ChangesFadeWithoutClicks) {
    GraphicEQ eq(30, kRate, 1);
    const std::vector<float> in = audiotest::Sine(1000.0, 0.5, kRate, 9600);
    std::vector<float> out(in.size());
    const float* inputs[] = {in.data()};
    float* outputs[] = {out.data()};
    // The 1 kHz band jumps from -24 to +24 dB between blocks of 64 samples.
    for (std::size_t at = 0; at < in.size(); at += 64) {
        eq.SetParameterValue(16, at % 1920 < 960 ? 0.0f : 1.0f);
        const float* from[] = {inputs[0] + at};
        float* to[] = {outputs[0] + at};
        eq.Process(from, to, 1, 64);
    }
    // A sine of amplitude A at 1 kHz moves at most 2 pi f A / rate per sample; a click steps
    // far beyond what the loudest setting (+24 dB, x15.8) allows.
    const double loudest = 2.0 * 3.14159265 * 1000.0 * 0.5 * 15.85 / kRate;
    EXPECT_LT(audiotest::LargestStep(out, 1), 1.2 * loudest);
}

TEST(GraphicEQ, NotANumberReadsAsDefaultAndBadInputIsForgotten) {
    GraphicEQ eq(10, kRate, 1);
    eq.SetParameterValue(5, std::numeric_limits<float>::quiet_NaN());
    EXPECT_NEAR(MeasuredDecibels(eq, 1000.0), 0.0, 0.01);
    eq.SetParameterValue(5, GainValue(6.0));
    std::vector<float> in = audiotest::Sine(1000.0, 0.25, kRate, 48000);
    in[100] = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> out = RunThrough(eq, in);
    EXPECT_TRUE(
        std::all_of(out.begin() + 24000, out.end(), [](float v) { return std::isfinite(v); }));
    EXPECT_NEAR(
        audiotest::Decibels(audiotest::AmplitudeAt(out, 1000.0, kRate, 24000, 24000) / 0.25), 6.0,
        0.5);
    EXPECT_THROW(GraphicEQ(12, kRate, 1), std::invalid_argument);
}

} // namespace
