// The dynamics processor against measurement and theory: steady sines at ten levels come out at
// the level its drawn curve promises (straight segments, splines, RMS, gains, the gate), the
// side chain hears only its band, linked channels share the loudest one's gain, the look-ahead
// delays by its length, and bad input stays defined. Its meter: see the editor's tests.
#include "audio/dsp/dynamics.hpp"

#include "audio_test_helpers.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <utility>
#include <vector>

using qoraudiofilters::Dynamics;

namespace {

constexpr float kRate = 48000.0f;
constexpr std::size_t kWindow = 4800; // measured at the end: 100 periods of 1 kHz
const double kRmsOfPeak = 10 * std::log10(2.0);

using Points = std::vector<std::pair<double, double>>;
using Signals = std::vector<std::vector<float>>;
const Points kCompressor = {{-100, -100}, {-40, -40}, {0, -30}}; // 4:1 above -40 dB

struct Shape {
    Points points;
    bool splines = false, rms = false, gate = false, link = true;
    double inputGain = 0.0, outputGain = 0.0, makeUp = 0.0;
};

void Configure(Dynamics& fx, const Shape& s) {
    // Peaks held (instant attack), the gain's release fast: steady sines settle at once.
    const std::pair<int, double> values[] = {
        {Dynamics::kPointCount, double(s.points.size()) / 7},
        {Dynamics::kParameterIndex_Splines, s.splines},
        {Dynamics::kParameterIndex_RMS, s.rms},
        {Dynamics::kParameterIndex_DoingNoiseGate, s.gate},
        {Dynamics::kParameterIndex_CompJoint, s.link},
        {Dynamics::kParameterIndex_InputGainDB, (s.inputGain + 48) / 96},
        {Dynamics::kParameterIndex_OutputGainDB, (s.outputGain + 48) / 96},
        {Dynamics::kMakeUpGain, s.makeUp / 100},
        {Dynamics::kParameterIndex_AttackTime, 0.0},
        {Dynamics::kParameterIndex_EnvelopeGainReleaseTime, 0.025}};
    for (const auto& value : values)
        fx.SetParameterValue(value.first, float(value.second));
    for (std::size_t i = 0; i < s.points.size(); ++i) {
        fx.SetParameterValue(Dynamics::PointInputIndex(int(i)), float(s.points[i].first / 100 + 1));
        fx.SetParameterValue(Dynamics::PointOutputIndex(int(i)),
                             float(s.points[i].second / 100 + 1));
    }
    fx.Reset();
}

Signals RunThrough(Dynamics& fx, Signals signal) {
    const std::size_t length = signal[0].size();
    for (std::size_t at = 0; at < length; at += 512) {
        float* channels[8];
        for (std::size_t c = 0; c < signal.size(); ++c)
            channels[c] = signal[c].data() + at;
        fx.Process(channels, channels, signal.size(), std::min<std::size_t>(512, length - at));
    }
    return signal;
}

std::vector<float> Sine(double decibels, double hz = 1000.0, std::size_t length = 28800) {
    return audiotest::Sine(hz, std::pow(10.0, decibels / 20), kRate, length);
}

double LevelOf(const std::vector<float>& signal, double hz = 1000.0) {
    return audiotest::Decibels(
        audiotest::AmplitudeAt(signal, hz, kRate, signal.size() - kWindow, kWindow));
}

/// Straight segments through the points, the first point's gain below it: the curve in theory.
double Polyline(const Points& p, double x) {
    if (x <= p.front().first)
        return p.front().second + x - p.front().first;
    std::size_t i = 1;
    while (i + 1 < p.size() && x > p[i].first)
        ++i;
    const double x0 = p[i - 1].first, y0 = p[i - 1].second;
    return y0 + (x - x0) * (p[i].second - y0) / (p[i].first - x0);
}

} // namespace

