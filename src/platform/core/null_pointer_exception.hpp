#pragma once

#include <stdexcept>
#include <string>

namespace qorcore {

/// Raised by toolkit-side code when an object it needs is missing, such as a control looked up
/// by name. Nothing is shown to the user for it: it marks a fault in the program.
class NullPointerException : public std::logic_error {
public:
    explicit NullPointerException(const std::string& what) : std::logic_error(what) {}
};

namespace config {

/// Throws `NullPointerException` with the text "Null pointer: " and the name of what was
/// missing (usually a class name), or just "Null pointer" without a name.
[[noreturn]] void DoThrowNullPtrException(const char* what = nullptr);

/// Returns the pointer, or throws as above when it is null.
template <class P>
P&& ThrowIfNull(P&& pointer, const char* what) {
    if (!pointer)
        DoThrowNullPtrException(what);
    return static_cast<P&&>(pointer);
}

} // namespace config
} // namespace qorcore
