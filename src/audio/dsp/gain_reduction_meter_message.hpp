#pragma once

#include "platform/core/connection.hpp"
#include "platform/core/signal.hpp"
#include "platform/host/audio_filter.hpp"
#include "platform/host/message.hpp"

#include <cstddef>
#include <functional>
#include <memory>

namespace qoraudiotoolkit {

/// A gain reduction read by a function on the process thread (e.g. a compressor's current
/// reduction in dB), delivered on the main thread; reposts itself to `target` while listened
/// to. The function runs while `target` works through its messages; without a target, or once
/// it is gone, the message delivers once more and stops. Post it once, to `target`, after
/// connecting; make it with `std::make_shared`.
class GainReductionMeterMessage : public qoraudiofilterhost::Message,
                                  public std::enable_shared_from_this<GainReductionMeterMessage> {
public:
    using Read = std::function<float()>;
    using MeterDataChanged = void(float);

    /// An empty `read` throws std::invalid_argument.
    GainReductionMeterMessage(std::weak_ptr<qoraudiofilterhost::AudioFilter> target, Read read);

    [[nodiscard]] qorcore::Connection ConnectMeterDataChanged(std::function<MeterDataChanged> slot);
    std::size_t GetDeliveryCount() const { return deliveries_; }

    /// Reads the reduction.
    void ExecuteOnProcessThread() override;
    /// Emits it, then posts itself again while listened to.
    void ExecuteOnMainThread() override;

private:
    std::weak_ptr<qoraudiofilterhost::AudioFilter> target_;
    Read read_;
    float reduction_ = 0.0f;
    qorcore::Signal<MeterDataChanged> meterDataChanged_;
    std::size_t deliveries_ = 0;
};

} // namespace qoraudiotoolkit
