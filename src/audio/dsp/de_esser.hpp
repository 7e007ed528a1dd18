#pragma once

#include "audio/dsp/reference_effect.hpp"
#include "audio/dsp/spectrum_meter_dsp.hpp"
#include "platform/core/intrusive_ptr.hpp"

#include <cstddef>
#include <memory>

namespace qoraudiofilters {

/// Tames sibilance: a band-pass side chain centred on the sibilant band measures its level
/// (mean square over `kDetectorWindowMilliseconds`, the loudest channel, so every channel gets
/// the same gain); above the threshold the band is pulled down towards it at `kRatio`, the
/// gain change smoothed by `kAttackMilliseconds` and `kReleaseMilliseconds`.
///
/// Modes: wide band applies the gain to the whole signal; band only splits the band out with
/// the side chain's band-pass and its complement (input minus band), applies the gain to the
/// band alone and adds the rest back, so that with no reduction the signal passes bit for bit
/// (up to rounding). "Output sibilance only" plays the side chain's band instead, so the band
/// can be tuned by ear.
///
/// Parameters (normalised 0..1): 0 mode (band only when >= 0.5), 1 threshold -80..0 dB,
/// 2 output sibilance only (on when >= 0.5), 3 centre frequency 500..12000 Hz, 4 bandwidth
/// 100..7500 Hz. Values that are no number read as the default; the band is kept below
/// Nyquist.
///
/// Threads: writes decode into atomics on the writing thread; the process thread takes them
/// at each block, redesigns its filters when they changed, and never locks, allocates or
/// frees. The spectrum meter is installed with `SwapSpectrumMeter` on the process thread.
class DeEsser : public ReferenceEffect {
public:
    enum ParameterIndex : int {
        kMode = 0,
        kThreshold = 1,
        kOutputSibilanceOnly = 2,
        kCenterFrequency = 3,
        kBandwidth = 4,
    };
    static constexpr int kParameterCount = 5;
    static constexpr double kRatio = 20.0;
    static constexpr double kDetectorWindowMilliseconds = 10.0;
    static constexpr double kAttackMilliseconds = 1.0;
    static constexpr double kReleaseMilliseconds = 30.0;

    /// Rate and channel count as for `ReferenceEffect`. Band only, -30 dB, 7000 Hz, 4000 Hz.
    explicit DeEsser(float sampleRate = 48000.0f, std::size_t channelCount = 2);
    ~DeEsser() override;

    /// The gain change now, in dB (0 or below).
    float GetGainReduction() const;
    /// The gain change in dB the detector settles on for a steady band level of `bandDb` (mean
    /// square, dB re full scale); NaN gives NaN.
    double GetStaticReduction(double bandDb) const;

    /// The process thread: installs `meter` (or none), fed with every input block, and
    /// returns the meter it had. Nothing is released here: the old meter changes hands.
    qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP>
    SwapSpectrumMeter(qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP> meter);

    // ReferenceEffect
    void Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                 std::size_t frameCount) override;
    void Reset() override;
    void UpdateFromParameters() override;

private:
    struct state_t;

    void Publish();

    std::unique_ptr<state_t> state_;
    qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP> meter_;
};

} // namespace qoraudiofilters
