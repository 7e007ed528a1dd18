#include "audio/dsp/window_function.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qoraudiotoolkit {

namespace {

// Sidelobe attenuation in decibels to the Kaiser shape parameter.
double KaiserBeta(double attenuation) {
    return 0.1102 * (attenuation - 8.7);
}

double Kaiser(double beta, double x) {
    // x runs over -1..1 across the window.
    const double r = std::sqrt(std::max(0.0, 1.0 - x * x));
    return std::cyl_bessel_i(0.0, beta * r) / std::cyl_bessel_i(0.0, beta);
}

double Cosines(double phase, double a0, double a1, double a2, double a3) {
    return a0 - a1 * std::cos(phase) + a2 * std::cos(2.0 * phase) - a3 * std::cos(3.0 * phase);
}

} // namespace

std::vector<float> MakeWindow(WindowType type, std::size_t size) {
    std::vector<float> window(size);
    FillWindow(type, window.data(), size);
    return window;
}

void FillWindow(WindowType type, float* window, std::size_t size) {
    const double n = double(size);
    for (std::size_t i = 0; i < size; ++i) {
        const double phase = 2.0 * std::numbers::pi * double(i) / n;
        // Position from -1 to 1 over the period, 0 in the middle.
        const double x = 2.0 * double(i) / n - 1.0;
        double w = 1.0;
        switch (type) {
        case WindowType::kTriangular: w = 1.0 - std::abs(x); break;
        case WindowType::kHann: w = Cosines(phase, 0.5, 0.5, 0.0, 0.0); break;
        case WindowType::kHamming: w = Cosines(phase, 0.54, 0.46, 0.0, 0.0); break;
        case WindowType::kBlackman: w = Cosines(phase, 0.42, 0.5, 0.08, 0.0); break;
        case WindowType::kGaussian: w = std::exp(-0.5 * (x / 0.4) * (x / 0.4)); break;
        case WindowType::kBlackmanHarris:
            w = Cosines(phase, 0.35875, 0.48829, 0.14128, 0.01168);
            break;
        case WindowType::kKaiser140: w = Kaiser(KaiserBeta(140.0), x); break;
        case WindowType::kKaiser180: w = Kaiser(KaiserBeta(180.0), x); break;
        }
        window[i] = float(w);
    }
}

WindowType WindowTypeFromIndex(unsigned int index) {
    return index < kNumWindowTypes ? static_cast<WindowType>(index) : WindowType::kHann;
}

double EquivalentNoiseBandwidth(const std::vector<float>& window) {
    double sum = 0.0;
    double squares = 0.0;
    for (float w : window) {
        sum += w;
        squares += double(w) * w;
    }
    return sum > 0.0 ? double(window.size()) * squares / (sum * sum) : 0.0;
}

} // namespace qoraudiotoolkit
