#include "audio/dsp/parametric_eq.hpp"

#include "audio_test_helpers.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <numbers>
#include <thread>
#include <utility>

using qoraudiofilters::ParametricEQ;
using EQ = ParametricEQ;

namespace {

constexpr float kRate = 48000.0f;
constexpr double kNyquist = 24000.0;
constexpr double kButterworthCorner = -3.0103; // 20 log10(1 / sqrt(2))

struct Write {
    int index;
    float value;
};
using Setting = std::vector<Write>;

// Writes in plain units, normalised by the rules of the editor's sheet.
struct Plain {
    static Write Hz(int index, double hz) { return {index, float((hz - 20) / (kNyquist - 20))}; }
    static Write Db(int index, double dB) { return {index, float((dB + 48) / 96)}; }
    static Write Q(int index, double q) { return {index, float((q - 0.0001) / 9999.9999)}; }
    static Write Master(double dB) { return {EQ::kMasterGain, float((dB + 96) / 144)}; }
    static Write On(int index, bool on = true) { return {index, on ? 1.0f : 0.0f}; }
};

Setting Band(int b, double hz, double q, double dB) {
    return {Plain::Hz(EQ::BandFrequencyIndex(b), hz), Plain::Q(EQ::BandQIndex(b), q),
            Plain::Db(EQ::BandGainIndex(b), dB)};
}

Setting Shelf(bool low, double hz, double dB, bool secondOrder = true) {
    const int at = low ? EQ::kLowShelfFrequency : EQ::kHighShelfFrequency;
    return {Plain::Hz(at, hz), Plain::Db(at + 1, dB),
            Plain::On(low ? EQ::kLowShelfSecondOrder : EQ::kHighShelfSecondOrder, secondOrder)};
}

Setting Pass(bool high, double hz, int order) {
    const int at = high ? EQ::kHighPassEnable : EQ::kLowPassEnable;
    return {Plain::On(at), Plain::Hz(at + 1, hz), {at + 2, float(order) / 10.0f}};
}

Setting Join(std::initializer_list<Setting> parts) {
    Setting all;
    for (const Setting& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

void Apply(ParametricEQ& eq, const Setting& setting) {
    for (const Write& write : setting)
        eq.SetParameterValue(write.index, write.value);
    eq.Reset(); // start on the new chain, without a fade
}

std::vector<float> RunThrough(ParametricEQ& eq, std::vector<float> signal,
                              std::size_t block = 512) {
    for (std::size_t at = 0; at < signal.size(); at += block) {
        float* channel = signal.data() + at;
        eq.Process(&channel, &channel, 1, std::min(block, signal.size() - at));
    }
    return signal;
}

double Rms(const std::vector<float>& signal, std::size_t first, std::size_t count) {
    double sum = 0.0;
    for (std::size_t i = first; i < first + count; ++i)
        sum += double(signal[i]) * signal[i];
    return std::sqrt(sum / double(count));
}

// The gain of a sine through the running effect: RMS over whole periods once settled.
double MeasuredDecibels(ParametricEQ& eq, double hz) {
    eq.Reset();
    const std::size_t settle = 48000;
    const auto window = std::size_t(std::lround(std::max(1.0, std::floor(0.5 * hz)) * kRate / hz));
    const std::vector<float> in = audiotest::Sine(hz, 0.25, kRate, settle + window);
    const std::vector<float> out = RunThrough(eq, in);
    return audiotest::Decibels(Rms(out, settle, window) / Rms(in, settle, window));
}

// The frequency of value i of `size` in the custom data.
double GraphHz(int i, int size) {
    return 20.0 * std::pow(kNyquist / 20.0, double(i) / size);
}

} // namespace

TEST(ParametricEQ, ReportedResponseMatchesSinesMeasuredThroughTheEffect) {
    const Setting settings[] = {
        Join({Band(0, 100, 1, 9), Band(1, 400, 4, -12), Band(2, 1000, 0.7, 6), Band(3, 3000, 2, -6),
              Band(4, 8000, 8, 12)}),
        Join({Shelf(true, 200, 9), Shelf(false, 6000, -9)}),
        Join({Shelf(true, 300, -12, false), Shelf(false, 3000, 6, false)}),
        Join({Pass(true, 80, 3), Pass(false, 6000, 5)}),
        Join({Pass(true, 40, 8), Pass(false, 10000, 2)}),
        Join({{Plain::On(EQ::kConstantQ, false), Plain::Q(EQ::BandWidthIndex(1), 100),
               Plain::Q(EQ::BandWidthIndex(3), 1000)},
              Band(1, 500, 1, 10),
              Band(3, 2500, 1, -8)}),
        Join({{Plain::Master(-18), Plain::On(EQ::kUltraQuiet)}, Band(2, 150, 3, 15)}),
    };
    for (const Setting& setting : settings) {
        SCOPED_TRACE(testing::Message() << "setting " << &setting - settings);
        ParametricEQ eq(kRate, 1);
        Apply(eq, setting);
        std::vector<float> graph;
        ASSERT_EQ(eq.GetCustomFloatData(0, 12, graph), 12);
        for (int i = 0; i < 12; ++i) {
            SCOPED_TRACE(GraphHz(i, 12));
            EXPECT_NEAR(graph[std::size_t(i)], eq.GetResponseDecibels(GraphHz(i, 12)), 1e-4);
            EXPECT_NEAR(MeasuredDecibels(eq, GraphHz(i, 12)), graph[std::size_t(i)], 0.1);
        }
    }
}

TEST(ParametricEQ, PassesAreButterworthOfEveryOrder) {
    for (int n = 1; n <= 8; ++n) {
        SCOPED_TRACE(testing::Message() << "order " << n);
        ParametricEQ high(kRate, 1), low(kRate, 1);
        Apply(high, Pass(true, 1000, n));
        Apply(low, Pass(false, 1000, n));
        EXPECT_EQ(high.GetSections().size(), std::size_t(n + 1) / 2);
        for (ParametricEQ* eq : {&high, &low}) {
            EXPECT_NEAR(eq->GetResponseDecibels(1000.0), kButterworthCorner, 0.005);
            EXPECT_NEAR(MeasuredDecibels(*eq, 1000.0), kButterworthCorner, 0.1);
        }
        // 6n dB per octave far below the cutoff.
        EXPECT_NEAR(high.GetResponseDecibels(31.25) - high.GetResponseDecibels(15.625), 6.0206 * n,
                    0.01 * n);
    }
}

TEST(ParametricEQ, BandsAndShelvesReachTheirGainsAndHalfOfThem) {
    struct Peak {
        double hz, q, decibels;
        bool constantWidth; // q is then the width in Hz
    };
    for (const Peak& p : {Peak{1000, 2, 12, false}, Peak{200, 0.5, -18, false},
                          Peak{5000, 8, 6, false}, Peak{3000, 600, -9, true}}) {
        SCOPED_TRACE(p.hz);
        ParametricEQ eq(kRate, 1);
        Apply(eq, Join({{Plain::On(EQ::kConstantQ, !p.constantWidth),
                         Plain::Q(EQ::BandWidthIndex(1), p.q)},
                        Band(1, p.hz, p.q, p.decibels)}));
        const double q = p.constantWidth ? p.hz / p.q : p.q;
        EXPECT_NEAR(eq.GetResponseDecibels(p.hz), p.decibels, 0.01);
        // The half-gain edges of the prototype, through the bilinear transform's warping.
        const double warp = std::tan(std::numbers::pi * p.hz / kRate);
        for (double sign : {-1.0, 1.0}) {
            const double edge = std::sqrt(1.0 + 1.0 / (4 * q * q)) + sign / (2 * q);
            const double hz = kRate / std::numbers::pi * std::atan(edge * warp);
            EXPECT_NEAR(eq.GetResponseDecibels(hz), p.decibels / 2, 0.02);
        }
    }
    struct ShelfCase {
        bool low, secondOrder;
        double hz, decibels;
    };
    for (const ShelfCase& s :
         {ShelfCase{true, true, 250, 12}, ShelfCase{true, false, 1000, -15},
          ShelfCase{false, true, 8000, -10}, ShelfCase{false, false, 2000, 18}}) {
        SCOPED_TRACE(s.hz);
        ParametricEQ eq(kRate, 1);
        Apply(eq, Shelf(s.low, s.hz, s.decibels, s.secondOrder));
        EXPECT_NEAR(eq.GetResponseDecibels(s.hz), s.decibels / 2, 0.01);
        // The full gain where the transform puts 0 and infinity: DC and Nyquist.
        EXPECT_NEAR(eq.GetResponseDecibels(s.low ? 0.0 : kNyquist), s.decibels, 0.01);
        EXPECT_NEAR(eq.GetResponseDecibels(s.low ? kNyquist : 0.0), 0.0, 0.01);
    }
}

TEST(ParametricEQ, DisabledElementsChangeNothing) {
    const Setting others =
        Join({Pass(true, 30, 2), Pass(false, 18000, 2), Shelf(true, 100, 6), Band(0, 300, 2, 5)});
    const Setting disabled = {
        Plain::Db(EQ::BandGainIndex(2), 12), Plain::On(EQ::BandEnableIndex(2), false),
        Plain::Db(EQ::kHighShelfGain, -20), Plain::On(EQ::kHighShelfEnable, false)};
    std::vector<float> signal = audiotest::Sine(1000.0, 0.5, kRate, 9000);
    for (std::size_t i = 0; i < signal.size(); ++i)
        signal[i] += float(0.2 * std::sin(0.37 * double(i * i % 4099)));
    ParametricEQ fresh(kRate, 1), off(kRate, 1), with(kRate, 1), without(kRate, 1);
    Apply(off, disabled);
    Apply(with, Join({others, disabled}));
    Apply(without, others);
    EXPECT_EQ(RunThrough(fresh, signal), signal) << "the defaults are 0 dB everywhere";
    EXPECT_EQ(RunThrough(off, signal), signal);
    EXPECT_EQ(RunThrough(with, signal), RunThrough(without, signal));
}

TEST(ParametricEQ, UltraQuietAgreesAndIsQuieter) {
    // Each path against the same sections run in long double.
    const auto error = [](ParametricEQ& eq, const std::vector<float>& in) {
        std::vector<long double> x(in.begin(), in.end());
        for (const auto& s : eq.GetSections()) {
            long double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
            for (long double& v : x) {
                const long double y = s.b0 * v + s.b1 * x1 + s.b2 * x2 - s.a1 * y1 - s.a2 * y2;
                x2 = std::exchange(x1, v);
                y2 = std::exchange(y1, y);
                v = y;
            }
        }
        const std::vector<float> out = RunThrough(eq, in);
        double sum = 0.0, reference = 0.0;
        for (std::size_t i = 0; i < out.size(); ++i) {
            const long double exact = x[i] * eq.GetOutputGain();
            sum += double((out[i] - exact) * (out[i] - exact));
            reference += double(exact * exact);
        }
        return std::sqrt(sum / reference);
    };
    std::vector<float> in = audiotest::Sine(31.0, 0.3, kRate, 96000);
    const std::vector<float> high = audiotest::Sine(1000.0, 0.3, kRate, 96000);
    for (std::size_t i = 0; i < in.size(); ++i)
        in[i] += high[i];
    const Setting deep = Join({Pass(true, 25, 4), Band(0, 30, 40, 12)});
    ParametricEQ single(kRate, 1), precise(kRate, 1);
    Apply(single, deep);
    Apply(precise, Join({deep, {Plain::On(EQ::kUltraQuiet)}}));
    const double preciseError = error(precise, in);
    EXPECT_LT(preciseError, 1e-7) << "no more than the output's rounding to float";
    EXPECT_GT(error(single, in), 30 * preciseError);

    // On a setting of ordinary frequencies the two hardly differ: float coefficients move a
    // corner at 30 Hz by a few thousandths of a dB.
    const Setting usual =
        Join({Pass(true, 30, 2), Shelf(true, 100, -4), Band(1, 250, 1.5, 6), Band(3, 3000, 3, -9)});
    ParametricEQ usualSingle(kRate, 1), usualPrecise(kRate, 1);
    Apply(usualSingle, usual);
    Apply(usualPrecise, Join({usual, {Plain::On(EQ::kUltraQuiet)}}));
    for (int i = 0; i < 12; ++i)
        EXPECT_NEAR(usualSingle.GetResponseDecibels(GraphHz(i, 12)),
                    usualPrecise.GetResponseDecibels(GraphHz(i, 12)), 0.01);
    const std::vector<float> a = RunThrough(usualSingle, in);
    const std::vector<float> b = RunThrough(usualPrecise, in);
    double difference = 0.0, power = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        difference += double(a[i] - b[i]) * double(a[i] - b[i]);
        power += double(b[i]) * b[i];
    }
    EXPECT_LT(std::sqrt(difference / power), 1e-3);

    // Switched mid-signal, the double chain goes on from the float chain's state, so the
    // signal goes on as it was.
    usualSingle.Reset();
    std::vector<float> switched = RunThrough(usualSingle, {in.begin(), in.begin() + 30006});
    usualSingle.SetParameterValue(EQ::kUltraQuiet, 1.0f);
    const std::vector<float> rest = RunThrough(usualSingle, {in.begin() + 30006, in.end()});
    switched.insert(switched.end(), rest.begin(), rest.end());
    usualPrecise.Reset();
    const std::vector<float> steady = RunThrough(usualPrecise, in);
    double apart = 0.0;
    for (std::size_t i = 0; i < steady.size(); ++i)
        apart = std::max(apart, double(std::abs(switched[i] - steady[i])));
    EXPECT_LT(apart, 1e-3);
}

TEST(ParametricEQ, ChangesWrittenMidSignalDoNotClick) {
    struct Change {
        const char* what;
        Setting before, after;
    };
    const Change changes[] = {
        {"master gain", {Plain::Master(-24)}, {Plain::Master(0)}},
        {"band gain", Band(2, 1000, 2, 0), {Plain::Db(EQ::BandGainIndex(2), 24)}},
        {"band enable",
         Join({Band(2, 1000, 2, 24), {Plain::On(EQ::BandEnableIndex(2), false)}}),
         {Plain::On(EQ::BandEnableIndex(2))}},
        {"Ultra-Quiet", Band(2, 900, 4, 12), {Plain::On(EQ::kUltraQuiet)}},
        {"pass order", Pass(false, 1500, 2), {{EQ::kLowPassSlope, 0.8f}}},
    };
    const double amplitude = 0.05;
    for (const Change& change : changes) {
        SCOPED_TRACE(change.what);
        ParametricEQ eq(kRate, 1);
        Apply(eq, change.before);
        const double gainBefore = eq.GetResponseDecibels(1000.0);
        // Written at a crest of the sine, where a jump in level would show most.
        std::vector<float> signal = audiotest::Sine(1000.0, amplitude, kRate, 24000);
        std::vector<float> out = RunThrough(eq, {signal.begin(), signal.begin() + 12012}, 100);
        for (const Write& write : change.after)
            eq.SetParameterValue(write.index, write.value);
        const double louder = std::max(gainBefore, eq.GetResponseDecibels(1000.0));
        const std::vector<float> rest = RunThrough(eq, {signal.begin() + 12012, signal.end()}, 100);
        out.insert(out.end(), rest.begin(), rest.end());
        const double sineStep = 2.0 * amplitude * std::sin(std::numbers::pi * 1000.0 / kRate) *
                                std::pow(10.0, louder / 20.0);
        EXPECT_LT(audiotest::LargestStep(out, 2400), 1.1 * sineStep);
    }
}

TEST(ParametricEQ, ValuesThatAreNoNumbersReadAsDefaultsAndStrayOnesAsLimits) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    ParametricEQ eq(kRate, 1);
    Apply(eq, Join({Band(0, 80, 3, -6),
                    Band(3, 4000, 1, 9),
                    Pass(true, 50, 3),
                    Shelf(true, 150, 4),
                    Shelf(false, 9000, -5),
                    {Plain::On(EQ::kConstantQ, false), Plain::Master(-3)}}));
    const auto response = [&eq] {
        std::vector<float> out;
        eq.GetCustomFloatData(0, 64, out);
        return out;
    };
    for (int i = 0; i < EQ::kParameterCount; ++i) {
        SCOPED_TRACE(eq.GetDescriptor(i).name);
        const float value = eq.GetParameterValue(i);
        eq.SetParameterValue(i, nan);
        const std::vector<float> withNaN = response();
        eq.SetParameterValue(i, eq.GetDescriptor(i).defaultValue);
        EXPECT_EQ(withNaN, response());
        eq.StoreValue(i, 7.0f);
        eq.UpdateFromParameters();
        const std::vector<float> stray = response();
        eq.SetParameterValue(i, 1.0f);
        EXPECT_EQ(stray, response());
        eq.SetParameterValue(i, value);
    }
    std::vector<float> signal = audiotest::Sine(440.0, 0.5, kRate, 4800);
    signal[1000] = nan; // spoils its chunk of the output, no more
    signal[1001] = std::numeric_limits<float>::infinity();
    std::vector<float> out = RunThrough(eq, signal);
    for (std::size_t i = 1000 + 512; i < out.size(); ++i)
        ASSERT_TRUE(std::isfinite(out[i])) << i;
    for (int i = 0; i < EQ::kParameterCount; ++i)
        eq.SetParameterValue(i, nan);
    out = RunThrough(eq, audiotest::Sine(440.0, 0.5, kRate, 4800));
    for (float sample : out)
        ASSERT_TRUE(std::isfinite(sample));
}

