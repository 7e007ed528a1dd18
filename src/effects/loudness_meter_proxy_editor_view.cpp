#include "effects/loudness_meter_proxy_editor_view.hpp"

#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"

namespace qoraudiofiltersui {

namespace {

#ifdef QAFUI_LOUDNESS_METER_PROXY
// The proxy stands in for the loudness meter in a build without the meter (the option
// QAFUI_LOUDNESS_METER off).
const EditorClassRegistration
    registration("LoudnessMeter", [](std::shared_ptr<AudioFilter> filter) {
        return IntrusivePtr<AudioFilterEditorViewBase>(
            LoudnessMeterProxyEditorView::Create(std::move(filter)));
    });
#endif

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
