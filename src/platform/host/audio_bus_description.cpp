#include "platform/host/audio_bus_description.hpp"

#include <iterator>

namespace qormediatypes {

namespace {

struct LabelText {
    const char* abbreviation;
    const char* description;
};

// By label number; entry 0 stands for unlabelled channels, which callers number themselves.
constexpr LabelText kLabels[] = {
    {"", ""},
    {"L", "Left"},
    {"R", "Right"},
    {"C", "Center"},
    {"LFE", "Low Frequency Effects"},
    {"Ls", "Left Surround"},
    {"Rs", "Right Surround"},
    {"Lss", "Left Side Surround"},
    {"Rss", "Right Side Surround"},
    {"Cs", "Center Surround"},
    {"M", "Mono"},
};

} // namespace

std::string AudioChannelLabelAbbreviations(AudioChannelLabel label) {
    if (label < std::size(kLabels))
        return kLabels[label].abbreviation;
    return std::to_string(label);
}

std::string AudioChannelLabelDescription(AudioChannelLabel label, int) {
    if (label < std::size(kLabels))
        return kLabels[label].description;
    return "Channel " + std::to_string(label);
}

} // namespace qormediatypes
