#include "effects/de_esser_cutoff_overlay.hpp"

#include "platform/core/null_pointer_exception.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/ui/input_capture.hpp"
#include "platform/ui/ui_node_manager.hpp"

#include <algorithm>
#include <cmath>

namespace qoraudiofiltersui {

namespace {

constexpr float kLowestHz = 20.0f;
constexpr float kHighestHz = 20000.0f;
constexpr double kMinBandwidth = 100.0;
constexpr double kMaxBandwidth = 7500.0;
constexpr double kMinCenter = 500.0;
constexpr double kMaxCenter = 12000.0;
constexpr float kHitHalfWidth = 2.5f;
constexpr float kHitWidth = 5.0f;
constexpr qorcore::ColorRGBA kVeilColor{0.65f, 0.75f, 0.65f, 0.5f};
constexpr qorcore::ColorRGBA kEdgeColor{1.0f, 1.0f, 1.0f, 0.65f};

/// The drag of one band edge, from the press to the release.
class DeEsserCutoffMoveCapture : public qorui::InputCapture {
public:
    DeEsserCutoffMoveCapture(DeEsserCutoffOverlay* overlay, const qorui::MouseEvent& start)
        : InputCapture(overlay, start), overlay_(overlay) {}

    bool UI_DoMouseEvent(const qorui::MouseEvent& event) override {
        if (event.IsAction(qorui::PointerAction::kMove))
            overlay_->MoveDrag(event.GetPosition().x - GetStartEvent().GetPosition().x);
        return true;
    }
    bool UI_DoCursor(const qorcore::PointT<float>&, qorui::ModifierFlags) override {
        overlay_->UI_SetCursor(overlay_->GetDraggedEdge() == DeEsserCutoffOverlay::kCenter
                                   ? DeEsserCutoffOverlay::kCenterCursor
                                   : DeEsserCutoffOverlay::kEdgeCursor);
        return true;
    }
    void UI_EndCapture(bool cancelled) override { overlay_->EndDrag(cancelled); }

private:
    // Counted, so that an overlay let go of during a drag outlives the drag.
    qorcore::IntrusivePtr<DeEsserCutoffOverlay> overlay_;
};

} // namespace

DeEsserCutoffOverlay::DeEsserCutoffOverlay(std::shared_ptr<qoraudiofilterhost::AudioFilter> filter)
    : filter_(std::move(filter)), scale_(qorcore::MakeIntrusive<FreqScale>(false)) {
    if (!filter_)
        qorcore::config::DoThrowNullPtrException("AudioFilter");
    scale_->SetNumChannels(1);
    scale_->SetTotalFreqRange({kLowestHz, kHighestHz});
    scale_->SetVisibleFreqRange({kLowestHz, kHighestHz}, true);
    scale_->SetScaleType(kLogScale);
}

double DeEsserCutoffOverlay::ReadHz(int index) const {
    const float value = filter_->GetParameterValue(index);
    return index == kCenterParameter ? CenterHz(value) : BandwidthHz(value);
}

void DeEsserCutoffOverlay::WriteHz(int index, double hz) {
    const auto info = filter_->GetParameterInfo(index);
    const float value =
        info ? info->NormalisedFromPlain(float(hz))
             : float(index == kCenterParameter ? (hz - 500.0) / 11500.0 : (hz - 100.0) / 7400.0);
    filter_->SetParameterValue(index, value);
}

float DeEsserCutoffOverlay::GetEdgePixel(int edge) const {
    const double center = ReadHz(kCenterParameter);
    const double half = ReadHz(kBandwidthParameter) / 2.0;
    return scale_->HzToPixels(0, edge == 0 ? center - half : center + half, false).value;
}

int DeEsserCutoffOverlay::FindEdge(const qorcore::PointT<float>& local) const {
    if (local.y < 0.0f || local.y > GetFrame().height)
        return -1;
    // The high edge first: where the two hit areas overlap, dragging it widens the band.
    for (const int edge : {1, 0}) {
        const float left = std::floor(GetEdgePixel(edge) - kHitHalfWidth);
        if (local.x >= left && local.x < left + kHitWidth)
            return edge;
    }
    if (local.x > GetEdgePixel(0) && local.x < GetEdgePixel(1))
        return kCenter;
    return -1;
}

void DeEsserCutoffOverlay::MoveDrag(float dx) {
    if (draggedEdge_ < 0)
        return;
    if (draggedEdge_ == kCenter) {
        // The whole band moves, its width kept, the centre following the pointer.
        const float from = scale_->HzToPixels(0, CenterHz(startCenter_), false).value;
        const double hz = std::fabs(scale_->PixelsToHzF(0, from + dx, false));
        WriteHz(kCenterParameter, hz >= kMinCenter ? std::min(kMaxCenter, hz) : kMinCenter);
        EmitInvalidate();
        return;
    }
    const float x = startX_ + dx;
    const double center = ReadHz(kCenterParameter);
    const double width = ReadHz(kBandwidthParameter);
    double edges[2] = {center - width / 2.0, center + width / 2.0};
    edges[draggedEdge_] = std::fabs(scale_->PixelsToHzF(0, x, false));
    const double span = edges[1] - edges[0];
    const double newWidth = span >= kMinBandwidth ? std::min(kMaxBandwidth, span) : kMinBandwidth;
    const double base = draggedEdge_ == 0 ? edges[1] - newWidth : edges[0];
    double newCenter = base + newWidth / 2.0;
    newCenter = newCenter >= kMinCenter ? std::min(kMaxCenter, newCenter) : kMinCenter;
    WriteHz(kCenterParameter, newCenter);
    WriteHz(kBandwidthParameter, newWidth);
    EmitInvalidate();
}

void DeEsserCutoffOverlay::EndDrag(bool cancelled) {
    if (draggedEdge_ < 0)
        return;
    filter_->EndParameterEdit(kCenterParameter);
    filter_->EndParameterEdit(kBandwidthParameter);
    if (cancelled) {
        filter_->SetParameterValue(kCenterParameter, startCenter_);
        filter_->SetParameterValue(kBandwidthParameter, startBandwidth_);
    }
    draggedEdge_ = -1;
    EmitInvalidate();
}

bool DeEsserCutoffOverlay::UI_HitTest(const qorcore::PointT<float>& local) const {
    return FindEdge(local) >= 0;
}

void DeEsserCutoffOverlay::UI_Draw(qorui::penrig::Penrig* penrig) {
    qorui::penrig::Penrig& p = *penrig;
    const float height = GetFrame().height;
    const float left = scale_->HzToPixels(0, kLowestHz, false).value;
    const float right = scale_->HzToPixels(0, kHighestHz, false).value;
    const float low = GetEdgePixel(0);
    const float high = GetEdgePixel(1);
    if (std::isfinite(low) && std::isfinite(high)) {
        p.FillRect({left, 0.0f, std::max(0.0f, low - left), height}, kVeilColor);
        p.FillRect({high, 0.0f, std::max(0.0f, right - high), height}, kVeilColor);
        qorui::penrig::Penrig::StateSaver saver(p);
        p.SetAntialias(true);
        p.SetPenWidth(2.0f);
        p.SetColor(kEdgeColor);
        p.NewPath();
        for (const float x : {low, high}) {
            p.MoveTo(x, 0.0f);
            p.LineTo(x, height);
        }
        p.Stroke();
    }
    UI_SubView::UI_Draw(penrig);
}

bool DeEsserCutoffOverlay::UI_DoMouseEvent(const qorui::MouseEvent& event) {
    if (!event.IsLeftButtonSingleDown())
        return false;
    const int edge = FindEdge(event.GetPosition());
    if (edge < 0)
        return false;
    draggedEdge_ = edge;
    startX_ = event.GetPosition().x;
    startCenter_ = filter_->GetParameterValue(kCenterParameter);
    startBandwidth_ = filter_->GetParameterValue(kBandwidthParameter);
    filter_->BeginParameterEdit(kCenterParameter);
    filter_->BeginParameterEdit(kBandwidthParameter);
    auto capture = qorcore::MakeIntrusive<DeEsserCutoffMoveCapture>(this, event);
    if (!qorui::UI_NodeManager::Get().BeginInputCapture(capture))
        EndDrag(false);
    return true;
}

bool DeEsserCutoffOverlay::UI_DoCursor(const qorcore::PointT<float>& local, qorui::ModifierFlags) {
    const int edge = FindEdge(local);
    if (edge < 0)
        return false;
    UI_SetCursor(edge == kCenter ? kCenterCursor : kEdgeCursor);
    return true;
}

void DeEsserCutoffOverlay::UI_SizeChanged() {
    UI_SubView::UI_SizeChanged();
    scale_->SetWidth(GetFrame().width);
}

} // namespace qoraudiofiltersui
