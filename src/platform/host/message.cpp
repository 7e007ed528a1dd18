#include "platform/host/message.hpp"

namespace qoraudiofilterhost {

Message::~Message() = default;

} // namespace qoraudiofilterhost
