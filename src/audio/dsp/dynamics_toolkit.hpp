#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
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

/// A brickwall limiter with look-ahead: no output sample passes the ceiling. The signal is
/// delayed by the look-ahead L; the gain each sample needs (ceiling / |x|, or what the soft knee
/// asks) is held at its minimum over the next L + 1 samples, released with the release time,
/// and averaged over L + 1 samples, so the gain has reached a peak's depth when the peak comes
/// out and moves by at most 1 / (L + 1) a sample: no clipping, no step. Linked, one gain serves
/// every channel; unlinked, each channel has its own. Auto release shortens the release to a
/// fifth after brief limiting and lengthens it to the full time as limiting goes on, so peaks
/// leave no holes and long passages don't pump. Samples that are no finite number count as
/// silence. Memory is taken by the constructor only: `Process` neither allocates nor locks.
class LookAheadLimiter {
public:
    static constexpr std::size_t kMaxChannels = 8;

    /// Room for up to `maxLookAhead` samples of look-ahead on `kMaxChannels` channels; the rate
    /// gives the release its time. It starts with no look-ahead, a ceiling of 0 dB, 100 ms of
    /// release, linked, with a hard knee.
    LookAheadLimiter(std::size_t maxLookAhead, double sampleRate);

    /// Held at the capacity. A change forgets the signal (as `Reset`).
    void SetLookAhead(std::size_t samples);
    std::size_t GetLookAhead() const { return lookAhead_; }
    /// In dB; a value that is no number is ignored.
    void SetCeiling(double decibels);
    double GetCeiling() const { return ceilingDb_; }
    void SetRelease(double milliseconds);
    void SetLinked(bool linked) { linked_ = linked; }
    /// The width of a soft knee in dB below the ceiling (0 a hard knee).
    void SetKnee(double decibels);
    void SetAutoRelease(bool on) { autoRelease_ = on; }
    void Reset();

    /// In place, the first `kMaxChannels` of `channelCount` channels (more are left alone).
    void Process(float* const* channels, std::size_t channelCount, std::size_t frames);
    /// The smallest gain the last `Process` applied (1 when it did not limit).
    double GetLastGain() const { return lastGain_; }

private:
    // The gain path of one channel, or of all when linked.
    struct lane_t {
        std::vector<double> minValues; // the sliding minimum's queue, a ring
        std::vector<std::uint64_t> minTimes;
        std::size_t minHead = 0;
        std::size_t minCount = 0;
        std::vector<double> window; // the released gains being averaged, a ring
        std::size_t windowAt = 0;
        double windowSum = 0.0;
        double released = 1.0;
        double reduction = 0.0; // the slow average of 1 - gain, for auto release
    };

    double Target(double magnitude) const;
    double Step(lane_t& lane, double target);

    std::vector<DelayLine> delays_;
    std::vector<lane_t> lanes_;
    std::size_t capacity_;
    std::size_t lookAhead_ = 0;
    double sampleRate_;
    double ceilingDb_ = 0.0;
    double ceiling_ = 1.0; // with a margin against rounding
    double kneeDb_ = 0.0;
    double kneeStart_ = 1.0; // the magnitude where the gain starts to fall
    double release_ = 1.0;
    double reductionCoefficient_ = 1.0;
    bool linked_ = true;
    bool autoRelease_ = false;
    std::uint64_t time_ = 0;
    double lastGain_ = 1.0;
};

} // namespace qoraudiofilters::dynamics
