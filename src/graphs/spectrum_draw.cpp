#include "graphs/spectrum_draw.hpp"

#include "graphs/scales/spectrum_band_tables.hpp"
#include "platform/core/high_precision_time.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/draw/penrig.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace qoraudiofiltersui {

namespace {

using qoraudiotoolkit::SpectrumBandTables;
using qorcore::ColorRGBA;

constexpr float silence_amplitude = 1e-20f;
constexpr float silence_db = -400.0f;
constexpr float log_to_db = 8.685889f;

float LevelOfAmplitude(float amplitude) {
    return amplitude < silence_amplitude ? silence_db : std::log(amplitude) * log_to_db;
}

/// Half away from zero, as pixel columns are chosen everywhere.
long RoundColumn(float pixel) {
    return static_cast<long>(pixel >= 0.0f ? pixel + 0.5f : pixel - 0.5f);
}

/// The device columns from `first` to `last`, cut to the `columns` there are; empty when the
/// range lies outside.
std::pair<std::size_t, std::size_t> ColumnRange(float first, float last, std::size_t columns) {
    first = std::max(first, 0.0f);
    last = std::min(last, static_cast<float>(columns) - 1.0f);
    if (!(first <= last)) // NaN included
        return {1, 0};
    return {static_cast<std::size_t>(first), static_cast<std::size_t>(last)};
}

/// Writes closed outlines into a penrig's path from device-pixel points, leaving out points that
/// lie within a tolerance, vertically, of the line between the points kept around them: runs of
/// columns along a straight segment become one edge. The first point is an anchor; a candidate
/// is taken as long as every point passed over stays within the tolerance of the line from the
/// anchor to it.
class OutlineWriter {
public:
    OutlineWriter(qorui::penrig::Penrig& penrig, float x, float y, float scale, float tolerance)
        : penrig_(penrig), x_(x), y_(y), scale_(scale), tolerance_(tolerance) {}

    void Begin(float x, float y) {
        anchor_ = {x, y};
        hasCandidate_ = false;
        penrig_.MoveTo(x_ + x / scale_, y_ + y / scale_);
    }

    void Add(float x, float y) {
        if (hasCandidate_) {
            const float dx = x - anchor_.x;
            if (dx != 0.0f && (dx > 0.0f) == (candidate_.x > anchor_.x)) {
                const float slope = (y - anchor_.y) / dx;
                if (slope >= low_ && slope <= high_) {
                    Narrow(x, y);
                    return;
                }
            }
            Emit(candidate_);
            anchor_ = candidate_;
            hasCandidate_ = false;
        }
        if (x == anchor_.x) { // an upright step is always kept
            Emit({x, y});
            anchor_ = {x, y};
            return;
        }
        low_ = -std::numeric_limits<float>::infinity();
        high_ = std::numeric_limits<float>::infinity();
        hasCandidate_ = true;
        Narrow(x, y);
    }

    void End() {
        if (hasCandidate_)
            Emit(candidate_);
        hasCandidate_ = false;
        penrig_.ClosePath();
    }

private:
    struct vertex_t {
        float x;
        float y;
    };
    void Narrow(float x, float y) {
        const float dx = x - anchor_.x;
        const float a = (y - tolerance_ - anchor_.y) / dx;
        const float b = (y + tolerance_ - anchor_.y) / dx;
        low_ = std::max(low_, std::min(a, b));
        high_ = std::min(high_, std::max(a, b));
        candidate_ = {x, y};
    }

    void Emit(const vertex_t& v) { penrig_.LineTo(x_ + v.x / scale_, y_ + v.y / scale_); }

    qorui::penrig::Penrig& penrig_;
    float x_, y_, scale_, tolerance_;
    vertex_t anchor_{0.0f, 0.0f};
    vertex_t candidate_{0.0f, 0.0f};
    bool hasCandidate_ = false;
    float low_ = 0.0f;
    float high_ = 0.0f;
};

} // namespace

