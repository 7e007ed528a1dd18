#pragma once

#include <string>
#include <typeinfo>

namespace vorlen {

/// A value asked for a type it does not hold. The message names both run-time types.
class bad_cast : public std::bad_cast {
public:
    bad_cast();
    bad_cast(const std::type_info& actual, const std::type_info& requested);

    const char* what() const noexcept override { return what_m.c_str(); }

private:
    std::string what_m;
};

/// The readable run-time name of a type record.
std::string demangled_name(const std::type_info& type);

/// Type records are equal when their names are, even when the records come from different modules.
bool type_info_equal(const std::type_info& a, const std::type_info& b) noexcept;

} // namespace vorlen
