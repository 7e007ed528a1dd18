#pragma once

#include "audio/dsp/reference_effect.hpp"

#include <atomic>
#include <cstddef>
#include <memory>

namespace qoraudiofilters {

/// Limiter, compressor and gate in one band, in signal order gate, compressor, make-up gain,
/// limiter, output gain. One detector reads the loudest channel (so the channels are treated
/// alike): its peak envelope rises at once and falls with `kDetectorReleaseMilliseconds`, or,
/// with RMS detection, its mean square over `kDetectorReleaseMilliseconds`.
///
/// On the detected level x in dB, for a steady signal:
/// - the gate: `ExpanderGain(x, gate threshold, gate ratio)`, no deeper than `kGateFloor`;
/// - the compressor: `CompressorGain(x, compressor threshold, compressor ratio)` (hard knee);
/// - the make-up gain: with auto make-up on, the compressor's reduction of a full-scale level
///   (0 dB) given back; else 0;
/// - the limiter: `CompressorGain` at its own threshold and ratio of the level after the three
///   before, x + gate + compressor + make-up;
/// - the output gain.
/// `GetStaticOutputDecibels` is that curve. Each stage smooths its gain change with its own
/// attack and release: the gate's attack opens it, the others' attack deepens their reduction.
/// With auto smoothing the compressor's and limiter's reductions also run through a slow path
/// (attack and release four times the release time) and the deeper of the two applies: a short
/// peak lets go fast, a long stretch of reduction slowly. Make-up and output gain
/// follow their settings within `kGainSmoothingMilliseconds`.
///
/// Parameters (normalised 0..1): stage s (0 limiter, 1 compressor, 2 gate) has 4s ratio
/// (1..30), 4s+1 threshold (-60..0 dB), 4s+2 attack (0..500 ms), 4s+3 release (0..5000 ms);
/// 12 output gain (-30..30 dB), switches 13 auto make-up gain, 14 RMS detection, 15 auto
/// smoothing (on at 0.5 and above). Values outside 0..1 are limited to it; a value that is not a
/// number reads as the default. Samples that are not finite come out as silence and are measured
/// as silence.
///
/// Threads: parameter writes decode on the writing thread into atomic plain values that the
/// process thread takes at each block; it never locks, allocates or frees. The readings for
/// meters are atomic; the output peaks are gathered only while the meter is active. The
/// display ranges belong to the editor's thread.
class SingleBandDynamics : public ReferenceEffect {
public:
    enum Stage : int { kLimiter = 0, kCompressor = 1, kGate = 2 };
    enum ParameterIndex : int {
        kLimiterRatio = 0,
        kLimiterThreshold = 1,
        kLimiterAttack = 2,
        kLimiterRelease = 3,
        kCompressorRatio = 4,
        kCompressorThreshold = 5,
        kCompressorAttack = 6,
        kCompressorRelease = 7,
        kGateRatio = 8,
        kGateThreshold = 9,
        kGateAttack = 10,
        kGateRelease = 11,
        kOutputGain = 12,
        kAutoMakeupGain = 13,
        kRMSDetection = 14,
        kAutoSmoothing = 15,
    };
    static constexpr int kParameterCount = 16;
    static constexpr int RatioIndex(int stage) { return 4 * stage; }
    static constexpr int ThresholdIndex(int stage) { return 4 * stage + 1; }
    static constexpr int AttackIndex(int stage) { return 4 * stage + 2; }
    static constexpr int ReleaseIndex(int stage) { return 4 * stage + 3; }

    static constexpr double kDetectorReleaseMilliseconds = 50.0;
    static constexpr double kGainSmoothingMilliseconds = 10.0;
    static constexpr double kGateFloor = -90.0;

    /// A span of levels in dB, low below high.
    struct DisplayRange {
        float low = 0.0f;
        float high = 0.0f;
        friend bool operator==(const DisplayRange&, const DisplayRange&) = default;
    };
    /// Where the graph's input axis may go.
    static constexpr DisplayRange kHorizontalBounds{-96.0f, 0.0f};
    /// Where its output axis may go: from the input's floor to a little above what the output
    /// gain alone can lift a full-scale level.
    static constexpr DisplayRange kVerticalBounds{-96.0f, 36.0f};

    /// Rate and channel count as for `ReferenceEffect`.
    explicit SingleBandDynamics(float sampleRate = 48000.0f, std::size_t channelCount = 2);
    ~SingleBandDynamics() override;

    // Plain values of the settings the process thread applies (or takes at its next block).
    float GetLimThreshold() const;
    float GetCompThreshold() const;
    float GetGateThreshold() const;
    float GetLimRatio() const;
    float GetCompRatio() const;
    float GetGateRatio() const;
    float GetOutputGain() const;
    /// The make-up gain in dB that applies now (0 with auto make-up off).
    float GetMakeupGain() const;
    // Thresholds in dB, written as a user's change (limited to -60..0; NaN is ignored).
    void SetLimThreshold(float decibels);
    void SetCompThreshold(float decibels);
    void SetGateThreshold(float decibels);

    /// The output level in dB that a steady signal of detected level `inputDb` settles on:
    /// the curve above. NaN gives NaN.
    double GetStaticOutputDecibels(double inputDb) const;

    // The graph's ranges, kept with the effect so that a new editor shows what the last one
    // did. Input from -72 to 0 dB and output from -72 to 12 dB at first. A range that is not
    // finite, or not rising, is ignored; others are limited to the bounds.
    DisplayRange GetHorizontalDisplayRange() const { return horizontal_; }
    void SetHorizontalDisplayRange(DisplayRange range);
    DisplayRange GetVerticalDisplayRange() const { return vertical_; }
    void SetVerticalDisplayRange(DisplayRange range);
    /// Where the graph's output axis may go: `kVerticalBounds`.
    DisplayRange GetMaximumGainDisplayRange() const { return kVerticalBounds; }

    // Meters
    /// Main thread: gather (or stop gathering) the output peaks on the process thread.
    void SetMeterActive(bool active);
    bool IsMeterActive() const;
    /// The gain change of gate, compressor and limiter now, in dB (0 or below; make-up and
    /// output gain are not in it).
    float GetGainReduction() const;
    /// The detected level now, in dB (-300 for silence).
    float GetDetectedLevel() const;
    /// The process thread (or one that does not race it): the peak of each output channel since
    /// the last call, linear; 0 while the meter is inactive and for channels past the effect's.
    void ReadOutputLevels(float* levels, std::size_t count);

    // ReferenceEffect
    void Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                 std::size_t frameCount) override;
    void Reset() override;
    void UpdateFromParameters() override;

private:
    // The decoded settings, the detector, the stages' smoothers and the meters' readings.
    struct state_t;

    /// Decodes the stored values for the process thread.
    void Publish();
    void SetThreshold(int stage, float decibels);
    float Plain(int index) const;

    std::unique_ptr<state_t> state_;
    std::atomic<bool> meterActive_{false};
    DisplayRange horizontal_{-72.0f, 0.0f};
    DisplayRange vertical_{-72.0f, 12.0f};
};

} // namespace qoraudiofilters
