#pragma once

#include "audio/dsp/level_meter_dsp.hpp"
#include "platform/core/connection.hpp"
#include "platform/core/signal.hpp"
#include "platform/host/message.hpp"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace qoraudiotoolkit {

/// Carries the readings of a `LevelMeterDSP` to the main thread: there it reads the channels
/// from its offset on, emits them, and posts itself again to the meter's message target for as
/// long as a slot is connected. The trip through the process thread paces the deliveries.
/// Once the meter or its target is gone, it stops. Make it with `std::make_shared`; post it once
/// after connecting.
class LevelMeterDSPMessage : public qoraudiofilterhost::Message,
                             public std::enable_shared_from_this<LevelMeterDSPMessage> {
public:
    using MeterDataChanged = void(const std::vector<LevelMeterDSP::Reading>&);

    LevelMeterDSPMessage(std::weak_ptr<LevelMeterDSP> meter, unsigned int channelOffset);

    [[nodiscard]] qorcore::Connection ConnectMeterDataChanged(std::function<MeterDataChanged> slot);
    std::size_t GetDeliveryCount() const { return deliveries_; }

    void ExecuteOnProcessThread() override;
    /// Reads and emits, then posts itself again while listened to.
    void ExecuteOnMainThread() override;

private:
    std::weak_ptr<LevelMeterDSP> meter_;
    unsigned int channelOffset_;
    std::vector<LevelMeterDSP::Reading> readings_;
    qorcore::Signal<MeterDataChanged> meterDataChanged_;
    std::size_t deliveries_ = 0;
};

} // namespace qoraudiotoolkit
