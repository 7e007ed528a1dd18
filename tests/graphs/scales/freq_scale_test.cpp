#include "graphs/scales/freq_scale.hpp"

#include "platform/core/intrusive_ptr.hpp"

#include <gtest/gtest.h>

#include <cmath>

using namespace qoraudiofiltersui;
using range_t = qorcore::value_range<float>;

namespace {

// One strip of `size` pixels showing `low`..`high` Hz, configured in the documented order.
qorcore::IntrusivePtr<FreqScale> MakeScale(FreqScaleType type, float size, float low, float high,
                                           bool inverted = false) {
    qorcore::IntrusivePtr<FreqScale> scale(new FreqScale(inverted));
    scale->SetNumChannels(1);
    scale->SetTotalFreqRange(range_t(low, high));
    scale->SetVisibleFreqRange(range_t(low, high), false);
    scale->SetScaleType(type);
    scale->SetSize(size);
    return scale;
}

} // namespace

TEST(FreqScale, StripsAreSeparatedByOnePixelGaps) {
    FreqScale scale(false);
    scale.SetNumChannels(2);
    scale.SetSize(101);
    EXPECT_EQ(scale.GetChannelYRange(0), range_t(0, 49));
    EXPECT_EQ(scale.GetChannelYRange(1), range_t(51, 100));
    EXPECT_FALSE(scale.GetChannelYRange(2).is_set());
    EXPECT_EQ(scale.GetChannelFromY(20), 0u);
    EXPECT_EQ(scale.GetChannelFromY(50), 0u) << "a y in the gap gives channel 0";
    EXPECT_EQ(scale.GetChannelFromY(75), 1u);
    EXPECT_EQ(scale.GetChannelFromY(500), 0u);
    scale.SetSize(0);
    scale.SetSize(-5);
    EXPECT_EQ(scale.GetSize(), 101.0f) << "non-positive sizes are ignored";
}

TEST(FreqScale, EndsOfTheViewLandOnTheFirstAndLastRows) {
    auto scale = MakeScale(kLogScale, 500, 20, 20000);
    EXPECT_NEAR(scale->HzToRelPixelsFloat(20), -0.4999, 1e-9);
    EXPECT_NEAR(scale->HzToRelPixelsFloat(20000), 499.4999, 1e-9);
    EXPECT_EQ(scale->HzToRelPixels(20, false).value, 0.0f);
    EXPECT_EQ(scale->HzToRelPixels(20000, false).value, 499.0f);
    // The geometric middle is the middle of the span: 249.5 rounds half away from zero.
    EXPECT_EQ(scale->HzToRelPixels(std::sqrt(20.0 * 20000.0), false).value, 250.0f);
    const auto outside = scale->HzToRelPixels(40000, false);
    EXPECT_FALSE(outside.valid);
    EXPECT_GT(outside.value, 499.0f);
    const auto clamped = scale->HzToRelPixels(40000, true);
    EXPECT_EQ(clamped.value, 499.0f);
    EXPECT_FALSE(clamped.valid) << "the flag tells that the frequency lay outside";
    EXPECT_EQ(scale->HzToRelPixels(10, true).value, 0.0f);
    EXPECT_TRUE(scale->HzToRelPixels(1000, true).valid);
}

TEST(FreqScale, EveryWarpInvertsOverTheWholeSpan) {
    for (int type = kLinearScale; type <= kLogScale; ++type) {
        auto scale = MakeScale(static_cast<FreqScaleType>(type), 500, 20, 20000);
        for (double p = -0.4999; p <= 499.4999; p += 7.31) {
            const double hz = scale->RelPixelsToHz(p, false);
            ASSERT_NEAR(scale->HzToRelPixelsFloat(hz), p, 1e-6) << "type " << type << " at " << p;
        }
        EXPECT_NEAR(scale->RelPixelsToHz(-0.4999, false), 20.0, 1e-6) << type;
        EXPECT_NEAR(scale->RelPixelsToHz(499.4999, false), 20000.0, 1e-3) << type;
        // Just past the span; far past it the Bark warp has no inverse.
        EXPECT_EQ(scale->RelPixelsToHz(520, true), 20000.0) << type;
        EXPECT_EQ(scale->RelPixelsToHz(-50, true), 20.0) << type;
    }
}

