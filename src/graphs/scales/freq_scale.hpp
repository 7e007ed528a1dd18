#pragma once

#include "platform/core/checked_value.hpp"
#include "platform/core/ref_counted_object.hpp"
#include "platform/core/value_range.hpp"

#include <cstddef>
#include <cstdint>

namespace qoraudiofiltersui {

enum FreqScaleType : std::int32_t {
    kLinearScale = 0,
    kMelScale = 1,
    kBarkScale = 2,
    kLogPlus100Scale = 3,
    kLogPlus20Scale = 4,
    kLogScale = 5,
};

/// Maps frequency in hertz to a pixel position along one axis of a graph and back, through one
/// of six warps. The axis may hold several channel strips separated by one-pixel gaps; every
/// strip maps like strip 0. Refused settings leave the state as it was, silently; callers learn
/// of off-view points through the flag of `checked_value`.
class FreqScale : public qorcore::RefCountedObject {
public:
    using range_t = qorcore::value_range<float>;

    explicit FreqScale(bool inverted);
    FreqScale(const FreqScale&) = delete;
    FreqScale& operator=(const FreqScale&) = delete;

    void SetSize(float size);
    void SetHeight(float size) { SetSize(size); }
    void SetWidth(float size) { SetSize(size); }
    float GetSize() const { return size_; }
    float GetHeight() const { return size_; }
    float GetWidth() const { return size_; }
    void SetNumChannels(std::size_t count) { numChannels_ = count; }
    std::size_t GetNumChannels() const { return numChannels_; }

    range_t GetChannelYRange(std::size_t channel) const;
    std::size_t GetChannelFromY(float y) const;

    void SetTotalFreqRange(const range_t& range);
    range_t GetTotalFreqRange() const { return totalRange_; }
    void SetVisibleFreqRange(const range_t& range, bool force);
    range_t GetVisibleFreqRange() const { return visibleRange_; }
    void SetDefaultVisibleFreqRange(const range_t& range);
    void SetDefaultVisibleFreqRange();
    range_t GetDefaultVisibleFreqRange() const { return defaultRange_; }

    void SetScaleType(FreqScaleType type);
    FreqScaleType GetScaleType() const { return scaleType_; }

    double HzToRelPixelsFloat(double hz) const;
    qorcore::checked_value<float> HzToRelPixels(double hz, bool clamp) const;
    qorcore::checked_value<float> HzToPixels(std::size_t channel, double hz, bool clamp) const;
    qorcore::checked_value<double> HzToPixelsFloat(std::size_t channel, double hz) const;
    double RelPixelsToHz(double pixels, bool clamp) const;
    double PixelsToHz(std::size_t channel, double pixels, bool clamp) const;
    float RelPixelsToHzF(double pixels, bool clamp) const {
        return static_cast<float>(RelPixelsToHz(pixels, clamp));
    }
    float PixelsToHzF(std::size_t channel, double pixels, bool clamp) const {
        return static_cast<float>(PixelsToHz(channel, pixels, clamp));
    }

    void ZoomVisibleFreqRange(float new_width_hz, float anchor_hz, bool force);
    void PanVisibleFreqRange(float delta_pixels, bool unused);

private:
    float StripTop(std::size_t channel) const;
    float StripBottom(std::size_t channel) const;
    /// The continuous pixel span of strip 0: -0.4999 to its length + 0.4999.
    void RelativeSpan(double& low, double& high) const;

    bool inverted_;
    FreqScaleType scaleType_ = kMelScale;
    std::uint64_t numChannels_ = 0;
    float size_ = 1.0f;
    range_t totalRange_;
    range_t visibleRange_;
    range_t defaultRange_;
    bool hasDefault_ = false;
};

} // namespace qoraudiofiltersui
