// The stack machine: operator dispatch by binary search over a static table sorted
// by `strcmp`, the short-circuit and conditional operators, indexing, function calls, the
// built-in functions and the localisation hook.

#include "core/expression/virtual_machine.hpp"

#include "core/static_table.hpp"
#include "core/type_name.hpp"
#include "core/xml_text.hpp"

#include <array>
#include <bit>
#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace vorlen {

namespace {

using implementation::traits;
using implementation::vtable_t;

// A value's operation table is its first member; comparing it with a kind's table is the cheap
// exact-kind test. Values whose table comes from another module fall back to `is<T>()`.
static_assert(std::is_standard_layout_v<any_regular_t>);

inline const vtable_t* vtable_of(const any_regular_t& x) noexcept {
    return *reinterpret_cast<const vtable_t* const*>(&x);
}

template <typename T>
inline bool holds(const any_regular_t& x) noexcept {
    return vtable_of(x) == &traits<T>::vtable || x.is<T>();
}

[[noreturn]] void throw_expected(const char* expected, const any_regular_t& found) {
    throw std::runtime_error(std::string("expected `") + expected + "` found `" +
                             type_name(found.type_info()).c_str() + "`");
}

template <typename T>
struct kind_name;
template <>
struct kind_name<double> {
    static constexpr const char* text = "number";
};
template <>
struct kind_name<bool> {
    static constexpr const char* text = "boolean";
};
template <>
struct kind_name<name_t> {
    static constexpr const char* text = "name";
};
template <>
struct kind_name<array_t> {
    static constexpr const char* text = "array";
};
template <>
struct kind_name<dictionary_t> {
    static constexpr const char* text = "dictionary";
};

template <typename T>
[[gnu::noinline]] T& read_slow(any_regular_t& x) {
    if (!x.is<T>())
        throw_expected(kind_name<T>::text, x);
    return traits<T>::get(x);
}

/// The payload of an operand of exactly kind T, else "expected `T` found `U`".
template <typename T>
[[gnu::always_inline]] inline T& read(any_regular_t& x) {
    if (vtable_of(x) == &traits<T>::vtable) [[likely]]
        return traits<T>::get(x);
    return read_slow<T>(x);
}
template <typename T>
inline const T& read(const any_regular_t& x) {
    return read<T>(const_cast<any_regular_t&>(x));
}

/// True for the kinds whose payload sits in place and whose destruction does nothing: a value
/// of such a kind may be overwritten, or leave the stack, without a call to its destructor.
inline bool trivial_kind(const any_regular_t& x) noexcept {
    const vtable_t* kind = vtable_of(x);
    return kind == &traits<double>::vtable || kind == &traits<bool>::vtable ||
           kind == &traits<empty_t>::vtable || kind == &traits<name_t>::vtable;
}
static_assert(std::is_trivially_destructible_v<double> && std::is_trivially_destructible_v<bool> &&
              std::is_trivially_destructible_v<empty_t> &&
              std::is_trivially_destructible_v<name_t>);

template <typename T>
inline void store(any_regular_t& slot, T value) {
    if (vtable_of(slot) == &traits<T>::vtable)
        traits<T>::get(slot) = value;
    else if (trivial_kind(slot))
        traits<T>::construct(slot, value);
    else
        slot = any_regular_t(value);
}
inline void store_number(any_regular_t& slot, double value) {
    store<double>(slot, value);
}
inline void store_boolean(any_regular_t& slot, bool value) {
    store<bool>(slot, value);
}

/// Truncates toward zero and keeps the low 32 bits (modulo 2^32 for any finite value);
/// NaN and the infinities read as 0.
std::uint32_t low_32_bits(double x) noexcept {
    if (!std::isfinite(x))
        return 0;
    const double t = std::trunc(x);
    if (t > -9.2e18 && t < 9.2e18)
        return static_cast<std::uint32_t>(static_cast<std::uint64_t>(static_cast<std::int64_t>(t)));
    double m = std::fmod(t, 4294967296.0);
    if (m < 0)
        m += 4294967296.0;
    return static_cast<std::uint32_t>(m);
}

inline std::int32_t signed_32(double x) noexcept {
    return static_cast<std::int32_t>(low_32_bits(x));
}

/// An index as unsigned 64-bit: truncated; negative values wrap as two's complement does, NaN
/// and values beyond the range give the largest index.
std::uint64_t index_64(double x) noexcept {
    if (std::isnan(x))
        return std::numeric_limits<std::uint64_t>::max();
    const double t = std::trunc(x);
    if (t >= 0) {
        if (t >= 18446744073709551616.0)
            return std::numeric_limits<std::uint64_t>::max();
        return static_cast<std::uint64_t>(t);
    }
    if (t < -9223372036854775808.0)
        return std::numeric_limits<std::uint64_t>::max();
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(t));
}

/// `strcmp` for the short texts of operator tokens, inline.
inline int compare_text(const char* a, const char* b) noexcept {
    while (*a && *a == *b) {
        ++a;
        ++b;
    }
    return static_cast<int>(static_cast<unsigned char>(*a)) -
           static_cast<int>(static_cast<unsigned char>(*b));
}

/// Binary search over a table sorted by `strcmp`. Names are interned, so the pointer of the row
/// that matches equals the key's pointer: a probe tests that first and skips the text compare.
template <typename Table>
inline const typename Table::entry_type::second_type* search(const Table& table, name_t key) {
    const auto& rows = table.rows();
    const char* text = key.c_str();
    std::size_t low = 0;
    std::size_t high = rows.size();
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        const char* row = rows[middle].first.c_str();
        if (row == text)
            return &rows[middle].second;
        const int order = compare_text(row, text);
        if (order < 0)
            low = middle + 1;
        else if (order > 0)
            high = middle;
        else
            return &rows[middle].second;
    }
    return nullptr;
}

