#include "effects/parametric_eq_editor_view.hpp"

#include "audio/dsp/parametric_eq.hpp"
#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "graphs/curve_editor.hpp"
#include "graphs/spectrum_draw.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/tess/ui_qor_tess_root.hpp"

namespace qoraudiofiltersui {

namespace {

const EditorClassRegistration registration("ParametricEQ", [](std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<AudioFilterEditorViewBase>(
        ParametricEQEditorView::Create(std::move(filter)));
});

constexpr float kLowestFrequency = 20.0f;

} // namespace

IntrusivePtr<ParametricEQEditorView>
ParametricEQEditorView::Create(std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<ParametricEQEditorView>(new ParametricEQEditorView(std::move(filter)));
}

ParametricEQEditorView::ParametricEQEditorView(std::shared_ptr<AudioFilter> filter)
    : MarlTessAudioFilterEditorView(filter, GetLibraryDrawSupplier(), "ParametricEQ",
                                    GetLibraryResourceManager(), true) {
    eqShared_ = std::dynamic_pointer_cast<qoraudiofilters::ParametricEQ>(filter);
    eq_ = eqShared_.get();
    if (!eq_)
        qorcore::config::DoThrowNullPtrException("ParametricEQ");
    spectrumDraw_ = qorcore::MakeIntrusive<SpectrumDraw>(eq_->GetSampleRate());

    CreateLayout();
    const IntrusivePtr<qormarltess::UI_QORTessRoot> root = GetTessRoot();
    if (!root)
        qorcore::config::DoThrowNullPtrException("UI_QORTessRoot");
    curveEditor_ = qorcore::DynamicPointerCast<CurveEditor>(
        root->GetTessViewHolder().GetControl("CurveEditor"));
    if (!curveEditor_)
        qorcore::config::DoThrowNullPtrException("CurveEditor");

    const float nyquist = eq_->GetSampleRate() / 2.0f;
    const qorcore::value_range<float> frequencies{kLowestFrequency, nyquist};
    spectrumDraw_->GetFreqScale()->SetNumChannels(1);
    spectrumDraw_->GetFreqScale()->SetTotalFreqRange(frequencies);
    spectrumDraw_->SetFreqRange(frequencies);
    spectrumDraw_->SetShowPeakHold(false);
    spectrumDraw_->SetFill(true);
    spectrumDraw_->GetFreqScale()->SetScaleType(kLogScale);
    UpdateSpectrumRange();

    curveEditor_->AddContentLayer(
        qorcore::MakeIntrusive<ParametricEQSpectrumContentLayer>(spectrumDraw_));
    AddParameterObserver(kRangeParameter, [this] { UpdateSpectrumRange(); });
    meter_ = std::make_unique<OwnedSpectrumMeter>(
        eqShared_, eq_->GetSpectrumMeter(), [eq = eq_](bool active) { eq->SetMeterActive(active); },
        spectrumDraw_, curveEditor_.get());
    meter_->Enable();
}

// The meter goes first: the process thread stops feeding before the receiver goes.
ParametricEQEditorView::~ParametricEQEditorView() {
    meter_.reset();
}

void ParametricEQEditorView::UpdateSpectrumRange() {
    const bool narrow = GetFilter()->GetParameterValue(kRangeParameter) >= 0.5f;
    spectrumDraw_->SetDBRange(narrow ? qorcore::value_range<float>{-15.0f, 15.0f}
                                     : qorcore::value_range<float>{-48.0f, 48.0f});
    spectrumDraw_->SetMinDecibelsDisplayed(-120.0f);
    if (curveEditor_)
        curveEditor_->InvalidateContentRect();
}

} // namespace qoraudiofiltersui
