#pragma once

#include <array>
#include <atomic>

namespace qoraudiofilters {

/// One writer and one reader share three slots: the writer fills its own slot and swaps it into
/// the middle marked fresh; the reader swaps its own slot with a fresh middle. Neither waits,
/// and the reader reads its slot in place, so copies (and any allocation they make) stay with
/// the writer. This is how designs reach a process thread and readings leave it.
template <class T>
class TripleBuffer {
public:
    /// The writer: hands `value` over, in place of any the reader has not taken yet.
    void Publish(const T& value) {
        slots_[back_] = value;
        back_ = middle_.exchange(back_ | kFresh, std::memory_order_acq_rel) & kIndex;
    }

    /// The reader: the newest value when one came since the last take, else null.
    const T* Take() {
        if ((middle_.load(std::memory_order_relaxed) & kFresh) == 0)
            return nullptr;
        front_ = middle_.exchange(front_, std::memory_order_acq_rel) & kIndex;
        return &slots_[front_];
    }

    /// The reader's slot: the value last taken (or the first slot's initial value).
    const T& Current() const { return slots_[front_]; }

private:
    static constexpr unsigned int kIndex = 3;
    static constexpr unsigned int kFresh = 4;

    std::array<T, 3> slots_{};
    unsigned int back_ = 0;
    unsigned int front_ = 1;
    std::atomic<unsigned int> middle_{2};
};

} // namespace qoraudiofilters
