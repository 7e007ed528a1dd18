// qafui render EFFECT -o PNG [--scale 1|2] [--skin classic|v7] [--seconds S] [--input FILE]:
// draws an effect's editor in a headless window and writes it as a PNG. The reference effect
// runs on the reference host for S seconds of virtual time first, so that spectra and meters
// show live data; an effect without a reference is bound to a table of parameters shaped like
// the effect's.

#include "command.hpp"
#include "editor_options.hpp"
#include "headless_editor.hpp"

#include "framework/effect_catalogue.hpp"

#include <algorithm>
#include <cmath>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace qafui::cli {

namespace {

const char usage_text[] =
    "usage: qafui render EFFECT -o PNG [--scale 1|2] [--skin classic|v7] [--seconds S]\n"
    "                    [--input FILE] [--param I=V]... [--value I=X]... [--events FILE]\n"
    "\n"
    "Draws the editor of EFFECT (a name or class GUID of `qafui list`) in a headless\n"
    "window at its natural size and writes it to PNG. An effect of the reference host\n"
    "runs first for S seconds of virtual time on the test signal (or FILE), so its\n"
    "spectra and meters are live.\n"
    "\n"
    "options:\n"
    "  -o PNG         the file to write\n"
    "  --scale S      1 (the default) or 2\n"
    "  --skin LOOK    classic (the default) or v7\n"
    "  --seconds S    how long the effect runs before the picture, 0 to 600 (default 1)\n"
    "  --input FILE   an audio file to play in place of the test signal\n"
    "  --param I=V    sets parameter I (an index or a name) to the normalised value V\n"
    "                 (0 to 1) before the editor opens; may be repeated\n"
    "  --value I=X    the same with X in the parameter's own unit (--value 4=1000 for\n"
    "                 1000 Hz)\n"
    "  --events FILE  replays the events of FILE (one a line: click, drag, key, ...; see\n"
    "                 qafui describe --help) before the picture\n";

int run(const command_t& command, const std::vector<std::string>& arguments) {
    editor_options_t options;
    options.seconds = 1.0;
    const editor_option_rules_t rules{.output = "file", .events = true};
    if (const std::string error = read_editor_options(arguments, rules, options); !error.empty())
        return usage_error(command, error);
    const std::string& effectName = options.effect;
    if (effectName.empty())
        return usage_error(command, "no EFFECT given");
    if (options.output.empty())
        return usage_error(command, "no output file given (-o PNG)");
    const qoraudiofiltersui::EffectEntry* effect = find_effect_or_report("render", effectName);
    if (!effect)
        return 1;

    return with_headless_editor("render", *effect, options, [&](headless_editor_t& session) {
        session.window().RenderAll();
        session.window().WritePNG(options.output);
    });
}

const command_registration_t registration(command_t{
    "render", "draw an effect's editor headless into a PNG", usage_text, &run});

} // namespace

} // namespace qafui::cli
