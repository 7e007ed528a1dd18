#pragma once

#include "graphs/scales/freq_scale.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/ui/ui_sub_view.hpp"

#include <array>
#include <cstdint>
#include <memory>

namespace qoraudiofilters {
class MultiBandCompressor;
}

namespace qoraudiofiltersui {

/// The three crossover lines of the multiband compressor over its graph, each draggable. A
/// dragged crossover stops a minimum gap short of its neighbours (`GetMinimumGap`), so the
/// bands keep their order. Anywhere off a line the overlay lets events through to the graph.
/// It covers the graph's content rectangle, 20..20000 Hz on a logarithmic axis.
class MultiBandCompressorCutoffOverlay : public qorui::UI_SubView {
public:
    static constexpr int kFirstCutoffParameter = 33;
    /// The cursor over a line and during its drag: the horizontal resize of the library.
    static constexpr int kCutoffCursor = 200;

    /// A null filter throws the null-pointer exception.
    explicit MultiBandCompressorCutoffOverlay(
        std::shared_ptr<qoraudiofilters::MultiBandCompressor> filter);

    /// Reads the three cutoffs again from the filter (after a parameter change).
    void ReloadCutoffs();
    float GetCutoff(int index) const { return cutoffs_[std::size_t(index)]; }
    /// Five pixels a quarter of the way along the axis, in octaves: the same at any zoom.
    float GetMinimumGap() const;
    /// The cutoff whose hit area holds `local`, the first in order; -1 for none.
    int FindCutoff(const qorcore::PointT<float>& local) const;
    int GetDraggedIndex() const { return draggedIndex_; }
    const FreqScale& GetFreqScale() const { return *scale_; }

    /// The drag, moved by `dx` pixels from where it started.
    void MoveDrag(float dx);
    /// Ends the drag's edit; a cancelled one puts the parameter back.
    void EndDrag(bool cancelled);

    bool UI_HitTest(const qorcore::PointT<float>& local) const override;
    void UI_Draw(qorui::penrig::Penrig* penrig) override;
    bool UI_DoMouseEvent(const qorui::MouseEvent& event) override;
    bool UI_DoCursor(const qorcore::PointT<float>& local, qorui::ModifierFlags modifiers) override;
    void UI_SizeChanged() override;

private:
    float PixelOf(int index) const;

    std::shared_ptr<qoraudiofilters::MultiBandCompressor> filter_;
    qorcore::IntrusivePtr<FreqScale> scale_;
    std::array<float, 3> cutoffs_{};
    std::int32_t draggedIndex_ = -1;
    float startX_ = 0.0f;
    float startValue_ = 0.0f;
};

} // namespace qoraudiofiltersui