TEST(FreqScale, WarpsPlaceKnownFrequencies) {
    // Mel: 1000 Hz maps to 1000 mel by construction of the constants.
    auto mel = MakeScale(kMelScale, 1001, 0, 4000);
    const double mel_4000 = 1127.01048 * std::log(4000.0 / 700 + 1);
    const double expected = 1000.0 / mel_4000 * (1000.4999 + 0.4999) - 0.4999;
    EXPECT_NEAR(mel->HzToRelPixelsFloat(1000), expected, 0.02);
    auto linear = MakeScale(kLinearScale, 101, 0, 1000);
    EXPECT_NEAR(linear->HzToRelPixelsFloat(500), 0.5 * 100.9998 - 0.4999, 1e-9);
    {
        auto scale = MakeScale(kLinearScale, 101, 0, 1000);
        scale->SetScaleType(static_cast<FreqScaleType>(6));
        EXPECT_EQ(scale->GetScaleType(), kLinearScale) << "types of 6 and above are ignored";
    }
}

TEST(FreqScale, ChannelPlacementAndInversion) {
    auto scale = MakeScale(kLinearScale, 101, 0, 1000);
    scale->SetNumChannels(2); // strips 0..49 and 51..100
    EXPECT_EQ(scale->HzToPixels(1, 0, false).value, 51.0f);
    EXPECT_EQ(scale->HzToPixels(5, 0, false).value, 1.0f) << "a missing strip starts at 1";
    EXPECT_NEAR(scale->HzToPixelsFloat(1, 1000).value, 51 + 49.4999, 1e-4);

    auto inverted = MakeScale(kLinearScale, 101, 0, 1000, true);
    EXPECT_EQ(inverted->HzToPixels(0, 0, false).value, 100.0f);
    EXPECT_EQ(inverted->HzToPixels(0, 1000, false).value, 0.0f);
    EXPECT_NEAR(inverted->PixelsToHz(0, 0, false), inverted->RelPixelsToHz(100, false), 1e-9);
}

TEST(FreqScale, WithoutChannelsNothingIsEverInside) {
    FreqScale scale(false);
    scale.SetTotalFreqRange(range_t(20, 20000));
    EXPECT_FALSE(scale.GetVisibleFreqRange().is_set()) << "a new total range unsets the view";
    EXPECT_EQ(scale.GetVisibleFreqRange().low, 1.0f);
    scale.SetVisibleFreqRange(range_t(100, 1000), false);
    scale.SetScaleType(kLinearScale);
    for (double hz : {100.0, 500.0, 1000.0, 5.0}) {
        EXPECT_FALSE(scale.HzToRelPixels(hz, false).valid) << hz;
        EXPECT_FALSE(scale.HzToRelPixels(hz, true).valid) << hz;
    }
    EXPECT_NEAR(scale.HzToRelPixelsFloat(1000) - scale.HzToRelPixelsFloat(100), -1 + 0.9998, 1e-9);
}

TEST(FreqScale, EqualWarpedEndsGiveTheSpanStart) {
    // Far above 1960 Hz the Bark warp saturates, so both ends warp to the same value.
    auto scale = MakeScale(kBarkScale, 101, 1e30f, 2e30f);
    EXPECT_EQ(scale->HzToRelPixelsFloat(1.5e30), -0.4999);
}

