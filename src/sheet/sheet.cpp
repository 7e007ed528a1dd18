#include "sheet/sheet.hpp"

#include "core/closed_hash.hpp"
#include "sheet/member_read.hpp"

#include <boost/signals2/signal.hpp>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <stdexcept>
#include <string>
#include <utility>

namespace vorlen {

namespace {

using cell_bits_t = sheet_t::cell_bits_t;
using calculator_t = std::function<any_regular_t()>;

struct relation_cell_t;

enum class specifier_t : std::int32_t {
    input = 0,
    interface_input = 1,
    interface_output = 2,
    output = 3,
    logic = 4,
    constant = 5,
    invariant = 6
};

/// One cell of the sheet. Interface cells are two of these at consecutive positions: the input
/// half that controls write, and the output half that is read.
struct cell_t {
    cell_t(specifier_t s, name_t n, std::size_t position)
        : specifier(s), name(n), cell_position(position) {}

    specifier_t specifier;
    name_t name;
    calculator_t calculator;
    bool linked = false;
    bool invariant = true;
    std::int32_t priority = 0;
    bool resolved = false;
    bool evaluated = false;
    std::uint64_t relation_count = 0;
    std::uint64_t initial_relation_count = 0;
    bool dirty = false;
    any_regular_t state;
    cell_bits_t contributing;
    cell_bits_t init_contributing;
    std::size_t cell_position;
    calculator_t term;
    cell_t* interface_input = nullptr;
    std::vector<relation_cell_t*> relation_index;
    boost::signals2::signal<void(const any_regular_t&)> value_signal;
    boost::signals2::signal<void(const cell_bits_t&)> contributing_signal;
    boost::signals2::signal<void(bool)> enabled_signal;
    // Asking a signal whether it has slots takes its lock; cells never monitored skip that.
    bool contributing_monitored = false;

    bool is_input_or_constant() const noexcept {
        return specifier == specifier_t::input || specifier == specifier_t::constant;
    }
    /// The recency that decides which side of a relation holds its value.
    std::int32_t rank() const noexcept {
        return interface_input ? interface_input->priority : priority;
    }
};

/// One relate clause.
struct relation_cell_t {
    bool resolved = false;
    line_position_t position;
    array_t conditional;
    std::vector<sheet_t::relation_t> terms;
    std::vector<cell_t*> edges;
    // The cells each term writes, in the order of its names: solving looks them up often.
    std::vector<std::vector<cell_t*>> term_cells;
};

struct cell_name_t {
    name_t operator()(const cell_t* cell) const noexcept { return cell->name; }
};

using index_t = closed_hash_set<cell_t*, cell_name_t, name_hash_t, name_equal_t>;

cell_t* find_cell(const index_t& index, name_t name) {
    auto found = index.find(name);
    return found == index.end() ? nullptr : *found;
}

/// Cells by the address of their interned name: a shortcut beside the name indexes for reads in
/// the hot path, which would otherwise hash the text on every read. The indexes stay the
/// authority on membership and order; this only mirrors them.
class cell_lookup_t {
public:
    void insert(name_t name, cell_t* cell) {
        if ((size_m + 1) * 2 > slots_m.size())
            grow();
        place(name.c_str(), cell);
        ++size_m;
    }

    cell_t* find(name_t name) const noexcept {
        if (slots_m.empty())
            return nullptr;
        const char* key = name.c_str();
        for (std::size_t i = home(key);; i = (i + 1) & (slots_m.size() - 1)) {
            if (slots_m[i].first == key)
                return slots_m[i].second;
            if (!slots_m[i].first)
                return nullptr;
        }
    }

private:
    std::size_t home(const char* key) const noexcept {
        const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(key));
        return static_cast<std::size_t>((bits * 0x9E3779B97F4A7C15ULL) >> 32) &
               (slots_m.size() - 1);
    }
    void place(const char* key, cell_t* cell) {
        std::size_t i = home(key);
        while (slots_m[i].first)
            i = (i + 1) & (slots_m.size() - 1);
        slots_m[i] = {key, cell};
    }
    void grow() {
        std::vector<std::pair<const char*, cell_t*>> old(
            std::max<std::size_t>(16, slots_m.size() * 2));
        old.swap(slots_m);
        for (const auto& slot : old)
            if (slot.first)
                place(slot.first, slot.second);
    }