struct name_less_t {
    bool operator()(name_t a, name_t b) const noexcept {
        return std::strcmp(a.c_str(), b.c_str()) < 0;
    }
};

// Localisation hook -------------------------------------------------------------------------

struct localization_t {
    std::mutex mutex;
    std::shared_ptr<const localization_proc_t> proc;
};

localization_t& localization() {
    static localization_t state;
    return state;
}

std::shared_ptr<const localization_proc_t> localization_routine() {
    localization_t& state = localization();
    std::lock_guard<std::mutex> lock(state.mutex);
    return state.proc;
}

} // namespace

void set_localization_proc(localization_proc_t proc) {
    auto routine = proc ? std::make_shared<const localization_proc_t>(std::move(proc)) : nullptr;
    localization_t& state = localization();
    std::lock_guard<std::mutex> lock(state.mutex);
    state.proc = std::move(routine);
}

bool localization_ready() {
    return localization_routine() != nullptr;
}

std::string invoke_localization(const std::string& text) {
    auto routine = localization_routine();
    if (!routine)
        throw std::runtime_error("Attempting to call an unregistered localization routine.");
    return (*routine)(text);
}

// The value stack ----------------------------------------------------------------------------

namespace vm_detail {

/// The machine's stack: a vector of `any_regular_t` that keeps every slot of its storage a live
/// value. Slots past the top hold an empty or another kind whose destruction does nothing, so a
/// number, boolean, empty or name is pushed by writing its payload into the slot, and leaves by
/// moving the top down: no constructor or destructor call, no indirect call. Other kinds are
/// copied or moved in through their operation table and released to empty when popped.
class value_stack_t {
public:
    value_stack_t() { reserve(64); }
    value_stack_t(const value_stack_t& x) {
        reserve(std::max<std::size_t>(64, x.size()));
        for (const any_regular_t& value : x)
            push_back(value);
    }
    value_stack_t& operator=(const value_stack_t& x) {
        if (this != &x) {
            value_stack_t copy(x);
            swap(copy);
        }
        return *this;
    }
    ~value_stack_t() {
        destroy(first_m, end_of_storage_m);
        std::allocator<any_regular_t>().deallocate(first_m, capacity());
    }

    void swap(value_stack_t& x) noexcept {
        std::swap(first_m, x.first_m);
        std::swap(last_m, x.last_m);
        std::swap(end_of_storage_m, x.end_of_storage_m);
    }

    std::size_t size() const noexcept { return static_cast<std::size_t>(last_m - first_m); }
    std::size_t capacity() const noexcept {
        return static_cast<std::size_t>(end_of_storage_m - first_m);
    }
    bool empty() const noexcept { return first_m == last_m; }
    any_regular_t* begin() noexcept { return first_m; }
    any_regular_t* end() noexcept { return last_m; }
    const any_regular_t* begin() const noexcept { return first_m; }
    const any_regular_t* end() const noexcept { return last_m; }
    any_regular_t& back() noexcept { return last_m[-1]; }
    any_regular_t& operator[](std::size_t i) noexcept { return first_m[i]; }

    void push_back(const any_regular_t& x) {
        if (last_m == end_of_storage_m) [[unlikely]] {
            any_regular_t copy(x); // x may live in this stack
            grow();
            vtable_of(copy)->move_clone(copy, *last_m);
        } else {
            vtable_of(x)->clone(x, *last_m);
        }
        ++last_m;
    }
    void push_back(any_regular_t&& x) {
        if (last_m == end_of_storage_m) [[unlikely]] {
            any_regular_t moved(std::move(x));
            grow();
            vtable_of(moved)->move_clone(moved, *last_m);
        } else {
            vtable_of(x)->move_clone(x, *last_m);
        }
        ++last_m;
    }
    /// Pushes a value of a kind whose destruction does nothing.
    template <typename T>
    void push_trivial(T x) {
        if (last_m == end_of_storage_m) [[unlikely]]
            grow();
        traits<T>::construct(*last_m, x);
        ++last_m;
    }

    void pop_back() noexcept {
        --last_m;
        if (!trivial_kind(*last_m)) [[unlikely]]
            release(*last_m);
    }
    /// Pops down to `n` values.
    void truncate(std::size_t n) noexcept {
        while (size() > n)
            pop_back();
    }

private:
    static void release(any_regular_t& slot) noexcept {
        vtable_of(slot)->destruct(slot);
        traits<empty_t>::construct(slot, empty_t());
    }
    static void destroy(any_regular_t* first, any_regular_t* last) noexcept {
        for (; first != last; ++first)
            first->~any_regular_t();
        // The storage itself is released by the caller.
    }

    void grow() {
        // Growing moves the values; a lookup that re-enters the machine may grow the stack, so
        // no reference into it is held across calls out of the machine.
        reserve(std::max<std::size_t>(16, capacity() * 2));
    }
    void reserve(std::size_t n) {
        if (n <= capacity())
            return;
        std::allocator<any_regular_t> allocator;
        const std::size_t count = size();
        any_regular_t* storage = allocator.allocate(n);
        for (std::size_t i = 0; i != count; ++i)
            ::new (static_cast<void*>(storage + i)) any_regular_t(std::move(first_m[i]));
        for (std::size_t i = count; i != n; ++i)
            ::new (static_cast<void*>(storage + i)) any_regular_t();
        if (first_m) {
            destroy(first_m, end_of_storage_m);
            allocator.deallocate(first_m, capacity());
        }
        first_m = storage;
        last_m = storage + count;
        end_of_storage_m = storage + n;
    }

