#pragma once

#include "audio/dsp/reference_effect.hpp"

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>

namespace qoraudiofilters {

namespace dynamics {
class LookAheadLimiter;
}

/// The hard limiter: an input gain, then a look-ahead brickwall limiter
/// (`dynamics::LookAheadLimiter`) whose output sample peak never passes its ceiling. The signal
/// comes out later by the look-ahead, which the effect reports as its latency.
///
/// Parameters (normalised 0..1, plain = min + v * (max - min)): 0 input gain -24..24 dB,
/// 1 ceiling -24..0 dB, 2 release 1..1000 ms, 3 look-ahead 0..20 ms, 4 link channels, 5 auto
/// release, 6 soft knee (a 3 dB knee under the ceiling); switches are on above 0.5. Values
/// outside 0..1 are limited to it; a value that is no number reads as the default.
///
/// Threads: a write decodes the settings on the writing thread into atomic plain values; the
/// process thread takes them over at its next block, and never locks, allocates or frees. A new
/// look-ahead forgets the signal in the delay (the latency changes with it).
class HardLimiter : public ReferenceEffect {
public:
    enum ParameterIndex : int {
        kInputGain = 0,
        kCeiling = 1,
        kRelease = 2,
        kLookAhead = 3,
        kLinkChannels = 4,
        kAutoRelease = 5,
        kSoftKnee = 6,
    };
    static constexpr int kParameterCount = 7;
    static constexpr double kMaxLookAheadMilliseconds = 20.0;
    static constexpr double kSoftKneeDecibels = 3.0;

    /// Rate and channel count as for `ReferenceEffect`.
    explicit HardLimiter(float sampleRate = 48000.0f, std::size_t channelCount = 2);
    ~HardLimiter() override;

    /// A parameter in its plain unit as the effect reads it (limited, defaults for NaN).
    double GetPlainSetting(int index) const;
    /// The smallest gain of the last processed block (1 when it did not limit); any thread.
    double GetLastGain() const { return lastGain_.load(std::memory_order_relaxed); }

    // ReferenceEffect
    void Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                 std::size_t frameCount) override;
    void Reset() override;
    std::size_t GetLatencySamples() const override;
    void UpdateFromParameters() override;

protected:
    /// Decodes just the parameter written.
    void ApplyParameter(int index) override;

private:
    void Decode(int index);
    void Apply();

    std::array<std::atomic<double>, kParameterCount> settings_;
    std::atomic<unsigned int> generation_{0};
    // The process thread's: the settings it applied last.
    unsigned int applied_ = ~0u;
    double inputGain_ = 1.0;
    std::unique_ptr<dynamics::LookAheadLimiter> limiter_;
    std::atomic<double> lastGain_{1.0};
};

} // namespace qoraudiofilters
