#include "audio/dsp/loudness_meter.hpp"

#include "audio_test_helpers.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

using qoraudiofilters::LoudnessMeter;
using Values = qoraudiofilters::LoudnessMeterValues;

namespace {

constexpr float kRate = 48000.0f;
constexpr float kFloor = LoudnessMeter::kFloor;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// One second of a sine that repeats seamlessly (whole periods).
std::vector<float> Second(double dbfs, double hz = 1000.0, double phase = 0.0) {
    return audiotest::Sine(hz, std::pow(10.0, dbfs / 20.0), kRate, std::size_t(kRate), phase);
}

// Feeds one second per channel (empty: silence) `seconds` times in 512-frame blocks, in place.
Values Feed(LoudnessMeter& meter, std::vector<std::vector<float>> channels, int seconds) {
    std::vector<float*> at(channels.size());
    for (auto& channel : channels)
        channel.resize(std::size_t(kRate), 0.0f);
    for (int s = 0; s < seconds; ++s) {
        for (std::size_t i = 0; i < std::size_t(kRate); i += 512) {
            for (std::size_t c = 0; c < channels.size(); ++c)
                at[c] = channels[c].data() + i;
            meter.Process(at.data(), at.data(), at.size(),
                          std::min(std::size_t(kRate) - i, std::size_t{512}));
        }
    }
    return meter.GetLoudnessMeterValues();
}

void ExpectCleared(const Values& v) {
    for (float value : {v.momentary, v.shortTerm, v.maxShortTerm, v.integrated, v.truePeak})
        EXPECT_EQ(value, kFloor);
    EXPECT_EQ(v.loudnessRange, 0.0f);
    EXPECT_FALSE(v.shortTermValid || v.integratedValid || v.rangeValid);
}

} // namespace

// BS.1770: a 1 kHz sine at the same level in both channels of a pair reads its level in dBFS as
// LUFS; weights are 1 at the front, 1.41 at the surrounds, 0 for the LFE; mono counts twice.
TEST(LoudnessMeter, SinesReadTheirLevelWeightedByTheirChannel) {
    const double one = -23.0 - 3.0103;
    const double surround = one + 10.0 * std::log10(1.41);
    struct Case {
        std::size_t channels, first, last; // channels first..last carry the sine
        double dbfs, lufs;
    };
    for (const Case& c :
         {Case{2, 0, 1, -23, -23}, Case{2, 0, 1, -33, -33}, Case{1, 0, 0, -23, -23},
          Case{2, 0, 0, -23, one}, Case{6, 2, 2, -23, one}, Case{6, 4, 4, -23, surround},
          Case{6, 5, 5, -23, surround}, Case{6, 3, 3, -23, kFloor}}) {
        SCOPED_TRACE(testing::Message()
                     << c.channels << " channels, " << c.first << ".." << c.last);
        LoudnessMeter meter(kRate, c.channels);
        std::vector<std::vector<float>> channels(c.channels);
        std::fill(channels.begin() + long(c.first), channels.begin() + long(c.last) + 1,
                  Second(c.dbfs));
        const Values early = Feed(meter, channels, 2);
        EXPECT_FALSE(early.shortTermValid);
        EXPECT_NEAR(early.momentary, c.lufs, 0.1);
        const Values v = Feed(meter, channels, 3);
        EXPECT_TRUE(v.shortTermValid);
        EXPECT_EQ(v.integratedValid, c.lufs > -70.0);
        for (float reading : {v.momentary, v.shortTerm, v.maxShortTerm, v.integrated})
            EXPECT_NEAR(reading, c.lufs, 0.1);
    }
}

// The first signals of the range's test set: stereo 1 kHz sines, 20 s at each level in turn.
TEST(LoudnessMeter, LoudnessRangeOfLevelSteps) {
    for (const auto [first, second, range] : {std::array{-20, -30, 10}, std::array{-20, -15, 5},
                                              std::array{-40, -20, 20}, std::array{-80, -80, 0}}) {
        SCOPED_TRACE(testing::Message() << first << " then " << second);
        LoudnessMeter meter(kRate, 2);
        const std::vector<float> a = Second(first), b = Second(second);
        EXPECT_FALSE(Feed(meter, {a, a}, 2).rangeValid) << "no 3 s block yet";
        Feed(meter, {a, a}, 18);
        const Values v = Feed(meter, {b, b}, 20);
        EXPECT_EQ(v.rangeValid, first > -70) << "blocks below the absolute gate do not count";
        EXPECT_NEAR(v.loudnessRange, range, 1.0);
    }
}

