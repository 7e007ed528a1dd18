#pragma once

#include <boost/signals2/connection.hpp>

#include <memory>

namespace qorcore {

/// The handle of one slot's connection to a `Signal`. Copies share the connection, and it ends
/// when the last copy is released, so a caller who drops the result of a `Connect...` call drops
/// the connection with it. An empty handle is not connected.
class Connection {
public:
    Connection() noexcept = default;
    explicit Connection(boost::signals2::connection connection);

    void Disconnect();
    bool IsConnected() const noexcept;
    /// Lets go of this copy; the connection ends if it was the last.
    void Release() noexcept { state_.reset(); }

private:
    std::shared_ptr<boost::signals2::scoped_connection> state_;
};

/// Owns one connection and ends it on destruction or reassignment, whatever other copies of the
/// handle still exist.
class ScopedConnection {
public:
    ScopedConnection() noexcept = default;
    ScopedConnection(Connection connection) noexcept : connection_(std::move(connection)) {}
    ScopedConnection(ScopedConnection&& other) noexcept = default;
    ScopedConnection& operator=(ScopedConnection&& other) noexcept;
    ScopedConnection& operator=(Connection connection) noexcept;
    ScopedConnection(const ScopedConnection&) = delete;
    ScopedConnection& operator=(const ScopedConnection&) = delete;
    ~ScopedConnection();

    void Disconnect() noexcept;
    bool IsConnected() const noexcept { return connection_.IsConnected(); }

private:
    Connection connection_;
};

namespace messaging {
using ::qorcore::Connection;
using ::qorcore::ScopedConnection;
} // namespace messaging

} // namespace qorcore
