#include "core/type_name.hpp"

#include "core/any_regular.hpp"
#include "core/static_table.hpp"

namespace vorlen {

namespace {

struct type_info_less_t {
    bool operator()(const std::type_info* a, const std::type_info* b) const noexcept {
        return a->before(*b);
    }
};

using type_table_t = static_table<const std::type_info*, name_t, 7, type_info_less_t>;

const type_table_t& type_table() {
    static const type_table_t table = [] {
        type_table_t t({{{&typeid(double), name_t("number")},
                         {&typeid(bool), name_t("boolean")},
                         {&typeid(empty_t), name_t("empty")},
                         {&typeid(std::string), name_t("string")},
                         {&typeid(array_t), name_t("array")},
                         {&typeid(dictionary_t), name_t("dictionary")},
                         {&typeid(name_t), name_t("name")}}});
        t.sort();
        return t;
    }();
    return table;
}

} // namespace

name_t type_name(const std::type_info& type) {
    if (const name_t* found = type_table().find_if(&type))
        return *found;
    return name_t(demangled_name(type).c_str());
}

} // namespace vorlen
