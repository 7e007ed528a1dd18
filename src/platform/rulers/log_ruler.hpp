#pragma once

#include "platform/rulers/ruler_base.hpp"

#include <cmath>

namespace qorui {

/// A ruler whose pixels follow the logarithm of the value, as frequency axes do. Major ticks sit
/// at the seed times whole powers of the step (1, 10, 100 ... for seed 1 and step 10); where room
/// allows, a step of ten adds 2 and 5 (then every integer) times each power, and minor ticks mark
/// the integers between.
class LogRuler : public RulerBase {
public:
    LogRuler() { SetValueRange(20.0, 20000.0); }

    /// A step not above 1, or not finite, throws std::invalid_argument.
    void SetLogStep(double step);
    double GetLogStep() const { return step_; }
    /// A seed not above 0, or not finite, throws std::invalid_argument.
    void SetLogSeed(double seed);
    double GetLogSeed() const { return seed_; }

protected:
    double ToAxis(double value) const override;
    double FromAxis(double axis) const override { return std::pow(10.0, axis); }
    void CheckValueRange(double value1, double value2) const override;
    void ComputeTicks(double minMajorSpacing, std::vector<double>& majors,
                      std::vector<double>& minors) const override;

private:
    double step_ = 10.0;
    double seed_ = 1.0;
};

} // namespace qorui
