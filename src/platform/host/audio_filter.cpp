#include "platform/host/audio_filter.hpp"

#include "platform/core/main_thread_queue.hpp"

#include <cmath>
#include <stdexcept>

namespace qoraudiofilterhost {

namespace {

std::size_t FirstBusChannels(const std::vector<qormediatypes::AudioBusDescription>& buses) {
    return buses.empty() ? 0 : buses.front().GetChannelCount();
}

} // namespace

AudioFilter::AudioFilter() {
    // Stereo in and out until a subclass says otherwise.
    inputBuses_ = {qormediatypes::AudioBusDescription{{1, 2}}};
    outputBuses_ = inputBuses_;
}

AudioFilter::~AudioFilter() = default;

std::vector<qormediatypes::AudioBusDescription> AudioFilter::GetInputBuses() const {
    std::lock_guard lock(mutex_);
    return inputBuses_;
}

std::vector<qormediatypes::AudioBusDescription> AudioFilter::GetOutputBuses() const {
    std::lock_guard lock(mutex_);
    return outputBuses_;
}

std::size_t AudioFilter::GetNumberOfInputChannels() const {
    std::lock_guard lock(mutex_);
    return FirstBusChannels(inputBuses_);
}

std::size_t AudioFilter::GetNumberOfOutputChannels() const {
    std::lock_guard lock(mutex_);
    return FirstBusChannels(outputBuses_);
}

void AudioFilter::Post(std::shared_ptr<Message> message) {
    if (!message)
        throw std::invalid_argument("AudioFilter::Post: null message");
    std::lock_guard lock(mutex_);
    messages_.push_back(std::move(message));
}

std::size_t AudioFilter::ProcessPostedMessages() {
    std::deque<std::shared_ptr<Message>> batch;
    {
        std::lock_guard lock(mutex_);
        batch.swap(messages_);
    }
    const std::size_t count = batch.size();
    for (auto& message : batch) {
        message->ExecuteOnProcessThread();
        // The main thread's task takes the only reference, so a message (and the meter it may
        // hold) is never released here on the process thread.
        qorcore::PostToMainThread(
            [message = std::move(message)] { message->ExecuteOnMainThread(); });
    }
    return count;
}

std::size_t AudioFilter::GetPostedMessageCount() const {
    std::lock_guard lock(mutex_);
    return messages_.size();
}

int AudioFilter::GetResponseCurve(int, int, std::vector<float>&) {
    return 0;
}

int AudioFilter::GetCustomDoubleData(int, int, std::vector<double>&) {
    return 0;
}

int AudioFilter::GetCustomFloatData(int, int, std::vector<float>&) {
    return 0;
}

void AudioFilter::SetBuses(std::vector<qormediatypes::AudioBusDescription> inputs,
                           std::vector<qormediatypes::AudioBusDescription> outputs) {
    std::lock_guard lock(mutex_);
    inputBuses_ = std::move(inputs);
    outputBuses_ = std::move(outputs);
}

void AudioFilter::SetSampleRate(float sampleRate) {
    if (!std::isfinite(sampleRate) || sampleRate <= 0.0f)
        throw std::invalid_argument("AudioFilter::SetSampleRate: the rate must be above 0");
    sampleRate_.store(sampleRate, std::memory_order_release);
}

void AudioFilter::SetSuspendedState(bool suspended) {
    if (suspended_.exchange(suspended, std::memory_order_acq_rel) != suspended)
        signals_.EmitSuspendedStateChanged(suspended);
}

} // namespace qoraudiofilterhost
