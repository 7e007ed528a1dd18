#include "platform/core/high_precision_time.hpp"

#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <mutex>
#include <utility>

namespace qorcore {

namespace {

std::mutex clockMutex;
std::shared_ptr<const HighPrecisionTime::Clock> currentClock;

HighPrecisionTime::TimeStamp SteadyNow() {
    using namespace std::chrono;
    return static_cast<HighPrecisionTime::TimeStamp>(
        duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count());
}

} // namespace

HighPrecisionTime::TimeStamp HighPrecisionTime::GetCurrentTimeStamp() {
    std::shared_ptr<const Clock> clock;
    {
        std::lock_guard lock(clockMutex);
        clock = currentClock;
    }
    return clock ? (*clock)() : SteadyNow();
}

HighPrecisionTime::TimeStamp HighPrecisionTime::FromSeconds(double seconds) {
    if (!(seconds > 0.0))
        return 0;
    const double nanos = std::round(seconds * 1e9);
    if (nanos >= 18e18)
        return std::numeric_limits<TimeStamp>::max();
    return static_cast<TimeStamp>(nanos);
}

HighPrecisionTime::Clock HighPrecisionTime::SetClock(Clock clock) {
    std::shared_ptr<const Clock> next;
    if (clock)
        next = std::make_shared<const Clock>(std::move(clock));
    std::lock_guard lock(clockMutex);
    std::shared_ptr<const Clock> previous = std::exchange(currentClock, std::move(next));
    return previous ? *previous : Clock();
}

} // namespace qorcore
