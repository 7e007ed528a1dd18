#include "audio/dsp/loudness_meter_message.hpp"

#include <stdexcept>
#include <string>

namespace qoraudiofilters {

namespace {

LoudnessMeter* Checked(LoudnessMeter* meter, const char* what) {
    if (!meter)
        throw std::invalid_argument(std::string(what) + ": null meter");
    return meter;
}

} // namespace

LoudnessMeterMessage::LoudnessMeterMessage(LoudnessMeter* meter)
    : meter_(Checked(meter, "LoudnessMeterMessage")), owner_(meter->weak_from_this()),
      owned_(!owner_.expired()) {}

qorcore::Connection LoudnessMeterMessage::ConnectMeterDataChanged(std::function<void()> slot) {
    return meterDataChanged_.Connect(std::move(slot));
}

void LoudnessMeterMessage::ExecuteOnProcessThread() {}

void LoudnessMeterMessage::ExecuteOnMainThread() {
    if (meterDataChanged_.IsEmpty())
        return;
    // Held for the call, so a slot that drops the last other owner cannot pull it away.
    const std::shared_ptr<qoraudiofilterhost::AudioFilter> held = owner_.lock();
    if (owned_ && !held)
        return;
    meter_->PrepareNextReset();
    values_ = meter_->GetLoudnessMeterValues();
    ++deliveries_;
    meterDataChanged_();
    // A slot may have disconnected itself.
    if (meterDataChanged_.IsEmpty())
        return;
    if (std::shared_ptr<LoudnessMeterMessage> self = weak_from_this().lock())
        meter_->Post(std::move(self));
}

LoudnessMeterResetMessage::LoudnessMeterResetMessage(LoudnessMeter* meter)
    : meter_(Checked(meter, "LoudnessMeterResetMessage")), owner_(meter->weak_from_this()),
      owned_(!owner_.expired()) {}

qorcore::Connection LoudnessMeterResetMessage::ConnectResetCompleted(std::function<void()> slot) {
    return resetCompleted_.Connect(std::move(slot));
}

void LoudnessMeterResetMessage::ExecuteOnProcessThread() {
    meter_->ResetOnProcessThread();
}

void LoudnessMeterResetMessage::ExecuteOnMainThread() {
    const std::shared_ptr<qoraudiofilterhost::AudioFilter> held = owner_.lock();
    if (!owned_ || held)
        meter_->PrepareNextReset();
    resetCompleted_();
}

} // namespace qoraudiofilters
