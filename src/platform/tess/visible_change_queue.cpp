#include "platform/tess/visible_change_queue.hpp"

namespace qormarltess {

bool VisibleChangeQueue::Process() {
    if (pending_.empty())
        return false;
    while (!pending_.empty()) {
        std::vector<Change> batch;
        batch.swap(pending_);
        for (Change& change : batch)
            change();
    }
    for (std::size_t i = 0; i != after_.size(); ++i)
        after_[i]();
    return true;
}

} // namespace qormarltess
