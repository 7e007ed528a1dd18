// qafui render EFFECT -o PNG [--scale 1|2] [--skin classic|v7] [--seconds S] [--input FILE]:
// draws an effect's editor in a headless window and writes it as a PNG. The reference effect
// runs on the reference host for S seconds of virtual time first, so that spectra and meters
// show live data; an effect without a reference is bound to a table of parameters shaped like
// the effect's.

#include "command.hpp"
#include "editor_options.hpp"
#include "live_editor.hpp"

#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/skins.hpp"

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
    "                    [--input FILE]\n"
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
    "  --input FILE   an audio file to play in place of the test signal\n";

int run(const command_t& command, const std::vector<std::string>& arguments) {
    editor_options_t options;
    options.seconds = 1.0;
    const editor_option_rules_t rules{.output = "file"};
    if (const std::string error = read_editor_options(arguments, rules, options); !error.empty())
        return usage_error(command, error);
    const std::string& effectName = options.effect;
    const std::string& output = options.output;
    const std::string& input = options.input;
    const float scale = options.scale;
    const double seconds = options.seconds;
    const auto skin = options.skin;
    if (effectName.empty())
        return usage_error(command, "no EFFECT given");
    if (output.empty())
        return usage_error(command, "no output file given (-o PNG)");
    const qoraudiofiltersui::EffectEntry* effect = qoraudiofiltersui::FindEffect(effectName);
    if (!effect) {
        std::cerr << "qafui render: no effect '" << effectName << "' (see qafui list)\n";
        return 1;
    }

    const qorui::skins::ScopedSkin look(skin);
    const qorui::penrig::CairoSupplier supplier(scale);
    qoraudiofiltersui::Initialize(&supplier);
    int status = 0;
    try {
        live_editor_t editor(*effect, qafhost::ProcessHost::Clock::kVirtual, input);
        const auto size = editor.view()->GetFrame();
        qorui::HeadlessWindow window(std::max(1.0f, size.width), std::max(1.0f, size.height),
                                     scale);
        window.SetBackgroundColor(qorui::skins::GetContentBackgroundColor());
        window.AddNode(editor.view());
        editor.run(seconds, [&](double step) { window.AdvanceTime(step); });
        // The editor's first ticks, even when no audio ran.
        window.AdvanceTime(0.05);
        window.RenderAll();
        window.WritePNG(output);
        window.GetRoot()->RemoveAllChildren();
    } catch (const std::exception& error) {
        std::cerr << "qafui render: " << effect->name << ": " << error.what() << "\n";
        status = 1;
    }
    qoraudiofiltersui::Terminate();
    return status;
}

const command_registration_t registration(command_t{
    "render", "draw an effect's editor headless into a PNG", usage_text, &run});

} // namespace

} // namespace qafui::cli
