#pragma once

#include "core/bad_cast.hpp"
#include "core/closed_hash.hpp"
#include "core/name.hpp"
#include "core/serializable.hpp"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace vorlen {
inline namespace version_1 {

/// The value of nothing; all empties are equal.
struct empty_t {
    friend bool operator==(const empty_t&, const empty_t&) noexcept { return true; }
};

class any_regular_t;

using array_t = std::vector<any_regular_t>;
using dictionary_t = closed_hash_map<name_t, any_regular_t, name_hash_t, name_equal_t>;

namespace implementation {

/// The per-type operation table. The field order and version are fixed.
struct vtable_t {
    std::uint64_t version;
    void (*destruct)(any_regular_t&) noexcept;
    const std::type_info& (*type_info)() noexcept;
    void (*clone)(const any_regular_t& source, any_regular_t& destination);
    void (*move_clone)(any_regular_t& source, any_regular_t& destination) noexcept;
    void (*assign)(any_regular_t& destination, const any_regular_t& source);
    bool (*equals)(const any_regular_t& a, const any_regular_t& b);
    void (*exchange)(any_regular_t& a, any_regular_t& b) noexcept;
    void (*serialize)(const any_regular_t& value, std::ostream& stream);
};

template <typename T>
struct traits;

} // namespace implementation

/// A copyable value of one of the engine's kinds (number, boolean, empty, name, string, array,
/// dictionary), or of a client type. Sixteen bytes: the operation table and eight bytes that hold
/// small payloads in place and large ones through an owned box.
class any_regular_t {
public:
    any_regular_t() noexcept;
    any_regular_t(double x) noexcept;
    any_regular_t(bool x) noexcept;
    any_regular_t(name_t x) noexcept;
    any_regular_t(empty_t x) noexcept;
    any_regular_t(std::string x);
    any_regular_t(const char* x);
    any_regular_t(array_t x);
    any_regular_t(dictionary_t x) noexcept;

    /// Every other arithmetic type is a number: the engine has no integer kind.
    template <typename T, std::enable_if_t<std::is_arithmetic_v<T> && !std::is_same_v<T, bool> &&
                                               !std::is_same_v<T, double>,
                                           int> = 0>
    any_regular_t(T x) noexcept : any_regular_t(static_cast<double>(x)) {}

    /// A client type outside the seven kinds.
    template <typename T>
    static any_regular_t make(T value);

    any_regular_t(const any_regular_t& x);
    any_regular_t(any_regular_t&& x) noexcept;
    any_regular_t& operator=(any_regular_t x) noexcept;
    ~any_regular_t();

    const std::type_info& type_info() const noexcept { return vtable_m->type_info(); }

    /// True when the payload is exactly of type T.
    template <typename T>
    bool is() const noexcept {
        return vtable_m == &implementation::traits<T>::vtable ||
               type_info_equal(type_info(), typeid(T));
    }

    /// The payload as T; no conversions: a number asked for bool throws `bad_cast`.
    template <typename T>
    const T& cast() const {
        if (!is<T>())
            throw bad_cast(type_info(), typeid(T));
        return implementation::traits<T>::get(*this);
    }
    template <typename T>
    T& cast() {
        if (!is<T>())
            throw bad_cast(type_info(), typeid(T));
        return implementation::traits<T>::get(*this);
    }

    void serialize(std::ostream& stream) const { vtable_m->serialize(*this, stream); }

    friend bool operator==(const any_regular_t& a, const any_regular_t& b) {
        return type_info_equal(a.type_info(), b.type_info()) && a.vtable_m->equals(a, b);
    }

    friend void swap(any_regular_t& a, any_regular_t& b) noexcept { a.swap(b); }
    void swap(any_regular_t& x) noexcept;

private:
    template <typename T>
    friend struct implementation::traits;

    struct no_init_t {};
    explicit any_regular_t(no_init_t) noexcept {}

    const implementation::vtable_t* vtable_m;
    alignas(8) unsigned char storage_m[8];
};

static_assert(sizeof(any_regular_t) == 16);

std::ostream& operator<<(std::ostream& stream, const any_regular_t& value);

namespace implementation {

template <typename T>
void serialize_value(const T& value, std::ostream& stream);

/// Payloads of at most eight bytes that move without throwing live in place; others are boxed.
template <typename T>
constexpr bool stored_inline = sizeof(T) <= 8 &&
                               alignof(T) <= 8 && std::is_nothrow_move_constructible_v<T>;

template <typename T>
struct traits {
    static T& get(any_regular_t& x) noexcept {
        if constexpr (stored_inline<T>)
            return *std::launder(reinterpret_cast<T*>(x.storage_m));
        else
            return **std::launder(reinterpret_cast<T**>(x.storage_m));
    }
    static const T& get(const any_regular_t& x) noexcept {
        return get(const_cast<any_regular_t&>(x));
    }

    template <typename U>
    static void construct(any_regular_t& x, U&& value) {
        if constexpr (stored_inline<T>)
            ::new (static_cast<void*>(x.storage_m)) T(std::forward<U>(value));
        else
            ::new (static_cast<void*>(x.storage_m)) T*(new T(std::forward<U>(value)));
        x.vtable_m = &vtable;
    }

    static void destruct(any_regular_t& x) noexcept {
        if constexpr (stored_inline<T>)
            get(x).~T();
        else
            delete &get(x);
    }
    static const std::type_info& type_info() noexcept { return typeid(T); }
    static void clone(const any_regular_t& source, any_regular_t& destination) {
        construct(destination, get(source));
    }
    static void move_clone(any_regular_t& source, any_regular_t& destination) noexcept {
        if constexpr (stored_inline<T>) {
            ::new (static_cast<void*>(destination.storage_m)) T(std::move(get(source)));
            get(source).~T();
        } else {
            ::new (static_cast<void*>(destination.storage_m)) T*(&get(source));
        }
        destination.vtable_m = &vtable;
        traits<empty_t>::construct(source, empty_t());
    }
    static void assign(any_regular_t& destination, const any_regular_t& source) {
        get(destination) = get(source);
    }
    static bool equals(const any_regular_t& a, const any_regular_t& b) { return get(a) == get(b); }
    static void exchange(any_regular_t& a, any_regular_t& b) noexcept {
        if constexpr (stored_inline<T>) {
            using std::swap;
            swap(get(a), get(b));
        } else {
            T* pa = &get(a);
            T* pb = &get(b);
            ::new (static_cast<void*>(a.storage_m)) T*(pb);
            ::new (static_cast<void*>(b.storage_m)) T*(pa);
        }
    }
    static void serialize(const any_regular_t& x, std::ostream& stream) {
        serialize_value(get(x), stream);
    }

    static constexpr vtable_t vtable{2,       &destruct, &type_info, &clone,    &move_clone,
                                     &assign, &equals,   &exchange,  &serialize};
};

template <typename T>
void serialize_value(const T& value, std::ostream& stream) {
    if constexpr (requires(std::ostream & s, const T& v) { s << v; })
        stream << value;
    else
        stream << demangled_name(typeid(T));
}

// The seven kinds serialise through the format layer; their writers live in serialize.cpp.
template <>
void serialize_value<double>(const double&, std::ostream&);
template <>
void serialize_value<bool>(const bool&, std::ostream&);
template <>
void serialize_value<empty_t>(const empty_t&, std::ostream&);
template <>
void serialize_value<name_t>(const name_t&, std::ostream&);
template <>
void serialize_value<std::string>(const std::string&, std::ostream&);
template <>
void serialize_value<array_t>(const array_t&, std::ostream&);
template <>
void serialize_value<dictionary_t>(const dictionary_t&, std::ostream&);

} // namespace implementation

// The small kinds are made and copied on every step of an evaluation: keep them inline.
inline any_regular_t::any_regular_t() noexcept {
    implementation::traits<empty_t>::construct(*this, empty_t());
}
inline any_regular_t::any_regular_t(double x) noexcept {
    implementation::traits<double>::construct(*this, x);
}
inline any_regular_t::any_regular_t(bool x) noexcept {
    implementation::traits<bool>::construct(*this, x);
}
inline any_regular_t::any_regular_t(name_t x) noexcept {
    implementation::traits<name_t>::construct(*this, x);
}
inline any_regular_t::any_regular_t(empty_t x) noexcept {
    implementation::traits<empty_t>::construct(*this, x);
}
inline any_regular_t::any_regular_t(const any_regular_t& x) {
    x.vtable_m->clone(x, *this);
}
inline any_regular_t::any_regular_t(any_regular_t&& x) noexcept {
    x.vtable_m->move_clone(x, *this);
}
inline any_regular_t::~any_regular_t() {
    vtable_m->destruct(*this);
}

template <typename T>
any_regular_t any_regular_t::make(T value) {
    any_regular_t result{no_init_t()};
    implementation::traits<T>::construct(result, std::move(value));
    return result;
}

/// The value for `key`; throws `std::out_of_range` naming the key when it is missing.
const any_regular_t& get_value(const dictionary_t& dictionary, name_t key);

/// Copies the value for `key` to `out` when it exists; otherwise `out` is left as it was.
template <typename T>
bool get_value(const dictionary_t& dictionary, name_t key, T& out) {
    auto found = dictionary.find(key);
    if (found == dictionary.end())
        return false;
    out = found->second.cast<T>();
    return true;
}
inline bool get_value(const dictionary_t& dictionary, name_t key, any_regular_t& out) {
    auto found = dictionary.find(key);
    if (found == dictionary.end())
        return false;
    out = found->second;
    return true;
}

} // namespace version_1

// The plain text of the leaf kinds; defined with the writers in serialize.cpp.
template <>
void serializable_t::instance<double>::serialize(std::ostream&) const;
template <>
void serializable_t::instance<bool>::serialize(std::ostream&) const;
template <>
void serializable_t::instance<empty_t>::serialize(std::ostream&) const;
template <>
void serializable_t::instance<name_t>::serialize(std::ostream&) const;
template <>
void serializable_t::instance<std::string>::serialize(std::ostream&) const;

} // namespace vorlen
