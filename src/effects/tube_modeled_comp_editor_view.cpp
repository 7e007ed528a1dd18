#include "effects/tube_modeled_comp_editor_view.hpp"

#include "audio/dsp/dynamics_toolkit.hpp"
#include "audio/dsp/gain_reduction_meter_message.hpp"
#include "audio/dsp/level_meter_message.hpp"
#include "audio/dsp/single_band_compressor.hpp"
#include "controls/edit_number.hpp"
#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/tess/ui_qor_tess_root.hpp"
#include "platform/widgets/ui_slider.hpp"

#include <algorithm>

namespace qoraudiofiltersui {

namespace {

using qoraudiofilters::SingleBandCompressor;

const EditorClassRegistration
    registration("TubeModeledComp", [](std::shared_ptr<AudioFilter> filter) {
        return IntrusivePtr<AudioFilterEditorViewBase>(
            TubeModeledCompEditorView::Create(std::move(filter)));
    });

constexpr const char* kEditNumbers[SingleBandCompressor::kParameterCount] = {
    "Threshold", "Ratio", "Attack", "Release", "OutputGain"};

qorui::UI_LevelMeterView& Meter(const MarlTessAudioFilterEditorView& view, const char* identifier) {
    const IntrusivePtr<qormarltess::UI_QORTessRoot> root = view.GetTessRoot();
    auto* meter = root ? dynamic_cast<qorui::UI_LevelMeterView*>(
                             root->GetTessViewHolder().GetControl(identifier).get())
                       : nullptr;
    if (!meter)
        qorcore::config::DoThrowNullPtrException(identifier);
    return *meter;
}

} // namespace

IntrusivePtr<TubeModeledCompEditorView>
TubeModeledCompEditorView::Create(std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<TubeModeledCompEditorView>(
        new TubeModeledCompEditorView(std::move(filter)));
}

TubeModeledCompEditorView::TubeModeledCompEditorView(std::shared_ptr<AudioFilter> filter)
    : MarlTessAudioFilterEditorView(filter, GetLibraryDrawSupplier(), "TubeModeledCompressor",
                                    GetLibraryResourceManager(), true),
      compressor_(std::dynamic_pointer_cast<SingleBandCompressor>(filter)) {
    if (!compressor_)
        qorcore::config::DoThrowNullPtrException("SingleBandCompressor");
    CreateLayout();
    gainReductionMeter_ = &Meter(*this, "GainReductionMeter");
    outputMeter_ = &Meter(*this, "OutputMeter");
    for (int index = 0; index < SingleBandCompressor::kParameterCount; ++index) {
        IntrusivePtr<EditNumber> number = HookupEditNumber(kEditNumbers[index], index);
        if (index == SingleBandCompressor::kOutputGain)
            outputGainNumber_ = number;
    }
    outputGainSlider_ = HookupSlider("OutputGainSlider", SingleBandCompressor::kOutputGain);
    SetupMeters();
    EnableMeters();
}

TubeModeledCompEditorView::~TubeModeledCompEditorView() {
    DisableMeters();
}

void TubeModeledCompEditorView::OnEditNumberInteractiveChange(
    const qorui::UI_InteractiveControlChangedMessage& message, IntrusivePtr<EditNumber> control,
    int index) {
    MarlTessAudioFilterEditorView::OnEditNumberInteractiveChange(message, std::move(control),
                                                                 index);
    if (index == SingleBandCompressor::kOutputGain && outputGainSlider_)
        UpdateSlider(outputGainSlider_, index);
}

void TubeModeledCompEditorView::UpdateEditNumber(IntrusivePtr<EditNumber> control, int index) {
    MarlTessAudioFilterEditorView::UpdateEditNumber(control, index);
    if (index == SingleBandCompressor::kOutputGain && outputGainSlider_)
        UpdateSlider(outputGainSlider_, index);
}

void TubeModeledCompEditorView::OnSliderInteractiveChange(
    const qorui::UI_InteractiveControlChangedMessage& message,
    IntrusivePtr<qorui::UI_Slider> control, int index) {
    SendInteractiveChange(message.GetChangeMessage(), index, float(1.0 - control->GetValue()));
    if (outputGainNumber_)
        MarlTessAudioFilterEditorView::UpdateEditNumber(outputGainNumber_, index);
}

void TubeModeledCompEditorView::UpdateSlider(IntrusivePtr<qorui::UI_Slider> control, int index) {
    control->SetValue(1.0 - double(GetFilter()->GetParameterValue(index)));
}

void TubeModeledCompEditorView::SetupMeters() {
    gainReductionMeter_->MakeGainReductionMeter();

    outputMeter_->MakeOutputMeter(GetFilter()->GetNumberOfOutputChannels());
}

void TubeModeledCompEditorView::EnableMeters() {
    // The readers run on the process thread while the compressor works through its messages.
    SingleBandCompressor* compressor = compressor_.get();
    gainReductionMessage_ = std::make_shared<qoraudiotoolkit::GainReductionMeterMessage>(
        compressor_, [compressor] { return compressor->GetGainReduction(); });
    levelMessage_ = std::make_shared<qoraudiotoolkit::LevelMeterMessage>(
        compressor_,
        [compressor](float* levels, std::size_t count) { compressor->GetLevels(levels, count); },
        compressor->GetChannelCount());
    gainReductionConnection_ = gainReductionMessage_->ConnectMeterDataChanged([this](float db) {
        if (!GetFilter()->IsSuspended())
            gainReductionMeter_->SetLevel(
                std::vector<float>{float(qoraudiofilters::dynamics::LinearFromDecibels(db))}, 1,
                false);
    });
    levelConnection_ = levelMessage_->ConnectMeterDataChanged([this](const std::vector<float>& v) {
        if (!GetFilter()->IsSuspended())
            outputMeter_->SetLevel(v);
    });
    compressor_->Post(gainReductionMessage_);
    compressor_->Post(levelMessage_);
}

void TubeModeledCompEditorView::DisableMeters() {
    gainReductionConnection_.Disconnect();
    levelConnection_.Disconnect();
}

} // namespace qoraudiofiltersui
