// qafui eval EXPR [--tokens] [--format] [--one-line] [--var NAME=EXPR]... [--step-limit N]:
// parses an expression, evaluates it with the virtual machine and prints the result as
// expression text; or shows its token stream or its formatted text.

#include "command.hpp"

#include "core/any_regular.hpp"
#include "core/expression/expression_formatter.hpp"
#include "core/expression/parser.hpp"
#include "core/expression/virtual_machine.hpp"
#include "core/expression_value_format.hpp"
#include "core/stream_error.hpp"

#include <cctype>
#include <charconv>
#include <cstdint>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace qafui::cli {

namespace {

const char usage_text[] =
    "usage: qafui eval EXPR [--tokens] [--format [--one-line]] [--var NAME=EXPR]...\n"
    "                       [--step-limit N]\n"
    "\n"
    "Parses EXPR in the expression language of the sheet and layout scripts, evaluates it and\n"
    "prints the result as expression text, such as 3, \"text\", @name, [1, 2] or {a: true}.\n"
    "\n"
    "options:\n"
    "  --tokens          print the postfix token stream instead of the result\n"
    "  --format          print the stream formatted back to text instead of the result\n"
    "                    (with --tokens too: the stream first, then the text)\n"
    "  --one-line        format in the one-line mode\n"
    "  --var NAME=EXPR   give variable NAME the value of EXPR; repeatable, and each EXPR may use\n"
    "                    the variables defined before it. Without --var no variable lookup is\n"
    "                    installed and a variable is an error.\n"
    "  --step-limit N    refuse to run more than N tokens (default 1000000; 0: no limit)\n"
    "\n"
    "Errors go to standard error with exit status 1; a syntax error gives line:column.\n"
    "A localisable text \"$$$/key=Default\" passed to localize() gives its default.\n";

std::string expression_text(const vorlen::any_regular_t& value) {
    std::ostringstream out;
    vorlen::expression_value_format_t format;
    vorlen::format_scope_t scope(out, format);
    out << value;
    return out.str();
}

bool is_identifier(const std::string& text) {
    if (text.empty() || std::isdigit(static_cast<unsigned char>(text[0])))
        return false;
    for (char c : text)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_')
            return false;
    return true;
}

struct options_t {
    std::string expression;
    bool has_expression = false;
    bool tokens = false;
    bool format = false;
    bool one_line = false;
    std::uint64_t step_limit = 1'000'000;
    std::vector<std::pair<std::string, std::string>> variables; // name, expression text
};

/// The variables defined so far, and the machine that evaluates with them.
class evaluator_t {
public:
    explicit evaluator_t(std::uint64_t step_limit) { machine_m.set_step_limit(step_limit); }

    vorlen::any_regular_t evaluate(const vorlen::array_t& stream) {
        machine_m.evaluate(stream);
        if (machine_m.size() != 1)
            throw std::runtime_error("the expression left " + std::to_string(machine_m.size()) +
                                     " values instead of one");
        vorlen::any_regular_t result = machine_m.back();
        machine_m.pop_back();
        return result;
    }

    void define(const std::string& name, vorlen::any_regular_t value) {
        if (variables_m.empty())
            machine_m.set_variable_lookup([this](vorlen::name_t variable) {
                auto found = variables_m.find(variable);
                if (found == variables_m.end())
                    throw std::logic_error(std::string("variable '") + variable.c_str() +
                                           "' not defined.");
                return found->second;
            });
        variables_m[vorlen::name_t(name.c_str())] = std::move(value);
    }

private:
    vorlen::virtual_machine_t machine_m;
    vorlen::dictionary_t variables_m;
};

int run(const command_t& command, const std::vector<std::string>& arguments) {
    options_t options;
    for (std::size_t i = 0; i != arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--tokens") {
            options.tokens = true;
        } else if (argument == "--format") {
            options.format = true;
        } else if (argument == "--one-line") {
            options.one_line = true;
        } else if (argument == "--var") {
            if (i + 1 == arguments.size())
                return usage_error(command, "--var needs NAME=EXPR");
            const std::string& definition = arguments[++i];
            const std::size_t equal = definition.find('=');
            if (equal == std::string::npos)
                return usage_error(command, "--var '" + definition + "' is not NAME=EXPR");
            const std::string name = definition.substr(0, equal);
            if (!is_identifier(name))
                return usage_error(command, "--var: '" + name + "' is not a name");
            options.variables.emplace_back(name, definition.substr(equal + 1));
        } else if (argument == "--step-limit") {
            if (i + 1 == arguments.size())
                return usage_error(command, "--step-limit needs N");
            const std::string& text = arguments[++i];
            const char* end = text.data() + text.size();
            auto [ptr, error] = std::from_chars(text.data(), end, options.step_limit);
            if (error != std::errc() || ptr != end)
                return usage_error(command, "--step-limit: '" + text + "' is not a count");
        } else if (argument.size() > 1 && argument[0] == '-' && argument[1] == '-') {
            return usage_error(command, "unknown option '" + argument + "'");
        } else if (!options.has_expression) {
            // A lone "-" or a text such as "-1" is an expression, not an option.
            options.expression = argument;
            options.has_expression = true;
        } else {
            return usage_error(command, "one EXPR only (quote it)");
        }
    }
    if (!options.has_expression)
        return usage_error(command, "no EXPR given");

    // Without the editor's tables a localisable text shows its default, the part after '='.
    if (!vorlen::localization_ready())
        vorlen::set_localization_proc([](const std::string& key) {
            const std::size_t equal = key.find('=');
            return key.rfind("$$$/", 0) == 0 && equal != std::string::npos ? key.substr(equal + 1)
                                                                           : key;
        });

    try {
        const vorlen::array_t stream = vorlen::parse_expression(options.expression);
        if (options.tokens || options.format) {
            if (options.tokens)
                std::cout << expression_text(vorlen::any_regular_t(stream)) << "\n";
            if (options.format)
                std::cout << vorlen::format_expression(stream, 0, options.one_line) << "\n";
            return 0;
        }
        evaluator_t evaluator(options.step_limit);
        for (const auto& [name, text] : options.variables) {
            const vorlen::array_t definition =
                vorlen::parse_expression(text, vorlen::name_t(("--var " + name).c_str()));
            evaluator.define(name, evaluator.evaluate(definition));
        }
        std::cout << expression_text(evaluator.evaluate(stream)) << "\n";
    } catch (const std::exception& error) {
        std::cerr << "qafui eval: " << vorlen::format_stream_error(error) << "\n";
        return 1;
    }
    return 0;
}

const command_registration_t registration(command_t{
    "eval", "evaluate an expression and print the result (or its tokens, or its text)", usage_text,
    &run});

} // namespace

} // namespace qafui::cli
