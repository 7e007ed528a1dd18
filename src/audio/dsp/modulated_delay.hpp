#pragma once

#include <cstddef>
#include <vector>

namespace qoraudiofilters {

/// One channel of delay whose length may change every sample and need not be whole: the read
/// interpolates between stored samples (linearly, or by a four-point cubic for less dulling of
/// the highs). Memory is taken by the constructor only; `Write` and `Read` neither allocate nor
/// lock. A sample that is no finite number is stored as silence, so one bad input cannot poison
/// a feedback loop.
class ModulatedDelay {
public:
    /// Room for delays up to `maxDelay` samples.
    explicit ModulatedDelay(std::size_t maxDelay = 0);

    std::size_t GetMaxDelay() const { return buffer_.size() - kGuard; }
    void Clear();
    /// Stores the newest sample.
    void Write(float sample);
    /// The signal `delay` samples before the newest written one (0 reads it back), held to
    /// 0..GetMaxDelay(); a delay that is no number reads as 0.
    float Read(double delay, bool cubic = false) const;

private:
    // Extra room so that the cubic's fourth point stays inside the buffer at the longest delay.
    static constexpr std::size_t kGuard = 3;
    float At(std::size_t back) const;

    std::vector<float> buffer_;
    std::size_t newest_ = 0;
};

/// The sweep of a modulation effect at `phase` (cycles, 0..1): 0 at phase 0, 1 at half a cycle,
/// by a raised cosine or a triangle.
double SweepShape(double phase, bool triangle);

} // namespace qoraudiofilters
