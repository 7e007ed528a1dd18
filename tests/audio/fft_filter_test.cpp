#include "audio/dsp/fft_filter.hpp"

#include "audio_test_helpers.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using qoraudiofilters::FFTFilter;
using qoraudiotoolkit::WindowType;

namespace {

constexpr float kRate = 48000.0f;
constexpr double kNyquist = 24000.0;

// Runs a mono signal through the filter in blocks, in place as a host may.
std::vector<float> RunThrough(FFTFilter& filter, std::vector<float> signal,
                              std::size_t block = 512) {
    for (std::size_t at = 0; at < signal.size(); at += block) {
        float* channel = signal.data() + at;
        filter.Process(&channel, &channel, 1, std::min(block, signal.size() - at));
    }
    return signal;
}

struct Point {
    double hz;
    double decibels;
};

// Writes the points as the editor does: inside the bracket, the count quietly.
void SetPoints(FFTFilter& filter, const std::vector<Point>& points) {
    filter.SetParameterQuietly(FFTFilter::kCurveWriteBracket, 1.0f);
    filter.SetParameterQuietly(FFTFilter::kPointCount, float(points.size()) * 0.0078125f);
    for (std::size_t i = 0; i < points.size(); ++i) {
        filter.SetParameterValue(FFTFilter::PointXIndex(int(i)), float(points[i].hz / kNyquist));
        filter.SetParameterValue(
            FFTFilter::PointYIndex(int(i)),
            float(filter.GetFaderTranslator().GetNormalizedValue(points[i].decibels)));
    }
    filter.SetParameterQuietly(FFTFilter::kCurveWriteBracket, 0.0f);
}

// The level the filter reports for one frequency: the first sample of a response whose
// visible range starts there.
double ReportedDecibels(FFTFilter& filter, double hz) {
    const float low = filter.GetParameterValue(FFTFilter::kVisibleRangeLow);
    const float high = filter.GetParameterValue(FFTFilter::kVisibleRangeHigh);
    filter.SetParameterQuietly(FFTFilter::kVisibleRangeLow, float(hz / kNyquist));
    filter.SetParameterQuietly(FFTFilter::kVisibleRangeHigh, 1.0f);
    std::vector<float> response;
    EXPECT_NE(filter.GetResponseCurve(0, 8, response), 0);
    filter.SetParameterQuietly(FFTFilter::kVisibleRangeLow, low);
    filter.SetParameterQuietly(FFTFilter::kVisibleRangeHigh, high);
    return filter.GetFaderTranslator().GetDecibelValue(double(response.at(0)));
}

// The level a sine comes out with, once the blocks are full.
double MeasuredDecibels(FFTFilter& filter, double hz) {
    filter.Reset();
    const std::size_t settle = 3 * filter.GetLatencySamples();
    const std::vector<float> out =
        RunThrough(filter, audiotest::Sine(hz, 0.5, kRate, settle + 24000));
    return audiotest::Decibels(audiotest::AmplitudeAt(out, hz, kRate, settle, 24000) / 0.5);
}

} // namespace