SpectrumDraw::SpectrumDraw(float sample_rate)
    : sampleRate_(sample_rate), freqScale_(new FreqScale(false)), magScale_(new MagScale()) {
    freqScale_->SetNumChannels(1);
    freqScale_->SetTotalFreqRange(qorcore::value_range<float>(20.0f, 20000.0f));
    freqScale_->SetVisibleFreqRange(qorcore::value_range<float>(20.0f, 20000.0f), false);
    freqScale_->SetScaleType(kLogScale);
    magScale_->SetVisibleRange(qorcore::value_range<float>(-120.0f, 0.0f), true);
    const std::size_t largest = std::max<std::size_t>({SpectrumBandTables::GetFFTBlockSize(4),
                                                       SpectrumBandTables::GetNumThirdOctaveBands(),
                                                       SpectrumBandTables::GetNumCriticalBands()});
    spectrumData_.assign(largest, 0.0f);
}

const FreqScale& SpectrumDraw::Freq() const {
    return *qorcore::config::ThrowIfNull(freqScale_, "FreqScale");
}

const MagScale& SpectrumDraw::Mag() const {
    return *qorcore::config::ThrowIfNull(magScale_, "MagScale");
}

// Colours -----------------------------------------------------------------------------------

ColorRGBA SpectrumDraw::GetStandardColor() const {
    return ColorRGBA(234 / 255.0f, 234 / 255.0f, 234 / 255.0f, 1.0f);
}
ColorRGBA SpectrumDraw::GetLinearColor() const {
    return useCustomColor_ ? customColor_ : ColorRGBA(67 / 255.0f, 150 / 255.0f, 217 / 255.0f);
}
ColorRGBA SpectrumDraw::GetLinearPeakColor() const {
    return GetStandardColor();
}
ColorRGBA SpectrumDraw::GetThirdOctaveOutlineColor() const {
    return GetStandardColor();
}
ColorRGBA SpectrumDraw::GetThirdOctaveFillColor() const {
    return GetStandardColor();
}
ColorRGBA SpectrumDraw::GetThirdOctavePeakColor() const {
    return GetStandardColor();
}
ColorRGBA SpectrumDraw::GetCriticalOutlineColor() const {
    return GetStandardColor();
}
ColorRGBA SpectrumDraw::GetCriticalFillColor() const {
    return GetStandardColor();
}
ColorRGBA SpectrumDraw::GetCriticalPeakColor() const {
    return GetStandardColor();
}

// Settings ----------------------------------------------------------------------------------

void SpectrumDraw::SetSpectrumData(unsigned int fft_size, const std::vector<float>& data,
                                   unsigned int line_count, unsigned int band_mode,
                                   bool update_lines) {
    const std::size_t bins = (fft_size >> 1) + 1;
    spectrumData_.resize(bins);
    // A short vector fills what it has; the rest is silence rather than a read past its end.
    const std::size_t copied = std::min(bins, data.size());
    std::copy_n(data.begin(), copied, spectrumData_.begin());
    std::fill(spectrumData_.begin() + static_cast<std::ptrdiff_t>(copied), spectrumData_.end(),
              0.0f);
    if (!update_lines || line_count == 0)
        return;
    if (line_count == lineCount_ && band_mode == bandMode_)
        return;
    lineCount_ = line_count;
    bandMode_ = band_mode;
    UpdateState();
}

void SpectrumDraw::SetBounds(const qorcore::RectT<float>& bounds, float scale) {
    if (bounds == bounds_ && scale == scaleFactor_)
        return;
    bounds_ = bounds;
    scaleFactor_ = scale;
    if (bounds.width > 1.0f && scale != 0.0f) {
        freqScale_->SetSize(bounds.width * scale);
        magScale_->SetHeight(bounds.height * scale);
        if (lineCount_ != 0)
            UpdateState();
    }
}

void SpectrumDraw::SetSampleRate(float sample_rate) {
    if (sample_rate == sampleRate_)
        return;
    sampleRate_ = sample_rate;
    UpdateState();
}

void SpectrumDraw::SetFreqRange(const qorcore::value_range<float>& range) {
    freqScale_->SetVisibleFreqRange(range, false);
    UpdateState();
}

qorcore::value_range<float> SpectrumDraw::GetFreqRange() const {
    return Freq().GetVisibleFreqRange();
}

void SpectrumDraw::SetDBRange(const qorcore::value_range<float>& range) {
    magScale_->SetVisibleRange(range, false);
}

