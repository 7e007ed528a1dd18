#pragma once

#include <cstddef>
#include <vector>

namespace qoraudiotoolkit {

/// The analysis windows offered by the spectrum meter and the FFT filter, in the order of their
/// menus.
enum class WindowType : unsigned int {
    kTriangular = 0,
    kHann = 1,
    kHamming = 2,
    kBlackman = 3,
    kGaussian = 4,
    kBlackmanHarris = 5,
    kKaiser140 = 6,
    kKaiser180 = 7,
};

inline constexpr unsigned int kNumWindowTypes = 8;

/// The window of `size` points, periodic (the point after the last would repeat the first), as
/// a block transform with overlap needs it. A size of 0 gives an empty window.
std::vector<float> MakeWindow(WindowType type, std::size_t size);
/// The same into `out`, which holds `size` points; allocates nothing.
void FillWindow(WindowType type, float* out, std::size_t size);

/// The window type of a menu index; indexes past the last give the Hann window.
WindowType WindowTypeFromIndex(unsigned int index);

/// Equivalent noise bandwidth of a window in bins: size * sum(w^2) / sum(w)^2. A sine's power
/// spread over the neighbouring bins sums to its own power times this.
double EquivalentNoiseBandwidth(const std::vector<float>& window);

} // namespace qoraudiotoolkit
