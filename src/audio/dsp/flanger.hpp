#pragma once

#include "audio/dsp/modulated_delay.hpp"
#include "audio/dsp/reference_effect.hpp"

#include <array>
#include <atomic>
#include <cstddef>

namespace qoraudiofilters {

/// The flanger: each channel mixes its dry signal with itself through a short delay that an LFO
/// sweeps from `delay` to `delay + depth`, with feedback of either sign around the delay. The
/// right channel's LFO runs `stereo phase` ahead of the left.
///
/// Parameters (normalised 0..1, plain = min + v * (max - min)): 0 delay 0.1..10 ms, 1 depth
/// 0..10 ms, 2 rate 0.05..10 Hz, 3 feedback -95..95 %, 4 mix 0..100 %, 5 stereo phase 0..180
/// degrees, 6 output gain -20..20 dB, 7 triangle waveform, 8 invert wet, 9 high quality (cubic
/// interpolation); switches are on above 0.5. Out of range values are held to 0..1, a value
/// that is no number reads as the default.
///
/// Threads: writes decode into atomic plain values; the process thread takes them over at its
/// next block and never locks, allocates or frees.
class Flanger : public ReferenceEffect {
public:
    enum ParameterIndex : int {
        kDelay = 0,
        kDepth = 1,
        kRate = 2,
        kFeedback = 3,
        kMix = 4,
        kStereoPhase = 5,
        kOutputGain = 6,
        kTriangle = 7,
        kInvert = 8,
        kHighQuality = 9,
    };
    static constexpr int kParameterCount = 10;
    static constexpr std::size_t kMaxChannels = 8;

    explicit Flanger(float sampleRate = 48000.0f, std::size_t channelCount = 2);

    /// A parameter in its plain unit as the effect reads it (limited, defaults for NaN).
    double GetPlainSetting(int index) const;

    // ReferenceEffect
    void Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                 std::size_t frameCount) override;
    void Reset() override;
    void UpdateFromParameters() override;

protected:
    /// Decodes just the parameter written.
    void ApplyParameter(int index) override;

private:
    void Decode(int index);

    std::array<std::atomic<double>, kParameterCount> settings_;
    // The process thread's.
    std::array<ModulatedDelay, kMaxChannels> delays_;
    double phase_ = 0.0;
};

} // namespace qoraudiofilters