TEST(ParametricEQ, FeedsItsMeterWithTheInputOnlyWhileActive) {
    ParametricEQ eq(kRate, 1);
    Apply(eq, {Plain::Master(-96)});
    const auto& meter = eq.GetSpectrumMeter();
    ASSERT_TRUE(meter);
    qoraudiotoolkit::SpectrumFrame frame;
    const std::vector<float> sine = audiotest::Sine(1171.875, 1.0, kRate, 9600); // bin 100
    RunThrough(eq, sine);
    EXPECT_FALSE(meter->ReadSpectrum(frame));
    eq.SetMeterActive(true);
    EXPECT_TRUE(eq.IsMeterActive());
    const std::vector<float> out = RunThrough(eq, sine);
    ASSERT_TRUE(meter->ReadSpectrum(frame));
    EXPECT_NEAR(frame.data[100], 1.0f, 0.01f) << "the input, not the output";
    EXPECT_LT(Rms(out, 4800, 4800), 1e-4);
    eq.SetMeterActive(false);
    RunThrough(eq, sine);
    EXPECT_FALSE(meter->ReadSpectrum(frame));
}

TEST(ParametricEQ, CustomDataSizesAndIndexes) {
    ParametricEQ eq(kRate, 2);
    Apply(eq, Band(0, 700, 2, 8));
    std::vector<float> out{42.0f};
    EXPECT_EQ(eq.GetCustomFloatData(0, 0, out), 0);
    EXPECT_TRUE(out.empty());
    EXPECT_EQ(eq.GetCustomFloatData(0, 1, out), 1);
    EXPECT_EQ(out, std::vector<float>{float(eq.GetResponseDecibels(20.0))});
    ASSERT_EQ(eq.GetCustomFloatData(0, 570, out), 570);
    for (int i : {0, 99, 480, 569})
        EXPECT_EQ(out[std::size_t(i)], float(eq.GetResponseDecibels(GraphHz(i, 570))));
    EXPECT_NEAR(out[286], 8.0f, 0.05f) << "701 Hz, by the band's peak";
    eq.SetParameterQuietly(EQ::BandGainIndex(0), Plain::Db(0, -8).value); // heard, not told
    EXPECT_NEAR(eq.GetResponseDecibels(700.0), -8.0, 0.01);
    out = {42.0f};
    const std::pair<int, int> refused[] = {{1, 10}, {-1, 10}, {0, -1}, {0, 65537}};
    for (const auto& [index, size] : refused)
        EXPECT_EQ(eq.GetCustomFloatData(index, size, out), 0);
    EXPECT_EQ(out, std::vector<float>{42.0f});
}

