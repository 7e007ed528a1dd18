#pragma once

#include "core/name.hpp"

#include <typeinfo>

namespace vorlen {

/// The engine's name for a type: "number", "boolean", "empty", "name", "string", "array" or
/// "dictionary" for the seven kinds, otherwise the type's run-time name.
name_t type_name(const std::type_info& type);

} // namespace vorlen
