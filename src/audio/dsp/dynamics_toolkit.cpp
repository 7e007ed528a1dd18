#include "audio/dsp/dynamics_toolkit.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

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

namespace {

// Gains are aimed this far under the ceiling, so that neither the average's sum nor the
// rounding of the output to float can carry a sample over it.
constexpr double kCeilingMargin = 1.0 - 1e-6;
// A released gain this close to where it is going has arrived: unity is reached exactly.
constexpr double kArrived = 1e-9;
// Auto release: the time over which the depth of limiting is averaged, the depth at which the
// full release applies, and the shortest fraction of it.
constexpr double kReductionMilliseconds = 500.0;
constexpr double kFullReleaseDepth = 0.25;
constexpr double kShortestRelease = 0.2;

} // namespace

LookAheadLimiter::LookAheadLimiter(std::size_t maxLookAhead, double sampleRate)
    : capacity_(maxLookAhead), sampleRate_(sampleRate > 0.0 ? sampleRate : 48000.0) {
    delays_.assign(kMaxChannels, DelayLine(capacity_));
    lanes_.resize(kMaxChannels);
    for (lane_t& lane : lanes_) {
        lane.minValues.resize(capacity_ + 1);
        lane.minTimes.resize(capacity_ + 1);
        lane.window.resize(capacity_ + 1);
    }
    const double decay = -1000.0 / (kReductionMilliseconds * sampleRate_);
    reductionCoefficient_ = 1.0 - std::exp(decay);
    SetRelease(100.0);
    SetCeiling(0.0);
    Reset();
}

void LookAheadLimiter::SetLookAhead(std::size_t samples) {
    samples = std::min(samples, capacity_);
    if (samples == lookAhead_)
        return;
    lookAhead_ = samples;
    Reset();
}

void LookAheadLimiter::SetCeiling(double decibels) {
    if (std::isnan(decibels))
        return;
    ceilingDb_ = std::clamp(decibels, kFloorDecibels, 60.0);
    ceiling_ = LinearFromDecibels(ceilingDb_) * kCeilingMargin;
    SetKnee(kneeDb_);
}

void LookAheadLimiter::SetRelease(double milliseconds) {
    release_ = Coefficient(milliseconds, sampleRate_);
}

void LookAheadLimiter::SetKnee(double decibels) {
    kneeDb_ = decibels > 0.0 ? std::min(decibels, 48.0) : 0.0;
    kneeStart_ = kneeDb_ > 0.0 ? LinearFromDecibels(ceilingDb_ - kneeDb_ / 2.0) : ceiling_;
}

void LookAheadLimiter::Reset() {
    for (DelayLine& delay : delays_) {
        delay.SetDelay(lookAhead_);
        delay.Clear();
    }
    for (lane_t& lane : lanes_) {
        lane.minHead = 0;
        lane.minCount = 0;
        std::fill(lane.window.begin(), lane.window.end(), 1.0);
        lane.windowAt = 0;
        lane.windowSum = double(lookAhead_ + 1);
        lane.released = 1.0;
        lane.reduction = 0.0;
    }
    time_ = 0;
    lastGain_ = 1.0;
}

double LookAheadLimiter::Target(double magnitude) const {
    if (!(magnitude > kneeStart_))
        return 1.0;
    if (kneeDb_ <= 0.0)
        return ceiling_ / magnitude;
    // The knee's output never rises above its threshold: it joins the flat top there.
    const double gain = CompressorGain(DecibelsFromLinear(magnitude), ceilingDb_,
                                       std::numeric_limits<double>::infinity(), kneeDb_);
    return LinearFromDecibels(gain) * kCeilingMargin;
}

double LookAheadLimiter::Step(lane_t& lane, double target) {
    const std::size_t span = lookAhead_ + 1;
    const std::size_t ring = lane.minValues.size();
    // The least target of the newest `span` samples: a queue of rising values, from which
    // what left the span goes first, so it never holds more than the span.
    while (lane.minCount > 0 && lane.minTimes[lane.minHead] + span <= time_) {
        lane.minHead = (lane.minHead + 1) % ring;
        --lane.minCount;
    }
    while (lane.minCount > 0) {
        const std::size_t back = (lane.minHead + lane.minCount - 1) % ring;
        if (lane.minValues[back] < target)
            break;
        --lane.minCount;
    }
    const std::size_t slot = (lane.minHead + lane.minCount) % ring;
    lane.minValues[slot] = target;
    lane.minTimes[slot] = time_;
    ++lane.minCount;
    const double least = lane.minValues[lane.minHead];

    // Down at once, up with the release.
    if (least <= lane.released) {
        lane.released = least;
    } else {
        double coefficient = release_;
        if (autoRelease_) {
            const double depth =
                std::clamp(lane.reduction / kFullReleaseDepth, kShortestRelease, 1.0);
            coefficient = std::min(1.0, coefficient / depth);
        }
        lane.released += coefficient * (least - lane.released);
        if (least - lane.released < kArrived)
            lane.released = least;
    }
    lane.reduction += reductionCoefficient_ * ((1.0 - lane.released) - lane.reduction);

    // The average over the span; summed anew at each turn of the ring so no error piles up.
    lane.windowSum += lane.released - lane.window[lane.windowAt];
    lane.window[lane.windowAt] = lane.released;
    if (++lane.windowAt == span) {
        lane.windowAt = 0;
        lane.windowSum = 0.0;
        for (std::size_t i = 0; i < span; ++i)
            lane.windowSum += lane.window[i];
    }
    return lane.windowSum / double(span);
}

void LookAheadLimiter::Process(float* const* channels, std::size_t channelCount,
                               std::size_t frames) {
    const std::size_t count = std::min(channelCount, kMaxChannels);
    double least = 1.0;
    for (std::size_t i = 0; i < frames; ++i) {
        float input[kMaxChannels];
        double gain[kMaxChannels];
        // Each channel has its path; linked, all take the least gain, which is safe for each
        // (it is no more than its own) and as smooth as the smoothest.
        double shared = 1.0;
        for (std::size_t c = 0; c < count; ++c) {
            const float x = channels[c][i];
            input[c] = std::isfinite(x) ? x : 0.0f;
            gain[c] = Step(lanes_[c], Target(std::fabs(double(input[c]))));
            shared = std::min(shared, gain[c]);
        }
        ++time_;
        for (std::size_t c = 0; c < count; ++c) {
            const double applied = linked_ ? shared : gain[c];
            channels[c][i] = float(double(delays_[c].Process(input[c])) * applied);
        }
        least = std::min(least, shared);
    }
    lastGain_ = least;
}

} // namespace qoraudiofilters::dynamics
