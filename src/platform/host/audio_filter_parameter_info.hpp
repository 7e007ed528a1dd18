#pragma once

namespace qoraudiofilterhost {

/// The descriptor of one parameter: how its normalised value (0 to 1) maps to plain units.
/// `PlainFromNormalised(0)` and `PlainFromNormalised(1)` are the two ends of the plain range,
/// which need not rise.
class AudioFilterParameterInfo {
public:
    virtual ~AudioFilterParameterInfo();
    virtual float NormalisedFromPlain(float plain) const = 0;
    virtual float PlainFromNormalised(float normalised) const = 0;
};

} // namespace qoraudiofilterhost
