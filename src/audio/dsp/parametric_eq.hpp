#pragma once

#include "audio/dsp/biquad.hpp"
#include "audio/dsp/reference_effect.hpp"
#include "audio/dsp/spectrum_meter_dsp.hpp"
#include "platform/core/intrusive_ptr.hpp"

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

namespace qoraudiofilters {

/// The parametric equaliser: a chain of recursive sections, in signal order a Butterworth high
/// pass, a low shelf, five peaking bands, a high shelf, a Butterworth low pass and the master
/// gain. Disabled elements, and sections that would pass the signal unchanged (0 dB), are left
/// out of the chain, so they change nothing at all.
///
/// Parameters (normalised 0..1; see `ParameterIndex`): frequencies v * (Nyquist - 20) + 20 Hz,
/// limited to 0.49 of the rate; gains v * 96 - 48 dB; Q and band widths v * 9999.9999 + 0.0001
/// (width in Hz; constant width sets Q = centre / width, limited to 0.0001..10000); master gain
/// v * 144 - 96 dB; switches on above 0.5; pass slopes n = round(v * 10) limited to 1..8, the
/// Butterworth order (6n dB per octave). Values outside 0..1 are limited to it; a value that is
/// not a number reads as the parameter's default.
///
/// Designs: peaking bands and second-order shelves are the usual bilinear designs (bandwidth
/// between the half-gain frequencies, shelf slope 1), first-order shelves the bilinear
/// transform of the first-order shelf; both shelves have half their dB gain at the corner. The
/// passes are n / 2 second-order sections with the Butterworth pole Qs and one first-order
/// section for odd n, -3.01 dB at the cutoff whatever the order. The normal path runs the
/// sections in single precision (float coefficients and state), Ultra-Quiet the same sections
/// in double precision; both use direct form I, whose state is the signal itself.
///
/// Threads: every parameter write designs the whole chain on the writing thread and, when it
/// differs from the last, hands it over through a triple buffer of plain designs; the process
/// thread takes the newest at its next chunk of at most 256 frames, never locks, allocates or
/// frees. It then runs the old and the new chain side by side for `kCrossfadeSeconds` and
/// crossfades from the one to the other (raised cosine), the new chain starting from the old
/// one's signal history, so neither gain steps, nor enables, nor a change of precision click;
/// designs written meanwhile wait for the fade to end. Between chunks the state is rid of values
/// so small that they would turn denormal (and of values that are not numbers, which an input
/// that is not one leaves behind).
///
/// The spectrum meter exists from the start and, while active, sees every input block before
/// it is filtered.
class ParametricEQ : public ReferenceEffect {
public:
    enum ParameterIndex : int {
        kLowShelfFrequency = 0,
        kLowShelfGain = 1,
        kHighShelfFrequency = 2,
        kHighShelfGain = 3,
        kFirstBand = 4, // band b (0..4): 4 + 4b centre, 5 + 4b Q, 6 + 4b gain, 7 + 4b enable
        kMasterGain = 24,
        kConstantQ = 25,
        kLowShelfSecondOrder = 26,
        kHighShelfSecondOrder = 27,
        kUltraQuiet = 28,
        kLowShelfEnable = 29,
        kHighShelfEnable = 30,
        kFirstBandWidth = 32, // band b width at 32 + b
        kHighPassEnable = 37,
        kHighPassFrequency = 38,
        kHighPassSlope = 39,
        kLowPassEnable = 40,
        kLowPassFrequency = 41,
        kLowPassSlope = 42,
        kLowFilterRange = 44, // display only: the editor's 30 dB range; no effect on sound
    };
    static constexpr int kParameterCount = 45; // 31 and 43 exist but mean nothing
    static constexpr int kBandCount = 5;
    static constexpr int kMaxPassOrder = 8;
    /// Length of the crossfade from the old chain to the new one.
    static constexpr double kCrossfadeSeconds = 0.01;

    static constexpr int BandFrequencyIndex(int band) { return kFirstBand + 4 * band; }
    static constexpr int BandQIndex(int band) { return kFirstBand + 4 * band + 1; }
    static constexpr int BandGainIndex(int band) { return kFirstBand + 4 * band + 2; }
    static constexpr int BandEnableIndex(int band) { return kFirstBand + 4 * band + 3; }
    static constexpr int BandWidthIndex(int band) { return kFirstBandWidth + band; }

    /// Rate and channel count as for `ReferenceEffect`.
    explicit ParametricEQ(float sampleRate = 48000.0f, std::size_t channelCount = 2);
    ~ParametricEQ() override;

    /// The meter the filter owns from its creation (input signal, all channels).
    const qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP>& GetSpectrumMeter() const;
    /// Main thread: feed (or stop feeding) that meter from the process thread.
    void SetMeterActive(bool active);
    bool IsMeterActive() const;

    /// Custom data 0: the magnitude response in dB of what the process thread applies (or will
    /// apply once it takes over the newest design), master gain included, at `size` frequencies
    /// f_i = 20 * (Nyquist / 20)^(i / size), i = 0..size-1. Size 0 gives an empty vector and
    /// returns 0; another index or a size outside 0..65536 returns 0 and leaves `out` alone.
    /// Returns `size` otherwise.
    int GetCustomFloatData(int index, int size, std::vector<float>& out) override;
    /// The same magnitude at one frequency (Hz), from the same coefficients; at least -400 dB.
    /// A frequency that is not a number gives one that is not either.
    double GetResponseDecibels(double hz) const;
    /// The sections of that design in signal order, with the coefficients the audio runs
    /// through (rounded to float unless Ultra-Quiet), and its master gain as a factor.
    std::vector<qoraudiotoolkit::Biquad> GetSections() const;
    double GetOutputGain() const;

    // ReferenceEffect
    void Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                 std::size_t frameCount) override;
    void Reset() override;
    void UpdateFromParameters() override;

private:
    // The design handed over last (the main side's, under its lock), the hand-over, and the
    // chains the process thread runs.
    struct state_t;

    /// Designs the chain from the stored values and hands it over when it changed.
    void Rebuild();

    std::unique_ptr<state_t> state_;
    std::atomic<bool> meterActive_{false};
    qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP> meter_;
};

} // namespace qoraudiofilters
