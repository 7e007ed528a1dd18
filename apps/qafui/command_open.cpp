// qafui open EFFECT [--scale 1|2] [--skin classic|v7] [--input FILE] [--seconds S]: shows an
// effect's editor in a window, bound to the reference effect running in real time on the test
// signal (or a file), until the window is closed.

#include "command.hpp"
#include "editor_options.hpp"
#include "live_editor.hpp"

#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "platform/core/connection.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/ui/sdl_window.hpp"
#include "platform/ui/skins.hpp"

#include <SDL.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace qafui::cli {

namespace {

const char usage_text[] =
    "usage: qafui open EFFECT [--scale 1|2] [--skin classic|v7] [--input FILE] [--seconds S]\n"
    "\n"
    "Opens the editor of EFFECT (a name or class GUID of `qafui list`) in a window. An\n"
    "effect of the reference host runs in real time on the test signal (or FILE), so its\n"
    "spectra and meters are live; the editor's changes reach it as you make them. Needs a\n"
    "display.\n"
    "\n"
    "options:\n"
    "  --scale S      1 (the default) or 2\n"
    "  --skin LOOK    classic (the default) or v7\n"
    "  --input FILE   an audio file to play in place of the test signal\n"
    "  --seconds S    close the window by itself after S seconds\n";

int run(const command_t& command, const std::vector<std::string>& arguments) {
    editor_options_t options;
    const editor_option_rules_t rules{.max_seconds = 86400.0, .zero_seconds = false};
    if (const std::string error = read_editor_options(arguments, rules, options); !error.empty())
        return usage_error(command, error);
    const std::string& effectName = options.effect;
    const std::string& input = options.input;
    const float scale = options.scale;
    const double closeAfter = options.seconds; // 0: until the window is closed
    const auto skin = options.skin;
    if (effectName.empty())
        return usage_error(command, "no EFFECT given");
    const qoraudiofiltersui::EffectEntry* effect = qoraudiofiltersui::FindEffect(effectName);
    if (!effect) {
        std::cerr << "qafui open: no effect '" << effectName << "' (see qafui list)\n";
        return 1;
    }

    const qorui::skins::ScopedSkin look(skin);
    const qorui::penrig::CairoSupplier supplier(scale);
    qoraudiofiltersui::Initialize(&supplier);
    int status = 0;
    try {
        live_editor_t editor(*effect, qafhost::ProcessHost::Clock::kRealTime, input);
        const auto size = editor.view()->GetFrame();
        qorui::SdlWindow window(std::string("qafui - ") + effect->name,
                                std::max(1, int(std::ceil(size.width))),
                                std::max(1, int(std::ceil(size.height))), scale);
        window.SetBackgroundColor(qorui::skins::GetContentBackgroundColor());
        window.AddNode(editor.view());
        // An editor that grows or shrinks (a section opened) takes the window with it.
        const qorcore::ScopedConnection sized =
            editor.view()->ConnectContentSizeChanged([&window, &editor, scale] {
                const auto frame = editor.view()->GetFrame();
                SDL_SetWindowSize(SDL_GetWindowFromID(window.GetWindowID()),
                                  std::max(1, int(std::ceil(frame.width * scale))),
                                  std::max(1, int(std::ceil(frame.height * scale))));
            });
        const auto started = std::chrono::steady_clock::now();
        auto elapsed = [&] {
            return std::chrono::duration<double>(std::chrono::steady_clock::now() - started)
                .count();
        };
        while (window.ProcessEvents(50)) {
            if (closeAfter > 0.0 && elapsed() >= closeAfter)
                window.RequestClose();
        }
        window.GetRoot()->RemoveAllChildren();
    } catch (const std::exception& error) {
        std::cerr << "qafui open: " << effect->name << ": " << error.what() << "\n";
        status = 1;
    }
    qoraudiofiltersui::Terminate();
    return status;
}

const command_registration_t registration(command_t{
    "open", "show an effect's editor in a window, live on the test signal", usage_text, &run});

} // namespace

} // namespace qafui::cli