TEST(FFTFilter, ParameterTableAndEncodings) {
    FFTFilter filter(kRate, 2);
    EXPECT_EQ(filter.GetParameterCount(), 266u);
    EXPECT_EQ(filter.GetNumberOfInputChannels(), 2u);
    EXPECT_EQ(filter.GetSampleRate(), kRate);
    EXPECT_EQ(filter.GetParameterValue(FFTFilter::kPointCount), 2.0f / 128.0f);
    EXPECT_FLOAT_EQ(filter.GetParameterValue(FFTFilter::PointXIndex(0)), float(20.0 / kNyquist));
    EXPECT_EQ(filter.GetParameterValue(FFTFilter::PointXIndex(1)), 1.0f);
    EXPECT_EQ(filter.GetParameterValue(FFTFilter::PointYIndex(0)), 0.75f);
    EXPECT_EQ(filter.GetParameterValue(FFTFilter::kScale), 0.0f) << "logarithmic";
    EXPECT_EQ(filter.GetParameterValue(FFTFilter::kWindowType), 0.125f) << "Hann";
    EXPECT_EQ(filter.GetFFTSize(), 4096u);
    EXPECT_FLOAT_EQ(filter.GetPlainValue(FFTFilter::kVisibleRangeHigh), 24000.0f);
    EXPECT_EQ(filter.GetLatencySamples(), 4096u);

    // Every offered size survives encoding, whichever way the reader rounds.
    for (unsigned int size = 32; size <= 32768; size *= 2) {
        const float value = FFTFilter::EncodeFFTSize(size);
        EXPECT_EQ(unsigned(value * 32736.0f + 32.0f), size);
        EXPECT_EQ(unsigned(double(value) * 32736.0 + 32.0), size);
        EXPECT_EQ(FFTFilter::DecodeFFTSize(value), size);
    }
    EXPECT_EQ(FFTFilter::DecodeFFTSize(0.5f), 16384u) << "16400 is nearest to 16384";
    EXPECT_EQ(FFTFilter::DecodeFFTSize(-3.0f), 32u);
    EXPECT_EQ(FFTFilter::DecodeFFTSize(7.0f), 32768u);
    EXPECT_EQ(FFTFilter::DecodeFFTSize(std::nanf("")), 4096u);
    for (unsigned int i = 0; i < 8; ++i)
        EXPECT_EQ(FFTFilter::DecodeWindowType(FFTFilter::EncodeWindowType(WindowType(i))),
                  WindowType(i));
    EXPECT_EQ(FFTFilter::DecodeWindowType(1.0f), WindowType::kKaiser180);
    EXPECT_EQ(FFTFilter::DecodeWindowType(-1.0f), WindowType::kTriangular);
    EXPECT_EQ(FFTFilter::DecodeWindowType(std::nanf("")), WindowType::kHann);
}

TEST(FFTFilter, AFlatCurvePassesTheSignalDelayedByOneBlockForEveryWindowAndSize) {
    std::vector<float> signal = audiotest::Sine(997.0, 0.4, kRate, 20000);
    for (std::size_t i = 0; i < signal.size(); ++i)
        signal[i] += float(0.3 * std::sin(0.37 * double(i * i % 4099))); // something broadband
    for (unsigned int size : {32u, 512u, 4096u}) {
        for (unsigned int w = 0; w < qoraudiotoolkit::kNumWindowTypes; ++w) {
            SCOPED_TRACE(testing::Message() << size << " points, window " << w);
            FFTFilter filter(kRate, 1);
            filter.SetParameterValue(FFTFilter::kFFTSize, FFTFilter::EncodeFFTSize(size));
            filter.SetParameterValue(FFTFilter::kWindowType,
                                     FFTFilter::EncodeWindowType(WindowType(w)));
            // Let the crossfade to the new blocks pass on silence.
            RunThrough(filter, std::vector<float>(3 * 4096 + 2048, 0.0f), 256);
            ASSERT_EQ(filter.GetLatencySamples(), size);
            filter.Reset();
            const std::vector<float> out = RunThrough(filter, signal, 300);
            double worst = 0.0;
            for (std::size_t i = 0; i + size < signal.size(); ++i)
                worst = std::max(worst, double(std::abs(out[i + size] - signal[i])));
            EXPECT_LT(worst, 2e-5);
        }
    }
}

TEST(FFTFilter, ReportedResponseMatchesTheLevelOfSinesThroughIt) {
    // Stated tolerance: 0.3 dB between the response reported and a sine measured through the
    // filter, for smooth curves (between bin centres the filter mixes neighbouring gains much
    // as the report interpolates them).
    for (bool splines : {false, true}) {
        SCOPED_TRACE(splines ? "splines" : "straight segments");
        FFTFilter filter(kRate, 1);
        filter.SetParameterValue(FFTFilter::kSplineCurves, splines ? 1.0f : 0.0f);
        SetPoints(filter, {{20, 0}, {100, -12}, {1000, 6}, {5000, -6}, {24000, 0}});
        for (double hz : {60.0, 200.0, 700.0, 1000.0, 3000.0, 11000.0}) {
            SCOPED_TRACE(hz);
            const double reported = ReportedDecibels(filter, hz);
            EXPECT_NEAR(MeasuredDecibels(filter, hz), reported, 0.3);
        }
        // The curve runs through its points.
        EXPECT_NEAR(ReportedDecibels(filter, 1000.0), 6.0, 0.05);
        EXPECT_NEAR(ReportedDecibels(filter, 5000.0), -6.0, 0.05);
    }
}

