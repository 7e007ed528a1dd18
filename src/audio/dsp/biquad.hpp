#pragma once

#include <complex>

namespace qoraudiotoolkit {

/// One section of a recursive filter, normalised so that a0 = 1:
///
///     H(z) = (b0 + b1 z^-1 + b2 z^-2) / (1 + a1 z^-1 + a2 z^-2)
///
/// A first-order section has b2 = a2 = 0. The designs are bilinear transforms of analog
/// prototypes, prewarped so that the prototype's characteristic frequency lands exactly on the
/// frequency asked for. Frequencies must lie strictly between 0 and Nyquist; the caller limits
/// them.
struct Biquad {
    double b0 = 1.0;
    double b1 = 0.0;
    double b2 = 0.0;
    double a1 = 0.0;
    double a2 = 0.0;

    /// A bell of `decibels` at `hz`: the prototype (s^2 + s A/q + 1) / (s^2 + s/(A q) + 1) with
    /// A = 10^(dB/40), whose bandwidth `q` is measured between the frequencies of half the dB
    /// gain.
    static Biquad Peaking(double hz, double q, double decibels, double sampleRate);
    /// Shelves of `decibels` below (low) or above (high) `hz`, with half the dB gain at `hz`:
    /// second order with a slope of 1, or first order.
    static Biquad LowShelf(double hz, double decibels, double sampleRate, bool secondOrder);
    static Biquad HighShelf(double hz, double decibels, double sampleRate, bool secondOrder);
    /// Second-order passes with the pole quality `q` (1/sqrt(2): -3.01 dB at `hz`).
    static Biquad LowPass(double hz, double q, double sampleRate);
    static Biquad HighPass(double hz, double q, double sampleRate);
    /// First-order passes, -3.01 dB at `hz`.
    static Biquad FirstOrderLowPass(double hz, double sampleRate);
    static Biquad FirstOrderHighPass(double hz, double sampleRate);

    /// A Butterworth filter of `order` (at least 1) is `order` / 2 second-order sections plus a
    /// first-order one when the order is odd. This is the pole quality of second-order section
    /// `section` (0 .. order / 2 - 1).
    static double ButterworthQ(int order, int section);

    /// The response at `hz`: the transfer function evaluated on the unit circle.
    std::complex<double> Response(double hz, double sampleRate) const;
    /// Whether the section passes every signal unchanged.
    bool IsIdentity() const { return b0 == 1.0 && b1 == a1 && b2 == a2; }
    /// The coefficients rounded to float, with the poles pulled back inside the unit circle
    /// should rounding have put them on or outside it (very low, very narrow designs).
    Biquad RoundedToFloat() const;

    friend bool operator==(const Biquad&, const Biquad&) = default;
};

} // namespace qoraudiotoolkit