// A sine at a quarter of the rate, 45 degrees off its peaks, has samples at 0.707 of its
// amplitude: the true peak is 3 dB above the sample peak. The louder channel counts.
TEST(LoudnessMeter, TruePeakFindsWhatFallsBetweenSamples) {
    LoudnessMeter meter(kRate, 2);
    const std::vector<float> between = Second(-6.0, kRate / 4.0, std::numbers::pi / 4.0);
    const auto [low, high] = std::minmax_element(between.begin(), between.end());
    ASSERT_NEAR(audiotest::Decibels(std::max(-*low, *high)), -9.01, 0.01);
    EXPECT_NEAR(Feed(meter, {Second(-20.0), between}, 1).truePeak, -6.0, 0.3);
}

// Only what comes after a reset counts, the loud past neither in the maximum nor in the peak.
// Without a prepared spare the next reset waits for one, reading nothing meanwhile.
TEST(LoudnessMeter, ResetForgetsEveryHistory) {
    LoudnessMeter meter(kRate, 2);
    const std::vector<float> loud = Second(-10.0), quiet = Second(-33.0);
    Feed(meter, {loud, loud}, 5);
    meter.ResetOnProcessThread();
    ExpectCleared(meter.GetLoudnessMeterValues());
    meter.PrepareNextReset();
    const Values v = Feed(meter, {quiet, quiet}, 4);
    for (float reading : {v.momentary, v.shortTerm, v.maxShortTerm, v.integrated, v.truePeak})
        EXPECT_NEAR(reading, -33.0, 0.3);
    EXPECT_TRUE(v.rangeValid && v.loudnessRange < 0.5f);

    meter.ResetOnProcessThread();
    Feed(meter, {loud, loud}, 1);
    meter.ResetOnProcessThread();
    ExpectCleared(Feed(meter, {loud, loud}, 1));
    meter.PrepareNextReset();
    EXPECT_NEAR(Feed(meter, {quiet, quiet}, 1).momentary, -33.0, 0.1);
}

// The sound passes untouched whatever the parameters say; samples that are no numbers or
// infinite measure exactly as silence in their place would.
TEST(LoudnessMeter, PassesTheSoundAndMeasuresBadSamplesAsSilence) {
    LoudnessMeter meter(kRate, 2);
    for (int p = 0; p < LoudnessMeter::kParameterCount; ++p)
        meter.SetParameterValue(p, p % 2 == 0 ? 1.0f : 0.0f);
    const std::vector<float> sine = Second(-23.0);
    std::vector<float> spoilt = sine, silenced = sine;
    spoilt[100] = kNaN;
    spoilt[200] = std::numeric_limits<float>::infinity();
    std::fill(spoilt.begin() + 10000, spoilt.begin() + 20000, kNaN);
    silenced[100] = silenced[200] = 0.0f;
    std::fill(silenced.begin() + 10000, silenced.begin() + 20000, 0.0f);
    std::vector<float> left(512), right(512), extra(512, 0.25f);
    const float* in[] = {spoilt.data(), nullptr, sine.data()};
    float* out[] = {left.data(), right.data(), extra.data()};
    meter.Process(in, out, 3, 512);
    EXPECT_EQ(std::memcmp(left.data(), spoilt.data(), 512 * sizeof(float)), 0);
    EXPECT_EQ(right, std::vector<float>(512, 0.0f));
    EXPECT_TRUE(std::equal(extra.begin(), extra.end(), sine.begin()));

    LoudnessMeter clean(kRate, 2), spoiled(kRate, 2);
    const Values a = Feed(clean, {silenced, sine}, 4), b = Feed(spoiled, {spoilt, sine}, 4);
    EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0);
    EXPECT_NEAR(b.momentary, -23.0, 0.1);

    // A rate the measurement cannot take: the sound still passes, nothing is read.
    LoudnessMeter slow(8.0f, 2);
    EXPECT_FALSE(slow.IsMeasuring());
    ExpectCleared(Feed(slow, {sine, sine}, 1));
}