    any_regular_t* first_m = nullptr;
    any_regular_t* last_m = nullptr;
    any_regular_t* end_of_storage_m = nullptr;
};

} // namespace vm_detail

// The machine -------------------------------------------------------------------------------

struct virtual_machine_t::implementation_t {
    using handler_t = void (*)(implementation_t&);
    /// The binary numeric operators, which the loop applies in place when their right operand
    /// is a number just read from the stream or a variable.
    enum class numeric_t : unsigned char {
        none,
        add,
        subtract,
        multiply,
        divide,
        less,
        greater,
        less_equal,
        greater_equal
    };
    using array_function_t = any_regular_t (*)(const array_t&);
    using dictionary_function_t = any_regular_t (*)(const dictionary_t&);
    using operator_table_t = static_table<name_t, handler_t, 27, name_less_t>;
    using array_function_table_t = static_table<name_t, array_function_t, 8, name_less_t>;
    using dictionary_function_table_t = static_table<name_t, dictionary_function_t, 1, name_less_t>;

    struct tables_t {
        operator_table_t operators;
        array_function_table_t array_functions;
        dictionary_function_table_t dictionary_functions;
        // The tokens the loop recognises by pointer to run deferred operands in place.
        name_t and_token, or_token, ifelse_token, variable_token;
        // The interned text pointers of the operator table's rows, open-addressed by pointer:
        // equal texts share one pointer, so a hit here is the row the binary search finds. A
        // miss goes to the binary search, which decides (and fails with the table's text).
        struct pointer_slot_t {
            const char* text = nullptr;
            handler_t handler = nullptr;
            numeric_t numeric = numeric_t::none;
        };
        static constexpr std::size_t pointer_slots = 128;
        std::array<pointer_slot_t, pointer_slots> operator_pointers{};

        static std::size_t pointer_slot(const char* text) noexcept {
            return static_cast<std::size_t>(
                (reinterpret_cast<std::uintptr_t>(text) * 0x9E3779B97F4A7C15ULL) >> 57);
        }
        const pointer_slot_t* find_slot(const char* text) const noexcept {
            for (std::size_t i = pointer_slot(text);; i = (i + 1) % pointer_slots) {
                const pointer_slot_t& slot = operator_pointers[i];
                if (slot.text == text)
                    return &slot;
                if (!slot.text)
                    return nullptr;
            }
        }
        const handler_t* find_operator(name_t token) const noexcept {
            if (const pointer_slot_t* slot = find_slot(token.c_str()))
                return &slot->handler;
            return search(operators, token);
        }
    };
    static const tables_t& tables();

    // The fields in their fixed order.
    variable_lookup_t variable_lookup_m;
    array_function_lookup_t array_function_lookup_m;
    dictionary_function_lookup_t dictionary_function_lookup_m;
    dictionary_index_lookup_t dictionary_index_lookup_m;
    array_index_lookup_t array_index_lookup_m;
    std::map<name_t, operator_override_t, name_less_t> operator_overrides_m;
    vm_detail::value_stack_t value_stack_m;

    // Guards against hostile streams.
    std::uint64_t step_limit_m = 0;
    std::uint64_t step_budget_m = std::numeric_limits<std::uint64_t>::max(); // 0 is unlimited
    std::uint64_t steps_m = 0;
    int depth_m = 0;   // nesting of deferred streams within one entry
    int entries_m = 0; // entries through `virtual_machine_t::evaluate`, lookups re-entering
    const tables_t* tables_m = &tables();

    implementation_t() = default;
    implementation_t(const implementation_t& x)
        : variable_lookup_m(x.variable_lookup_m),
          array_function_lookup_m(x.array_function_lookup_m),
          dictionary_function_lookup_m(x.dictionary_function_lookup_m),
          dictionary_index_lookup_m(x.dictionary_index_lookup_m),
          array_index_lookup_m(x.array_index_lookup_m),
          operator_overrides_m(x.operator_overrides_m), value_stack_m(x.value_stack_m),
          step_limit_m(x.step_limit_m), step_budget_m(x.step_budget_m) {}

    void evaluate(const array_t& token_stream);
    [[gnu::always_inline]] inline void run_operator(name_t token);
    /// Pushes the variable's value, or, when it is a number and `op` is not `none`, applies the
    /// operator `op` (spelled `op_text`) to the top with it; true in that case.
    [[gnu::always_inline]] inline bool push_variable(name_t name, numeric_t op,
                                                     const char* op_text);
    /// The numeric operator the token at `next` is, when the loop may apply it in place.
    numeric_t fusable(const any_regular_t* next, const any_regular_t* last) const noexcept {
        if (next == last || vtable_of(*next) != &traits<name_t>::vtable ||
            !operator_overrides_m.empty())
            return numeric_t::none;
        const char* text = traits<name_t>::get(*next).c_str();
        if (text[0] != '.')
            return numeric_t::none;
        const auto* slot = tables_m->find_slot(text);
        return slot ? slot->numeric : numeric_t::none;
    }
    /// Does what the operator's handler does with `right` as the top of the stack.
    [[gnu::always_inline]] inline void apply_numeric(numeric_t op, double right,
                                                     const char* op_text);
    void count_steps(std::uint64_t n) {
        steps_m += n;
        if (steps_m > step_budget_m) [[unlikely]]
            throw std::runtime_error("virtual_machine_t: step limit of " +
                                     std::to_string(step_limit_m) + " exceeded");
    }
    void set_step_limit(std::uint64_t limit) {
        step_limit_m = limit;
        step_budget_m = limit ? limit : std::numeric_limits<std::uint64_t>::max();
    }

