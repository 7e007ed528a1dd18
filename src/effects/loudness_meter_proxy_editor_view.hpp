#pragma once

#include "framework/marl_tess_audio_filter_editor_view.hpp"

namespace qoraudiofiltersui {

/// Stands in for the loudness meter where the real meter is missing: one line of text, from the
/// layout "LoudnessMeterProxy" alone.
class LoudnessMeterProxyEditorView : public MarlTessAudioFilterEditorView {
public:
    static IntrusivePtr<LoudnessMeterProxyEditorView> Create(std::shared_ptr<AudioFilter> filter);

protected:
    explicit LoudnessMeterProxyEditorView(std::shared_ptr<AudioFilter> filter);
};

} // namespace qoraudiofiltersui
