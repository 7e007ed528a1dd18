// qafui render EFFECT -o PNG [--scale 1|2] [--skin classic|v7] [--seconds S] [--input FILE]:
// draws an effect's editor in a headless window and writes it as a PNG. The reference effect
// runs on the reference host for S seconds of virtual time first, so that spectra and meters
// show live data; an effect without a reference is bound to a table of parameters shaped like
// the effect's.

#include "command.hpp"
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

/// Seconds as an option takes them: a number from 0 to 600.
bool ParseSeconds(const std::string& text, double& seconds) {
    try {
        std::size_t used = 0;
        const double value = std::stod(text, &used);
        if (used != text.size() || !std::isfinite(value) || value < 0.0 || value > 600.0)
            return false;
        seconds = value;
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

int run(const command_t& command, const std::vector<std::string>& arguments) {
    std::string effectName;
    std::string output;
    std::string input;
    float scale = 1.0f;
    double seconds = 1.0;
    auto skin = qorui::skins::Skin::kClassic;
    for (std::size_t i = 0; i != arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        auto next = [&]() -> const std::string* {
            return i + 1 < arguments.size() ? &arguments[++i] : nullptr;
        };
        if (argument == "-o") {
            const std::string* value = next();
            if (!value)
                return usage_error(command, "-o needs a file");
            output = *value;
        } else if (argument == "--scale") {
            const std::string* value = next();
            if (!value || (*value != "1" && *value != "2"))
                return usage_error(command, "--scale takes 1 or 2");
            scale = *value == "2" ? 2.0f : 1.0f;
        } else if (argument == "--skin") {
            const std::string* value = next();
            if (!value || (*value != "classic" && *value != "v7"))
                return usage_error(command, "--skin takes classic or v7");
            skin = *value == "v7" ? qorui::skins::Skin::kV7 : qorui::skins::Skin::kClassic;
        } else if (argument == "--seconds") {
            const std::string* value = next();
            if (!value || !ParseSeconds(*value, seconds))
                return usage_error(command, "--seconds takes a number of seconds from 0 to 600");
        } else if (argument == "--input") {
            const std::string* value = next();
            if (!value || value->empty())
                return usage_error(command, "--input needs a file");
            input = *value;
        } else if (!argument.empty() && argument[0] == '-') {
            return usage_error(command, "unknown option '" + argument + "'");
        } else if (effectName.empty()) {
            effectName = argument;
        } else {
            return usage_error(command, "one EFFECT only");
        }
    }
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
