#include "live_editor.hpp"

#include "audio/host/file_source.hpp"
#include "audio/host/reference_effects.hpp"
#include "audio/host/test_signal_source.hpp"
#include "framework/audio_filter_editor_xml_view.hpp"
#include "framework/library.hpp"
#include "framework/resource_manager.hpp"
#include "platform/archive/ui_node_builder.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/hostui/audio_filter_view_factory_registrar.hpp"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace qafui::cli {

using qoraudiofilterhost::ParameterDescriptor;

std::vector<ParameterDescriptor> stand_in_parameters(const qoraudiofiltersui::EffectEntry& effect) {
    if (std::string_view(effect.name) == "VocalEnhancer")
        return {{"Mode", 0.0f, 2.0f, 0.0f}};
    std::vector<ParameterDescriptor> parameters;
    std::vector<char> sheet;
    if (auto* resources = qoraudiofiltersui::GetLibraryResourceManager())
        resources->GetBinary(effect.resourceName, "mrl", sheet);
    const std::string text(sheet.begin(), sheet.end());
    const std::regex input(R"(\bin(\d+)\s*:)");
    int count = 0;
    for (auto it = std::sregex_iterator(text.begin(), text.end(), input);
         it != std::sregex_iterator(); ++it)
        count = std::max(count, std::stoi((*it)[1]) + 1);
    for (int i = 0; i < count; ++i)
        parameters.push_back({"in" + std::to_string(i), 0.0f, 1.0f, 0.0f});
    return parameters;
}

std::string editor_readiness_t::reason() const {
    switch (status) {
    case status_t::ready: return {};
    case status_t::pending: return "its view class is pending";
    case status_t::missing_resources: break;
    }
    std::string text = missing.size() == 1 ? "missing resource" : "missing resources";
    for (std::size_t i = 0; i < missing.size(); ++i)
        text += (i == 0 ? " " : ", ") + missing[i];
    return text;
}

editor_readiness_t check_editor(const qoraudiofiltersui::EffectEntry& effect) {
    editor_readiness_t readiness;
    if (!qoraudiofiltersui::IsEditorClassBuilt(effect)) {
        readiness.status = editor_readiness_t::status_t::pending;
        return readiness;
    }
    const qoraudiofiltersui::ResourceManager* resources =
        qoraudiofiltersui::GetLibraryResourceManager();
    std::istringstream names(effect.resources);
    std::string file;
    while (names >> file) {
        const std::size_t point = file.rfind('.');
        if (!resources || point == std::string::npos ||
            !resources->HasBinary(file.substr(0, point), file.substr(point + 1)))
            readiness.missing.push_back(file);
    }
    if (!readiness.missing.empty())
        readiness.status = editor_readiness_t::status_t::missing_resources;
    return readiness;
}

const qoraudiofiltersui::EffectEntry* find_effect_or_report(const char* command,
                                                            const std::string& name) {
    const qoraudiofiltersui::EffectEntry* effect = qoraudiofiltersui::FindEffect(name);
    if (!effect)
        std::cerr << "qafui " << command << ": no effect '" << name << "' (see qafui list)\n";
    return effect;
}

live_editor_t::live_editor_t(const qoraudiofiltersui::EffectEntry& effect,
                             qafhost::ProcessHost::Clock clock, const std::string& input,
                             const std::vector<parameter_assignment_t>& parameters,
                             qafhost::ProcessHost::OutputTap tap) {
    if (const editor_readiness_t readiness = check_editor(effect);
        readiness.status != editor_readiness_t::status_t::ready)
        throw std::runtime_error(readiness.reason());
    std::shared_ptr<qoraudiofilters::ReferenceEffect> reference =
        qafhost::CreateReferenceEffect(effect.name, kSampleRate, kChannelCount);
    if (reference) {
        // A live editor ticks 100 times a second for as long as it is open: keep no record.
        reference->SetRecordCalls(false);
        std::unique_ptr<qafhost::AudioSource> source;
        if (input.empty())
            source = std::make_unique<qafhost::TestSignalSource>(
                qafhost::TestSignalSource::Kind::kMix, kSampleRate, kChannelCount);
        else
            source = std::make_unique<qafhost::FileSource>(input, kSampleRate);
        qafhost::ProcessHost::Options options;
        options.clock = clock;
        options.tap = std::move(tap);
        host_ = std::make_unique<qafhost::ProcessHost>(reference, options);
        host_->SetSource(std::move(source));
        filter_ = reference;
    } else {
        if (!input.empty())
            throw std::runtime_error("the reference host has no effect " +
                                     std::string(effect.name) + " to play " + input + " through");
        auto standIn =
            std::make_shared<qoraudiofilterhost::ParameterStoreFilter>(stand_in_parameters(effect));
        standIn->SetRecordCalls(false);
        filter_ = standIn;
    }
    apply_parameters(parameters, *filter_);
    view_ = qoraudiofilterhostui::AudioFilterViewFactoryRegistry::Get().CreateEditor(
        effect.GetGuidText(), filter_);
    if (!view_)
        throw std::runtime_error("no editor is registered for " + effect.GetGuidText());
    require_archive_loaded(*view_);
}

void require_archive_loaded(const qoraudiofilterhostui::AudioFilterEditorViewBase& view) {
    // An archived editor whose archive did not load stays empty without a word, as a host
    // wants it; here that is an error, told with the loader's first finding.
    const auto* archived = dynamic_cast<const qoraudiofiltersui::AudioFilterEditorXMLView*>(&view);
    if (!archived || archived->HasContent())
        return;
    qorui::NodeArchiveReport report;
    const qoraudiofiltersui::ResourceManager* resources = archived->GetResourceManager();
    qorui::UI_NodeBuilder::LoadViewFromXML(
        [resources](std::string_view name, std::vector<char>& out) {
            return resources && resources->GetBinary(name, "xml", out);
        },
        {}, archived->GetResourceName(), nullptr, {}, &report);
    std::string why = "its archive " + archived->GetResourceName() + " made no panel";
    if (!report.diagnostics.empty()) {
        const qorui::NodeArchiveDiagnostic& first = report.diagnostics.front();
        why += ": ";
        if (!first.path.empty())
            why += first.path + ":" + std::to_string(first.line) + ":" +
                   std::to_string(first.column) + ": ";
        why += first.message;
    }
    throw std::runtime_error(why);
}

live_editor_t::~live_editor_t() {
    if (view_)
        view_->RemoveFromParent();
    view_.reset();
    if (host_) {
        // The editor's last messages (its meters switched off) run on the process thread
        // before it stops, so that no message is left holding the effect.
        const auto effect = host_->GetEffect();
        if (host_->GetClock() == qafhost::ProcessHost::Clock::kVirtual) {
            host_->Advance(2.0 * double(host_->GetBlockSize()) / double(host_->GetSampleRate()));
        } else {
            const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(250);
            while (effect->GetPostedMessageCount() != 0 && std::chrono::steady_clock::now() < until)
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        host_.reset();
        qorcore::MainThreadQueue::Get().RunPending();
    }
    filter_.reset();
}

} // namespace qafui::cli
