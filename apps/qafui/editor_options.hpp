#pragma once

// The options that render, open and gallery share, read in one place so that they mean the
// same in every command.

#include "parameter_options.hpp"

#include "platform/skins/skins.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace qafui::cli {

/// Which options a command takes, and the range of its --seconds.
struct editor_option_rules_t {
    bool effect = true;               ///< one positional EFFECT
    const char* output = "";          ///< what -o names ("file", "folder"); "" when -o is not taken
    const char* output_option = "-o"; ///< the option that names the output ("-o", "--output")
    bool input = true;                ///< --input FILE
    bool skin = true;                 ///< --skin classic|v7
    double min_seconds = 0.0;         ///< --seconds from here ...
    double max_seconds = 600.0;       ///< ... to here
    bool zero_seconds = true;         ///< whether --seconds 0 is allowed
    bool parameters = true;           ///< --param I=V and --value I=X
    bool events = false;              ///< --events FILE
    bool scale = true;                ///< --scale 1|2
    bool block = false;               ///< --block N, frames per block from 1 to 65536
};

struct editor_options_t {
    std::string effect;
    std::string output;
    std::string input;
    float scale = 1.0f;
    qorui::skins::Skin skin = qorui::skins::Skin::kClassic;
    double seconds = 0.0; ///< keeps what the caller put there when --seconds is absent
    std::vector<parameter_assignment_t> parameters;
    std::string events;
    std::size_t block = 512;
};

/// Reads `arguments` into `options` by `rules`; the usage error to report, or "" when they are
/// fine. Checks only the form: what a command requires (an EFFECT, -o) is its own to check.
std::string read_editor_options(const std::vector<std::string>& arguments,
                                const editor_option_rules_t& rules, editor_options_t& options);

} // namespace qafui::cli
