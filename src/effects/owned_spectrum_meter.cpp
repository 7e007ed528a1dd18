#include "effects/owned_spectrum_meter.hpp"

#include "audio/dsp/spectrum_meter_message.hpp"
#include "graphs/curve_editor.hpp"
#include "graphs/spectrum_draw.hpp"
#include "platform/core/null_pointer_exception.hpp"

namespace qoraudiofiltersui {

OwnedSpectrumMeter::OwnedSpectrumMeter(
    std::shared_ptr<qoraudiofilterhost::AudioFilter> filter,
    qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP> meter,
    std::function<void(bool)> setActive, qorcore::IntrusivePtr<SpectrumDraw> draw,
    CurveEditor* graph)
    : filter_(std::move(filter)), setActive_(std::move(setActive)), draw_(std::move(draw)),
      graph_(graph) {
    if (!filter_ || !meter || !setActive_ || !draw_ || !graph_)
        qorcore::config::DoThrowNullPtrException("OwnedSpectrumMeter");
    // The message posts itself to the meter's target again for as long as someone listens.
    if (!meter->GetMessageTarget())
        meter->SetMessageTarget(filter_);
    message_ = std::make_shared<qoraudiotoolkit::SpectrumMeterMessage>(std::move(meter));
}

OwnedSpectrumMeter::~OwnedSpectrumMeter() {
    Disable();
}

void OwnedSpectrumMeter::Enable() {
    connection_ = message_->ConnectMeterDataChanged(
        [this](unsigned int fftSize, const std::vector<float>& data, unsigned int count,
               qoraudiotoolkit::SpectrumType type,
               bool updateLines) { OnMeterDataChanged(fftSize, data, count, type, updateLines); });
    setActive_(true);
    filter_->Post(message_);
}

void OwnedSpectrumMeter::Disable() {
    setActive_(false);
    connection_.Disconnect();
}

void OwnedSpectrumMeter::OnMeterDataChanged(unsigned int fftSize, const std::vector<float>& data,
                                            unsigned int count, unsigned int spectrumType,
                                            bool updateLines) {
    if (filter_->IsSuspended())
        return;
    draw_->SetSpectrumData(fftSize, data, count, spectrumType, updateLines);
    graph_->InvalidateContentRect();
}

} // namespace qoraudiofiltersui
