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

} // namespace

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
