#include "platform/core/ref_counted_object.hpp"

namespace qorcore {

RefCountedObject::~RefCountedObject() = default;

void RefCountedObject::Release() const noexcept {
    // acq_rel: the thread that deletes must see every write made before the other releases.
    if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1)
        DeleteThis();
}

void RefCountedObject::DeleteThis() const noexcept {
    delete this;
}

} // namespace qorcore
