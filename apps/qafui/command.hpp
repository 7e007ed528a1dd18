#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace qafui::cli {

/// One subcommand of the program: `qafui NAME ARGS...`. Each lives in a file of its own and
/// registers itself with a static `command_registration_t`, so adding one touches no other file.
struct command_t {
    std::string name;
    std::string summary; // one line for --help
    std::string usage;   // the full usage text, shown by `qafui NAME --help`
    std::function<int(const command_t& self, const std::vector<std::string>& arguments)> run;
};

struct command_registration_t {
    explicit command_registration_t(command_t command);
};

const std::vector<command_t>& commands();

/// The program's own usage with the list of commands.
void print_usage(std::ostream& out);

/// Reports a usage error for `command` and returns the exit status for it.
int usage_error(const command_t& command, const std::string& message);

} // namespace qafui::cli
