#include "audio/dsp/modulated_delay.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qoraudiofilters {

ModulatedDelay::ModulatedDelay(std::size_t maxDelay) : buffer_(maxDelay + kGuard, 0.0f) {}

void ModulatedDelay::Clear() {
    std::fill(buffer_.begin(), buffer_.end(), 0.0f);
}

void ModulatedDelay::Write(float sample) {
    newest_ = (newest_ + 1) % buffer_.size();
    buffer_[newest_] = std::isfinite(sample) ? sample : 0.0f;
}

float ModulatedDelay::At(std::size_t back) const {
    return buffer_[(newest_ + buffer_.size() - back % buffer_.size()) % buffer_.size()];
}

float ModulatedDelay::Read(double delay, bool cubic) const {
    if (!(delay > 0.0))
        return buffer_[newest_];
    delay = std::min(delay, double(GetMaxDelay()));
    const auto whole = std::size_t(delay);
    const double frac = delay - double(whole);
    const double x0 = At(whole);
    const double x1 = At(whole + 1);
    if (!cubic || frac == 0.0)
        return float(x0 + frac * (x1 - x0));
    // Catmull-Rom through the sample after, the two around, and the one before.
    const double xm = whole > 0 ? At(whole - 1) : x0;
    const double x2 = At(whole + 2);
    const double c1 = 0.5 * (x1 - xm);
    const double c2 = xm - 2.5 * x0 + 2.0 * x1 - 0.5 * x2;
    const double c3 = 0.5 * (x2 - xm) + 1.5 * (x0 - x1);
    return float(((c3 * frac + c2) * frac + c1) * frac + x0);
}

double SweepShape(double phase, bool triangle) {
    phase -= std::floor(phase);
    if (triangle)
        return phase < 0.5 ? 2.0 * phase : 2.0 - 2.0 * phase;
    return 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * phase);
}

} // namespace qoraudiofilters
