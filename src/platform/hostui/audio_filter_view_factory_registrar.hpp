#pragma once

#include "platform/core/intrusive_ptr.hpp"
#include "platform/hostui/audio_filter_editor_view_base.hpp"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace qoraudiofilterhostui {

using AudioFilterViewFactory = std::function<qorcore::IntrusivePtr<AudioFilterEditorViewBase>(
    std::shared_ptr<qoraudiofilterhost::AudioFilter>)>;

/// The host's registry of editor factories, keyed by the text form of an effect's class GUID.
/// Keys that read as a GUID are kept in the upper-case form without braces, so a lookup may
/// use any case and braces; other keys are kept and found verbatim.
class AudioFilterViewFactoryRegistry {
public:
    static AudioFilterViewFactoryRegistry& Get();

    /// False (and nothing changes) for an empty key, an empty factory or a key already taken:
    /// the first registration of an effect stays.
    bool Register(std::string_view key, AudioFilterViewFactory factory);
    /// Null when no factory has the key.
    const AudioFilterViewFactory* Find(std::string_view key) const;
    bool Contains(std::string_view key) const { return Find(key) != nullptr; }
    /// Makes an editor: null for an unknown key. A null filter throws std::invalid_argument;
    /// what the factory throws passes out.
    qorcore::IntrusivePtr<AudioFilterEditorViewBase>
    CreateEditor(std::string_view key,
                 std::shared_ptr<qoraudiofilterhost::AudioFilter> filter) const;
    /// The keys, sorted.
    std::vector<std::string> GetKeys() const;
    std::size_t GetCount() const;

    /// The form a key is stored under.
    static std::string NormaliseKey(std::string_view key);

private:
    AudioFilterViewFactoryRegistry() = default;

    mutable std::mutex mutex_;
    std::map<std::string, std::shared_ptr<const AudioFilterViewFactory>, std::less<>> factories_;
};

/// A static object that enters one factory into the registry when it is constructed, before the
/// host first asks for an editor.
class AudioFilterViewFactoryRegistrar {
public:
    AudioFilterViewFactoryRegistrar(std::string_view key, AudioFilterViewFactory factory);
    AudioFilterViewFactoryRegistrar(const AudioFilterViewFactoryRegistrar&) = delete;
    AudioFilterViewFactoryRegistrar& operator=(const AudioFilterViewFactoryRegistrar&) = delete;

    /// False when the registry refused the entry (see `Register`).
    bool IsRegistered() const { return registered_; }

private:
    bool registered_;
};

} // namespace qoraudiofilterhostui