    void require(std::size_t count, const char* token) const {
        if (value_stack_m.size() < count) [[unlikely]]
            throw std::runtime_error(std::string("virtual_machine_t: stack underflow at '") +
                                     token + "'");
    }
    any_regular_t& top() noexcept { return value_stack_m.back(); }
    void pop() noexcept { value_stack_m.pop_back(); }
    any_regular_t& below_top() noexcept { return value_stack_m[value_stack_m.size() - 2]; }

    void logical(const array_t& deferred, bool when);
    void conditional(const array_t& then_stream, const array_t& else_stream);
    std::size_t pop_count(const char* token);

    // Handlers of the operator table.
    static void op_not(implementation_t&);
    static void op_unary_negate(implementation_t&);
    template <typename F>
    static void arithmetic(implementation_t&, const char* token, F f);
    template <typename F>
    static void comparison(implementation_t&, const char* token, F f);
    template <typename F>
    static void bitwise(implementation_t&, const char* token, F f);
    static void op_equal(implementation_t&);
    static void op_not_equal(implementation_t&);
    static void op_modulus(implementation_t&);
    static void op_bitwise_negate(implementation_t&);
    static void op_variable(implementation_t&);
    static void op_array(implementation_t&);
    static void op_dictionary(implementation_t&);
    static void op_index(implementation_t&);
    static void op_function(implementation_t&);
    static void op_and(implementation_t&);
    static void op_or(implementation_t&);
    static void op_ifelse(implementation_t&);

    // Built-in functions.
    static any_regular_t fn_any(const array_t&);
    static any_regular_t fn_localize(const array_t&);
    static any_regular_t fn_max(const array_t&);
    static any_regular_t fn_min(const array_t&);
    static any_regular_t fn_round(const array_t&);
    static any_regular_t fn_typeof(const array_t&);
    static any_regular_t fn_xml_escape(const array_t&);
    static any_regular_t fn_xml_unescape(const array_t&);
    static any_regular_t fn_scale(const dictionary_t&);
};

using implementation_t = virtual_machine_t::implementation_t;

const implementation_t::tables_t& implementation_t::tables() {
    static const tables_t result = [] {
        using I = implementation_t;
        tables_t t{
            operator_table_t({{
                {name_t(".not"), &I::op_not},
                {name_t(".unary_negate"), &I::op_unary_negate},
                {name_t(".add"),
                 [](I& m) {
                     arithmetic(m, ".add", [](double a, double b) { return a + b; });
                 }},
                {name_t(".subtract"),
                 [](I& m) {
                     arithmetic(m, ".subtract", [](double a, double b) { return a - b; });
                 }},
                {name_t(".multiply"),
                 [](I& m) {
                     arithmetic(m, ".multiply", [](double a, double b) { return a * b; });
                 }},
                {name_t(".modulus"), &I::op_modulus},
                {name_t(".divide"),
                 [](I& m) {
                     arithmetic(m, ".divide", [](double a, double b) { return a / b; });
                 }},
                {name_t(".less"),
                 [](I& m) {
                     comparison(m, ".less", [](double a, double b) { return a < b; });
                 }},
                {name_t(".greater"),
                 [](I& m) {
                     comparison(m, ".greater", [](double a, double b) { return a > b; });
                 }},
                {name_t(".less_equal"),
                 [](I& m) {
                     comparison(m, ".less_equal", [](double a, double b) { return a <= b; });
                 }},
                {name_t(".greater_equal"),
                 [](I& m) {
                     comparison(m, ".greater_equal", [](double a, double b) { return a >= b; });
                 }},
                {name_t(".equal"), &I::op_equal},
                {name_t(".not_equal"), &I::op_not_equal},
                {name_t(".ifelse"), &I::op_ifelse},
                {name_t(".index"), &I::op_index},
                {name_t(".function"), &I::op_function},
                {name_t(".array"), &I::op_array},
                {name_t(".dictionary"), &I::op_dictionary},
                {name_t(".variable"), &I::op_variable},
                {name_t(".and"), &I::op_and},
                {name_t(".or"), &I::op_or},
                {name_t(".bitwise_and"),
                 [](I& m) {
                     bitwise(m, ".bitwise_and",
                             [](std::uint32_t a, std::uint32_t b) { return a & b; });
                 }},
                {name_t(".bitwise_xor"),
                 [](I& m) {
                     bitwise(m, ".bitwise_xor",
                             [](std::uint32_t a, std::uint32_t b) { return a ^ b; });
                 }},
                {name_t(".bitwise_or"),
                 [](I& m) {
                     bitwise(m, ".bitwise_or",
                             [](std::uint32_t a, std::uint32_t b) { return a | b; });
                 }},
                {name_t(".bitwise_rshift"),
                 [](I& m) {
                     bitwise(m, ".bitwise_rshift",
                             [](std::uint32_t a, std::uint32_t b) { return a >> (b & 31); });
                 }},
                {name_t(".bitwise_lshift"),
                 [](I& m) {
                     bitwise(m, ".bitwise_lshift",
                             [](std::uint32_t a, std::uint32_t b) { return a << (b & 31); });
                 }},
                {name_t(".bitwise_negate"), &I::op_bitwise_negate},
            }}),
            array_function_table_t({{
                {name_t("any"), &I::fn_any},
                {name_t("localize"), &I::fn_localize},
                {name_t("max"), &I::fn_max},
                {name_t("min"), &I::fn_min},
                {name_t("round"), &I::fn_round},
                {name_t("typeof"), &I::fn_typeof},
                {name_t("xml_escape"), &I::fn_xml_escape},
                {name_t("xml_unescape"), &I::fn_xml_unescape},
            }}),
            dictionary_function_table_t({{{name_t("scale"), &I::fn_scale}}}),
            name_t(".and"),
            name_t(".or"),
            name_t(".ifelse"),
            name_t(".variable"),
        };
        t.operators.sort();
        for (const auto& [name, handler] : t.operators.rows()) {
            std::size_t i = tables_t::pointer_slot(name.c_str());
            while (t.operator_pointers[i].text)
                i = (i + 1) % tables_t::pointer_slots;
            t.operator_pointers[i] = {name.c_str(), handler, numeric_t::none};
        }
        const std::pair<const char*, numeric_t> numeric[] = {
            {".add", numeric_t::add},
            {".subtract", numeric_t::subtract},
            {".multiply", numeric_t::multiply},
            {".divide", numeric_t::divide},
            {".less", numeric_t::less},
            {".greater", numeric_t::greater},
            {".less_equal", numeric_t::less_equal},
            {".greater_equal", numeric_t::greater_equal}};
        for (const auto& [text, op] : numeric)
            const_cast<tables_t::pointer_slot_t*>(t.find_slot(name_t(text).c_str()))->numeric = op;
        t.array_functions.sort();
        t.dictionary_functions.sort();
        return t;
    }();
    return result;
}

