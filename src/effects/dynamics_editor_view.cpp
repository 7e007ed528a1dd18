#include "effects/dynamics_editor_view.hpp"

#include "audio/dsp/dynamics.hpp"
#include "audio/dsp/dynamics_meter_message.hpp"
#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "graphs/curve_editor.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/skins/skins.hpp"
#include "platform/tess/ui_qor_tess_root.hpp"
#include "platform/widgets/ui_button.hpp"

#include <algorithm>
#include <cmath>

namespace qoraudiofiltersui {

namespace {

const EditorClassRegistration registration("Dynamics", [](std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<AudioFilterEditorViewBase>(DynamicsEditorView::Create(std::move(filter)));
});

constexpr float kFillAlpha = 0.25f;
const qorcore::ColorRGBA kContentColor{0.0f, 0.0f, 0.0f, 1.0f};
const qorcore::ColorRGBA kGridColor{0.25f, 0.25f, 0.25f, 1.0f};
// The quietest level the fill can end at: -300 dB, left of any ruler's edge.
constexpr float kSilence = 1e-15f;

/// Half pixels, halves away from zero.
float HalfPixel(float position) {
    return std::round(2.0f * position) * 0.5f;
}

template <class T>
IntrusivePtr<T> Control(const qormarltess::UI_QORTessRoot& root, const char* identifier) {
    auto control = qorcore::DynamicPointerCast<T>(root.GetTessViewHolder().GetControl(identifier));
    if (!control)
        qorcore::config::DoThrowNullPtrException(identifier);
    return control;
}

} // namespace

const qorcore::ColorRGBA DynamicsEditorView::kFillColor{0.262745f, 0.588235f, 0.850980f, 1.0f};

DynamicsCurveContentLayer::DynamicsCurveContentLayer(std::shared_ptr<AudioFilter> filter,
                                                     const qorcore::ColorRGBA& color)
    : filter_(std::move(filter)), red_(color.red), green_(color.green), blue_(color.blue),
      alpha_(kFillAlpha) {}

void DynamicsCurveContentLayer::SetBounds(const qorcore::RectT<float>& content_rect, float) {
    left_ = content_rect.x;
    top_ = content_rect.y;
    width_ = content_rect.width;
    height_ = content_rect.height;
}

void DynamicsCurveContentLayer::Draw(qorui::penrig::Penrig* penrig, float) {
    if (!(width_ > 0.0f) || !(height_ > 0.0f) || curve_.empty())
        return;
    qorui::penrig::Penrig& p = *penrig;
    const float step = width_ / float(curve_.size());
    const float bottom = top_ + height_;
    p.NewPath();
    p.MoveTo(left_, curve_[0]);
    float x = 0.0f;
    for (std::size_t i = 1; i < curve_.size(); ++i) {
        x = float(i) * step;
        p.LineTo(left_ + x, curve_[i]);
        // The first value at or past the level ends the fill.
        if (levelPosition_ < left_ + x + step)
            break;
    }
    p.LineTo(left_ + x, bottom);
    p.LineTo(left_, bottom);
    p.LineTo(left_, curve_[0]);
    p.ClosePath();
    qorui::penrig::Penrig::StateSaver saver(p);
    p.SetAntialias(true);
    p.SetColor(GetFillColor());
    p.Fill();
}

IntrusivePtr<DynamicsEditorView> DynamicsEditorView::Create(std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<DynamicsEditorView>(new DynamicsEditorView(std::move(filter)));
}

DynamicsEditorView::DynamicsEditorView(std::shared_ptr<AudioFilter> filter)
    : MarlTessAudioFilterEditorView(filter, GetLibraryDrawSupplier(), "Dynamics",
                                    GetLibraryResourceManager(), true),
      filter_(filter) {
    curveDirty_ = 0;
    auto* dynamics = dynamic_cast<qoraudiofilters::Dynamics*>(filter_.get());
    if (!dynamics)
        qorcore::config::DoThrowNullPtrException("Dynamics");
    meterMessage_ = std::make_shared<qoraudiofilters::DynamicsMeterMessage>(dynamics);
    connection_ = qorcore::ScopedConnection();

    CreateLayout();
    const IntrusivePtr<qormarltess::UI_QORTessRoot> root = GetTessRoot();
    if (!root)
        qorcore::config::DoThrowNullPtrException("UI_QORTessRoot");
    curveEditor_ = Control<CurveEditor>(*root, "CurveEditor");
    curveEditor_->SetBackgroundColor(kContentColor);
    curveEditor_->SetRulerBackgroundColor(qorui::skins::GetContentBackgroundColor());
    curveEditor_->SetGridColor(kGridColor);

    addPointButton_ = Control<qorui::UI_Button>(*root, "AddPointButton");
    deletePointButton_ = Control<qorui::UI_Button>(*root, "DeletePointButton");
    invertButton_ = Control<qorui::UI_Button>(*root, "InvertButton");
    meter_ = Control<qorui::UI_LevelMeterView>(*root, "GainReductionMeter");

    meter_->MakeGainReductionMeter();

    addPointButton_->NotifyWhenChanged([this](const qorui::UI_ControlChangedMessage&) {
        if (curveEditor_->AddNewPoint())
            curveEditor_->NotifyChanged();
    });
    deletePointButton_->NotifyWhenChanged([this](const qorui::UI_ControlChangedMessage&) {
        if (curveEditor_->DeleteSelectedPoints())
            curveEditor_->NotifyChanged();
    });
    invertButton_->NotifyWhenChanged([this](const qorui::UI_ControlChangedMessage&) {
        if (curveEditor_->Invert())
            curveEditor_->NotifyChanged();
    });
    curveEditor_->NotifyWhenChangedInteractively(
        [this](const qorui::UI_InteractiveControlChangedMessage& message) {
            OnCurveChanged(message.GetChangeMessage());
        });

    fillLayer_ = qorcore::MakeIntrusive<DynamicsCurveContentLayer>(filter_, kFillColor);
    curveEditor_->AddContentLayer(fillLayer_);

    // Every parameter shapes the curve or the level it is read at. The point count is
    // registered twice; the second observer only sets the flag again.
    const auto dirty = [this] {
        curveDirty_ = 1;
    };
    for (int index = 0; index < qoraudiofilters::Dynamics::kParameterCount; ++index)
        AddParameterObserver(index, dirty);
    AddParameterObserver(qoraudiofilters::Dynamics::kPointCount, dirty);

    UpdateFill();
    EnableMeter();
}

DynamicsEditorView::~DynamicsEditorView() {
    DisableMeter();
}

void DynamicsEditorView::SyncParameters() {
    curveDirty_ = 0;
    MarlTessAudioFilterEditorView::SyncParameters();
    if (curveDirty_)
        UpdateFill();
}

void DynamicsEditorView::UpdateFill() {
    const float width = curveEditor_->GetContentRect().width;
    const auto count = width > 0.0f ? static_cast<unsigned>(2.0f * width) : 0u;
    if (count == 0)
        return;
    std::vector<float> values(count);
    // A response of another length keeps the old picture.
    if (filter_->GetResponseCurve(0, int(count), values) != int(count) || values.size() != count)
        return;
    for (float& value : values)
        value = curveEditor_->GetPixelForVerticalValue(value);
    fillLayer_->SetCurve(std::move(values));
    curveEditor_->InvalidateContentRect();
}

void DynamicsEditorView::OnCurveChanged(int changeMessage) {
    if (changeMessage != qorui::kInteractiveChangeContinue &&
        changeMessage != qorui::kInteractiveChangeFinish)
        return;
    UpdateFill();
    SyncParameters();
    curveEditor_->InvalidateContentRect();
}

void DynamicsEditorView::EnableMeter() {
    connection_ = meterMessage_->ConnectMeterDataChanged(
        [this](float gain, const std::vector<float>& levels) { OnMeterDataChanged(gain, levels); });
    filter_->Post(meterMessage_);
}

void DynamicsEditorView::DisableMeter() {
    connection_.Disconnect();
}

void DynamicsEditorView::OnMeterDataChanged(float gainReduction, const std::vector<float>& levels) {
    float position = 0.0f;
    if (!filter_->IsSuspended()) {
        meter_->SetLevel(std::vector<float>{gainReduction}, 1, false);
        if (!levels.empty()) {
            float peak = *std::max_element(levels.begin(), levels.end());
            if (!(peak > kSilence)) // no number reads as silence too
                peak = kSilence;
            const float decibels = 20.0f * std::log10(peak);
            position = curveEditor_->GetPixelForHorizontalValue(decibels);
        }
    }
    position = HalfPixel(position);
    // Moves under half a pixel cost no repaint.
    if (position != HalfPixel(fillLayer_->GetLevelPosition())) {
        fillLayer_->SetLevelPosition(position);
        curveEditor_->InvalidateContentRect();
    }
}

} // namespace qoraudiofiltersui
