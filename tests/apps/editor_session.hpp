#pragma once

// The program's headless editor on the reference FFT filter, with the library initialised for
// as long as it lives, and an event script written to a scratch file.

#include "headless_editor.hpp"
#include "node_description.hpp"

#include "framework/library.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/skins/skins.hpp"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace qafui_testing {

class EditorSession {
public:
    /// Opens `effect` with `events` (script text; none when empty) played through it.
    explicit EditorSession(const std::string& events = {},
                           qafui::cli::editor_options_t options = {},
                           const std::string& effect = "FFTFilter")
        : look_(options.skin), supplier_(options.scale) {
        qoraudiofiltersui::Initialize(&supplier_);
        if (!events.empty()) {
            script_ = std::filesystem::temp_directory_path() /
                      ("qafui_events_" + std::to_string(::getpid()) + ".txt");
            std::ofstream(script_, std::ios::binary) << events;
            options.events = script_.string();
        }
        try {
            session_ = std::make_unique<qafui::cli::headless_editor_t>(
                *qoraudiofiltersui::FindEffect(effect), options);
            session_->run();
        } catch (...) {
            Close();
            throw;
        }
    }
    ~EditorSession() { Close(); }
    EditorSession(const EditorSession&) = delete;
    EditorSession& operator=(const EditorSession&) = delete;

    qafui::cli::headless_editor_t& operator*() { return *session_; }
    qafui::cli::headless_editor_t* operator->() { return session_.get(); }

    qafui::cli::editor_description_t Describe() {
        return qafui::cli::describe_editor("FFTFilter", *session_->editor().view(),
                                           *session_->editor().filter());
    }
    float Plain(int index) { return session_->editor().filter()->GetPlainValue(index); }
    float Value(int index) { return session_->editor().filter()->GetParameterValue(index); }

    /// The script's file name, as errors name it.
    std::string ScriptName() const { return script_.string(); }

private:
    void Close() {
        session_.reset();
        qoraudiofiltersui::Terminate();
        if (!script_.empty())
            std::filesystem::remove(script_);
    }

    qorui::skins::ScopedSkin look_;
    qorui::penrig::CairoSupplier supplier_;
    std::filesystem::path script_;
    std::unique_ptr<qafui::cli::headless_editor_t> session_;
};

/// The node with the identifier in a description, or null.
inline const qafui::cli::node_record_t* FindRecord(const qafui::cli::node_record_t& node,
                                                   const std::string& id) {
    if (node.id == id)
        return &node;
    for (const auto& child : node.children)
        if (const auto* found = FindRecord(child, id))
            return found;
    return nullptr;
}

} // namespace qafui_testing
