// The FFT filter editor on the reference filter, in a headless window:
//  - open: the editor made through the registry (archive read, graph and controls built, the
//    meter posted), put in a window and painted whole: what a user waits for;
//  - idle tick: one timer tick of the editor with nothing changed (parameters compared, no
//    rebuild, no response asked) and the repaint of nothing;
//  - spectrum frame: the meter's carrier message delivering a new 4096-point analysis on the
//    main thread, the graph taking it, and the repaint of the content it dirtied.
// Each at scale 1 and 2.

#include "audio/dsp/fft_filter.hpp"
#include "effects/fft_filter_editor_view.hpp"
#include "framework/library.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/hostui/audio_filter_view_factory_registrar.hpp"
#include "platform/ui/headless_window.hpp"

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

namespace {

constexpr const char* kFFTFilterGuid = "4F327230-F04C-4C34-9EA5-A998B4459221";
constexpr float kRate = 48000.0f;

using qoraudiofilters::FFTFilter;

/// A curve of twelve points, as a user would draw it.
void DrawCurve(FFTFilter& filter) {
    constexpr int kPoints = 12;
    filter.SetParameterQuietly(FFTFilter::kCurveWriteBracket, 1.0f);
    filter.SetParameterQuietly(FFTFilter::kPointCount, kPoints / 128.0f);
    for (int i = 0; i < kPoints; ++i) {
        const double hz = 20.0 * std::pow(1200.0, double(i) / (kPoints - 1));
        filter.SetParameterValue(FFTFilter::PointXIndex(i), float(hz / (kRate * 0.5)));
        filter.SetParameterValue(FFTFilter::PointYIndex(i), float(0.6 + 0.1 * std::sin(i)));
    }
    filter.SetParameterQuietly(FFTFilter::kCurveWriteBracket, 0.0f);
}

/// The library, a filter and the editor in a window of its size.
struct Editor {
    explicit Editor(float scale) : supplier(scale), filter(std::make_shared<FFTFilter>(kRate, 2)) {
        qoraudiofiltersui::Initialize(&supplier);
        DrawCurve(*filter);
    }
    ~Editor() {
        Close();
        qoraudiofiltersui::Terminate();
    }
    void Open() {
        view = qoraudiofilterhostui::AudioFilterViewFactoryRegistry::Get().CreateEditor(
            kFFTFilterGuid, filter);
        window = std::make_unique<qorui::HeadlessWindow>(
            view->GetFrame().width, view->GetFrame().height, supplier.GetScaleFactor());
        window->AddNode(view);
        window->RenderAll();
    }
    void Close() {
        if (window)
            window->GetRoot()->RemoveAllChildren();
        view.reset();
        window.reset();
    }
    /// Runs the filter for `seconds` on a noise and two tones, block by block; with `keepTime`
    /// the window's clock follows and the main thread catches up after each block.
    void Feed(double seconds, bool keepTime = true) {
        constexpr std::size_t kBlock = 512;
        std::vector<float> in(kBlock), left(kBlock), right(kBlock);
        for (std::size_t done = 0; done < std::size_t(seconds * kRate); done += kBlock) {
            for (std::size_t i = 0; i < kBlock; ++i) {
                seed = seed * 1664525u + 1013904223u;
                const double t = double(done + i) / kRate;
                in[i] = float(0.05 * (double(seed >> 8) / double(1 << 24) - 0.5) +
                              0.3 * std::sin(2 * std::numbers::pi * 440 * t) +
                              0.1 * std::sin(2 * std::numbers::pi * 5000 * t));
            }
            const float* inputs[2] = {in.data(), in.data()};
            float* outputs[2] = {left.data(), right.data()};
            filter->ProcessPostedMessages();
            filter->Process(inputs, outputs, 2, kBlock);
            if (keepTime)
                window->AdvanceTime(double(kBlock) / kRate);
        }
    }

    qorui::penrig::CairoSupplier supplier;
    std::shared_ptr<FFTFilter> filter;
    qorcore::IntrusivePtr<qoraudiofilterhostui::AudioFilterEditorViewBase> view;
    std::unique_ptr<qorui::HeadlessWindow> window;
    std::uint32_t seed = 12345;
};

void BM_FFTFilterEditorOpen(benchmark::State& state) {
    Editor editor(float(state.range(0)));
    for (auto _ : state) {
        editor.Open();
        state.PauseTiming();
        editor.Close();
        // The posted enable, carrier and disable messages of the editor just closed.
        editor.filter->ProcessPostedMessages();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_FFTFilterEditorOpen)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void BM_FFTFilterEditorIdleTick(benchmark::State& state) {
    Editor editor(float(state.range(0)));
    editor.Open();
    editor.window->AdvanceTime(0.01);
    editor.window->Render();
    editor.filter->ClearCalls();
    for (auto _ : state) {
        editor.window->AdvanceTime(0.01);
        benchmark::DoNotOptimize(editor.window->Render());
    }
    // One synchronisation a tick, or the loop measured nothing.
    state.counters["syncs_per_tick"] =
        double(editor.filter
                   ->GetCalls(
                       qoraudiofilterhost::ParameterStoreFilter::CallKind::kPrepareParameterSync)
                   .size()) /
        double(state.iterations());
}
BENCHMARK(BM_FFTFilterEditorIdleTick)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

void BM_FFTFilterEditorSpectrumFrame(benchmark::State& state) {
    Editor editor(float(state.range(0)));
    editor.Open();
    editor.Feed(0.5);
    editor.window->Render();
    for (auto _ : state) {
        // The process thread's part, untimed: the carrier passes, and the filter runs long
        // enough for the meter to publish a new analysis.
        state.PauseTiming();
        editor.Feed(0.04, false);
        state.ResumeTiming();
        // The main thread's: the carrier delivers the spectrum, the graph repaints.
        editor.window->PumpMainQueue();
        benchmark::DoNotOptimize(editor.window->Render());
    }
}
BENCHMARK(BM_FFTFilterEditorSpectrumFrame)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

} // namespace
