#include "graphs/spectrum_content_layer.hpp"
#include "graphs/spectrum_draw.hpp"

#include "golden_image.hpp"
#include "graphs/scales/spectrum_band_tables.hpp"
#include "platform/core/high_precision_time.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/penrig.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <tuple>
#include <vector>

using namespace qoraudiofiltersui;
using qorcore::HighPrecisionTime;
using qorcore::IntrusivePtr;
using qorcore::RectT;
using qorui::penrig::CairoSupplier;
using qorui::penrig::Image;

namespace {

constexpr float sample_rate = 48000.0f;

/// The magnitude spectrum of a known test signal, computed by a plain DFT over a Hann window and
/// normalised so a full-scale sine reads 1: tones at 1 kHz (-6 dB) and 6 kHz (-26 dB) over a
/// faint deterministic noise.
std::vector<float> TestSpectrum(int fft_size) {
    std::vector<double> signal(fft_size);
    unsigned noise_state = 12345;
    for (int n = 0; n < fft_size; ++n) {
        noise_state = noise_state * 1103515245u + 12345u;
        const double noise = (double((noise_state >> 8) & 0xffff) / 65535.0 - 0.5) * 2e-3;
        const double t = n / double(sample_rate);
        signal[n] = 0.5 * std::sin(2 * std::numbers::pi * 1000 * t) +
                    0.05 * std::sin(2 * std::numbers::pi * 6000 * t) + noise;
        signal[n] *= 0.5 - 0.5 * std::cos(2 * std::numbers::pi * n / fft_size);
    }
    std::vector<float> magnitudes(fft_size / 2 + 1);
    for (int k = 0; k <= fft_size / 2; ++k) {
        double re = 0, im = 0;
        for (int n = 0; n < fft_size; ++n) {
            const double phase = 2 * std::numbers::pi * k * n / fft_size;
            re += signal[n] * std::cos(phase);
            im -= signal[n] * std::sin(phase);
        }
        // A Hann window halves a sine's peak: 4 / N brings a full-scale sine back to 1.
        magnitudes[k] = float(std::sqrt(re * re + im * im) * 4.0 / fft_size);
    }
    return magnitudes;
}

/// Band amplitudes from the bins whose centres fall within each band's third-octave edges.
std::vector<float> BandLevels(const std::vector<float>& bins, int fft_size, bool third_octave) {
    using qoraudiotoolkit::SpectrumBandTables;
    const std::size_t count = third_octave ? SpectrumBandTables::GetNumThirdOctaveBands()
                                           : SpectrumBandTables::GetNumCriticalBands();
    std::vector<float> bands(count);
    for (std::size_t b = 0; b != count; ++b) {
        const double centre = third_octave ? SpectrumBandTables::GetThirdOctaveBand(b)
                                           : SpectrumBandTables::GetCriticalBand(b);
        const double low = centre / std::pow(2.0, 1.0 / 6), high = centre * std::pow(2.0, 1.0 / 6);
        double power = 0;
        for (std::size_t k = 0; k != bins.size(); ++k) {
            const double hz = k * double(sample_rate) / fft_size;
            if (hz >= low && hz < high)
                power += double(bins[k]) * bins[k];
        }
        bands[b] = float(std::sqrt(power));
    }
    return bands;
}

/// A virtual clock for the painter's frame times.
struct VirtualClock {
    HighPrecisionTime::TimeStamp now = HighPrecisionTime::FromSeconds(10.0);
    HighPrecisionTime::ScopedClock scope{[this] {
        return now;
    }};
    void AdvanceMilliseconds(double ms) { now += HighPrecisionTime::FromSeconds(ms / 1000.0); }
};

IntrusivePtr<Image> Render(SpectrumDraw& spectrum, float scale, float width = 400,
                           float height = 160) {
    IntrusivePtr<Image> image = Image::Create(width, height, scale);
    CairoSupplier supplier(scale);
    auto penrig = supplier.CreatePenrig(*image);
    penrig->Clear(qorcore::ColorRGBA(0.12f, 0.12f, 0.13f, 1.0f));
    spectrum.SetBounds(RectT<float>(0, 0, width, height), scale);
    spectrum.Draw(penrig.get());
    return image;
}

bool IsColor(const qorcore::ColorRGBA& p, const qorcore::ColorRGBA& color) {
    return std::fabs(p.red - color.red) <= 0.01f && std::fabs(p.green - color.green) <= 0.01f &&
           std::fabs(p.blue - color.blue) <= 0.01f;
}

const qorcore::ColorRGBA background(0.12f, 0.12f, 0.13f, 1.0f);

/// The number of pixels of an image that are not the background.
int Painted(const Image& image) {
    int painted = 0;
    for (int y = 0; y < image.GetPixelHeight(); ++y)
        for (int x = 0; x < image.GetPixelWidth(); ++x)
            painted += IsColor(image.GetPixel(x, y), background) ? 0 : 1;
    return painted;
}

/// The painted pixels of one device column: the first and last painted rows, how many there
/// are, and how many of them are exactly `color` rather than a blend with the background.
struct ColumnPaint {
    int top = -1;
    int bottom = -1;
    int painted = 0;
    int exact = 0;
    bool Unbroken() const { return painted == bottom - top + 1; }
};

ColumnPaint PaintOfColumn(const Image& image, int x, const qorcore::ColorRGBA& color) {
    ColumnPaint paint;
    for (int y = 0; y < image.GetPixelHeight(); ++y) {
        const auto p = image.GetPixel(x, y);
        if (IsColor(p, background))
            continue;
        if (paint.top < 0)
            paint.top = y;
        paint.bottom = y;
        ++paint.painted;
        paint.exact += IsColor(p, color) ? 1 : 0;
    }
    return paint;
}

/// Feeds `bins` as FFT lines and counts the columns, ready for a frame.
void PrepareLinear(SpectrumDraw& spectrum, const std::vector<float>& bins, float scale,
                   float width = 400, float height = 160) {
    const int fft_size = static_cast<int>(bins.size() - 1) * 2;
    spectrum.SetBounds(RectT<float>(0, 0, width, height), scale);
    spectrum.SetSpectrumData(fft_size, bins, fft_size / 2, 0, true);
    Render(spectrum, scale, width, height); // sizes the column buffers
    spectrum.SetFreqRange(spectrum.GetFreqRange());
}

/// The first logical column where lines start to share columns.
std::size_t FirstCrowdedColumn(const SpectrumDraw& spectrum) {
    const auto& shared = spectrum.GetLinesPerColumn();
    for (float x : spectrum.GetLinePixels())
        if (x >= 0.0f && static_cast<std::size_t>(x) < shared.size() &&
            shared[static_cast<std::size_t>(x)] >= 2)
            return static_cast<std::size_t>(x);
    return shared.size();
}

} // namespace

