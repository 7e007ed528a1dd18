#include "core/format.hpp"

#include <ostream>

namespace vorlen {

namespace {

int format_index() {
    static const int index = std::ios_base::xalloc();
    return index;
}

} // namespace

format_base_t* set_format(std::ostream& stream, format_base_t* format) {
    void*& slot = stream.pword(format_index());
    auto* previous = static_cast<format_base_t*>(slot);
    slot = format;
    return previous;
}

format_base_t* get_format(std::ostream& stream) {
    return static_cast<format_base_t*>(stream.pword(format_index()));
}

std::ostream& operator<<(std::ostream& stream, const begin_bag& manipulator) {
    if (format_base_t* format = get_format(stream))
        format->begin_bag(stream, manipulator.format);
    return stream;
}
std::ostream& operator<<(std::ostream& stream, const end_bag&) {
    if (format_base_t* format = get_format(stream))
        format->end_bag(stream);
    return stream;
}
std::ostream& operator<<(std::ostream& stream, const begin_sequence&) {
    if (format_base_t* format = get_format(stream))
        format->begin_sequence(stream);
    return stream;
}
std::ostream& operator<<(std::ostream& stream, const end_sequence&) {
    if (format_base_t* format = get_format(stream))
        format->end_sequence(stream);
    return stream;
}
std::ostream& operator<<(std::ostream& stream, const begin_atom& manipulator) {
    if (format_base_t* format = get_format(stream))
        format->begin_atom(stream, manipulator.atom);
    else
        manipulator.atom.serialize(stream);
    return stream;
}
std::ostream& operator<<(std::ostream& stream, const end_atom&) {
    if (format_base_t* format = get_format(stream))
        format->end_atom(stream);
    return stream;
}

} // namespace vorlen