    std::vector<std::pair<const char*, cell_t*>> slots_m;
    std::size_t size_m = 0;
};

std::string quoted(name_t name) {
    return std::string(name.c_str());
}

/// Sets a bit, with the fixed message for a position past the set's end.
void set_bit(cell_bits_t& bits, std::size_t position) {
    if (position >= sheet_t::max_cell_count)
        throw std::out_of_range("invalid bitset position");
    bits.set(position);
}

std::vector<name_t> sorted_unique(std::vector<name_t> names) {
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

} // namespace

struct sheet_t::implementation_t {
    using get_entry_t = std::pair<name_t, bool>;

    explicit implementation_t(virtual_machine_t& machine) : machine_m(&machine) {}

    index_t name_index_m;
    index_t input_index_m;
    index_t output_index_m;
    std::vector<cell_t*> invariant_list_m;
    std::int32_t priority_high_m = 0;
    std::int32_t priority_low_m = 0;
    cell_bits_t conditional_contributing_m;
    virtual_machine_t* machine_m;
    std::vector<get_entry_t> get_stack_m;
    std::uint64_t get_count_m = 0;
    cell_bits_t init_dirty_m;
    cell_bits_t priority_accessed_m;
    cell_bits_t value_accessed_m;
    cell_bits_t active_m;
    boost::signals2::signal<void(const cell_bits_t&, const cell_bits_t&)> update_signal_m;
    cell_bits_t accumulate_contributing_m;
    bool has_output_m = false;
    bool initialize_mode_m = false;
    std::deque<cell_t> cell_set_m;
    std::deque<relation_cell_t> relation_cell_set_m;
    cell_lookup_t name_lookup_m;  // mirrors name_index_m
    cell_lookup_t input_lookup_m; // mirrors input_index_m
    std::deque<array_t> paths_m;  // key paths of the in-place member reads

    /// Holds initialize mode for the life of an `add_` operation or `reinitialize`, exception
    /// included.
    struct initialize_scope_t {
        explicit initialize_scope_t(implementation_t& self)
            : self_m(self), saved_m(self.initialize_mode_m) {
            self.initialize_mode_m = true;
        }
        ~initialize_scope_t() { self_m.initialize_mode_m = saved_m; }
        implementation_t& self_m;
        bool saved_m;
    };

    /// Pushes an interface output on the get stack for the scope, so that its expression can
    /// recognise a read of itself.
    struct get_stack_scope_t {
        get_stack_scope_t(implementation_t& self, const cell_t& cell)
            : self_m(self), pushed_m(cell.specifier == specifier_t::interface_output) {
            if (pushed_m)
                self.get_stack_m.emplace_back(cell.name, false);
        }
        ~get_stack_scope_t() {
            if (pushed_m)
                self_m.get_stack_m.pop_back();
        }
        implementation_t& self_m;
        bool pushed_m;
    };

    /// Runs an expression and takes its result; failures carry the expression's position.
    any_regular_t evaluate(const array_t& expression, const line_position_t& position) {
        if (expression.empty())
            return any_regular_t();
        try {
            machine_m->evaluate(expression);
            any_regular_t result(std::move(machine_m->back()));
            machine_m->pop_back();
            return result;
        } catch (const std::exception& error) {
            throw stream_error_t(error, position);
        }
    }

    array_t fuse(const array_t& expression) { return fuse_member_reads(expression, paths_m); }

    calculator_t bind(const array_t& expression, const line_position_t& position) {
        return [this, stream = fuse(expression), position] {
            return evaluate(stream, position);
        };
    }

    /// The term of a relation, for the cell at `index` of its names when it writes several:
    /// then the expression gives an array, one element per cell.
    calculator_t bind_term(const relation_t& term, std::size_t index) {
        const relation_t* t = &term;
        if (term.name_set.size() == 1)
            return [this, t] {
                return evaluate(t->expression, t->position);
            };
        return [this, t, index] {
            any_regular_t result = evaluate(t->expression, t->position);
            const array_t& elements = result.cast<array_t>();
            if (index >= elements.size())
                throw stream_error_t("relate: a term writing " +
                                         std::to_string(t->name_set.size()) + " cells gave " +
                                         std::to_string(elements.size()) + " values",
                                     t->position);
            return elements[index];
        };
    }