TEST(SpectrumDraw, LinesFallInColumnsOfTheLogScale) {
    SpectrumDraw spectrum(sample_rate);
    spectrum.SetBounds(RectT<float>(0, 0, 500, 200), 1.0f);
    spectrum.SetSpectrumData(2048, std::vector<float>(1025, 0.1f), 1024, 0, true);
    const auto& pixels = spectrum.GetLinePixels();
    ASSERT_EQ(pixels.size(), 1024u);
    EXPECT_EQ(pixels[0], -1.0f) << "0 Hz lies below the visible 20 Hz";
    EXPECT_GE(pixels[1], 0.0f) << "23.4 Hz is visible";
    // 512 of 1024 lines at 48 kHz is 12 kHz.
    EXPECT_EQ(pixels[512], spectrum.HzToPixels(12000.0f, true).value);
    EXPECT_NEAR(spectrum.PixelsToHz(pixels[512], false), 12000.0f, 12000.0f * 0.01f);
    EXPECT_TRUE(std::is_sorted(pixels.begin() + 1, pixels.end()));

    // The columns are counted once the frame has sized its buffers and the lines are redone.
    Render(spectrum, 1.0f, 500, 200);
    spectrum.SetFreqRange(spectrum.GetFreqRange());
    const auto& columns = spectrum.GetLinesPerColumn();
    EXPECT_EQ(std::accumulate(columns.begin(), columns.end(), 0u), 1023u)
        << "every line but the one below 20 Hz lands in a column";
    EXPECT_GE(columns[499], 2u) << "the top end is crowded";
}

