// qafui: the command-line face of the library.

#include "command.hpp"

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

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
