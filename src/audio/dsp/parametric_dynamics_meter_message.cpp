#include "audio/dsp/parametric_dynamics_meter_message.hpp"

#include <stdexcept>

namespace qoraudiofilters::parametricdynamics {

namespace {

ParametricDynamics* Checked(ParametricDynamics* filter) {
    if (!filter)
        throw std::invalid_argument("parametricdynamics::MeterMessage: null filter");
    return filter;
}

} // namespace

MeterMessage::MeterMessage(ParametricDynamics* filter)
    : filter_(Checked(filter)), owner_(filter->weak_from_this()), owned_(!owner_.expired()) {}

qorcore::Connection MeterMessage::ConnectMeterDataChanged(std::function<MeterDataChanged> slot) {
    return meterDataChanged_.Connect(std::move(slot));
}

void MeterMessage::ExecuteOnProcessThread() {
    // The filter runs its messages itself, so it is alive here.
    data_ = filter_->TakeMeterData();
}

void MeterMessage::ExecuteOnMainThread() {
    if (meterDataChanged_.IsEmpty())
        return;
    // Held for the call, so a slot that drops the last other owner cannot pull it away.
    const std::shared_ptr<qoraudiofilterhost::AudioFilter> held = owner_.lock();
    if (owned_ && !held)
        return;
    ++deliveries_;
    meterDataChanged_(data_);
    if (meterDataChanged_.IsEmpty())
        return;
    if (std::shared_ptr<MeterMessage> self = weak_from_this().lock())
        filter_->Post(std::move(self));
}

} // namespace qoraudiofilters::parametricdynamics
