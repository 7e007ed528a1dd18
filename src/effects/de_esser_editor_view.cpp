#include "effects/de_esser_editor_view.hpp"

#include "audio/dsp/de_esser.hpp"
#include "audio/dsp/dynamics_toolkit.hpp"
#include "audio/dsp/enable_spectrum_meter_message.hpp"
#include "audio/dsp/gain_reduction_meter_message.hpp"
#include "audio/dsp/spectrum_meter_message.hpp"
#include "controls/edit_number.hpp"
#include "effects/de_esser_cutoff_overlay.hpp"
#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "graphs/curve_editor.hpp"
#include "graphs/spectrum_content_layer.hpp"
#include "graphs/spectrum_draw.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/tess/ui_qor_tess_root.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_radio_button.hpp"

#include <vector>

namespace qoraudiofiltersui {

namespace {

using qoraudiofilters::DeEsser;

const EditorClassRegistration registration("DeEsser", [](std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<AudioFilterEditorViewBase>(DeEsserEditorView::Create(std::move(filter)));
});

constexpr qorcore::ColorRGBA kGridColor{0.25f, 0.25f, 0.25f, 1.0f};
constexpr qorcore::ColorRGBA kSpectrumColor{0.262745f, 0.85098f, 0.588235f, 1.0f};
constexpr qorcore::value_range<float> kFrequencies{20.0f, 20000.0f};

template <class T>
IntrusivePtr<T> Find(const MarlTessAudioFilterEditorView& view, const char* identifier) {
    const IntrusivePtr<qormarltess::UI_QORTessRoot> root = view.GetTessRoot();
    IntrusivePtr<T> control =
        root ? qorcore::DynamicPointerCast<T>(root->GetTessViewHolder().GetControl(identifier))
             : IntrusivePtr<T>();
    if (!control)
        qorcore::config::DoThrowNullPtrException(identifier);
    return control;
}

} // namespace

IntrusivePtr<DeEsserEditorView> DeEsserEditorView::Create(std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<DeEsserEditorView>(new DeEsserEditorView(std::move(filter)));
}

DeEsserEditorView::DeEsserEditorView(std::shared_ptr<AudioFilter> filter)
    : MarlTessAudioFilterEditorView(filter, GetLibraryDrawSupplier(), "DeEsser",
                                    GetLibraryResourceManager(), true),
      filter_(std::dynamic_pointer_cast<DeEsser>(filter)) {
    if (!filter_)
        qorcore::config::DoThrowNullPtrException("DeEsser");
    spectrumDraw_ = qorcore::MakeIntrusive<SpectrumDraw>(filter_->GetSampleRate());
    CreateLayout();
    overlay_ = qorcore::MakeIntrusive<DeEsserCutoffOverlay>(filter_);
    curveEditor_ = Find<CurveEditor>(*this, "CurveEditor");
    curveEditor_->SetGridColor(kGridColor);
    curveEditor_->SetMaxPointCount(0);

    spectrumDraw_->SetShowPeakHold(false);
    spectrumDraw_->GetFreqScale()->SetNumChannels(1);
    spectrumDraw_->GetFreqScale()->SetTotalFreqRange(kFrequencies);
    spectrumDraw_->SetFreqRange(kFrequencies);
    spectrumDraw_->GetFreqScale()->SetScaleType(kLogScale);
    spectrumDraw_->SetDBRange({-120.0f, 0.0f});
    spectrumDraw_->SetMinDecibelsDisplayed(-120.0f);
    spectrumDraw_->SetFill(true);
    spectrumDraw_->SetCustomColor(kSpectrumColor);
    spectrumDraw_->SetUseCustomColor(true);
    curveEditor_->AddContentLayer(qorcore::MakeIntrusive<SpectrumContentLayer>(spectrumDraw_));

    broadband_ = Find<qorui::UI_RadioButton>(*this, "Broadband");
    multiband_ = Find<qorui::UI_RadioButton>(*this, "Multiband");
    broadband_->NotifyWhenChanged(
        [this](const qorui::UI_ControlChangedMessage&) { OnModeChanged(false); });
    multiband_->NotifyWhenChanged(
        [this](const qorui::UI_ControlChangedMessage&) { OnModeChanged(true); });
    AddParameterObserver(kModeParameter, [this] { UpdateMode(); });
    UpdateMode();
    HookupEditNumber("Threshold", kThresholdParameter);
    HookupEditNumber("CenterFrequency", kCenterParameter);
    HookupEditNumber("Bandwidth", kBandwidthParameter);
    HookupCheckbox("OutputSibilanceOnly", kOutputSibilanceOnlyParameter);
    meter_ = Find<qorui::UI_LevelMeterView>(*this, "GainReductionMeter").get();
    SetupMeter();

    // The overlay covers the graph's content; the band follows its two parameters.
    curveEditor_->ChildPushBack(overlay_);
    overlay_->SetFrame(curveEditor_->GetContentRect());
    AddParameterObserver(kCenterParameter, [this] { overlay_->EmitInvalidate(); });
    AddParameterObserver(kBandwidthParameter, [this] { overlay_->EmitInvalidate(); });
    EnableMeters();
}

DeEsserEditorView::~DeEsserEditorView() {
    DisableMeters();
}

void DeEsserEditorView::OnThemeChanged() {
    MarlTessAudioFilterEditorView::OnThemeChanged();
    if (curveEditor_)
        curveEditor_->SetGridColor(kGridColor);
}

void DeEsserEditorView::OnModeChanged(bool multiband) {
    AudioFilter& filter = *GetFilter();
    filter.BeginParameterEdit(kModeParameter);
    filter.SetParameterValue(kModeParameter, multiband ? 1.0f : 0.0f);
    filter.EndParameterEdit(kModeParameter);
    UpdateMode();
}

void DeEsserEditorView::UpdateMode() {
    const bool multiband = GetFilter()->GetParameterValue(kModeParameter) >= 0.5f;
    broadband_->SetValue(!multiband);
    multiband_->SetValue(multiband);
}

void DeEsserEditorView::SetupMeter() {
    meter_->MakeGainReductionMeter();
}

void DeEsserEditorView::EnableMeters() {
    using EnableMessage = qoraudiotoolkit::EnableSpectrumMeterMessage<DeEsser>;
    const IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP> meter =
        EnableMessage::Post(filter_, true);
    spectrumMessage_ = std::make_shared<qoraudiotoolkit::SpectrumMeterMessage>(meter);
    spectrumConnection_ = spectrumMessage_->ConnectMeterDataChanged(
        [this](unsigned int fftSize, const std::vector<float>& data, unsigned int count,
               qoraudiotoolkit::SpectrumType type, bool updateLines) {
            // While the effect is suspended the last picture stays.
            if (GetFilter()->IsSuspended())
                return;
            spectrumDraw_->SetSpectrumData(fftSize, data, count, type, updateLines);
            curveEditor_->InvalidateContentRect();
        });

    // The reader runs on the process thread while the effect works through its messages.
    DeEsser* deEsser = filter_.get();
    gainReductionMessage_ = std::make_shared<qoraudiotoolkit::GainReductionMeterMessage>(
        filter_, [deEsser] { return deEsser->GetGainReduction(); });
    gainReductionConnection_ = gainReductionMessage_->ConnectMeterDataChanged([this](float db) {
        if (!GetFilter()->IsSuspended())
            meter_->SetLevel(
                std::vector<float>{float(qoraudiofilters::dynamics::LinearFromDecibels(db))}, 1,
                false);
    });
    filter_->Post(spectrumMessage_);
    filter_->Post(gainReductionMessage_);
}

void DeEsserEditorView::DisableMeters() {
    spectrumConnection_.Disconnect();
    gainReductionConnection_.Disconnect();
    if (spectrumMessage_) {
        qoraudiotoolkit::EnableSpectrumMeterMessage<DeEsser>::Post(filter_, false);
        spectrumMessage_.reset();
    }
}

} // namespace qoraudiofiltersui
