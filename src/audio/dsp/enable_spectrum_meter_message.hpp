#pragma once

#include "audio/dsp/spectrum_meter_dsp.hpp"
#include "audio/dsp/spectrum_meter_message.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/host/message.hpp"

#include <memory>
#include <stdexcept>

namespace qoraudiotoolkit {

/// Switches the spectrum meter of a filter on or off. T is a filter class with
/// `IntrusivePtr<SpectrumMeterDSP> SwapSpectrumMeter(IntrusivePtr<SpectrumMeterDSP>)`, which
/// installs a meter for its process thread and returns the one it had.
///
/// Enabling makes a meter from the filter's sample rate and input channel count, and keeps it
/// twice: as the created meter and as the meter to swap in. On the process thread the meter to
/// swap changes hands with the filter's, so the swap pointer then holds the previous meter; on
/// the main thread the swap pointer is cleared, which releases the previous meter there. No
/// meter is ever released on the process thread.
///
/// The message owns the filter and the created meter, so it completes safely when whoever
/// posted it is gone.
template <class T>
class EnableSpectrumMeterMessage : public qoraudiofilterhost::Message {
public:
    /// A null filter throws std::invalid_argument.
    EnableSpectrumMeterMessage(std::shared_ptr<T> filter, bool enable)
        : filter_(std::move(filter)) {
        if (!filter_)
            throw std::invalid_argument("EnableSpectrumMeterMessage: null filter");
        if (enable) {
            created_ = qorcore::MakeIntrusive<SpectrumMeterDSP>(
                filter_->GetSampleRate(), filter_->GetNumberOfInputChannels());
            created_->SetMessageTarget(filter_);
            swap_ = created_;
        }
    }

    ~EnableSpectrumMeterMessage() override {
        ReleaseMeterOnMainThread(swap_);
        ReleaseMeterOnMainThread(created_);
    }

    void ExecuteOnProcessThread() override {
        qorcore::IntrusivePtr<SpectrumMeterDSP> meter = swap_;
        swap_ = filter_->SwapSpectrumMeter(std::move(meter));
    }

    void ExecuteOnMainThread() override { swap_.reset(); }

    /// The meter this message made; none when it disables.
    const qorcore::IntrusivePtr<SpectrumMeterDSP>& GetCreatedMeter() const { return created_; }

    /// Builds the message, posts it to the filter and returns the meter it made (none when
    /// disabling). The message keeps its own reference until it dies.
    static qorcore::IntrusivePtr<SpectrumMeterDSP> Post(const std::shared_ptr<T>& filter,
                                                        bool enable) {
        auto message = std::make_shared<EnableSpectrumMeterMessage>(filter, enable);
        qorcore::IntrusivePtr<SpectrumMeterDSP> created = message->created_;
        filter->Post(std::move(message));
        return created;
    }

private:
    std::shared_ptr<T> filter_;
    qorcore::IntrusivePtr<SpectrumMeterDSP> swap_;
    qorcore::IntrusivePtr<SpectrumMeterDSP> created_;
};

} // namespace qoraudiotoolkit
