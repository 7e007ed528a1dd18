#include "graphs/scales/mag_scale.hpp"

#include "platform/core/intrusive_ptr.hpp"

#include <gtest/gtest.h>

#include <cmath>

using namespace qoraudiofiltersui;
using range_t = qorcore::value_range<float>;

namespace {

qorcore::IntrusivePtr<MagScale> MakeScale(MagScaleType type, float height) {
    qorcore::IntrusivePtr<MagScale> scale(new MagScale());
    scale->SetScaleType(type);
    scale->SetVisibleRange(scale->GetVisibleRange(), true); // derive the amplitude range
    scale->SetHeight(height);
    return scale;
}

void ExpectColor(const qorcore::ColorRGBA& color, float r, float g, float b) {
    EXPECT_NEAR(color.red * 255, r, 1e-3);
    EXPECT_NEAR(color.green * 255, g, 1e-3);
    EXPECT_NEAR(color.blue * 255, b, 1e-3);
    EXPECT_EQ(color.alpha, 1.0f);
}

} // namespace

TEST(MagScale, DecibelsAreLinearInPixelsWithLevelGrowingUpward) {
    auto scale = MakeScale(kDecibelMagScale, 121);
    scale->SetHeight(0);
    EXPECT_EQ(scale->GetHeight(), 121.0f) << "a height of 0 is ignored";
    EXPECT_NEAR(scale->DecibelsToRelPixels(0, false), -0.4999f, 1e-5);
    EXPECT_NEAR(scale->DecibelsToRelPixels(-120, false), 120.4999f, 1e-5);
    EXPECT_NEAR(scale->DecibelsToRelPixels(-60, false), 60.0f, 1e-4);
    EXPECT_NEAR(scale->RelPixelsToDecibels(60, false), -60.0f, 1e-4);
    EXPECT_FLOAT_EQ(scale->RelPixelsToDecibels(300, true), -120.0f);
    EXPECT_LT(scale->RelPixelsToDecibels(300, false), -120.0f);
    EXPECT_NEAR(scale->LinearToRelPixels(0.5f, false),
                scale->DecibelsToRelPixels(20 * std::log10(0.5f), false), 1e-3);
    EXPECT_TRUE(std::isfinite(scale->LinearToRelPixels(0.0f, false))) << "silence has no log";
    EXPECT_GT(scale->LinearToRelPixels(0.0f, false), 120.4999f);
}

TEST(MagScale, EveryTypeInvertsOverItsRows) {
    for (int type = kDecibelMagScale; type <= kFaderMagScale; ++type) {
        auto scale = MakeScale(static_cast<MagScaleType>(type), 201);
        for (float p = 0.0f; p <= 200.0f; p += 3.7f) {
            const float db = scale->RelPixelsToDecibels(p, false);
            ASSERT_NEAR(scale->DecibelsToRelPixels(db, false), p, 2e-3) << type << " at " << p;
            const float amplitude = scale->RelPixelsToLinear(p, false);
            ASSERT_NEAR(scale->LinearToRelPixels(amplitude, false), p, 2e-3) << type << " " << p;
        }
    }
}

TEST(MagScale, AmplitudeScalesPlaceSilenceOnTheBottomRow) {
    for (MagScaleType type : {kAmplitudeLog90MagScale, kAmplitudeLog120MagScale}) {
        auto scale = MakeScale(type, 121);
        EXPECT_EQ(scale->GetVisibleRange().low, -400.0f);
        EXPECT_EQ(scale->GetVisibleLinearRange(), range_t(0, 1));
        EXPECT_NEAR(scale->LinearToRelPixels(0.0f, false), 120.4999f, 1e-3);
        EXPECT_NEAR(scale->LinearToRelPixels(1.0f, false), -0.4999f, 1e-3);
        EXPECT_NEAR(scale->DecibelsToRelPixels(-400, false), 120.4999f, 1e-3);
        EXPECT_NEAR(scale->RelPixelsToLinear(500, true), 0.0f, 1e-6) << "clamped to the range";
    }
    // The floor differs: -90 dB sits half way between silence and full scale's log floor.
    EXPECT_LT(MakeScale(kAmplitudeLog120MagScale, 121)->DecibelsToRelPixels(-90, false),
              MakeScale(kAmplitudeLog90MagScale, 121)->DecibelsToRelPixels(-90, false));
}

