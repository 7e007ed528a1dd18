#pragma once

#include "audio/dsp/spectrum_meter_dsp.hpp"
#include "platform/core/connection.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/host/audio_filter.hpp"

#include <functional>
#include <memory>

namespace qoraudiotoolkit {
class SpectrumMeterMessage;
}

namespace qoraudiofiltersui {

class CurveEditor;
class SpectrumDraw;

/// The live spectrum of a filter that keeps its meter for its whole life: the editor only
/// switches the feeding on and off (`setActive`, called on the main thread) and paints each
/// spectrum that arrives into `draw`, repainting the graph's content. While the filter is
/// suspended the last picture stays. No meter changes hands.
class OwnedSpectrumMeter {
public:
    /// A null filter, meter, painter or graph throws the null-pointer exception.
    OwnedSpectrumMeter(std::shared_ptr<qoraudiofilterhost::AudioFilter> filter,
                       qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP> meter,
                       std::function<void(bool)> setActive,
                       qorcore::IntrusivePtr<SpectrumDraw> draw, CurveEditor* graph);
    /// Stops the feeding first.
    ~OwnedSpectrumMeter();
    OwnedSpectrumMeter(const OwnedSpectrumMeter&) = delete;
    OwnedSpectrumMeter& operator=(const OwnedSpectrumMeter&) = delete;

    /// Listens, starts the feeding and posts the message that carries the spectra.
    void Enable();
    void Disable();

private:
    void OnMeterDataChanged(unsigned int fftSize, const std::vector<float>& data,
                            unsigned int count, unsigned int spectrumType, bool updateLines);

    std::shared_ptr<qoraudiofilterhost::AudioFilter> filter_;
    std::function<void(bool)> setActive_;
    qorcore::IntrusivePtr<SpectrumDraw> draw_;
    CurveEditor* graph_;
    std::shared_ptr<qoraudiotoolkit::SpectrumMeterMessage> message_;
    qorcore::ScopedConnection connection_;
};

} // namespace qoraudiofiltersui
