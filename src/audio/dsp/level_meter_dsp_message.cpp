#include "audio/dsp/level_meter_dsp_message.hpp"

#include "platform/host/audio_filter.hpp"

namespace qoraudiotoolkit {

LevelMeterDSPMessage::LevelMeterDSPMessage(std::weak_ptr<LevelMeterDSP> meter,
                                           unsigned int channelOffset)
    : meter_(std::move(meter)), channelOffset_(channelOffset) {}

qorcore::Connection
LevelMeterDSPMessage::ConnectMeterDataChanged(std::function<MeterDataChanged> slot) {
    return meterDataChanged_.Connect(std::move(slot));
}

void LevelMeterDSPMessage::ExecuteOnProcessThread() {}

void LevelMeterDSPMessage::ExecuteOnMainThread() {
    if (meterDataChanged_.IsEmpty())
        return;
    const std::shared_ptr<LevelMeterDSP> meter = meter_.lock();
    if (!meter)
        return;
    meter->ReadLevels(channelOffset_, readings_);
    ++deliveries_;
    meterDataChanged_(readings_);
    if (meterDataChanged_.IsEmpty())
        return;
    const std::shared_ptr<qoraudiofilterhost::AudioFilter> target = meter->GetMessageTarget();
    std::shared_ptr<LevelMeterDSPMessage> self = weak_from_this().lock();
    if (target && self)
        target->Post(std::move(self));
}

} // namespace qoraudiotoolkit
