#include "audio/dsp/level_meter_dsp.hpp"

#include <algorithm>
#include <cmath>

namespace qoraudiotoolkit {

LevelMeterDSP::LevelMeterDSP(std::size_t channelCount)
    : channelCount_(std::clamp<std::size_t>(channelCount, 1, kMaxChannels)),
      channels_(std::make_unique<channel_t[]>(channelCount_)) {}

void LevelMeterDSP::ProcessBlock(const float* const* channels, std::size_t channelCount,
                                 std::size_t frameCount) {
    const std::size_t count = std::min(channelCount, channelCount_);
    for (std::size_t c = 0; c < count; ++c) {
        float peak = 0.0f;
        double sum = 0.0;
        if (channels && channels[c]) {
            for (std::size_t i = 0; i < frameCount; ++i) {
                const float v = channels[c][i];
                if (!std::isfinite(v))
                    continue;
                peak = std::max(peak, std::fabs(v));
                sum += double(v) * double(v);
            }
        }
        channel_t& channel = channels_[c];
        // Only this thread raises the hold; a read in between at worst loses one block's peak.
        if (peak > channel.peak.load(std::memory_order_relaxed))
            channel.peak.store(peak, std::memory_order_relaxed);
        if (frameCount > 0)
            channel.meanSquare.store(float(sum / double(frameCount)), std::memory_order_relaxed);
    }
}

void LevelMeterDSP::ReadLevels(std::size_t offset, std::vector<Reading>& out) {
    out.clear();
    for (std::size_t c = offset; c < channelCount_; ++c)
        out.push_back({channels_[c].peak.exchange(0.0f, std::memory_order_relaxed),
                       channels_[c].meanSquare.load(std::memory_order_relaxed)});
}

void LevelMeterDSP::SetMessageTarget(std::weak_ptr<qoraudiofilterhost::AudioFilter> target) {
    messageTarget_ = std::move(target);
}

std::shared_ptr<qoraudiofilterhost::AudioFilter> LevelMeterDSP::GetMessageTarget() const {
    return messageTarget_.lock();
}

} // namespace qoraudiotoolkit
