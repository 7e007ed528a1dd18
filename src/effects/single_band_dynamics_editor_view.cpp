#include "effects/single_band_dynamics_editor_view.hpp"

#include "audio/dsp/dynamics_toolkit.hpp"
#include "audio/dsp/single_band_dynamics.hpp"
#include "audio/dsp/single_band_dynamics_meter_message.hpp"
#include "controls/edit_number.hpp"
#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "graphs/curve_editor.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/skins/skins.hpp"
#include "platform/tess/ui_qor_tess_root.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_slider.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qoraudiofiltersui {

namespace {

using qoraudiofilters::SingleBandDynamics;

const EditorClassRegistration
    registration("SingleBandDynamics", [](std::shared_ptr<AudioFilter> filter) {
        return IntrusivePtr<AudioFilterEditorViewBase>(
            SingleBandDynamicsEditorView::Create(std::move(filter)));
    });

const qorcore::ColorRGBA kCurveColor{0.262745f, 0.588235f, 0.850980f, 1.0f};
const qorcore::ColorRGBA kReferenceColor{0.5f, 0.5f, 0.5f, 0.7f};
constexpr float kFillAlpha = 0.25f;
constexpr float kCurveWidth = 1.5f;
// Lines far outside the content are held a few heights away, so that their direction stays.
constexpr float kOvershoot = 4.0f;

// The parameters the static curve depends on.
constexpr int kCurveParameters[] = {
    SingleBandDynamics::kLimiterRatio,    SingleBandDynamics::kLimiterThreshold,
    SingleBandDynamics::kCompressorRatio, SingleBandDynamics::kCompressorThreshold,
    SingleBandDynamics::kGateRatio,       SingleBandDynamics::kGateThreshold,
    SingleBandDynamics::kOutputGain,      SingleBandDynamics::kAutoMakeupGain};

constexpr const char* kEditNumbers[SingleBandDynamics::kOutputGain + 1] = {
    "LimRatio",      "LimThreshold", "LimAttack",   "LimRelease", "CompRatio",
    "CompThreshold", "CompAttack",   "CompRelease", "GateRatio",  "GateThreshold",
    "GateAttack",    "GateRelease",  "OutputGain"};

template <class T>
T& Control(const MarlTessAudioFilterEditorView& view, const char* identifier) {
    const IntrusivePtr<qormarltess::UI_QORTessRoot> root = view.GetTessRoot();
    T* control =
        root ? dynamic_cast<T*>(root->GetTessViewHolder().GetControl(identifier).get()) : nullptr;
    if (!control)
        qorcore::config::DoThrowNullPtrException(identifier);
    return *control;
}

/// Where a pair of values lies on the graph, between whole pixels as the graph's own curves
/// are, so that slopes are smooth at every scale.
qorcore::PointT<float> PixelCentre(const CurveEditor& editor, std::pair<double, double> values) {
    const auto& horizontal = editor.GetHorizontalRuler();
    const auto& vertical = editor.GetVerticalRuler();
    return {(horizontal ? float(horizontal->GetPixelFromValueF(values.first))
                        : editor.GetPixelForHorizontalValue(values.first)) +
                0.5f,
            (vertical ? float(vertical->GetPixelFromValueF(values.second))
                      : editor.GetPixelForVerticalValue(values.second)) +
                0.5f};
}

float HalfPixel(float position) {
    return std::round(2.0f * position) * 0.5f;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// SingleBandDynamicsContentLayer

SingleBandDynamicsContentLayer::SingleBandDynamicsContentLayer(Mapping mapping,
                                                               const qorcore::ColorRGBA& lineColor)
    : mapping_(std::move(mapping)),
      lineColor_(lineColor), fillColor_{lineColor.red, lineColor.green, lineColor.blue, kFillAlpha},
      level_(-std::numeric_limits<double>::infinity()) {}

void SingleBandDynamicsContentLayer::SetBounds(const qorcore::RectT<float>& contentRect, float) {
    bounds_ = contentRect;
}

void SingleBandDynamicsContentLayer::SetCurve(std::vector<std::pair<double, double>> curve) {
    curve_ = std::move(curve);
}

void SingleBandDynamicsContentLayer::Draw(qorui::penrig::Penrig* penrig, float) {
    if (!penrig || !mapping_ || curve_.size() < 2 || !(bounds_.width > 0.0f) ||
        !(bounds_.height > 0.0f))
        return;
    qorui::penrig::Penrig& p = *penrig;
    qorui::penrig::Penrig::StateSaver saver(p);
    p.SetAntialias(true);
    const float top = bounds_.y - kOvershoot * bounds_.height;
    const float bottom = bounds_.Bottom() + kOvershoot * bounds_.height;
    const auto at = [&](const std::pair<double, double>& point) {
        qorcore::PointT<float> pixel = mapping_(point);
        pixel.y = std::clamp(pixel.y, top, bottom);
        return pixel;
    };

    // The line of no change, for reference.
    const double first = curve_.front().first;
    const double last = curve_.back().first;
    const qorcore::PointT<float> from = at({first, first});
    const qorcore::PointT<float> to = at({last, last});
    p.SetPen(1.0f, kReferenceColor);
    p.SetDash({3.0f, 3.0f});
    p.DrawLine(from.x, from.y, to.x, to.y);
    p.SetDash({});

    // Under the curve from the left edge to the level detected now.
    const float levelX = std::isfinite(level_) ? mapping_({level_, 0.0}).x : bounds_.x;
    if (levelX > bounds_.x) {
        p.NewPath();
        bool started = false;
        qorcore::PointT<float> previous{};
        float endX = bounds_.x;
        for (const auto& point : curve_) {
            if (std::isnan(point.second))
                continue;
            qorcore::PointT<float> pixel = at(point);
            if (started && pixel.x > levelX) {
                const float t = (levelX - previous.x) / (pixel.x - previous.x);
                pixel = {levelX, previous.y + t * (pixel.y - previous.y)};
            }
            if (!started)
                p.MoveTo(pixel.x, pixel.y);
            else
                p.LineTo(pixel.x, pixel.y);
            started = true;
            previous = pixel;
            endX = pixel.x;
            if (pixel.x >= levelX)
                break;
        }
        if (started) {
            p.LineTo(endX, bounds_.Bottom());
            p.LineTo(at(curve_.front()).x, bounds_.Bottom());
            p.ClosePath();
            p.SetColor(fillColor_);
            p.Fill();
        }
    }

    // The curve itself; a value that is no number leaves a gap.
    p.NewPath();
    bool drawing = false;
    for (const auto& point : curve_) {
        if (std::isnan(point.second)) {
            drawing = false;
            continue;
        }
        const qorcore::PointT<float> pixel = at(point);
        if (drawing)
            p.LineTo(pixel.x, pixel.y);
        else
            p.MoveTo(pixel.x, pixel.y);
        drawing = true;
    }
    p.SetPen(kCurveWidth, lineColor_);
    p.SetLineJoin(qorui::penrig::LineJoin::kRound);
    p.Stroke();
}

// ---------------------------------------------------------------------------------------------
// SingleBandDynamicsEditorView

IntrusivePtr<SingleBandDynamicsEditorView>
SingleBandDynamicsEditorView::Create(std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<SingleBandDynamicsEditorView>(
        new SingleBandDynamicsEditorView(std::move(filter)));
}

SingleBandDynamicsEditorView::SingleBandDynamicsEditorView(std::shared_ptr<AudioFilter> filter)
    : MarlTessAudioFilterEditorView(filter, GetLibraryDrawSupplier(), "SingleBandDynamics",
                                    GetLibraryResourceManager(), true) {
    dynamicsShared_ = std::dynamic_pointer_cast<SingleBandDynamics>(filter);
    dynamics_ = dynamicsShared_.get();
    if (!dynamics_)
        qorcore::config::DoThrowNullPtrException("SingleBandDynamics");
    meterMessage_ = std::make_shared<qoraudiofilters::singlebanddynamics::MeterMessage>(dynamics_);

    CreateLayout();
    if (const IntrusivePtr<qormarltess::UI_QORTessRoot> root = GetTessRoot())
        curveEditor_ = qorcore::DynamicPointerCast<CurveEditor>(
            root->GetTessViewHolder().GetControl("CurveEditor"));
    if (!curveEditor_)
        qorcore::config::DoThrowNullPtrException("CurveEditor");
    gainReductionMeter_ = &Control<qorui::UI_LevelMeterView>(*this, "GainReductionMeter");
    outputMeter_ = &Control<qorui::UI_LevelMeterView>(*this, "OutputMeter");

    // A graph of the effect's curve: nothing to place on it.
    curveEditor_->SetMaxPointCount(0);
    curveEditor_->SetBackgroundColor(qorcore::ColorRGBA{0.0f, 0.0f, 0.0f, 1.0f});
    curveEditor_->SetRulersSupportZooming(true);
    UpdateColors();
    ApplyDisplayRanges();
    CurveEditor* editor = curveEditor_.get();
    layer_ = qorcore::MakeIntrusive<SingleBandDynamicsContentLayer>(
        [editor](std::pair<double, double> values) { return PixelCentre(*editor, values); },
        kCurveColor);
    curveEditor_->AddContentLayer(layer_);
    rangeConnection_ = curveEditor_->ConnectCurrentRangeChanged([this] { OnRangeChanged(); });

    for (int index = 0; index <= SingleBandDynamics::kOutputGain; ++index) {
        IntrusivePtr<EditNumber> number = HookupEditNumber(kEditNumbers[index], index);
        if (index == SingleBandDynamics::kOutputGain)
            outputGainNumber_ = number;
    }
    HookupSlider("OutputGainSlider", SingleBandDynamics::kOutputGain);
    HookupCheckbox("AutoMakeupGain", SingleBandDynamics::kAutoMakeupGain);
    HookupCheckbox("RMSDetection", SingleBandDynamics::kRMSDetection);
    HookupCheckbox("AutoSmoothing", SingleBandDynamics::kAutoSmoothing);
    for (int index : kCurveParameters)
        AddParameterObserver(index, [this] { curveDirty_ = true; });

    SetupMeters();
    UpdateCurve();
    EnableMeter();
}

SingleBandDynamicsEditorView::~SingleBandDynamicsEditorView() {
    // The process thread must stop gathering before the receiver goes.
    DisableMeter();
}

void SingleBandDynamicsEditorView::SyncParameters() {
    curveDirty_ = false;
    MarlTessAudioFilterEditorView::SyncParameters();
    if (curveDirty_)
        UpdateCurve();
    curveDirty_ = false;
}

void SingleBandDynamicsEditorView::UpdateColors() {
    curveEditor_->SetGridColor(qorui::skins::GetSpectrumGrayColor(2));
    curveEditor_->SetRulerBackgroundColor(qorui::skins::GetContentBackgroundColor());
}

void SingleBandDynamicsEditorView::OnThemeChanged() {
    MarlTessAudioFilterEditorView::OnThemeChanged();
    UpdateColors();
}

void SingleBandDynamicsEditorView::ApplyDisplayRanges() {
    const SingleBandDynamics::DisplayRange horizontal = dynamics_->GetHorizontalDisplayRange();
    const SingleBandDynamics::DisplayRange vertical = dynamics_->GetVerticalDisplayRange();
    const SingleBandDynamics::DisplayRange bounds = dynamics_->GetMaximumGainDisplayRange();
    applyingRanges_ = true;
    // The output axis runs down from its top.
    curveEditor_->SetRangeBounds(SingleBandDynamics::kHorizontalBounds.low,
                                 SingleBandDynamics::kHorizontalBounds.high, bounds.high,
                                 bounds.low);
    curveEditor_->SetCurrentRange(horizontal.low, horizontal.high, vertical.high, vertical.low);
    applyingRanges_ = false;
}

void SingleBandDynamicsEditorView::OnRangeChanged() {
    if (!applyingRanges_) {
        const CurveEditor& e = *curveEditor_;
        dynamics_->SetHorizontalDisplayRange(
            {float(std::min(e.GetHorizontalStart(), e.GetHorizontalEnd())),
             float(std::max(e.GetHorizontalStart(), e.GetHorizontalEnd()))});
        dynamics_->SetVerticalDisplayRange(
            {float(std::min(e.GetVerticalStart(), e.GetVerticalEnd())),
             float(std::max(e.GetVerticalStart(), e.GetVerticalEnd()))});
    }
    if (layer_)
        UpdateCurve();
}

void SingleBandDynamicsEditorView::UpdateCurve() {
    const qorcore::RectT<float> content = curveEditor_->GetContentRect();
    const int count = std::max(2, int(std::ceil(content.width)) * kSamplesPerPixel + 1);
    const double start = curveEditor_->GetHorizontalStart();
    const double end = curveEditor_->GetHorizontalEnd();
    std::vector<std::pair<double, double>> curve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const double input = start + (end - start) * double(i) / double(count - 1);
        curve[std::size_t(i)] = {input, dynamics_->GetStaticOutputDecibels(input)};
    }
    layer_->SetCurve(std::move(curve));
    curveEditor_->InvalidateContentRect();
}

bool SingleBandDynamicsEditorView::KeepThresholdOrder(int index) {
    const float limiter = dynamics_->GetLimThreshold();
    const float compressor = dynamics_->GetCompThreshold();
    const float gate = dynamics_->GetGateThreshold();
    bool wrote = false;
    switch (index) {
    case SingleBandDynamics::kLimiterThreshold: {
        // A lowered limiter pulls the compressor, and then the gate, down to it.
        const float newCompressor = std::min(compressor, limiter);
        if (newCompressor != compressor) {
            dynamics_->SetCompThreshold(newCompressor);
            wrote = true;
        }
        if (gate > newCompressor) {
            dynamics_->SetGateThreshold(newCompressor);
            wrote = true;
        }
        break;
    }
    case SingleBandDynamics::kCompressorThreshold:
        // A moved compressor lifts the limiter or lowers the gate to it.
        if (compressor > limiter) {
            dynamics_->SetLimThreshold(compressor);
            wrote = true;
        }
        if (compressor < gate) {
            dynamics_->SetGateThreshold(compressor);
            wrote = true;
        }
        break;
    case SingleBandDynamics::kGateThreshold:
        // A raised gate lifts the compressor and the limiter to it.
        if (gate > compressor) {
            dynamics_->SetCompThreshold(gate);
            wrote = true;
        }
        if (gate > limiter) {
            dynamics_->SetLimThreshold(gate);
            wrote = true;
        }
        break;
    default: break;
    }
    return wrote;
}

void SingleBandDynamicsEditorView::OnEditNumberInteractiveChange(
    const qorui::UI_InteractiveControlChangedMessage& message, IntrusivePtr<EditNumber> control,
    int index) {
    MarlTessAudioFilterEditorView::OnEditNumberInteractiveChange(message, std::move(control),
                                                                 index);
    if (index != SingleBandDynamics::kLimiterThreshold &&
        index != SingleBandDynamics::kCompressorThreshold &&
        index != SingleBandDynamics::kGateThreshold)
        return;
    if (KeepThresholdOrder(index))
        SyncParameters(); // the neighbours' numbers follow at once
    UpdateCurve();
}

void SingleBandDynamicsEditorView::OnSliderInteractiveChange(
    const qorui::UI_InteractiveControlChangedMessage& message,
    IntrusivePtr<qorui::UI_Slider> control, int index) {
    SendInteractiveChange(message.GetChangeMessage(), index, float(1.0 - control->GetValue()));
    // The number follows within the gesture, not a tick later.
    if (index == SingleBandDynamics::kOutputGain && outputGainNumber_)
        UpdateEditNumber(outputGainNumber_, index);
}

void SingleBandDynamicsEditorView::UpdateSlider(IntrusivePtr<qorui::UI_Slider> control, int index) {
    control->SetValue(1.0 - double(GetFilter()->GetParameterValue(index)));
}

void SingleBandDynamicsEditorView::SetupMeters() {
    gainReductionMeter_->MakeGainReductionMeter();

    outputMeter_->MakeOutputMeter(GetFilter()->GetNumberOfOutputChannels());
}

void SingleBandDynamicsEditorView::EnableMeter() {
    meterConnection_ = meterMessage_->ConnectMeterDataChanged(
        [this](float gainReduction, float inputLevel, const std::vector<float>& levels) {
            OnMeterData(gainReduction, inputLevel, levels);
        });
    dynamics_->SetMeterActive(true);
    dynamics_->Post(meterMessage_);
}

void SingleBandDynamicsEditorView::DisableMeter() {
    if (dynamics_)
        dynamics_->SetMeterActive(false);
    meterConnection_.Disconnect();
}

void SingleBandDynamicsEditorView::OnMeterData(float gainReduction, float inputLevel,
                                               const std::vector<float>& levels) {
    double level = -std::numeric_limits<double>::infinity();
    float position = 0.0f;
    // While the effect is suspended the meters stay as they are and the fill goes.
    if (!GetFilter()->IsSuspended()) {
        const float reduction =
            float(qoraudiofilters::dynamics::LinearFromDecibels(double(gainReduction)));
        gainReductionMeter_->SetLevel(std::vector<float>{reduction}, 1, false);
        outputMeter_->SetLevel(levels);
        level = double(inputLevel);
        position = HalfPixel(curveEditor_->GetPixelForHorizontalValue(level));
    }
    // Level moves smaller than half a pixel cost no repaint.
    if (position != levelPosition_ || std::isfinite(level) != std::isfinite(layer_->GetLevel())) {
        levelPosition_ = position;
        layer_->SetLevel(level);
        curveEditor_->InvalidateContentRect();
    }
}

} // namespace qoraudiofiltersui
