#pragma once

#include "platform/core/connection.hpp"

#include <boost/signals2/signal.hpp>

#include <cstddef>
#include <functional>
#include <stdexcept>

namespace qorcore {

template <class Signature>
class Signal;

/// A signal over boost::signals2: slots are called in the order of connection, and a slot may
/// disconnect itself or others while the signal runs. `Connect` returns a `Connection` that ends
/// the connection when its last copy goes, so keep it (usually in a `ScopedConnection`).
template <class R, class... Args>
class Signal<R(Args...)> {
public:
    using Slot = std::function<R(Args...)>;

    Signal() = default;
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    [[nodiscard]] Connection Connect(Slot slot) {
        if (!slot)
            throw std::invalid_argument("Signal::Connect: empty slot");
        return Connection(signal_.connect(std::move(slot)));
    }

    /// Calls every slot. For a non-void result this gives the last slot's result, empty when no
    /// slot is connected.
    auto operator()(Args... args) const { return signal_(args...); }
    auto Emit(Args... args) const { return signal_(args...); }

    void DisconnectAll() { signal_.disconnect_all_slots(); }
    std::size_t GetSlotCount() const { return signal_.num_slots(); }
    bool IsEmpty() const { return signal_.empty(); }

private:
    mutable boost::signals2::signal<R(Args...)> signal_;
};

namespace messaging {
using ::qorcore::Signal;
}

} // namespace qorcore
