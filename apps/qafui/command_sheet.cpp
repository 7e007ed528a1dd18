// qafui sheet FILE [--set NAME=EXPR]... [--touch NAME,NAME...] [--reinitialize] [--update]
//                  [--get NAME]... [--monitor NAME]...
// Builds a sheet from a script and runs rounds on it, step by step, as an editor would.

#include "command.hpp"
#include "script_files.hpp"

#include "core/any_regular.hpp"
#include "core/expression/parser.hpp"
#include "core/expression_value_format.hpp"
#include "core/stream_error.hpp"
#include "sheet/sheet.hpp"
#include "sheet/sheet_reader.hpp"

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace qafui::cli {

namespace {

const char usage_text[] =
    "usage: qafui sheet FILE [--set NAME=EXPR]... [--touch NAME,NAME...] [--reinitialize]\n"
    "                        [--update] [--get NAME]... [--monitor NAME]...\n"
    "\n"
    "Reads the sheet script FILE, builds the sheet and applies the steps in the order given.\n"
    "\n"
    "steps:\n"
    "  --set NAME=EXPR   set input NAME to the value of EXPR, which may read the sheet's cells\n"
    "  --touch A,B,...   raise the priority of the named inputs, keeping their order\n"
    "  --reinitialize    rerun the initial values that depend on inputs set since the last time\n"
    "  --update          solve the relations, calculate, and call the monitors\n"
    "  --get NAME        print 'NAME = value'\n"
    "  --monitor NAME    from now on print each call of NAME's monitors, starting with the\n"
    "                    call made on connecting: 'monitor_value NAME = value' and\n"
    "                    'monitor_invariant_dependent NAME = bool' for a cell that can be read\n"
    "                    from outside, 'monitor_enabled NAME = bool' for an input (a control\n"
    "                    that touches only NAME); an interface cell gets all three\n"
    "\n"
    "Values print as expression text, such as 0.5, \"text\", @name, [1, 2] or {a: true}.\n"
    "Errors go to standard error as FILE:LINE:COLUMN: message, with exit status 1.\n";

std::string expression_text(const vorlen::any_regular_t& value) {
    std::ostringstream out;
    vorlen::expression_value_format_t format;
    vorlen::format_scope_t scope(out, format);
    out << value;
    return out.str();
}

enum class step_kind_t { set, touch, reinitialize, update, get, monitor };

struct step_t {
    step_kind_t kind;
    std::string name;  // or the list of names for touch
    std::string value; // the expression of set
};

std::vector<vorlen::name_t> split_names(const std::string& list) {
    std::vector<vorlen::name_t> names;
    std::size_t start = 0;
    while (start <= list.size()) {
        const std::size_t comma = std::min(list.find(',', start), list.size());
        if (comma > start)
            names.emplace_back(list.substr(start, comma - start).c_str());
        start = comma + 1;
    }
    return names;
}

void run_step(const step_t& step, vorlen::sheet_t& sheet,
              std::vector<vorlen::sheet_t::connection_t>& connections) {
    using vorlen::name_t;
    const name_t name(step.name.c_str());
    switch (step.kind) {
    case step_kind_t::set: {
        const vorlen::array_t expression =
            vorlen::parse_expression(step.value, name_t(("--set " + step.name).c_str()));
        sheet.set(name, sheet.inspect(expression));
        break;
    }
    case step_kind_t::touch: {
        const std::vector<name_t> names = split_names(step.name);
        sheet.touch(names.data(), names.data() + names.size());
        break;
    }
    case step_kind_t::reinitialize: sheet.reinitialize(); break;
    case step_kind_t::update: sheet.update(); break;
    case step_kind_t::get: {
        const std::string text = expression_text(sheet.get(name)); // nothing printed on failure
        std::cout << step.name << " = " << text << "\n";
        break;
    }
    case step_kind_t::monitor: {
        const std::string text = step.name;
        const bool output = sheet.has_output(name);
        const bool input = sheet.has_input(name);
        if (!output && !input)
            throw std::logic_error("Attempt to monitor nonexistent cell: " + text);
        if (output) {
            connections.push_back(sheet.monitor_value(name, [text](const vorlen::any_regular_t& v) {
                std::cout << "monitor_value " << text << " = " << expression_text(v) << "\n";
            }));
            connections.push_back(sheet.monitor_invariant_dependent(name, [text](bool v) {
                std::cout << "monitor_invariant_dependent " << text << " = "
                          << (v ? "true" : "false") << "\n";
            }));
        }
        if (input)
            connections.push_back(sheet.monitor_enabled(name, &name, &name + 1, [text](bool v) {
                std::cout << "monitor_enabled " << text << " = " << (v ? "true" : "false") << "\n";
            }));
        break;
    }
    }
}

int run(const command_t& command, const std::vector<std::string>& arguments) {
    std::string file;
    std::vector<step_t> steps;
    for (std::size_t i = 0; i != arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        // The argument of an option, or null when the option ends the line.
        auto value = [&]() -> const std::string* {
            return i + 1 == arguments.size() ? nullptr : &arguments[++i];
        };
        if (argument == "--reinitialize") {
            steps.push_back({step_kind_t::reinitialize, {}, {}});
        } else if (argument == "--update") {
            steps.push_back({step_kind_t::update, {}, {}});
        } else if (argument == "--set") {
            const std::string* definition = value();
            if (!definition)
                return usage_error(command, "--set needs NAME=EXPR");
            const std::size_t equal = definition->find('=');
            if (equal == std::string::npos || equal == 0)
                return usage_error(command, "--set '" + *definition + "' is not NAME=EXPR");
            steps.push_back(
                {step_kind_t::set, definition->substr(0, equal), definition->substr(equal + 1)});
        } else if (argument == "--touch" || argument == "--get" || argument == "--monitor") {
            const std::string* names = value();
            if (!names || names->empty())
                return usage_error(command, argument + " needs a name");
            const step_kind_t kind = argument == "--touch" ? step_kind_t::touch
                                     : argument == "--get" ? step_kind_t::get
                                                           : step_kind_t::monitor;
            steps.push_back({kind, *names, {}});
        } else if (argument.size() > 1 && argument[0] == '-') {
            return usage_error(command, "unknown option '" + argument + "'");
        } else if (file.empty()) {
            file = argument;
        } else {
            return usage_error(command, "only one FILE may be given");
        }
    }
    if (file.empty())
        return usage_error(command, "no FILE given");

    const std::optional<std::string> text = read_file(file);
    if (!text) {
        std::cerr << "qafui sheet: " << file << ": " << read_failure(file) << "\n";
        return 1;
    }
    try {
        vorlen::sheet_t sheet;
        std::istringstream stream(*text);
        vorlen::parse_sheet_script(stream, vorlen::name_t(file.c_str()), sheet);
        std::vector<vorlen::sheet_t::connection_t> connections;
        for (const step_t& step : steps)
            run_step(step, sheet, connections);
    } catch (const std::exception& error) {
        std::cout.flush();
        std::cerr << "qafui sheet: " << vorlen::format_stream_error(error) << "\n";
        return 1;
    }
    return 0;
}

const command_registration_t registration(command_t{
    "sheet", "build a sheet from a script and run set, touch, update and get on it", usage_text,
    &run});

} // namespace

} // namespace qafui::cli