TEST(FreqScale, ViewRangesAreRefusedBelowOneHertz) {
    auto scale = MakeScale(kLinearScale, 101, 0, 1000);
    scale->SetVisibleFreqRange(range_t(100, 100.5f), false);
    EXPECT_EQ(scale->GetVisibleFreqRange(), range_t(0, 1000));
    scale->SetVisibleFreqRange(range_t(500, 400), false);
    EXPECT_EQ(scale->GetVisibleFreqRange().low, 500.0f) << "an inverted range is stored as it is";
    scale->SetDefaultVisibleFreqRange();
    EXPECT_EQ(scale->GetVisibleFreqRange(), range_t(0, 1000)) << "no default: the total range";
    scale->SetDefaultVisibleFreqRange(range_t(200, 300));
    EXPECT_EQ(scale->GetVisibleFreqRange(), range_t(0, 1000))
        << "storing a default does not apply it";
    scale->SetDefaultVisibleFreqRange();
    EXPECT_EQ(scale->GetVisibleFreqRange(), range_t(200, 300));
}

TEST(FreqScale, ZoomKeepsTheAnchorAndSnapsAtTheEnds) {
    auto scale = MakeScale(kLinearScale, 101, 100, 1000);
    scale->SetVisibleFreqRange(range_t(200, 400), false);
    scale->ZoomVisibleFreqRange(100, 300, false);
    EXPECT_EQ(scale->GetVisibleFreqRange(), range_t(250, 350));

    // Zooming out anchored near the top snaps to the total range's high end.
    scale->SetVisibleFreqRange(range_t(300, 400), false);
    auto top = MakeScale(kLinearScale, 101, 100, 400);
    top->SetVisibleFreqRange(range_t(300, 400), false);
    top->ZoomVisibleFreqRange(200, 350, false);
    EXPECT_EQ(top->GetVisibleFreqRange(), range_t(200, 400));

    // W * t >= A snaps to 0 Hz even though the total range starts at 100 Hz.
    scale->SetVisibleFreqRange(range_t(200, 400), false);
    scale->ZoomVisibleFreqRange(1000, 250, false);
    EXPECT_EQ(scale->GetVisibleFreqRange(), range_t(0, 1000));

    scale->SetVisibleFreqRange(range_t(200, 400), false);
    scale->ZoomVisibleFreqRange(0.5f, 300, false);
    EXPECT_EQ(scale->GetVisibleFreqRange(), range_t(200, 400)) << "below 1 Hz is refused";
}

TEST(FreqScale, PanMovesByPixelsAndStopsAtTheTotalRange) {
    auto scale = MakeScale(kLinearScale, 101, 0, 1000);
    scale->PanVisibleFreqRange(10, false);
    EXPECT_EQ(scale->GetVisibleFreqRange(), range_t(0, 1000)) << "a full view does not pan";

    // 100 Hz over a span of 100.9998 pixels: 10 pixels are 9.90 Hz.
    scale->SetVisibleFreqRange(range_t(100, 200), false);
    scale->PanVisibleFreqRange(10, false);
    EXPECT_NEAR(scale->GetVisibleFreqRange().low, 100 - 1000 / 100.9998, 1e-3);
    EXPECT_NEAR(scale->GetVisibleFreqRange().high, 200 - 1000 / 100.9998, 1e-3);

    // Past the low end the view stops at 0 Hz and keeps its pixel width.
    scale->SetVisibleFreqRange(range_t(5, 105), false);
    scale->PanVisibleFreqRange(10, false);
    EXPECT_EQ(scale->GetVisibleFreqRange().low, 0.0f);
    EXPECT_NEAR(scale->GetVisibleFreqRange().high, 100.0, 1e-3);

    scale->SetVisibleFreqRange(range_t(890, 995), false);
    scale->PanVisibleFreqRange(-10, false);
    EXPECT_EQ(scale->GetVisibleFreqRange().high, 1000.0f);
    EXPECT_NEAR(scale->GetVisibleFreqRange().low, 895.0, 1e-3);
}

TEST(FreqScale, LogPanKeepsPixelWidthNotHertzWidth) {
    auto scale = MakeScale(kLogScale, 301, 20, 20000);
    scale->SetVisibleFreqRange(range_t(30, 300), false);
    scale->PanVisibleFreqRange(100, false); // far past 20 Hz
    const range_t view = scale->GetVisibleFreqRange();
    EXPECT_EQ(view.low, 20.0f);
    EXPECT_NEAR(view.high, 200.0, 0.05) << "a decade stays a decade";
}
