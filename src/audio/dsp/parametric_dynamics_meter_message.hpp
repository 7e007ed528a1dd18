#pragma once

#include "audio/dsp/parametric_dynamics.hpp"
#include "platform/core/connection.hpp"
#include "platform/core/signal.hpp"
#include "platform/host/message.hpp"

#include <cstddef>
#include <functional>
#include <memory>

namespace qoraudiofilters::parametricdynamics {

/// Carries the parametric dynamics' meter readings (band level, gain change, gate and limiter
/// states) to the main thread. Post it to the filter: on the process thread it takes what the
/// filter gathered since the last trip, on the main thread it emits `MeterDataChanged` and
/// posts itself to the filter again for as long as a slot is connected. Disconnect to stop.
///
/// Lifetime: a filter owned by a std::shared_ptr is held weakly, and the message ends quietly
/// once it is gone; a filter owned otherwise must outlive the message's trips. Make it with
/// `std::make_shared`, since it posts itself through `shared_from_this`.
class MeterMessage : public qoraudiofilterhost::Message,
                     public std::enable_shared_from_this<MeterMessage> {
public:
    using MeterDataChanged = void(const MeterData&);

    /// A null filter throws std::invalid_argument.
    explicit MeterMessage(ParametricDynamics* filter);

    [[nodiscard]] qorcore::Connection ConnectMeterDataChanged(std::function<MeterDataChanged> slot);
    std::size_t GetDeliveryCount() const { return deliveries_; }

    /// Takes the readings the filter gathered.
    void ExecuteOnProcessThread() override;
    /// Emits them, then posts itself again while listened to.
    void ExecuteOnMainThread() override;

private:
    ParametricDynamics* filter_;
    std::weak_ptr<qoraudiofilterhost::AudioFilter> owner_;
    bool owned_;
    MeterData data_;
    qorcore::Signal<MeterDataChanged> meterDataChanged_;
    std::size_t deliveries_ = 0;
};

} // namespace qoraudiofilters::parametricdynamics