    calculator_t bind_get(name_t name) {
        return [this, name] {
            return get(name);
        };
    }

    // Construction

    cell_t& append_cell(specifier_t specifier, name_t name) {
        const std::size_t position = cell_set_m.size();
        if (position >= max_cell_count)
            throw std::out_of_range("invalid bitset position");
        return cell_set_m.emplace_back(specifier, name, position);
    }

    [[noreturn]] static void throw_duplicate(name_t name, const line_position_t* position) {
        const std::string message = "cell named '" + quoted(name) + "'already exists.";
        if (position)
            throw stream_error_t(message, *position);
        throw std::logic_error(message);
    }

    void insert(index_t& index, cell_t& cell, const line_position_t* position) {
        if (!index.insert(&cell).second)
            throw_duplicate(cell.name, position);
        if (&index == &name_index_m)
            name_lookup_m.insert(cell.name, &cell);
        if (&index == &input_index_m)
            input_lookup_m.insert(cell.name, &cell);
    }

    void add_constant(name_t name, const any_regular_t& value, const line_position_t* position) {
        cell_t& cell = append_cell(specifier_t::constant, name);
        cell.resolved = true;
        cell.evaluated = true;
        cell.state = value;
        insert(name_index_m, cell, position);
    }

    void add_input(name_t name, const line_position_t& position, const array_t& expression) {
        initialize_scope_t mode(*this);
        any_regular_t value = evaluate(fuse(expression), position);
        cell_t& cell = append_cell(specifier_t::input, name);
        cell.resolved = true;
        cell.evaluated = true;
        cell.state = std::move(value);
        set_bit(cell.init_contributing, cell.cell_position);
        insert(name_index_m, cell, &position);
        insert(input_index_m, cell, &position);
    }

    void add_interface(name_t name, bool linked, const line_position_t& position_1,
                       const array_t& initializer, const line_position_t& position_2,
                       const array_t& expression) {
        initialize_scope_t mode(*this);
        cell_t& input = append_cell(specifier_t::interface_input, name);
        input.linked = linked;
        set_bit(input.contributing, input.cell_position);
        if (!initializer.empty())
            input.calculator = bind(initializer, position_1);
        insert(input_index_m, input, &position_1);
        if (!initializer.empty())
            initialize(input);

        cell_t& output = append_cell(specifier_t::interface_output, name);
        output.interface_input = &input;
        output.linked = linked;
        output.calculator = expression.empty() ? bind_get(name) : bind(expression, position_2);
        output.evaluated = false;
        insert(name_index_m, output, &position_1);
        insert(output_index_m, output, &position_1);
    }

    void add_interface(name_t name, const any_regular_t& value) {
        initialize_scope_t mode(*this);
        cell_t& input = append_cell(specifier_t::interface_input, name);
        input.linked = true;
        input.state = value;
        set_bit(input.contributing, input.cell_position);
        input.priority = ++priority_high_m;
        insert(input_index_m, input, nullptr);

        cell_t& output = append_cell(specifier_t::interface_output, name);
        output.interface_input = &input;
        output.linked = true;
        output.state = value;
        // The output half still has to read its input, or an update would have nothing to run.
        output.calculator = bind_get(name);
        insert(name_index_m, output, nullptr);
        insert(output_index_m, output, nullptr);
    }

    cell_t& add_calculated(specifier_t specifier, name_t name, const line_position_t& position,
                           const array_t& expression) {
        initialize_scope_t mode(*this);
        cell_t& cell = append_cell(specifier, name);
        cell.calculator = bind(expression, position);
        insert(name_index_m, cell, &position);
        return cell;
    }

