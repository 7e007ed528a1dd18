#include "platform/core/delete_on_main_thread_ref_counted_object.hpp"

#include "platform/core/main_thread_queue.hpp"

namespace qorcore {

DeleteOnMainThreadRefCountedObject::~DeleteOnMainThreadRefCountedObject() = default;

void DeleteOnMainThreadRefCountedObject::DeleteThis() const noexcept {
    auto& queue = MainThreadQueue::Get();
    if (queue.IsMainThread()) {
        delete this;
        return;
    }
    try {
        queue.Post([this] { delete this; });
    } catch (...) {
        // Out of memory while posting: leaking is safer than deleting on the wrong thread.
    }
}

} // namespace qorcore
