#include "platform/host/audio_filter_parameter_info.hpp"

namespace qoraudiofilterhost {

AudioFilterParameterInfo::~AudioFilterParameterInfo() = default;

} // namespace qoraudiofilterhost
