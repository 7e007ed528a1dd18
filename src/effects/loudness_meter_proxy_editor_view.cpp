#include "effects/loudness_meter_proxy_editor_view.hpp"

#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"

namespace qoraudiofiltersui {

namespace {

// The proxy stands in for the loudness meter wherever the meter's own view is missing, which is
// everywhere until that view is built.
const EditorClassRegistration
    registration("LoudnessMeter", [](std::shared_ptr<AudioFilter> filter) {
        return IntrusivePtr<AudioFilterEditorViewBase>(
            LoudnessMeterProxyEditorView::Create(std::move(filter)));
    });

} // namespace

IntrusivePtr<LoudnessMeterProxyEditorView>
LoudnessMeterProxyEditorView::Create(std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<LoudnessMeterProxyEditorView>(
        new LoudnessMeterProxyEditorView(std::move(filter)));
}

LoudnessMeterProxyEditorView::LoudnessMeterProxyEditorView(std::shared_ptr<AudioFilter> filter)
    : MarlTessAudioFilterEditorView(std::move(filter), GetLibraryDrawSupplier(),
                                    "LoudnessMeterProxy", GetLibraryResourceManager(), false) {
    CreateLayout();
}

} // namespace qoraudiofiltersui
