#include "graphs/spectrum_draw.hpp"

#include "graphs/scales/spectrum_band_tables.hpp"
#include "platform/core/high_precision_time.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/draw/penrig.hpp"

#include <algorithm>
#include <cmath>

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

} // namespace

SpectrumDraw::SpectrumDraw(float sample_rate)
    : sample_rate_(sample_rate), freq_scale_(new FreqScale(false)), mag_scale_(new MagScale()) {
    freq_scale_->SetNumChannels(1);
    freq_scale_->SetTotalFreqRange(qorcore::value_range<float>(20.0f, 20000.0f));
    freq_scale_->SetVisibleFreqRange(qorcore::value_range<float>(20.0f, 20000.0f), false);
    freq_scale_->SetScaleType(kLogScale);
    mag_scale_->SetVisibleRange(qorcore::value_range<float>(-120.0f, 0.0f), true);
    const std::size_t largest = std::max<std::size_t>({SpectrumBandTables::GetFFTBlockSize(4),
                                                       SpectrumBandTables::GetNumThirdOctaveBands(),
                                                       SpectrumBandTables::GetNumCriticalBands()});
    spectrum_data_.assign(largest, 0.0f);
}

const FreqScale& SpectrumDraw::Freq() const {
    return *qorcore::config::ThrowIfNull(freq_scale_, "FreqScale");
}

const MagScale& SpectrumDraw::Mag() const {
    return *qorcore::config::ThrowIfNull(mag_scale_, "MagScale");
}

// Colours -----------------------------------------------------------------------------------

ColorRGBA SpectrumDraw::GetStandardColor() const {
    return ColorRGBA(234 / 255.0f, 234 / 255.0f, 234 / 255.0f, 1.0f);
}
ColorRGBA SpectrumDraw::GetLinearColor() const {
    return use_custom_color_ ? custom_color_ : ColorRGBA(67 / 255.0f, 150 / 255.0f, 217 / 255.0f);
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
    spectrum_data_.resize(bins);
    // A short vector fills what it has; the rest is silence rather than a read past its end.
    const std::size_t copied = std::min(bins, data.size());
    std::copy_n(data.begin(), copied, spectrum_data_.begin());
    std::fill(spectrum_data_.begin() + static_cast<std::ptrdiff_t>(copied), spectrum_data_.end(),
              0.0f);
    if (!update_lines || line_count == 0)
        return;
    if (line_count == line_count_ && band_mode == band_mode_)
        return;
    line_count_ = line_count;
    band_mode_ = band_mode;
    UpdateState();
}

void SpectrumDraw::SetBounds(const qorcore::RectT<float>& bounds, float scale) {
    if (bounds == bounds_ && scale == scale_factor_)
        return;
    bounds_ = bounds;
    scale_factor_ = scale;
    if (bounds.width > 1.0f && scale != 0.0f) {
        freq_scale_->SetSize(bounds.width * scale);
        mag_scale_->SetHeight(bounds.height * scale);
        if (line_count_ != 0)
            UpdateState();
    }
}

void SpectrumDraw::SetSampleRate(float sample_rate) {
    if (sample_rate == sample_rate_)
        return;
    sample_rate_ = sample_rate;
    UpdateState();
}

void SpectrumDraw::SetFreqRange(const qorcore::value_range<float>& range) {
    freq_scale_->SetVisibleFreqRange(range, false);
    UpdateState();
}

qorcore::value_range<float> SpectrumDraw::GetFreqRange() const {
    return Freq().GetVisibleFreqRange();
}

void SpectrumDraw::SetDBRange(const qorcore::value_range<float>& range) {
    mag_scale_->SetVisibleRange(range, false);
}

qorcore::value_range<float> SpectrumDraw::GetDBRange() const {
    return Mag().GetVisibleRange();
}

void SpectrumDraw::SetMinDecibelsDisplayed(float decibels) {
    SetDBRange(qorcore::value_range<float>(decibels, Mag().GetVisibleRange().high));
}

void SpectrumDraw::SetFreqScale(qorcore::IntrusivePtr<FreqScale> scale) {
    freq_scale_ = qorcore::config::ThrowIfNull(std::move(scale), "FreqScale");
    UpdateState();
}

void SpectrumDraw::SetMagScale(qorcore::IntrusivePtr<MagScale> scale) {
    mag_scale_ = qorcore::config::ThrowIfNull(std::move(scale), "MagScale");
}

// Only an equal time is taken, and it then resets the peaks: so the hold stays at its default.
void SpectrumDraw::SetPeakHoldTime(double milliseconds) {
    if (milliseconds != peak_hold_time_)
        return;
    peak_hold_time_ = milliseconds;
    ResetPeaks();
}

void SpectrumDraw::ResetPeaks() {
    std::fill(peak_pixels_.begin(), peak_pixels_.end(), bounds_.height);
    std::fill(peak_ages_.begin(), peak_ages_.end(), 0.0);
}

// Mappings ----------------------------------------------------------------------------------

