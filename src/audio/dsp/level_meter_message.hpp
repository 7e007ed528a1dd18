#pragma once

#include "platform/core/connection.hpp"
#include "platform/core/signal.hpp"
#include "platform/host/audio_filter.hpp"
#include "platform/host/message.hpp"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace qoraudiotoolkit {

/// Levels read by a function on the process thread (e.g. a filter's GetLevels), delivered on the
/// main thread; reposts itself to `target` while listened to.
///
/// The function writes `count` levels into storage the message made beforehand, so nothing
/// allocates on the process thread; it runs while `target` works through its messages, so it
/// may use the target freely. The slot gets the levels as read (the vector is valid during the
/// call). Without a target, or once it is gone, the message delivers once more and stops.
/// Post it once, to `target`, after connecting; make it with `std::make_shared`.
class LevelMeterMessage : public qoraudiofilterhost::Message,
                          public std::enable_shared_from_this<LevelMeterMessage> {
public:
    using Read = std::function<void(float* levels, std::size_t count)>;
    using MeterDataChanged = void(const std::vector<float>&);

    /// An empty `read` throws std::invalid_argument.
    LevelMeterMessage(std::weak_ptr<qoraudiofilterhost::AudioFilter> target, Read read,
                      std::size_t count);

    [[nodiscard]] qorcore::Connection ConnectMeterDataChanged(std::function<MeterDataChanged> slot);
    std::size_t GetDeliveryCount() const { return deliveries_; }

    /// Reads the levels.
    void ExecuteOnProcessThread() override;
    /// Emits them, then posts itself again while listened to.
    void ExecuteOnMainThread() override;

private:
    std::weak_ptr<qoraudiofilterhost::AudioFilter> target_;
    Read read_;
    std::vector<float> levels_;
    qorcore::Signal<MeterDataChanged> meterDataChanged_;
    std::size_t deliveries_ = 0;
};

} // namespace qoraudiotoolkit
