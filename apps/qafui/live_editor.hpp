#pragma once

// An effect's editor bound to a running effect, as render, open and gallery show it: the
// reference effect on the reference host, fed by the test signal or a file, or, for an effect
// the host has no reference for yet, a table of parameters shaped like the effect's.

#include "parameter_options.hpp"

#include "audio/host/process_host.hpp"
#include "framework/effect_catalogue.hpp"
#include "platform/host/audio_filter.hpp"
#include "platform/host/parameter_store_filter.hpp"
#include "platform/hostui/audio_filter_editor_view_base.hpp"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace qafui::cli {

/// The parameters of an effect as its editor reads them, for an effect without a reference:
/// the known layouts, else one normalised parameter per input cell "in" + i of its sheet.
/// Needs the library initialised.
std::vector<qoraudiofilterhost::ParameterDescriptor>
stand_in_parameters(const qoraudiofiltersui::EffectEntry& effect);

/// Whether an effect's editor can be shown: its class exists and every resource it reads is in
/// the library (or the override folder).
struct editor_readiness_t {
    enum class status_t { ready, pending, missing_resources };
    status_t status = status_t::ready;
    std::vector<std::string> missing; ///< "NAME.type" of each resource not found
    /// "" when ready, else the reason: "its view class X is pending", "missing resource
    /// FLANGER.tss".
    std::string reason() const;
};

/// Needs the library initialised.
editor_readiness_t check_editor(const qoraudiofiltersui::EffectEntry& effect);

/// Throws std::runtime_error when `view` is an archived editor whose archive made no panel,
/// naming the archive and the loader's first finding (FILE:LINE:COLUMN when it has one).
void require_archive_loaded(const qoraudiofilterhostui::AudioFilterEditorViewBase& view);

/// The effect of a name or class GUID; null, with "qafui COMMAND: no effect 'x' (see qafui
/// list)" on standard error, when there is none.
const qoraudiofiltersui::EffectEntry* find_effect_or_report(const char* command,
                                                            const std::string& name);

/// An editor of `effect` with its filter and, when the effect has a reference, the host that
/// runs it. Needs the library initialised, and releases everything before it is terminated.
class live_editor_t {
public:
    static constexpr float kSampleRate = 48000.0f;
    static constexpr std::size_t kChannelCount = 2;

    /// `input` names an audio file to play in place of the test signal; empty for the test
    /// signal. `parameters` are set before the editor opens. `tap` receives the host's output
    /// on the process thread (a sound device, say) and must outlive the editor. Throws
    /// std::runtime_error when the editor is pending or lacks resources, when it can't be made,
    /// when the file can't be read or when a parameter is wrong.
    live_editor_t(const qoraudiofiltersui::EffectEntry& effect, qafhost::ProcessHost::Clock clock,
                  const std::string& input,
                  const std::vector<parameter_assignment_t>& parameters = {},
                  qafhost::ProcessHost::OutputTap tap = {});
    /// The editor goes first, so that its meters are stopped while the host still runs.
    ~live_editor_t();
    live_editor_t(const live_editor_t&) = delete;
    live_editor_t& operator=(const live_editor_t&) = delete;

    const qorcore::IntrusivePtr<qoraudiofilterhostui::AudioFilterEditorViewBase>& view() const {
        return view_;
    }
    /// The reference effect or the stand-in table.
    const std::shared_ptr<qoraudiofilterhost::ParameterStoreFilter>& filter() const {
        return filter_;
    }
    /// Null when the effect has no reference and a table of parameters stands in.
    qafhost::ProcessHost* host() const { return host_.get(); }

    /// The virtual clock: runs the effect for `seconds` in steps of a hundredth, each followed
    /// by `keep_time` (which moves the window's clock, so timers fire and messages arrive).
    template <class KeepTime>
    void run(double seconds, KeepTime&& keep_time) {
        constexpr double kStep = 0.01;
        for (double done = 0.0; done + 1e-9 < seconds; done += kStep) {
            const double step = std::min(kStep, seconds - done);
            if (host_)
                host_->Advance(step);
            keep_time(step);
        }
    }

private:
    std::shared_ptr<qoraudiofilterhost::ParameterStoreFilter> filter_;
    std::unique_ptr<qafhost::ProcessHost> host_;
    qorcore::IntrusivePtr<qoraudiofilterhostui::AudioFilterEditorViewBase> view_;
};

} // namespace qafui::cli
