#pragma once

#include "audio/dsp/reference_effect.hpp"
#include "audio/host/audio_source.hpp"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace qafhost {

/// The reference host: a process thread that runs one effect on blocks of audio from a source.
///
/// Every block, the thread first runs the messages posted to the effect (`ExecuteOnProcessThread`
/// there, `ExecuteOnMainThread` queued for the main thread, in the order of posting), then reads
/// the source, then processes the block, unless the effect is suspended: then the block passes
/// unchanged and the effect is not called. The output goes to an optional tap; there is no
/// sound device.
///
/// On the real-time clock the thread keeps the pace of the sample rate by itself. On the
/// virtual clock it waits for the main thread's `Advance`, which runs a given length of audio
/// and returns when it is done; the main thread then pumps its queue (`MainThreadQueue::
/// RunPending`, or a headless window's clock) to deliver the messages' main-thread halves.
///
/// The audio path takes no lock on the real-time clock: parameter writes reach the effect
/// through its own lock-free hand-over, and a new source comes through an atomic slot.
class ProcessHost {
public:
    enum class Clock { kRealTime, kVirtual };
    using OutputTap = std::function<void(const float* const* channels, std::size_t channelCount,
                                         std::size_t frameCount)>;
    struct Options {
        std::size_t blockSize = 512;
        Clock clock = Clock::kVirtual;
        /// Called on the process thread with every processed block.
        OutputTap tap;
    };

    static constexpr std::size_t kMaxBlockSize = 65536;

    /// A null effect or a block size outside 1..kMaxBlockSize throws std::invalid_argument.
    /// The process thread starts at once, with silence as its source.
    ProcessHost(std::shared_ptr<qoraudiofilters::ReferenceEffect> effect, Options options);
    explicit ProcessHost(std::shared_ptr<qoraudiofilters::ReferenceEffect> effect);
    /// Stops the process thread. Messages it has not run stay queued in the effect.
    ~ProcessHost();
    ProcessHost(const ProcessHost&) = delete;
    ProcessHost& operator=(const ProcessHost&) = delete;

    const std::shared_ptr<qoraudiofilters::ReferenceEffect>& GetEffect() const { return effect_; }
    float GetSampleRate() const { return sampleRate_; }
    std::size_t GetBlockSize() const { return blockSize_; }
    Clock GetClock() const { return clock_; }
    std::thread::id GetProcessThreadId() const { return thread_.get_id(); }

    /// The main thread: the source the next block reads from; none plays silence. The previous
    /// source is freed on the main thread at a later call.
    void SetSource(std::unique_ptr<AudioSource> source);

    /// The virtual clock: runs `seconds` of audio in whole blocks (a remainder is carried to the
    /// next call) and returns when the process thread has done them. A negative or non-finite
    /// length throws std::invalid_argument; on the real-time clock std::logic_error.
    void Advance(double seconds);
    /// Frames processed since the start.
    std::uint64_t GetProcessedFrames() const { return processed_.load(std::memory_order_acquire); }

    /// The main thread: suspends or resumes the effect (its suspended signal fires on a change).
    void SetSuspended(bool suspended);
    bool IsSuspended() const { return effect_->IsSuspended(); }

private:
    void RunRealTime();
    void RunVirtual();
    void ProcessBlock();
    void CollectSources();

    std::shared_ptr<qoraudiofilters::ReferenceEffect> effect_;
    float sampleRate_;
    std::size_t blockSize_;
    Clock clock_;
    OutputTap tap_;
    std::size_t channelCount_;

    // The process thread's.
    std::vector<std::vector<float>> input_;
    std::vector<std::vector<float>> output_;
    std::vector<float*> inputPointers_;
    std::vector<float*> outputPointers_;
    std::unique_ptr<AudioSource> source_;

    // Sources on their way in and out.
    std::atomic<AudioSource*> incoming_{nullptr};
    std::atomic<AudioSource*> outgoing_{nullptr};

    std::atomic<std::uint64_t> processed_{0};
    std::atomic<bool> stopping_{false};

    // The virtual clock's budget of blocks.
    std::mutex mutex_;
    std::condition_variable changed_;
    std::uint64_t blocksOwed_ = 0;
    double framesCarried_ = 0.0;

    std::thread thread_;
};

} // namespace qafhost
