#include "platform/host/multi_channel_audio_filter_base.hpp"

namespace qoraudiofilterhost {

bool MultiChannelAudioFilterBase::GetOverrideParameterValue(int, float*) const {
    return false;
}

} // namespace qoraudiofilterhost