qorcore::value_range<float> SpectrumDraw::GetDBRange() const {
    return Mag().GetVisibleRange();
}

void SpectrumDraw::SetMinDecibelsDisplayed(float decibels) {
    SetDBRange(qorcore::value_range<float>(decibels, Mag().GetVisibleRange().high));
}

void SpectrumDraw::SetFreqScale(qorcore::IntrusivePtr<FreqScale> scale) {
    freqScale_ = qorcore::config::ThrowIfNull(std::move(scale), "FreqScale");
    UpdateState();
}

void SpectrumDraw::SetMagScale(qorcore::IntrusivePtr<MagScale> scale) {
    magScale_ = qorcore::config::ThrowIfNull(std::move(scale), "MagScale");
}

// Only an equal time is taken, and it then resets the peaks: so the hold stays at its default.
void SpectrumDraw::SetPeakHoldTime(double milliseconds) {
    if (milliseconds != peakHoldTime_)
        return;
    peakHoldTime_ = milliseconds;
    ResetPeaks();
}

void SpectrumDraw::ResetPeaks() {
    std::fill(peakPixels_.begin(), peakPixels_.end(), bounds_.height);
    std::fill(peakAges_.begin(), peakAges_.end(), 0.0);
}

// Mappings ----------------------------------------------------------------------------------

qorcore::checked_value<float> SpectrumDraw::HzToPixels(float hz, bool clamp) const {
    return {Freq().HzToPixels(0, hz, clamp).value / scaleFactor_, true};
}

float SpectrumDraw::PixelsToHz(float pixels, bool clamp) const {
    return Freq().PixelsToHzF(0, pixels * scaleFactor_, clamp);
}

float SpectrumDraw::dBToPixels(float decibels, bool clamp) const {
    if (flipVertically_)
        decibels = Mag().GetVisibleRange().low - decibels;
    return Mag().DecibelsToPixels(decibels, clamp) / scaleFactor_;
}

// Line state --------------------------------------------------------------------------------

void SpectrumDraw::UpdateState() {
    if (lineCount_ == 0)
        return;
    UpdateLineState();
    lastDrawTime_ = 0.0;
}

void SpectrumDraw::UpdateLineState() {
    linePixels_.assign(lineCount_, 0.0f);
    const FreqScale& freq = Freq();
    if (bandMode_ != kLinearLines) {
        for (std::size_t i = 0; i != lineCount_; ++i) {
            const float hz = bandMode_ == kThirdOctaveBands
                                 ? SpectrumBandTables::GetThirdOctaveBand(i)
                                 : SpectrumBandTables::GetCriticalBand(i);
            linePixels_[i] = freq.HzToPixels(0, hz, true).value / scaleFactor_;
        }
        return;
    }
    std::fill(linesPerColumn_.begin(), linesPerColumn_.end(), 0u);
    const float visible_low = freq.GetVisibleFreqRange().low;
    const double n = static_cast<double>(lineCount_);
    for (std::size_t i = 0; i != lineCount_; ++i) {
        const double hz = (static_cast<double>(i) / n) * (0.5 * sampleRate_);
        float pixel = -1.0f;
        if (!(hz < visible_low))
            pixel = freq.HzToPixels(0, hz, true).value / scaleFactor_;
        linePixels_[i] = pixel;
        const long column = RoundColumn(pixel);
        if (column >= 0 && static_cast<std::size_t>(column) < linesPerColumn_.size())
            ++linesPerColumn_[static_cast<std::size_t>(column)];
    }
}

void SpectrumDraw::ValidateBufferSizes() {
    const std::size_t columns =
        bounds_.width > 0.0f ? static_cast<std::size_t>(std::floor(bounds_.width)) : 0;
    if (peakPixels_.size() < columns) {
        peakPixels_.resize(columns, bounds_.height);
        peakAges_.resize(columns, 0.0);
    }
    if (linesPerColumn_.size() < columns)
        linesPerColumn_.resize(columns, 0u);
}

