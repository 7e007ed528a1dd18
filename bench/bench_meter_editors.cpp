// The meter editors on their reference effects, in a headless window, at scale 1 and 2: one
// update frame of each (the carrier delivers new readings, the editor takes them, the window
// repaints what changed). The loudness meter's texts and four meters; the dynamics editor's
// gain-reduction meter and the fill under the curve; the multiband compressor's four band
// spectra and its meters.

#include "audio/dsp/dynamics.hpp"
#include "audio/dsp/loudness_meter.hpp"
#include "audio/dsp/multi_band_compressor.hpp"
#include "framework/library.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/hostui/audio_filter_view_factory_registrar.hpp"
#include "platform/ui/headless_window.hpp"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <numbers>
#include <vector>

namespace {

constexpr float kRate = 48000.0f;
constexpr std::size_t kBlock = 512;

/// Opens the editor of `guid` on `fx` in a window of the scale `state.range(0)`, plays the
/// programme `sample` (mono, both channels) for `warmSeconds`, then times frames: between two,
/// untimed, the effect runs `frameSeconds` of the programme and passes on its messages.
void MeasureEditorFrames(benchmark::State& state, const char* guid,
                         const std::shared_ptr<qoraudiofilters::ReferenceEffect>& fx,
                         const std::function<float(std::size_t position)>& sample,
                         double warmSeconds, double frameSeconds) {
    qorui::penrig::CairoSupplier supplier(float(state.range(0)));
    qoraudiofiltersui::Initialize(&supplier);
    {
        auto view =
            qoraudiofilterhostui::AudioFilterViewFactoryRegistry::Get().CreateEditor(guid, fx);
        qorui::HeadlessWindow window(view->GetFrame().width, view->GetFrame().height,
                                     supplier.GetScaleFactor());
        window.AddNode(view);
        window.RenderAll();
        std::vector<float> left(kBlock), right(kBlock);
        std::size_t position = 0;
        auto feed = [&](double seconds) {
            for (std::size_t done = 0; done < std::size_t(seconds * kRate); done += kBlock) {
                for (std::size_t i = 0; i < kBlock; ++i)
                    left[i] = right[i] = sample(position++);
                const float* inputs[2] = {left.data(), right.data()};
                float* outputs[2] = {left.data(), right.data()};
                fx->ProcessPostedMessages();
                fx->Process(inputs, outputs, 2, kBlock);
            }
        };
        feed(warmSeconds);
        window.PumpMainQueue();
        window.Render();
        for (auto _ : state) {
            state.PauseTiming();
            feed(frameSeconds);
            fx->ProcessPostedMessages();
            state.ResumeTiming();
            window.PumpMainQueue();
            benchmark::DoNotOptimize(window.Render());
        }
        window.GetRoot()->RemoveAllChildren();
    }
    fx->ProcessPostedMessages();
    qoraudiofiltersui::Terminate();
}

double Seconds(std::size_t position) {
    return double(position) / kRate;
}

void BM_LoudnessMeterEditorFrame(benchmark::State& state) {
    // A programme whose level moves, so that every frame has new readings to show.
    MeasureEditorFrames(
        state, "43F746B7-B34E-402B-8FB4-479CF3466264",
        std::make_shared<qoraudiofilters::LoudnessMeter>(kRate, 2),
        [](std::size_t position) {
            const double t = Seconds(position);
            const double level = 0.1 + 0.05 * std::sin(2 * std::numbers::pi * 0.3 * t);
            return float(level * std::sin(2 * std::numbers::pi * 440 * t));
        },
        4.0, 0.1);
}
BENCHMARK(BM_LoudnessMeterEditorFrame)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

void BM_DynamicsEditorFrame(benchmark::State& state) {
    using qoraudiofilters::Dynamics;
    auto fx = std::make_shared<Dynamics>(kRate, 2);
    // A compressor over -40 dB with splines.
    fx->SetParameterValue(Dynamics::PointInputIndex(1), 0.6f);
    fx->SetParameterValue(Dynamics::PointOutputIndex(1), 0.6f);
    fx->SetParameterValue(Dynamics::PointOutputIndex(2), 0.8f);
    fx->SetParameterValue(Dynamics::kParameterIndex_Splines, 1.0f);
    // A level sweeping over 30 dB, so that every frame moves the fill and the meter.
    MeasureEditorFrames(
        state, "F76DAD9C-77DA-477A-9939-EEFEFC5C23BD", fx,
        [](std::size_t position) {
            const double t = Seconds(position);
            const double level =
                std::pow(10.0, (-35.0 + 15.0 * std::sin(2 * std::numbers::pi * t)) / 20);
            return float(level * std::sin(2 * std::numbers::pi * 440 * t));
        },
        1.0, 0.03);
}
BENCHMARK(BM_DynamicsEditorFrame)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

// Frames longer than a hop: every band has a new spectrum.
void BM_MultiBandCompressorEditorFrame(benchmark::State& state) {
    std::uint32_t x = 12345;
    MeasureEditorFrames(
        state, "3981E750-C8AE-40A2-889F-41A01C7EFA03",
        std::make_shared<qoraudiofilters::MultiBandCompressor>(kRate, 2),
        [x](std::size_t) mutable {
            x = x * 1664525u + 1013904223u;
            return 0.5f * (float(x >> 8) / float(1u << 24) - 0.5f);
        },
        1.0, 0.1);
}
BENCHMARK(BM_MultiBandCompressorEditorFrame)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

} // namespace
