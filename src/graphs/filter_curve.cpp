#include "graphs/filter_curve.hpp"

#include "platform/core/accelerate.hpp"
#include "platform/host/audio_filter.hpp"

#include <algorithm>
#include <cmath>

namespace qoraudiofiltersui {

FilterCurve::FilterCurve(std::shared_ptr<qoraudiofilterhost::AudioFilter> filter,
                         float min_frequency, float max_frequency, int point_count,
                         float points_per_octave, float grid_offset)
    : filter_(std::move(filter)), minFrequency_(min_frequency), maxFrequency_(max_frequency),
      pointCount_(point_count), pointsPerOctave_(points_per_octave), gridOffset_(grid_offset) {}

FilterCurve::~FilterCurve() = default;

float FilterCurve::IndexToFrequency(int index) const {
    const float hz = std::pow(2.0f, (static_cast<float>(index) + gridOffset_) / pointsPerOctave_);
    return std::clamp(hz, minFrequency_, std::max(minFrequency_, maxFrequency_));
}

void FilterCurve::RebuildGrid() {
    const float sample_rate = filter_ ? filter_->GetSampleRate() : 0.0f;
    grid_.clear();
    if (!(sample_rate > 0.0f) || pointCount_ < 2)
        return;
    grid_.reserve(static_cast<std::size_t>(pointCount_));
    for (int i = 0; i < pointCount_; ++i) {
        const float w = IndexToFrequency(i) * 6.2831855f / sample_rate;
        grid_.push_back({std::cos(-w), std::cos(-2.0f * w), std::sin(-w), std::sin(-2.0f * w)});
    }
}

int FilterCurve::FrequencyToIndex(float hz) const {
    const float index = std::ceil(std::log2(hz) * pointsPerOctave_ - gridOffset_);
    if (!(index > 0.0f))
        return 0;
    return index >= static_cast<float>(pointCount_) ? pointCount_ : static_cast<int>(index);
}

void FilterCurve::AddSectionResponse(const coefficients_t& c, std::vector<float>& out) const {
    const std::size_t count = std::min(grid_.size(), out.size());
    const auto [b0, b1, b2, a0, a1, a2] = c;
    std::vector<double> numerator_re(count), numerator_im(count);
    std::vector<double> denominator_re(count), denominator_im(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto& [c1, c2, s1, s2] = grid_[i];
        numerator_re[i] = b0 + c1 * b1 + c2 * b2;
        numerator_im[i] = s1 * b1 + s2 * b2;
        denominator_re[i] = a0 + c1 * a1 + c2 * a2;
        denominator_im[i] = s1 * a1 + s2 * a2;
    }
    qoraccelerate::Invert_Threshold_InPlace(denominator_re.data(), denominator_im.data(), count,
                                            1e-12);
    for (std::size_t i = 0; i < count; ++i) {
        const double re = numerator_re[i] * denominator_re[i] - numerator_im[i] * denominator_im[i];
        const double im = numerator_re[i] * denominator_im[i] + numerator_im[i] * denominator_re[i];
        out[i] += static_cast<float>(20.0 * std::log10(std::sqrt(re * re + im * im)));
    }
}

void FilterCurve::Update() {
    if (grid_.empty()) {
        totalResponse_.clear();
        selectedResponse_.clear();
        return;
    }
    totalResponse_.assign(grid_.size(), 0.0f);
    ComputeTotalResponse(totalResponse_);
    if (selectedBand_ < 0) {
        selectedResponse_.clear();
        return;
    }
    selectedResponse_.assign(grid_.size(), 0.0f);
    ComputeBandResponse(selectedBand_, selectedResponse_);
}

void FilterCurve::SetSelectedBand(int band) {
    if (band == selectedBand_)
        return;
    selectedBand_ = band;
    Update();
}

} // namespace qoraudiofiltersui
