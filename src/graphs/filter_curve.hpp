#pragma once

#include <array>
#include <memory>
#include <vector>

namespace qoraudiofilterhost {
class AudioFilter;
}

namespace qoraudiofiltersui {

/// The response of a chain of filter sections on a logarithmic frequency grid, in dB, for the
/// effects that show an equaliser curve. The trigonometry is done once, when the grid is built;
/// an update is then only multiplications. Subclasses say where the coefficients come from.
class FilterCurve {
public:
    /// Biquad coefficients in the order b0, b1, b2, a0, a1, a2.
    using coefficients_t = std::array<double, 6>;

    /// A grid of `point_count` points at 2^((i + grid_offset) / points_per_octave) Hz, held
    /// within `min_frequency`..`max_frequency`.
    FilterCurve(std::shared_ptr<qoraudiofilterhost::AudioFilter> filter, float min_frequency,
                float max_frequency, int point_count, float points_per_octave, float grid_offset);
    virtual ~FilterCurve();
    FilterCurve(const FilterCurve&) = delete;
    FilterCurve& operator=(const FilterCurve&) = delete;

    /// Fills `out`, already sized to the grid and zeroed, with the response of one band.
    virtual void ComputeBandResponse(int band, std::vector<float>& out) = 0;
    /// Likewise for all bands together.
    virtual void ComputeTotalResponse(std::vector<float>& out) = 0;

    /// Works the grid out again from the filter's sample rate.
    void RebuildGrid();
    void SetSelectedBand(int band);
    int GetSelectedBand() const { return selectedBand_; }
    void Update();
    const std::vector<float>& GetTotalResponse() const { return totalResponse_; }
    const std::vector<float>& GetSelectedResponse() const { return selectedResponse_; }
    const std::shared_ptr<qoraudiofilterhost::AudioFilter>& GetFilter() const { return filter_; }
    /// The first grid point at or above `hz`, limited to 0..point count.
    int FrequencyToIndex(float hz) const;
    /// The frequency of grid point `index`, as the grid uses it.
    float IndexToFrequency(int index) const;
    std::size_t GetGridSize() const { return grid_.size(); }
    /// Adds one section's response in dB at each grid point to `out`.
    void AddSectionResponse(const coefficients_t& coefficients, std::vector<float>& out) const;

private:
    std::shared_ptr<qoraudiofilterhost::AudioFilter> filter_;
    std::vector<std::array<float, 4>> grid_; // cos(-w), cos(-2w), sin(-w), sin(-2w)
    int selectedBand_ = -1;
    float minFrequency_;
    float maxFrequency_;
    int pointCount_;
    float pointsPerOctave_;
    float gridOffset_;
    std::vector<float> totalResponse_;
    std::vector<float> selectedResponse_;
};

} // namespace qoraudiofiltersui
