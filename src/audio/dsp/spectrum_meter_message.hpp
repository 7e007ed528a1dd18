#pragma once

#include "audio/dsp/spectrum_meter_dsp.hpp"
#include "platform/core/connection.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/signal.hpp"
#include "platform/host/message.hpp"

#include <functional>
#include <memory>
#include <vector>

namespace qoraudiotoolkit {

/// Carries a meter's spectra to the main thread. Post it to the filter that feeds the meter; on
/// the main thread it reads the newest spectrum and emits `MeterDataChanged` with it, then posts
/// itself to the meter's message target again, for as long as a slot is connected. Disconnect
/// (or drop the connection) to stop it: the copy in flight finds nobody listening and ends.
///
/// The slot's arguments are those of `SpectrumDraw::SetSpectrumData`, so a graph can forward
/// them unchanged: the transform size (the painter keeps size / 2 + 1 values), the amplitudes,
/// the line or band count, the kind, and whether the painter should check its line layout
/// (always true here; the painter itself tells when count or kind changed).
///
/// Make it with `std::make_shared`, since it posts itself through `shared_from_this`.
class SpectrumMeterMessage : public qoraudiofilterhost::Message,
                             public std::enable_shared_from_this<SpectrumMeterMessage> {
public:
    using MeterDataChanged = void(unsigned int fftSize, const std::vector<float>& data,
                                  unsigned int count, SpectrumType type, bool updateLines);

    /// A null meter throws std::invalid_argument.
    explicit SpectrumMeterMessage(qorcore::IntrusivePtr<SpectrumMeterDSP> meter);
    ~SpectrumMeterMessage() override;

    [[nodiscard]] qorcore::Connection ConnectMeterDataChanged(std::function<MeterDataChanged> slot);

    /// Nothing to do there: the trip through the process thread paces the deliveries to its
    /// blocks.
    void ExecuteOnProcessThread() override;
    /// Emits the newest spectrum if there is a new one, then posts itself again while listened
    /// to.
    void ExecuteOnMainThread() override;

    const qorcore::IntrusivePtr<SpectrumMeterDSP>& GetMeter() const { return meter_; }
    /// How many spectra it has delivered.
    std::size_t GetDeliveryCount() const { return deliveries_; }

private:
    qorcore::IntrusivePtr<SpectrumMeterDSP> meter_;
    qorcore::Signal<MeterDataChanged> meterDataChanged_;
    SpectrumFrame frame_;
    std::size_t deliveries_ = 0;
};

/// Lets go of a meter reference on the main thread: at once when called there, otherwise the
/// reference is handed to the main-thread queue. Messages call it from their destructors, which
/// may run on the process thread when the host drops its copy last.
void ReleaseMeterOnMainThread(qorcore::IntrusivePtr<SpectrumMeterDSP>& meter);

} // namespace qoraudiotoolkit
