#include "audio/dsp/gain_reduction_meter_message.hpp"

#include <stdexcept>

namespace qoraudiotoolkit {

GainReductionMeterMessage::GainReductionMeterMessage(
    std::weak_ptr<qoraudiofilterhost::AudioFilter> target, Read read)
    : target_(std::move(target)), read_(std::move(read)) {
    if (!read_)
        throw std::invalid_argument("GainReductionMeterMessage: no function to read the reduction");
}

qorcore::Connection
GainReductionMeterMessage::ConnectMeterDataChanged(std::function<MeterDataChanged> slot) {
    return meterDataChanged_.Connect(std::move(slot));
}

void GainReductionMeterMessage::ExecuteOnProcessThread() {
    reduction_ = read_();
}

void GainReductionMeterMessage::ExecuteOnMainThread() {
    if (meterDataChanged_.IsEmpty())
        return;
    ++deliveries_;
    meterDataChanged_(reduction_);
    if (meterDataChanged_.IsEmpty())
        return;
    const std::shared_ptr<qoraudiofilterhost::AudioFilter> target = target_.lock();
    std::shared_ptr<GainReductionMeterMessage> self = weak_from_this().lock();
    if (target && self)
        target->Post(std::move(self));
}

} // namespace qoraudiotoolkit