    void add_relation(const line_position_t& position, const array_t& conditional,
                      const relation_t* first, const relation_t* last) {
        initialize_scope_t mode(*this);
        relation_cell_t& relation = relation_cell_set_m.emplace_back();
        relation.position = position;
        relation.conditional = fuse(conditional);
        relation.terms.assign(first, last);
        for (relation_t& term : relation.terms)
            term.expression = fuse(term.expression);

        std::vector<name_t> names;
        for (const relation_t& term : relation.terms)
            names.insert(names.end(), term.name_set.begin(), term.name_set.end());
        for (name_t name : sorted_unique(std::move(names))) {
            cell_t* cell = find_cell(output_index_m, name);
            if (!cell || !cell->interface_input)
                throw stream_error_t("interface cell " + quoted(name) + " does not exist.",
                                     position);
            relation.edges.push_back(cell);
            cell->relation_index.push_back(&relation);
            ++cell->initial_relation_count;
        }
        for (const relation_t& term : relation.terms) {
            std::vector<cell_t*>& cells = relation.term_cells.emplace_back();
            for (name_t name : term.name_set)
                cells.push_back(find_cell(output_index_m, name));
        }
    }

    /// The initialiser step: an interface input takes its initial value again, which then counts
    /// as the newest touch.
    void initialize(cell_t& input) {
        accumulate_contributing_m.reset();
        if (input.calculator)
            input.state = input.calculator();
        input.priority = ++priority_high_m;
        input.init_contributing |= accumulate_contributing_m;
    }

    // Rounds

    void set(name_t name, const any_regular_t& value) {
        cell_t* cell = input_lookup_m.find(name);
        if (!cell)
            throw std::logic_error("input cell " + quoted(name) + " does not exist.");
        cell->state = value;
        cell->priority = ++priority_high_m;
        if (cell->specifier == specifier_t::input)
            set_bit(init_dirty_m, cell->cell_position);
    }

    void touch(const name_t* first, const name_t* last) {
        std::vector<cell_t*> cells;
        for (; first != last; ++first)
            if (cell_t* cell = find_cell(input_index_m, *first))
                cells.push_back(cell);
        std::stable_sort(cells.begin(), cells.end(), [](const cell_t* a, const cell_t* b) {
            return a->priority < b->priority;
        });
        for (cell_t* cell : cells)
            cell->priority = ++priority_high_m;
    }

    void update() {
        conditional_contributing_m.reset();
        value_accessed_m.reset();
        for (cell_t& cell : cell_set_m) {
            cell.relation_count = cell.initial_relation_count;
            cell.dirty = false;
            cell.term = nullptr;
            cell.resolved = cell.evaluated = cell.is_input_or_constant();
        }
        for (relation_cell_t& relation : relation_cell_set_m)
            relation.resolved = false;
        accumulate_contributing_m.reset();

        for (relation_cell_t& relation : relation_cell_set_m) {
            if (relation.conditional.empty())
                continue;
            if (evaluate(relation.conditional, relation.position).cast<bool>())
                continue;
            for (cell_t* cell : relation.edges)
                --cell->relation_count;
            relation.resolved = true;
        }
        conditional_contributing_m = accumulate_contributing_m;

        cell_bits_t accessed;
        flow(accessed);

        for (cell_t* cell : output_index_m) {
            if (!cell->evaluated) {
                accumulate_contributing_m.reset();
                {
                    get_stack_scope_t entry(*this, *cell);
                    calculate(*cell);
                }
                cell->contributing = accumulate_contributing_m | conditional_contributing_m;
            }
            // Comparing first spares copying a large value that did not change.
            if (cell->interface_input && cell->interface_input->linked &&
                !(cell->interface_input->state == cell->state))
                cell->interface_input->state = cell->state;
        }

        cell_bits_t poison;
        for (const cell_t* cell : invariant_list_m)
            if (!cell->state.cast<bool>())
                poison |= cell->contributing;

        const bool any_poison = poison.any();
        cell_bits_t active;
        for (cell_t* cell : output_index_m) {
            const bool enabled = !any_poison || (poison & cell->contributing).none();
            if (enabled != cell->invariant)
                cell->enabled_signal(enabled);
            cell->invariant = enabled;
            if (cell->dirty)
                cell->value_signal(cell->state);
            if (cell->contributing_monitored && !cell->contributing_signal.empty())
                cell->contributing_signal(cell->contributing);
            if (cell->specifier == specifier_t::output ||
                (!has_output_m && cell->specifier == specifier_t::interface_output))
                active |= cell->contributing;
        }

        update_signal_m(accessed, active);
        priority_accessed_m = accessed;
        active_m = active;
    }