TEST(SpectrumDraw, PeaksHoldThenFallOnePixelPerFrameAgingOncePerFrame) {
    VirtualClock clock;
    SpectrumDraw spectrum(sample_rate);
    spectrum.SetShowPeakHold(true);
    const auto frame = [&](double ms) {
        clock.AdvanceMilliseconds(ms);
        Render(spectrum, 1.0f, 300, 120);
    };
    spectrum.SetBounds(RectT<float>(0, 0, 300, 120), 1.0f);
    spectrum.SetSpectrumData(64, std::vector<float>(33, 0.5f), 32, 0, true);
    frame(0); // sizes the buffers; elapsed is large after the line change
    spectrum.SetFreqRange(spectrum.GetFreqRange());
    frame(10);
    const std::size_t column = static_cast<std::size_t>(spectrum.GetLinePixels()[10]);
    const float loud_y = spectrum.dBToPixels(20 * std::log10(0.5f), true);
    EXPECT_FLOAT_EQ(spectrum.GetPeakPixels()[column], loud_y);

    spectrum.SetSpectrumData(64, std::vector<float>(33, 0.01f), 32, 0, true);
    for (int i = 0; i < 10; ++i) // 1000 ms in all: the hold has not run out yet
        frame(100);
    EXPECT_DOUBLE_EQ(spectrum.GetPeakAges()[column], 1000.0);
    EXPECT_FLOAT_EQ(spectrum.GetPeakPixels()[column], loud_y) << "an age equal to the hold holds";
    frame(100); // 1100 ms: still aging
    EXPECT_FLOAT_EQ(spectrum.GetPeakPixels()[column], loud_y);
    frame(5000);
    EXPECT_FLOAT_EQ(spectrum.GetPeakPixels()[column], loud_y + 1.0f)
        << "one pixel per frame, however long the frame took";
    frame(1);
    EXPECT_FLOAT_EQ(spectrum.GetPeakPixels()[column], loud_y + 2.0f);

    spectrum.SetPeakHoldTime(500);
    EXPECT_EQ(spectrum.GetPeakHoldTime(), 1000.0) << "a different hold time is ignored";
    spectrum.SetPeakHoldTime(1000);
    EXPECT_EQ(spectrum.GetPeakPixels()[column], 120.0f) << "the same time resets the peaks";

    // Filled, the fill and the curve share the frame's walk: peaks age 300 ms in three frames
    // of 100, not 600.
    SpectrumDraw filled(sample_rate);
    filled.SetShowPeakHold(true);
    filled.SetFill(true);
    PrepareLinear(filled, std::vector<float>(1025, 0.5f), 1.0f);
    clock.AdvanceMilliseconds(10);
    Render(filled, 1.0f); // the level sets the peaks
    filled.SetSpectrumData(2048, std::vector<float>(1025, 0.01f), 1024, 0, true);
    for (int i = 0; i < 3; ++i) {
        clock.AdvanceMilliseconds(100);
        Render(filled, 1.0f);
    }
    const std::size_t filled_column = static_cast<std::size_t>(filled.GetLinePixels()[100]);
    EXPECT_DOUBLE_EQ(filled.GetPeakAges()[filled_column], 300.0);
    EXPECT_FLOAT_EQ(filled.GetPeakPixels()[filled_column],
                    filled.dBToPixels(20 * std::log10(0.5f), true));
}

