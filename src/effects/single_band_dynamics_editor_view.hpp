#pragma once

#include "framework/marl_tess_audio_filter_editor_view.hpp"
#include "graphs/content_layer.hpp"
#include "platform/core/color_rgba.hpp"
#include "platform/core/connection.hpp"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace qorui {
class UI_LevelMeterView;
}
namespace qoraudiofilters {
class SingleBandDynamics;
namespace singlebanddynamics {
class MeterMessage;
}
} // namespace qoraudiofilters

namespace qoraudiofiltersui {

class CurveEditor;

/// The transfer curve of the single-band dynamics on its graph: the output level over the
/// input level as a line, and under it, from the left edge up to the level the effect detects
/// now, a tinted area, so that one sees where on the curve the programme sits.
///
/// It holds the curve as pairs (input dB, output dB) and the input level in dB; they become
/// pixels when drawn, through the graph's mapping, so a resize needs nothing new.
class SingleBandDynamicsContentLayer : public ContentLayer {
public:
    using Mapping = std::function<qorcore::PointT<float>(std::pair<double, double>)>;

    /// `mapping` takes a pair of values to a point of the graph; the fill takes the line's
    /// colour at a quarter of its opacity.
    SingleBandDynamicsContentLayer(Mapping mapping, const qorcore::ColorRGBA& lineColor);

    void Draw(qorui::penrig::Penrig* penrig, float scale) override;
    void SetBounds(const qorcore::RectT<float>& contentRect, float scale) override;

    /// Points sorted by input; values that are not numbers leave a gap in the line.
    void SetCurve(std::vector<std::pair<double, double>> curve);
    const std::vector<std::pair<double, double>>& GetCurve() const { return curve_; }
    /// The detected input level in dB; the fill ends there (nothing below the range).
    void SetLevel(double decibels) { level_ = decibels; }
    double GetLevel() const { return level_; }
    const qorcore::RectT<float>& GetBounds() const { return bounds_; }

private:
    Mapping mapping_;
    qorcore::ColorRGBA lineColor_;
    qorcore::ColorRGBA fillColor_;
    qorcore::RectT<float> bounds_;
    double level_;
    std::vector<std::pair<double, double>> curve_;
};

/// The editor of the single-band dynamics (limiter, compressor and gate in one band) on the
/// sheet and layout "SINGLEBANDDYNAMICS". The sheet keeps the controls' ranges; the controls
/// are hooked to the effect by identifier. The class adds the graph of the curve the effect
/// applies with the live input level on it, the gain-reduction and output meters, a fader for
/// the output gain, and the rule that keeps the thresholds in order: limiter >= compressor >=
/// gate.
///
/// The graph's ranges are the effect's (`Get/SetHorizontalDisplayRange`, ...): zooming or
/// scrolling the rulers writes them back, and a new editor opens where the last one was.
class SingleBandDynamicsEditorView : public MarlTessAudioFilterEditorView {
public:
    /// A filter that is not a `SingleBandDynamics`, or a layout without the controls, throws the
    /// null-pointer exception.
    static IntrusivePtr<SingleBandDynamicsEditorView> Create(std::shared_ptr<AudioFilter> filter);

    CurveEditor& GetCurveEditor() const { return *curveEditor_; }
    SingleBandDynamicsContentLayer& GetContentLayer() const { return *layer_; }
    /// How many samples of the curve per pixel of the content's width.
    static constexpr int kSamplesPerPixel = 2;

protected:
    explicit SingleBandDynamicsEditorView(std::shared_ptr<AudioFilter> filter);
    /// Stops the meters before anything else goes.
    ~SingleBandDynamicsEditorView() override;

    void SyncParameters() override;
    void OnThemeChanged() override;
    /// The base, then for the thresholds (parameters 1, 5 and 9) the order rule.
    void OnEditNumberInteractiveChange(const qorui::UI_InteractiveControlChangedMessage& message,
                                       IntrusivePtr<EditNumber> control, int index) override;
    // The output gain's fader: its top is the highest gain.
    void OnSliderInteractiveChange(const qorui::UI_InteractiveControlChangedMessage& message,
                                   IntrusivePtr<qorui::UI_Slider> control, int index) override;
    void UpdateSlider(IntrusivePtr<qorui::UI_Slider> control, int index) override;

private:
    /// Limiter >= compressor >= gate after a user moved threshold `index`: the neighbours are
    /// pulled along; true when one was written.
    bool KeepThresholdOrder(int index);
    void UpdateCurve();
    void ApplyDisplayRanges();
    void OnRangeChanged();
    void SetupMeters();
    void EnableMeter();
    void DisableMeter();
    void OnMeterData(float gainReduction, float inputLevel, const std::vector<float>& levels);
    void UpdateColors();

    qoraudiofilters::SingleBandDynamics* dynamics_ = nullptr;
    std::shared_ptr<qoraudiofilters::SingleBandDynamics> dynamicsShared_;
    IntrusivePtr<CurveEditor> curveEditor_;
    IntrusivePtr<EditNumber> outputGainNumber_;
    qorui::UI_LevelMeterView* gainReductionMeter_ = nullptr;
    qorui::UI_LevelMeterView* outputMeter_ = nullptr;
    IntrusivePtr<SingleBandDynamicsContentLayer> layer_;
    bool curveDirty_ = false;
    bool applyingRanges_ = false;
    float levelPosition_ = 0.0f;
    std::shared_ptr<qoraudiofilters::singlebanddynamics::MeterMessage> meterMessage_;
    qorcore::ScopedConnection meterConnection_;
    qorcore::ScopedConnection rangeConnection_;
};

} // namespace qoraudiofiltersui
