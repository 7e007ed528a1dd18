#include "audio/dsp/biquad.hpp"

#include <cmath>
#include <numbers>

namespace qoraudiotoolkit {

namespace {

// Divides through by a0.
Biquad Normalised(double b0, double b1, double b2, double a0, double a1, double a2) {
    return Biquad{b0 / a0, b1 / a0, b2 / a0, a1 / a0, a2 / a0};
}

double Radians(double hz, double sampleRate) {
    return 2.0 * std::numbers::pi * hz / sampleRate;
}

// The prewarped corner of a first-order design, tan(w0 / 2).
double Prewarped(double hz, double sampleRate) {
    return std::tan(std::numbers::pi * hz / sampleRate);
}

// The largest float below `limit` (positive), as a double.
double FloatBelow(double limit) {
    float below = float(limit);
    if (double(below) >= limit)
        below = std::nextafter(below, 0.0f);
    return double(below);
}

} // namespace

Biquad Biquad::Peaking(double hz, double q, double decibels, double sampleRate) {
    const double w0 = Radians(hz, sampleRate);
    const double cosine = std::cos(w0);
    const double alpha = std::sin(w0) / (2.0 * q);
    const double a = std::pow(10.0, decibels / 40.0);
    return Normalised(1.0 + alpha * a, -2.0 * cosine, 1.0 - alpha * a, 1.0 + alpha / a,
                      -2.0 * cosine, 1.0 - alpha / a);
}

Biquad Biquad::LowShelf(double hz, double decibels, double sampleRate, bool secondOrder) {
    if (!secondOrder) {
        // (s + sqrt(G)) / (s + 1 / sqrt(G)) in s / w0: G at DC, 1 at the top, sqrt(G) at w0.
        const double k = Prewarped(hz, sampleRate);
        const double root = std::pow(10.0, decibels / 40.0);
        return Normalised(1.0 + k * root, k * root - 1.0, 0.0, 1.0 + k / root, k / root - 1.0, 0.0);
    }
    const double w0 = Radians(hz, sampleRate);
    const double cosine = std::cos(w0);
    const double a = std::pow(10.0, decibels / 40.0);
    const double shape = 2.0 * std::sqrt(a) * std::sin(w0) / std::numbers::sqrt2; // slope 1
    return Normalised(
        a * ((a + 1.0) - (a - 1.0) * cosine + shape), 2.0 * a * ((a - 1.0) - (a + 1.0) * cosine),
        a * ((a + 1.0) - (a - 1.0) * cosine - shape), (a + 1.0) + (a - 1.0) * cosine + shape,
        -2.0 * ((a - 1.0) + (a + 1.0) * cosine), (a + 1.0) + (a - 1.0) * cosine - shape);
}

Biquad Biquad::HighShelf(double hz, double decibels, double sampleRate, bool secondOrder) {
    if (!secondOrder) {
        // (sqrt(G) s + 1) / (s / sqrt(G) + 1) in s / w0: 1 at DC, G at the top, sqrt(G) at w0.
        const double k = Prewarped(hz, sampleRate);
        const double root = std::pow(10.0, decibels / 40.0);
        return Normalised(root + k, k - root, 0.0, 1.0 / root + k, k - 1.0 / root, 0.0);
    }
    const double w0 = Radians(hz, sampleRate);
    const double cosine = std::cos(w0);
    const double a = std::pow(10.0, decibels / 40.0);
    const double shape = 2.0 * std::sqrt(a) * std::sin(w0) / std::numbers::sqrt2;
    return Normalised(
        a * ((a + 1.0) + (a - 1.0) * cosine + shape), -2.0 * a * ((a - 1.0) + (a + 1.0) * cosine),
        a * ((a + 1.0) + (a - 1.0) * cosine - shape), (a + 1.0) - (a - 1.0) * cosine + shape,
        2.0 * ((a - 1.0) - (a + 1.0) * cosine), (a + 1.0) - (a - 1.0) * cosine - shape);
}

Biquad Biquad::LowPass(double hz, double q, double sampleRate) {
    const double w0 = Radians(hz, sampleRate);
    const double cosine = std::cos(w0);
    const double alpha = std::sin(w0) / (2.0 * q);
    return Normalised(0.5 * (1.0 - cosine), 1.0 - cosine, 0.5 * (1.0 - cosine), 1.0 + alpha,
                      -2.0 * cosine, 1.0 - alpha);
}

Biquad Biquad::HighPass(double hz, double q, double sampleRate) {
    const double w0 = Radians(hz, sampleRate);
    const double cosine = std::cos(w0);
    const double alpha = std::sin(w0) / (2.0 * q);
    return Normalised(0.5 * (1.0 + cosine), -(1.0 + cosine), 0.5 * (1.0 + cosine), 1.0 + alpha,
                      -2.0 * cosine, 1.0 - alpha);
}

Biquad Biquad::FirstOrderLowPass(double hz, double sampleRate) {
    const double k = Prewarped(hz, sampleRate);
    return Normalised(k, k, 0.0, 1.0 + k, k - 1.0, 0.0);
}

Biquad Biquad::FirstOrderHighPass(double hz, double sampleRate) {
    const double k = Prewarped(hz, sampleRate);
    return Normalised(1.0, -1.0, 0.0, 1.0 + k, k - 1.0, 0.0);
}

double Biquad::ButterworthQ(int order, int section) {
    // The poles sit on the unit circle at angles (2k + 1) pi / (2n) from the imaginary axis.
    const double angle = double(2 * section + 1) * std::numbers::pi / double(2 * order);
    return 1.0 / (2.0 * std::sin(angle));
}

std::complex<double> Biquad::Response(double hz, double sampleRate) const {
    const std::complex<double> z = std::polar(1.0, -Radians(hz, sampleRate));
    return (b0 + (b1 + b2 * z) * z) / (1.0 + (a1 + a2 * z) * z);
}

Biquad Biquad::RoundedToFloat() const {
    Biquad r{double(float(b0)), double(float(b1)), double(float(b2)), double(float(a1)),
             double(float(a2))};
    // Poles inside the unit circle: |a2| < 1 and |a1| < 1 + a2.
    const double below = FloatBelow(1.0);
    r.a2 = std::fmax(-below, std::fmin(r.a2, below));
    const double edge = 1.0 + r.a2;
    if (!(std::abs(r.a1) < edge))
        r.a1 = std::copysign(FloatBelow(edge), r.a1);
    return r;
}

} // namespace qoraudiotoolkit
