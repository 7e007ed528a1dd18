#pragma once

#include "audio/dsp/loudness_meter.hpp"
#include "platform/core/connection.hpp"
#include "platform/core/signal.hpp"
#include "platform/host/message.hpp"

#include <cstddef>
#include <functional>
#include <memory>

namespace qoraudiofilters {

/// Carries a loudness meter's readings to the main thread. Post it to the meter; on the main
/// thread it takes the newest values, emits `MeterDataChanged`, and posts itself to the meter
/// again for as long as a slot is connected. Disconnect (or drop the connection) to stop it.
///
/// Lifetime: a meter owned by a std::shared_ptr is held weakly, and the message ends quietly
/// once the meter is gone. A meter owned otherwise must outlive the message's trips.
///
/// Make it with `std::make_shared`, since it posts itself through `shared_from_this`.
class LoudnessMeterMessage : public qoraudiofilterhost::Message,
                             public std::enable_shared_from_this<LoudnessMeterMessage> {
public:
    /// A null meter throws std::invalid_argument.
    explicit LoudnessMeterMessage(LoudnessMeter* meter);

    [[nodiscard]] qorcore::Connection ConnectMeterDataChanged(std::function<void()> slot);
    /// The values taken on the main thread at the last delivery.
    const LoudnessMeterValues& GetLoudnessMeterValues() const { return values_; }
    std::size_t GetDeliveryCount() const { return deliveries_; }

    /// Nothing to do there: the trip through the process thread paces the deliveries to its
    /// blocks.
    void ExecuteOnProcessThread() override;
    /// Reads the values, emits, and posts itself again while listened to; also gives the meter
    /// its chance to prepare the next reset.
    void ExecuteOnMainThread() override;

private:
    LoudnessMeter* meter_;
    std::weak_ptr<qoraudiofilterhost::AudioFilter> owner_;
    bool owned_;
    qorcore::Signal<void()> meterDataChanged_;
    LoudnessMeterValues values_;
    std::size_t deliveries_ = 0;
};

/// Resets a loudness meter on its process thread, then prepares its next reset and emits
/// `ResetCompleted` on the main thread. Post it to the meter itself (its process half runs
/// while the meter works through its messages, so the meter is alive then). Lifetime as for
/// `LoudnessMeterMessage`; the signal fires even when the meter is gone by then.
class LoudnessMeterResetMessage : public qoraudiofilterhost::Message {
public:
    /// A null meter throws std::invalid_argument.
    explicit LoudnessMeterResetMessage(LoudnessMeter* meter);

    [[nodiscard]] qorcore::Connection ConnectResetCompleted(std::function<void()> slot);

    void ExecuteOnProcessThread() override;
    void ExecuteOnMainThread() override;

private:
    LoudnessMeter* meter_;
    std::weak_ptr<qoraudiofilterhost::AudioFilter> owner_;
    bool owned_;
    qorcore::Signal<void()> resetCompleted_;
};

} // namespace qoraudiofilters
