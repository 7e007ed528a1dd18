#pragma once

#include "audio/dsp/reference_effect.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace qafhost {

/// Runs a reference effect over a whole signal as fast as it goes, on the calling thread: the
/// offline twin of `ProcessHost`. The effect sees blocks of the chosen size (the last one
/// shorter), with the settings its parameters hold when `Run` starts, and from a clear signal.
/// Its latency is taken out: the input is followed by that many frames of silence and as many
/// frames are dropped from the front, so the output lines up with the input and is as long.
class OfflineProcessor {
public:
    static constexpr std::size_t kDefaultBlockSize = 512;
    static constexpr std::size_t kMaxBlockSize = 65536;
    static constexpr std::size_t kMaxChannels = 8;

    /// Fills up to `frameCount` interleaved frames and returns how many it gave; 0 at the end.
    using Reader = std::function<std::size_t(float* interleaved, std::size_t frameCount)>;
    /// Takes `frameCount` interleaved frames of output.
    using Writer = std::function<void(const float* interleaved, std::size_t frameCount)>;

    /// The reference effect `effectName` made for `sampleRate` and `channelCount`. A channel
    /// count outside 1..kMaxChannels, a block size outside 1..kMaxBlockSize or a bad rate
    /// throws std::invalid_argument naming the value; an effect the reference host has no
    /// DSP for throws std::runtime_error naming it.
    OfflineProcessor(std::string_view effectName, float sampleRate, std::size_t channelCount,
                     std::size_t blockSize = kDefaultBlockSize);
    /// An effect made elsewhere; a null one, or a bad block size, throws std::invalid_argument.
    explicit OfflineProcessor(std::shared_ptr<qoraudiofilters::ReferenceEffect> effect,
                              std::size_t blockSize = kDefaultBlockSize);

    /// Set its parameters before `Run`.
    const std::shared_ptr<qoraudiofilters::ReferenceEffect>& GetEffect() const { return effect_; }
    std::size_t GetChannelCount() const { return channelCount_; }
    std::size_t GetBlockSize() const { return blockSize_; }

    /// Everything `read` gives, through the effect, to `write`; returns the frames written,
    /// which are the frames read. Exceptions of `read` and `write` pass through.
    std::uint64_t Run(const Reader& read, const Writer& write);
    /// The same on a signal in memory, interleaved; its length must be a whole number of
    /// frames (std::invalid_argument otherwise).
    std::vector<float> Run(std::span<const float> interleaved);

private:
    void TakeOverSettings();
    void ProcessBlock(const float* interleavedIn, float* interleavedOut, std::size_t frameCount);

    std::shared_ptr<qoraudiofilters::ReferenceEffect> effect_;
    std::size_t channelCount_;
    std::size_t blockSize_;
    std::vector<std::vector<float>> planar_;
    std::vector<float*> pointers_;
};

} // namespace qafhost