TEST(FFTFilter, SplinesBendWhereStraightSegmentsDoNot) {
    FFTFilter filter(kRate, 1);
    SetPoints(filter, {{20, 0}, {200, 0}, {2000, -20}, {24000, -20}});
    // Straight segments hold the levels outside the slope ...
    EXPECT_NEAR(ReportedDecibels(filter, 63.0), 0.0, 0.05);
    EXPECT_NEAR(ReportedDecibels(filter, 6900.0), -20.0, 0.05);
    const double straight = ReportedDecibels(filter, 450.0);
    // ... where a natural spline swings past them, as a sine through the filter shows.
    filter.SetParameterValue(FFTFilter::kSplineCurves, 1.0f);
    const double swing = ReportedDecibels(filter, 63.0);
    EXPECT_GT(swing, 0.5);
    EXPECT_NEAR(MeasuredDecibels(filter, 63.0), swing, 0.3);
    EXPECT_LT(ReportedDecibels(filter, 6900.0), -20.5);
    EXPECT_NEAR(ReportedDecibels(filter, 2000.0), -20.0, 0.05) << "through its points";

    // On the linear scale the points are joined in hertz, so the slope moves.
    filter.SetParameterValue(FFTFilter::kSplineCurves, 0.0f);
    filter.SetParameterValue(FFTFilter::kScale, 1.0f);
    EXPECT_GT(std::abs(ReportedDecibels(filter, 450.0) - straight), 0.5);
}

TEST(FFTFilter, ResponseIsSampledAcrossTheVisibleRangeOfTheScale) {
    FFTFilter filter(kRate, 2);
    SetPoints(filter, {{20, -20}, {1000, -20}, {1001, 10}, {24000, 10}});
    filter.SetParameterQuietly(FFTFilter::kVisibleRangeLow, float(100.0 / kNyquist));
    filter.SetParameterQuietly(FFTFilter::kVisibleRangeHigh, float(10000.0 / kNyquist));
    std::vector<float> log;
    ASSERT_EQ(filter.GetResponseCurve(1, 200, log), 1);
    ASSERT_EQ(log.size(), 200u);
    // 1 kHz lies halfway on a logarithmic 100 Hz..10 kHz axis.
    const auto& fader = filter.GetFaderTranslator();
    EXPECT_NEAR(fader.GetDecibelValue(log[90]), -20.0, 0.1);
    EXPECT_NEAR(fader.GetDecibelValue(log[110]), 10.0, 0.1);
    filter.SetParameterValue(FFTFilter::kScale, 1.0f);
    std::vector<float> linear;
    ASSERT_EQ(filter.GetResponseCurve(0, 200, linear), 1);
    // ... and a little past a tenth of a linear one: sample 18 is at 991 Hz, 19 at 1040.5 Hz.
    EXPECT_NEAR(fader.GetDecibelValue(linear[18]), -20.0, 0.1);
    EXPECT_NEAR(fader.GetDecibelValue(linear[19]), 10.0, 0.1);

    // What the filter cannot answer leaves the vector alone.
    std::vector<float> untouched{42.0f};
    EXPECT_EQ(filter.GetResponseCurve(2, 100, untouched), 0);
    EXPECT_EQ(filter.GetResponseCurve(-1, 100, untouched), 0);
    EXPECT_EQ(filter.GetResponseCurve(0, 0, untouched), 0);
    EXPECT_EQ(filter.GetResponseCurve(0, 70000, untouched), 0);
    EXPECT_EQ(untouched, std::vector<float>{42.0f});
}

TEST(FFTFilter, ResponseFollowsTheBinsOfTheFFTSize) {
    // A step between two neighbouring points is as sharp as the bins allow: at 32 points a bin
    // is 1500 Hz wide, so the step is smeared over the whole bin around it.
    FFTFilter filter(kRate, 1);
    filter.SetParameterValue(FFTFilter::kScale, 1.0f);
    SetPoints(filter, {{20, -30}, {5000, -30}, {5001, 0}, {24000, 0}});
    filter.SetParameterValue(FFTFilter::kFFTSize, FFTFilter::EncodeFFTSize(32));
    // 4800 Hz lies a fifth of the way from the bin at 4500 Hz (-30 dB) to the one at 6000 Hz.
    const double coarse = ReportedDecibels(filter, 4800.0);
    filter.SetParameterValue(FFTFilter::kFFTSize, FFTFilter::EncodeFFTSize(16384));
    const double fine = ReportedDecibels(filter, 4800.0);
    EXPECT_NEAR(fine, -30.0, 0.1);
    EXPECT_GT(coarse, -20.0);
    EXPECT_EQ(filter.GetBinGains().size(), 8193u);
}

