#pragma once

#include "platform/host/audio_filter_parameter_info.hpp"

namespace qoraudiofilterhost {

/// A parameter whose plain value runs in a straight line from `plainAtZero` (normalised 0) to
/// `plainAtOne` (normalised 1). The range may descend. A range of zero length maps every plain
/// value to 0.
class LinearParameterInfo : public AudioFilterParameterInfo {
public:
    /// Non-finite ends throw std::invalid_argument.
    LinearParameterInfo(float plainAtZero, float plainAtOne);

    float NormalisedFromPlain(float plain) const override;
    float PlainFromNormalised(float normalised) const override;

    float GetPlainAtZero() const { return plainAtZero_; }
    float GetPlainAtOne() const { return plainAtOne_; }

private:
    float plainAtZero_;
    float plainAtOne_;
};

} // namespace qoraudiofilterhost
