#pragma once

#include "core/any_regular.hpp"
#include "core/expression/virtual_machine.hpp"
#include "core/stream_error.hpp"

#include <boost/signals2/connection.hpp>

#include <bitset>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace vorlen {

/// The property model behind an editor: named cells joined by expressions and by relations that
/// run in either direction. A round is one or more `set` or `touch` calls and one `update`; the
/// cell touched last keeps its value and relations flow away from it.
///
/// Cells are built by the `add_` operations in script order. A sheet holds at most
/// `max_cell_count` cells, since every set of cells is a fixed bit set. A sheet belongs to one
/// thread; monitors are called on it, inside `update` or the `monitor_` call itself.
class sheet_t {
public:
    static constexpr std::size_t max_cell_count = 1024;

    using cell_bits_t = std::bitset<max_cell_count>;
    using connection_t = boost::signals2::connection;
    using monitor_value_t = std::function<void(const any_regular_t&)>;
    using monitor_enabled_t = std::function<void(bool)>;
    using monitor_invariant_t = std::function<void(bool)>;
    using monitor_contributing_t = std::function<void(const dictionary_t&)>;

    /// One term of a relate clause: the cells it writes and the expression that computes them.
    /// A term writing several cells yields an array, one element per cell, in name order.
    struct relation_t {
        std::vector<name_t> name_set;
        line_position_t position;
        array_t expression;
    };

    /// The machine's variable lookup is bound to `get`. Clients that install their own lookup
    /// (to add names of their own) must end in `get` for cell names.
    sheet_t();
    ~sheet_t();
    sheet_t(const sheet_t&) = delete;
    sheet_t& operator=(const sheet_t&) = delete;

    // Construction, in script order. Initial values are evaluated as the cell is added, reading
    // only inputs, interface inputs and constants added before.

    void add_constant(name_t name, const line_position_t& position, const array_t& expression);
    void add_constant(name_t name, const any_regular_t& value);
    void add_input(name_t name, const line_position_t& position, const array_t& expression);
    /// An interface cell: an input half that controls write, with an optional initializer, and
    /// an output half computed by `expression` or, when that is empty, from the input half.
    /// `linked` lets a value decided by a relation flow back into the input half.
    void add_interface(name_t name, bool linked, const line_position_t& position_1,
                       const array_t& initializer, const line_position_t& position_2,
                       const array_t& expression);
    void add_interface(name_t name, const any_regular_t& value);
    void add_output(name_t name, const line_position_t& position, const array_t& expression);
    void add_logic(name_t name, const line_position_t& position, const array_t& expression);
    void add_invariant(name_t name, const line_position_t& position, const array_t& expression);
    /// A relate clause over interface cells; `conditional`, when not empty, must give a boolean
    /// and switches the clause off for a round while it is false.
    void add_relation(const line_position_t& position, const array_t& conditional,
                      const relation_t* first, const relation_t* last);

    // Rounds.

    void set(name_t name, const any_regular_t& value);
    void set(const dictionary_t& values);
    void touch(const name_t* first, const name_t* last);
    void update();
    void reinitialize();

    // Questions.

    /// The value of a cell, calculated on demand; the variable lookup of the machine.
    any_regular_t get(name_t name);
    bool has_input(name_t name) const;
    bool has_output(name_t name) const;
    /// Whether a relate clause names the cell, so that its value may come from the relation.
    bool has_relation(name_t name) const;
    /// Evaluates an expression against the current values.
    any_regular_t inspect(const array_t& expression);

    /// The inputs feeding the published cells, with their values: those that changed against
    /// `mark`, and, when a key is new to `mark`, also those the user was just touching.
    dictionary_t contributing() const;
    dictionary_t contributing(const dictionary_t& mark) const;
    dictionary_t contributing_to_cell(name_t name) const;

    // Monitors: each calls its function at once and then on each change, on the sheet's thread.
    // Disconnecting the returned connection ends the calls.

    connection_t monitor_value(name_t name, const monitor_value_t& proc);
    connection_t monitor_invariant_dependent(name_t name, const monitor_invariant_t& proc);
    connection_t monitor_contributing(name_t name, const dictionary_t& mark,
                                      const monitor_contributing_t& proc);
    /// Whether a control of input `name` should be enabled; `[first, last)` names the inputs
    /// the same control touches.
    connection_t monitor_enabled(name_t name, const name_t* first, const name_t* last,
                                 const monitor_enabled_t& proc);

    virtual_machine_t machine_m;

    struct implementation_t;

private:
    std::unique_ptr<implementation_t> object_m;
};

} // namespace vorlen
