#pragma once

#include "audio/dsp/reference_effect.hpp"

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

namespace qoraudiofilters {

namespace parametricdynamics {

/// What the auto gate does now: switched off, open (passing), or closed (holding the signal
/// down).
enum class AutoGateState { kOff = 0, kOpen = 1, kClosed = 2 };

/// What the meters show, gathered on the process thread since the last reading.
struct MeterData {
    float bandLevel = -300.0f; ///< the band's greatest detected level, dB (a sine: its peak)
    float gainChange = 0.0f;   ///< the band's deepest gain change, dB (0 or below)
    AutoGateState gate = AutoGateState::kOff; ///< the gate as the last block left it
    bool limiting = false; ///< whether the limiter held the output down meanwhile
};

} // namespace parametricdynamics

/// Frequency-selective dynamics: one band, a band-pass around a centre frequency with a Q,
/// is split from the signal, and the band's own level drives a compressor (above its
/// threshold, with a soft knee) and an expander (below its threshold) that act on that band
/// alone; an auto gate and an output limiter follow on the whole signal.
///
/// The split is complementary: the band b is the band-pass of the input x (0 dB at the centre,
/// zero phase there), the rest is x - b, and the output x + (g - 1) b. With no gain change the
/// signal passes exactly as it came; at the centre the band's gain is g; far from it the
/// signal passes.
///
/// The detector reads the band's mean square over max(5 ms, 8 periods of the centre) in every
/// channel, takes the loudest channel (one gain for all, so the image stays), and calls a sine
/// its peak level. The static gain g(level) in dB (`GetBandGainDecibels`, never under -80 dB)
/// is smoothed with the attack time as the change deepens and the release time as it recovers.
///
/// The auto gate keys on the whole input's level (5 ms mean square): it opens at once when the
/// level reaches its threshold and closes by itself when the level has stayed 4 dB under it for
/// the hold time, fading out in 30 ms (and in within 1 ms). The output limiter is a brickwall
/// with 1.5 ms of look-ahead at the ceiling; the effect's latency is that look-ahead, switched on
/// or not.
///
/// Parameters (normalised 0..1, plain = min + v * (max - min); see `ParameterIndex`): frequency
/// 20..20000 Hz, Q 0.1..10, threshold -60..0 dB, ratio 1..20, knee 0..24 dB, expander threshold
/// -80..0 dB, expander ratio 1..10, attack 0..500 ms, release 0..5000 ms, gate threshold
/// -100..0 dB, gate hold 0..2000 ms, ceiling -24..0 dB, output gain -24..24 dB, gate and
/// limiter switches (on above 0.5). Values outside 0..1 are limited to it; a value that is no
/// number reads as the default. Samples that are no finite number are taken as silence.
///
/// Threads: a write decodes the settings on the writing thread into atomic plain values; the
/// process thread takes them over at its next block and never locks, allocates or frees. The
/// states (`GetAutoGateState`, `IsLimiting`) are published after every block; the meter
/// readings gather on the process thread while the meter is active and are taken there by the
/// meter message.
class ParametricDynamics : public ReferenceEffect {
public:
    enum ParameterIndex : int {
        kFrequency = 0,
        kQ = 1,
        kThreshold = 2,
        kRatio = 3,
        kKnee = 4,
        kExpanderThreshold = 5,
        kExpanderRatio = 6,
        kAttack = 7,
        kRelease = 8,
        kGateThreshold = 9,
        kGateHold = 10,
        kCeiling = 11,
        kOutputGain = 12,
        kGateEnable = 13,
        kLimiterEnable = 14,
    };
    static constexpr int kParameterCount = 15;
    static constexpr double kLookAheadMilliseconds = 1.5;
    static constexpr double kGateHysteresisDecibels = 4.0;
    static constexpr double kGateFadeMilliseconds = 30.0;

    /// Rate and channel count as for `ReferenceEffect`.
    explicit ParametricDynamics(float sampleRate = 48000.0f, std::size_t channelCount = 2);
    ~ParametricDynamics() override;

    /// A parameter in its plain unit as the effect reads it (limited, the default for NaN).
    double GetPlainSetting(int index) const;
    /// The static gain change in dB that the band gets at a steady band level in dB.
    double GetBandGainDecibels(double bandLevelDecibels) const;
    /// The steady output level in dB of a sine at the centre of the band at `inputDecibels`:
    /// the band's static gain and the output gain, before gate and limiter. What the editor
    /// draws; NaN gives NaN.
    double GetStaticOutputDecibels(double inputDecibels) const;

    /// The gate after the last processed block; any thread.
    parametricdynamics::AutoGateState GetAutoGateState() const;
    /// Whether the limiter held the output down in the last processed block; any thread.
    bool IsLimiting() const;
    /// Main thread: gathers meter readings on the process thread (or stops).
    void SetMeterActive(bool active);
    bool IsMeterActive() const;
    /// Process thread (the meter message): the readings gathered since the last call.
    parametricdynamics::MeterData TakeMeterData();

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
    // The process thread's signal state and settings in force.
    struct state_t;

    void Decode(int index);

    std::array<std::atomic<double>, kParameterCount> settings_;
    std::atomic<unsigned int> generation_{0};
    std::atomic<int> gateState_{0};
    std::atomic<bool> limiting_{false};
    std::atomic<bool> meterActive_{false};
    std::unique_ptr<state_t> state_;
};

} // namespace qoraudiofilters
