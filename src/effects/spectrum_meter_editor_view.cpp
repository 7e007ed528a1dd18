#include "effects/spectrum_meter_editor_view.hpp"

#include "audio/dsp/spectrum_meter.hpp"
#include "controls/edit_number.hpp"
#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "graphs/curve_editor.hpp"
#include "graphs/spectrum_draw.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/host/audio_filter_parameter_info.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/tess/ui_qor_tess_root.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_popup.hpp"

#include <algorithm>
#include <cmath>
#include <span>

namespace qoraudiofiltersui {

namespace {

using qoraudiofilters::SpectrumMeter;

const EditorClassRegistration
    registration("SpectrumMeter", [](std::shared_ptr<AudioFilter> filter) {
        return IntrusivePtr<AudioFilterEditorViewBase>(
            SpectrumMeterEditorView::Create(std::move(filter)));
    });

const qorcore::ColorRGBA kSpectrumColor{0.941176f, 0.588235f, 0.2f, 1.0f};
const qorcore::ColorRGBA kGridColor{0.25f, 0.25f, 0.25f, 1.0f};

// The plain values of the rows of the popups that show real values.
constexpr double kOverlapRows[] = {0, 25, 50, 75};                         // percent
constexpr double kWindowSizeRows[] = {0, 100, 250, 500, 1000, 2000, 5000}; // milliseconds

std::span<const double> RowsOf(int index) {
    switch (index) {
    case SpectrumMeter::kOverlap: return kOverlapRows;
    case SpectrumMeter::kWindowSize: return kWindowSizeRows;
    default: return {};
    }
}

/// Bands filled in the colour of the lines, each outlined in a darker shade so that neighbours
/// stay apart.
class SpectrumMeterDraw : public SpectrumDraw {
public:
    using SpectrumDraw::SpectrumDraw;

