#pragma once

#include "audio/dsp/biquad.hpp"
#include "audio/dsp/reference_effect.hpp"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace qoraudiofilters {

/// The graphic equaliser: one peaking section per band at a fixed centre, in series, then the
/// master gain. 10 bands sit on the octave centres 31.5 Hz .. 16 kHz, 20 on the half-octave
/// centres 31.5 Hz .. 22.4 kHz, 30 on the third-octave centres 25 Hz .. 20 kHz (nominal values;
/// the filters use the exact ratios from the lowest centre, held below 0.45 of the rate).
///
/// Parameters (normalised 0..1; bands first, then `MasterGainIndex()` and the three after it):
/// - band b: gain v * 48 - 24 dB, then held within +-range;
/// - master gain: v * 48 - 24 dB;
/// - range: the faders' reach, v * 18 + 6 dB (6..24 dB); band gains beyond it are held to it;
/// - width: each band's width between its half-gain frequencies, v * 2.5 + 0.5 (0.5..3) times
///   the band spacing (1, 1/2 or 1/3 octave), 1.5 by default;
/// - bypass: on above 0.5, the signal passes unchanged.
/// Values outside 0..1 are held to it; a value that is not a number reads as the default.
///
/// The bands overlap, so each section's own gain is solved so that the chain's response at every
/// centre equals that centre's fader: one band moved alone reads its gain at its centre, and
/// equal faders give a curve flat between the centres.
///
/// Threads: a parameter write designs the chain on the writing thread and hands it over through
/// a triple buffer; the process thread takes the newest at its next chunk of at most 256 frames
/// without locking, allocating or freeing, and crossfades from the old chain to the new one over
/// `kCrossfadeSeconds` (raised cosine), the new one starting from the old one's history, so that
/// no change clicks.
class GraphicEQ : public ReferenceEffect {
public:
    static constexpr int kMaxBands = 30;
    static constexpr double kCrossfadeSeconds = 0.01;

    /// `bandCount` is 10, 20 or 30; anything else throws std::invalid_argument. Rate and channel
    /// count as for `ReferenceEffect`.
    explicit GraphicEQ(int bandCount = 10, float sampleRate = 48000.0f,
                       std::size_t channelCount = 2);
    ~GraphicEQ() override;

    int GetBandCount() const { return bandCount_; }
    int MasterGainIndex() const { return bandCount_; }
    int RangeIndex() const { return bandCount_ + 1; }
    int WidthIndex() const { return bandCount_ + 2; }
    int BypassIndex() const { return bandCount_ + 3; }

    /// The exact centre of band `band` (Hz) as the filter places it, and its nominal label.
    double GetBandCentre(int band) const;
    static std::string NominalLabel(int bandCount, int band);

    /// The magnitude in dB of the newest design at `hz`, master gain included; at least -400.
    double GetResponseDecibels(double hz) const;

    // ReferenceEffect
    void Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                 std::size_t frameCount) override;
    void Reset() override;
    void UpdateFromParameters() override;

private:
    struct state_t;

    void Rebuild();
    /// The sections' own gains (dB) that give `targets` at the centres.
    std::vector<double> SectionGains(const std::vector<double>& targets, double octaves) const;
    double BandQ(int band, double octaves) const;

    int bandCount_;
    std::unique_ptr<state_t> state_;
};

} // namespace qoraudiofilters
