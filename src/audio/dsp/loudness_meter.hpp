#pragma once

#include "audio/dsp/reference_effect.hpp"

#include <cstddef>
#include <memory>

namespace qoraudiofilters {

/// What the editor shows; loudness in LUFS, true peak in dBTP; values floored at -300 (no signal
/// or not yet measurable reads -300, never -inf or NaN).
struct LoudnessMeterValues {
    float momentary = -300, shortTerm = -300, maxShortTerm = -300, integrated = -300,
          loudnessRange = 0, truePeak = -300;
    bool shortTermValid = false, integratedValid = false, rangeValid = false, reserved = false;
};

/// The loudness meter: the sound passes unchanged and is measured by libebur128 (K-weighted
/// momentary loudness over 400 ms, short-term over 3 s, the gated integrated loudness, the
/// loudness range and the true peak, 4 times oversampled below 96 kHz). The histograms of the
/// library's histogram mode hold the history, so memory stays constant however long it runs.
///
/// Channels are weighted by their labels: left, right and centre 1, the surrounds 1.41, the LFE
/// not at all; a mono meter counts its channel twice, as a mono track heard on two loudspeakers,
/// so it reads what a stereo meter reads for the same signal in both channels.
///
/// Readings (`GetLoudnessMeterValues`), published after every processed block: the momentary
/// loudness of the newest 400 ms and the largest true peak of any channel since the reset, as of
/// the block's end; the short-term loudness of the newest 3 s (valid once 3 s were measured),
/// the largest valid short-term reading since the reset, the integrated loudness (valid once a
/// 400 ms block passed the absolute gate at -70 LUFS, -300 before) and the loudness range (valid
/// once a 3 s block passed that gate, 0 before), as of the library's last step of 100 ms, where
/// its blocks close. The time before a reset counts as silence. Samples that are not finite are
/// measured as silence (they still pass through as they are).
///
/// Parameters only concern the display: the target loudness (-36..-6 LUFS), the highest true
/// peak allowed (-12..3 dBTP), the scale (real 0 the "+9" scale, 1 the "+18" one; its range
/// descends), the unit (0..3: LUFS, LKFS, LU/LUFS, LU/LKFS) and where low levels start
/// (-30..-6 LU).
///
/// Threads: the process thread measures and publishes through a triple buffer; readers on other
/// threads never wait for it. The library has no reset, so the meter keeps a spare measurement
/// made on the main thread: a reset swaps it in without allocating, and the main thread renews
/// the spare (`PrepareNextReset`) afterwards. A reset that finds no fresh spare clears the
/// readings and measures nothing until one is ready.
class LoudnessMeter : public ReferenceEffect {
public:
    enum ParameterIndex : int {
        kTargetLevel = 0,
        kMaxTruePeak = 1,
        kScale = 2,
        kUnit = 3,
        kLowLevelBelow = 4
    };
    static constexpr int kParameterCount = 5;
    static constexpr float kFloor = -300.0f;

    /// Rate and channel count as for `ReferenceEffect`. A rate the library cannot measure at
    /// (below 16 Hz or above 2822400 Hz) makes a meter that passes the sound and reads nothing.
    explicit LoudnessMeter(float sampleRate = 48000.0f, std::size_t channelCount = 2);
    ~LoudnessMeter() override;

    /// Main thread: the newest values the process thread published (lock-free hand-over).
    LoudnessMeterValues GetLoudnessMeterValues() const;
    /// Process thread: forgets every history (momentary, short-term and its maximum,
    /// integrated, range, true peak) and starts measuring anew.
    void ResetOnProcessThread();
    /// Main thread: once a reset has taken the spare measurement, makes a new one (allocates).
    /// The reset message, the meter message and the editor's sync call it; whoever calls
    /// `ResetOnProcessThread` directly calls it afterwards.
    void PrepareNextReset();
    /// False when the library refused the rate or the channels.
    bool IsMeasuring() const;

    // ReferenceEffect: Process passes the audio through unchanged and measures it; Reset is
    // ResetOnProcessThread; UpdateFromParameters prepares the next reset.
    void Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                 std::size_t frameCount) override;
    void Reset() override;
    void UpdateFromParameters() override;

private:
    // The measurements, the spare's hand-over and the published values.
    struct state_t;

    std::unique_ptr<state_t> state_;
};

} // namespace qoraudiofilters
