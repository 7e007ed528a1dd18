// The writers of the seven value kinds: leaves as atoms, arrays as sequences, dictionaries as
// bags of (key, value) sequences in key order so the text does not depend on the hash.

#include "core/any_regular.hpp"
#include "core/format.hpp"
#include "core/number_text.hpp"

#include <algorithm>
#include <cstring>
#include <ostream>
#include <vector>

namespace vorlen {

template <>
void serializable_t::instance<double>::serialize(std::ostream& stream) const {
    stream << number_text(value);
}
template <>
void serializable_t::instance<bool>::serialize(std::ostream& stream) const {
    stream << (value ? "true" : "false");
}
template <>
void serializable_t::instance<empty_t>::serialize(std::ostream& stream) const {
    stream << "empty";
}
template <>
void serializable_t::instance<name_t>::serialize(std::ostream& stream) const {
    stream << value.c_str();
}
template <>
void serializable_t::instance<std::string>::serialize(std::ostream& stream) const {
    stream << value;
}

inline namespace version_1 {
namespace implementation {

namespace {

template <typename T>
void write_atom(const T& value, std::ostream& stream) {
    stream << begin_atom{serializable_t(value)} << end_atom();
}

} // namespace

template <>
void serialize_value<double>(const double& value, std::ostream& stream) {
    write_atom(value, stream);
}
template <>
void serialize_value<bool>(const bool& value, std::ostream& stream) {
    write_atom(value, stream);
}
template <>
void serialize_value<empty_t>(const empty_t& value, std::ostream& stream) {
    write_atom(value, stream);
}
template <>
void serialize_value<name_t>(const name_t& value, std::ostream& stream) {
    write_atom(value, stream);
}
template <>
void serialize_value<std::string>(const std::string& value, std::ostream& stream) {
    write_atom(value, stream);
}

template <>
void serialize_value<array_t>(const array_t& value, std::ostream& stream) {
    stream << begin_sequence();
    for (const any_regular_t& element : value)
        element.serialize(stream);
    stream << end_sequence();
}

template <>
void serialize_value<dictionary_t>(const dictionary_t& value, std::ostream& stream) {
    std::vector<const dictionary_t::value_type*> entries;
    entries.reserve(value.size());
    for (const auto& entry : value)
        entries.push_back(&entry);
    std::sort(entries.begin(), entries.end(), [](const auto* a, const auto* b) {
        return std::strcmp(a->first.c_str(), b->first.c_str()) < 0;
    });
    stream << begin_bag{"[0]"};
    for (const auto* entry : entries) {
        stream << begin_sequence();
        write_atom(entry->first, stream);
        entry->second.serialize(stream);
        stream << end_sequence();
    }
    stream << end_bag();
}

} // namespace implementation
} // namespace version_1
} // namespace vorlen
