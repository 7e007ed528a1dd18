#pragma once

#include <cstdint>
#include <vector>

namespace qormediatypes {

/// A channel label; 0 is an unlabelled channel.
using AudioChannelLabel = std::uint32_t;

/// The channel layout of one bus of a filter: a label per channel, in channel order.
struct AudioBusDescription {
    std::vector<AudioChannelLabel> channelLabels;

    std::size_t GetChannelCount() const { return channelLabels.size(); }
    friend bool operator==(const AudioBusDescription&, const AudioBusDescription&) = default;
};

} // namespace qormediatypes
