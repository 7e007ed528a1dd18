#include "core/any_regular.hpp"

#include <ostream>
#include <stdexcept>

namespace vorlen {
inline namespace version_1 {

using implementation::traits;

any_regular_t::any_regular_t(std::string x) {
    traits<std::string>::construct(*this, std::move(x));
}
any_regular_t::any_regular_t(const char* x) : any_regular_t(std::string(x ? x : "")) {}
any_regular_t::any_regular_t(array_t x) {
    traits<array_t>::construct(*this, std::move(x));
}
any_regular_t::any_regular_t(dictionary_t x) noexcept {
    traits<dictionary_t>::construct(*this, std::move(x));
}

any_regular_t& any_regular_t::operator=(any_regular_t x) noexcept {
    vtable_m->destruct(*this);
    x.vtable_m->move_clone(x, *this);
    return *this;
}

void any_regular_t::swap(any_regular_t& x) noexcept {
    if (vtable_m == x.vtable_m) {
        vtable_m->exchange(*this, x);
        return;
    }
    any_regular_t temporary(std::move(x));
    x.vtable_m->destruct(x);
    vtable_m->move_clone(*this, x);
    vtable_m->destruct(*this);
    temporary.vtable_m->move_clone(temporary, *this);
}

std::ostream& operator<<(std::ostream& stream, const any_regular_t& value) {
    value.serialize(stream);
    return stream;
}

const any_regular_t& get_value(const dictionary_t& dictionary, name_t key) {
    auto found = dictionary.find(key);
    if (found == dictionary.end())
        throw std::out_of_range(std::string("dictionary_t: key '") + key.c_str() + "' not found");
    return found->second;
}

} // namespace version_1
} // namespace vorlen
