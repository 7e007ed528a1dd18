#include "graphs/scales/freq_scale.hpp"

#include <algorithm>
#include <cmath>

namespace qoraudiofiltersui {

namespace {

constexpr double span_margin = 0.4999;
constexpr double mel_factor = 1127.01048;

/// The warp of each scale type, in double precision.
double Warp(FreqScaleType type, double f) {
    switch (type) {
    case kLinearScale: return f;
    case kMelScale: return mel_factor * std::log(f / 700.0 + 1.0);
    case kBarkScale: return 26.81 * f / (f + 1960.0) - 0.53;
    case kLogPlus100Scale: return std::log(f + 100.0);
    case kLogPlus20Scale: return std::log(f + 20.0);
    case kLogScale: return std::log(f);
    }
    return 0.0;
}

/// Low first, then high; unlike std::clamp it is defined for an inverted range.
double Limit(double value, double low, double high) {
    if (value < low)
        return low;
    if (value > high)
        return high;
    return value;
}

} // namespace

FreqScale::FreqScale(bool inverted) : inverted_(inverted) {}

void FreqScale::SetSize(float size) {
    if (size > 0.0f)
        size_ = size;
}

float FreqScale::StripTop(std::size_t channel) const {
    const float n = static_cast<float>(numChannels_);
    const float h = (size_ - (n - 1.0f)) / n;
    return (h + 1.0f) * static_cast<float>(channel);
}

float FreqScale::StripBottom(std::size_t channel) const {
    const float n = static_cast<float>(numChannels_);
    const float h = (size_ - (n - 1.0f)) / n;
    return h + (h + 1.0f) * static_cast<float>(channel) - 1.0f;
}

FreqScale::range_t FreqScale::GetChannelYRange(std::size_t channel) const {
    if (channel >= numChannels_)
        return range_t();
    return range_t(StripTop(channel), StripBottom(channel));
}

std::size_t FreqScale::GetChannelFromY(float y) const {
    for (std::size_t k = 0; k < numChannels_; ++k)
        if (StripTop(k) <= y && y <= StripBottom(k))
            return k;
    return 0;
}

void FreqScale::RelativeSpan(double& low, double& high) const {
    const range_t strip = GetChannelYRange(0);
    const auto y0 = static_cast<std::int32_t>(strip.low);
    const auto y1 = static_cast<std::int32_t>(strip.high);
    low = -span_margin;
    high = static_cast<double>(y1 - y0) + span_margin;
}

void FreqScale::SetTotalFreqRange(const range_t& range) {
    totalRange_ = range;
    visibleRange_ = range_t();
}

void FreqScale::SetVisibleFreqRange(const range_t& range, bool force) {
    if (!force && range == visibleRange_)
        return;
    if (range.high >= range.low && range.length() < 1.0f)
        return;
    visibleRange_ = range;
}

void FreqScale::SetDefaultVisibleFreqRange(const range_t& range) {
    defaultRange_ = range;
    hasDefault_ = true;
}

void FreqScale::SetDefaultVisibleFreqRange() {
    const range_t range = hasDefault_ ? defaultRange_ : totalRange_;
    if (range == visibleRange_)
        return;
    if (range.length() < 1.0f)
        return;
    visibleRange_ = range;
}

void FreqScale::SetScaleType(FreqScaleType type) {
    if (type >= 6 || type < 0)
        return;
    scaleType_ = type;
}

double FreqScale::HzToRelPixelsFloat(double hz) const {
    if (scaleType_ > kLogScale)
        return 0.0;
    const double a = Warp(scaleType_, static_cast<double>(visibleRange_.low));
    const double b = Warp(scaleType_, static_cast<double>(visibleRange_.high));
    if (a == b)
        return -span_margin;
    const double t = (Warp(scaleType_, hz) - a) / (b - a);
    double low, high;
    RelativeSpan(low, high);
    return t * (high - low) + low;
}

qorcore::checked_value<float> FreqScale::HzToRelPixels(double hz, bool clamp) const {
    const range_t strip = GetChannelYRange(0);
    const float y0 = static_cast<float>(static_cast<std::int32_t>(strip.low));
    const float y1 = static_cast<float>(static_cast<std::int32_t>(strip.high));
    const auto r = static_cast<float>(HzToRelPixelsFloat(hz));
    // Half away from zero, so the ends of the span land on the first and last rows.
    float value = static_cast<float>(static_cast<std::int32_t>(r >= 0.0f ? r + 0.5f : r - 0.5f));
    const bool inside = y0 <= value && value <= y1;
    if (clamp) {
        if (value < y0)
            value = y0;
        else if (value > y1)
            value = y1;
    }
    return {value, inside};
}

qorcore::checked_value<float> FreqScale::HzToPixels(std::size_t channel, double hz,
                                                    bool clamp) const {
    const qorcore::checked_value<float> relative = HzToRelPixels(hz, clamp);
    const bool exists = channel < numChannels_;
    if (!inverted_)
        return {(exists ? StripTop(channel) : 1.0f) + relative.value, relative.valid};
    return {(exists ? StripBottom(channel) : 0.0f) - relative.value, relative.valid};
}

qorcore::checked_value<double> FreqScale::HzToPixelsFloat(std::size_t channel, double hz) const {
    const double relative = HzToRelPixelsFloat(hz);
    const bool exists = channel < numChannels_;
    if (!inverted_)
        return {(exists ? StripTop(channel) : 1.0) + relative, true};
    return {(exists ? StripBottom(channel) : 0.0) - relative, true};
}

double FreqScale::RelPixelsToHz(double pixels, bool clamp) const {
    if (scaleType_ > kLogScale)
        return 0.0;
    double low_span, high_span;
    RelativeSpan(low_span, high_span);
    const double t = low_span == high_span ? 0.0 : (pixels - low_span) / (high_span - low_span);
    const double low = visibleRange_.low;
    const double high = visibleRange_.high;
    double result = 0.0;
    switch (scaleType_) {
    case kLinearScale: result = t * (high - low) + low; break;
    case kMelScale: {
        const double a = Warp(kMelScale, low);
        const double b = Warp(kMelScale, high);
        result = (std::exp((t * (b - a) + a) / mel_factor) - 1.0) * 700.0;
        break;
    }
    case kBarkScale: {
        const double a = Warp(kBarkScale, low);
        const double b = Warp(kBarkScale, high);
        const double z = t * (b - a) + a;
        result = 1960.0 / (26.81 / (z + 0.53) - 1.0);
        break;
    }
    case kLogPlus100Scale:
        result =
            std::exp(std::log(low + 100.0) + t * (std::log(high + 100.0) - std::log(low + 100.0))) -
            100.0;
        break;
    case kLogPlus20Scale:
        result =
            std::exp(std::log(low + 20.0) + t * (std::log(high + 20.0) - std::log(low + 20.0))) -
            20.0;
        break;
    case kLogScale: result = std::exp(t * (std::log(high) - std::log(low)) + std::log(low)); break;
    }
    if (clamp)
        result = result < low ? low : std::min(high, result);
    return result;
}

double FreqScale::PixelsToHz(std::size_t channel, double pixels, bool clamp) const {
    const bool exists = channel < numChannels_;
    if (!inverted_)
        return RelPixelsToHz((exists ? StripTop(channel) : 1.0) + pixels, clamp);
    return RelPixelsToHz((exists ? StripBottom(channel) : 0.0) - pixels, clamp);
}

void FreqScale::ZoomVisibleFreqRange(float new_width_hz, float anchor_hz, bool force) {
    const double low = visibleRange_.low;
    const double high = visibleRange_.high;
    const double t = low == high ? 0.0 : (anchor_hz - low) / (high - low);
    const auto below = static_cast<float>(new_width_hz * t);
    const float above = new_width_hz - below;
    range_t range;
    if (below >= anchor_hz) {
        // The zoom is allowed to reach 0 Hz, whatever the total range says.
        range = range_t(0.0f, new_width_hz);
    } else if (anchor_hz >= totalRange_.high - above) {
        range = range_t(totalRange_.high - new_width_hz, totalRange_.high);
    } else {
        range = range_t(anchor_hz - below, above + anchor_hz);
    }
    SetVisibleFreqRange(range, force);
}

void FreqScale::PanVisibleFreqRange(float delta_pixels, bool) {
    if (visibleRange_ == totalRange_)
        return;
    const range_t strip = GetChannelYRange(0);
    const double a = static_cast<double>(static_cast<std::int32_t>(strip.high)) + span_margin;
    const double b = static_cast<double>(static_cast<std::int32_t>(strip.low)) - span_margin;
    const double fa = PixelsToHz(0, a - delta_pixels, false);
    const double fb = PixelsToHz(0, b - delta_pixels, false);
    double new_low = inverted_ ? fa : fb;
    double new_high = inverted_ ? fb : fa;
    // At either end of the total range the view keeps its pixel width, which in a warped scale
    // is not its width in hertz.
    if (totalRange_.low > new_low) {
        new_low = totalRange_.low;
        const double px = HzToPixelsFloat(0, totalRange_.low).value;
        new_high = PixelsToHz(0, inverted_ ? b - (a - px) : a - (b - px), false);
    } else if (new_high > totalRange_.high) {
        new_high = totalRange_.high;
        const double px = HzToPixelsFloat(0, totalRange_.high).value;
        new_low = PixelsToHz(0, inverted_ ? a - (b - px) : b - (a - px), false);
    }
    new_low = Limit(new_low, totalRange_.low, totalRange_.high);
    new_high = Limit(new_high, totalRange_.low, totalRange_.high);
    SetVisibleFreqRange(range_t(static_cast<float>(new_low), static_cast<float>(new_high)), false);
}

} // namespace qoraudiofiltersui
