#pragma once

#include <atomic>
#include <cstdint>

namespace qorcore {

/// Base of every intrusively counted object. The count is atomic, so references may be taken and
/// dropped on any thread; the object is deleted where the last reference goes, unless a subclass
/// overrides `DeleteThis` (see `DeleteOnMainThreadRefCountedObject`).
///
/// A new object starts at 0: the first `IntrusivePtr` that adopts it takes the first reference.
/// Copying an object never copies its count.
class RefCountedObject {
public:
    RefCountedObject() noexcept = default;
    RefCountedObject(const RefCountedObject&) noexcept {}
    RefCountedObject& operator=(const RefCountedObject&) noexcept { return *this; }

    void AddRef() const noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
    void Release() const noexcept;
    std::int32_t GetRefCount() const noexcept { return count_.load(std::memory_order_acquire); }

protected:
    virtual ~RefCountedObject();

    /// Called once when the count drops to zero. The default deletes at once.
    virtual void DeleteThis() const noexcept;

private:
    mutable std::atomic<std::int32_t> count_{0};
};

} // namespace qorcore