qorcore::checked_value<float> SpectrumDraw::HzToPixels(float hz, bool clamp) const {
    return {Freq().HzToPixels(0, hz, clamp).value / scale_factor_, true};
}

float SpectrumDraw::PixelsToHz(float pixels, bool clamp) const {
    return Freq().PixelsToHzF(0, pixels * scale_factor_, clamp);
}

float SpectrumDraw::dBToPixels(float decibels, bool clamp) const {
    if (flip_vertically_)
        decibels = Mag().GetVisibleRange().low - decibels;
    return Mag().DecibelsToPixels(decibels, clamp) / scale_factor_;
}

// Line state --------------------------------------------------------------------------------

void SpectrumDraw::UpdateState() {
    if (line_count_ == 0)
        return;
    UpdateLineState();
    last_draw_time_ = 0.0;
}

void SpectrumDraw::UpdateLineState() {
    line_pixels_.assign(line_count_, 0.0f);
    const FreqScale& freq = Freq();
    if (band_mode_ != kLinearLines) {
        for (std::size_t i = 0; i != line_count_; ++i) {
            const float hz = band_mode_ == kThirdOctaveBands
                                 ? SpectrumBandTables::GetThirdOctaveBand(i)
                                 : SpectrumBandTables::GetCriticalBand(i);
            line_pixels_[i] = freq.HzToPixels(0, hz, true).value / scale_factor_;
        }
        return;
    }
    std::fill(lines_per_column_.begin(), lines_per_column_.end(), 0u);
    const float visible_low = freq.GetVisibleFreqRange().low;
    const double n = static_cast<double>(line_count_);
    for (std::size_t i = 0; i != line_count_; ++i) {
        const double hz = (static_cast<double>(i) / n) * (0.5 * sample_rate_);
        float pixel = -1.0f;
        if (!(hz < visible_low))
            pixel = freq.HzToPixels(0, hz, true).value / scale_factor_;
        line_pixels_[i] = pixel;
        const long column = RoundColumn(pixel);
        if (column >= 0 && static_cast<std::size_t>(column) < lines_per_column_.size())
            ++lines_per_column_[static_cast<std::size_t>(column)];
    }
}

void SpectrumDraw::ValidateBufferSizes() {
    const std::size_t columns =
        bounds_.width > 0.0f ? static_cast<std::size_t>(std::floor(bounds_.width)) : 0;
    if (peak_pixels_.size() < columns) {
        peak_pixels_.resize(columns, bounds_.height);
        peak_ages_.resize(columns, 0.0);
    }
    if (lines_per_column_.size() < columns)
        lines_per_column_.resize(columns, 0u);
}

