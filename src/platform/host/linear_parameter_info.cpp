#include "platform/host/linear_parameter_info.hpp"

#include <cmath>
#include <stdexcept>

namespace qoraudiofilterhost {

LinearParameterInfo::LinearParameterInfo(float plainAtZero, float plainAtOne)
    : plainAtZero_(plainAtZero), plainAtOne_(plainAtOne) {
    if (!std::isfinite(plainAtZero) || !std::isfinite(plainAtOne))
        throw std::invalid_argument("LinearParameterInfo: the plain range must be finite");
}

float LinearParameterInfo::NormalisedFromPlain(float plain) const {
    const double span = double(plainAtOne_) - double(plainAtZero_);
    if (span == 0.0)
        return 0.0f;
    return float((double(plain) - double(plainAtZero_)) / span);
}

float LinearParameterInfo::PlainFromNormalised(float normalised) const {
    // Computed from both ends so that 0 and 1 give the ends exactly.
    const double t = normalised;
    return float(double(plainAtZero_) * (1.0 - t) + double(plainAtOne_) * t);
}

} // namespace qoraudiofilterhost
