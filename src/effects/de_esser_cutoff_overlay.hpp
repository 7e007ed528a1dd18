#pragma once

#include "graphs/scales/freq_scale.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/host/audio_filter.hpp"
#include "platform/ui/ui_sub_view.hpp"

#include <cstdint>
#include <memory>

namespace qoraudiofiltersui {

/// The de-esser's band over its graph: everything outside the band from centre - width / 2 to
/// centre + width / 2 is veiled, and the two edges can be dragged. An edge moves centre and
/// width together, so the other edge stays where it is until a limit (width 100..7500 Hz,
/// centre 500..12000 Hz) moves it. The band is never stored: each draw reads the centre and
/// width parameters. A drag inside the band moves it whole. The overlay covers the graph's content
/// rectangle, 20..20000 Hz across.
class DeEsserCutoffOverlay : public qorui::UI_SubView {
public:
    static constexpr int kCenterParameter = 3;
    static constexpr int kBandwidthParameter = 4;
    static constexpr int kEdgeCursor = 200;
    static constexpr int kCenterCursor = 14; // the closed hand
    /// The drag target inside the band: the whole band, its width kept.
    static constexpr int kCenter = 2;

    /// A null filter throws the null-pointer exception.
    explicit DeEsserCutoffOverlay(std::shared_ptr<qoraudiofilterhost::AudioFilter> filter);

    static double CenterHz(float normalised) { return double(normalised) * 11500.0 + 500.0; }
    static double BandwidthHz(float normalised) { return double(normalised) * 7400.0 + 100.0; }

    /// The x of an edge (0 low, 1 high) in the overlay's coordinates.
    float GetEdgePixel(int edge) const;
    /// The edge whose hit area holds `local`: 0, 1, `kCenter` between them, or -1 for none.
    int FindEdge(const qorcore::PointT<float>& local) const;
    int GetDraggedEdge() const { return draggedEdge_; }

    /// The drag of the edge, moved by `dx` pixels from where it started.
    void MoveDrag(float dx);
    /// Ends the drag; a cancelled one puts both parameters back.
    void EndDrag(bool cancelled);

    bool UI_HitTest(const qorcore::PointT<float>& local) const override;
    void UI_Draw(qorui::penrig::Penrig* penrig) override;
    bool UI_DoMouseEvent(const qorui::MouseEvent& event) override;
    bool UI_DoCursor(const qorcore::PointT<float>& local, qorui::ModifierFlags modifiers) override;
    void UI_SizeChanged() override;

private:
    double ReadHz(int index) const;
    void WriteHz(int index, double hz);

    std::shared_ptr<qoraudiofilterhost::AudioFilter> filter_;
    qorcore::IntrusivePtr<FreqScale> scale_;
    std::int32_t draggedEdge_ = -1;
    float startX_ = 0.0f;
    float startCenter_ = 0.0f;
    float startBandwidth_ = 0.0f;
};

} // namespace qoraudiofiltersui
