#pragma once

#include "platform/rulers/ruler_base.hpp"

#include <vector>

namespace qorui {

/// A ruler whose pixels follow the value in a straight line. Its major ticks are at multiples of
/// 1, 2, 2.5 or 5 times a power of ten, or at custom values.
class LinearRuler : public RulerBase {
public:
    LinearRuler() = default;

    /// Major ticks at exactly these values (those inside the range) instead of computed ones;
    /// `displayFactor` multiplies the numbers shown. An empty list goes back to computed ticks;
    /// a value or factor that is not finite throws std::invalid_argument.
    void SetCustomValues(std::vector<double> values, double displayFactor = 1.0);
    const std::vector<double>& GetCustomValues() const { return custom_; }

    std::string FormatValue(double value) const override;

protected:
    double ToAxis(double value) const override { return value; }
    double FromAxis(double axis) const override { return axis; }
    void ComputeTicks(double minMajorSpacing, std::vector<double>& majors,
                      std::vector<double>& minors) const override;

private:
    std::vector<double> custom_;
    double displayFactor_ = 1.0;
};

} // namespace qorui
