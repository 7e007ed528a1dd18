#pragma once

#include "audio/dsp/single_band_dynamics.hpp"
#include "platform/core/connection.hpp"
#include "platform/core/signal.hpp"
#include "platform/host/message.hpp"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace qoraudiofilters::singlebanddynamics {

/// Carries the single-band dynamics' readings to the main thread: on the process thread it
/// reads the gain reduction (dB), the detected input level (dB) and the output peaks of every
/// channel since the last trip (linear); on the main thread it emits them and posts itself to
/// the effect again for as long as a slot is connected. Disconnect to stop it. The output peaks
/// are gathered only while the effect's meter is active (`SetMeterActive`).
///
/// Lifetime: an effect owned by a std::shared_ptr is held weakly, and the message ends quietly
/// once it is gone; one owned otherwise must outlive the message's trips. Make it with
/// `std::make_shared`, since it posts itself through `shared_from_this`.
class MeterMessage : public qoraudiofilterhost::Message,
                     public std::enable_shared_from_this<MeterMessage> {
public:
    using MeterDataChanged = void(float gainReduction, float inputLevel,
                                  const std::vector<float>& outputLevels);

    /// A null effect throws std::invalid_argument. One output level per channel of the effect.
    explicit MeterMessage(SingleBandDynamics* filter);

    [[nodiscard]] qorcore::Connection ConnectMeterDataChanged(std::function<MeterDataChanged> slot);
    std::size_t GetDeliveryCount() const { return deliveries_; }

    /// Reads the readings (into storage made beforehand: nothing allocates there).
    void ExecuteOnProcessThread() override;
    /// Emits them, then posts itself again while listened to.
    void ExecuteOnMainThread() override;

private:
    SingleBandDynamics* filter_;
    std::weak_ptr<qoraudiofilterhost::AudioFilter> owner_;
    bool owned_;
    float gainReduction_ = 0.0f;
    float inputLevel_ = 0.0f;
    std::vector<float> outputLevels_;
    qorcore::Signal<MeterDataChanged> meterDataChanged_;
    std::size_t deliveries_ = 0;
};

} // namespace qoraudiofilters::singlebanddynamics
