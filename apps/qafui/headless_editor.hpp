#pragma once

// An effect's editor live in a headless window, as render and describe show it: opened with
// its parameters set, then the events of a script, then seconds of audio, then the first ticks.

#include "editor_options.hpp"
#include "event_script.hpp"
#include "live_editor.hpp"

#include "platform/core/connection.hpp"
#include "platform/ui/headless_window.hpp"

#include <functional>
#include <optional>
#include <string>

namespace qafui::cli {

class headless_editor_t {
public:
    /// Needs the library initialised in the look and scale of `options`. Reads the event script
    /// first, so that a bad line fails before anything opens. Throws std::runtime_error (an
    /// event_script_error for the script) when the editor can't be shown.
    headless_editor_t(const qoraudiofiltersui::EffectEntry& effect,
                      const editor_options_t& options);
    ~headless_editor_t();
    headless_editor_t(const headless_editor_t&) = delete;
    headless_editor_t& operator=(const headless_editor_t&) = delete;

    /// Plays the script, runs the audio and lets the editor tick.
    void run();

    live_editor_t& editor() { return editor_; }
    qorui::HeadlessWindow& window() { return *window_; }

private:
    /// Moves the window's clock and the reference host together.
    void keep_time(double seconds);

    std::optional<event_script_t> script_;
    live_editor_t editor_;
    std::optional<qorui::HeadlessWindow> window_;
    qorcore::ScopedConnection sized_;
    double seconds_;
};

/// Initialises the library in the look and scale of `options`, opens the effect's editor headless,
/// runs it and hands it to `show`; then terminates the library. A failure is reported as
/// "qafui COMMAND: EFFECT: reason" on standard error. Returns the exit status: 0 or 1.
int with_headless_editor(const char* command, const qoraudiofiltersui::EffectEntry& effect,
                         const editor_options_t& options,
                         const std::function<void(headless_editor_t&)>& show);

} // namespace qafui::cli
