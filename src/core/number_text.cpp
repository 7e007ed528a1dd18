#include "core/number_text.hpp"

#include <charconv>
#include <cmath>

namespace vorlen {

std::string number_text(double x) {
    if (std::isnan(x))
        return "NaN";
    if (std::isinf(x))
        return x > 0 ? "Infinity" : "-Infinity";
    char buffer[32];
    auto result = std::to_chars(buffer, buffer + sizeof(buffer), x);
    return std::string(buffer, result.ptr);
}

} // namespace vorlen
