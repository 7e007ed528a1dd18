#include "platform/core/fader_translator.hpp"

#include <gtest/gtest.h>

#include <cmath>

using qorcore::FaderTranslator;

TEST(FaderTranslator, ParametersFromPositionAndRanges) {
    const FaderTranslator<double> fader(0.75, 15, 15);
    EXPECT_DOUBLE_EQ(fader.GetZeroPosition(), double(0.75f));
    EXPECT_DOUBLE_EQ(fader.GetRange(), 15.0);
    EXPECT_NEAR(fader.GetExponent1(), 4.2591552, 1e-7);
    EXPECT_NEAR(fader.GetExponent2(), 4.2591552, 1e-7);

    // The zero position is limited to 0.51..0.9 before the mirror point is worked out.
    EXPECT_DOUBLE_EQ(FaderTranslator<double>(0.95, 15, 15).GetZeroPosition(), double(0.9f));
    EXPECT_DOUBLE_EQ(FaderTranslator<double>(0.2, 15, 15).GetZeroPosition(), double(0.51f));
    const double x = (2 * double(0.9f) - 1) / double(0.9f);
    EXPECT_NEAR(FaderTranslator<double>(0.95, 15, 15).GetExponent1(),
                std::log(std::pow(10.0, -15.0 / 20)) / std::log(x), 1e-12);
    EXPECT_DOUBLE_EQ(FaderTranslator<double>(0.75, 200, 15).GetRange(), 96.0);
    EXPECT_DOUBLE_EQ(FaderTranslator<double>(0.75, 1, 15).GetRange(), 3.0);
}

TEST(FaderTranslator, ZeroAtItsPositionRangeAtTheTopSilenceAtTheBottom) {
    const FaderTranslator<double> fader(0.75, 15, 15);
    EXPECT_NEAR(fader.GetNormalizedValue(0.0), 0.75, 1e-7);
    EXPECT_NEAR(fader.GetNormalizedValue(15.0), 1.0, 1e-12);
    EXPECT_NEAR(fader.GetDecibelValue(1.0), 15.0, 1e-9);
    EXPECT_NEAR(fader.GetDecibelValue(0.75), 0.0, 1e-6);
    // -15 dB sits at the mirror point 2p - 1 below zero.
    EXPECT_NEAR(fader.GetNormalizedValue(-15.0), 0.5, 1e-7);
    EXPECT_GT(fader.GetNormalizedValue(-300.0), 0.0);
    EXPECT_LT(fader.GetNormalizedValue(-300.0), 1e-3);
    EXPECT_LT(fader.GetNormalizedValue(-400.0), 1e-4);
    EXPECT_EQ(fader.GetNormalizedValue(40.0), 1.0) << "levels above the range stop at the top";
    EXPECT_EQ(fader.GetDecibelValue(0.0), -INFINITY);
}

TEST(FaderTranslator, MonotonicAndInverseFromMinus300ToPlus15) {
    const FaderTranslator<float> fader(0.75, 15, 15);
    const FaderTranslator<double> precise(0.75, 15, 15);
    float previous = -1.0f;
    for (int tenth = -3000; tenth <= 150; ++tenth) {
        const float db = tenth / 10.0f;
        const float position = fader.GetNormalizedValue(db);
        ASSERT_GT(position, previous) << db;
        previous = position;
        // Float positions near the bottom hold few digits; compare in the law's own precision.
        const float back = fader.GetDecibelValue(position);
        ASSERT_NEAR(back, db, std::max(1e-4f, std::fabs(db) * 2e-6f)) << db;
        ASSERT_NEAR(precise.GetDecibelValue(precise.GetNormalizedValue(db)), db, 1e-9) << db;
    }
    for (int i = 1; i <= 1000; ++i) {
        const double position = i / 1000.0;
        ASSERT_NEAR(precise.GetNormalizedValue(precise.GetDecibelValue(position)), position, 1e-12);
    }
}
