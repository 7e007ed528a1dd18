#include "audio/host/offline_processor.hpp"

#include "audio/host/denormals_as_zero.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/reference_effects.hpp"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace qafhost {

static_assert(OfflineProcessor::kMaxBlockSize == ProcessHost::kMaxBlockSize);

namespace {

std::size_t CheckedBlockSize(std::size_t blockSize) {
    if (blockSize == 0 || blockSize > OfflineProcessor::kMaxBlockSize)
        throw std::invalid_argument("block size " + std::to_string(blockSize) +
                                    ": it must be 1 to " +
                                    std::to_string(OfflineProcessor::kMaxBlockSize));
    return blockSize;
}

std::shared_ptr<qoraudiofilters::ReferenceEffect>
MakeEffect(std::string_view name, float sampleRate, std::size_t channelCount) {
    if (channelCount == 0 || channelCount > OfflineProcessor::kMaxChannels)
        throw std::invalid_argument(std::to_string(channelCount) +
                                    " channels: the reference effects take 1 to " +
                                    std::to_string(OfflineProcessor::kMaxChannels));
    auto effect = CreateReferenceEffect(name, sampleRate, channelCount);
    if (!effect)
        throw std::runtime_error(std::string(name) +
                                 ": the reference host has no DSP for this effect");
    return effect;
}

std::shared_ptr<qoraudiofilters::ReferenceEffect>
Checked(std::shared_ptr<qoraudiofilters::ReferenceEffect> effect) {
    if (!effect)
        throw std::invalid_argument("OfflineProcessor: null effect");
    return effect;
}

} // namespace

OfflineProcessor::OfflineProcessor(std::string_view effectName, float sampleRate,
                                   std::size_t channelCount, std::size_t blockSize)
    : OfflineProcessor(MakeEffect(effectName, sampleRate, channelCount), blockSize) {}

OfflineProcessor::OfflineProcessor(std::shared_ptr<qoraudiofilters::ReferenceEffect> effect,
                                   std::size_t blockSize)
    : effect_(Checked(std::move(effect))), channelCount_(effect_->GetChannelCount()),
      blockSize_(CheckedBlockSize(blockSize)),
      planar_(channelCount_, std::vector<float>(blockSize_, 0.0f)) {
    for (std::vector<float>& channel : planar_)
        pointers_.push_back(channel.data());
}

void OfflineProcessor::TakeOverSettings() {
    effect_->UpdateFromParameters();
    // An effect hands new settings to its process side, which takes them over while it
    // processes (after a crossfade, if that is how it changes them live). A frame of silence
    // lets it take them; Reset then forgets that frame and any fade, so the run starts clear.
    for (std::vector<float>& channel : planar_)
        channel[0] = 0.0f;
    effect_->Process(pointers_.data(), pointers_.data(), channelCount_, 1);
    effect_->Reset();
}

void OfflineProcessor::ProcessBlock(const float* interleavedIn, float* interleavedOut,
                                    std::size_t frameCount) {
    for (std::size_t c = 0; c < channelCount_; ++c)
        for (std::size_t i = 0; i < frameCount; ++i)
            planar_[c][i] = interleavedIn[i * channelCount_ + c];
    effect_->Process(pointers_.data(), pointers_.data(), channelCount_, frameCount);
    for (std::size_t c = 0; c < channelCount_; ++c)
        for (std::size_t i = 0; i < frameCount; ++i)
            interleavedOut[i * channelCount_ + c] = planar_[c][i];
}

std::uint64_t OfflineProcessor::Run(const Reader& read, const Writer& write) {
    const DenormalsAsZero denormals;
    TakeOverSettings();
    const std::size_t latency = effect_->GetLatencySamples();
    std::vector<float> in(blockSize_ * channelCount_);
    std::vector<float> out(blockSize_ * channelCount_);
    std::size_t toDrop = latency;
    std::size_t silenceLeft = latency;
    bool ended = false;
    std::uint64_t written = 0;
    for (;;) {
        // Whole blocks, whatever the reader gives at a time.
        std::size_t filled = 0;
        while (!ended && filled < blockSize_) {
            const std::size_t wanted = blockSize_ - filled;
            const std::size_t given = read(in.data() + filled * channelCount_, wanted);
            if (given > wanted)
                throw std::logic_error("OfflineProcessor: the reader gave more than asked");
            ended = given == 0;
            filled += given;
        }
        if (ended) {
            const std::size_t pad = std::min(blockSize_ - filled, silenceLeft);
            std::fill_n(in.begin() + std::ptrdiff_t(filled * channelCount_), pad * channelCount_,
                        0.0f);
            filled += pad;
            silenceLeft -= pad;
        }
        if (filled == 0)
            break;
        ProcessBlock(in.data(), out.data(), filled);
        const std::size_t dropped = std::min(toDrop, filled);
        toDrop -= dropped;
        if (filled > dropped) {
            write(out.data() + dropped * channelCount_, filled - dropped);
            written += filled - dropped;
        }
    }
    return written;
}

std::vector<float> OfflineProcessor::Run(std::span<const float> interleaved) {
    if (interleaved.size() % channelCount_ != 0)
        throw std::invalid_argument("OfflineProcessor: " + std::to_string(interleaved.size()) +
                                    " samples are no whole number of frames of " +
                                    std::to_string(channelCount_) + " channels");
    std::vector<float> output;
    output.reserve(interleaved.size());
    std::size_t at = 0;
    Run(
        [&](float* to, std::size_t frameCount) {
            const std::size_t count = std::min(frameCount * channelCount_, interleaved.size() - at);
            std::copy_n(interleaved.begin() + std::ptrdiff_t(at), count, to);
            at += count;
            return count / channelCount_;
        },
        [&](const float* from, std::size_t frameCount) {
            output.insert(output.end(), from, from + frameCount * channelCount_);
        });
    return output;
}

} // namespace qafhost
