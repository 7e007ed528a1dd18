#pragma once

#include <cstddef>

namespace qafhost {

/// Where the reference host takes its input from. `Read` runs on the process thread and must
/// neither lock nor allocate; everything else runs on the main thread before the source is
/// handed over.
class AudioSource {
public:
    virtual ~AudioSource();

    virtual float GetSampleRate() const = 0;
    /// Channels the source has of its own; `Read` fills as many as asked whatever this says.
    virtual std::size_t GetChannelCount() const = 0;
    /// Fills `frameCount` samples of each of `channelCount` channels. A source with fewer
    /// channels repeats its last one; one with more leaves the rest out.
    virtual void Read(float* const* channels, std::size_t channelCount, std::size_t frameCount) = 0;
    /// Back to the start.
    virtual void Rewind() = 0;
};

} // namespace qafhost