TEST(SpectrumDraw, SilenceDrawsNothingFlipTurnsLevelsAndTheLayerForwardsBounds) {
    SpectrumDraw spectrum(sample_rate);
    EXPECT_EQ(Painted(*Render(spectrum, 1.0f)), 0) << "no lines, no drawing";
    spectrum.SetBounds(RectT<float>(0, 0, 400, 160), 1.0f);
    spectrum.SetSpectrumData(1024, std::vector<float>(513, 0.0f), 512, 0, true);
    EXPECT_EQ(spectrum.dBToPixels(-400.0f, true), spectrum.dBToPixels(-120.0f, true))
        << "silence is clamped to the bottom row";
    EXPECT_EQ(Painted(*Render(spectrum, 1.0f)), 0) << "a curve flat on the floor draws no segments";

    spectrum.SetBounds(RectT<float>(0, 0, 100, 121), 1.0f);
    const float top = spectrum.dBToPixels(0.0f, true);
    spectrum.SetFlipVertically(true);
    EXPECT_FLOAT_EQ(spectrum.dBToPixels(-120.0f, true), top);
    spectrum.SetMinDecibelsDisplayed(-60.0f);
    EXPECT_EQ(spectrum.GetDBRange(), qorcore::value_range<float>(-60.0f, 0.0f));

    IntrusivePtr<SpectrumDraw> shown(new SpectrumDraw(sample_rate));
    IntrusivePtr<SpectrumContentLayer> layer(new SpectrumContentLayer(shown));
    layer->SetBounds(RectT<float>(5, 6, 300, 100), 2.0f);
    EXPECT_EQ(shown->GetBounds(), RectT<float>(5, 6, 300, 100));
    EXPECT_EQ(shown->GetFreqScale()->GetSize(), 600.0f) << "scales work in device pixels";
    EXPECT_EQ(shown->GetMagScale()->GetHeight(), 200.0f);
}

/// Frames checked column by column, at 1x and 2x, from the first crowded column to the right
/// edge.
class SpectrumDrawColumns : public ::testing::TestWithParam<float> {
protected:
    IntrusivePtr<Image> Frame(const std::vector<float>& bins) {
        PrepareLinear(spectrum, bins, scale);
        return Render(spectrum, scale);
    }
    int FirstCrowded() const {
        return static_cast<int>((FirstCrowdedColumn(spectrum) + 1) * scale);
    }
    ColumnPaint Paint(const Image& image, int x) const {
        return PaintOfColumn(image, x, spectrum.GetLinearColor());
    }

    const float scale = GetParam();
    const int last = static_cast<int>(399 * scale);
    SpectrumDraw spectrum{sample_rate};
};

TEST_P(SpectrumDrawColumns, FlatSpectrumIsOneCrispRow) {
    const IntrusivePtr<Image> image = Frame(std::vector<float>(1025, 0.1f));
    // -20 dB, with a pixel value that is the centre of a device row: the row itself, whole.
    const int row = static_cast<int>(std::floor(spectrum.dBToPixels(-20.0f, true) * scale + 0.5f));
    ASSERT_LT(FirstCrowded(), last);
    for (int x = FirstCrowded(); x <= last; ++x) {
        const ColumnPaint paint = Paint(*image, x);
        ASSERT_EQ(std::tuple(paint.painted, paint.exact, paint.top), std::tuple(1, 1, row))
            << "column " << x;
    }
}

TEST_P(SpectrumDrawColumns, CrowdedColumnsAreUnbrokenCrispRuns) {
    const IntrusivePtr<Image> image = Frame(TestSpectrum(2048));
    const int first = FirstCrowded();
    ASSERT_LT(first, last);
    int highest = image->GetPixelHeight(), highest_x = -1;
    for (int x = first; x <= last; ++x) {
        const ColumnPaint paint = Paint(*image, x);
        ASSERT_GT(paint.painted, 0) << "a gap in the trace at column " << x;
        EXPECT_TRUE(paint.Unbroken()) << "column " << x;
        EXPECT_EQ(paint.exact, paint.painted) << "a blurred pixel in column " << x;
        if (paint.top < highest) {
            highest = paint.top;
            highest_x = x;
        }
        // Each column's run meets its neighbour's: the curve is one line.
        if (x > first) {
            const ColumnPaint left = Paint(*image, x - 1);
            EXPECT_TRUE(paint.top <= left.bottom + 1 && paint.bottom + 1 >= left.top)
                << "column " << x;
        }
    }
    // The loudest thing in the crowded region is the 6 kHz tone at -26 dB.
    EXPECT_NEAR(highest_x / scale, spectrum.HzToPixels(6000.0f, true).value, 1.5f);
    EXPECT_NEAR(highest, spectrum.dBToPixels(-26.0f, true) * scale, 1.5f * scale);
}

