#include "graphs/scales/mag_scale.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace qoraudiofiltersui {

namespace {

// Decibel conversions always use these float constants: ln 10 / 20 and 20 / ln 10.
constexpr float db_to_exponent = 0.115129255f;
constexpr float log_to_db = 8.685889f;
constexpr float top_row = -0.4999f;
constexpr float silence_db = -400.0f;
constexpr float silence_amplitude = 1e-20f;

float LimitTo(float value, const qorcore::value_range<float>& range) {
    if (value < range.low)
        return range.low;
    if (value > range.high)
        return range.high;
    return value;
}

float OffsetForType(MagScaleType type) {
    switch (type) {
    case kAmplitudeLog90MagScale: return static_cast<float>(std::exp(-10.361633) * 0.5);
    case kAmplitudeLog120MagScale: return static_cast<float>(std::exp(-13.815511) * 0.5);
    default: return 0.0f;
    }
}

struct heat_stop_t {
    float decibels;
    float red, green, blue;
};

constexpr std::array<heat_stop_t, 13> heat_stops{{{-120, 0, 0, 0},
                                                  {-110, 1, 3, 30},
                                                  {-100, 1, 3, 53},
                                                  {-90, 28, 2, 78},
                                                  {-80, 80, 2, 110},
                                                  {-70, 144, 3, 133},
                                                  {-60, 182, 3, 102},
                                                  {-50, 229, 3, 46},
                                                  {-40, 252, 73, 31},
                                                  {-30, 253, 174, 81},
                                                  {-20, 254, 245, 140},
                                                  {-10, 239, 254, 203},
                                                  {0, 242, 255, 236}}};

} // namespace

MagScale::MagScale() = default;

void MagScale::SetHeight(float height) {
    if (!(height > 0.0f))
        return;
    height_ = height;
    RefreshCoefficients();
}

void MagScale::RefreshCoefficients() {
    const range_t& linear = visibleLinearRange_;
    if (!(linear.high >= linear.low))
        return;
    const float bottom = Bottom();
    logGain_ =
        (top_row - bottom) / std::log((linear.high + linearOffset_) / (linear.low + linearOffset_));
    logOrigin_ = bottom - std::log(linear.low + linearOffset_) * logGain_;
    inverseLogGain_ = 1.0f / logGain_;
}

float MagScale::PixelsToDecibels(float pixels, bool clamp) const {
    return RelPixelsToDecibels(pixels - 0.0f, clamp);
}

float MagScale::DecibelsToPixels(float decibels, bool clamp) const {
    return DecibelsToRelPixels(decibels, clamp) + 0.0f;
}

float MagScale::DecibelsToRelPixels(float decibels, bool clamp) const {
    const float pixels = UnclampedDecibelsToRelPixels(decibels, clamp);
    // Clamping keeps a level beyond the view, silence included, on the first or last row.
    if (!clamp)
        return pixels;
    if (std::isnan(pixels))
        return Bottom();
    return std::clamp(pixels, std::min(top_row, Bottom()), std::max(top_row, Bottom()));
}

float MagScale::UnclampedDecibelsToRelPixels(float decibels, bool clamp) const {
    switch (scaleType_) {
    case kDecibelMagScale: {
        const float bottom = Bottom();
        if (visibleRange_.low == visibleRange_.high)
            return bottom;
        const float t = (decibels - visibleRange_.low) / (visibleRange_.high - visibleRange_.low);
        return t * (top_row - bottom) + bottom;
    }
    case kAmplitudeLog90MagScale:
    case kAmplitudeLog120MagScale:
        return LinearToRelPixels(std::exp(decibels * db_to_exponent), clamp);
    case kFaderMagScale: return (1.0f - fader_.GetNormalizedValue(decibels)) * (height_ - 1.0f);
    }
    return 0.0f;
}

float MagScale::RelPixelsToDecibels(float pixels, bool clamp) const {
    switch (scaleType_) {
    case kDecibelMagScale: {
        const float bottom = Bottom();
        if (bottom == top_row)
            return visibleRange_.low;
        const float t = (pixels - bottom) / (top_row - bottom);
        const float result = t * (visibleRange_.high - visibleRange_.low) + visibleRange_.low;
        return clamp ? LimitTo(result, visibleRange_) : result;
    }
    case kAmplitudeLog90MagScale:
    case kAmplitudeLog120MagScale: {
        const float amplitude = RelPixelsToLinear(pixels, clamp);
        return amplitude < silence_amplitude ? silence_db : std::log(amplitude) * log_to_db;
    }
    case kFaderMagScale: {
        const float result = fader_.GetDecibelValue(1.0f - pixels / (height_ - 1.0f));
        return clamp ? LimitTo(result, visibleRange_) : result;
    }
    }
    return 0.0f;
}

float MagScale::LinearToRelPixels(float amplitude, bool clamp) const {
    switch (scaleType_) {
    case kAmplitudeLog90MagScale:
    case kAmplitudeLog120MagScale:
        return std::log(amplitude + linearOffset_) * logGain_ + logOrigin_;
    case kDecibelMagScale:
    case kFaderMagScale: {
        // Silence maps to the floor without taking the logarithm of 0.
        const float decibels =
            amplitude < silence_amplitude ? silence_db : std::log(amplitude) * log_to_db;
        return DecibelsToRelPixels(decibels, clamp);
    }
    }
    return 0.0f;
}

