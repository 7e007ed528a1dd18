#include "layout/layout_reader.hpp"

#include "core/expression/parser.hpp"
#include "sheet/sheet.hpp"

#include <cmath>
#include <istream>
#include <iterator>
#include <string>
#include <utility>

namespace vorlen {

namespace {

const char description_text[] = "layout description";

/// Blocks of widgets may nest this deep, counted across inserted layouts.
constexpr int max_nesting = 128;
/// `layout_script` may insert layouts this deep; a layout that inserts itself ends here.
constexpr int max_insertion = 16;

constexpr static_name_t keyword_layout = "layout"_name;
constexpr static_name_t keyword_constant = "constant"_name;
constexpr static_name_t keyword_interface = "interface"_name;
constexpr static_name_t keyword_view = "view"_name;
constexpr static_name_t keyword_unlink = "unlink"_name;

/// What a reader of an inserted layout inherits from the one that inserts it.
struct context_t {
    const layout_reader_options_t& options;
    /// Prepended to every `identifier` argument: "Band2_" inside `layout_script(identifier:
    /// 'Band', layoutId: 2)`.
    std::string identifier_prefix;
    int depth = 0;
    int insertions = 0;
};

/// The text of a string or name value; false for any other kind.
bool text_of(const any_regular_t& value, std::string& out) {
    if (value.is<std::string>()) {
        out = value.cast<std::string>();
        return true;
    }
    if (value.is<name_t>()) {
        out = value.cast<name_t>().c_str();
        return true;
    }
    return false;
}

/// The reader of one layout script. Cells go to the layout's sheet as they are read, so an
/// argument may use any cell above it; arguments are evaluated as they are read.
class layout_reader_t : public expression_parser_t {
public:
    layout_reader_t(std::string_view text, name_t file_name, context_t context)
        : expression_parser_t(text, file_name), context_m(std::move(context)),
          sheet_m(std::make_shared<sheet_t>()) {
        set_description(description_text);
        for (name_t keyword :
             {keyword_layout, keyword_constant, keyword_interface, keyword_view, keyword_unlink})
            lexer().add_keyword(keyword);
        if (context_m.options.prepare_sheet)
            context_m.options.prepare_sheet(*sheet_m);
    }

    layout_description_t read() {
        layout_description_t result;
        require_keyword(keyword_layout);
        require_identifier(result.name);
        require_token("{"_name);
        read_sections();
        if (!is_keyword(keyword_view))
            throw_expected("'constant:', 'interface:' or 'view'");
        result.view = read_widget(context_m.depth);
        result.view.sheet = sheet_m;
        require_token("}"_name);
        require_end();
        return result;
    }

private:
    void read_sections() {
        for (;;) {
            if (is_keyword(keyword_constant)) {
                require_token(":"_name);
                while (lexer().peek().kind == token_kind_t::identifier)
                    read_constant();
            } else if (is_keyword(keyword_interface)) {
                require_token(":"_name);
                while (lexer().peek().kind == token_kind_t::identifier ||
                       is_next_keyword(keyword_unlink))
                    read_interface();
            } else {
                return;
            }
        }
    }

    bool is_next_keyword(name_t keyword) {
        const lex_token_t& token = lexer().peek();
        return token.kind == token_kind_t::keyword && token.value.cast<name_t>() == keyword;
    }

    /// Runs a step of building or evaluating; its failure is reported at `position`.
    template <typename F>
    auto at(const line_position_t& position, F&& step) -> decltype(step()) {
        try {
            return step();
        } catch (const std::exception& error) {
            throw stream_error_t(error, position);
        }
    }

    // name: expression;
    void read_constant() {
        const line_position_t position = next_position();
        name_t name;
        require_identifier(name);
        require_token(":"_name);
        array_t expression;
        require_expression(expression);
        require_token(";"_name);
        at(position, [&] { sheet_m->add_constant(name, position, expression); });
    }

    // [unlink] name: initial;  [unlink] name <== expression;  [unlink] name: initial <== expr;
    void read_interface() {
        const bool linked = !is_keyword(keyword_unlink);
        const line_position_t position_1 = next_position();
        name_t name;
        if (!is_identifier(name))
            throw_expected("a cell name");
        array_t initializer;
        array_t expression;
        line_position_t position_2 = position_1;
        const bool has_initializer = is_token(":"_name);
        if (has_initializer)
            require_expression(initializer);
        const bool has_expression = is_token("<=="_name);
        if (has_expression) {
            position_2 = next_position();
            require_expression(expression);
        }
        if (!has_initializer && !has_expression)
            throw_expected("':' or '<=='");
        require_token(";"_name);
        at(position_1, [&] {
            sheet_m->add_interface(name, linked, position_1, initializer, position_2, expression);
        });
    }

    /// An argument's name: any word, even one that is a keyword of the layout's own sections.
    bool is_argument_name(name_t& out) {
        const lex_token_t& token = lexer().peek();
        if (token.kind != token_kind_t::identifier && token.kind != token_kind_t::keyword)
            return false;
        out = token.value.cast<name_t>();
        lexer().next();
        return true;
    }

