#pragma once

#include "graphs/scales/freq_scale.hpp"
#include "graphs/scales/mag_scale.hpp"
#include "platform/core/checked_value.hpp"
#include "platform/core/color_rgba.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/rect.hpp"
#include "platform/core/ref_counted_object.hpp"

#include <cstdint>
#include <vector>

namespace qorui::penrig {
class Penrig;
}

namespace qoraudiofiltersui {

/// Paints a live spectrum into a graph: a curve or filled area for FFT lines, or bars for
/// third-octave and critical bands, with a peak trace that holds and then falls one pixel per
/// frame. Which column each line falls in is worked out only when the lines, the frequency view
/// or the bounds change; a frame then visits each crowded column once. Traces and fills are
/// painted as one vertical span per device column, what a one-pixel pen covers there, so a
/// frame costs the same however many lines crowd a column, and lines stay crisp at any scale.
class SpectrumDraw : public qorcore::RefCountedObject {
public:
    enum BandMode : std::uint32_t { kLinearLines = 0, kThirdOctaveBands = 1, kCriticalBands = 2 };

    explicit SpectrumDraw(float sample_rate);

    virtual void Draw(qorui::penrig::Penrig* penrig);
    virtual qorcore::ColorRGBA GetStandardColor() const;
    virtual qorcore::ColorRGBA GetLinearColor() const;
    virtual qorcore::ColorRGBA GetLinearPeakColor() const;
    virtual qorcore::ColorRGBA GetThirdOctaveOutlineColor() const;
    virtual qorcore::ColorRGBA GetThirdOctaveFillColor() const;
    virtual qorcore::ColorRGBA GetThirdOctavePeakColor() const;
    virtual qorcore::ColorRGBA GetCriticalOutlineColor() const;
    virtual qorcore::ColorRGBA GetCriticalFillColor() const;
    virtual qorcore::ColorRGBA GetCriticalPeakColor() const;

    /// `data` holds one amplitude per line (or band); (fft_size >> 1) + 1 of them are kept.
    void SetSpectrumData(unsigned int fft_size, const std::vector<float>& data,
                         unsigned int line_count, unsigned int band_mode, bool update_lines);

    void SetBounds(const qorcore::RectT<float>& bounds, float scale);
    const qorcore::RectT<float>& GetBounds() const { return bounds_; }
    void SetSampleRate(float sample_rate);
    float GetSampleRate() const { return sampleRate_; }
    void SetFreqRange(const qorcore::value_range<float>& range);
    qorcore::value_range<float> GetFreqRange() const;
    void SetDBRange(const qorcore::value_range<float>& range);
    qorcore::value_range<float> GetDBRange() const;
    void SetMinDecibelsDisplayed(float decibels);
    qorcore::IntrusivePtr<FreqScale> GetFreqScale() const { return freqScale_; }
    void SetFreqScale(qorcore::IntrusivePtr<FreqScale> scale);
    qorcore::IntrusivePtr<MagScale> GetMagScale() const { return magScale_; }
    void SetMagScale(qorcore::IntrusivePtr<MagScale> scale);

    void SetFill(bool fill) { fill_ = fill; }
    void SetFlipVertically(bool flip) { flipVertically_ = flip; }
    void SetShowPeakHold(bool show) { showPeakHold_ = show; }
    bool GetShowPeakHold() const { return showPeakHold_; }
    void SetPeakHoldTime(double milliseconds);
    double GetPeakHoldTime() const { return peakHoldTime_; }
    void ResetPeaks();
    void SetCustomColor(const qorcore::ColorRGBA& color) { customColor_ = color; }
    void SetUseCustomColor(bool use) { useCustomColor_ = use; }

    qorcore::checked_value<float> HzToPixels(float hz, bool clamp) const;
    float PixelsToHz(float pixels, bool clamp) const;
    float dBToPixels(float decibels, bool clamp) const;

