#include "effects/multi_band_compressor_editor_view.hpp"

#include "audio/dsp/dynamics_toolkit.hpp"
#include "audio/dsp/gain_reduction_meter_message.hpp"
#include "audio/dsp/level_meter_dsp.hpp"
#include "audio/dsp/level_meter_dsp_message.hpp"
#include "audio/dsp/level_meter_message.hpp"
#include "audio/dsp/multi_band_compressor.hpp"
#include "audio/dsp/spectrum_meter_message.hpp"
#include "controls/color_view.hpp"
#include "controls/edit_number.hpp"
#include "effects/multi_band_compressor_cutoff_overlay.hpp"
#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "graphs/content_layer.hpp"
#include "graphs/curve_editor.hpp"
#include "graphs/spectrum_draw.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/tess/ui_qor_tess_root.hpp"
#include "platform/widgets/ui_button.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_slider.hpp"

#include <algorithm>
#include <string>

namespace qoraudiofiltersui {

namespace {

using qoraudiofilters::MultiBandCompressor;
using MBC = MultiBandCompressor;

const EditorClassRegistration
    registration("MultiBandCompressor", [](std::shared_ptr<AudioFilter> filter) {
        return IntrusivePtr<AudioFilterEditorViewBase>(
            MultiBandCompressorEditorView::Create(std::move(filter)));
    });

const qorcore::ColorRGBA kGridColor{0.25f, 0.25f, 0.25f, 1.0f};
const qorcore::ColorRGBA kSilencedColor{0.5f, 0.5f, 0.5f, 1.0f};
constexpr float kLowestHz = 20.0f;
constexpr float kHighestHz = 20000.0f;
constexpr float kSwatchBrightening = 1.2f;
constexpr float kSwatchAlpha = 0.5f;
// The first index of each group of four band parameters that a link moves together.
constexpr int kLinkedGroups[] = {MBC::kThreshold, MBC::kRatio, MBC::kAttack, MBC::kRelease,
                                 MBC::kGain};

/// One band's spectrum on the graph.
class BandSpectrumContentLayer : public ContentLayer {
public:
    explicit BandSpectrumContentLayer(IntrusivePtr<SpectrumDraw> draw) : draw_(std::move(draw)) {}
    void Draw(qorui::penrig::Penrig* penrig, float) override { draw_->Draw(penrig); }
    void SetBounds(const qorcore::RectT<float>& contentRect, float scale) override {
        draw_->SetBounds(contentRect, scale);
    }

private:
    IntrusivePtr<SpectrumDraw> draw_;
};

template <class T>
IntrusivePtr<T> Find(const MarlTessAudioFilterEditorView& view, const std::string& identifier) {
    const IntrusivePtr<qormarltess::UI_QORTessRoot> root = view.GetTessRoot();
    IntrusivePtr<T> control = root ? qorcore::DynamicPointerCast<T>(
                                         root->GetTessViewHolder().GetControl(identifier.c_str()))
                                   : IntrusivePtr<T>();
    if (!control)
        qorcore::config::DoThrowNullPtrException(identifier.c_str());
    return control;
}

std::string BandIdentifier(int band, const char* name) {
    return "CompressorBand" + std::to_string(band + 1) + "_" + name;
}

void SetupLevelMeter(qorui::UI_LevelMeterView& meter, int channels, qorui::LevelMeterKind kind) {
    meter.RemoveAllMeters();
    meter.SetShowRuler(true);
    meter.SetOrientation(qorui::LevelMeterOrientation::kVertical);
    meter.SetShowPeaks(true);
    if (kind == qorui::LevelMeterKind::kGainReduction)
        meter.SetShowClipIndicators(false);
    meter.AddMeter(channels, int(kind), "");
    meter.ArrangeMeters();
}

float LinearFromDecibels(double decibels) {
    return float(qoraudiofilters::dynamics::LinearFromDecibels(decibels));
}

} // namespace

const std::array<qorcore::ColorRGBA, MultiBandCompressorEditorView::kBandCount>
    MultiBandCompressorEditorView::kBandColors{{
        {0.239216f, 0.490196f, 0.588235f, 1.0f},
        {0.839216f, 0.54902f, 0.090196f, 1.0f},
        {0.466667f, 0.588235f, 0.239216f, 1.0f},
        {0.678431f, 0.278431f, 0.647059f, 1.0f},
    }};

IntrusivePtr<MultiBandCompressorEditorView>
MultiBandCompressorEditorView::Create(std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<MultiBandCompressorEditorView>(
        new MultiBandCompressorEditorView(std::move(filter)));
}

MultiBandCompressorEditorView::MultiBandCompressorEditorView(std::shared_ptr<AudioFilter> filter)
    : MarlTessAudioFilterEditorView(filter, GetLibraryDrawSupplier(), "MultiBandCompressor",
                                    GetLibraryResourceManager(), true),
      filter_(std::dynamic_pointer_cast<MultiBandCompressor>(filter)) {
    if (!filter_)
        qorcore::config::DoThrowNullPtrException("MultiBandCompressor");
    CreateLayout();

    overlay_ = qorcore::MakeIntrusive<MultiBandCompressorCutoffOverlay>(filter_);
    curveEditor_ = Find<CurveEditor>(*this, "CurveEditor");
    // The graph has no points of its own: the crossovers are the overlay's.
    curveEditor_->SetMaxPointCount(0);

    for (const char* name : {"Low", "Mid", "High"})
        crossovers_.push_back(HookupEditNumber(name, MBC::kCrossOver + int(crossovers_.size())));

    const int channels = int(std::max<std::size_t>(1, filter_->GetNumberOfInputChannels()));
    bands_.resize(kBandCount);
    for (int b = 0; b < kBandCount; ++b) {
        BandControls& band = bands_[std::size_t(b)];
        band.swatch = Find<ColorView>(*this, BandIdentifier(b, "Swatch"));
        band.solo = HookupButton(BandIdentifier(b, "Solo").c_str(), MBC::kSolo + b);
        band.bypass = HookupButton(BandIdentifier(b, "Bypass").c_str(), MBC::kBypass + b);
        AddParameterObserver(MBC::kSolo + b, [this] { UpdateBandColors(); });
        AddParameterObserver(MBC::kBypass + b, [this] { UpdateBandColors(); });
        band.levelMeter = Find<qorui::UI_LevelMeterView>(*this, BandIdentifier(b, "LevelMeter"));
        SetupLevelMeter(*band.levelMeter, channels, qorui::LevelMeterKind::kInput);
        band.thresholdSlider =
            HookupSlider(BandIdentifier(b, "ThresholdS").c_str(), MBC::kThreshold + b);
        band.gainReductionMeter =
            Find<qorui::UI_LevelMeterView>(*this, BandIdentifier(b, "GainReductionMeter"));
        SetupLevelMeter(*band.gainReductionMeter, 1, qorui::LevelMeterKind::kGainReduction);
        band.gainReductionMeter->SetLevel(1.0f, true); // no reduction until data comes
        band.threshold =
            HookupEditNumber(BandIdentifier(b, "Threshold").c_str(), MBC::kThreshold + b);
        band.gain = HookupEditNumber(BandIdentifier(b, "Gain").c_str(), MBC::kGain + b);
        band.ratio = HookupEditNumber(BandIdentifier(b, "Ratio").c_str(), MBC::kRatio + b);
        band.attack = HookupEditNumber(BandIdentifier(b, "Attack").c_str(), MBC::kAttack + b);
        band.release = HookupEditNumber(BandIdentifier(b, "Release").c_str(), MBC::kRelease + b);

        // The readers run on the process thread while the filter works through its messages.
        MultiBandCompressor* compressor = filter_.get();
        band.levelMessage = std::make_shared<qoraudiotoolkit::LevelMeterMessage>(
            filter_,
            [compressor, b](float* levels, std::size_t count) {
                compressor->GetLevels(b, levels, count);
            },
            std::size_t(channels));
        band.gainReductionMessage = std::make_shared<qoraudiotoolkit::GainReductionMeterMessage>(
            filter_, [compressor, b] { return compressor->GetGainReduction(b); });
    }

    gainSlider_ = HookupSlider("GainS", MBC::kOutputGain);
    levelMeter_ = Find<qorui::UI_LevelMeterView>(*this, "LevelMeter");
    SetupLevelMeter(*levelMeter_,
                    int(std::max<std::size_t>(1, filter_->GetNumberOfOutputChannels())),
                    qorui::LevelMeterKind::kInput);
    gain_ = HookupEditNumber("Gain", MBC::kOutputGain);
    limiterBypass_ = HookupButton("Bypass", MBC::kLimiterBypass);
    limiterThreshold_ = HookupEditNumber("Threshold", MBC::kLimiterThreshold);
    limiterMargin_ = HookupEditNumber("Margin", MBC::kLimiterMargin);
    limiterAttack_ = HookupEditNumber("Attack", MBC::kLimiterAttack);
    limiterRelease_ = HookupEditNumber("Release", MBC::kLimiterRelease);
    spectrumOnInput_ = HookupCheckbox("SpectrumOnInput", MBC::kSpectrumOnInput);

    // A small enum in quarters: the box shows only mode 1, and writes 1 or 0.
    brickwallLimiter_ = Find<qorui::UI_Checkbox>(*this, "BrickwallLimiter");
    brickwallLimiter_->NotifyWhenChanged([this](const qorui::UI_ControlChangedMessage&) {
        filter_->SetParameterValue(MBC::kBrickwallLimiter,
                                   brickwallLimiter_->IsChecked() ? 0.25f : 0.0f);
    });
    UpdateBrickwallCheckbox();
    AddParameterObserver(MBC::kBrickwallLimiter, [this] { UpdateBrickwallCheckbox(); });
    linkBandControls_ = HookupCheckbox("LinkBandControls", MBC::kLinkBandControls);

    UpdateBandColors();
    EnableMeters(true);

    UpdateGridColor();
    overlay_->SetFrame(curveEditor_->GetContentRect());
    overlay_->UI_SetVisible(true);
    curveEditor_->ChildPushBack(overlay_);
    for (int i = 0; i < 3; ++i)
        AddParameterObserver(MBC::kCrossOver + i, [this] {
            overlay_->ReloadCutoffs();
            overlay_->EmitInvalidate();
        });
    UpdateCrossoverLimits();
}

MultiBandCompressorEditorView::~MultiBandCompressorEditorView() {
    // The process thread must stop feeding before the receivers go.
    EnableMeters(false);
}

qorcore::ColorRGBA MultiBandCompressorEditorView::GetSwatchColor(int band) const {
    return bands_.at(std::size_t(band)).swatch->GetValue();
}

void MultiBandCompressorEditorView::UpdateGridColor() {
    curveEditor_->SetGridColor(kGridColor);
}

void MultiBandCompressorEditorView::OnThemeChanged() {
    MarlTessAudioFilterEditorView::OnThemeChanged();
    UpdateGridColor();
}

void MultiBandCompressorEditorView::UpdateBrickwallCheckbox() {
    const float mode = filter_->GetParameterValue(MBC::kBrickwallLimiter);
    brickwallLimiter_->SetValue(int(mode * 4.0f) == 1);
}

void MultiBandCompressorEditorView::UpdateBandColors() {
    std::array<bool, kBandCount> solo{};
    bool anySolo = false;
    for (int b = 0; b < kBandCount; ++b) {
        solo[std::size_t(b)] = filter_->GetParameterValue(MBC::kSolo + b) >= 0.5f;
        anySolo = anySolo || solo[std::size_t(b)];
    }
    for (int b = 0; b < kBandCount; ++b) {
        const bool bypassed = filter_->GetParameterValue(MBC::kBypass + b) >= 0.5f;
        const qorcore::ColorRGBA& c = kBandColors[std::size_t(b)];
        const qorcore::ColorRGBA shown =
            bypassed || (anySolo && !solo[std::size_t(b)])
                ? kSilencedColor
                : qorcore::ColorRGBA{std::min(1.0f, c.red * kSwatchBrightening),
                                     std::min(1.0f, c.green * kSwatchBrightening),
                                     std::min(1.0f, c.blue * kSwatchBrightening), kSwatchAlpha};
        bands_[std::size_t(b)].swatch->SetValue(shown);
    }
}

void MultiBandCompressorEditorView::UpdateCrossoverLimits() {
    const float gap = overlay_->GetMinimumGap();
    std::vector<float> c;
    filter_->GetCrossOver()->GetCutoffs(c);
    using CrossOver = MBC::CrossOver;
    crossovers_[0]->SetMinValue(kLowestHz);
    crossovers_[0]->SetMaxValue(CrossOver::TrimCutoffFreq(c, 0, kHighestHz, gap));
    crossovers_[1]->SetMinValue(CrossOver::TrimCutoffFreq(c, 1, kLowestHz, gap));
    crossovers_[1]->SetMaxValue(CrossOver::TrimCutoffFreq(c, 1, kHighestHz, gap));
    crossovers_[2]->SetMinValue(CrossOver::TrimCutoffFreq(c, 2, kLowestHz, gap));
    crossovers_[2]->SetMaxValue(kHighestHz);
}

void MultiBandCompressorEditorView::OnEditNumberParameterChanged(int index,
                                                                 IntrusivePtr<EditNumber> control) {
    if (!inLimitUpdate_) {
        inLimitUpdate_ = 1;
        // Only the low and middle crossovers refresh the limits; the high one's move shows in
        // the next move of another.
        if (index == MBC::kCrossOver || index == MBC::kCrossOver + 1)
            UpdateCrossoverLimits();
        inLimitUpdate_ = 0;
    }
    MarlTessAudioFilterEditorView::OnEditNumberParameterChanged(index, std::move(control));
}

void MultiBandCompressorEditorView::OnEditNumberInteractiveChange(
    const qorui::UI_InteractiveControlChangedMessage& message, IntrusivePtr<EditNumber> control,
    int index) {
    const float before = filter_->GetParameterValue(index);
    MarlTessAudioFilterEditorView::OnEditNumberInteractiveChange(message, std::move(control),
                                                                 index);
    if (index >= 1 && index <= 20 && filter_->GetParameterValue(MBC::kLinkBandControls) >= 0.5f)
        ApplyLink(index, filter_->GetParameterValue(index) - before);
}

void MultiBandCompressorEditorView::OnSliderInteractiveChange(
    const qorui::UI_InteractiveControlChangedMessage& message,
    IntrusivePtr<qorui::UI_Slider> control, int index) {
    const float before = filter_->GetParameterValue(index);
    SendInteractiveChange(message.GetChangeMessage(), index, float(1.0 - control->GetValue()));
    if (index >= 1 && index <= 20 && filter_->GetParameterValue(MBC::kLinkBandControls) >= 0.5f)
        ApplyLink(index, filter_->GetParameterValue(index) - before);
}

void MultiBandCompressorEditorView::UpdateSlider(IntrusivePtr<qorui::UI_Slider> control,
                                                 int index) {
    control->SetValue(1.0 - double(filter_->GetParameterValue(index)));
}

void MultiBandCompressorEditorView::ApplyLink(int index, float delta) {
    if (delta == 0.0f || std::isnan(delta))
        return;
    for (const int first : kLinkedGroups) {
        if (index < first || index >= first + kBandCount)
            continue;
        for (int member = first; member < first + kBandCount; ++member)
            if (member != index)
                filter_->SetParameterQuietly(
                    member, std::clamp(filter_->GetParameterValue(member) + delta, 0.0f, 1.0f));
    }
}

void MultiBandCompressorEditorView::EnableMeters(bool enable) {
    if (!enable) {
        for (std::size_t b = 0; b < bands_.size(); ++b) {
            if (b < bandSpectra_.size())
                bandSpectra_[b].connection.Disconnect();
            bands_[b].levelConnection.Disconnect();
            bands_[b].gainReductionConnection.Disconnect();
        }
        outputConnection_.Disconnect();
        MBC::EnableMetersMessage::CreateAndPost(filter_, false);
        return;
    }
    const MBC::Meters meters = MBC::EnableMetersMessage::CreateAndPost(filter_, true);
    bandSpectra_.resize(kBandCount);
    for (int b = 0; b < kBandCount && std::size_t(b) < meters.bands.size(); ++b) {
        BandSpectrum& spectrum = bandSpectra_[std::size_t(b)];
        spectrum.draw = qorcore::MakeIntrusive<SpectrumDraw>(filter_->GetSampleRate());
        spectrum.message =
            std::make_shared<qoraudiotoolkit::SpectrumMeterMessage>(meters.bands[std::size_t(b)]);
        spectrum.draw->SetShowPeakHold(false);
        spectrum.draw->GetFreqScale()->SetNumChannels(1);
        spectrum.draw->GetFreqScale()->SetTotalFreqRange({kLowestHz, kHighestHz});
        spectrum.draw->SetFreqRange({kLowestHz, kHighestHz});
        spectrum.draw->GetFreqScale()->SetScaleType(kLogScale);
        spectrum.draw->SetDBRange({-80.0f, 0.0f});
        spectrum.draw->SetFill(true);
        spectrum.draw->SetCustomColor(kBandColors[std::size_t(b)]);
        spectrum.draw->SetUseCustomColor(true);
        curveEditor_->AddContentLayer(
            qorcore::MakeIntrusive<BandSpectrumContentLayer>(spectrum.draw));
        spectrum.connection = spectrum.message->ConnectMeterDataChanged(
            [this, b](unsigned int size, const std::vector<float>& data, unsigned int count,
                      qoraudiotoolkit::SpectrumType type, bool update) {
                if (filter_->IsSuspended() || b < 0 || std::size_t(b) >= bandSpectra_.size())
                    return;
                bandSpectra_[std::size_t(b)].draw->SetSpectrumData(size, data, count, type, update);
                curveEditor_->InvalidateContentRect();
            });
        filter_->Post(spectrum.message);

        BandControls& band = bands_[std::size_t(b)];
        band.levelConnection =
            band.levelMessage->ConnectMeterDataChanged([this, b](const std::vector<float>& v) {
                qorui::UI_LevelMeterView& meter = *bands_[std::size_t(b)].levelMeter;
                std::vector<float> levels = v;
                if (filter_->IsSuspended())
                    std::fill(levels.begin(), levels.end(),
                              LinearFromDecibels(meter.GetMinDBValue()));
                meter.SetLevel(levels, true);
            });
        band.gainReductionConnection =
            band.gainReductionMessage->ConnectMeterDataChanged([this, b](float decibels) {
                bands_[std::size_t(b)].gainReductionMeter->SetLevel(
                    std::vector<float>{LinearFromDecibels(decibels)}, true);
            });
        filter_->Post(band.levelMessage);
        filter_->Post(band.gainReductionMessage);
    }
    if (meters.output) {
        outputLevelMeter_ = meters.output;
        outputMessage_ = std::make_shared<qoraudiotoolkit::LevelMeterDSPMessage>(meters.output, 0u);
        outputConnection_ = outputMessage_->ConnectMeterDataChanged(
            [this](const std::vector<qoraudiotoolkit::LevelMeterDSP::Reading>& readings) {
                std::vector<float> levels(readings.size());
                for (std::size_t c = 0; c < readings.size(); ++c)
                    levels[c] = readings[c].peak;
                if (filter_->IsSuspended())
                    levelMeter_->ResetPeaksAndValleys();
                levelMeter_->SetLevel(levels);
            });
        filter_->Post(outputMessage_);
    }
}

} // namespace qoraudiofiltersui