// Evaluation loop ---------------------------------------------------------------------------

void implementation_t::evaluate(const array_t& token_stream) {
    struct depth_guard_t {
        int& depth;
        explicit depth_guard_t(int& d) : depth(d) {
            if (++depth > max_depth) {
                --depth;
                throw std::runtime_error("virtual_machine_t: token streams nested deeper than " +
                                         std::to_string(max_depth) + " levels");
            }
        }
        ~depth_guard_t() { --depth; }
    } guard(depth_m);
    // The budget is charged a whole stream at a time, as it is entered.
    count_steps(token_stream.size());

    const tables_t& t = *tables_m;
    const any_regular_t* token = token_stream.data();
    const any_regular_t* const last = token + token_stream.size();
    for (; token != last; ++token) {
        const vtable_t* kind = vtable_of(*token);

        if (kind == &traits<double>::vtable) {
            const double value = traits<double>::get(*token);
            // A number that a numeric operator consumes at once goes straight into it.
            if (const numeric_t op = fusable(token + 1, last); op != numeric_t::none) {
                ++token;
                apply_numeric(op, value, traits<name_t>::get(*token).c_str());
                continue;
            }
            value_stack_m.push_trivial(value);
            continue;
        }

        if (kind == &traits<name_t>::vtable) {
            const name_t name = traits<name_t>::get(*token);
            if (name.c_str()[0] == '.') {
                run_operator(name);
                continue;
            }
            // A name literal that a `.variable` consumes at once: look it up in place.
            if (token + 1 != last && operator_overrides_m.empty() &&
                vtable_of(token[1]) == &traits<name_t>::vtable &&
                traits<name_t>::get(token[1]) == t.variable_token) {
                const numeric_t op = fusable(token + 2, last);
                token += 1;
                if (push_variable(name, op,
                                  op == numeric_t::none ? nullptr
                                                        : traits<name_t>::get(token[1]).c_str()))
                    token += 1;
                continue;
            }
            value_stack_m.push_back(*token);
            continue;
        }

        if (kind == &traits<array_t>::vtable) {
            // A deferred operand followed by its operator runs in place, without copying the
            // nested stream onto the stack. The result is the same as pushing it and running
            // the operator's handler; an override of the operator takes the general road.
            if (operator_overrides_m.empty() && token + 1 != last) {
                const array_t& deferred = traits<array_t>::get(*token);
                const any_regular_t& next = token[1];
                if (vtable_of(next) == &traits<name_t>::vtable) {
                    const name_t op = traits<name_t>::get(next);
                    if (op == t.and_token || op == t.or_token) {
                        ++token;
                        logical(deferred, op == t.and_token);
                        continue;
                    }
                } else if (vtable_of(next) == &traits<array_t>::vtable && token + 2 != last &&
                           vtable_of(token[2]) == &traits<name_t>::vtable &&
                           traits<name_t>::get(token[2]) == t.ifelse_token) {
                    const array_t& else_stream = traits<array_t>::get(next);
                    token += 2;
                    conditional(deferred, else_stream);
                    continue;
                }
            }
            value_stack_m.push_back(*token);
            continue;
        }

        // A name whose operation table comes from another module is still a name.
        if (kind != &traits<bool>::vtable && kind != &traits<std::string>::vtable &&
            kind != &traits<empty_t>::vtable && token->is<name_t>()) [[unlikely]] {
            const name_t name = token->cast<name_t>();
            if (name.c_str()[0] == '.') {
                run_operator(name);
                continue;
            }
        }
        value_stack_m.push_back(*token);
    }
}

inline void implementation_t::run_operator(name_t token) {
    if (!operator_overrides_m.empty()) [[unlikely]] {
        auto found = operator_overrides_m.find(token);
        if (found != operator_overrides_m.end()) {
            require(2, token.c_str());
            // Moved out first: the override may re-enter the machine and move the stack.
            const std::size_t lower = value_stack_m.size() - 2;
            const any_regular_t a = std::move(value_stack_m[lower]);
            const any_regular_t b = std::move(value_stack_m[lower + 1]);
            any_regular_t result = found->second(a, b);
            value_stack_m[lower] = std::move(result);
            value_stack_m.pop_back();
            return;
        }
    }
    const handler_t* handler = tables_m->find_operator(token);
    if (!handler) [[unlikely]]
        handler = &tables_m->operators.find(token); // throws "static_table key not found"
    (*handler)(*this);
}