    // What a frame works from, for tests and subclasses.
    const std::vector<float>& GetLinePixels() const { return linePixels_; }
    const std::vector<std::uint32_t>& GetLinesPerColumn() const { return linesPerColumn_; }
    const std::vector<float>& GetPeakPixels() const { return peakPixels_; }
    const std::vector<double>& GetPeakAges() const { return peakAges_; }

protected:
    void DrawLinear(qorui::penrig::Penrig* penrig, double elapsed, const std::vector<float>& data,
                    std::uint64_t line_count, const qorcore::ColorRGBA& color,
                    const qorcore::ColorRGBA& peak_color);
    void FillLinear(qorui::penrig::Penrig* penrig, double elapsed, const std::vector<float>& data,
                    std::uint64_t line_count, const qorcore::ColorRGBA& color);
    void DrawBand(qorui::penrig::Penrig* penrig, std::uint32_t mode, double elapsed);
    void UpdateLineState();
    void UpdateState();
    void ValidateBufferSizes();

private:
    /// A point of a trace in the bounds' pixels, and the peak column its level counts for.
    struct point_t {
        float x;
        float y;
        std::size_t column;
    };
    /// What a trace covers of one device column, in device pixels from the bounds' top, and
    /// whether it is thin enough to be antialiased.
    struct span_t {
        float top;
        float bottom;
        bool smooth;
    };
    /// Columns filled as one outline: antialiased (turn -1) or crisp in one of three turns.
    /// Under an area, the piece is solid below `solid`.
    struct piece_t {
        std::size_t first;
        std::size_t last;
        int turn;
        float solid;
    };
    /// The curve of the lines: one point per sparse line, then one per crowded column. While
    /// `Draw` runs, the fill and the curve share one walk of the lines.
    const std::vector<point_t>& CurveOfFrame(const std::vector<float>& data,
                                             std::uint64_t line_count);
    void WalkLinear(const std::vector<float>& data, std::uint64_t line_count);
    /// Spans of a polyline stroked with a one-device-pixel pen, segments lying on the floor left
    /// out; returns the number of device columns.
    std::size_t TraceSpans(const std::vector<point_t>& points);
    /// Spans of the area between a polyline and the bottom of the bounds; returns the number of
    /// device columns.
    std::size_t AreaSpans(const std::vector<point_t>& points);
    /// Fills the spans of the first `columns`: a trace's or, if `area`, an area's.
    void FillSpans(qorui::penrig::Penrig* penrig, std::size_t columns,
                   const qorcore::ColorRGBA& color, bool area);
    /// Empties the spans of the device columns of the bounds and returns their number.
    std::size_t ResetSpans();
    /// The peak rule of one column or band: a level at or above the peak takes it over; a peak
    /// older than the hold time falls one pixel; otherwise it ages.
    void ApplyPeakRule(std::size_t index, float y, double elapsed);
    const FreqScale& Freq() const;
    const MagScale& Mag() const;

    double lastDrawTime_ = 0.0;
    std::uint64_t lineCount_ = 0;
    float sampleRate_;
    bool fill_ = false;
    bool flipVertically_ = false;
    bool showPeakHold_ = false;
    double peakHoldTime_ = 1000.0;
    qorcore::IntrusivePtr<FreqScale> freqScale_;
    qorcore::IntrusivePtr<MagScale> magScale_;
    std::vector<float> linePixels_;
    std::vector<std::uint32_t> linesPerColumn_;
    std::vector<float> spectrumData_;
    std::vector<float> peakPixels_;
    std::vector<double> peakAges_;
    std::uint32_t bandMode_ = kLinearLines;
    qorcore::RectT<float> bounds_;
    float scaleFactor_ = 1.0f;
    qorcore::ColorRGBA customColor_{0.0f, 0.0f, 0.0f, 1.0f};
    bool useCustomColor_ = false;
    // Reused from frame to frame.
    std::vector<point_t> curvePoints_;
    std::vector<point_t> peakCurvePoints_;
    std::vector<span_t> spans_;
    std::vector<piece_t> pieces_;
    bool inFrame_ = false;     // while Draw runs
    bool frameWalked_ = false; // the curve points hold this frame's walk
    const std::vector<float>* walkedData_ = nullptr;
    std::uint64_t walkedLineCount_ = 0;
};

} // namespace qoraudiofiltersui
