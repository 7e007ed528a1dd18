#pragma once

#include "audio/dsp/reference_effect.hpp"

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

namespace qoraudiofilters {

/// The dynamics processor: a transfer curve of up to seven points, input level to output level
/// in dB, applied to the level a detector reads.
///
/// Signal path, per channel: the input gain; a side chain that the detector hears, limited to
/// the band between the low and high cutoffs (a second-order Butterworth high pass and low
/// pass; each is left out at its end of the range, 20 Hz and Nyquist); the detector, peak (the
/// magnitude) or RMS (the root of a 20 ms mean square), smoothed with its attack and release;
/// the gain computer, which reads the curve at that level; the gain's own smoothing (its attack
/// where the reduction grows); the audio delayed by the look-ahead; then the gain, the output
/// gain and the make-up gain. Linked channels share one gain, computed from the loudest
/// channel's detector.
///
/// The curve: points sorted by input, joined by straight segments, or with splines on by the
/// natural cubic spline through them (as long as their inputs rise strictly). Below the first
/// point the first point's gain holds, so silence is never raised; past the last point the last
/// segment's line goes on. With the noise gate on, a segment steeper than 50:1 expansion (the
/// output rising more than 50 dB per input dB) is a gate's threshold: levels below its top are
/// muted (-300 dB), those of the highest such segment. No point changes nothing. The curve's
/// gain is held within -300..+100 dB.
///
/// Parameters (normalised 0..1, decoded as the editor's sheet does): 0 detector attack
/// (v * 500 ms), 1 detector release (v * 2000 ms), 2 gain attack (v * 500 ms), 3 gain release
/// (v * 2000 ms), 4 look-ahead (v * 500 ms), 5 input gain and 6 output gain (v * 96 - 48 dB),
/// 7 low and 8 high cutoff (v * (Nyquist - 20) + 20 Hz), 9 lock (stored only), 10 the number
/// of points (v * 7 + 0.5, truncated), 11 link channels, 12 RMS, 13 envelope (stored only),
/// 14 splines, 15 noise gate (switches on above 0.5), 16 the editor's tab (stored only), 17 to
/// 30 input and output of points 0 to 6 in pairs ((v - 1) * 100 dB), 31 make-up gain
/// (v * 100 dB). Values outside 0..1 are limited to it; a value that is not a number reads as
/// the parameter's default. Samples that are not finite are processed as silence.
///
/// Threads: every parameter write decodes the settings on the writing thread and hands them
/// over through a triple buffer; the process thread takes the newest at its next block and never
/// locks, allocates or frees. Meter readings belong to the process thread: the meter message
/// reads them there, between blocks.
class Dynamics : public ReferenceEffect {
public:
    enum ParameterIndex : int {
        kParameterIndex_AttackTime = 0,
        kParameterIndex_ReleaseTime = 1,
        kParameterIndex_EnvelopeAttackTime = 2,
        kParameterIndex_EnvelopeGainReleaseTime = 3,
        kParameterIndex_LookAhead = 4,
        kParameterIndex_InputGainDB = 5,
        kParameterIndex_OutputGainDB = 6,
        kParameterIndex_LoFreq = 7,
        kParameterIndex_HiFreq = 8,
        kParameterIndex_Lock = 9,
        kPointCount = 10,
        kParameterIndex_CompJoint = 11,
        kParameterIndex_RMS = 12,
        kParameterIndex_Envelope = 13,
        kParameterIndex_Splines = 14,
        kParameterIndex_DoingNoiseGate = 15,
        kCurrentTab = 16,
        kFirstPoint = 17, // point i: input at 17 + 2i, output at 18 + 2i
        kMakeUpGain = 31,
    };
    static constexpr int kParameterCount = 32;
    static constexpr int kMaxPointCount = 7;
    /// The horizontal range of the curve, in dB.
    static constexpr double kCurveStart = -100.0;
    static constexpr double kCurveEnd = 0.0;
    /// A segment steeper than this expands enough to be gated.
    static constexpr double kGateSlope = 50.0;
    static constexpr double kMaxLookAheadSeconds = 0.5;
    static constexpr double kRMSWindowMilliseconds = 20.0;

    static constexpr int PointInputIndex(int point) { return kFirstPoint + 2 * point; }
    static constexpr int PointOutputIndex(int point) { return kFirstPoint + 2 * point + 1; }

    /// Rate and channel count as for `ReferenceEffect`.
    explicit Dynamics(float sampleRate = 48000.0f, std::size_t channelCount = 2);
    ~Dynamics() override;

    /// The static curve the processor applies, at `pointCount` inputs spread evenly over the
    /// curve's range: value i at -100 + 100 * i / pointCount dB, as a graph spreads values over
    /// its width. Each value is the output level in dB for that detector level: after the
    /// input gain (the horizontal axis is what the detector reads) and before the output and
    /// make-up gains (the drawn points are the curve's own); -300 where the gate mutes.
    /// Channel 0 only; returns `pointCount`, or 0 (leaving `out` alone) for another channel or
    /// a count outside 1..65536.
    int GetResponseCurve(int channel, int pointCount, std::vector<float>& out) override;
    /// Custom data 0 is the same curve, for the sheet's `spline_curve_points`.
    int GetCustomFloatData(int index, int size, std::vector<float>& out) override;
    /// The curve's output level in dB at one detector level, as `GetResponseCurve` reads it.
    double GetCurveOutputDecibels(double inputDecibels) const;

    /// Process thread (the meter message): the smallest gain the curve applied since the last
    /// read, as a linear factor (1 when nothing is reduced; above 1 where the curve raises),
    /// and each channel's highest detector level since then, linear, into `levels` (at most
    /// `count`). Readings start anew from the current state.
    void ReadMeters(float& gain, float* levels, std::size_t count);

    // ReferenceEffect
    void Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                 std::size_t frameCount) override;
    void Reset() override;
    /// The look-ahead in samples.
    std::size_t GetLatencySamples() const override;
    void UpdateFromParameters() override;

private:
    // The decoded settings (the main side's under its lock), their hand-over, and what the
    // process thread runs on.
    struct state_t;

    /// Decodes the settings from the stored values and hands them over when they changed.
    void Rebuild();
    /// The curve at `pointCount` levels over its range; 0 for a count outside 1..65536.
    int SampleCurve(int pointCount, std::vector<float>& out) const;

    std::unique_ptr<state_t> state_;
    std::atomic<std::size_t> latency_{0};
};

} // namespace qoraudiofilters
