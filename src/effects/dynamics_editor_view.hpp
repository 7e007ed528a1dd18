#pragma once

#include "framework/marl_tess_audio_filter_editor_view.hpp"
#include "graphs/content_layer.hpp"
#include "platform/core/color_rgba.hpp"
#include "platform/core/connection.hpp"

#include <cstdint>
#include <memory>
#include <vector>

namespace qorui {
class UI_Button;
class UI_LevelMeterView;
} // namespace qorui

namespace qoraudiofilters {
class DynamicsMeterMessage;
}

namespace qoraudiofiltersui {

class CurveEditor;

/// The tint under the dynamics transfer curve, from the graph's left edge to the live input
/// level: where on the curve the processor works now.
class DynamicsCurveContentLayer : public ContentLayer {
public:
    /// The colour is taken opaque; its alpha is forced to 0.25.
    DynamicsCurveContentLayer(std::shared_ptr<AudioFilter> filter, const qorcore::ColorRGBA& color);

    /// Fills the area under the curve up to the level position, antialiased; nothing without
    /// an area or a curve.
    void Draw(qorui::penrig::Penrig* penrig, float scale) override;
    void SetBounds(const qorcore::RectT<float>& content_rect, float scale) override;

    /// Vertical pixels of the curve, spread evenly across the width.
    void SetCurve(std::vector<float> curve) { curve_ = std::move(curve); }
    const std::vector<float>& GetCurve() const { return curve_; }
    /// The horizontal pixel, in the graph's coordinates, where the fill ends.
    void SetLevelPosition(float position) { levelPosition_ = position; }
    float GetLevelPosition() const { return levelPosition_; }
    qorcore::ColorRGBA GetFillColor() const { return {red_, green_, blue_, alpha_}; }
    const std::shared_ptr<AudioFilter>& GetFilter() const { return filter_; }

private:
    std::shared_ptr<AudioFilter> filter_;
    float red_, green_, blue_, alpha_;
    float left_ = 0.0f, top_ = 0.0f, width_ = 0.0f, height_ = 0.0f;
    float levelPosition_ = 250.0f;
    std::vector<float> curve_;
};

/// The editor of the Dynamics effect: its sheet and layout ("DYNAMICS") hold the transfer curve
/// of up to seven points, the compressor and expander list beneath it and every setting. This
/// class adds the live picture: the fill under the curve up to the input level, the
/// gain-reduction meter, and the three curve buttons (add, delete, invert; reset is the
/// script's own).
///
/// The fill is the curve the filter applies (`GetResponseCurve` at two values a pixel), asked
/// for again only when a parameter changed or the curve is dragged; a level change only moves
/// where it ends, repainting when that moves by half a pixel.
class DynamicsEditorView : public MarlTessAudioFilterEditorView {
public:
    static const qorcore::ColorRGBA kFillColor;

    /// A filter that is not a `Dynamics`, or a layout without the controls, throws the
    /// null-pointer exception.
    static IntrusivePtr<DynamicsEditorView> Create(std::shared_ptr<AudioFilter> filter);

    const IntrusivePtr<CurveEditor>& GetCurveEditor() const { return curveEditor_; }
    const IntrusivePtr<qorui::UI_LevelMeterView>& GetMeter() const { return meter_; }
    const IntrusivePtr<DynamicsCurveContentLayer>& GetFillLayer() const { return fillLayer_; }

protected:
    explicit DynamicsEditorView(std::shared_ptr<AudioFilter> filter);
    /// Stops the meter's deliveries before anything else goes.
    ~DynamicsEditorView() override;

    /// Takes over parameter changes, and asks for the fill again when one happened.
    void SyncParameters() override;

private:
    void UpdateFill();
    void OnCurveChanged(int changeMessage);
    void EnableMeter();
    void DisableMeter();
    void OnMeterDataChanged(float gainReduction, const std::vector<float>& levels);

    std::shared_ptr<AudioFilter> filter_;
    IntrusivePtr<CurveEditor> curveEditor_;
    IntrusivePtr<qorui::UI_LevelMeterView> meter_;
    IntrusivePtr<DynamicsCurveContentLayer> fillLayer_;
    IntrusivePtr<qorui::UI_Button> addPointButton_;
    IntrusivePtr<qorui::UI_Button> deletePointButton_;
    IntrusivePtr<qorui::UI_Button> invertButton_;
    std::uint8_t curveDirty_ = 0;
    std::shared_ptr<qoraudiofilters::DynamicsMeterMessage> meterMessage_;
    qorcore::ScopedConnection connection_;
};

} // namespace qoraudiofiltersui
