#pragma once

#include <cstddef>

namespace qoraudiotoolkit {

/// The fixed tables of spectrum analysis: FFT block sizes, third-octave and critical-band
/// centre frequencies. They live here, below the graphs, so the spectrum painter can lay out
/// bands without the analysis engine; `SpectrumMeterDSP` inherits them.
class SpectrumBandTables {
public:
    /// 512 << index, for the indexes 0 to 6 that the analysis offers (512 to 32768 points).
    static unsigned int GetFFTBlockSize(unsigned int index);
    static constexpr unsigned int kNumFFTBlockSizes = 7;

    /// ISO nominal third-octave centres from 20 Hz to 20 kHz.
    static std::size_t GetNumThirdOctaveBands();
    static float GetThirdOctaveBand(std::size_t index);

    /// Centres of the 24 critical bands of hearing, 50 Hz to 13.5 kHz.
    static std::size_t GetNumCriticalBands();
    static float GetCriticalBand(std::size_t index);
};

} // namespace qoraudiotoolkit