TEST(FFTFilter, PointWritesWaitForTheBracketToClose) {
    FFTFilter filter(kRate, 1);
    const std::vector<float> before = filter.GetBinGains();
    filter.SetParameterQuietly(FFTFilter::kCurveWriteBracket, 1.0f);
    filter.SetParameterValue(FFTFilter::PointYIndex(0), 0.2f);
    filter.SetParameterValue(FFTFilter::PointYIndex(1), 0.2f);
    EXPECT_EQ(filter.GetBinGains(), before);
    filter.SetParameterQuietly(FFTFilter::kCurveWriteBracket, 0.0f);
    const std::vector<float> after = filter.GetBinGains();
    EXPECT_NE(after, before);
    EXPECT_NEAR(audiotest::Decibels(after[100]), filter.GetFaderTranslator().GetDecibelValue(0.2),
                0.01);

    // Values stored behind the filter's back are taken over at the editor's next sync.
    filter.StoreValue(FFTFilter::PointYIndex(0), 0.75f);
    filter.StoreValue(FFTFilter::PointYIndex(1), 0.75f);
    EXPECT_EQ(filter.GetBinGains(), after);
    filter.PrepareParameterSync();
    EXPECT_EQ(filter.GetBinGains(), before);
}

TEST(FFTFilter, EmptyAndSinglePointCurves) {
    FFTFilter filter(kRate, 1);
    filter.SetParameterQuietly(FFTFilter::kPointCount, 0.0f);
    for (float gain : filter.GetBinGains())
        ASSERT_EQ(gain, 1.0f);
    filter.SetParameterValue(FFTFilter::PointYIndex(0), 0.5f);
    filter.SetParameterQuietly(FFTFilter::kPointCount, 1.0f / 128.0f);
    const float expected =
        float(std::pow(10.0, filter.GetFaderTranslator().GetDecibelValue(0.5) / 20.0));
    for (float gain : filter.GetBinGains())
        ASSERT_FLOAT_EQ(gain, expected);
    // The bottom of the fader is silence.
    filter.SetParameterValue(FFTFilter::PointYIndex(0), 0.0f);
    const std::vector<float> out = RunThrough(filter, audiotest::Sine(1000.0, 1.0, kRate, 20000));
    EXPECT_EQ(audiotest::LargestStep(out), 0.0);
}

TEST(FFTFilter, BadParameterValuesGiveASaneFilter) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    FFTFilter filter(kRate, 1);
    SetPoints(filter, {{20, 0}, {500, -10}, {2000, 5}, {24000, 0}});
    // Unclamped values as an automation might store them, and NaN through the editor's path.
    filter.StoreValue(FFTFilter::kFFTSize, nan);
    filter.StoreValue(FFTFilter::kWindowType, 3.5f);
    filter.StoreValue(FFTFilter::kSplineCurves, nan);
    filter.StoreValue(FFTFilter::kScale, -inf);
    filter.StoreValue(FFTFilter::PointXIndex(1), nan);
    filter.StoreValue(FFTFilter::PointYIndex(2), 7.0f);
    filter.StoreValue(FFTFilter::PointXIndex(3), -2.0f); // sorts first, at 0 Hz
    filter.StoreValue(FFTFilter::kVisibleRangeLow, nan);
    filter.StoreValue(FFTFilter::kVisibleRangeHigh, -1.0f);
    filter.SetParameterValue(FFTFilter::kCurveWriteBracket, nan); // NaN is no open bracket
    filter.UpdateFromParameters();
    EXPECT_EQ(filter.GetFFTSize(), 4096u);
    EXPECT_EQ(filter.GetWindowType(), WindowType::kKaiser180);
    std::vector<float> response;
    ASSERT_EQ(filter.GetResponseCurve(0, 512, response), 1);
    for (float value : response) {
        ASSERT_GE(value, 0.0f);
        ASSERT_LE(value, 1.0f);
    }
    // The point at 2 kHz is held at the top, +15 dB.
    EXPECT_NEAR(ReportedDecibels(filter, 2000.0), 15.0, 0.05);

    filter.StoreValue(FFTFilter::kPointCount, nan);
    filter.UpdateFromParameters();
    EXPECT_EQ(filter.GetBinGains(), std::vector<float>(2049, 1.0f));
    filter.StoreValue(FFTFilter::kPointCount, 9.0f); // far past 128 points
    filter.UpdateFromParameters();
    std::vector<float> signal = audiotest::Sine(1000.0, 1.0, kRate, 20000);
    signal[5000] = nan;
    signal[5001] = inf;
    const std::vector<float> out = RunThrough(filter, signal);
    // A non-number in the input spoils the blocks it is in, then the filter recovers.
    for (std::size_t i = 5000 + 2 * 4096; i < out.size(); ++i)
        ASSERT_TRUE(std::isfinite(out[i])) << i;
}