float MagScale::RelPixelsToLinear(float pixels, bool clamp) const {
    switch (scaleType_) {
    case kAmplitudeLog90MagScale:
    case kAmplitudeLog120MagScale: {
        const float result = std::exp((pixels - logOrigin_) * inverseLogGain_) - linearOffset_;
        return clamp ? LimitTo(result, visibleLinearRange_) : result;
    }
    case kDecibelMagScale:
    case kFaderMagScale: return std::exp(RelPixelsToDecibels(pixels, clamp) * db_to_exponent);
    }
    return 0.0f;
}

void MagScale::SetScaleType(MagScaleType type) {
    if (type == scaleType_ || type >= 4 || type < 0)
        return;
    switch (type) {
    case kDecibelMagScale:
        if (visibleRange_.low < -200.0f) {
            visibleRange_.high = std::max(visibleRange_.high, -50.0f);
            visibleRange_.low = -120.0f;
        }
        linearOffset_ = 0.0f;
        visibleLinearRange_ = range_t(std::exp(visibleRange_.low * db_to_exponent),
                                      std::exp(visibleRange_.high * db_to_exponent));
        break;
    case kAmplitudeLog90MagScale:
    case kAmplitudeLog120MagScale:
        visibleRange_.low = -400.0f;
        linearOffset_ = OffsetForType(type);
        visibleLinearRange_ = range_t(0.0f, std::exp(visibleRange_.high * db_to_exponent));
        break;
    case kFaderMagScale:
        visibleRange_ = range_t(-300.0f, 15.0f);
        linearOffset_ = 0.0f;
        visibleLinearRange_ = range_t(0.0f, std::exp(15.0f * db_to_exponent));
        break;
    }
    scaleType_ = type;
    RefreshCoefficients();
}

void MagScale::StoreVisibleRange(const range_t& range) {
    visibleRange_ = range;
    visibleLinearRange_.high = std::exp(range.high * db_to_exponent);
    visibleLinearRange_.low = scaleType_ != kDecibelMagScale && range.low <= -150.0f
                                  ? 0.0f
                                  : std::exp(range.low * db_to_exponent);
    RefreshCoefficients();
}

void MagScale::SetVisibleRange(const range_t& range, bool force) {
    if (!force && range == visibleRange_)
        return;
    if (range.high >= range.low && range.length() < 1.0f)
        return;
    StoreVisibleRange(range);
}

void MagScale::SetDefaultVisibleRange(const range_t& range) {
    defaultRange_ = range;
    hasDefault_ = true;
}

void MagScale::SetDefaultVisibleRange() {
    if (hasDefault_) {
        SetVisibleRange(defaultRange_, false);
        return;
    }
    switch (scaleType_) {
    case kDecibelMagScale: SetVisibleRange(range_t(-120.0f, 0.0f), false); break;
    case kFaderMagScale: SetVisibleRange(range_t(-300.0f, 15.0f), false); break;
    default: SetVisibleRange(range_t(-400.0f, 0.0f), false); break;
    }
}

void MagScale::PanVisibleRange(float delta_pixels) {
    if (visibleRange_ == totalRange_ || height_ == 0.0f)
        return;
    const float bottom = Bottom();
    float low = PixelsToDecibels(bottom - delta_pixels, false);
    float high = PixelsToDecibels(top_row - delta_pixels, false);
    if (totalRange_.low >= low) {
        low = totalRange_.low;
        const float px = DecibelsToPixels(totalRange_.low, true);
        high = PixelsToDecibels(bottom - (top_row - px), false);
    } else if (high >= totalRange_.high) {
        high = totalRange_.high;
        const float px = DecibelsToPixels(totalRange_.high, true);
        low = PixelsToDecibels(top_row - (bottom - px), false);
    }
    const range_t range(LimitTo(low, totalRange_), LimitTo(high, totalRange_));
    if (range == visibleRange_)
        return;
    if (range.high >= range.low && range.length() < 1.0f)
        return;
    StoreVisibleRange(range);
}

qorcore::ColorRGBA MagScale::GetColorForDecibels(float decibels) const {
    float v;
    switch (scaleType_) {
    case kDecibelMagScale:
    case kFaderMagScale:
        v = visibleRange_.low == visibleRange_.high
                ? -120.0f
                : ((decibels - visibleRange_.low) / (visibleRange_.high - visibleRange_.low)) *
                          120.0f -
                      120.0f;
        break;
    case kAmplitudeLog90MagScale:
    case kAmplitudeLog120MagScale: {
        const float p = LinearToRelPixels(std::exp(decibels * db_to_exponent), false);
        const float bottom = Bottom();
        v = bottom == top_row ? -120.0f : ((p - bottom) / (top_row - bottom)) * 120.0f - 120.0f;
        break;
    }
    default: return qorcore::ColorRGBA(0.0f, 0.0f, 0.0f, 1.0f);
    }
    const auto to_color = [](float r, float g, float b) {
        return qorcore::ColorRGBA(r / 255.0f, g / 255.0f, b / 255.0f, 1.0f);
    };
    if (!(v > heat_stops.front().decibels)) {
        const heat_stop_t& s = heat_stops.front();
        return to_color(s.red, s.green, s.blue);
    }
    if (v > heat_stops.back().decibels) {
        const heat_stop_t& s = heat_stops.back();
        return to_color(s.red, s.green, s.blue);
    }
    std::size_t i = 0;
    while (i + 1 < heat_stops.size() && v > heat_stops[i + 1].decibels)
        ++i;
    const heat_stop_t& a = heat_stops[i];
    const heat_stop_t& b = heat_stops[i + 1];
    const float f = (v - a.decibels) / (b.decibels - a.decibels);
    return to_color(a.red + (b.red - a.red) * f, a.green + (b.green - a.green) * f,
                    a.blue + (b.blue - a.blue) * f);
}

} // namespace qoraudiofiltersui
