#pragma once

#include "audio/dsp/dynamics.hpp"
#include "platform/core/connection.hpp"
#include "platform/core/signal.hpp"
#include "platform/host/message.hpp"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace qoraudiofilters {

/// Carries the dynamics processor's meters to the main thread: on the process thread it reads
/// the smallest gain the curve applied and each channel's highest detector level since its
/// last trip (`Dynamics::ReadMeters`), on the main thread it emits them and posts itself to the
/// processor again for as long as a slot is connected. Disconnect (or drop the connection) to
/// stop it.
///
/// The gain is a linear factor (1: no reduction), the levels linear amplitudes, one per channel
/// of the processor. Lifetime: a processor owned by a std::shared_ptr is held weakly, and the
/// message ends quietly once it is gone; one owned otherwise must outlive the message's trips.
/// Make it with `std::make_shared`, since it posts itself through `shared_from_this`.
class DynamicsMeterMessage : public qoraudiofilterhost::Message,
                             public std::enable_shared_from_this<DynamicsMeterMessage> {
public:
    using MeterDataChanged = void(float gain, const std::vector<float>& levels);

    /// A null processor throws std::invalid_argument. The levels' storage is made here, so that
    /// the process thread only writes into it.
    explicit DynamicsMeterMessage(Dynamics* dynamics);

    [[nodiscard]] qorcore::Connection ConnectMeterDataChanged(std::function<MeterDataChanged> slot);
    std::size_t GetDeliveryCount() const { return deliveries_; }

    /// Reads the meters.
    void ExecuteOnProcessThread() override;
    /// Emits them, then posts itself again while listened to.
    void ExecuteOnMainThread() override;

private:
    Dynamics* dynamics_;
    std::weak_ptr<qoraudiofilterhost::AudioFilter> owner_;
    bool owned_;
    float gain_ = 1.0f;
    std::vector<float> levels_;
    qorcore::Signal<MeterDataChanged> meterDataChanged_;
    std::size_t deliveries_ = 0;
};

} // namespace qoraudiofilters
