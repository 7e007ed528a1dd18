#include "graphs/scales/spectrum_band_tables.hpp"

#include <gtest/gtest.h>

#include <cmath>

using qoraudiotoolkit::SpectrumBandTables;

TEST(SpectrumBandTables, BlockSizesDoubleFrom512) {
    EXPECT_EQ(SpectrumBandTables::GetFFTBlockSize(0), 512u);
    EXPECT_EQ(SpectrumBandTables::GetFFTBlockSize(4), 8192u);
    EXPECT_EQ(SpectrumBandTables::GetFFTBlockSize(6), 32768u);
    EXPECT_EQ(SpectrumBandTables::GetFFTBlockSize(40), 32768u) << "out of range stays in range";
}

TEST(SpectrumBandTables, ThirdOctavesFollowTheNominalSeries) {
    ASSERT_EQ(SpectrumBandTables::GetNumThirdOctaveBands(), 31u);
    EXPECT_EQ(SpectrumBandTables::GetThirdOctaveBand(0), 20.0f);
    EXPECT_EQ(SpectrumBandTables::GetThirdOctaveBand(17), 1000.0f);
    EXPECT_EQ(SpectrumBandTables::GetThirdOctaveBand(30), 20000.0f);
    // Each nominal centre is within 3% of the exact series 1000 * 2^(k/3).
    for (std::size_t i = 0; i < SpectrumBandTables::GetNumThirdOctaveBands(); ++i) {
        const double exact = 1000.0 * std::pow(2.0, (double(i) - 17.0) / 3.0);
        EXPECT_NEAR(SpectrumBandTables::GetThirdOctaveBand(i) / exact, 1.0, 0.03) << i;
    }
}

TEST(SpectrumBandTables, CriticalBandsRiseThroughTheAudibleRange) {
    ASSERT_EQ(SpectrumBandTables::GetNumCriticalBands(), 24u);
    EXPECT_EQ(SpectrumBandTables::GetCriticalBand(0), 50.0f);
    EXPECT_EQ(SpectrumBandTables::GetCriticalBand(8), 1000.0f);
    EXPECT_EQ(SpectrumBandTables::GetCriticalBand(23), 13500.0f);
    for (std::size_t i = 1; i < SpectrumBandTables::GetNumCriticalBands(); ++i)
        EXPECT_GT(SpectrumBandTables::GetCriticalBand(i),
                  SpectrumBandTables::GetCriticalBand(i - 1));
}
