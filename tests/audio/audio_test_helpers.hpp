#pragma once

#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

namespace audiotest {

inline std::vector<float> Sine(double hz, double amplitude, double sampleRate, std::size_t length,
                               double phase = 0.0) {
    std::vector<float> out(length);
    for (std::size_t i = 0; i < length; ++i)
        out[i] = float(amplitude *
                       std::sin(2.0 * std::numbers::pi * hz * double(i) / sampleRate + phase));
    return out;
}

/// The amplitude of the component at `hz` over `count` samples from `first`, by correlation
/// with a sine and a cosine; exact for a whole number of periods, close otherwise.
inline double AmplitudeAt(const std::vector<float>& signal, double hz, double sampleRate,
                          std::size_t first, std::size_t count) {
    double re = 0.0;
    double im = 0.0;
    for (std::size_t i = first; i < first + count; ++i) {
        const double phase = 2.0 * std::numbers::pi * hz * double(i) / sampleRate;
        re += signal[i] * std::cos(phase);
        im += signal[i] * std::sin(phase);
    }
    return 2.0 * std::hypot(re, im) / double(count);
}

inline double Decibels(double amplitude) {
    return 20.0 * std::log10(amplitude);
}

/// The largest difference between neighbouring samples from `first` on.
inline double LargestStep(const std::vector<float>& signal, std::size_t first = 1) {
    double largest = 0.0;
    for (std::size_t i = std::max<std::size_t>(first, 1); i < signal.size(); ++i)
        largest = std::max(largest, double(std::abs(signal[i] - signal[i - 1])));
    return largest;
}

} // namespace audiotest