TEST_P(SpectrumDrawColumns, NotchesOneColumnWideStayOpen) {
    // Loud and quiet lines in turn where they lie one to two pixels apart: every quiet line is
    // a notch about a column wide between two loud ones.
    std::vector<float> bins(1025, 1e-4f);
    PrepareLinear(spectrum, bins, scale);
    const auto& pixels = spectrum.GetLinePixels();
    const auto crowded = static_cast<float>(FirstCrowdedColumn(spectrum));
    std::vector<std::size_t> notches;
    for (std::size_t i = 1; i + 1 < 1024 && pixels[i + 1] + 1.0f < crowded; ++i) {
        const float gap = std::min(pixels[i + 1] - pixels[i], pixels[i] - pixels[i - 1]);
        if (pixels[i - 1] >= 0.0f && gap >= 1.0f && gap <= 2.0f && i % 2 == 1)
            notches.push_back(i);
    }
    ASSERT_GT(notches.size(), 5u);
    for (std::size_t i : notches)
        bins[i - 1] = bins[i + 1] = 0.5f;
    spectrum.SetSpectrumData(2048, bins, 1024, 0, true);
    const IntrusivePtr<Image> image = Render(spectrum, scale);
    const float loud = spectrum.dBToPixels(20 * std::log10(0.5f), true) * scale;
    const float quiet = spectrum.dBToPixels(-80.0f, true) * scale;
    for (std::size_t i : notches) {
        const ColumnPaint paint = Paint(*image, static_cast<int>(pixels[i] * scale + 0.5f));
        EXPECT_GT(paint.top, loud + (quiet - loud) / 4) << "the notch at line " << i << " filled";
        EXPECT_NEAR(paint.bottom, quiet, 1.0f) << "line " << i;
    }
}

TEST_P(SpectrumDrawColumns, FillRunsFromTheCurveToTheBottom) {
    spectrum.SetFill(true);
    const IntrusivePtr<Image> image = Frame(TestSpectrum(2048));
    const int first = static_cast<int>(std::ceil(spectrum.GetLinePixels()[1] * scale + 0.5f));
    for (int x = first; x <= last; ++x) {
        const ColumnPaint paint = Paint(*image, x);
        ASSERT_EQ(paint.bottom, image->GetPixelHeight() - 1) << "column " << x;
        ASSERT_TRUE(paint.Unbroken()) << "column " << x;
        // Only the curve's ends may blend, where it is antialiased.
        EXPECT_GE(paint.exact, paint.painted - 2) << "column " << x;
    }
    for (int x = 0; x + 1 < first; ++x)
        EXPECT_EQ(Paint(*image, x).painted, 0) << "left of the first line " << x;
}

TEST_P(SpectrumDrawColumns, TranslucentColourIsLaidOnce) {
    const qorcore::ColorRGBA tint(1.0f, 0.6f, 0.0f, 0.5f);
    spectrum.SetUseCustomColor(true);
    spectrum.SetCustomColor(tint);
    spectrum.SetFill(true);
    const IntrusivePtr<Image> image = Frame(TestSpectrum(2048));
    // Over the background, once: the fill; twice: the curve over the fill. Nothing else, so no
    // two pieces of the fill or of the curve overlap.
    const auto over = [&](const qorcore::ColorRGBA& under) {
        return qorcore::ColorRGBA(tint.red * 0.5f + under.red * 0.5f,
                                  tint.green * 0.5f + under.green * 0.5f,
                                  tint.blue * 0.5f + under.blue * 0.5f);
    };
    const qorcore::ColorRGBA once = over(background), twice = over(once);
    for (int x = FirstCrowded(); x < image->GetPixelWidth(); ++x)
        for (int y = 0; y < image->GetPixelHeight(); ++y) {
            const auto p = image->GetPixel(x, y);
            ASSERT_TRUE(IsColor(p, background) || IsColor(p, once) || IsColor(p, twice))
                << x << "," << y << ": " << p.red << " " << p.green << " " << p.blue;
        }
}

