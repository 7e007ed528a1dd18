#pragma once

#include "platform/host/audio_bus_description.hpp"
#include "platform/host/audio_filter_parameter_info.hpp"
#include "platform/host/audio_filter_signals.hpp"
#include "platform/host/message.hpp"

#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace qoraudiofilterhost {

class IAudioFilterHost;

/// An effect as its editor sees it: parameters by index with values normalised to 0..1, edit
/// gestures, a dirty count, bus layouts, custom data, signals and a message queue to the
/// process thread. Editors only read and write through these operations.
///
/// The named (non-virtual) operations read state that a subclass keeps up to date through the
/// protected setters. Getters are called on the main thread while the process thread runs, so
/// the counters are atomic.
class AudioFilter : public std::enable_shared_from_this<AudioFilter> {
public:
    AudioFilter();
    virtual ~AudioFilter();
    AudioFilter(const AudioFilter&) = delete;
    AudioFilter& operator=(const AudioFilter&) = delete;

    // Named operations
    /// Raised whenever a parameter changes other than quietly.
    int GetParameterDirtyCount() const { return dirtyCount_.load(std::memory_order_acquire); }
    std::vector<qormediatypes::AudioBusDescription> GetInputBuses() const;
    std::vector<qormediatypes::AudioBusDescription> GetOutputBuses() const;
    float GetSampleRate() const { return sampleRate_.load(std::memory_order_acquire); }
    std::size_t GetNumberOfInputChannels() const;
    std::size_t GetNumberOfOutputChannels() const;
    /// Queues a message for the process thread; a null message throws std::invalid_argument.
    void Post(std::shared_ptr<Message> message);
    AudioFilterSignals& GetSignals() { return signals_; }
    /// May be null.
    IAudioFilterHost* GetAudioFilterHost() const { return host_; }
    bool IsSuspended() const { return suspended_.load(std::memory_order_acquire); }

    /// For the process thread: runs `ExecuteOnProcessThread` of every message queued so far, in
    /// order, and hands each to the main-thread queue for `ExecuteOnMainThread`. Returns how
    /// many ran. Messages posted meanwhile wait for the next call.
    std::size_t ProcessPostedMessages();
    std::size_t GetPostedMessageCount() const;

    // Virtual operations the editors call
    /// Length of the current item in seconds.
    virtual double GetDuration() const { return 0.0; }
    virtual std::size_t GetParameterCount() const = 0;
    /// A change from the user.
    virtual void SetParameterValue(int index, float value) = 0;
    /// A write that holds display state; it does not raise the dirty count.
    virtual void SetParameterQuietly(int index, float value) = 0;
    virtual float GetParameterValue(int index) const = 0;
    /// May be null.
    virtual std::shared_ptr<AudioFilterParameterInfo> GetParameterInfo(int index) const = 0;
    /// The response at `pointCount` points; non-zero when it filled `out`.
    virtual int GetResponseCurve(int channel, int pointCount, std::vector<float>& out);
    virtual void BeginParameterEdit(int index) = 0;
    /// -1 ends every open gesture.
    virtual void EndParameterEdit(int index) = 0;
    virtual bool IsParameterBeingEdited(int index) const = 0;
    /// Called once at the head of every synchronisation of an editor; the result is ignored.
    virtual bool PrepareParameterSync() { return true; }
    /// Effect-specific data by index, `size` entries in `out`; non-zero when it filled them.
    virtual int GetCustomDoubleData(int index, int size, std::vector<double>& out);
    virtual int GetCustomFloatData(int index, int size, std::vector<float>& out);

protected:
    void RaiseParameterDirtyCount() { dirtyCount_.fetch_add(1, std::memory_order_acq_rel); }
    void SetBuses(std::vector<qormediatypes::AudioBusDescription> inputs,
                  std::vector<qormediatypes::AudioBusDescription> outputs);
    /// Non-positive or non-finite rates throw std::invalid_argument.
    void SetSampleRate(float sampleRate);
    void SetAudioFilterHost(IAudioFilterHost* host) { host_ = host; }
    /// Emits the suspended-state signal when the state changes; call on the main thread.
    void SetSuspendedState(bool suspended);

private:
    std::atomic<int> dirtyCount_{0};
    std::atomic<float> sampleRate_{48000.0f};
    std::atomic<bool> suspended_{false};
    IAudioFilterHost* host_ = nullptr;
    AudioFilterSignals signals_;
    mutable std::mutex mutex_; // guards the buses and the message queue
    std::vector<qormediatypes::AudioBusDescription> inputBuses_;
    std::vector<qormediatypes::AudioBusDescription> outputBuses_;
    std::deque<std::shared_ptr<Message>> messages_;
};

} // namespace qoraudiofilterhost