void SpectrumDraw::ApplyPeakRule(std::size_t index, float y, double elapsed) {
    if (index >= peakPixels_.size())
        return;
    float& peak = peakPixels_[index];
    double& age = peakAges_[index];
    if (peak >= y) {
        peak = y;
        age = 0.0;
    } else if (age > peakHoldTime_ && peakHoldTime_ != 0.0) {
        peak += 1.0f; // one pixel a frame, whatever the time between frames
    } else {
        age += elapsed;
    }
}

// Drawing -----------------------------------------------------------------------------------

void SpectrumDraw::Draw(qorui::penrig::Penrig* penrig) {
    qorcore::config::ThrowIfNull(penrig, "Penrig");
    ValidateBufferSizes();
    const double now = static_cast<double>(qorcore::HighPrecisionTime::ConvertToNanos(
                           qorcore::HighPrecisionTime::GetCurrentTimeStamp())) /
                       1000000.0;
    const double elapsed = lastDrawTime_ > now ? 0.0 : now - lastDrawTime_;
    lastDrawTime_ = now;
    if (linePixels_.empty())
        return;
    if (bandMode_ == kLinearLines) {
        // The fill and the curve below share one walk of the lines.
        struct FrameScope {
            bool& in_frame;
            ~FrameScope() { in_frame = false; }
        } scope{inFrame_};
        inFrame_ = true;
        frameWalked_ = false;
        if (fill_)
            FillLinear(penrig, elapsed, spectrumData_, lineCount_, GetLinearColor());
        DrawLinear(penrig, elapsed, spectrumData_, lineCount_, GetLinearColor(),
                   GetLinearPeakColor());
    } else {
        DrawBand(penrig, bandMode_, elapsed);
    }
}

const std::vector<SpectrumDraw::point_t>& SpectrumDraw::CurveOfFrame(const std::vector<float>& data,
                                                                     std::uint64_t line_count) {
    if (!(inFrame_ && frameWalked_ && walkedData_ == &data && walkedLineCount_ == line_count)) {
        WalkLinear(data, line_count);
        frameWalked_ = inFrame_;
        walkedData_ = &data;
        walkedLineCount_ = line_count;
    }
    return curvePoints_;
}

void SpectrumDraw::WalkLinear(const std::vector<float>& data, std::uint64_t line_count) {
    curvePoints_.clear();
    const float w = std::floor(bounds_.width);
    const std::size_t count = std::min<std::size_t>({line_count, linePixels_.size(), data.size()});
    const auto add = [&](std::size_t column, float x, float amplitude) {
        curvePoints_.push_back({x, dBToPixels(LevelOfAmplitude(amplitude), true), column});
    };

    // Sparse region: a point per line, until lines start sharing columns.
    std::size_t i = 0;
    for (; i < count; ++i) {
        const float x = linePixels_[i];
        if (x < 0.0f)
            continue;
        const auto column = static_cast<std::size_t>(x);
        if (x >= w || column >= linesPerColumn_.size() || linesPerColumn_[column] >= 2)
            break;
        add(column, x, data[i]);
    }
    // Crowded region: a point per column, at the loudest of the lines that share it.
    while (i < count) {
        const float x = linePixels_[i];
        if (x < 0.0f) {
            ++i;
            continue;
        }
        const auto column = static_cast<std::size_t>(x);
        if (x >= w || column >= linesPerColumn_.size())
            break;
        const std::uint32_t shared = linesPerColumn_[column];
        if (shared == 0) {
            ++i;
            continue;
        }
        const std::size_t end = std::min<std::size_t>(i + shared, count);
        const float loudest = *std::max_element(data.begin() + static_cast<std::ptrdiff_t>(i),
                                                data.begin() + static_cast<std::ptrdiff_t>(end));
        add(column, static_cast<float>(column), loudest);
        i = end;
    }
}

// Spans ---------------------------------------------------------------------------------------
//
// Traces and fills are not stroked segment by segment: a crowded spectrum has a steep segment in
// every column, and the rasteriser's cost grows with segments times the rows they cross. Each
// device column gets instead the span a one-pixel pen would cover there, and runs of columns are
// filled as outlines through the column centres. A pixel value p is the centre of device pixel
// p * scale, so positions go to device pixels as p * scale + 0.5 and the columns are whole device
// pixels: lines are crisp at every scale. Spans are filled without antialiasing, each covering
// the rows whose centres it holds, except the thin spans of long flat segments.