    /// Relation solving: the cell of highest rank keeps its value, and each relation around it
    /// picks a term that writes only cells still free.
    void flow(cell_bits_t& accessed) {
        std::vector<cell_t*> cells;
        for (const relation_cell_t& relation : relation_cell_set_m)
            if (!relation.resolved)
                cells.insert(cells.end(), relation.edges.begin(), relation.edges.end());
        std::sort(cells.begin(), cells.end());
        cells.erase(std::unique(cells.begin(), cells.end()), cells.end());
        std::sort(cells.begin(), cells.end(),
                  [](const cell_t* a, const cell_t* b) { return a->rank() < b->rank(); });
        for (const cell_t* cell : cells)
            set_bit(accessed, cell->interface_input->cell_position);

        std::vector<cell_t*> others;
        while (!cells.empty()) {
            cell_t* cell = cells.back();
            cells.pop_back();
            if (cell->relation_count == 0)
                continue;
            cell->resolved = true;

            for (relation_cell_t* relation : cell->relation_index) {
                if (relation->resolved)
                    continue;
                --cell->relation_count;

                // A term is usable only while every cell it writes is still free.
                const std::size_t term_count = relation->terms.size();
                auto is_free = [relation](std::size_t t) {
                    for (const cell_t* written : relation->term_cells[t])
                        if (written->resolved)
                            return false;
                    return true;
                };
                std::size_t t = 0;
                while (t != term_count && !is_free(t))
                    ++t;
                if (t == term_count)
                    throw std::logic_error(
                        "all terms of relation resolve but relation not applied.");
                std::size_t other = t + 1;
                while (other != term_count && !is_free(other))
                    ++other;
                if (other != term_count)
                    continue; // not decided yet: its cells come again

                relation->resolved = true;
                const std::vector<cell_t*>& written_cells = relation->term_cells[t];
                for (std::size_t j = 0; j != written_cells.size(); ++j) {
                    cell_t* written = written_cells[j];
                    if (written->term)
                        throw std::logic_error("over constrained.");
                    written->term = bind_term(relation->terms[t], j);
                    --written->relation_count;
                    // A calculated value drops below everything the user touched, and each step
                    // lowers it further, so older computed values lose to newer ones.
                    if (written->interface_input->linked)
                        written->interface_input->priority = --priority_low_m;
                    if (written->relation_count != 0)
                        cells.push_back(written);
                    else
                        written->resolved = true;
                }

                // The cells of the other terms, each once.
                others.clear();
                for (std::size_t u = 0; u != term_count; ++u)
                    if (u != t)
                        others.insert(others.end(), relation->term_cells[u].begin(),
                                      relation->term_cells[u].end());
                std::sort(others.begin(), others.end());
                others.erase(std::unique(others.begin(), others.end()), others.end());
                for (cell_t* other_cell : others)
                    if (!other_cell->resolved)
                        --other_cell->relation_count;
            }
        }
    }

    void calculate(cell_t& cell) {
        if (cell.evaluated)
            return;
        if (cell.relation_count != 0)
            throw std::logic_error("cell " + quoted(cell.name) +
                                   " is attached to an unresolved relate clause.");
        any_regular_t result = cell.calculator ? cell.calculator() : any_regular_t();
        cell.dirty = !(result == cell.state);
        cell.state = std::move(result);
        cell.evaluated = true;
    }

    any_regular_t get(name_t name) {
        any_regular_t scratch;
        const any_regular_t& value = read(name, scratch);
        if (&value == &scratch)
            return scratch;
        return value;
    }

