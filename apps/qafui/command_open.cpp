// qafui open EFFECT [--scale 1|2] [--skin classic|v7] [--input FILE] [--seconds S] [--play]
// [--stats]: shows an effect's editor in a window, bound to the reference effect running in real
// time on the test signal (or a file), until the window is closed; with --play it is heard.

#include "command.hpp"
#include "editor_options.hpp"
#include "live_editor.hpp"

#include "audio/host/reference_effects.hpp"
#include "audio/host/sound_output.hpp"
#include "core/stream_error.hpp"
#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "platform/core/connection.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/sdl/sdl_window.hpp"
#include "platform/skins/skins.hpp"

#include <SDL.h>

#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iomanip>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace qafui::cli {

namespace {

bool has_display() {
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "SDL_VIDEODRIVER"})
        if (const char* value = std::getenv(variable); value && *value)
            return true;
    return false;
}

const char usage_text[] =
    "usage: qafui open EFFECT [--scale 1|2] [--skin classic|v7] [--input FILE] [--seconds S]\n"
    "                  [--param I=V]... [--value I=X]... [--play] [--stats]\n"
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
    "  --seconds S    close the window by itself after S seconds\n"
    "  --param I=V    sets parameter I (an index or a name) to the normalised value V\n"
    "                 (0 to 1) before the editor opens; may be repeated\n"
    "  --value I=X    the same with X in the parameter's own unit\n"
    "  --play         plays the effect's output on the sound device; without one the editor\n"
    "                 opens all the same, silent\n"
    "  --stats        prints once a second the sound device's underruns and the load of\n"
    "                 the process thread and of the window (their CPU time / real time)\n";

// CPU time the calling thread has used, in seconds.
double thread_cpu_seconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

// Once a second: underruns so far, and each thread's CPU time over the last second of real time.
class load_report_t {
public:
    explicit load_report_t(const qafhost::SoundOutput* sound) : sound_(sound) {}

    /// The process thread, after every block: no lock, no allocation.
    void note_process_thread() { process_.store(thread_cpu_seconds(), std::memory_order_relaxed); }

    /// The main thread, as often as it likes; prints when a second has passed.
    void tick() {
        const auto now = std::chrono::steady_clock::now();
        const double window = thread_cpu_seconds();
        const double process = process_.load(std::memory_order_relaxed);
        if (!started_) {
            started_ = true;
            last_ = now;
            lastWindow_ = window;
            lastProcess_ = process;
            return;
        }
        const double real = std::chrono::duration<double>(now - last_).count();
        if (real < 1.0)
            return;
        std::cout << "underruns ";
        if (sound_)
            std::cout << sound_->GetUnderrunCount();
        else
            std::cout << "-";
        std::cout << std::fixed << std::setprecision(1) << ", process thread "
                  << 100.0 * (process - lastProcess_) / real << " %, window "
                  << 100.0 * (window - lastWindow_) / real << " %" << std::endl;
        last_ = now;
        lastWindow_ = window;
        lastProcess_ = process;
    }

private:
    const qafhost::SoundOutput* sound_;
    std::atomic<double> process_{0.0};
    bool started_ = false;
    std::chrono::steady_clock::time_point last_;
    double lastWindow_ = 0.0;
    double lastProcess_ = 0.0;
};

int run(const command_t& command, const std::vector<std::string>& all_arguments) {
    // --play and --stats are this command's alone; the rest are the editors' shared options.
    bool play = false;
    bool stats = false;
    std::vector<std::string> arguments;
    for (const std::string& argument : all_arguments) {
        if (argument == "--play")
            play = true;
        else if (argument == "--stats")
            stats = true;
        else
            arguments.push_back(argument);
    }
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
    const qoraudiofiltersui::EffectEntry* effect = find_effect_or_report("open", effectName);
    if (!effect)
        return 1;

    // The device comes first and goes last: the host's tap feeds it until the host stops.
    std::unique_ptr<qafhost::SoundOutput> sound;
    if (play) {
        if (!qafhost::HasReferenceEffect(effect->name)) {
            std::cerr << "qafui open: " << effect->name
                      << ": the reference host has no DSP for this effect; the editor opens "
                         "without sound\n";
        } else {
            try {
                sound = std::make_unique<qafhost::SoundOutput>(live_editor_t::kSampleRate,
                                                               live_editor_t::kChannelCount);
            } catch (const std::exception& error) {
                std::cerr << "qafui open: no sound device (" << error.what()
                          << "); the editor opens without sound\n";
            }
        }
    }
    load_report_t report(sound.get());
    qafhost::ProcessHost::OutputTap tap;
    if (sound || stats)
        tap = [out = sound.get(), &report, stats](const float* const* channels,
                                                  std::size_t channel_count,
                                                  std::size_t frame_count) {
            if (out)
                out->Push(channels, channel_count, frame_count);
            if (stats)
                report.note_process_thread();
        };

    const qorui::skins::ScopedSkin look(skin);
    const qorui::penrig::CairoSupplier supplier(scale);
    qoraudiofiltersui::Initialize(&supplier);
    int status = 0;
    try {
        live_editor_t editor(*effect, qafhost::ProcessHost::Clock::kRealTime, input,
                             options.parameters, std::move(tap));
        // Without a display the window system falls back to drawing nowhere, and the editor
        // would run unseen until killed.
        if (!has_display())
            throw std::runtime_error("no display to open a window on (DISPLAY and "
                                     "WAYLAND_DISPLAY are not set); `qafui render` and "
                                     "`qafui describe` work without one");
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
            if (stats)
                report.tick();
            if (closeAfter > 0.0 && elapsed() >= closeAfter)
                window.RequestClose();
        }
        window.GetRoot()->RemoveAllChildren();
    } catch (const std::exception& error) {
        std::cerr << "qafui open: " << effect->name << ": " << vorlen::format_stream_error(error)
                  << "\n";
        status = 1;
    }
    qoraudiofiltersui::Terminate();
    return status;
}

const command_registration_t registration(command_t{
    "open", "show an effect's editor in a window, live on the test signal", usage_text, &run});

} // namespace

} // namespace qafui::cli
