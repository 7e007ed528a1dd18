#pragma once

#include "audio/host/process_host.hpp"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qafhost {

/// The sound device, fed by the process thread: an SDL audio device of float samples at the
/// host's rate and channel count, and a ring between the two.
///
/// The host's output tap pushes every block into the ring; the device's callback takes what it
/// needs from it. The ring has one writer and one reader and is lock-free: neither side locks,
/// allocates or waits. The device plays silence until the ring holds `startFrames`; when it
/// then finds fewer frames than it needs, it plays what there is, fills the rest with silence,
/// counts an underrun and waits to be filled as far again. A block that does not fit is
/// dropped and counted, which is how a device slower than the host's clock shows.
class SoundOutput {
public:
    struct Options {
        /// Frames the device asks for at a time.
        std::size_t deviceFrames = 1024;
        /// Frames the ring holds; the most the sound can lag the process thread.
        std::size_t bufferFrames = 8192;
        /// Frames in the ring before the device plays them, after the start or an underrun.
        std::size_t startFrames = 2048;
    };

    /// Opens the default device and starts it. No audio driver or device, or a rate or channel
    /// count out of reach, throws std::runtime_error with SDL's reason; options out of order
    /// (zero sizes, a start past the ring) throw std::invalid_argument.
    SoundOutput(float sampleRate, std::size_t channelCount, Options options);
    SoundOutput(float sampleRate, std::size_t channelCount);
    /// Stops the device and waits for its callback to finish.
    ~SoundOutput();
    SoundOutput(const SoundOutput&) = delete;
    SoundOutput& operator=(const SoundOutput&) = delete;

    float GetSampleRate() const { return sampleRate_; }
    std::size_t GetChannelCount() const { return channelCount_; }
    /// The SDL audio driver in use ("pulseaudio", "alsa", "disk", ...).
    const std::string& GetDriverName() const { return driver_; }

    /// The producer, one thread at a time: appends a block of planar channels. Channels it
    /// lacks are silent; channels past the device's are left out.
    void Push(const float* const* channels, std::size_t channelCount, std::size_t frameCount);
    /// A tap for `ProcessHost::Options` that pushes every block; the output must outlive the
    /// host it taps.
    ProcessHost::OutputTap MakeTap();

    /// Times the device found the ring short while playing.
    std::uint64_t GetUnderrunCount() const { return underruns_.load(std::memory_order_relaxed); }
    /// Frames pushed that did not fit into the ring.
    std::uint64_t GetDroppedFrames() const { return dropped_.load(std::memory_order_relaxed); }
    /// Frames of the ring the device has played.
    std::uint64_t GetPlayedFrames() const { return read_.load(std::memory_order_acquire); }

private:
    static void Callback(void* self, std::uint8_t* stream, int length);
    void Pull(float* interleaved, std::size_t frameCount);

    float sampleRate_;
    std::size_t channelCount_;
    std::size_t capacity_;    // frames
    std::size_t startFrames_; // frames
    std::vector<float> ring_; // interleaved
    std::string driver_;
    std::uint32_t device_ = 0;
    bool playing_ = false; // the device callback's

    // Frames ever written and read; their difference is what the ring holds.
    alignas(64) std::atomic<std::uint64_t> written_{0};
    alignas(64) std::atomic<std::uint64_t> read_{0};
    std::atomic<std::uint64_t> underruns_{0};
    std::atomic<std::uint64_t> dropped_{0};
};

} // namespace qafhost
