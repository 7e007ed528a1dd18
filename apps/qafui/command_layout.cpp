// qafui layout FILE [--width W] [--height H] [--guides]: solves a layout script with every widget a
// box of its `width` and `height` arguments and prints the report of the placed tree.

#include "command.hpp"
#include "script_files.hpp"

#include "core/expression/virtual_machine.hpp"
#include "core/stream_error.hpp"
#include "layout/box_layout.hpp"
#include "layout/layout_reader.hpp"

#include <cctype>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace qafui::cli {

namespace {

const char usage_text[] =
    "usage: qafui layout FILE [--width W] [--height H] [--guides]\n"
    "\n"
    "Reads a layout script (.tss), makes every widget a box whose natural size is its\n"
    "`width` and `height` arguments (0 when absent), solves the layout and prints the\n"
    "placed tree, one widget a line.\n"
    "\n"
    "options:\n"
    "  --width W    solve for a root width of W pixels (0, the default: the natural width)\n"
    "  --height H   solve for a root height of H pixels (0, the default: the natural height)\n"
    "  --guides     adds to each line the guides (label edges) and baselines the widget\n"
    "               exports once placed, as offsets from its near edge\n"
    "\n"
    "`layout_script` inserts the file IDENTIFIER.tss found next to FILE (also in upper or\n"
    "lower case). A widget's `guides` and `baselines` arguments (arrays of offsets from\n"
    "its left or top edge) give its box guides to align by.\n";

bool read_length(const std::string& text, std::int32_t& out) {
    const char* end = text.data() + text.size();
    auto [ptr, error] = std::from_chars(text.data(), end, out);
    return error == std::errc() && ptr == end && out >= 0;
}

int run(const command_t& command, const std::vector<std::string>& arguments) {
    std::string file;
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool guides = false;
    for (std::size_t i = 0; i != arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--guides") {
            guides = true;
        } else if (argument == "--width" || argument == "--height") {
            if (i + 1 == arguments.size())
                return usage_error(command, argument + " needs a number");
            if (!read_length(arguments[++i], argument == "--width" ? width : height))
                return usage_error(command,
                                   argument + ": '" + arguments[i] + "' is not a length in pixels");
        } else if (!argument.empty() && argument[0] == '-') {
            return usage_error(command, "unknown option '" + argument + "'");
        } else if (file.empty()) {
            file = argument;
        } else {
            return usage_error(command, "one FILE only");
        }
    }
    if (file.empty())
        return usage_error(command, "no FILE given");

    const std::optional<std::string> text = read_file(file);
    if (!text) {
        std::cerr << "qafui layout: " << file << ": " << read_failure(file) << "\n";
        return 1;
    }

    const vorlen::layout_reader_options_t options = layout_file_options(file);

    try {
        const vorlen::layout_description_t description =
            vorlen::parse_layout_script(*text, vorlen::name_t(file.c_str()), options);
        vorlen::box_layout_t layout(description.view);
        layout.solve(width, height);
        std::cout << layout.report(guides);
    } catch (const std::exception& error) {
        std::cerr << "qafui layout: " << vorlen::format_stream_error(error) << "\n";
        return 1;
    }
    return 0;
}

const command_registration_t registration(command_t{
    "layout", "solve a layout script as boxes and print the placed tree", usage_text, &run});

} // namespace

} // namespace qafui::cli
