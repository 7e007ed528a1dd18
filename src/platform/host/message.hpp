#pragma once

namespace qoraudiofilterhost {

/// Base of everything posted to a filter with `AudioFilter::Post`: `ExecuteOnProcessThread`
/// runs on the audio process thread, then `ExecuteOnMainThread` on the main thread. Analysis
/// crosses threads only this way.
class Message {
public:
    virtual ~Message();
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    virtual void ExecuteOnProcessThread() = 0;
    virtual void ExecuteOnMainThread() = 0;

protected:
    Message() = default;
};

} // namespace qoraudiofilterhost