    qorcore::ColorRGBA GetThirdOctaveFillColor() const override { return GetLinearColor(); }
    qorcore::ColorRGBA GetThirdOctaveOutlineColor() const override { return Outline(); }
    qorcore::ColorRGBA GetCriticalFillColor() const override { return GetLinearColor(); }
    qorcore::ColorRGBA GetCriticalOutlineColor() const override { return Outline(); }

private:
    qorcore::ColorRGBA Outline() const {
        const qorcore::ColorRGBA fill = GetLinearColor();
        return {fill.red * 0.55f, fill.green * 0.55f, fill.blue * 0.55f, fill.alpha};
    }
};

/// A linear ruler that looks like `model`.
IntrusivePtr<qorui::RulerBase> MakeLinearRuler(const qorui::RulerBase& model) {
    auto ruler = qorcore::MakeIntrusive<qorui::LinearRuler>();
    ruler->SetVertical(model.IsVertical());
    ruler->SetStepFactor(model.GetStepFactor());
    ruler->SetFontSize(model.GetFontSize());
    ruler->SetLabel1(model.GetLabel1());
    ruler->SetLabel2(model.GetLabel2());
    ruler->SetMajorTickExtent(model.GetMajorTickExtent().start, model.GetMajorTickExtent().end);
    ruler->SetMinorTickExtent(model.GetMinorTickExtent().start, model.GetMinorTickExtent().end);
    ruler->SetTextNearTickStart(false);
    ruler->HideTruncatedStrings(true);
    return ruler;
}

} // namespace

IntrusivePtr<SpectrumMeterEditorView>
SpectrumMeterEditorView::Create(std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<SpectrumMeterEditorView>(new SpectrumMeterEditorView(std::move(filter)));
}

SpectrumMeterEditorView::SpectrumMeterEditorView(std::shared_ptr<AudioFilter> filter)
    : MarlTessAudioFilterEditorView(filter, GetLibraryDrawSupplier(), "SpectrumMeter",
                                    GetLibraryResourceManager(), true) {
    analyserShared_ = std::dynamic_pointer_cast<SpectrumMeter>(filter);
    analyser_ = analyserShared_.get();
    if (!analyser_)
        qorcore::config::DoThrowNullPtrException("SpectrumMeter");
    spectrumDraw_ = qorcore::MakeIntrusive<SpectrumMeterDraw>(analyser_->GetSampleRate());

    CreateLayout();
    const IntrusivePtr<qormarltess::UI_QORTessRoot> root = GetTessRoot();
    if (!root)
        qorcore::config::DoThrowNullPtrException("UI_QORTessRoot");
    curveEditor_ = qorcore::DynamicPointerCast<CurveEditor>(
        root->GetTessViewHolder().GetControl("CurveEditor"));
    if (!curveEditor_ || !curveEditor_->GetHorizontalRuler())
        qorcore::config::DoThrowNullPtrException("CurveEditor");

    const float nyquist = analyser_->GetSampleRate() / 2.0f;
    const qorcore::value_range<float> frequencies{kLowestFrequency, nyquist};
    spectrumDraw_->GetFreqScale()->SetNumChannels(1);
    spectrumDraw_->GetFreqScale()->SetTotalFreqRange(frequencies);
    spectrumDraw_->SetFreqRange(frequencies);
    spectrumDraw_->GetFreqScale()->SetScaleType(IsOn(SpectrumMeter::kLogScale) ? kLogScale
                                                                               : kLinearScale);
    spectrumDraw_->SetCustomColor(kSpectrumColor);
    spectrumDraw_->SetUseCustomColor(true);
    // A graph to read, not to draw on: a click adds no point.
    curveEditor_->SetMaxPointCount(0);
    curveEditor_->AddContentLayer(qorcore::MakeIntrusive<SpectrumMeterContentLayer>(spectrumDraw_));

    HookupPopup("FFTSize", SpectrumMeter::kFFTSize);
    HookupPopup("SpectrumType", SpectrumMeter::kSpectrumType);
    HookupPopup("FFTWindow", SpectrumMeter::kWindow);
    HookupPopup("Overlap", SpectrumMeter::kOverlap);
    HookupPopup("WindowSize", SpectrumMeter::kWindowSize);
    HookupCheckbox("FlipChannelPhase", SpectrumMeter::kFlipChannelPhase);
    HookupCheckbox("Fill", SpectrumMeter::kFill);
    HookupCheckbox("ShowPeakHold", SpectrumMeter::kShowPeakHold);
    HookupEditNumber("PeakHoldTime", SpectrumMeter::kPeakHoldTime);
    HookupCheckbox("LogScale", SpectrumMeter::kLogScale);

    // The display as the parameters stand; their observers take over from here.
    spectrumDraw_->SetFill(IsOn(SpectrumMeter::kFill));
    spectrumDraw_->SetShowPeakHold(IsOn(SpectrumMeter::kShowPeakHold));
    UpdatePeakHoldTime();
    logRuler_ = curveEditor_->GetHorizontalRuler();
    linearRuler_ = MakeLinearRuler(*logRuler_);
    UpdateScale();
    rangeConnection_ = curveEditor_->ConnectCurrentRangeChanged([this] {
        UpdateSpectrumRanges();
        curveEditor_->InvalidateContentRect();
    });
    meter_ = std::make_unique<OwnedSpectrumMeter>(
        analyserShared_, analyser_->GetSpectrumMeter(),
        [analyser = analyser_](bool active) { analyser->SetMeterActive(active); }, spectrumDraw_,
        curveEditor_.get());
    meter_->Enable();
}

// The meter goes first: the process thread stops feeding before the receiver goes.
SpectrumMeterEditorView::~SpectrumMeterEditorView() {
    meter_.reset();
}

bool SpectrumMeterEditorView::IsOn(int index) const {
    return GetFilter()->GetParameterValue(index) >= 0.5f;
}

void SpectrumMeterEditorView::OnCheckboxParameterChanged(int index,
                                                         IntrusivePtr<qorui::UI_Checkbox> control) {
    MarlTessAudioFilterEditorView::OnCheckboxParameterChanged(index, std::move(control));
    switch (index) {
    case SpectrumMeter::kShowPeakHold: spectrumDraw_->SetShowPeakHold(IsOn(index)); break;
    case SpectrumMeter::kFill: spectrumDraw_->SetFill(IsOn(index)); break;
    case SpectrumMeter::kLogScale: UpdateScale(); break;
    default: return;
    }
    curveEditor_->InvalidateContentRect();
}

void SpectrumMeterEditorView::OnEditNumberParameterChanged(int index,
                                                           IntrusivePtr<EditNumber> control) {
    MarlTessAudioFilterEditorView::OnEditNumberParameterChanged(index, std::move(control));
    if (index == SpectrumMeter::kPeakHoldTime)
        UpdatePeakHoldTime();
}

void SpectrumMeterEditorView::OnPopupChanged(const qorui::UI_ControlChangedMessage& message,
                                             IntrusivePtr<qorui::UI_Popup> control, int index) {
    const std::span<const double> rows = RowsOf(index);
    if (rows.empty()) {
        MarlTessAudioFilterEditorView::OnPopupChanged(message, std::move(control), index);
        return;
    }
    const auto info = GetFilter()->GetParameterInfo(index);
    const int row = control->GetSelectedIndex();
    if (info && row >= 0 && std::size_t(row) < rows.size())
        GetFilter()->SetParameterValue(index,
                                       info->NormalisedFromPlain(float(rows[std::size_t(row)])));
}

void SpectrumMeterEditorView::UpdatePopup(IntrusivePtr<qorui::UI_Popup> control, int index) {
    const std::span<const double> rows = RowsOf(index);
    if (rows.empty()) {
        MarlTessAudioFilterEditorView::UpdatePopup(std::move(control), index);
        return;
    }
    const auto info = GetFilter()->GetParameterInfo(index);
    if (!info)
        return;
    const double plain = info->PlainFromNormalised(GetFilter()->GetParameterValue(index));
    // Within half a unit: the float of the normalised value decodes a little off.
    const auto found = std::find_if(rows.begin(), rows.end(),
                                    [plain](double row) { return std::abs(row - plain) < 0.5; });
    control->SetValue(found == rows.end() ? -1.0 : double(found - rows.begin()));
}

void SpectrumMeterEditorView::OnThemeChanged() {
    MarlTessAudioFilterEditorView::OnThemeChanged();
    if (curveEditor_)
        curveEditor_->SetGridColor(kGridColor);
}

void SpectrumMeterEditorView::UpdatePeakHoldTime() {
    // The painter decides what it makes of the time (see SpectrumDraw::SetPeakHoldTime).
    if (const auto info = GetFilter()->GetParameterInfo(SpectrumMeter::kPeakHoldTime))
        spectrumDraw_->SetPeakHoldTime(double(info->PlainFromNormalised(
            GetFilter()->GetParameterValue(SpectrumMeter::kPeakHoldTime))));
}

void SpectrumMeterEditorView::UpdateScale() {
    const bool logarithmic = IsOn(SpectrumMeter::kLogScale);
    spectrumDraw_->GetFreqScale()->SetScaleType(logarithmic ? kLogScale : kLinearScale);
    const IntrusivePtr<qorui::RulerBase>& wanted = logarithmic ? logRuler_ : linearRuler_;
    if (wanted && curveEditor_->GetHorizontalRuler() != wanted) {
        curveEditor_->SetRulers(wanted, curveEditor_->GetVerticalRuler());
        // Hands the range shown to the new ruler.
        curveEditor_->SetCurrentRange(
            curveEditor_->GetHorizontalStart(), curveEditor_->GetHorizontalEnd(),
            curveEditor_->GetVerticalStart(), curveEditor_->GetVerticalEnd());
    }
    UpdateSpectrumRanges();
}

void SpectrumMeterEditorView::UpdateSpectrumRanges() {
    const double top = curveEditor_->GetVerticalStart();
    const double bottom = curveEditor_->GetVerticalEnd();
    spectrumDraw_->SetDBRange({float(std::min(top, bottom)), float(std::max(top, bottom))});
    // Also lays the lines out again for the scale.
    spectrumDraw_->SetFreqRange(
        {float(curveEditor_->GetHorizontalStart()), float(curveEditor_->GetHorizontalEnd())});
}

} // namespace qoraudiofiltersui
