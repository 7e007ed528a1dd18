// qafui: the command-line face of the library.

#include "command.hpp"

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

namespace qafui::cli {

namespace {

std::vector<command_t>& registry() {
    static std::vector<command_t> all;
    return all;
}

void print_usage(std::ostream& out) {
    out << "usage: qafui [--help] [--version] COMMAND [ARGS...]\n"
           "\n"
           "Lists, checks, evaluates, renders and opens the editors of the audio effects.\n"
           "\n"
           "options:\n"
           "  --help       show this text and exit\n"
           "  --version    show the version and exit\n";
    if (registry().empty())
        return;
    out << "\ncommands:\n";
    std::vector<command_t> sorted = registry();
    std::sort(sorted.begin(), sorted.end(),
              [](const command_t& a, const command_t& b) { return a.name < b.name; });
    for (const command_t& command : sorted) {
        std::string name = "  " + command.name;
        name.resize(std::max<std::size_t>(name.size() + 2, 15), ' ');
        out << name << command.summary << "\n";
    }
    out << "\nRun 'qafui COMMAND --help' for a command's options.\n";
}

} // namespace

command_registration_t::command_registration_t(command_t command) {
    registry().push_back(std::move(command));
}

const std::vector<command_t>& commands() {
    return registry();
}

int usage_error(const command_t& command, const std::string& message) {
    std::cerr << "qafui " << command.name << ": " << message << "\n" << command.usage;
    return 2;
}

} // namespace qafui::cli

int main(int argc, char** argv) {
    using namespace qafui::cli;
    if (argc < 2) {
        print_usage(std::cerr);
        return 2;
    }
    const std::string first = argv[1];
    if (first == "--help" || first == "-h" || first == "help") {
        print_usage(std::cout);
        return 0;
    }
    if (first == "--version") {
        std::cout << "qafui " << QAFUI_VERSION << "\n";
        return 0;
    }
    for (const command_t& command : commands()) {
        if (command.name != first)
            continue;
        std::vector<std::string> arguments(argv + 2, argv + argc);
        if (std::find(arguments.begin(), arguments.end(), "--help") != arguments.end()) {
            std::cout << command.usage;
            return 0;
        }
        try {
            return command.run(command, arguments);
        } catch (const std::exception& error) {
            std::cerr << "qafui " << command.name << ": " << error.what() << "\n";
            return 1;
        }
    }
    std::cerr << "qafui: unknown command '" << first << "' (see qafui --help)\n";
    return 2;
}
