#include "audio/dsp/dynamics_toolkit.hpp"

#include <algorithm>
#include <cmath>

namespace qoraudiofilters::dynamics {

namespace {

double Coefficient(double milliseconds, double sampleRate) {
    if (!(milliseconds > 0.0) || !(sampleRate > 0.0))
        return 1.0;
    return 1.0 - std::exp(-1000.0 / (milliseconds * sampleRate));
}

} // namespace

double DecibelsFromLinear(double amplitude) {
    const double a = std::fabs(amplitude);
    if (!(a > 0.0))
        return kFloorDecibels;
    return std::max(kFloorDecibels, 20.0 * std::log10(a));
}

double LinearFromDecibels(double decibels) {
    return decibels <= kFloorDecibels ? 0.0 : std::pow(10.0, decibels / 20.0);
}

void AttackRelease::SetTimes(double attackMilliseconds, double releaseMilliseconds,
                             double sampleRate) {
    attack_ = Coefficient(attackMilliseconds, sampleRate);
    release_ = Coefficient(releaseMilliseconds, sampleRate);
}

void MeanSquare::SetWindow(double milliseconds, double sampleRate) {
    coefficient_ = Coefficient(milliseconds, sampleRate);
}

double CompressorGain(double inputDb, double thresholdDb, double ratio, double kneeDb) {
    if (!(ratio > 1.0) || std::isnan(inputDb) || std::isnan(thresholdDb))
        return 0.0;
    const double slope = 1.0 / ratio - 1.0;
    const double over = inputDb - thresholdDb;
    const double knee = kneeDb > 0.0 ? kneeDb : 0.0;
    if (2.0 * over <= -knee)
        return 0.0;
    if (2.0 * over < knee) {
        const double x = over + knee / 2.0;
        return slope * x * x / (2.0 * knee);
    }
    return slope * over;
}

double ExpanderGain(double inputDb, double thresholdDb, double ratio) {
    if (!(ratio > 1.0) || std::isnan(inputDb) || std::isnan(thresholdDb) || inputDb >= thresholdDb)
        return 0.0;
    return std::max(kFloorDecibels, (ratio - 1.0) * (inputDb - thresholdDb));
}

double TransferCurveOutput(const std::vector<std::array<double, 2>>& points, double inputDb) {
    if (points.empty() || std::isnan(inputDb))
        return inputDb;
    if (points.size() == 1)
        return inputDb + points[0][1] - points[0][0];
    std::size_t i = 1;
    while (i + 1 < points.size() && inputDb > points[i][0])
        ++i;
    const auto& a = points[i - 1];
    const auto& b = points[i];
    const double run = b[0] - a[0];
    if (!(std::fabs(run) > 1e-12))
        return inputDb <= a[0] ? a[1] : b[1];
    // Before the first point and past the last, the outer segments' lines go on.
    return a[1] + (inputDb - a[0]) * (b[1] - a[1]) / run;
}

DelayLine::DelayLine(std::size_t capacity) : buffer_(capacity + 1, 0.0f) {}

void DelayLine::SetDelay(std::size_t samples) {
    delay_ = std::min(samples, buffer_.size() - 1);
}

void DelayLine::Clear() {
    std::fill(buffer_.begin(), buffer_.end(), 0.0f);
}

float DelayLine::Process(float input) {
    if (delay_ == 0)
        return input;
    buffer_[write_] = input;
    const std::size_t read = (write_ + buffer_.size() - delay_) % buffer_.size();
    write_ = (write_ + 1) % buffer_.size();
    return buffer_[read];
}

} // namespace qoraudiofilters::dynamics
