#include "platform/core/connection.hpp"

namespace qorcore {

Connection::Connection(boost::signals2::connection connection)
    : state_(std::make_shared<boost::signals2::scoped_connection>(std::move(connection))) {}

void Connection::Disconnect() {
    if (state_)
        state_->disconnect();
}

bool Connection::IsConnected() const noexcept {
    return state_ && state_->connected();
}

ScopedConnection& ScopedConnection::operator=(ScopedConnection&& other) noexcept {
    if (this != &other) {
        Disconnect();
        connection_ = std::move(other.connection_);
    }
    return *this;
}

ScopedConnection& ScopedConnection::operator=(Connection connection) noexcept {
    Disconnect();
    connection_ = std::move(connection);
    return *this;
}

ScopedConnection::~ScopedConnection() {
    Disconnect();
}

void ScopedConnection::Disconnect() noexcept {
    try {
        connection_.Disconnect();
    } catch (...) {
        // Disconnecting only takes the signal's lock; nothing to report if that fails.
    }
    connection_.Release();
}

} // namespace qorcore
