#include "core/bad_cast.hpp"

#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <memory>

namespace vorlen {

std::string demangled_name(const std::type_info& type) {
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> text(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    return status == 0 && text ? std::string(text.get()) : std::string(type.name());
}

bool type_info_equal(const std::type_info& a, const std::type_info& b) noexcept {
    const char* an = a.name();
    const char* bn = b.name();
    // A leading '*' marks a name the compiler considers local to one module.
    if (*an == '*')
        ++an;
    if (*bn == '*')
        ++bn;
    return an == bn || std::strcmp(an, bn) == 0;
}

bad_cast::bad_cast() : what_m("bad_cast") {}

bad_cast::bad_cast(const std::type_info& actual, const std::type_info& requested)
    : what_m("bad_cast: " + demangled_name(actual) + " -> " + demangled_name(requested)) {}

} // namespace vorlen
