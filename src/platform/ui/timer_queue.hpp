#pragma once

#include "platform/core/high_precision_time.hpp"
#include "platform/core/intrusive_ptr.hpp"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace qorui {

class UI_Node;

/// The running timers of one window, by node and id, on the window's clock in nanoseconds.
class TimerQueue {
public:
    using TimeStamp = qorcore::HighPrecisionTime::TimeStamp;

    /// Starts (or restarts) a timer that is first due one period from now.
    void Install(UI_Node* node, int id, TimeStamp period, TimeStamp now);
    bool Remove(const UI_Node* node, int id);
    /// Removes the timers of `root` and of every node below it; returns how many.
    std::size_t RemoveSubtree(const UI_Node* root);
    void Clear() { entries_.clear(); }

    bool Has(const UI_Node* node, int id) const;
    std::size_t GetCount() const { return entries_.size(); }
    std::optional<TimeStamp> GetNextDue() const;

    /// The earliest timer due at `now` or before (the first installed among equals), moved on by
    /// one period. Without `catchUp` a timer that fell more than a period behind skips the ticks
    /// it missed instead of firing once for each.
    std::optional<std::pair<qorcore::IntrusivePtr<UI_Node>, int>> TakeDue(TimeStamp now,
                                                                          bool catchUp);

private:
    struct Entry {
        qorcore::IntrusivePtr<UI_Node> node;
        int id;
        TimeStamp period;
        TimeStamp due;
        std::uint64_t sequence;
    };

    std::vector<Entry> entries_;
    std::uint64_t nextSequence_ = 0;
};

} // namespace qorui
