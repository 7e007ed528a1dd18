#include "platform/rulers/linear_ruler.hpp"

#include <cmath>
#include <stdexcept>

namespace qorui {

void LinearRuler::SetCustomValues(std::vector<double> values, double displayFactor) {
    if (!std::isfinite(displayFactor))
        throw std::invalid_argument("LinearRuler::SetCustomValues: the factor must be finite");
    for (double v : values)
        if (!std::isfinite(v))
            throw std::invalid_argument("LinearRuler::SetCustomValues: values must be finite");
    custom_ = std::move(values);
    displayFactor_ = displayFactor;
}

std::string LinearRuler::FormatValue(double value) const {
    return RulerBase::FormatValue(custom_.empty() ? value : value * displayFactor_);
}

void LinearRuler::ComputeTicks(double minMajorSpacing, std::vector<double>& majors,
                               std::vector<double>& minors) const {
    if (custom_.empty()) {
        ComputeLinearTicks(minMajorSpacing, {1.0, 2.0, 2.5, 5.0, 10.0}, majors, minors);
        return;
    }
    const double low = GetLowValue();
    const double high = GetHighValue();
    const double eps = (high - low) * 1e-9;
    for (double v : custom_)
        if (v >= low - eps && v <= high + eps)
            majors.push_back(v);
}

} // namespace qorui
