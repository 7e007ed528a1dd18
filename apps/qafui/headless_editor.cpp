#include "headless_editor.hpp"

#include "core/stream_error.hpp"
#include "framework/library.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/skins/skins.hpp"

#include <algorithm>
#include <exception>
#include <iostream>

namespace qafui::cli {

namespace {

std::optional<event_script_t> read_script(const editor_options_t& options) {
    if (options.events.empty())
        return std::nullopt;
    return read_event_script(options.events);
}

} // namespace

headless_editor_t::headless_editor_t(const qoraudiofiltersui::EffectEntry& effect,
                                     const editor_options_t& options)
    : script_(read_script(options)),
      editor_(effect, qafhost::ProcessHost::Clock::kVirtual, options.input, options.parameters),
      seconds_(options.seconds) {
    const auto size = editor_.view()->GetFrame();
    window_.emplace(std::max(1.0f, size.width), std::max(1.0f, size.height), options.scale);
    window_->SetBackgroundColor(qorui::skins::GetContentBackgroundColor());
    window_->AddNode(editor_.view());
    // An editor that grows or shrinks (a section opened) takes the window with it, so that
    // what it shows stays within reach of events and in the picture.
    sized_ = editor_.view()->ConnectContentSizeChanged([this] {
        const auto frame = editor_.view()->GetFrame();
        if (frame.width >= 1.0f && frame.height >= 1.0f)
            window_->SetSize(frame.width, frame.height);
    });
}

headless_editor_t::~headless_editor_t() {
    sized_ = qorcore::ScopedConnection();
    if (window_)
        window_->GetRoot()->RemoveAllChildren();
}

void headless_editor_t::keep_time(double seconds) {
    editor_.run(seconds, [this](double step) { window_->AdvanceTime(step); });
}

void headless_editor_t::run() {
    if (script_) {
        // The editor takes its first ticks before anyone touches it, as on a screen.
        keep_time(event_player_t::kSettleSeconds);
        event_player_t player(*window_, *editor_.view(),
                              [this](double seconds) { keep_time(seconds); });
        player.play(*script_);
    }
    keep_time(seconds_);
    // The editor's first ticks, even when no audio ran.
    window_->AdvanceTime(0.05);
}

int with_headless_editor(const char* command, const qoraudiofiltersui::EffectEntry& effect,
                         const editor_options_t& options,
                         const std::function<void(headless_editor_t&)>& show) {
    const qorui::skins::ScopedSkin look(options.skin);
    const qorui::penrig::CairoSupplier supplier(options.scale);
    qoraudiofiltersui::Initialize(&supplier);
    int status = 0;
    try {
        headless_editor_t session(effect, options);
        session.run();
        show(session);
    } catch (const std::exception& error) {
        std::cerr << "qafui " << command << ": " << effect.name << ": "
                  << vorlen::format_stream_error(error) << "\n";
        status = 1;
    }
    qoraudiofiltersui::Terminate();
    return status;
}

} // namespace qafui::cli
