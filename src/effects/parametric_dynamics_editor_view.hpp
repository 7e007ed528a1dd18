#pragma once

#include "audio/dsp/parametric_dynamics.hpp"
#include "framework/marl_tess_audio_filter_editor_view.hpp"
#include "platform/core/connection.hpp"

#include <array>
#include <memory>
#include <vector>

namespace qorui {
class UI_LevelMeterView;
}
namespace qoraudiofilters::parametricdynamics {
class MeterMessage;
}

namespace qoraudiofiltersui {

/// The editor of the parametric dynamics. Its layout ("PARAMETRICDYNAMICS") places the
/// thirteen numbers and two switches, bound to the filter through the layout's parameter map,
/// and its sheet gives the controls their ranges and the graph its scale (`curve_scale`).
///
/// This class adds what the effect computes: a graph of the band's static gain (output level
/// over input level at the centre of the band, from `ParametricDynamics::GetStaticOutputDecibels`)
/// with the limiter's ceiling and a dot at the band's live level, drawn into the layout's
/// "GainCurve"; the band level meter "BandLevelMeter" and the gain-reduction meter
/// "GainReductionMeter"; and two lamps, "GateIndicator" lit while the auto gate holds the
/// signal down and "LimiterIndicator" while the limiter does. The readings come from the
/// filter's `parametricdynamics::MeterMessage` for as long as the editor is open.
class ParametricDynamicsEditorView : public MarlTessAudioFilterEditorView {
public:
    /// A filter that is not a `ParametricDynamics`, or a layout without the nodes above, throws
    /// the null-pointer exception.
    static IntrusivePtr<ParametricDynamicsEditorView> Create(std::shared_ptr<AudioFilter> filter);

    /// The curve the graph draws: (input dB, output dB), evenly spaced over the scale.
    const std::vector<std::array<double, 2>>& GetDrawnCurve() const;
    bool IsGateIndicatorLit() const;
    bool IsLimiterIndicatorLit() const;

protected:
    explicit ParametricDynamicsEditorView(std::shared_ptr<AudioFilter> filter);
    /// Stops the meter before anything else goes.
    ~ParametricDynamicsEditorView() override;

    void OnThemeChanged() override;

private:
    class Graph;
    class Lamp;

    template <class T>
    IntrusivePtr<T> Control(const char* identifier) const;
    void UpdateCurve();
    void ApplyTheme();
    void EnableMeter();
    void DisableMeter();
    void OnMeterData(const qoraudiofilters::parametricdynamics::MeterData& data);

    qoraudiofilters::ParametricDynamics* dynamics_ = nullptr;
    std::shared_ptr<qoraudiofilters::parametricdynamics::MeterMessage> message_;
    qorcore::ScopedConnection connection_;
    IntrusivePtr<Graph> graph_;
    IntrusivePtr<Lamp> gateLamp_;
    IntrusivePtr<Lamp> limiterLamp_;
    IntrusivePtr<qorui::UI_LevelMeterView> bandMeter_;
    IntrusivePtr<qorui::UI_LevelMeterView> reductionMeter_;
};

} // namespace qoraudiofiltersui