std::size_t SpectrumDraw::ResetSpans() {
    const float columns = std::floor(bounds_.width) * scaleFactor_;
    const std::size_t n = columns >= 1.0f ? static_cast<std::size_t>(columns) : 0;
    if (spans_.size() < n)
        spans_.resize(n);
    std::fill_n(spans_.begin(), n,
                span_t{std::numeric_limits<float>::infinity(),
                       -std::numeric_limits<float>::infinity(), true});
    return n;
}

std::size_t SpectrumDraw::TraceSpans(const std::vector<point_t>& points) {
    const std::size_t columns = ResetSpans();
    const float s = scaleFactor_;
    const float floor_row = std::floor(bounds_.height) - 1.0f;
    for (std::size_t k = 1; k < points.size() && columns != 0; ++k) {
        const point_t& from = points[k - 1];
        const point_t& to = points[k];
        if (!(from.y < floor_row || to.y < floor_row))
            continue; // no line runs along the floor
        float x0 = from.x * s + 0.5f, y0 = from.y * s + 0.5f;
        float x1 = to.x * s + 0.5f, y1 = to.y * s + 0.5f;
        if (x1 < x0) {
            std::swap(x0, x1);
            std::swap(y0, y1);
        }
        const float dx = x1 - x0;
        const bool upright = !(dx > 0.0f);
        const float slope = upright ? 0.0f : (y1 - y0) / dx;
        // What a one-pixel pen adds above and below the segment's own rise within a column,
        // so that the column holds as much ink as the stroke would: half a pixel when flat,
        // nothing when upright.
        const float rise = std::fabs(slope);
        const float half = upright ? 0.0f : 0.5f / (std::sqrt(1.0f + rise * rise) + rise);
        // A flat segment longer than eight pixels is antialiased, or its steps would show;
        // shorter ones have too few steps to see, and antialiasing costs the rasteriser more
        // than all the crisp columns of a crowded region together.
        const bool line = std::fabs(to.x - from.x) > 8.0f;
        const auto [first, last] =
            ColumnRange(std::floor(x0), upright ? std::floor(x0) : std::ceil(x1) - 1.0f, columns);
        for (std::size_t c = first; c <= last; ++c) {
            const float left = static_cast<float>(c);
            const float ya = upright ? y0 : y0 + (std::max(x0, left) - x0) * slope;
            const float yb = upright ? y1 : y0 + (std::min(x1, left + 1.0f) - x0) * slope;
            span_t& span = spans_[c];
            span.top = std::min(span.top, std::min(ya, yb) - half);
            span.bottom = std::max(span.bottom, std::max(ya, yb) + half);
            span.smooth = span.smooth && line;
        }
    }
    return columns;
}

std::size_t SpectrumDraw::AreaSpans(const std::vector<point_t>& points) {
    const std::size_t columns = ResetSpans();
    const float s = scaleFactor_;
    const float bottom = std::floor(bounds_.height) * s;
    // Each column is filled up to the curve at its centre: for a straight piece that is the
    // column's exact share of the area under it.
    for (std::size_t k = 1; k < points.size() && columns != 0; ++k) {
        float x0 = points[k - 1].x * s + 0.5f, y0 = points[k - 1].y * s + 0.5f;
        float x1 = points[k].x * s + 0.5f, y1 = points[k].y * s + 0.5f;
        if (x1 < x0) {
            std::swap(x0, x1);
            std::swap(y0, y1);
        }
        const float dx = x1 - x0;
        const auto [first, last] =
            ColumnRange(std::ceil(x0 - 0.5f), std::floor(x1 - 0.5f), columns);
        for (std::size_t c = first; c <= last; ++c) {
            const float centre = static_cast<float>(c) + 0.5f;
            const float y = dx > 0.0f ? y0 + (centre - x0) * ((y1 - y0) / dx) : std::min(y0, y1);
            span_t& span = spans_[c];
            span.top = std::min(span.top, y);
            span.bottom = bottom;
            span.smooth = false;
        }
    }
    return columns;
}

