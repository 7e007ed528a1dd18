#include "audio/dsp/dynamics_meter_message.hpp"

#include <stdexcept>

namespace qoraudiofilters {

namespace {

Dynamics* Checked(Dynamics* dynamics) {
    if (!dynamics)
        throw std::invalid_argument("DynamicsMeterMessage: null processor");
    return dynamics;
}

} // namespace

DynamicsMeterMessage::DynamicsMeterMessage(Dynamics* dynamics)
    : dynamics_(Checked(dynamics)), owner_(dynamics->weak_from_this()), owned_(!owner_.expired()),
      levels_(dynamics->GetChannelCount(), 0.0f) {}

qorcore::Connection
DynamicsMeterMessage::ConnectMeterDataChanged(std::function<MeterDataChanged> slot) {
    return meterDataChanged_.Connect(std::move(slot));
}

void DynamicsMeterMessage::ExecuteOnProcessThread() {
    dynamics_->ReadMeters(gain_, levels_.data(), levels_.size());
}

void DynamicsMeterMessage::ExecuteOnMainThread() {
    if (meterDataChanged_.IsEmpty())
        return;
    // Held for the call, so a slot that drops the last other owner cannot pull it away.
    const std::shared_ptr<qoraudiofilterhost::AudioFilter> held = owner_.lock();
    if (owned_ && !held)
        return;
    ++deliveries_;
    meterDataChanged_(gain_, levels_);
    // A slot may have disconnected itself.
    if (meterDataChanged_.IsEmpty())
        return;
    if (std::shared_ptr<DynamicsMeterMessage> self = weak_from_this().lock())
        dynamics_->Post(std::move(self));
}

} // namespace qoraudiofilters
