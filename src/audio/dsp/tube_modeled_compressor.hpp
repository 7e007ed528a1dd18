#pragma once

#include "audio/dsp/single_band_compressor.hpp"

#include <cstddef>

namespace qoraudiofilters {

/// The single-band compressor with the colour of a valve stage: a soft knee of
/// `kKneeDecibels` centred on the threshold, and after the output gain a smooth saturation
/// (`Saturate`) that leaves quiet signals as they are and rounds loud ones off below full
/// scale, adding odd harmonics. The output gain thus drives the saturation.
///
/// Parameters as for `SingleBandCompressor`, with defaults of its own: -18 dB, 3:1, 20 ms,
/// 250 ms, 0 dB.
class TubeModeledCompressor : public SingleBandCompressor {
public:
    static constexpr double kKneeDecibels = 12.0;

    /// Rate and channel count as for `ReferenceEffect`.
    explicit TubeModeledCompressor(float sampleRate = 48000.0f, std::size_t channelCount = 2);

    /// The saturation curve: odd, slope 1 at 0, never reaching ±1 (tanh).
    static float Saturate(float sample);

protected:
    void ShapeOutput(float* samples, std::size_t count) override;
};

} // namespace qoraudiofilters
