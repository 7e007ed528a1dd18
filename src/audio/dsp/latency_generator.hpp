#pragma once

#include "audio/dsp/dynamics_toolkit.hpp"
#include "audio/dsp/reference_effect.hpp"

#include <array>
#include <atomic>
#include <cstddef>

namespace qoraudiofilters {

/// A test effect for hosts: delays the signal by exactly the latency it reports, so a host's
/// latency compensation can be checked. Its second switch makes processing fail on purpose: the
/// output goes silent and `HasFailed` reports it, while nothing else is disturbed.
///
/// Parameters (normalised 0..1): 0 latency 0..1000 ms (whole samples), 1 fail on process (above
/// 0.5). Out of range values are held to 0..1, a value that is no number reads as the default.
/// Threads: writes are atomic; the process thread takes a new latency over at its next block
/// (forgetting the delayed signal) and never locks, allocates or frees.
class LatencyGenerator : public ReferenceEffect {
public:
    enum ParameterIndex : int { kLatency = 0, kFailOnProcess = 1 };
    static constexpr int kParameterCount = 2;
    static constexpr double kMaxLatencyMilliseconds = 1000.0;
    static constexpr std::size_t kMaxChannels = 8;

    explicit LatencyGenerator(float sampleRate = 48000.0f, std::size_t channelCount = 2);

    /// Whether the last processed block failed on purpose; any thread.
    bool HasFailed() const { return failed_.load(std::memory_order_relaxed); }

    // ReferenceEffect
    void Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                 std::size_t frameCount) override;
    void Reset() override;
    std::size_t GetLatencySamples() const override;
    void UpdateFromParameters() override;

private:
    void Decode();

    std::atomic<std::size_t> latency_{0};
    std::atomic<bool> failOnProcess_{false};
    std::atomic<bool> failed_{false};
    // The process thread's.
    std::array<dynamics::DelayLine, kMaxChannels> lines_;
};

} // namespace qoraudiofilters
