#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace qoraudiofilters::dynamics {

/// The floor of every level in decibels: silence reads -300 dB, never -inf.
constexpr double kFloorDecibels = -300.0;

double DecibelsFromLinear(double amplitude);
double LinearFromDecibels(double decibels);

/// A one-pole smoother with separate attack (rising) and release (falling) times, on any
/// quantity (a level in dB, a gain): the classic detector of a dynamics processor. A time of 0
/// follows at once. The coefficient reaches 1 - 1/e of a step in the given time.
class AttackRelease {
public:
    void SetTimes(double attackMilliseconds, double releaseMilliseconds, double sampleRate);
    void Reset(double value) { state_ = value; }
    double Process(double input) {
        state_ += (input > state_ ? attack_ : release_) * (input - state_);
        return state_;
    }
    double GetValue() const { return state_; }

private:
    double attack_ = 1.0;
    double release_ = 1.0;
    double state_ = 0.0;
};

/// Mean square over a sliding window (a one-pole average with the window as time constant):
/// the level an RMS detector reads.
class MeanSquare {
public:
    void SetWindow(double milliseconds, double sampleRate);
    void Reset() { state_ = 0.0; }
    double Process(double sample) {
        state_ += coefficient_ * (sample * sample - state_);
        return state_;
    }

private:
    double coefficient_ = 1.0;
    double state_ = 0.0;
};

/// The gain change in dB (0 or below) of a downward compressor at `inputDb`: above the
/// threshold the output rises 1/ratio dB per input dB; a knee of `kneeDb` (centred on the
/// threshold) rounds the corner quadratically, as a soft-knee compressor does. A ratio of 1 or
/// less, or one that is no number, changes nothing.
double CompressorGain(double inputDb, double thresholdDb, double ratio, double kneeDb = 0.0);

/// The gain change in dB (0 or below) of a downward expander at `inputDb`: below the threshold
/// the output falls `ratio` dB per input dB (a gate is an expander of a high ratio).
double ExpanderGain(double inputDb, double thresholdDb, double ratio);

/// A transfer curve of points (input dB, output dB), sorted by input, joined by straight
/// segments and continued beyond the last point along the line through the last two (a line
/// of slope 1 through a single point): what a drawn curve applies.
double TransferCurveOutput(const std::vector<std::array<double, 2>>& points, double inputDb);

/// A delay line of fixed capacity for look-ahead: made once, never allocates while running.
class DelayLine {
public:
    explicit DelayLine(std::size_t capacity = 0);
    void SetDelay(std::size_t samples); ///< limited to the capacity
    std::size_t GetDelay() const { return delay_; }
    void Clear();
    float Process(float input);

private:
    std::vector<float> buffer_;
    std::size_t delay_ = 0;
    std::size_t write_ = 0;
};

} // namespace qoraudiofilters::dynamics
