#include "audio/host/audio_source.hpp"

namespace qafhost {

AudioSource::~AudioSource() = default;

} // namespace qafhost
