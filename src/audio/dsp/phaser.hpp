#pragma once

#include "audio/dsp/reference_effect.hpp"

#include <array>
#include <atomic>
#include <cstddef>

namespace qoraudiofilters {

/// The phaser: a chain of first-order allpass stages, all turning at one corner frequency that an
/// LFO sweeps upward from `frequency` by up to four octaves (`depth`), with feedback from the
/// chain's output to its input. Mixed with the dry signal, the chain's phase makes notches where
/// it reaches odd multiples of 180 degrees. The second channel of a pair runs its LFO `phase`
/// ahead of the first.
///
/// Parameters (normalised 0..1, plain = min + v * (max - min)): 0 stages 2..12 (even), 1
/// frequency 50..2000 Hz, 2 depth 0..100 %, 3 rate 0.05..10 Hz, 4 feedback -90..90 %, 5 phase
/// 0..180 degrees, 6 mix 0..100 %, 7 output gain -20..20 dB, 8 invert wet (above 0.5). Out of
/// range values are held to 0..1, a value that is no number reads as the default. Threads as for
/// `Flanger`.
class Phaser : public ReferenceEffect {
public:
    enum ParameterIndex : int {
        kStages = 0,
        kFrequency = 1,
        kDepth = 2,
        kRate = 3,
        kFeedback = 4,
        kStereoPhase = 5,
        kMix = 6,
        kOutputGain = 7,
        kInvert = 8,
    };
    static constexpr int kParameterCount = 9;
    static constexpr int kMaxStages = 12;
    static constexpr double kSweepOctaves = 4.0;
    static constexpr std::size_t kMaxChannels = 8;

    explicit Phaser(float sampleRate = 48000.0f, std::size_t channelCount = 2);

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
    // The process thread's: each stage's last input and output, per channel.
    std::array<std::array<double, kMaxStages>, kMaxChannels> lastIn_{};
    std::array<std::array<double, kMaxStages>, kMaxChannels> lastOut_{};
    std::array<double, kMaxChannels> feedback_{};
    double phase_ = 0.0;
};

} // namespace qoraudiofilters