void SpectrumDraw::FillSpans(qorui::penrig::Penrig* penrig, std::size_t columns,
                             const ColorRGBA& color, bool area) {
    // Taller than this, a span's antialiased ends are not worth what they cost the rasteriser.
    constexpr float thin_span = 2.0f;
    const float s = scaleFactor_;
    const float height = bounds_.height * s;
    for (std::size_t c = 0; c != columns; ++c) {
        span_t& span = spans_[c];
        span.top = std::max(span.top, 0.0f);
        span.bottom = std::min(span.bottom, height);
        span.smooth = span.smooth && span.bottom - span.top <= thin_span;
        if (!span.smooth) { // a crisp span covers the rows whose centres it holds
            span.top = std::floor(span.top + 0.5f);
            span.bottom = std::floor(span.bottom + 0.5f);
        }
    }
    const auto empty = [&](std::size_t c) {
        return !(spans_[c].top < spans_[c].bottom);
    };
    // Filled without antialiasing, the rasteriser closes a gap of one pixel between two shapes
    // in a row, so a notch one column wide would fill up. Crisp pieces therefore keep their
    // tops and their bottoms monotonic, which leaves no gap inside a piece, and they are
    // filled in three turns, which keeps the pieces of a turn two columns apart at least.
    constexpr int turns = 3;
    pieces_.clear();
    int crisp_pieces = 0;
    for (std::size_t c = 0; c != columns; ++c) {
        if (empty(c))
            continue;
        const std::size_t first = c;
        const bool smooth = spans_[c].smooth;
        int top_trend = 0, bottom_trend = 0;
        const auto keeps = [](int& trend, float step) {
            const int sign = step > 0.0f ? 1 : step < 0.0f ? -1 : 0;
            if (sign != 0 && trend != 0 && sign != trend)
                return false;
            if (sign != 0)
                trend = sign;
            return true;
        };
        float deepest = spans_[c].top;
        while (c + 1 != columns && !empty(c + 1) && spans_[c + 1].smooth == smooth &&
               spans_[c + 1].top <= spans_[c].bottom && spans_[c + 1].bottom >= spans_[c].top) {
            if (!smooth) {
                int top = top_trend, bottom = bottom_trend;
                if (!keeps(top, spans_[c + 1].top - spans_[c].top) ||
                    !keeps(bottom, spans_[c + 1].bottom - spans_[c].bottom))
                    break;
                top_trend = top;
                bottom_trend = bottom;
            }
            ++c;
            deepest = std::max(deepest, spans_[c].top);
        }
        // Under an area, each row of a piece would be a span of its own: below its deepest top
        // the piece is solid, and that part goes with the others as plain rectangles.
        pieces_.push_back(
            {first, c, smooth ? -1 : crisp_pieces++ % turns, area ? deepest : spans_[c].bottom});
    }

    qorui::penrig::Penrig::StateSaver saver(*penrig);
    penrig->SetColor(color);
    for (int turn = -1; turn != turns; ++turn) {
        // An antialiased outline may stray 1/32 pixel. A crisp one may stray by less than half a
        // pixel from the whole-pixel ends of its spans at the column centres, which lights
        // exactly the same pixels.
        OutlineWriter outline(*penrig, bounds_.x, bounds_.y, s, turn < 0 ? 1.0f / 32.0f : 0.49f);
        penrig->NewPath();
        bool any = false;
        for (const piece_t& piece : pieces_) {
            if (piece.turn != turn)
                continue;
            if (area && std::all_of(spans_.begin() + static_cast<std::ptrdiff_t>(piece.first),
                                    spans_.begin() + static_cast<std::ptrdiff_t>(piece.last + 1),
                                    [&](const span_t& span) { return span.top >= piece.solid; }))
                continue; // a flat top: all of it is solid
            const std::size_t first = piece.first, last = piece.last;
            const auto left = static_cast<float>(first);
            const auto right = static_cast<float>(last + 1);
            const auto bottom = [&](std::size_t k) {
                return area ? piece.solid : spans_[k].bottom;
            };
            // Tops left to right, then bottoms back, each at its column's centre.
            outline.Begin(left, spans_[first].top);
            for (std::size_t k = first; k <= last; ++k)
                outline.Add(static_cast<float>(k) + 0.5f, spans_[k].top);
            outline.Add(right, spans_[last].top);
            outline.Add(right, bottom(last));
            if (!area)
                for (std::size_t k = last + 1; k-- > first;)
                    outline.Add(static_cast<float>(k) + 0.5f, spans_[k].bottom);
            outline.Add(left, bottom(first));
            outline.End();
            any = true;
        }
        if (any) {
            penrig->SetAntialias(turn < 0);
            penrig->Fill();
        }
    }
    if (area && !pieces_.empty()) {
        // Rectangles only: the rasteriser takes them as boxes, exactly.
        penrig->NewPath();
        for (const piece_t& piece : pieces_)
            penrig->FormRect(qorcore::RectT<float>(
                bounds_.x + static_cast<float>(piece.first) / s, bounds_.y + piece.solid / s,
                static_cast<float>(piece.last + 1 - piece.first) / s,
                (spans_[piece.first].bottom - piece.solid) / s));
        penrig->SetAntialias(false);
        penrig->Fill();
    }
}

