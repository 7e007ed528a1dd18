#include "audio/dsp/spectrum_meter_message.hpp"

#include "platform/core/main_thread_queue.hpp"
#include "platform/host/audio_filter.hpp"

#include <stdexcept>

namespace qoraudiotoolkit {

void ReleaseMeterOnMainThread(qorcore::IntrusivePtr<SpectrumMeterDSP>& meter) {
    if (!meter)
        return;
    if (qorcore::IsMainThread()) {
        meter.reset();
        return;
    }
    qorcore::PostToMainThread([held = std::move(meter)] {});
}

SpectrumMeterMessage::SpectrumMeterMessage(qorcore::IntrusivePtr<SpectrumMeterDSP> meter)
    : meter_(std::move(meter)) {
    if (!meter_)
        throw std::invalid_argument("SpectrumMeterMessage: null meter");
}

SpectrumMeterMessage::~SpectrumMeterMessage() {
    ReleaseMeterOnMainThread(meter_);
}

qorcore::Connection
SpectrumMeterMessage::ConnectMeterDataChanged(std::function<MeterDataChanged> slot) {
    return meterDataChanged_.Connect(std::move(slot));
}

void SpectrumMeterMessage::ExecuteOnProcessThread() {}

void SpectrumMeterMessage::ExecuteOnMainThread() {
    if (meterDataChanged_.IsEmpty())
        return;
    if (meter_->ReadSpectrum(frame_)) {
        ++deliveries_;
        meterDataChanged_(frame_.fftSize, frame_.data, frame_.count, frame_.type, true);
    }
    // A slot may have disconnected itself, or the filter may be gone.
    if (meterDataChanged_.IsEmpty())
        return;
    const std::shared_ptr<qoraudiofilterhost::AudioFilter> target = meter_->GetMessageTarget();
    std::shared_ptr<SpectrumMeterMessage> self = weak_from_this().lock();
    if (target && self)
        target->Post(std::move(self));
}

} // namespace qoraudiotoolkit
