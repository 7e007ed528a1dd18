// The pieces the dynamics processors share, against their textbook figures.
#include "audio/dsp/dynamics_toolkit.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace qoraudiofilters::dynamics;

TEST(DynamicsToolkit, StaticCurvesOfCompressorExpanderAndDrawnCurve) {
    const struct {
        double input, threshold, ratio, knee, gain;
    } compressor[] = {
        {-30, -20, 4, 0, 0},       // below the threshold: untouched
        {-10, -20, 4, 0, -7.5},    // 10 dB over at 4:1: 2.5 dB out, so 7.5 dB down
        {0, -20, 2, 0, -10},       // 20 dB over at 2:1
        {-20, -20, 4, 6, -0.5625}, // the knee's middle: a quarter of a hard knee at knee/2 over
        {-17, -20, 4, 6, -2.25},   // the knee's top joins the hard line
        {-10, -20, 1, 0, 0},       // ratio 1 changes nothing
        {NAN, -20, 4, 0, 0},
    };
    for (const auto& row : compressor)
        EXPECT_NEAR(CompressorGain(row.input, row.threshold, row.ratio, row.knee), row.gain, 1e-9)
            << row.input << " " << row.knee;

    EXPECT_NEAR(ExpanderGain(-50, -40, 2), -10.0, 1e-12); // 10 dB under at 1:2: 20 dB out
    EXPECT_EQ(ExpanderGain(-30, -40, 2), 0.0);
    EXPECT_EQ(ExpanderGain(-300, -40, 1000), kFloorDecibels) << "a gate bottoms out";

    const std::vector<std::array<double, 2>> curve{{-100, -100}, {-20, -20}, {0, -10}};
    EXPECT_NEAR(TransferCurveOutput(curve, -60), -60, 1e-12);
    EXPECT_NEAR(TransferCurveOutput(curve, -10), -15, 1e-12);
    EXPECT_NEAR(TransferCurveOutput(curve, 6), -7, 1e-12) << "the last segment goes on";
    EXPECT_NEAR(TransferCurveOutput(curve, -120), -120, 1e-12) << "so does the first";
    EXPECT_NEAR(TransferCurveOutput({{-20, -30}}, -10), -20, 1e-12) << "one point: slope 1";
}

TEST(DynamicsToolkit, DetectorsReachTheirTimeConstants) {
    constexpr double rate = 48000.0;
    AttackRelease smoother;
    smoother.SetTimes(10.0, 100.0, rate);
    smoother.Reset(0.0);
    for (int i = 0; i < 480; ++i) // 10 ms of a step up
        smoother.Process(1.0);
    EXPECT_NEAR(smoother.GetValue(), 1.0 - std::exp(-1.0), 1e-3);
    for (int i = 0; i < 4800; ++i) // 100 ms of a step down
        smoother.Process(0.0);
    EXPECT_NEAR(smoother.GetValue(), (1.0 - std::exp(-1.0)) * std::exp(-1.0), 1e-3);

    MeanSquare meanSquare;
    meanSquare.SetWindow(50.0, rate);
    double level = 0.0;
    for (int i = 0; i < 48000; ++i)
        level = meanSquare.Process(std::sin(2.0 * M_PI * 1000.0 * i / rate));
    EXPECT_NEAR(DecibelsFromLinear(std::sqrt(level)), -3.0103, 0.05) << "a sine's RMS";
    EXPECT_EQ(DecibelsFromLinear(0.0), kFloorDecibels);
    EXPECT_EQ(LinearFromDecibels(kFloorDecibels), 0.0);
}

TEST(DynamicsToolkit, TheDelayLineDelaysByWhatItIsSetTo) {
    DelayLine line(8);
    line.SetDelay(3);
    std::vector<float> out;
    for (int i = 1; i <= 6; ++i)
        out.push_back(line.Process(float(i)));
    EXPECT_EQ(out, (std::vector<float>{0, 0, 0, 1, 2, 3}));
    line.SetDelay(100);
    EXPECT_EQ(line.GetDelay(), 8u) << "held at the capacity";
}

TEST(DynamicsToolkit, TheLookAheadLimiterRampsIntoAPeakAndReleasesFromIt) {
    // 0.25 with a burst of 2.0 (6 dB over a 0 dB ceiling, so a gain of 0.5) at 1000.
    constexpr std::size_t kLook = 48, kBurst = 1000;
    constexpr double kRelease = 480.0; // samples: 10 ms at 48 kHz
    LookAheadLimiter limiter(64, 48000.0);
    limiter.SetLookAhead(kLook);
    limiter.SetRelease(10.0);
    std::vector<float> signal(4000, 0.25f);
    std::fill_n(signal.begin() + kBurst, 10, 2.0f);
    float* channels[] = {signal.data()};
    limiter.Process(channels, 1, signal.size());
    EXPECT_NEAR(limiter.GetLastGain(), 0.5, 1e-5);

    // Out of the delay by the look-ahead; the gain falls in a straight line over its span ...
    EXPECT_EQ(signal[kLook - 1], 0.0f);
    for (std::size_t j = 0; j < kLook; j += 8)
        EXPECT_NEAR(signal[kBurst + j], 0.25 * (1.0 - 0.5 * double(j + 1) / (kLook + 1)), 1e-6);
    // ... to reach the ceiling exactly with the peak, never passing it.
    EXPECT_NEAR(signal[kBurst + kLook], 1.0, 1e-5);
    EXPECT_LE(*std::max_element(signal.begin(), signal.end()), 1.0f);
    // Once the peak has left the span, the release: 1 - 1/e of the way back after its time
    // (the average over the span lags it by half the span).
    const std::size_t released = kBurst + 9 + kLook + kLook / 2 + std::size_t(kRelease);
    EXPECT_NEAR(signal[released], 0.25 * (1.0 - 0.5 * std::exp(-1.0)), 2e-3);
}

} // namespace
