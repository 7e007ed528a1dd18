#pragma once

#include "audio/dsp/reference_effect.hpp"

#include <cstddef>
#include <memory>

namespace qoraudiofilters {

/// A downward compressor over the whole band: a peak detector on the loudest channel (so the
/// channels are compressed alike and the stereo image stays), the compressor's static curve on
/// the detected level, the gain change smoothed with the attack and release times, then the
/// output gain.
///
/// Parameters (normalised 0..1, plain values through their descriptors): 0 threshold -60..0
/// dB, 1 ratio 1..30, 2 attack 0..500 ms, 3 release 0..5000 ms, 4 output gain -30..30 dB.
/// Values outside 0..1 are limited to it; a value that is not a number reads as the default.
///
/// Detection: the peak envelope of the loudest channel rises at once and falls with
/// `kDetectorReleaseMilliseconds`; its level in dB goes through `CompressorGain`. The attack
/// smooths a growing reduction, the release a shrinking one (`AttackRelease` on the reduction).
/// The output gain follows its parameter within `kGainSmoothingMilliseconds`, so a change
/// does not click. For a steady signal the applied gain is `GetStaticGainDecibels` of its peak
/// level. Samples that are not finite come out as silence and are measured as silence.
///
/// Threads: parameter writes decode on the writing thread into atomic plain values, which the
/// process thread takes at every block; it never locks, allocates or frees. The meters'
/// readings (`GetLevels`, `GetGainReduction`) are atomic too.
class SingleBandCompressor : public ReferenceEffect {
public:
    enum ParameterIndex : int {
        kThreshold = 0,
        kRatio = 1,
        kAttack = 2,
        kRelease = 3,
        kOutputGain = 4,
    };
    static constexpr int kParameterCount = 5;
    static constexpr double kDetectorReleaseMilliseconds = 50.0;
    static constexpr double kGainSmoothingMilliseconds = 10.0;

    /// Rate and channel count as for `ReferenceEffect`; a hard knee.
    explicit SingleBandCompressor(float sampleRate = 48000.0f, std::size_t channelCount = 2);
    ~SingleBandCompressor() override;

    /// The gain in dB (output gain included) that the effect settles on for a steady signal
    /// whose peak level is `inputDb`, with the settings the process thread applies (or takes at
    /// its next block). NaN gives NaN.
    double GetStaticGainDecibels(double inputDb) const;
    double GetKneeDecibels() const { return kneeDecibels_; }

    /// The compressor's gain change now, in dB (0 or below; the output gain is not in it).
    float GetGainReduction() const;
    /// The process thread (or one that does not race it): the peak of each output channel since
    /// the last call, as linear amplitudes; channels past the effect's read 0.
    void GetLevels(float* levels, std::size_t count);

    // ReferenceEffect
    void Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                 std::size_t frameCount) override;
    void Reset() override;
    void UpdateFromParameters() override;

protected:
    /// For an effect built on this one: its own defaults and a knee of `kneeDecibels` (centred
    /// on the threshold).
    SingleBandCompressor(float sampleRate, std::size_t channelCount, double kneeDecibels,
                         const float (&defaults)[kParameterCount]);

    /// The process thread: runs over each output channel after the gain, in place; the place
    /// for an effect built on this one to colour the sound. Nothing here.
    virtual void ShapeOutput(float* samples, std::size_t count);

private:
    // The decoded settings, the detector and the smoothers, and the meters' readings.
    struct state_t;

    /// Decodes the stored values for the process thread.
    void Publish();

    double kneeDecibels_;
    std::unique_ptr<state_t> state_;
};

} // namespace qoraudiofilters
