// The spectrum painter per frame (4097 lines of an 8192-point FFT into 1000 by 300), plain and
// filled, and the frequency scale per call.

#include "graphs/scales/freq_scale.hpp"
#include "graphs/spectrum_draw.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/penrig.hpp"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

using namespace qoraudiofiltersui;

/// Frames of a falling slope with ripple, 4097 lines of an 8192-point FFT into 1000 by 300,
/// with the peak trace; the curve filled if `fill`.
void DrawFrames(benchmark::State& state, bool fill) {
    const float scale = static_cast<float>(state.range(0));
    constexpr unsigned fft_size = 8192;
    std::vector<float> data(fft_size / 2 + 1);
    for (std::size_t i = 0; i < data.size(); ++i) // a falling slope with ripple
        data[i] = 0.3f / (1.0f + i * 0.01f) * (1.2f + std::sin(i * 0.37f));
    auto image = qorui::penrig::Image::Create(1000, 300, scale);
    qorui::penrig::CairoSupplier supplier(scale);
    auto penrig = supplier.CreatePenrig(*image);
    SpectrumDraw spectrum(48000.0f);
    spectrum.SetShowPeakHold(true);
    spectrum.SetFill(fill);
    spectrum.SetBounds(qorcore::RectT<float>(0, 0, 1000, 300), scale);
    spectrum.SetSpectrumData(fft_size, data, fft_size / 2 + 1, 0, true);
    spectrum.Draw(penrig.get());                    // sizes the column buffers
    spectrum.SetFreqRange(spectrum.GetFreqRange()); // and counts the columns
    for (auto _ : state) {
        penrig->Clear(qorcore::ColorRGBA(0, 0, 0, 1));
        spectrum.Draw(penrig.get());
    }
}

void BM_SpectrumDrawFrame(benchmark::State& state) {
    DrawFrames(state, false);
}
BENCHMARK(BM_SpectrumDrawFrame)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void BM_SpectrumDrawFrameFilled(benchmark::State& state) {
    DrawFrames(state, true);
}
BENCHMARK(BM_SpectrumDrawFrameFilled)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void BM_FreqScaleHzToPixels(benchmark::State& state) {
    FreqScale scale(false);
    scale.SetNumChannels(1);
    scale.SetTotalFreqRange(qorcore::value_range<float>(20, 20000));
    scale.SetVisibleFreqRange(qorcore::value_range<float>(20, 20000), false);
    scale.SetScaleType(kLogScale);
    scale.SetSize(1000);
    double hz = 20.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(scale.HzToPixels(0, hz, true));
        hz = hz > 19000.0 ? 20.0 : hz * 1.01;
    }
}
BENCHMARK(BM_FreqScaleHzToPixels);

} // namespace
