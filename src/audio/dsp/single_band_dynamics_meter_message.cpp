#include "audio/dsp/single_band_dynamics_meter_message.hpp"

#include <stdexcept>

namespace qoraudiofilters::singlebanddynamics {

namespace {

SingleBandDynamics* Checked(SingleBandDynamics* filter) {
    if (!filter)
        throw std::invalid_argument("singlebanddynamics::MeterMessage: null effect");
    return filter;
}

} // namespace

MeterMessage::MeterMessage(SingleBandDynamics* filter)
    : filter_(Checked(filter)), owner_(filter->weak_from_this()), owned_(!owner_.expired()),
      inputLevel_(filter->GetDetectedLevel()), outputLevels_(filter->GetChannelCount(), 0.0f) {}

qorcore::Connection MeterMessage::ConnectMeterDataChanged(std::function<MeterDataChanged> slot) {
    return meterDataChanged_.Connect(std::move(slot));
}

void MeterMessage::ExecuteOnProcessThread() {
    // The effect works through its messages now, so it is alive.
    gainReduction_ = filter_->GetGainReduction();
    inputLevel_ = filter_->GetDetectedLevel();
    filter_->ReadOutputLevels(outputLevels_.data(), outputLevels_.size());
}

void MeterMessage::ExecuteOnMainThread() {
    if (meterDataChanged_.IsEmpty())
        return;
    // Held for the call, so a slot that drops the last other owner cannot pull it away.
    const std::shared_ptr<qoraudiofilterhost::AudioFilter> held = owner_.lock();
    if (owned_ && !held)
        return;
    ++deliveries_;
    meterDataChanged_(gainReduction_, inputLevel_, outputLevels_);
    if (meterDataChanged_.IsEmpty())
        return;
    if (std::shared_ptr<MeterMessage> self = weak_from_this().lock())
        filter_->Post(std::move(self));
}

} // namespace qoraudiofilters::singlebanddynamics
