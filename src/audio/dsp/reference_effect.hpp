#pragma once

#include "platform/host/parameter_store_filter.hpp"

#include <cstddef>
#include <vector>

namespace qoraudiofilters {

/// An effect of the reference host: a table of parameters (the editors' side) with signal
/// processing behind it. The host calls `Process` on its process thread, block after block, and
/// `UpdateFromParameters` on the main thread whenever it had no chance to see parameter writes
/// (a preset, a stored value).
class ReferenceEffect : public qoraudiofilterhost::ParameterStoreFilter {
public:
    /// A rate that is not a positive finite number throws std::invalid_argument; the channel
    /// count (in and out) is limited to 1..8.
    ReferenceEffect(std::vector<qoraudiofilterhost::ParameterDescriptor> parameters,
                    float sampleRate, std::size_t channelCount);

    std::size_t GetChannelCount() const { return channelCount_; }

    /// The process thread: `frameCount` samples of `channelCount` channels from `inputs` to
    /// `outputs`. An output may be the same buffer as its input; a null input is silence.
    /// Channels past the effect's own count pass through unchanged. Must not lock or allocate.
    virtual void Process(const float* const* inputs, float* const* outputs,
                         std::size_t channelCount, std::size_t frameCount) = 0;
    /// The process thread: forget the signal (delay lines, overlaps), keep the settings.
    virtual void Reset() {}
    /// Samples by which the output lags the input.
    virtual std::size_t GetLatencySamples() const { return 0; }
    /// The main thread: takes over parameter changes made without the effect's notice.
    virtual void UpdateFromParameters() {}

    // AudioFilter: a write, notifying or quiet, reaches the sound at once (`ApplyParameter`);
    // the editor's sync is a chance to take over changes made without the effect's notice.
    void SetParameterValue(int index, float value) override;
    void SetParameterQuietly(int index, float value) override;
    bool PrepareParameterSync() override;

    /// A parameter as the effect applies it: a stored value that is no number reads as the
    /// parameter's default, any other is held to 0..1.
    double GetAppliedValue(int index) const;
    /// The same through the descriptor's plain range.
    double GetAppliedPlainValue(int index) const;

protected:
    /// Takes over the parameter just written. By default the whole set is read again
    /// (`UpdateFromParameters`); an effect that decodes parameter by parameter takes just the
    /// one.
    virtual void ApplyParameter(int index);
    /// Channels past the effect's own count pass through unchanged (a null input is silence);
    /// returns how many channels the effect itself processes.
    std::size_t PassExtraChannels(const float* const* inputs, float* const* outputs,
                                  std::size_t channelCount, std::size_t frameCount) const;

private:
    std::size_t channelCount_;
};

} // namespace qoraudiofilters