void SpectrumDraw::DrawLinear(qorui::penrig::Penrig* penrig, double elapsed,
                              const std::vector<float>& data, std::uint64_t line_count,
                              const ColorRGBA& color, const ColorRGBA& peak_color) {
    if (linePixels_.empty() || linesPerColumn_.empty())
        return;
    const std::vector<point_t>& curve = CurveOfFrame(data, line_count);
    peakCurvePoints_.clear();
    for (const point_t& point : curve) {
        ApplyPeakRule(point.column, point.y, elapsed);
        if (point.column < peakPixels_.size())
            peakCurvePoints_.push_back({point.x, peakPixels_[point.column], point.column});
    }
    FillSpans(penrig, TraceSpans(curve), color, false);
    if (showPeakHold_)
        FillSpans(penrig, TraceSpans(peakCurvePoints_), peak_color, false);
}

void SpectrumDraw::FillLinear(qorui::penrig::Penrig* penrig, double, const std::vector<float>& data,
                              std::uint64_t line_count, const ColorRGBA&) {
    if (linePixels_.empty() || linesPerColumn_.empty())
        return;
    FillSpans(penrig, AreaSpans(CurveOfFrame(data, line_count)), GetLinearColor(), true);
}

void SpectrumDraw::DrawBand(qorui::penrig::Penrig* penrig, std::uint32_t mode, double elapsed) {
    const bool third = mode == kThirdOctaveBands;
    const ColorRGBA fill = third ? GetThirdOctaveFillColor() : GetCriticalFillColor();
    const ColorRGBA outline = third ? GetThirdOctaveOutlineColor() : GetCriticalOutlineColor();
    const ColorRGBA peak_color = third ? GetThirdOctavePeakColor() : GetCriticalPeakColor();
    const float w = std::floor(bounds_.width);
    const float bottom = std::floor(bounds_.height);
    const std::size_t count =
        std::min<std::size_t>({lineCount_, linePixels_.size(), spectrumData_.size()});
    for (std::size_t i = 0; i != count; ++i) {
        float level = 20.0f * std::log10(spectrumData_[i]);
        if (std::isnan(level))
            level = silence_db;
        const float y = dBToPixels(level, true);
        ApplyPeakRule(i, y, elapsed);
        const float left = linePixels_[i];
        if (left >= w - 1.0f)
            continue;
        const float right = i + 1 < count ? linePixels_[i + 1] - 1.0f : w - 1.0f;
        if (right < left)
            continue;
        const qorcore::RectT<float> bar(bounds_.x + left, bounds_.y + y, right - left + 1.0f,
                                        bottom - y);
        if (bar.height > 0.0f) {
            penrig->FillRect(bar, fill);
            penrig->FrameRect(bar, outline, 1.0f / scaleFactor_);
        }
        if (showPeakHold_ && i < peakPixels_.size()) {
            const float peak_y = bounds_.y + std::floor(peakPixels_[i]) + 0.5f;
            penrig->NewPath();
            penrig->MoveTo(bounds_.x + left, peak_y);
            penrig->LineTo(bounds_.x + right + 1.0f, peak_y);
            penrig->SetPen(1.0f / scaleFactor_, peak_color);
            penrig->Stroke();
        }
    }
}

} // namespace qoraudiofiltersui