inline bool implementation_t::push_variable(name_t name, numeric_t op, const char* op_text) {
    if (!variable_lookup_m)
        throw std::logic_error("No variable lookup installed.");
    // The result is built in a local buffer: the lookup may re-enter the machine and move the
    // stack, so it cannot be built in the slot. A number then needs no destructor call.
    alignas(any_regular_t) unsigned char buffer[sizeof(any_regular_t)];
    any_regular_t* value =
        ::new (static_cast<void*>(buffer)) any_regular_t(variable_lookup_m(name));
    if (vtable_of(*value) == &traits<double>::vtable) {
        // A number's lifetime may end without its (empty) destructor.
        const double number = traits<double>::get(*value);
        if (op != numeric_t::none) {
            apply_numeric(op, number, op_text);
            return true;
        }
        value_stack_m.push_trivial(number);
        return false;
    }
    value_stack_m.push_back(std::move(*value)); // leaves *value empty
    value->~any_regular_t();
    return false;
}

inline void implementation_t::apply_numeric(numeric_t op, double right, const char* op_text) {
    require(1, op_text);
    any_regular_t& slot = top();
    double& left = read<double>(slot);
    switch (op) {
    case numeric_t::add: left += right; return;
    case numeric_t::subtract: left -= right; return;
    case numeric_t::multiply: left *= right; return;
    case numeric_t::divide: left /= right; return;
    case numeric_t::less: store_boolean(slot, left < right); return;
    case numeric_t::greater: store_boolean(slot, left > right); return;
    case numeric_t::less_equal: store_boolean(slot, left <= right); return;
    case numeric_t::greater_equal: store_boolean(slot, left >= right); return;
    case numeric_t::none: return;
    }
}

std::size_t implementation_t::pop_count(const char* token) {
    require(1, token);
    const double count = read<double>(top());
    value_stack_m.pop_back();
    // Truncated; a count the stack cannot supply is refused rather than read past the bottom.
    if (!(count > -1.0 && count < 9.0e15)) [[unlikely]]
        throw std::runtime_error(std::string("virtual_machine_t: invalid count at '") + token +
                                 "'");
    return static_cast<std::size_t>(count < 0 ? 0.0 : count);
}

// Operators ---------------------------------------------------------------------------------

void implementation_t::op_not(implementation_t& m) {
    m.require(1, ".not");
    bool& value = read<bool>(m.top());
    value = !value;
}

void implementation_t::op_unary_negate(implementation_t& m) {
    m.require(1, ".unary_negate");
    double& value = read<double>(m.top());
    value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) ^ (std::uint64_t(1) << 63));
}

template <typename F>
void implementation_t::arithmetic(implementation_t& m, const char* token, F f) {
    m.require(2, token);
    double& a = read<double>(m.below_top());
    const double b = read<double>(m.top());
    a = f(a, b);
    m.pop();
}

template <typename F>
void implementation_t::comparison(implementation_t& m, const char* token, F f) {
    m.require(2, token);
    const double a = read<double>(m.below_top());
    const double b = read<double>(m.top());
    store_boolean(m.below_top(), f(a, b));
    m.pop();
}

template <typename F>
void implementation_t::bitwise(implementation_t& m, const char* token, F f) {
    m.require(2, token);
    const std::uint32_t a = low_32_bits(read<double>(m.below_top()));
    const std::uint32_t b = low_32_bits(read<double>(m.top()));
    store_number(m.below_top(), static_cast<double>(f(a, b)));
    m.pop();
}

void implementation_t::op_modulus(implementation_t& m) {
    m.require(2, ".modulus");
    const std::int32_t a = signed_32(read<double>(m.below_top()));
    const std::int32_t b = signed_32(read<double>(m.top()));
    // The language makes no test for a zero divisor; the machine must not trap on it, so the
    // remainder by zero is NaN, like the floating remainder. INT32_MIN % -1 is 0.
    double result;
    if (b == 0)
        result = std::numeric_limits<double>::quiet_NaN();
    else if (b == -1)
        result = 0;
    else
        result = a % b;
    store_number(m.below_top(), result);
    m.pop();
}

void implementation_t::op_bitwise_negate(implementation_t& m) {
    m.require(1, ".bitwise_negate");
    double& value = read<double>(m.top());
    value = static_cast<double>(~low_32_bits(value));
}

void implementation_t::op_equal(implementation_t& m) {
    m.require(2, ".equal");
    const bool result = m.below_top() == m.top();
    store_boolean(m.below_top(), result);
    m.pop();
}

void implementation_t::op_not_equal(implementation_t& m) {
    m.require(2, ".not_equal");
    const bool result = !(m.below_top() == m.top());
    store_boolean(m.below_top(), result);
    m.pop();
}

void implementation_t::op_variable(implementation_t& m) {
    m.require(1, ".variable");
    const name_t name = read<name_t>(m.top());
    if (!m.variable_lookup_m)
        throw std::logic_error("No variable lookup installed.");
    const std::size_t slot = m.value_stack_m.size() - 1;
    any_regular_t value = m.variable_lookup_m(name);
    m.value_stack_m[slot] = std::move(value);
}

void implementation_t::op_array(implementation_t& m) {
    const std::size_t count = m.pop_count(".array");
    m.require(count, ".array");
    auto& stack = m.value_stack_m;
    any_regular_t* const first = stack.end() - count;
    array_t result(std::make_move_iterator(first), std::make_move_iterator(stack.end()));
    stack.truncate(stack.size() - count);
    stack.push_back(any_regular_t(std::move(result)));
}

