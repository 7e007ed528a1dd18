#pragma once

#include "audio/dsp/modulated_delay.hpp"
#include "audio/dsp/reference_effect.hpp"

#include <array>
#include <atomic>
#include <cstddef>

namespace qoraudiofilters {

/// Chorus or flanger: a number of voices read one modulated delay per channel, each swept by an
/// LFO of its own phase (and, for the chorus, a slightly different rate), and the voices'
/// average is mixed with the dry signal. The chorus reads around 20 ms with no feedback; the
/// flanger around 1 ms with half the wet fed back.
///
/// Parameters (normalised 0..1): 0 mode (chorus below 0.5, flanger above), 1 voices 1..8,
/// 2 depth 0..100 %, 3 rate 0.05..5 Hz, 4 mix 0..100 %. Out of range values are held to 0..1, a
/// value that is no number reads as the default. Threads as for `Flanger`.
class ChorusFlanger : public ReferenceEffect {
public:
    enum ParameterIndex : int { kMode = 0, kVoices = 1, kDepth = 2, kRate = 3, kMix = 4 };
    static constexpr int kParameterCount = 5;
    static constexpr int kMaxVoices = 8;
    static constexpr std::size_t kMaxChannels = 8;

    explicit ChorusFlanger(float sampleRate = 48000.0f, std::size_t channelCount = 2);

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
    std::array<double, kMaxVoices> phases_{};
};

} // namespace qoraudiofilters
