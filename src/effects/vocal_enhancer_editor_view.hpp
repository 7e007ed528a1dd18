#pragma once

#include "framework/marl_tess_audio_filter_editor_view.hpp"

namespace qoraudiofiltersui {

/// The vocal enhancer: one choice of mode ("Low Tone", "High Tone", "Music"), the radio group
/// "Mode" bound to parameter 0. Its sheet is empty; the binding is direct.
class VocalEnhancerEditorView : public MarlTessAudioFilterEditorView {
public:
    static IntrusivePtr<VocalEnhancerEditorView> Create(std::shared_ptr<AudioFilter> filter);

protected:
    explicit VocalEnhancerEditorView(std::shared_ptr<AudioFilter> filter);
};

} // namespace qoraudiofiltersui