    /// `get` without the copy: the value stays where it is, or, when it is made on the spot
    /// (a relation's term), lands in `scratch`. Valid until the next evaluation.
    const any_regular_t& read(name_t name, any_regular_t& scratch) {
        if (initialize_mode_m) {
            cell_t* cell = input_lookup_m.find(name);
            if (!cell) {
                cell = name_lookup_m.find(name);
                if (!cell || cell->specifier != specifier_t::constant)
                    throw std::logic_error("variable " + quoted(name) + " not found.");
            }
            accumulate_contributing_m |= cell->init_contributing;
            return cell->state;
        }

        struct depth_t {
            explicit depth_t(std::uint64_t& count) : count_m(++count) {}
            ~depth_t() { --count_m; }
            std::uint64_t& count_m;
        } depth(get_count_m);
        // Nesting deeper than there are cells can only be a cycle; this is the only cycle test.
        if (get_count_m > cell_set_m.size())
            throw std::logic_error("cycle detected, consider using a relate { } clause.");

        cell_t* cell = name_lookup_m.find(name);
        if (!cell)
            throw std::logic_error("variable " + quoted(name) + " not found.");

        if (!get_stack_m.empty() && get_stack_m.back().first == name) {
            // An interface output reading itself: the relation's result once, then the input.
            if (!get_stack_m.back().second && cell->term) {
                get_stack_m.back().second = true;
                scratch = cell->term();
                return scratch;
            }
            const cell_t& input = *cell->interface_input;
            set_bit(value_accessed_m, input.cell_position);
            accumulate_contributing_m |= input.contributing;
            return input.state;
        }

        {
            get_stack_scope_t entry(*this, *cell);
            if (cell->evaluated) {
                accumulate_contributing_m |= cell->contributing;
            } else {
                const cell_bits_t saved = accumulate_contributing_m;
                accumulate_contributing_m.reset();
                calculate(*cell);
                cell->contributing = accumulate_contributing_m;
                accumulate_contributing_m |= saved;
            }
            if (!cell->is_input_or_constant())
                cell->contributing |= conditional_contributing_m;
        }
        return cell->state;
    }

    /// The `member_read_token` and `path_read_token` operators: `x` followed by a path of literal
    /// keys, read in place so that a large cell is not copied whole to take one element of it.
    /// Anything but a plain walk through a cell's dictionaries and arrays goes to the machine,
    /// which gives the ordinary result or failure.
    any_regular_t read_member(const any_regular_t& x, const any_regular_t& key) {
        return read_member(x.cast<name_t>(), &key, &key + 1);
    }
    any_regular_t read_path(const any_regular_t& x, const any_regular_t& number) {
        const array_t& path = paths_m.at(static_cast<std::size_t>(number.cast<double>()));
        return read_member(x.cast<name_t>(), path.data(), path.data() + path.size());
    }

    any_regular_t read_member(name_t name, const any_regular_t* first, const any_regular_t* last) {
        if (!name_lookup_m.find(name) && !(initialize_mode_m && input_lookup_m.find(name))) {
            // Not a cell: the machine's own lookup decides what the name is.
            array_t stream{any_regular_t(name), any_regular_t(name_t(variable_token))};
            append_path(stream, first, last);
            return evaluate_here(stream);
        }
        any_regular_t scratch;
        const any_regular_t* value = &read(name, scratch);
        for (; first != last; ++first) {
            const any_regular_t& key = *first;
            const any_regular_t* next = nullptr;
            if (key.is<name_t>()) {
                if (value->is<dictionary_t>()) {
                    const dictionary_t& d = value->cast<dictionary_t>();
                    auto found = d.find(key.cast<name_t>());
                    if (found != d.end())
                        next = &found->second;
                }
            } else if (key.is<double>() && value->is<array_t>()) {
                const array_t& a = value->cast<array_t>();
                const double at = key.cast<double>();
                if (at >= 0 && at < static_cast<double>(a.size()))
                    next = &a[static_cast<std::size_t>(at)];
            }
            if (!next) {
                // The machine indexes what is left, with its own results and failures. The
                // value goes in wrapped in an array, so that no kind of value is taken for a
                // token.
                array_t stream{any_regular_t(array_t{*value}), any_regular_t(0.0),
                               any_regular_t(name_t(index_token))};
                append_path(stream, first, last);
                return evaluate_here(stream);
            }
            value = next;
        }
        return *value;
    }

    static void append_path(array_t& stream, const any_regular_t* first,
                            const any_regular_t* last) {
        for (; first != last; ++first) {
            stream.push_back(*first);
            stream.emplace_back(name_t(index_token));
        }
    }

    any_regular_t evaluate_here(const array_t& stream) {
        machine_m->evaluate(stream);
        any_regular_t result(std::move(machine_m->back()));
        machine_m->pop_back();
        return result;
    }

