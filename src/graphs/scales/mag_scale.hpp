#pragma once

#include "platform/core/color_rgba.hpp"
#include "platform/core/fader_translator.hpp"
#include "platform/core/ref_counted_object.hpp"
#include "platform/core/value_range.hpp"

#include <cstdint>

namespace qoraudiofiltersui {

enum MagScaleType : std::int32_t {
    kDecibelMagScale = 0,
    kAmplitudeLog90MagScale = 1,
    kAmplitudeLog120MagScale = 2,
    kFaderMagScale = 3,
};

/// Maps a level, in decibels or as linear amplitude, to a pixel row and back. Pixels grow
/// downward while level grows upward: the visible low sits on the bottom row. The log
/// coefficients are kept precomputed because these calls run per pixel and per bin.
class MagScale : public qorcore::RefCountedObject {
public:
    using range_t = qorcore::value_range<float>;

    MagScale();
    MagScale(const MagScale&) = delete;
    MagScale& operator=(const MagScale&) = delete;

    virtual float PixelsToDecibels(float pixels, bool clamp) const;
    virtual float DecibelsToPixels(float decibels, bool clamp) const;
    virtual float RelPixelsToDecibels(float pixels, bool clamp) const;
    virtual float DecibelsToRelPixels(float decibels, bool clamp) const;
    virtual float RelPixelsToLinear(float pixels, bool clamp) const;
    virtual float LinearToRelPixels(float amplitude, bool clamp) const;

    void SetHeight(float height);
    float GetHeight() const { return height_; }
    void SetScaleType(MagScaleType type);
    MagScaleType GetScaleType() const { return scaleType_; }
    void SetVisibleRange(const range_t& range, bool force);
    range_t GetVisibleRange() const { return visibleRange_; }
    range_t GetVisibleLinearRange() const { return visibleLinearRange_; }
    range_t GetTotalRange() const { return totalRange_; }
    void SetDefaultVisibleRange(const range_t& range);
    void SetDefaultVisibleRange();
    range_t GetDefaultVisibleRange() const { return defaultRange_; }
    /// The rows of the axis: 0 to height - 1.
    range_t GetYRange() const { return range_t(0.0f, height_ - 1.0f); }
    void PanVisibleRange(float delta_pixels);
    /// A heat colour for a level, from black through purple and orange to white.
    qorcore::ColorRGBA GetColorForDecibels(float decibels) const;

private:
    float UnclampedDecibelsToRelPixels(float decibels, bool clamp) const;
    float Bottom() const { return (height_ - 1.0f) + 0.4999f; }
    /// Stores the view and derives the amplitude range and coefficients from it.
    void StoreVisibleRange(const range_t& range);
    void RefreshCoefficients();

    float height_ = 1.0f;
    MagScaleType scaleType_ = kDecibelMagScale;
    range_t visibleRange_{-120.0f, 0.0f};
    range_t visibleLinearRange_;
    range_t totalRange_{-200.0f, 100.0f};
    range_t defaultRange_;
    bool hasDefault_ = false;
    float linearOffset_ = 0.0f;
    float logGain_ = 0.0f;
    float inverseLogGain_ = 0.0f;
    float logOrigin_ = 0.0f;
    qorcore::FaderTranslator<float> fader_{0.75, 15.0, 15.0};
};

} // namespace qoraudiofiltersui
