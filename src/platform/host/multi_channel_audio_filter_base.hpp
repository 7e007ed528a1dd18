#pragma once

#include "platform/host/audio_filter.hpp"

namespace qoraudiofilterhost {

/// The base of effects that may show a value other than the stored one for a parameter (a
/// value driven per channel, say). Editors reach it by a checked downcast.
class MultiChannelAudioFilterBase : public AudioFilter {
public:
    /// True when `*inOut` (which holds the stored value on entry) is to be used instead of
    /// `GetParameterValue(index)`. The base overrides nothing.
    virtual bool GetOverrideParameterValue(int index, float* inOut) const;
};

} // namespace qoraudiofilterhost

namespace qoraudiofilters {
using ::qoraudiofilterhost::MultiChannelAudioFilterBase;
}
