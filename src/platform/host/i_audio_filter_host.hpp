#pragma once

#include <cstdint>

namespace qoraudiofilterhost {

/// What the host says about how it shows time, for the editors' time fields.
struct TimeDisplayInfo {
    std::int32_t format = -1;
    std::int32_t currentFrameRate = 0;
    std::int32_t customFrameRate = 0;
    std::int64_t reserved1 = 0; // not read by the editors
    std::int64_t reserved2 = 0; // not read by the editors
    std::int32_t ticksPerQuarter = 1920;
    double beatsPerMinute = 120.0;
    std::int32_t beatsPerBar = 4;
    std::int32_t noteLength = 4;
    double beatOffsetMilliseconds = 0.0;
};

/// The host a filter runs in.
class IAudioFilterHost {
public:
    virtual ~IAudioFilterHost() = default;
    /// Fills `out`; false (and `out` untouched) when the host has nothing to say.
    virtual bool GetTimeDisplayInfo(TimeDisplayInfo* out) const = 0;
};

} // namespace qoraudiofilterhost