TEST(MagScale, FaderTypeFollowsTheFaderLaw) {
    auto scale = MakeScale(kFaderMagScale, 121);
    EXPECT_EQ(scale->GetVisibleRange(), range_t(-300, 15));
    EXPECT_NEAR(scale->DecibelsToRelPixels(15, false), 0.0f, 1e-4);
    EXPECT_NEAR(scale->DecibelsToRelPixels(0, false), 30.0f, 1e-4);
    EXPECT_NEAR(scale->DecibelsToRelPixels(-400, false), 120.0f, 1e-2);
    EXPECT_NEAR(scale->RelPixelsToDecibels(30, false), 0.0f, 1e-3);
    EXPECT_EQ(scale->RelPixelsToDecibels(120, true), -300.0f) << "the bottom is clamped";
}

TEST(MagScale, TypeChangesResetTheirRanges) {
    MagScale scale;
    scale.SetScaleType(kAmplitudeLog90MagScale);
    EXPECT_EQ(scale.GetVisibleRange(), range_t(-400, 0));
    scale.SetScaleType(static_cast<MagScaleType>(4));
    EXPECT_EQ(scale.GetScaleType(), kAmplitudeLog90MagScale) << "4 and above are ignored";
    scale.SetScaleType(kDecibelMagScale);
    EXPECT_EQ(scale.GetVisibleRange(), range_t(-120, 0)) << "a low below -200 comes back to -120";
    scale.SetScaleType(kFaderMagScale);
    EXPECT_EQ(scale.GetVisibleRange(), range_t(-300, 15));
    EXPECT_NEAR(scale.GetVisibleLinearRange().high, std::pow(10.0f, 15 / 20.0f), 1e-4);
}

TEST(MagScale, VisibleRangeRulesDefaultsAndPanning) {
    auto scale = MakeScale(kDecibelMagScale, 121);
    scale->SetVisibleRange(range_t(-10, -9.5f), false);
    EXPECT_EQ(scale->GetVisibleRange(), range_t(-120, 0)) << "shorter than 1 dB is refused";
    scale->SetVisibleRange(range_t(-60, 0), false);
    EXPECT_NEAR(scale->GetVisibleLinearRange().low, 0.001f, 1e-6);
    scale->SetDefaultVisibleRange();
    EXPECT_EQ(scale->GetVisibleRange(), range_t(-120, 0));
    // 120 dB over a span of 121 rows: a drag of 10 rows moves the view by 9.917 dB.
    scale->PanVisibleRange(10);
    EXPECT_NEAR(scale->GetVisibleRange().low, -120 + 1200 / 121.0, 1e-3);
    EXPECT_NEAR(scale->GetVisibleRange().high, 1200 / 121.0, 1e-3);
    scale->SetVisibleRange(scale->GetTotalRange(), false);
    EXPECT_EQ(scale->GetVisibleRange(), range_t(-200, 100));
    scale->PanVisibleRange(10);
    EXPECT_EQ(scale->GetVisibleRange(), range_t(-200, 100)) << "the full view does not pan";
    scale->SetDefaultVisibleRange(range_t(-48, 6));
    scale->SetDefaultVisibleRange();
    EXPECT_EQ(scale->GetVisibleRange(), range_t(-48, 6));

    auto amplitude = MakeScale(kAmplitudeLog120MagScale, 121);
    amplitude->SetVisibleRange(range_t(-150, 0), false);
    EXPECT_EQ(amplitude->GetVisibleLinearRange().low, 0.0f) << "at or below -150: silence";
}

TEST(MagScale, HeatColoursInterpolateThirteenStops) {
    auto scale = MakeScale(kDecibelMagScale, 121);
    const struct {
        float db, r, g, b;
    } stops[] = {
        {-120, 0, 0, 0},     {-500, 0, 0, 0},          {0, 242, 255, 236},
        {20, 242, 255, 236}, {-45, 240.5f, 38, 38.5f}, {-105, 1, 3, 41.5f},
    };
    for (const auto& c : stops) {
        SCOPED_TRACE(c.db);
        ExpectColor(scale->GetColorForDecibels(c.db), c.r, c.g, c.b);
    }
    // The colour follows the position in the view, not the level itself.
    scale->SetVisibleRange(range_t(-60, 0), false);
    ExpectColor(scale->GetColorForDecibels(-30), 182, 3, 102);
    // Amplitude scales colour by the row the level lands on.
    ExpectColor(MakeScale(kAmplitudeLog90MagScale, 121)->GetColorForDecibels(0), 242, 255, 236);
}