    void reinitialize() {
        initialize_scope_t mode(*this);
        for (cell_t* cell : output_index_m) {
            cell_t* input = cell->interface_input;
            if (input && (init_dirty_m & input->init_contributing).any())
                initialize(*input);
        }
        init_dirty_m.reset();
    }

    // Contributing sets

    cell_bits_t published_contributing() const {
        cell_bits_t bits;
        for (const cell_t* cell : output_index_m)
            if (cell->specifier ==
                (has_output_m ? specifier_t::output : specifier_t::interface_output))
                bits |= cell->contributing;
        return bits;
    }

    dictionary_t contributing_set(const dictionary_t& mark, const cell_bits_t& bits) const {
        dictionary_t changed;
        dictionary_t touched;
        bool any_new = false;
        for (std::size_t position = 0; position != cell_set_m.size(); ++position) {
            if (!bits.test(position))
                continue;
            const cell_t& cell = cell_set_m[position];
            auto found = mark.find(cell.name);
            if (found == mark.end()) {
                changed[cell.name] = cell.state;
                any_new = true;
            } else if (!(found->second == cell.state)) {
                changed[cell.name] = cell.state;
            } else if (priority_accessed_m.test(position)) {
                touched[cell.name] = cell.state;
            }
        }
        if (any_new)
            for (const auto& entry : touched)
                changed.insert(entry);
        return changed;
    }

    cell_t& monitorable_output(name_t name) const {
        cell_t* cell = find_cell(output_index_m, name);
        if (!cell)
            throw std::logic_error("Attempt to monitor nonexistent cell: " + quoted(name));
        return *cell;
    }

    cell_t& monitorable_input(name_t name) const {
        cell_t* cell = find_cell(input_index_m, name);
        if (!cell)
            throw std::logic_error("Attempt to monitor nonexistent cell: " + quoted(name));
        return *cell;
    }

