#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace qorcore {

/// The fader law: a position from 0 (bottom) to 1 (top) and a level in decibels.
///
/// 0 dB sits at the zero position p. Below it the gain follows a power of the position,
/// gain = (q / p)^exponent2, so the level falls smoothly towards minus infinity at the bottom:
/// -300 dB is still a distinct position and -400 dB lies within a hair of 0. Above it the law is
/// mirrored about p, dB(q) = -dB_below(2p - q) with exponent1, so the top (q = 1, mirror point
/// 2p - 1) is exactly `range` decibels. The exponents come from the mirror point x = (2p - 1) / p:
/// x^exponent = 10^(-range / 20). Both directions are closed forms, so they invert each other to
/// within the precision of T.
template <class T>
class FaderTranslator {
public:
    FaderTranslator(double position, double range, double range2) {
        zeroPosition_ = std::clamp(position, double(0.51f), double(0.9f));
        const double x = (2.0 * zeroPosition_ - 1.0) / zeroPosition_;
        range_ = std::clamp(range, 3.0, 96.0);
        exponent1_ = std::log(std::pow(10.0, -range_ / 20.0)) / std::log(x);
        exponent2_ = std::log(std::pow(10.0, -range2 / 20.0)) / std::log(x);
    }

    /// The position of a level, limited to 0..1.
    T GetNormalizedValue(T decibels) const {
        const double db = static_cast<double>(decibels);
        if (std::isnan(db))
            return T(0);
        double q;
        if (db >= 0.0)
            q = 2.0 * zeroPosition_ - zeroPosition_ * std::pow(10.0, -db / (20.0 * exponent1_));
        else
            q = zeroPosition_ * std::pow(10.0, db / (20.0 * exponent2_));
        return static_cast<T>(std::clamp(q, 0.0, 1.0));
    }

    /// The level of a position; the bottom (0 or below) is minus infinity.
    T GetDecibelValue(T normalized) const {
        const double q = std::min(static_cast<double>(normalized), 1.0);
        if (!(q > 0.0))
            return -std::numeric_limits<T>::infinity();
        if (q >= zeroPosition_)
            return static_cast<T>(-20.0 * exponent1_ *
                                  std::log10((2.0 * zeroPosition_ - q) / zeroPosition_));
        return static_cast<T>(20.0 * exponent2_ * std::log10(q / zeroPosition_));
    }

    double GetZeroPosition() const { return zeroPosition_; }
    double GetRange() const { return range_; }
    double GetExponent1() const { return exponent1_; }
    double GetExponent2() const { return exponent2_; }

private:
    double zeroPosition_;
    double range_;
    double exponent1_;
    double exponent2_;
};

} // namespace qorcore
