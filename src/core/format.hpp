#pragma once

#include "core/serializable.hpp"

#include <iosfwd>
#include <string>

namespace vorlen {

/// Decorates the text a value writes. A stream carries at most one; without one, only the plain
/// text of the leaves is written.
class format_base_t {
public:
    virtual ~format_base_t() = default;

    virtual void begin_bag(std::ostream& stream, const std::string& format) = 0;
    virtual void end_bag(std::ostream& stream) = 0;
    virtual void begin_sequence(std::ostream& stream) = 0;
    virtual void end_sequence(std::ostream& stream) = 0;
    virtual void begin_atom(std::ostream& stream, const serializable_t& atom) = 0;
    virtual void end_atom(std::ostream& stream) = 0;
};

/// Installs `format` on the stream (not owned; null removes it) and returns the previous one.
format_base_t* set_format(std::ostream& stream, format_base_t* format);
format_base_t* get_format(std::ostream& stream);

/// Installs a format for the lifetime of the guard.
class format_scope_t {
public:
    format_scope_t(std::ostream& stream, format_base_t& format)
        : stream_m(stream), previous_m(set_format(stream, &format)) {}
    ~format_scope_t() { set_format(stream_m, previous_m); }
    format_scope_t(const format_scope_t&) = delete;
    format_scope_t& operator=(const format_scope_t&) = delete;

private:
    std::ostream& stream_m;
    format_base_t* previous_m;
};

// Manipulators: each calls the stream's format object, if any.

struct begin_bag {
    std::string format;
};
struct end_bag {};
struct begin_sequence {};
struct end_sequence {};
struct begin_atom {
    serializable_t atom;
};
struct end_atom {};

std::ostream& operator<<(std::ostream& stream, const begin_bag& manipulator);
std::ostream& operator<<(std::ostream& stream, const end_bag& manipulator);
std::ostream& operator<<(std::ostream& stream, const begin_sequence& manipulator);
std::ostream& operator<<(std::ostream& stream, const end_sequence& manipulator);
std::ostream& operator<<(std::ostream& stream, const begin_atom& manipulator);
std::ostream& operator<<(std::ostream& stream, const end_atom& manipulator);

} // namespace vorlen
