#pragma once

#include <cstddef>
#include <functional>
#include <utility>

namespace qorcore {

/// A counted pointer to an object that keeps its own count (`AddRef`/`Release`). A raw pointer
/// handed to the constructor is adopted with a new reference, so `IntrusivePtr<T>(new T)` and
/// `IntrusivePtr<T>(this)` both work: the count lives in the object, not beside it.
template <class T>
class IntrusivePtr {
public:
    using element_type = T;

    IntrusivePtr() noexcept = default;
    IntrusivePtr(std::nullptr_t) noexcept {}
    IntrusivePtr(T* object) noexcept : object_(object) { Acquire(); }
    IntrusivePtr(const IntrusivePtr& other) noexcept : object_(other.object_) { Acquire(); }
    IntrusivePtr(IntrusivePtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}

    template <class U>
    requires std::is_convertible_v<U*, T*> IntrusivePtr(const IntrusivePtr<U>& other)
    noexcept : object_(other.get()) { Acquire(); }

    template <class U>
    requires std::is_convertible_v<U*, T*> IntrusivePtr(IntrusivePtr<U>&& other)
    noexcept : object_(other.Detach()) {}

    ~IntrusivePtr() { ReleaseObject(); }

    IntrusivePtr& operator=(const IntrusivePtr& other) noexcept {
        IntrusivePtr(other).swap(*this);
        return *this;
    }
    IntrusivePtr& operator=(IntrusivePtr&& other) noexcept {
        IntrusivePtr(std::move(other)).swap(*this);
        return *this;
    }
    IntrusivePtr& operator=(T* object) noexcept {
        IntrusivePtr(object).swap(*this);
        return *this;
    }

    void reset() noexcept { IntrusivePtr().swap(*this); }
    void reset(T* object) noexcept { IntrusivePtr(object).swap(*this); }
    void swap(IntrusivePtr& other) noexcept { std::swap(object_, other.object_); }

    /// Gives up the reference without releasing it; the caller owns it from now on.
    T* Detach() noexcept { return std::exchange(object_, nullptr); }

    T* get() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    T* operator->() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    template <class U>
    friend bool operator==(const IntrusivePtr& a, const IntrusivePtr<U>& b) noexcept {
        return a.get() == b.get();
    }
    friend bool operator==(const IntrusivePtr& a, std::nullptr_t) noexcept { return !a.object_; }
    friend bool operator==(const IntrusivePtr& a, const T* b) noexcept { return a.object_ == b; }
    friend bool operator<(const IntrusivePtr& a, const IntrusivePtr& b) noexcept {
        return std::less<T*>()(a.object_, b.object_);
    }

private:
    void Acquire() noexcept {
        if (object_)
            object_->AddRef();
    }
    void ReleaseObject() noexcept {
        if (object_)
            object_->Release();
    }

    T* object_ = nullptr;
};

template <class T, class... Args>
IntrusivePtr<T> MakeIntrusive(Args&&... args) {
    return IntrusivePtr<T>(new T(std::forward<Args>(args)...));
}

template <class T, class U>
IntrusivePtr<T> StaticPointerCast(const IntrusivePtr<U>& p) noexcept {
    return IntrusivePtr<T>(static_cast<T*>(p.get()));
}

template <class T, class U>
IntrusivePtr<T> DynamicPointerCast(const IntrusivePtr<U>& p) noexcept {
    return IntrusivePtr<T>(dynamic_cast<T*>(p.get()));
}

} // namespace qorcore

template <class T>
struct std::hash<qorcore::IntrusivePtr<T>> {
    std::size_t operator()(const qorcore::IntrusivePtr<T>& p) const noexcept {
        return std::hash<T*>()(p.get());
    }
};
