#include "audio/dsp/level_meter_message.hpp"

#include <stdexcept>

namespace qoraudiotoolkit {

LevelMeterMessage::LevelMeterMessage(std::weak_ptr<qoraudiofilterhost::AudioFilter> target,
                                     Read read, std::size_t count)
    : target_(std::move(target)), read_(std::move(read)), levels_(count, 0.0f) {
    if (!read_)
        throw std::invalid_argument("LevelMeterMessage: no function to read the levels");
}

qorcore::Connection
LevelMeterMessage::ConnectMeterDataChanged(std::function<MeterDataChanged> slot) {
    return meterDataChanged_.Connect(std::move(slot));
}

void LevelMeterMessage::ExecuteOnProcessThread() {
    read_(levels_.data(), levels_.size());
}

void LevelMeterMessage::ExecuteOnMainThread() {
    if (meterDataChanged_.IsEmpty())
        return;
    ++deliveries_;
    meterDataChanged_(levels_);
    if (meterDataChanged_.IsEmpty())
        return;
    const std::shared_ptr<qoraudiofilterhost::AudioFilter> target = target_.lock();
    std::shared_ptr<LevelMeterMessage> self = weak_from_this().lock();
    if (target && self)
        target->Post(std::move(self));
}

} // namespace qoraudiotoolkit
