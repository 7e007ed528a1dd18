#include "platform/host/audio_filter_signals.hpp"

namespace qoraudiofilterhost {

qorcore::Connection AudioFilterSignals::ConnectPresetChanged(std::function<void()> slot) {
    return presetChanged_.Connect(std::move(slot));
}

qorcore::Connection
AudioFilterSignals::ConnectSuspendedStateChanged(std::function<void(bool)> slot) {
    return suspendedStateChanged_.Connect(std::move(slot));
}

} // namespace qoraudiofilterhost