TEST(Dynamics, SteadySinesComeOutWhereTheDrawnCurveSays) {
    const Points knees = {{-100, -100}, {-60, -80}, {-30, -30}, {-10, -20}, {0, -18}};
    const Shape shapes[] = {
        {knees},
        {knees, false, true, false, true, 6.0, -4.0, 7.5},
        {{{-100, -100}, {-60, -50}, {-30, -30}, {0, -12}}, true},
        {{{-100, -100}, {-40, -60}, {0, 0}}, true, true},
        {{{-100, -100}, {-50.5, -100}, {-50, -50}, {0, -10}}, false, false, true}, // a gate
    };
    for (const Shape& s : shapes) {
        SCOPED_TRACE(testing::Message() << "shape " << &s - shapes);
        Dynamics fx(kRate, 1);
        Configure(fx, s);
        std::vector<float> curve;
        ASSERT_EQ(fx.GetResponseCurve(0, 100, curve), 100);
        for (std::size_t k = 5; k < 100; k += 10) {
            const double level = -100.0 + double(k); // value k of 100 over -100..0 dB
            SCOPED_TRACE(level);
            // The sine the detector reads at `level`, and its peak after the curve's gain.
            const double rms = s.rms ? kRmsOfPeak : 0.0;
            const auto out = RunThrough(fx, {Sine(level - s.inputGain + rms)})[0];
            if (curve[k] <= -300.0f) {
                EXPECT_LT(LevelOf(out), -180.0) << "gated";
            } else {
                EXPECT_NEAR(LevelOf(out), curve[k] + s.outputGain + s.makeUp + rms, 0.5);
            }
        }
    }
}

TEST(Dynamics, TheDetectorHearsItsBandAndLinkedChannelsTheLoudest) {
    // RMS: the peaks of a sine sampled four times a period may miss its crest, its mean square
    // does not.
    Dynamics band(kRate, 1);
    Configure(band, {kCompressor, false, true});
    band.SetParameterValue(Dynamics::kParameterIndex_LoFreq, float(980.0 / 23980));
    band.SetParameterValue(Dynamics::kParameterIndex_HiFreq, float(4980.0 / 23980));
    // Second-order Butterworth passes at 1 and 5 kHz, through the bilinear transform's warping.
    const auto warped = [](double hz) {
        return std::tan(std::numbers::pi * hz / kRate);
    };
    for (double hz : {100.0, 2000.0, 12000.0}) {
        SCOPED_TRACE(hz);
        const double heard = -10.0 - kRmsOfPeak -
                             10 * std::log10(1 + std::pow(warped(1000) / warped(hz), 4)) -
                             10 * std::log10(1 + std::pow(warped(hz) / warped(5000), 4));
        const auto out = RunThrough(band, {Sine(-10.0, hz, 48000)})[0];
        EXPECT_NEAR(LevelOf(out, hz), -10.0 + Polyline(kCompressor, heard) - heard, 0.2);
    }
    for (bool link : {true, false}) {
        SCOPED_TRACE(link);
        Dynamics fx(kRate, 2);
        Configure(fx, {kCompressor, false, false, false, link});
        const auto out = RunThrough(fx, {Sine(-10.0), Sine(-50.0)});
        const double loudGain = Polyline(kCompressor, -10.0) + 10.0;
        EXPECT_NEAR(LevelOf(out[0]), -10.0 + loudGain, 0.1);
        EXPECT_NEAR(LevelOf(out[1]), -50.0 + (link ? loudGain : 0.0), 0.1);
    }
}

TEST(Dynamics, TheLookAheadDelaysByItsLength) {
    Dynamics fx(kRate, 1);
    fx.SetParameterValue(Dynamics::kParameterIndex_LookAhead, 0.02f); // 10 ms
    EXPECT_EQ(fx.GetLatencySamples(), 480u);
    std::vector<float> click(2048, 0.0f);
    click[100] = 0.5f;
    const auto out = RunThrough(fx, {click})[0];
    for (std::size_t i = 0; i < out.size(); ++i)
        ASSERT_EQ(out[i], i == 580 ? 0.5f : 0.0f) << i;
}

TEST(Dynamics, BadInputStaysDefined) {
    Dynamics fx(kRate, 1);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    // A value that is no number reads as the default: three points on the diagonal.
    fx.StoreValue(Dynamics::kPointCount, nan);
    fx.StoreValue(Dynamics::PointOutputIndex(1), nan);
    fx.UpdateFromParameters();
    EXPECT_DOUBLE_EQ(fx.GetCurveOutputDecibels(-20.0), -20.0);
    EXPECT_DOUBLE_EQ(fx.GetCurveOutputDecibels(-350.0), -350.0) << "silence is not raised";
    std::vector<float> curve;
    EXPECT_EQ(fx.GetResponseCurve(1, 10, curve) + fx.GetResponseCurve(0, 0, curve), 0);

    // Samples that are no number are silence, and leave no trace in what follows.
    std::vector<float> signal = Sine(-6.0);
    for (std::size_t i = 1000; i < 1100; ++i)
        signal[i] = i % 2 ? std::numeric_limits<float>::infinity() : nan;
    const auto out = RunThrough(fx, {signal})[0];
    for (float sample : out)
        ASSERT_TRUE(std::isfinite(sample));
    EXPECT_EQ(out[1050], 0.0f);
    EXPECT_NEAR(LevelOf(out), -6.0, 0.01);
}