    /// Whether a control of the input at `position` is enabled: the published cells depend on
    /// it, or it was read through a self-reference while one of the control's inputs was
    /// touched in the last round.
    bool enabled(std::size_t position, const cell_bits_t& touch_set) const {
        return active_m.test(position) ||
               (value_accessed_m.test(position) && (priority_accessed_m & touch_set).any());
    }
};

sheet_t::sheet_t() : object_m(std::make_unique<implementation_t>(machine_m)) {
    machine_m.set_variable_lookup([this](name_t name) { return get(name); });
    implementation_t* self = object_m.get();
    machine_m.set_operator_override(member_read_token,
                                    [self](const any_regular_t& x, const any_regular_t& key) {
                                        return self->read_member(x, key);
                                    });
    machine_m.set_operator_override(
        path_read_token,
        [self](const any_regular_t& x, const any_regular_t& n) { return self->read_path(x, n); });
}

sheet_t::~sheet_t() = default;

void sheet_t::add_constant(name_t name, const line_position_t& position,
                           const array_t& expression) {
    implementation_t::initialize_scope_t mode(*object_m);
    object_m->add_constant(name, object_m->evaluate(object_m->fuse(expression), position),
                           &position);
}

void sheet_t::add_constant(name_t name, const any_regular_t& value) {
    object_m->add_constant(name, value, nullptr);
}

void sheet_t::add_input(name_t name, const line_position_t& position, const array_t& expression) {
    object_m->add_input(name, position, expression);
}

void sheet_t::add_interface(name_t name, bool linked, const line_position_t& position_1,
                            const array_t& initializer, const line_position_t& position_2,
                            const array_t& expression) {
    object_m->add_interface(name, linked, position_1, initializer, position_2, expression);
}

void sheet_t::add_interface(name_t name, const any_regular_t& value) {
    object_m->add_interface(name, value);
}

void sheet_t::add_output(name_t name, const line_position_t& position, const array_t& expression) {
    cell_t& cell = object_m->add_calculated(specifier_t::output, name, position, expression);
    object_m->insert(object_m->output_index_m, cell, &position);
    object_m->has_output_m = true;
}

void sheet_t::add_logic(name_t name, const line_position_t& position, const array_t& expression) {
    object_m->add_calculated(specifier_t::logic, name, position, expression);
}

void sheet_t::add_invariant(name_t name, const line_position_t& position,
                            const array_t& expression) {
    cell_t& cell = object_m->add_calculated(specifier_t::invariant, name, position, expression);
    object_m->insert(object_m->output_index_m, cell, &position);
    object_m->invariant_list_m.push_back(&cell);
}

void sheet_t::add_relation(const line_position_t& position, const array_t& conditional,
                           const relation_t* first, const relation_t* last) {
    object_m->add_relation(position, conditional, first, last);
}

void sheet_t::set(name_t name, const any_regular_t& value) {
    object_m->set(name, value);
}

void sheet_t::set(const dictionary_t& values) {
    for (const auto& entry : values)
        object_m->set(entry.first, entry.second);
}

void sheet_t::touch(const name_t* first, const name_t* last) {
    object_m->touch(first, last);
}

void sheet_t::update() {
    object_m->update();
}

void sheet_t::reinitialize() {
    object_m->reinitialize();
}

any_regular_t sheet_t::get(name_t name) {
    return object_m->get(name);
}

bool sheet_t::has_input(name_t name) const {
    return find_cell(object_m->input_index_m, name) != nullptr;
}

bool sheet_t::has_output(name_t name) const {
    return find_cell(object_m->output_index_m, name) != nullptr;
}

bool sheet_t::has_relation(name_t name) const {
    const cell_t* cell = find_cell(object_m->output_index_m, name);
    return cell && cell->initial_relation_count != 0;
}

any_regular_t sheet_t::inspect(const array_t& expression) {
    if (expression.empty())
        return any_regular_t();
    machine_m.evaluate(expression);
    any_regular_t result(std::move(machine_m.back()));
    machine_m.pop_back();
    return result;
}

dictionary_t sheet_t::contributing() const {
    return contributing(dictionary_t());
}

dictionary_t sheet_t::contributing(const dictionary_t& mark) const {
    return object_m->contributing_set(mark, object_m->published_contributing());
}

dictionary_t sheet_t::contributing_to_cell(name_t name) const {
    const cell_t* cell = find_cell(object_m->output_index_m, name);
    if (!cell)
        throw std::logic_error("No monitorable cell: " + quoted(name));
    return object_m->contributing_set(dictionary_t(), cell->contributing);
}

sheet_t::connection_t sheet_t::monitor_value(name_t name, const monitor_value_t& proc) {
    cell_t& cell = object_m->monitorable_output(name);
    proc(cell.state);
    return cell.value_signal.connect(proc);
}

sheet_t::connection_t sheet_t::monitor_invariant_dependent(name_t name,
                                                           const monitor_invariant_t& proc) {
    cell_t& cell = object_m->monitorable_output(name);
    proc(cell.invariant);
    return cell.enabled_signal.connect(proc);
}

sheet_t::connection_t sheet_t::monitor_contributing(name_t name, const dictionary_t& mark,
                                                    const monitor_contributing_t& proc) {
    cell_t& cell = object_m->monitorable_output(name);
    proc(object_m->contributing_set(mark, cell.contributing));
    cell.contributing_monitored = true;
    implementation_t* self = object_m.get();
    return cell.contributing_signal.connect(
        [self, mark, proc](const cell_bits_t& bits) { proc(self->contributing_set(mark, bits)); });
}

sheet_t::connection_t sheet_t::monitor_enabled(name_t name, const name_t* first, const name_t* last,
                                               const monitor_enabled_t& proc) {
    const std::size_t position = object_m->monitorable_input(name).cell_position;
    cell_bits_t touch_set;
    for (; first != last; ++first)
        set_bit(touch_set, object_m->monitorable_input(*first).cell_position);

    proc(object_m->enabled(position, touch_set));

    implementation_t* self = object_m.get();
    // Runs before the sheet stores the new sets, so the fields still hold the last round's.
    return object_m->update_signal_m.connect(
        [self, touch_set, position, proc](const cell_bits_t& new_accessed,
                                          const cell_bits_t& new_active) {
            const cell_bits_t now = touch_set & new_accessed;
            const cell_bits_t before = touch_set & self->priority_accessed_m;
            if (now == before && self->active_m.test(position) == new_active.test(position))
                return;
            proc(new_active.test(position) || (self->value_accessed_m.test(position) && now.any()));
        });
}

} // namespace vorlen