void implementation_t::op_dictionary(implementation_t& m) {
    const std::size_t count = m.pop_count(".dictionary");
    if (count > m.value_stack_m.size() / 2) [[unlikely]]
        throw std::runtime_error("virtual_machine_t: stack underflow at '.dictionary'");
    auto& stack = m.value_stack_m;
    any_regular_t* const first = stack.end() - 2 * count;
    dictionary_t result;
    for (any_regular_t* pair = first; pair != stack.end(); pair += 2)
        result.insert({read<name_t>(*pair), std::move(pair[1])});
    stack.truncate(stack.size() - 2 * count);
    stack.push_back(any_regular_t(std::move(result)));
}

void implementation_t::op_index(implementation_t& m) {
    m.require(2, ".index");
    auto& stack = m.value_stack_m;
    const std::size_t slot = stack.size() - 2;
    const any_regular_t& key = stack[slot + 1];
    any_regular_t result;
    if (holds<name_t>(key)) {
        const name_t name = traits<name_t>::get(key);
        if (m.dictionary_index_lookup_m) {
            // Moved out first: the lookup may re-enter the machine and move the stack.
            const any_regular_t container = std::move(stack[slot]);
            result = m.dictionary_index_lookup_m(container, name);
        } else {
            result = get_value(read<dictionary_t>(stack[slot]), name);
        }
    } else {
        const std::uint64_t index = index_64(read<double>(key));
        if (m.array_index_lookup_m) {
            const any_regular_t container = std::move(stack[slot]);
            result = m.array_index_lookup_m(container, index);
        } else {
            const array_t& array = read<array_t>(stack[slot]);
            if (index >= array.size())
                throw std::runtime_error("index: array index out of range");
            result = array[static_cast<std::size_t>(index)];
        }
    }
    stack[slot] = std::move(result);
    m.pop();
}

void implementation_t::op_function(implementation_t& m) {
    m.require(2, ".function");
    auto& stack = m.value_stack_m;
    const name_t name = read<name_t>(m.top());
    m.pop();
    const std::size_t slot = stack.size() - 1;
    any_regular_t result;
    if (holds<array_t>(stack[slot])) {
        const array_t arguments = std::move(traits<array_t>::get(stack[slot]));
        if (const array_function_t* function = search(m.tables_m->array_functions, name))
            result = (*function)(arguments);
        else if (m.array_function_lookup_m)
            result = m.array_function_lookup_m(name, arguments);
        else
            throw std::logic_error(std::string("function '") + name.c_str() + "' not defined.");
    } else {
        const dictionary_t arguments = std::move(stack[slot].cast<dictionary_t>());
        if (const dictionary_function_t* function = search(m.tables_m->dictionary_functions, name))
            result = (*function)(arguments);
        else if (m.dictionary_function_lookup_m)
            result = m.dictionary_function_lookup_m(name, arguments);
        else
            throw std::logic_error(std::string("function '") + name.c_str() + "' not defined.");
    }
    stack[slot] = std::move(result);
}

void implementation_t::logical(const array_t& deferred, bool when) {
    require(1, when ? ".and" : ".or");
    if (read<bool>(top()) != when)
        return; // the left value is the result
    pop();
    evaluate(deferred);
    require(1, when ? ".and" : ".or");
    read<bool>(top());
}

void implementation_t::conditional(const array_t& then_stream, const array_t& else_stream) {
    require(1, ".ifelse");
    const bool condition = read<bool>(top());
    pop();
    evaluate(condition ? then_stream : else_stream);
}

void implementation_t::op_and(implementation_t& m) {
    m.require(2, ".and");
    const array_t deferred = std::move(read<array_t>(m.top()));
    m.pop();
    m.logical(deferred, true);
}

void implementation_t::op_or(implementation_t& m) {
    m.require(2, ".or");
    const array_t deferred = std::move(read<array_t>(m.top()));
    m.pop();
    m.logical(deferred, false);
}

void implementation_t::op_ifelse(implementation_t& m) {
    m.require(3, ".ifelse");
    const array_t else_stream = std::move(read<array_t>(m.top()));
    m.pop();
    const array_t then_stream = std::move(read<array_t>(m.top()));
    m.pop();
    m.conditional(then_stream, else_stream);
}

// Built-in functions ------------------------------------------------------------------------

any_regular_t implementation_t::fn_typeof(const array_t& arguments) {
    if (arguments.empty())
        throw std::runtime_error("typeof: parameter error");
    return any_regular_t(type_name(arguments.front().type_info()));
}

any_regular_t implementation_t::fn_min(const array_t& arguments) {
    if (arguments.empty())
        throw std::runtime_error("min: parameter error");
    std::size_t best = 0;
    double best_value = arguments[0].cast<double>();
    for (std::size_t i = 1; i != arguments.size(); ++i) {
        const double value = arguments[i].cast<double>();
        if (value < best_value) {
            best = i;
            best_value = value;
        }
    }
    return arguments[best];
}

any_regular_t implementation_t::fn_max(const array_t& arguments) {
    if (arguments.empty())
        throw std::runtime_error("max: parameter error");
    std::size_t best = 0;
    double best_value = arguments[0].cast<double>();
    for (std::size_t i = 1; i != arguments.size(); ++i) {
        const double value = arguments[i].cast<double>();
        if (value > best_value) {
            best = i;
            best_value = value;
        }
    }
    return arguments[best];
}

any_regular_t implementation_t::fn_round(const array_t& arguments) {
    if (arguments.empty() || !holds<double>(arguments.front()))
        throw std::runtime_error("round: parameter error");
    return any_regular_t(std::round(traits<double>::get(arguments.front())));
}

any_regular_t implementation_t::fn_localize(const array_t& arguments) {
    if (arguments.size() != 1 || !holds<std::string>(arguments.front()))
        throw std::runtime_error("localize: parameter error");
    const std::string& text = traits<std::string>::get(arguments.front());
    if (!localization_ready())
        return any_regular_t(text);
    return any_regular_t(invoke_localization(text));
}

