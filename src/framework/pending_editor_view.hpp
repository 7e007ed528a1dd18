#pragma once

#include "framework/audio_filter_editor_view_base.hpp"
#include "framework/editor_resources.hpp"

#include <string>

namespace qoraudiofiltersui {

struct EffectEntry;

/// The editor a factory answers with while the view class of its effect is not built yet: an
/// empty view that polls like every editor and keeps what the real one would load (the effect,
/// and for script editors the scripts chosen). Each effect's own class replaces it in the
/// factory of the catalogue when it arrives.
class PendingEditorView : public AudioFilterEditorViewBase {
public:
    PendingEditorView(std::shared_ptr<AudioFilter> filter, const EffectEntry& effect,
                      EditorResources resources);

    const EffectEntry& GetEffect() const { return effect_; }
    /// Empty for archive editors, whose loader chooses its own archive.
    const EditorResources& GetResources() const { return resources_; }
    void Init() override { ++initCount_; }
    int GetInitCount() const { return initCount_; }

private:
    const EffectEntry& effect_;
    EditorResources resources_;
    int initCount_ = 0;
};

} // namespace qoraudiofiltersui
