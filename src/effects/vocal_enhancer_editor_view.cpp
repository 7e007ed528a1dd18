#include "effects/vocal_enhancer_editor_view.hpp"

#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "platform/widgets/ui_radio_group.hpp"

namespace qoraudiofiltersui {

namespace {

constexpr int kModeParameter = 0;

const EditorClassRegistration
    registration("VocalEnhancer", [](std::shared_ptr<AudioFilter> filter) {
        return IntrusivePtr<AudioFilterEditorViewBase>(
            VocalEnhancerEditorView::Create(std::move(filter)));
    });

} // namespace

IntrusivePtr<VocalEnhancerEditorView>
VocalEnhancerEditorView::Create(std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<VocalEnhancerEditorView>(new VocalEnhancerEditorView(std::move(filter)));
}

VocalEnhancerEditorView::VocalEnhancerEditorView(std::shared_ptr<AudioFilter> filter)
    : MarlTessAudioFilterEditorView(std::move(filter), GetLibraryDrawSupplier(), "VocalEnhancer",
                                    GetLibraryResourceManager(), true) {
    CreateLayout();
    HookupRadioGroup("Mode", kModeParameter);
}

} // namespace qoraudiofiltersui
