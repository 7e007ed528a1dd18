#include "platform/core/null_pointer_exception.hpp"

namespace qorcore::config {

void DoThrowNullPtrException(const char* what) {
    if (what && *what)
        throw NullPointerException(std::string("Null pointer: ") + what);
    throw NullPointerException("Null pointer");
}

} // namespace qorcore::config
