#pragma once

#include "platform/core/ref_counted_object.hpp"

namespace qorcore {

/// A counted object whose destructor always runs on the main thread: when the last reference
/// goes on another thread, the deletion is posted to the main-thread queue. Controls are of this
/// kind because their destructors touch the node tree.
class DeleteOnMainThreadRefCountedObject : public RefCountedObject {
protected:
    ~DeleteOnMainThreadRefCountedObject() override;
    void DeleteThis() const noexcept override;
};

namespace utility {
using ::qorcore::DeleteOnMainThreadRefCountedObject;
}

} // namespace qorcore