TEST(ParametricEQ, ParameterWritesWhileAnotherThreadProcesses) {
    ParametricEQ eq(kRate, 2);
    std::atomic<bool> stop{false};
    std::atomic<bool> finite{true};
    std::atomic<int> blocks{0};
    std::thread audio([&] {
        const std::vector<float> sine = audiotest::Sine(300.0, 0.5, kRate, 256);
        std::vector<float> left(sine.size()), right(sine.size());
        while (!stop.load() || blocks.load() < 100) {
            const float* inputs[] = {sine.data(), sine.data()};
            float* outputs[] = {left.data(), right.data()};
            eq.Process(inputs, outputs, 2, sine.size());
            for (std::size_t i = 0; i < sine.size(); ++i)
                if (!std::isfinite(left[i]) || !std::isfinite(right[i]))
                    finite = false;
            ++blocks;
        }
    });
    std::uint32_t x = 1;
    std::vector<float> graph;
    for (int i = 0; i < 3000; ++i) {
        x = x * 1664525u + 1013904223u;
        const int index = int(x >> 8) % EQ::kParameterCount;
        const float value = float(x >> 16 & 0xff) / 255.0f;
        if (i % 2 == 0)
            eq.SetParameterValue(index, value);
        else
            eq.SetParameterQuietly(index, value);
        eq.SetMeterActive(i % 7 < 3);
        if (i % 50 == 0)
            eq.GetCustomFloatData(0, 256, graph);
    }
    stop = true;
    audio.join();
    EXPECT_TRUE(finite.load());
}