void SpectrumDraw::ApplyPeakRule(std::size_t index, float y, double elapsed) {
    if (index >= peak_pixels_.size())
        return;
    float& peak = peak_pixels_[index];
    double& age = peak_ages_[index];
    if (peak >= y) {
        peak = y;
        age = 0.0;
    } else if (age > peak_hold_time_ && peak_hold_time_ != 0.0) {
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
    const double elapsed = last_draw_time_ > now ? 0.0 : now - last_draw_time_;
    last_draw_time_ = now;
    if (line_pixels_.empty())
        return;
    if (band_mode_ == kLinearLines) {
        if (fill_)
            FillLinear(penrig, elapsed, spectrum_data_, line_count_, GetLinearColor());
        DrawLinear(penrig, elapsed, spectrum_data_, line_count_, GetLinearColor(),
                   GetLinearPeakColor());
    } else {
        DrawBand(penrig, band_mode_, elapsed);
    }
}

std::vector<SpectrumDraw::point_t>& SpectrumDraw::WalkLinear(const std::vector<float>& data,
                                                             std::uint64_t line_count,
                                                             double elapsed, bool peaks) {
    curve_points_.clear();
    peak_curve_points_.clear();
    const float w = std::floor(bounds_.width);
    const std::size_t count = std::min<std::size_t>({line_count, line_pixels_.size(), data.size()});
    const auto add = [&](std::size_t column, float x, float amplitude) {
        const float y = dBToPixels(LevelOfAmplitude(amplitude), true);
        curve_points_.push_back({x, y});
        if (peaks) {
            ApplyPeakRule(column, y, elapsed);
            if (column < peak_pixels_.size())
                peak_curve_points_.push_back({x, peak_pixels_[column]});
        }
    };

    // Sparse region: a point per line, until lines start sharing columns.
    std::size_t i = 0;
    for (; i < count; ++i) {
        const float x = line_pixels_[i];
        if (x < 0.0f)
            continue;
        const auto column = static_cast<std::size_t>(x);
        if (x >= w || column >= lines_per_column_.size() || lines_per_column_[column] >= 2)
            break;
        add(column, x, data[i]);
    }
    // Crowded region: a point per column, at the loudest of the lines that share it.
    while (i < count) {
        const float x = line_pixels_[i];
        if (x < 0.0f) {
            ++i;
            continue;
        }
        const auto column = static_cast<std::size_t>(x);
        if (x >= w || column >= lines_per_column_.size())
            break;
        const std::uint32_t shared = lines_per_column_[column];
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
    return curve_points_;
}

void SpectrumDraw::DrawLinear(qorui::penrig::Penrig* penrig, double elapsed,
                              const std::vector<float>& data, std::uint64_t line_count,
                              const ColorRGBA& color, const ColorRGBA& peak_color) {
    if (line_pixels_.empty() || lines_per_column_.empty())
        return;
    WalkLinear(data, line_count, elapsed, true);
    const float floor_row = std::floor(bounds_.height) - 1.0f;
    // Segments with both ends on the floor are left out: no line runs along the bottom. The
    // trace is stroked a stretch at a time: one long zig-zag path costs the rasteriser far more
    // than many short ones, and the joins between stretches are not visible.
    constexpr int segments_per_stroke = 8;
    const auto trace = [&](const std::vector<point_t>& points, const ColorRGBA& trace_color) {
        penrig->SetPen(1.0f / scale_factor_, trace_color);
        penrig->NewPath();
        bool pen_at_previous = false;
        int segments = 0;
        for (std::size_t k = 1; k < points.size(); ++k) {
            const point_t& from = points[k - 1];
            const point_t& to = points[k];
            if (from.y < floor_row || to.y < floor_row) {
                if (!pen_at_previous)
                    penrig->MoveTo(bounds_.x + from.x, bounds_.y + from.y);
                penrig->LineTo(bounds_.x + to.x, bounds_.y + to.y);
                pen_at_previous = true;
                if (++segments == segments_per_stroke) {
                    penrig->Stroke();
                    penrig->NewPath();
                    penrig->MoveTo(bounds_.x + to.x, bounds_.y + to.y);
                    segments = 0;
                }
            } else {
                pen_at_previous = false;
            }
        }
        penrig->Stroke();
    };
    trace(curve_points_, color);
    if (show_peak_hold_)
        trace(peak_curve_points_, peak_color);
}

void SpectrumDraw::FillLinear(qorui::penrig::Penrig* penrig, double elapsed,
                              const std::vector<float>& data, std::uint64_t line_count,
                              const ColorRGBA&) {
    if (line_pixels_.empty() || lines_per_column_.empty())
        return;
    const std::vector<point_t>& points = WalkLinear(data, line_count, elapsed, false);
    if (points.empty())
        return;
    const float bottom = bounds_.y + std::floor(bounds_.height);
    penrig->NewPath();
    penrig->MoveTo(bounds_.x + points.front().x, bottom);
    for (const point_t& point : points)
        penrig->LineTo(bounds_.x + point.x, bounds_.y + point.y);
    penrig->LineTo(bounds_.x + points.back().x, bottom);
    penrig->ClosePath();
    penrig->SetColor(GetLinearColor());
    penrig->Fill();
}

void SpectrumDraw::DrawBand(qorui::penrig::Penrig* penrig, std::uint32_t mode, double elapsed) {
    const bool third = mode == kThirdOctaveBands;
    const ColorRGBA fill = third ? GetThirdOctaveFillColor() : GetCriticalFillColor();
    const ColorRGBA outline = third ? GetThirdOctaveOutlineColor() : GetCriticalOutlineColor();
    const ColorRGBA peak_color = third ? GetThirdOctavePeakColor() : GetCriticalPeakColor();
    const float w = std::floor(bounds_.width);
    const float bottom = std::floor(bounds_.height);
    const std::size_t count =
        std::min<std::size_t>({line_count_, line_pixels_.size(), spectrum_data_.size()});
    for (std::size_t i = 0; i != count; ++i) {
        float level = 20.0f * std::log10(spectrum_data_[i]);
        if (std::isnan(level))
            level = silence_db;
        const float y = dBToPixels(level, true);
        ApplyPeakRule(i, y, elapsed);
        const float left = line_pixels_[i];
        if (left >= w - 1.0f)
            continue;
        const float right = i + 1 < count ? line_pixels_[i + 1] - 1.0f : w - 1.0f;
        if (right < left)
            continue;
        const qorcore::RectT<float> bar(bounds_.x + left, bounds_.y + y, right - left + 1.0f,
                                        bottom - y);
        if (bar.height > 0.0f) {
            penrig->FillRect(bar, fill);
            penrig->FrameRect(bar, outline, 1.0f / scale_factor_);
        }
        if (show_peak_hold_ && i < peak_pixels_.size()) {
            const float peak_y = bounds_.y + std::floor(peak_pixels_[i]) + 0.5f;
            penrig->NewPath();
            penrig->MoveTo(bounds_.x + left, peak_y);
            penrig->LineTo(bounds_.x + right + 1.0f, peak_y);
            penrig->SetPen(1.0f / scale_factor_, peak_color);
            penrig->Stroke();
        }
    }
}

} // namespace qoraudiofiltersui
