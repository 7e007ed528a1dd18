#include "sheet/sheet_reader.hpp"

#include "core/expression/parser.hpp"

#include <istream>
#include <iterator>
#include <string>
#include <vector>

namespace vorlen {

namespace {

const char description_text[] = "property model description";

enum class section_t { none, constant, input, interface, logic, output, invariant };

/// The reader of one script. Statements are read one at a time and handed to the sheet at once,
/// so a later statement may use what an earlier one made, and an error stops at the first
/// faulty statement.
class sheet_reader_t : public expression_parser_t {
public:
    sheet_reader_t(std::string_view text, name_t file_name, sheet_t& sheet)
        : expression_parser_t(text, file_name), sheet_m(sheet) {
        set_description(description_text);
        for (name_t keyword :
             {keyword_sheet, keyword_constant, keyword_input, keyword_interface, keyword_logic,
              keyword_output, keyword_invariant, keyword_unlink, keyword_when, keyword_relate})
            lexer().add_keyword(keyword);
    }

    void read() {
        try {
            read_script();
        } catch (const stream_error_t& error) {
            // Failures of the sheet keep their own fixed texts; the token reader's get the name
            // of the text they were found in, like the rest of the parser's.
            const std::string message = error.what();
            if (building_m || message.rfind(description_text, 0) == 0 ||
                error.line_position_set().empty())
                throw;
            throw stream_error_t(std::string(description_text) + ": " + message,
                                 error.line_position_set().front());
        }
    }

private:
    static constexpr static_name_t keyword_sheet = "sheet"_name;
    static constexpr static_name_t keyword_constant = "constant"_name;
    static constexpr static_name_t keyword_input = "input"_name;
    static constexpr static_name_t keyword_interface = "interface"_name;
    static constexpr static_name_t keyword_logic = "logic"_name;
    static constexpr static_name_t keyword_output = "output"_name;
    static constexpr static_name_t keyword_invariant = "invariant"_name;
    static constexpr static_name_t keyword_unlink = "unlink"_name;
    static constexpr static_name_t keyword_when = "when"_name;
    static constexpr static_name_t keyword_relate = "relate"_name;

    void read_script() {
        require_keyword(keyword_sheet);
        name_t name; // names the model for its author; nothing reads it
        require_identifier(name);
        require_token("{"_name);
        section_t section = section_t::none;
        while (!is_token("}"_name)) {
            if (is_section(section))
                continue;
            switch (section) {
            case section_t::none: throw_expected("a section such as 'interface:'");
            case section_t::constant: read_constant(); break;
            case section_t::input: read_input(); break;
            case section_t::interface: read_interface(); break;
            case section_t::logic: read_logic(); break;
            case section_t::output:
            case section_t::invariant: read_output(section); break;
            }
        }
        require_end();
    }

    bool is_section(section_t& section) {
        static const std::pair<static_name_t, section_t> sections[] = {
            {keyword_constant, section_t::constant},   {keyword_input, section_t::input},
            {keyword_interface, section_t::interface}, {keyword_logic, section_t::logic},
            {keyword_output, section_t::output},       {keyword_invariant, section_t::invariant}};
        for (const auto& [keyword, kind] : sections) {
            if (!is_keyword(keyword))
                continue;
            require_token(":"_name);
            section = kind;
            return true;
        }
        return false;
    }

    /// The name that starts a cell, and where it stands.
    line_position_t require_cell_name(name_t& name) {
        line_position_t position = next_position();
        if (!is_identifier(name))
            throw_expected("a cell name");
        return position;
    }

    /// Hands a statement to the sheet. Its failures are reported at the statement.
    template <typename F>
    void build(const line_position_t& position, F&& add) {
        building_m = true;
        try {
            add();
        } catch (const stream_error_t&) {
            throw;
        } catch (const std::exception& error) {
            throw stream_error_t(error, position);
        }
        building_m = false;
    }

    // name: expression;
    void read_constant() {
        name_t name;
        const line_position_t position = require_cell_name(name);
        require_token(":"_name);
        array_t expression;
        require_expression(expression);
        require_token(";"_name);
        build(position, [&] { sheet_m.add_constant(name, position, expression); });
    }

    // name: expression;  or  name;  (an input that starts empty)
    void read_input() {
        name_t name;
        const line_position_t position = require_cell_name(name);
        array_t expression;
        if (is_token(":"_name))
            require_expression(expression);
        require_token(";"_name);
        build(position, [&] { sheet_m.add_input(name, position, expression); });
    }

    // [unlink] name: initial;  [unlink] name <== expression;  [unlink] name: initial <== expr;
    void read_interface() {
        const bool linked = !is_keyword(keyword_unlink);
        name_t name;
        const line_position_t position_1 = require_cell_name(name);
        array_t initializer;
        array_t expression;
        line_position_t position_2 = position_1;
        bool any = false;
        if (is_token(":"_name)) {
            require_expression(initializer);
            any = true;
        }
        if (is_token("<=="_name)) {
            position_2 = next_position();
            require_expression(expression);
            any = true;
        }
        if (!any)
            throw_expected("':' or '<=='");
        require_token(";"_name);
        build(position_1, [&] {
            sheet_m.add_interface(name, linked, position_1, initializer, position_2, expression);
        });
    }

    // name <== expression;
    void read_output(section_t section) {
        name_t name;
        const line_position_t position = require_cell_name(name);
        require_token("<=="_name);
        array_t expression;
        require_expression(expression);
        require_token(";"_name);
        build(position, [&] {
            if (section == section_t::output)
                sheet_m.add_output(name, position, expression);
            else
                sheet_m.add_invariant(name, position, expression);
        });
    }

    // [when (condition)] relate { target <== expression; ... }  or a logic cell: name <== e;
    void read_logic() {
        const line_position_t position = next_position();
        array_t conditional;
        if (is_keyword(keyword_when)) {
            require_token("("_name);
            require_expression(conditional);
            require_token(")"_name);
            require_keyword(keyword_relate);
        } else if (!is_keyword(keyword_relate)) {
            name_t name;
            if (!is_identifier(name))
                throw_expected("'when', 'relate' or a cell name");
            require_token("<=="_name);
            array_t expression;
            require_expression(expression);
            require_token(";"_name);
            build(position, [&] { sheet_m.add_logic(name, position, expression); });
            return;
        }

        require_token("{"_name);
        std::vector<sheet_t::relation_t> terms;
        while (!is_token("}"_name)) {
            sheet_t::relation_t term;
            term.position = next_position();
            name_t target;
            if (!is_identifier(target))
                throw_expected("a cell name, 'null' or '}'");
            // `null` names the other side of a relation without writing any cell.
            if (target != "null"_name)
                term.name_set.push_back(target);
            require_token("<=="_name);
            require_expression(term.expression);
            require_token(";"_name);
            terms.push_back(std::move(term));
        }
        if (terms.size() < 2)
            throw_error("a relate clause needs at least two terms", position);
        is_token(";"_name);
        build(position, [&] {
            sheet_m.add_relation(position, conditional, terms.data(), terms.data() + terms.size());
        });
    }

    sheet_t& sheet_m;
    bool building_m = false;
};

} // namespace

void parse_sheet_script(std::string_view text, name_t file_name, sheet_t& sheet) {
    sheet_reader_t(text, file_name, sheet).read();
}

void parse_sheet_script(std::istream& stream, name_t file_name, sheet_t& sheet) {
    const std::string text{std::istreambuf_iterator<char>(stream),
                           std::istreambuf_iterator<char>()};
    parse_sheet_script(text, file_name, sheet);
}

} // namespace vorlen
