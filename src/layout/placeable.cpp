#include "layout/placeable.hpp"

#include "core/bad_cast.hpp"

#include <typeinfo>

namespace vorlen {

std::string placeable_t::type_name() const {
    return demangled_name(typeid(*this));
}

} // namespace vorlen
