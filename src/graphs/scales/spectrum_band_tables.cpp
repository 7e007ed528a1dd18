#include "graphs/scales/spectrum_band_tables.hpp"

#include <algorithm>
#include <array>

namespace qoraudiotoolkit {

namespace {

constexpr std::array<float, 31> third_octave_centres{
    20,   25,   31.5f, 40,   50,   63,    80,    100,   125,  160,  200,
    250,  315,  400,   500,  630,  800,   1000,  1250,  1600, 2000, 2500,
    3150, 4000, 5000,  6300, 8000, 10000, 12500, 16000, 20000};

constexpr std::array<float, 24> critical_band_centres{
    50,   150,  250,  350,  450,  570,  700,  840,  1000, 1170, 1370,  1600,
    1850, 2150, 2500, 2900, 3400, 4000, 4800, 5800, 7000, 8500, 10500, 13500};

} // namespace

unsigned int SpectrumBandTables::GetFFTBlockSize(unsigned int index) {
    return 512u << std::min(index, kNumFFTBlockSizes - 1);
}

std::size_t SpectrumBandTables::GetNumThirdOctaveBands() {
    return third_octave_centres.size();
}

float SpectrumBandTables::GetThirdOctaveBand(std::size_t index) {
    return third_octave_centres[std::min(index, third_octave_centres.size() - 1)];
}

std::size_t SpectrumBandTables::GetNumCriticalBands() {
    return critical_band_centres.size();
}

float SpectrumBandTables::GetCriticalBand(std::size_t index) {
    return critical_band_centres[std::min(index, critical_band_centres.size() - 1)];
}

} // namespace qoraudiotoolkit
