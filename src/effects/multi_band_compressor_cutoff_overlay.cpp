#include "effects/multi_band_compressor_cutoff_overlay.hpp"

#include "audio/dsp/multi_band_compressor.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/host/audio_filter_parameter_info.hpp"
#include "platform/ui/input_capture.hpp"
#include "platform/ui/ui_node_manager.hpp"

#include <cmath>
#include <vector>

namespace qoraudiofiltersui {

namespace {

using qoraudiofilters::MultiBandCompressor;

constexpr float kLowestHz = 20.0f;
constexpr float kHighestHz = 20000.0f;
constexpr float kHitHalfWidth = 2.5f;
constexpr float kHitWidth = 5.0f;
constexpr float kGapPixels = 5.0f;
constexpr qorcore::ColorRGBA kLineColor{1.0f, 1.0f, 1.0f, 0.65f};

/// The drag of one crossover line, from the press to the release.
class CutoffMoveCapture : public qorui::InputCapture {
public:
    CutoffMoveCapture(MultiBandCompressorCutoffOverlay* overlay, const qorui::MouseEvent& start)
        : InputCapture(overlay, start), overlay_(overlay) {}

    bool UI_DoMouseEvent(const qorui::MouseEvent& event) override {
        if (event.IsAction(qorui::PointerAction::kMove))
            overlay_->MoveDrag(event.GetPosition().x - GetStartEvent().GetPosition().x);
        return true;
    }
    bool UI_DoCursor(const qorcore::PointT<float>&, qorui::ModifierFlags) override {
        overlay_->UI_SetCursor(MultiBandCompressorCutoffOverlay::kCutoffCursor);
        return true;
    }
    void UI_EndCapture(bool cancelled) override { overlay_->EndDrag(cancelled); }

private:
    // Counted, so that an overlay let go of during a drag outlives the drag.
    qorcore::IntrusivePtr<MultiBandCompressorCutoffOverlay> overlay_;
};

} // namespace

MultiBandCompressorCutoffOverlay::MultiBandCompressorCutoffOverlay(
    std::shared_ptr<MultiBandCompressor> filter)
    : filter_(std::move(filter)), scale_(qorcore::MakeIntrusive<FreqScale>(false)) {
    if (!filter_)
        qorcore::config::DoThrowNullPtrException("MultiBandCompressor");
    scale_->SetNumChannels(1);
    scale_->SetTotalFreqRange({kLowestHz, kHighestHz});
    scale_->SetVisibleFreqRange({kLowestHz, kHighestHz}, true);
    scale_->SetScaleType(kLogScale);
    ReloadCutoffs();
}

void MultiBandCompressorCutoffOverlay::ReloadCutoffs() {
    std::vector<float> cutoffs;
    filter_->GetCrossOver()->GetCutoffs(cutoffs);
    for (std::size_t i = 0; i < cutoffs_.size() && i < cutoffs.size(); ++i)
        cutoffs_[i] = cutoffs[i];
}

float MultiBandCompressorCutoffOverlay::GetMinimumGap() const {
    const float quarter = GetFrame().width * 0.25f;
    return std::fabs(std::log2(scale_->PixelsToHzF(0, quarter + kGapPixels, false)) -
                     std::log2(scale_->PixelsToHzF(0, quarter, false)));
}

float MultiBandCompressorCutoffOverlay::PixelOf(int index) const {
    return scale_->HzToPixels(0, cutoffs_[std::size_t(index)], false).value;
}

int MultiBandCompressorCutoffOverlay::FindCutoff(const qorcore::PointT<float>& local) const {
    if (local.y < 0.0f || local.y > GetFrame().height)
        return -1;
    for (int i = 0; i < 3; ++i) {
        const float left = std::floor(PixelOf(i) - kHitHalfWidth);
        if (local.x >= left && local.x < left + kHitWidth)
            return i;
    }
    return -1;
}

void MultiBandCompressorCutoffOverlay::MoveDrag(float dx) {
    if (draggedIndex_ < 0)
        return;
    const float frequency = std::fabs(scale_->PixelsToHzF(0, startX_ + dx, false));
    std::vector<float> cutoffs;
    filter_->GetCrossOver()->GetCutoffs(cutoffs);
    const float hz = MultiBandCompressor::CrossOver::TrimCutoffFreq(cutoffs, draggedIndex_,
                                                                    frequency, GetMinimumGap());
    const int index = kFirstCutoffParameter + draggedIndex_;
    const auto info = filter_->GetParameterInfo(index);
    if (info && std::isfinite(hz))
        filter_->SetParameterValue(index, info->NormalisedFromPlain(hz));
    ReloadCutoffs();
    EmitInvalidate();
}

void MultiBandCompressorCutoffOverlay::EndDrag(bool cancelled) {
    if (draggedIndex_ < 0)
        return;
    const int index = kFirstCutoffParameter + draggedIndex_;
    filter_->EndParameterEdit(index);
    if (cancelled)
        filter_->SetParameterValue(index, startValue_);
    draggedIndex_ = -1;
    ReloadCutoffs();
    EmitInvalidate();
}

bool MultiBandCompressorCutoffOverlay::UI_HitTest(const qorcore::PointT<float>& local) const {
    return FindCutoff(local) >= 0;
}

void MultiBandCompressorCutoffOverlay::UI_Draw(qorui::penrig::Penrig* penrig) {
    qorui::penrig::Penrig& p = *penrig;
    const float height = GetFrame().height;
    {
        qorui::penrig::Penrig::StateSaver saver(p);
        p.SetAntialias(true);
        p.SetPenWidth(1.0f);
        p.SetColor(kLineColor);
        p.NewPath();
        for (int i = 0; i < 3; ++i) {
            const float x = PixelOf(i);
            if (!std::isfinite(x))
                continue;
            p.MoveTo(x, height);
            p.LineTo(x, 0.0f);
        }
        p.Stroke();
    }
    UI_SubView::UI_Draw(penrig);
}

bool MultiBandCompressorCutoffOverlay::UI_DoMouseEvent(const qorui::MouseEvent& event) {
    if (!event.IsLeftButtonSingleDown())
        return false;
    const int cutoff = FindCutoff(event.GetPosition());
    if (cutoff < 0)
        return false;
    const int index = kFirstCutoffParameter + cutoff;
    draggedIndex_ = cutoff;
    startX_ = event.GetPosition().x;
    startValue_ = filter_->GetParameterValue(index);
    filter_->BeginParameterEdit(index);
    auto capture = qorcore::MakeIntrusive<CutoffMoveCapture>(this, event);
    if (!qorui::UI_NodeManager::Get().BeginInputCapture(capture))
        EndDrag(false);
    return true;
}

bool MultiBandCompressorCutoffOverlay::UI_DoCursor(const qorcore::PointT<float>& local,
                                                   qorui::ModifierFlags) {
    if (FindCutoff(local) < 0)
        return false;
    UI_SetCursor(kCutoffCursor);
    return true;
}

void MultiBandCompressorCutoffOverlay::UI_SizeChanged() {
    UI_SubView::UI_SizeChanged();
    if (GetFrame().width > 0.0f)
        scale_->SetSize(GetFrame().width);
}

} // namespace qoraudiofiltersui
