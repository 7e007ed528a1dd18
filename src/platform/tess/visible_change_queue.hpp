#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace qormarltess {

/// Visibility changes of `optional` panels wait here until the sheet has finished its round;
/// then they run as one batch, and after the batch the layout is solved once (whatever was
/// registered with `ConnectAfterBatch`).
class VisibleChangeQueue {
public:
    using Change = std::function<void()>;

    void Push(Change change) { pending_.push_back(std::move(change)); }
    bool HasPending() const { return !pending_.empty(); }
    std::size_t GetPendingCount() const { return pending_.size(); }

    /// Runs after every batch that had at least one change, in registration order.
    void ConnectAfterBatch(std::function<void()> after) { after_.push_back(std::move(after)); }

    /// Runs the waiting changes (and those they queue) and then the after-batch functions;
    /// false when nothing was waiting.
    bool Process();

private:
    std::vector<Change> pending_;
    std::vector<std::function<void()>> after_;
};

} // namespace qormarltess
