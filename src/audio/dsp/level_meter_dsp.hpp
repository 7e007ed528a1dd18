#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

namespace qoraudiofilterhost {
class AudioFilter;
}

namespace qoraudiotoolkit {

/// Peak and mean-square levels of each channel, measured on the process thread and read on the
/// main thread. Each channel keeps atomics only: the process thread raises the peak held since
/// the last read, the main thread takes it and starts a new hold. Nothing locks or allocates
/// after construction. Samples that are no finite number count as silence.
class LevelMeterDSP {
public:
    /// What one channel measured since the last read: the peak first, as linear amplitude, and
    /// the mean square of the last block fed.
    struct Reading {
        float peak = 0.0f;
        float meanSquare = 0.0f;
    };
    static constexpr std::size_t kMaxChannels = 32;

    /// The channel count is limited to 1..kMaxChannels.
    explicit LevelMeterDSP(std::size_t channelCount);

    std::size_t GetChannelCount() const { return channelCount_; }

    /// The process thread: `frameCount` samples of each channel; channels past the meter's are
    /// ignored, a null channel is silence.
    void ProcessBlock(const float* const* channels, std::size_t channelCount,
                      std::size_t frameCount);

    /// The main thread: the readings of the channels from `offset` on (none past the last), and
    /// a new hold for each.
    void ReadLevels(std::size_t offset, std::vector<Reading>& out);

    /// The filter to which a `LevelMeterDSPMessage` of this meter posts itself again.
    void SetMessageTarget(std::weak_ptr<qoraudiofilterhost::AudioFilter> target);
    std::shared_ptr<qoraudiofilterhost::AudioFilter> GetMessageTarget() const;

private:
    struct channel_t {
        std::atomic<float> peak{0.0f};
        std::atomic<float> meanSquare{0.0f};
    };

    std::size_t channelCount_;
    std::unique_ptr<channel_t[]> channels_;
    std::weak_ptr<qoraudiofilterhost::AudioFilter> messageTarget_;
};

} // namespace qoraudiotoolkit