any_regular_t implementation_t::fn_xml_escape(const array_t& arguments) {
    if (arguments.size() != 1 || !holds<std::string>(arguments.front()))
        throw std::runtime_error("xml_escape: parameter error");
    return any_regular_t(xml_escape(traits<std::string>::get(arguments.front())));
}

any_regular_t implementation_t::fn_xml_unescape(const array_t& arguments) {
    if (arguments.size() != 1 || !holds<std::string>(arguments.front()))
        throw std::runtime_error("xml_unescape: parameter error");
    return any_regular_t(xml_unescape(traits<std::string>::get(arguments.front())));
}

any_regular_t implementation_t::fn_any(const array_t& arguments) {
    if (arguments.size() != 2 || !holds<array_t>(arguments[1]))
        throw std::runtime_error("any: parameter error any function requires a value and an array");
    const any_regular_t& value = arguments[0];
    const array_t& array = traits<array_t>::get(arguments[1]);
    // Only the first element's kind is tested. An empty array is not a supported argument;
    // the answer for it is false.
    if (array.empty())
        return any_regular_t(false);
    if (!type_info_equal(array.front().type_info(), value.type_info()))
        throw std::runtime_error("any: array value must match type of first argument");
    for (const any_regular_t& element : array)
        if (element == value)
            return any_regular_t(true);
    return any_regular_t(false);
}

any_regular_t implementation_t::fn_scale(const dictionary_t& arguments) {
    double m = 1;
    double x = 0;
    double b = 0;
    auto number = [&](const char* key, double& out) {
        auto found = arguments.find(name_t(key));
        if (found != arguments.end())
            out = read<double>(found->second);
    };
    number("m", m);
    number("x", x);
    number("b", b);
    return any_regular_t(x * m + b);
}

// The public face ---------------------------------------------------------------------------

virtual_machine_t::virtual_machine_t() : object_m(std::make_unique<implementation_t>()) {}
virtual_machine_t::virtual_machine_t(const virtual_machine_t& x)
    : object_m(std::make_unique<implementation_t>(*x.object_m)) {}
virtual_machine_t& virtual_machine_t::operator=(const virtual_machine_t& x) {
    if (this != &x)
        object_m = std::make_unique<implementation_t>(*x.object_m);
    return *this;
}
virtual_machine_t::virtual_machine_t(virtual_machine_t&&) noexcept = default;
virtual_machine_t& virtual_machine_t::operator=(virtual_machine_t&&) noexcept = default;
virtual_machine_t::~virtual_machine_t() = default;

// A lookup may re-enter the machine (a sheet reading one cell from another's expression). Nested
// streams within one entry are bounded by `max_depth`; entries have a bound of their own, wide
// enough for a chain through every cell a sheet can hold. The step budget spans the outermost
// entry and everything it leads to.
void virtual_machine_t::evaluate(const array_t& token_stream) {
    implementation_t& self = *object_m;
    struct entry_guard_t {
        implementation_t& self;
        int saved_depth;
        explicit entry_guard_t(implementation_t& s) : self(s), saved_depth(s.depth_m) {
            if (self.entries_m >= max_entries)
                throw std::runtime_error("virtual_machine_t: lookups re-entered the machine "
                                         "deeper than " +
                                         std::to_string(max_entries) + " levels");
            if (self.entries_m++ == 0)
                self.steps_m = 0;
            self.depth_m = 0;
        }
        ~entry_guard_t() {
            --self.entries_m;
            self.depth_m = saved_depth;
        }
    } guard(self);
    self.evaluate(token_stream);
}

const any_regular_t& virtual_machine_t::back() const {
    if (object_m->value_stack_m.empty())
        throw std::runtime_error("virtual_machine_t: the stack is empty");
    return object_m->value_stack_m.back();
}
any_regular_t& virtual_machine_t::back() {
    if (object_m->value_stack_m.empty())
        throw std::runtime_error("virtual_machine_t: the stack is empty");
    return object_m->value_stack_m.back();
}
void virtual_machine_t::pop_back() {
    if (object_m->value_stack_m.empty())
        throw std::runtime_error("virtual_machine_t: the stack is empty");
    object_m->value_stack_m.pop_back();
}
std::size_t virtual_machine_t::size() const noexcept {
    return object_m->value_stack_m.size();
}

void virtual_machine_t::set_variable_lookup(variable_lookup_t lookup) {
    object_m->variable_lookup_m = std::move(lookup);
}
void virtual_machine_t::set_array_function_lookup(array_function_lookup_t lookup) {
    object_m->array_function_lookup_m = std::move(lookup);
}
void virtual_machine_t::set_dictionary_function_lookup(dictionary_function_lookup_t lookup) {
    object_m->dictionary_function_lookup_m = std::move(lookup);
}
void virtual_machine_t::set_dictionary_index_lookup(dictionary_index_lookup_t lookup) {
    object_m->dictionary_index_lookup_m = std::move(lookup);
}
void virtual_machine_t::set_array_index_lookup(array_index_lookup_t lookup) {
    object_m->array_index_lookup_m = std::move(lookup);
}
void virtual_machine_t::set_operator_override(name_t op, operator_override_t function) {
    if (function)
        object_m->operator_overrides_m[op] = std::move(function);
    else
        object_m->operator_overrides_m.erase(op);
}
void virtual_machine_t::set_step_limit(std::uint64_t limit) {
    object_m->set_step_limit(limit);
}
std::uint64_t virtual_machine_t::step_limit() const noexcept {
    return object_m->step_limit_m;
}

} // namespace vorlen
