#pragma once

#include "graphs/curve_editor.hpp"
#include "graphs/spectrum_draw.hpp"
#include "platform/core/connection.hpp"
#include "platform/core/fader_translator.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/host/audio_filter.hpp"

#include <memory>
#include <vector>

namespace qoraudiofiltersui {

/// The curve of the FFT filter: up to 128 points of frequency and fader-normalised level, kept
/// in the filter's parameters, over a live spectrum of the filter's input. The curve drawn is the
/// filter's own response, asked for after every write, so that what the user sees is what the
/// filter does with its splines and its FFT size.
///
/// Parameters: 3 brackets a bulk write of the points, 4 is the scale (linear at 0.5 and above),
/// 5 and 6 the visible range over Nyquist, 9 the point count over 128, and 10 + 2i, 11 + 2i the
/// frequency over Nyquist and the level of point i.
class FFTFilterGraph : public CurveEditor {
public:
    static constexpr int kCurveWriteParameter = 3;
    static constexpr int kScaleParameter = 4;
    static constexpr int kRangeLowParameter = 5;
    static constexpr int kRangeHighParameter = 6;
    static constexpr int kPointCountParameter = 9;
    static constexpr int kFirstPointParameter = 10;
    static constexpr std::size_t kMaxPoints = 128;
    /// How many values of the response the graph asks for.
    static constexpr int kResponsePointCount = 4096;
    static constexpr double kLowestFrequency = 20.0;

    /// Builds the rulers for the filter's scale, reads the points and starts the meter. A null
    /// filter throws the null-pointer exception.
    explicit FFTFilterGraph(std::shared_ptr<qoraudiofilterhost::AudioFilter> filter);

    /// One tick of the editor: rebuilds the rulers when the scale changed and the curve when a
    /// point changed; otherwise does nothing. Ignored while the user drags.
    void SyncParameters();
    /// Reads the points from the filter again.
    void UpdateGraph() { UpdateCurvePointsFromComponent(); }
    /// Two points at 0 dB, at 20 Hz and at Nyquist, written to the filter.
    void ResetPoints();
    /// Installs a new spectrum meter on the filter and listens to it, or takes it off again.
    /// Filters that carry no spectrum meter are left alone.
    void EnableMeter(bool enable);

    bool IsLogarithmic() const { return logarithmic_; }
    bool IsInteracting() const { return interacting_; }
    bool IsMeterEnabled() const;
    /// The painter of the spectrum; null after the meter was switched off.
    const qorcore::IntrusivePtr<SpectrumDraw>& GetSpectrumDraw() const { return spectrumDraw_; }
    const qorcore::FaderTranslator<double>& GetFaderTranslator() const { return faderTranslator_; }

    void UI_SizeChanged() override;
    void SetCurrentRange(double horizontal_start, double horizontal_end, double vertical_start,
                         double vertical_end) override;

protected:
    /// Stops the meter before anything else goes.
    ~FFTFilterGraph() override;

private:
    struct Meter;

    double GetNyquist() const;
    void UpdateRulers();
    /// The only way from the graph to the filter: the points as one bracketed write.
    void CurvePointsToComponent(const CurvePoints& points);
    void UpdateCurvePointsFromComponent();
    void UpdateResponseData();
    void OnInteractiveChange(const qorui::UI_InteractiveControlChangedMessage& message);
    /// A spectrum of the meter, with the arguments of `SpectrumDraw::SetSpectrumData`.
    void OnMeterDataChanged(unsigned int fftSize, const std::vector<float>& data,
                            unsigned int count, unsigned int spectrumType, bool updateLines);
    /// Makes the painter and the layer that shows it, in place of any earlier ones.
    void CreateSpectrum();
    /// Gives the painter the frequency and level scales of the axes.
    void UpdateSpectrumScales();

    std::shared_ptr<qoraudiofilterhost::AudioFilter> filter_;
    std::vector<float> xCache_;
    std::vector<float> yCache_;
    qorcore::FaderTranslator<double> faderTranslator_;
    std::unique_ptr<Meter> meter_;
    qorcore::IntrusivePtr<SpectrumDraw> spectrumDraw_;
    qorcore::IntrusivePtr<ContentLayer> spectrumLayer_;
    bool logarithmic_ = false;
    bool interacting_ = false;
};

} // namespace qoraudiofiltersui
