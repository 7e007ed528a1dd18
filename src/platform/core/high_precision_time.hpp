#pragma once

#include <cstdint>
#include <functional>

namespace qorcore {

/// Monotonic time stamps in nanoseconds. The clock behind them can be replaced, so that tests
/// and the headless backend run on a virtual clock that only moves when they say so.
class HighPrecisionTime {
public:
    using TimeStamp = std::uint64_t;
    using Clock = std::function<TimeStamp()>;

    static TimeStamp GetCurrentTimeStamp();
    static constexpr std::uint64_t ConvertToNanos(TimeStamp stamp) { return stamp; }
    static constexpr double ConvertToSeconds(TimeStamp stamp) { return double(stamp) * 1e-9; }
    /// Negative and NaN seconds give 0.
    static TimeStamp FromSeconds(double seconds);

    /// Installs a clock and returns the one it replaces; an empty clock restores the system's
    /// steady clock.
    static Clock SetClock(Clock clock);

    /// Installs a clock for the lifetime of the object and puts the previous one back after.
    class ScopedClock {
    public:
        explicit ScopedClock(Clock clock) : previous_(SetClock(std::move(clock))) {}
        ~ScopedClock() { SetClock(std::move(previous_)); }
        ScopedClock(const ScopedClock&) = delete;
        ScopedClock& operator=(const ScopedClock&) = delete;

    private:
        Clock previous_;
    };
};

} // namespace qorcore
