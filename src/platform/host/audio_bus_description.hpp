#pragma once

#include <cstdint>
#include <string>
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

/// The labels of the channels the effects know, in the order of a 7.1 layout and its
/// surround extensions.
enum AudioChannelLabels : AudioChannelLabel {
    kAudioChannelLabelUnknown = 0,
    kAudioChannelLabelLeft = 1,
    kAudioChannelLabelRight = 2,
    kAudioChannelLabelCenter = 3,
    kAudioChannelLabelLFE = 4,
    kAudioChannelLabelLeftSurround = 5,
    kAudioChannelLabelRightSurround = 6,
    kAudioChannelLabelLeftSideSurround = 7,
    kAudioChannelLabelRightSideSurround = 8,
    kAudioChannelLabelCenterSurround = 9,
    kAudioChannelLabelMono = 10,
};

/// The short form of a label as channel strips show it ("L", "Rs"); the decimal number of the
/// label for one this table does not know.
std::string AudioChannelLabelAbbreviations(AudioChannelLabel label);
/// The long form ("Left", "Right Surround"); `variant` is reserved for other wordings and 0
/// gives the usual one.
std::string AudioChannelLabelDescription(AudioChannelLabel label, int variant);

} // namespace qormediatypes
