#include "graphs/filter_curve.hpp"

#include "platform/host/parameter_store_filter.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using namespace qoraudiofiltersui;
using coefficients_t = FilterCurve::coefficients_t;

namespace {

// From filter_curve_expected.py, which computes them independently: a peaking section at 1 kHz
// (+6 dB, Q 1) and a low shelf at 200 Hz (-4 dB, slope 1), at 48 kHz.
const coefficients_t peak = {1.0921865735337346, -1.9828897227476208, 0.90781342646626539,
                             1.0462027337669495, -1.9828897227476208, 0.95379726623305039};
const coefficients_t shelf = {1.6148084943592751, -3.1763361193557422, 1.5623924782902359,
                              1.6217208753329184, -3.176083195953741,  1.5557330207185935};

struct expected_t {
    int index;
    float hz;
    float peak_db;
    float shelf_db;
};
const expected_t expected[] = {
    {0, 20, 0.0025888442f, -3.99958585f},
    {30, 113.137085f, 0.0836123647f, -3.61880235f},
    {53, 427.148753f, 1.32805982f, -0.188933348f},
    {68, 1015.93667f, 5.99348147f, -0.0061769682f},
    {80, 2031.87335f, 1.80114158f, -0.00037985f},
    {100, 6450.79578f, 0.140328321f, -2.99e-06f},
    {120, 20000, 0.00200180184f, 0.0f},
};

/// Two bands, a peak and a shelf, on a grid of 12 points per octave from 20 Hz to 20 kHz.
class TwoBandCurve : public FilterCurve {
public:
    explicit TwoBandCurve(std::shared_ptr<qoraudiofilterhost::AudioFilter> filter,
                          int point_count = 121)
        : FilterCurve(std::move(filter), 20.0f, 20000.0f, point_count, 12.0f,
                      std::log2(20.0f) * 12.0f) {}

    void ComputeBandResponse(int band, std::vector<float>& out) override {
        ++band_calls;
        AddSectionResponse(band == 0 ? peak : shelf, out);
    }
    void ComputeTotalResponse(std::vector<float>& out) override {
        AddSectionResponse(peak, out);
        AddSectionResponse(shelf, out);
    }
    int band_calls = 0;
};

std::shared_ptr<qoraudiofilterhost::ParameterStoreFilter> MakeFilter() {
    return std::make_shared<qoraudiofilterhost::ParameterStoreFilter>(
        std::vector<qoraudiofilterhost::ParameterDescriptor>{});
}

} // namespace

TEST(FilterCurve, SectionsMatchIndependentlyComputedResponses) {
    TwoBandCurve curve(MakeFilter());
    curve.RebuildGrid();
    ASSERT_EQ(curve.GetGridSize(), 121u);
    curve.SetSelectedBand(0);
    const std::vector<float>& total = curve.GetTotalResponse();
    const std::vector<float>& selected = curve.GetSelectedResponse();
    ASSERT_EQ(total.size(), 121u);
    for (const expected_t& e : expected) {
        EXPECT_NEAR(curve.IndexToFrequency(e.index), e.hz, e.hz * 1e-5f) << e.index;
        EXPECT_NEAR(selected[e.index], e.peak_db, 2e-3) << "peak at " << e.hz;
        EXPECT_NEAR(total[e.index], e.peak_db + e.shelf_db, 2e-3) << "both at " << e.hz;
    }
    curve.SetSelectedBand(1);
    for (const expected_t& e : expected)
        EXPECT_NEAR(curve.GetSelectedResponse()[e.index], e.shelf_db, 2e-3) << "shelf at " << e.hz;
}

TEST(FilterCurve, UnitySectionAddsNothingAndAVanishingDenominatorStaysFinite) {
    TwoBandCurve curve(MakeFilter());
    curve.RebuildGrid();
    std::vector<float> unity(curve.GetGridSize(), 0.0f), vanishing = unity;
    curve.AddSectionResponse({0.7, -0.2, 0.1, 0.7, -0.2, 0.1}, unity);
    curve.AddSectionResponse({1, 0, 0, 0, 0, 0}, vanishing);
    for (std::size_t i = 0; i != unity.size(); ++i) {
        ASSERT_NEAR(unity[i], 0.0f, 1e-5f) << i;
        ASSERT_TRUE(std::isfinite(vanishing[i])) << i;
    }
    EXPECT_NEAR(vanishing[0], 240.0f, 1e-3f) << "1 / 1e-12 is 240 dB";
}

TEST(FilterCurve, GridEdgesAndSelection) {
    TwoBandCurve no_filter(nullptr);
    no_filter.RebuildGrid();
    no_filter.Update();
    EXPECT_EQ(no_filter.GetGridSize(), 0u) << "no sample rate, no grid";
    EXPECT_TRUE(no_filter.GetTotalResponse().empty() && no_filter.GetSelectedResponse().empty());
    TwoBandCurve one_point(MakeFilter(), 1);
    one_point.RebuildGrid();
    EXPECT_EQ(one_point.GetGridSize(), 0u) << "a single point makes no grid";

    // Past the top the grid holds 20 kHz: the tail of the curve is flat.
    TwoBandCurve long_grid(MakeFilter(), 130);
    long_grid.RebuildGrid();
    long_grid.Update();
    EXPECT_EQ(long_grid.IndexToFrequency(125), 20000.0f);
    EXPECT_EQ(long_grid.GetTotalResponse()[125], long_grid.GetTotalResponse()[129]);

    TwoBandCurve curve(MakeFilter());
    for (const auto& [hz, index] :
         {std::pair{20.0f, 0}, {40.0f, 12}, {41.0f, 13}, {5.0f, 0}, {96000.0f, 121}})
        EXPECT_EQ(curve.FrequencyToIndex(hz), index) << hz;
    curve.RebuildGrid();
    curve.SetSelectedBand(1);
    EXPECT_EQ(curve.band_calls, 1);
    curve.SetSelectedBand(1);
    EXPECT_EQ(curve.band_calls, 1) << "the same band does not recompute";
    curve.SetSelectedBand(-1);
    EXPECT_TRUE(curve.GetSelectedResponse().empty());
}