TEST(FFTFilter, SizeAndWindowChangesCrossfadeWithoutClicks) {
    FFTFilter filter(kRate, 2);
    const double hz = 440.0;
    const double amplitude = 0.5;
    // The steepest a sine of that level moves from one sample to the next.
    const double slope = 2.0 * std::numbers::pi * hz / kRate * amplitude;
    std::vector<float> left, right;
    std::size_t at = 0;
    const auto play = [&](std::size_t length) {
        std::vector<float> in = audiotest::Sine(hz, amplitude, kRate, length + at);
        in.erase(in.begin(), in.begin() + std::ptrdiff_t(at));
        std::vector<float> other = in;
        for (std::size_t i = 0; i < length; i += 441) {
            const std::size_t n = std::min<std::size_t>(441, length - i);
            const float* inputs[] = {in.data() + i, other.data() + i};
            float* outputs[] = {in.data() + i, other.data() + i};
            filter.Process(inputs, outputs, 2, n);
        }
        left.insert(left.end(), in.begin(), in.end());
        right.insert(right.end(), other.begin(), other.end());
        at += length;
    };
    play(24000);
    filter.SetParameterValue(FFTFilter::kFFTSize, FFTFilter::EncodeFFTSize(512));
    play(24000);
    EXPECT_EQ(filter.GetLatencySamples(), 512u);
    filter.SetParameterValue(FFTFilter::kWindowType,
                             FFTFilter::EncodeWindowType(WindowType::kBlackmanHarris));
    play(2000);
    // A second change while the first is on its way replaces it.
    filter.SetParameterValue(FFTFilter::kFFTSize, FFTFilter::EncodeFFTSize(32768));
    play(48000 * 3);
    EXPECT_EQ(filter.GetLatencySamples(), 32768u);
    filter.SetParameterValue(FFTFilter::kFFTSize, FFTFilter::EncodeFFTSize(32));
    play(48000);
    EXPECT_EQ(filter.GetLatencySamples(), 32u);

    // From the moment the first block is full, no step is larger than the sine's own, but for
    // what the fade between two delays of it adds.
    EXPECT_LT(audiotest::LargestStep(left, 4096), slope * 1.1);
    EXPECT_EQ(left, right);
    EXPECT_NEAR(audiotest::AmplitudeAt(left, hz, kRate, left.size() - 24000, 24000), amplitude,
                1e-3);
}

TEST(FFTFilter, FeedsTheInstalledMeterWithItsInput) {
    FFTFilter filter(kRate, 1);
    SetPoints(filter, {{20, -60}, {24000, -60}}); // nearly silent output
    auto meter = qorcore::MakeIntrusive<qoraudiotoolkit::SpectrumMeterDSP>(kRate, 1);
    EXPECT_EQ(filter.SwapSpectrumMeter(meter), nullptr);
    const std::vector<float> out = RunThrough(filter, audiotest::Sine(1171.875, 1.0, kRate, 9600));
    qoraudiotoolkit::SpectrumFrame frame;
    ASSERT_TRUE(meter->ReadSpectrum(frame));
    EXPECT_NEAR(frame.data[100], 1.0f, 0.01f) << "the meter sees the input";
    EXPECT_LT(audiotest::AmplitudeAt(out, 1171.875, kRate, 8192, 1024), 0.0011);
    // A channel past the filter's own passes unchanged; a null input is silence.
    std::vector<float> extra(64, 0.25f), extraOut(64, 1.0f), mono(64, 1.0f);
    const float* inputs[] = {nullptr, extra.data(), nullptr};
    std::vector<float> third(64, 1.0f);
    float* outputs[] = {mono.data(), extraOut.data(), third.data()};
    filter.Process(inputs, outputs, 3, 64);
    EXPECT_EQ(extraOut, extra);
    EXPECT_EQ(third, std::vector<float>(64, 0.0f));
    // Swapping hands the old meter back; none installed stops the feed.
    EXPECT_EQ(filter.SwapSpectrumMeter(nullptr), meter);
    RunThrough(filter, std::vector<float>(4800, 0.0f));
    EXPECT_FALSE(meter->ReadSpectrum(frame));
}
