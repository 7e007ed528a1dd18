#include "effects/parametric_eq_editor_view.hpp"

#include "audio/dsp/parametric_eq.hpp"
#include "audio/dsp/spectrum_meter_message.hpp"
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
    const IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP>& meter = eq_->GetSpectrumMeter();
    // The message posts itself to the meter's target again for as long as someone listens.
    if (!meter->GetMessageTarget())
        meter->SetMessageTarget(eqShared_);
    meterMessage_ = std::make_shared<qoraudiotoolkit::SpectrumMeterMessage>(meter);
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
    EnableMeter();
}

ParametricEQEditorView::~ParametricEQEditorView() {
    // The process thread must stop feeding before the receiver goes.
    DisableMeter();
}

void ParametricEQEditorView::UpdateSpectrumRange() {
    const bool narrow = GetFilter()->GetParameterValue(kRangeParameter) >= 0.5f;
    spectrumDraw_->SetDBRange(narrow ? qorcore::value_range<float>{-15.0f, 15.0f}
                                     : qorcore::value_range<float>{-48.0f, 48.0f});
    spectrumDraw_->SetMinDecibelsDisplayed(-120.0f);
    if (curveEditor_)
        curveEditor_->InvalidateContentRect();
}

void ParametricEQEditorView::EnableMeter() {
    connection_ = meterMessage_->ConnectMeterDataChanged(
        [this](unsigned int fftSize, const std::vector<float>& data, unsigned int count,
               qoraudiotoolkit::SpectrumType type,
               bool updateLines) { OnMeterDataChanged(fftSize, data, count, type, updateLines); });
    eq_->SetMeterActive(true);
    eq_->Post(meterMessage_);
}

void ParametricEQEditorView::DisableMeter() {
    if (eq_)
        eq_->SetMeterActive(false);
    connection_.Disconnect();
}

void ParametricEQEditorView::OnMeterDataChanged(unsigned int fftSize,
                                                const std::vector<float>& data, unsigned int count,
                                                unsigned int spectrumType, bool updateLines) {
    // While the filter is suspended the last picture stays.
    if (eq_->IsSuspended())
        return;
    spectrumDraw_->SetSpectrumData(fftSize, data, count, spectrumType, updateLines);
    curveEditor_->InvalidateContentRect();
}

} // namespace qoraudiofiltersui
