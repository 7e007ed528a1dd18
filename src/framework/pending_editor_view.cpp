#include "framework/pending_editor_view.hpp"

namespace qoraudiofiltersui {

PendingEditorView::PendingEditorView(std::shared_ptr<AudioFilter> filter, const EffectEntry& effect,
                                     EditorResources resources)
    : AudioFilterEditorViewBase(std::move(filter)), effect_(effect),
      resources_(std::move(resources)) {}

} // namespace qoraudiofiltersui
