// qafui describe EFFECT [--skin classic|v7] [--scale 1|2] [--param I=V]... [--value I=X]...
// [--events FILE] [--seconds S] [--input FILE] [--json]: opens an effect's editor headless,
// plays what it is asked to, and prints what a person would see in it and the effect's
// parameters, so that an editor can be checked without reading pixels.

#include "command.hpp"
#include "editor_options.hpp"
#include "headless_editor.hpp"
#include "node_description.hpp"

#include "framework/effect_catalogue.hpp"

#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace qafui::cli {

namespace {

const char usage_text[] =
    "usage: qafui describe EFFECT [--skin classic|v7] [--scale 1|2] [--param I=V]...\n"
    "                      [--value I=X]... [--events FILE] [--seconds S] [--input FILE]\n"
    "                      [--json]\n"
    "\n"
    "Opens the editor of EFFECT headless, live on the reference effect where one exists,\n"
    "sets the parameters, replays the events, runs S seconds of audio (default 0), and\n"
    "prints its node tree and the effect's parameters. Each node: its class, #identifier,\n"
    "[x y width height] in the editor's coordinates, hidden and disabled when so, the\n"
    "text a person reads, the value of a control and its tool tip. Each parameter: index,\n"
    "name, normalised value and plain value with its unit.\n"
    "\n"
    "options:\n"
    "  --skin LOOK    classic (the default) or v7\n"
    "  --scale S      1 (the default) or 2\n"
    "  --param I=V    sets parameter I (an index or a name) to the normalised value V\n"
    "                 (0 to 1) before the editor opens; may be repeated\n"
    "  --value I=X    the same with X in the parameter's own unit (--value 4=1000)\n"
    "  --events FILE  replays the events of FILE through the editor\n"
    "  --seconds S    how long the effect runs after the events, 0 to 600\n"
    "  --input FILE   an audio file to play in place of the test signal\n"
    "  --json         prints one JSON document: effect, size, nodes, parameters\n"
    "\n"
    "Event scripts hold one event a line; # starts a comment:\n"
    "  click TARGET, double-click TARGET, right-click TARGET\n"
    "  drag TARGET to TARGET [steps N]     presses, moves in N steps (10), releases\n"
    "  wheel TARGET N                      N notches, away from the user when positive\n"
    "  key NAME                            Return, Escape, Tab, Space, Left, PageUp, a, 7,\n"
    "                                      F1, ...\n"
    "  type TEXT                           the rest of the line, as typed text\n"
    "  wait SECONDS                        lets the clock (and the audio) run\n"
    "  answer N                            answers a menu with its N-th item or a dialog\n"
    "                                      with its N-th button (0 cancels): the next one\n"
    "                                      to open, or, written after the event that opens\n"
    "                                      it, the one open once the lines between have run\n"
    "TARGET is a node's identifier (the centre of its frame) or X,Y in the editor.\n"
    "shift+, ctrl+ and alt+ before a verb or a key name hold those keys.\n";

int run(const command_t& command, const std::vector<std::string>& arguments) {
    std::vector<std::string> rest;
    bool json = false;
    for (const std::string& argument : arguments) {
        if (argument == "--json")
            json = true;
        else
            rest.push_back(argument);
    }
    editor_options_t options;
    const editor_option_rules_t rules{.events = true};
    if (const std::string error = read_editor_options(rest, rules, options); !error.empty())
        return usage_error(command, error);
    if (options.effect.empty())
        return usage_error(command, "no EFFECT given");
    const qoraudiofiltersui::EffectEntry* effect =
        find_effect_or_report("describe", options.effect);
    if (!effect)
        return 1;

    return with_headless_editor("describe", *effect, options, [&](headless_editor_t& session) {
        const editor_description_t description =
            describe_editor(effect->name, *session.editor().view(), *session.editor().filter());
        if (json)
            std::cout << description_json(description);
        else
            write_description_text(std::cout, description);
    });
}

const command_registration_t registration(command_t{
    "describe", "print an editor's nodes and the effect's parameters, after events", usage_text,
    &run});

} // namespace

} // namespace qafui::cli
