#include "platform/hostui/audio_filter_view_factory_registrar.hpp"

#include "platform/core/guid.hpp"

#include <stdexcept>

namespace qoraudiofilterhostui {

AudioFilterViewFactoryRegistry& AudioFilterViewFactoryRegistry::Get() {
    // A function-local static, so registrars in any translation unit find it constructed.
    static AudioFilterViewFactoryRegistry registry;
    return registry;
}

std::string AudioFilterViewFactoryRegistry::NormaliseKey(std::string_view key) {
    if (auto guid = qorcore::Guid::FromString(key))
        return guid->AsString();
    return std::string(key);
}

bool AudioFilterViewFactoryRegistry::Register(std::string_view key,
                                              AudioFilterViewFactory factory) {
    if (key.empty() || !factory)
        return false;
    std::lock_guard lock(mutex_);
    return factories_
        .emplace(NormaliseKey(key),
                 std::make_shared<const AudioFilterViewFactory>(std::move(factory)))
        .second;
}

const AudioFilterViewFactory* AudioFilterViewFactoryRegistry::Find(std::string_view key) const {
    const std::string normalised = NormaliseKey(key);
    std::lock_guard lock(mutex_);
    auto found = factories_.find(normalised);
    return found == factories_.end() ? nullptr : found->second.get();
}

qorcore::IntrusivePtr<AudioFilterEditorViewBase> AudioFilterViewFactoryRegistry::CreateEditor(
    std::string_view key, std::shared_ptr<qoraudiofilterhost::AudioFilter> filter) const {
    if (!filter)
        throw std::invalid_argument("AudioFilterViewFactoryRegistry::CreateEditor: null filter");
    const AudioFilterViewFactory* factory = Find(key);
    if (!factory)
        return nullptr;
    return (*factory)(std::move(filter));
}

std::vector<std::string> AudioFilterViewFactoryRegistry::GetKeys() const {
    std::lock_guard lock(mutex_);
    std::vector<std::string> keys;
    keys.reserve(factories_.size());
    for (const auto& entry : factories_)
        keys.push_back(entry.first);
    return keys;
}

std::size_t AudioFilterViewFactoryRegistry::GetCount() const {
    std::lock_guard lock(mutex_);
    return factories_.size();
}

AudioFilterViewFactoryRegistrar::AudioFilterViewFactoryRegistrar(std::string_view key,
                                                                 AudioFilterViewFactory factory)
    : registered_(AudioFilterViewFactoryRegistry::Get().Register(key, std::move(factory))) {}

} // namespace qoraudiofilterhostui