    // name(arguments) followed by ';', by a block of widgets, or by nothing before a '}'.
    widget_description_t read_widget(int depth) {
        if (depth >= max_nesting)
            throw_error("layout nested too deeply (more than " + std::to_string(max_nesting) +
                        " levels)");
        widget_description_t widget;
        widget.position = next_position();
        if (!is_identifier(widget.name))
            throw_expected("a widget name");
        read_arguments(widget);

        if (is_token(";"_name)) {
            // a leaf
        } else if (is_token("{"_name)) {
            widget.has_block = true;
            while (!is_token("}"_name))
                widget.children.push_back(read_widget(depth + 1));
            is_token(";"_name);
        } else if (!is_next_punctuator("}"_name)) {
            // The last leaf of a block may go without its semicolon.
            throw_expected("';', '{' or '}'");
        }

        if (widget.name == "layout_script"_name)
            insert_layout(widget, depth);
        return widget;
    }

    bool is_next_punctuator(name_t text) {
        const lex_token_t& token = lexer().peek();
        return token.kind == token_kind_t::punctuator && token.value.cast<name_t>() == text;
    }

    void read_arguments(widget_description_t& widget) {
        require_token("("_name);
        line_position_t parameters_position;
        if (!is_token(")"_name)) {
            do {
                const line_position_t position = next_position();
                name_t key;
                if (!is_argument_name(key))
                    throw_expected("an argument name");
                require_token(":"_name);
                array_t expression;
                require_expression(expression);
                any_regular_t value = at(position, [&] { return sheet_m->inspect(expression); });
                if (key == "parameters"_name)
                    parameters_position = position;
                widget.arguments[key] = std::move(value);
            } while (is_token(","_name));
            require_token(")"_name);
        }
        merge_parameters(widget, parameters_position);
        rename_identifier(widget);
    }

    /// `parameters: {...}` stands for its keys written in the widget; those written there win.
    void merge_parameters(widget_description_t& widget, const line_position_t& position) {
        auto found = widget.arguments.find("parameters"_name);
        if (found == widget.arguments.end())
            return;
        if (!found->second.is<dictionary_t>())
            throw_error("'parameters' must be a dictionary of arguments", position);
        const dictionary_t parameters = found->second.cast<dictionary_t>();
        widget.arguments.erase("parameters"_name);
        for (const auto& entry : parameters)
            widget.arguments.insert(entry);
    }

    void rename_identifier(widget_description_t& widget) {
        if (context_m.identifier_prefix.empty() || widget.name == "layout_script"_name)
            return;
        auto found = widget.arguments.find("identifier"_name);
        if (found == widget.arguments.end())
            return;
        std::string text;
        if (!text_of(found->second, text))
            return;
        text = context_m.identifier_prefix + text;
        if (found->second.is<name_t>())
            found->second = name_t(text.c_str());
        else
            found->second = std::move(text);
    }

    // layout_script(identifier: 'Band', layoutId: 2): the view of layout "Band" becomes the
    // only child, its identifiers prefixed "Band2_".
    void insert_layout(widget_description_t& widget, int depth) {
        const line_position_t& position = widget.position;
        std::string identifier;
        auto found = widget.arguments.find("identifier"_name);
        if (found == widget.arguments.end() || !text_of(found->second, identifier))
            throw_error("layout_script needs an 'identifier' naming a layout", position);
        if (!widget.children.empty())
            throw_error("layout_script takes no children of its own", position);
        if (context_m.insertions >= max_insertion)
            throw_error("layout_script inserts layouts more than " + std::to_string(max_insertion) +
                            " deep",
                        position);
        if (!context_m.options.provider)
            throw_error("layout_script: no layouts to insert '" + identifier + "' from", position);
        const std::optional<layout_source_t> source = context_m.options.provider(identifier);
        if (!source)
            throw_error("layout_script: no layout named '" + identifier + "'", position);

        context_t inner{context_m.options, context_m.identifier_prefix, depth + 1,
                        context_m.insertions + 1};
        found = widget.arguments.find("layoutId"_name);
        if (found != widget.arguments.end()) {
            if (!found->second.is<double>() || !(std::fabs(found->second.cast<double>()) < 1e9))
                throw_error("layout_script: 'layoutId' must be a number", position);
            inner.identifier_prefix +=
                identifier +
                std::to_string(static_cast<long long>(std::trunc(found->second.cast<double>()))) +
                "_";
        }
        try {
            layout_description_t inserted =
                layout_reader_t(source->text, source->file_name, std::move(inner)).read();
            widget.children.push_back(std::move(inserted.view));
        } catch (const std::exception& error) {
            throw stream_error_t(error, position);
        }
    }

    context_t context_m;
    std::shared_ptr<sheet_t> sheet_m;
};

} // namespace

layout_description_t parse_layout_script(std::string_view text, name_t file_name,
                                         const layout_reader_options_t& options) {
    return layout_reader_t(text, file_name, context_t{options, std::string(), 0, 0}).read();
}

layout_description_t parse_layout_script(std::istream& stream, name_t file_name,
                                         const layout_reader_options_t& options) {
    const std::string text{std::istreambuf_iterator<char>(stream),
                           std::istreambuf_iterator<char>()};
    return parse_layout_script(text, file_name, options);
}

} // namespace vorlen
