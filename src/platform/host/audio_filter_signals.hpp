#pragma once

#include "platform/core/connection.hpp"
#include "platform/core/signal.hpp"

#include <functional>

namespace qoraudiofilterhost {

/// The signals of one filter, emitted on the main thread: a preset was loaded, and the effect
/// was suspended or resumed. A connection ends when its `Connection` is released.
class AudioFilterSignals {
public:
    [[nodiscard]] qorcore::Connection ConnectPresetChanged(std::function<void()> slot);
    [[nodiscard]] qorcore::Connection ConnectSuspendedStateChanged(std::function<void(bool)> slot);

    void EmitPresetChanged() const { presetChanged_(); }
    void EmitSuspendedStateChanged(bool suspended) const { suspendedStateChanged_(suspended); }

private:
    qorcore::Signal<void()> presetChanged_;
    qorcore::Signal<void(bool)> suspendedStateChanged_;
};

} // namespace qoraudiofilterhost
