#pragma once

#include "core/any_regular.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace vorlen {

/// A stack machine over postfix token streams. It knows no variables, sheets or widgets:
/// everything outside the language comes in through the installable lookups.
class virtual_machine_t {
public:
    using variable_lookup_t = std::function<any_regular_t(name_t)>;
    using array_function_lookup_t = std::function<any_regular_t(name_t, const array_t&)>;
    using dictionary_function_lookup_t = std::function<any_regular_t(name_t, const dictionary_t&)>;
    using dictionary_index_lookup_t = std::function<any_regular_t(const any_regular_t&, name_t)>;
    using array_index_lookup_t = std::function<any_regular_t(const any_regular_t&, std::uint64_t)>;
    using operator_override_t =
        std::function<any_regular_t(const any_regular_t&, const any_regular_t&)>;

    virtual_machine_t();
    virtual_machine_t(const virtual_machine_t& x);
    virtual_machine_t& operator=(const virtual_machine_t& x);
    virtual_machine_t(virtual_machine_t&&) noexcept;
    virtual_machine_t& operator=(virtual_machine_t&&) noexcept;
    ~virtual_machine_t();

    /// Runs the stream, leaving its result (or results) on the stack. May be re-entered.
    void evaluate(const array_t& token_stream);

    const any_regular_t& back() const;
    any_regular_t& back();
    void pop_back();

    void set_variable_lookup(variable_lookup_t lookup);
    void set_array_function_lookup(array_function_lookup_t lookup);
    void set_dictionary_function_lookup(dictionary_function_lookup_t lookup);
    void set_dictionary_index_lookup(dictionary_index_lookup_t lookup);
    void set_array_index_lookup(array_index_lookup_t lookup);
    /// `op` is an operator token's text such as ".add"; checked before the operator table.
    void set_operator_override(name_t op, operator_override_t function);

    /// Token streams nested deeper than this within one entry (deferred operands evaluating
    /// deferred operands) are refused with `std::runtime_error`.
    static constexpr int max_depth = 256;
    /// Re-entries through lookups (a sheet reading cells from cells) may nest this deep.
    static constexpr int max_entries = 1024;

    /// A budget of tokens for one outermost `evaluate` call: each stream it runs, nested ones
    /// and those of re-entering lookups included, is charged its length when it is entered.
    /// Exceeding the budget throws `std::runtime_error`. 0, the default, is unlimited.
    void set_step_limit(std::uint64_t limit);
    std::uint64_t step_limit() const noexcept;

    /// The number of values on the stack.
    std::size_t size() const noexcept;

    struct implementation_t;

private:
    std::unique_ptr<implementation_t> object_m;
};

/// The process-wide localisation routine behind the `localize` built-in.
using localization_proc_t = std::function<std::string(const std::string&)>;
void set_localization_proc(localization_proc_t proc);
bool localization_ready();
/// Throws `std::runtime_error` when no routine is installed.
std::string invoke_localization(const std::string& text);

} // namespace vorlen
