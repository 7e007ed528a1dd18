#pragma once

#include "effects/owned_spectrum_meter.hpp"
#include "framework/marl_tess_audio_filter_editor_view.hpp"
#include "graphs/spectrum_content_layer.hpp"
#include "platform/core/connection.hpp"

#include <memory>

namespace qoraudiofilters {
class SpectrumMeter;
}
namespace qorui {
class RulerBase;
}

namespace qoraudiofiltersui {

class CurveEditor;
class SpectrumDraw;

/// The analyser's live spectrum in its graph.
class SpectrumMeterContentLayer : public SpectrumContentLayer {
public:
    using SpectrumContentLayer::SpectrumContentLayer;
};

/// The editor of the spectrum analyser: its sheet and layout ("SPECTRUMMETER") set up the graph,
/// a frequency axis from 20 Hz to Nyquist over a level axis from 15 to -300 dB, and place the
/// controls, which this class hooks to the filter's parameters by identifier. The spectrum of
/// the filter's own meter is drawn over the whole range the graph shows, with the peak hold,
/// fill, peak hold time and frequency scale (logarithmic or linear, the ruler's too) that the
/// display parameters ask for. The overlap and window size popups show rows of real values
/// (percent, milliseconds); a value no row has shows no row.
///
/// The filter keeps its meter for its whole life; the editor switches the feeding on while it
/// is open and off before it goes.
class SpectrumMeterEditorView : public MarlTessAudioFilterEditorView {
public:
    static constexpr float kLowestFrequency = 20.0f;

    /// A filter that is not a `SpectrumMeter`, or a layout without "CurveEditor", throws the
    /// null-pointer exception.
    static IntrusivePtr<SpectrumMeterEditorView> Create(std::shared_ptr<AudioFilter> filter);

    const IntrusivePtr<CurveEditor>& GetCurveEditor() const { return curveEditor_; }
    const IntrusivePtr<SpectrumDraw>& GetSpectrumDraw() const { return spectrumDraw_; }

protected:
    explicit SpectrumMeterEditorView(std::shared_ptr<AudioFilter> filter);
    /// Stops the feeding of the meter before anything else goes.
    ~SpectrumMeterEditorView() override;

    void OnCheckboxParameterChanged(int index, IntrusivePtr<qorui::UI_Checkbox> control) override;
    void OnEditNumberParameterChanged(int index, IntrusivePtr<EditNumber> control) override;
    void OnPopupChanged(const qorui::UI_ControlChangedMessage& message,
                        IntrusivePtr<qorui::UI_Popup> control, int index) override;
    void UpdatePopup(IntrusivePtr<qorui::UI_Popup> control, int index) override;
    void OnThemeChanged() override;

private:
    bool IsOn(int index) const;
    void UpdatePeakHoldTime();
    /// The spectrum's and the ruler's frequency scale, from the log scale parameter.
    void UpdateScale();
    /// The spectrum covers what the graph shows.
    void UpdateSpectrumRanges();

    qoraudiofilters::SpectrumMeter* analyser_ = nullptr;
    std::shared_ptr<qoraudiofilters::SpectrumMeter> analyserShared_;
    IntrusivePtr<CurveEditor> curveEditor_;
    qorcore::ScopedConnection rangeConnection_;
    IntrusivePtr<SpectrumDraw> spectrumDraw_;
    // The layout's logarithmic frequency ruler and a linear one like it.
    IntrusivePtr<qorui::RulerBase> logRuler_;
    IntrusivePtr<qorui::RulerBase> linearRuler_;
    std::unique_ptr<OwnedSpectrumMeter> meter_;
};

} // namespace qoraudiofiltersui