TEST_P(SpectrumDrawColumns, OddLevelsStayInsideTheBounds) {
    std::vector<float> bins = TestSpectrum(2048);
    for (std::size_t i = 0; i < bins.size(); i += 7)
        bins[i] = i % 3 == 0   ? std::numeric_limits<float>::quiet_NaN()
                  : i % 3 == 1 ? std::numeric_limits<float>::infinity()
                               : -1.0f;
    spectrum.SetShowPeakHold(true);
    spectrum.SetFill(true);
    const RectT<float> bounds(20, 10, 300, 100);
    spectrum.SetBounds(bounds, scale);
    spectrum.SetSpectrumData(2048, bins, 1024, 0, true);
    IntrusivePtr<Image> image = Image::Create(340, 120, scale);
    CairoSupplier supplier(scale);
    auto penrig = supplier.CreatePenrig(*image);
    for (int frame = 0; frame < 2; ++frame) {
        penrig->Clear(background);
        spectrum.Draw(penrig.get());
        spectrum.SetFreqRange(spectrum.GetFreqRange());
    }
    for (int y = 0; y < image->GetPixelHeight(); ++y)
        for (int x = 0; x < image->GetPixelWidth(); ++x) {
            const float lx = x / scale, ly = y / scale;
            ASSERT_TRUE(
                IsColor(image->GetPixel(x, y), background) ||
                (lx >= bounds.x && lx < bounds.Right() && ly >= bounds.y && ly < bounds.Bottom()))
                << "painted outside the bounds at " << x << "," << y;
        }
    EXPECT_GT(Painted(*image), 1000) << "the rest of the spectrum is drawn";
}

INSTANTIATE_TEST_SUITE_P(Scales, SpectrumDrawColumns, ::testing::Values(1.0f, 2.0f));

class SpectrumDrawGolden : public ::testing::TestWithParam<float> {};

TEST_P(SpectrumDrawGolden, LinearFilledAndBandModes) {
    VirtualClock clock;
    const float scale = GetParam();
    const std::string suffix = scale == 1.0f ? "@1x" : "@2x";
    constexpr int fft_size = 2048;
    const std::vector<float> bins = TestSpectrum(fft_size);

    SpectrumDraw linear(sample_rate);
    linear.SetShowPeakHold(true);
    linear.SetBounds(RectT<float>(0, 0, 400, 160), scale);
    linear.SetSpectrumData(fft_size, bins, fft_size / 2, 0, true);
    Render(linear, scale);
    linear.SetFreqRange(linear.GetFreqRange());
    EXPECT_TRUE(qafui_testing::MatchesGolden(*Render(linear, scale), "spectrum_linear" + suffix));

    linear.SetFill(true);
    EXPECT_TRUE(qafui_testing::MatchesGolden(*Render(linear, scale), "spectrum_filled" + suffix));

    for (bool third : {true, false}) {
        SpectrumDraw bands(sample_rate);
        bands.SetShowPeakHold(true);
        const std::vector<float> levels = BandLevels(bins, fft_size, third);
        bands.SetBounds(RectT<float>(0, 0, 400, 160), scale);
        bands.SetSpectrumData(fft_size, levels, static_cast<unsigned>(levels.size()), third ? 1 : 2,
                              true);
        EXPECT_TRUE(qafui_testing::MatchesGolden(
            *Render(bands, scale),
            (third ? "spectrum_third_octave" : "spectrum_critical") + suffix));
    }
}

INSTANTIATE_TEST_SUITE_P(Scales, SpectrumDrawGolden, ::testing::Values(1.0f, 2.0f));
