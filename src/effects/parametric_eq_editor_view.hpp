#pragma once

#include "effects/owned_spectrum_meter.hpp"
#include "framework/marl_tess_audio_filter_editor_view.hpp"
#include "graphs/spectrum_content_layer.hpp"
#include "platform/core/connection.hpp"

#include <memory>

namespace qoraudiofilters {
class ParametricEQ;
}

namespace qoraudiofiltersui {

class CurveEditor;
class SpectrumDraw;

/// The live spectrum behind the equaliser's curve.
class ParametricEQSpectrumContentLayer : public SpectrumContentLayer {
public:
    using SpectrumContentLayer::SpectrumContentLayer;
};

/// The editor of the Parametric EQ. Its sheet and layout ("PARAMETRICEQ", and "PARAMETRICEQ.V7"
/// for the newer look) hold the whole control logic: nine graph nodes tied to the filter's 45
/// parameters. This class adds what a script cannot: the input spectrum of the filter's own
/// meter behind the curve, and that spectrum's range, which follows parameter 44 ("30 dB" when
/// set, -15..15 dB; else -48..48 dB).
///
/// The filter keeps its meter for its whole life; the editor only switches the feeding on and
/// off and listens to its messages.
class ParametricEQEditorView : public MarlTessAudioFilterEditorView {
public:
    static constexpr int kRangeParameter = 44;

    /// A filter that is not a `ParametricEQ`, or a layout without "CurveEditor", throws the
    /// null-pointer exception.
    static IntrusivePtr<ParametricEQEditorView> Create(std::shared_ptr<AudioFilter> filter);

    const IntrusivePtr<CurveEditor>& GetCurveEditor() const { return curveEditor_; }
    const IntrusivePtr<SpectrumDraw>& GetSpectrumDraw() const { return spectrumDraw_; }

protected:
    explicit ParametricEQEditorView(std::shared_ptr<AudioFilter> filter);
    /// Stops the feeding of the meter before anything else goes.
    ~ParametricEQEditorView() override;

private:
    void UpdateSpectrumRange();

    qoraudiofilters::ParametricEQ* eq_ = nullptr;
    std::shared_ptr<qoraudiofilters::ParametricEQ> eqShared_;
    IntrusivePtr<CurveEditor> curveEditor_;
    IntrusivePtr<SpectrumDraw> spectrumDraw_;
    std::unique_ptr<OwnedSpectrumMeter> meter_;
};

} // namespace qoraudiofiltersui
