// The meter editors on their reference effects, in a headless window: one update frame of the
// loudness meter's editor (the carrier delivers new readings, the texts and four meters take
// them, the window repaints what changed), at scale 1 and 2; the same for the dynamics editor
// (the gain-reduction meter and the fill under the curve follow the level).

#include "audio/dsp/dynamics.hpp"
#include "audio/dsp/loudness_meter.hpp"
#include "audio/dsp/multi_band_compressor.hpp"
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

constexpr const char* kLoudnessMeterGuid = "43F746B7-B34E-402B-8FB4-479CF3466264";
constexpr float kRate = 48000.0f;
constexpr std::size_t kBlock = 512;

void BM_LoudnessMeterEditorFrame(benchmark::State& state) {
    qorui::penrig::CairoSupplier supplier(float(state.range(0)));
    qoraudiofiltersui::Initialize(&supplier);
    auto meter = std::make_shared<qoraudiofilters::LoudnessMeter>(kRate, 2);
    {
        auto view = qoraudiofilterhostui::AudioFilterViewFactoryRegistry::Get().CreateEditor(
            kLoudnessMeterGuid, meter);
        qorui::HeadlessWindow window(view->GetFrame().width, view->GetFrame().height,
                                     supplier.GetScaleFactor());
        window.AddNode(view);
        window.RenderAll();
        std::vector<float> left(kBlock), right(kBlock);
        std::size_t position = 0;
        // A programme whose level moves, so that every frame has new readings to show.
        auto feed = [&](double seconds) {
            for (std::size_t done = 0; done < std::size_t(seconds * kRate); done += kBlock) {
                for (std::size_t i = 0; i < kBlock; ++i, ++position) {
                    const double t = double(position) / kRate;
                    const double level = 0.1 + 0.05 * std::sin(2 * std::numbers::pi * 0.3 * t);
                    left[i] = right[i] = float(level * std::sin(2 * std::numbers::pi * 440 * t));
                }
                const float* inputs[2] = {left.data(), right.data()};
                float* outputs[2] = {left.data(), right.data()};
                meter->ProcessPostedMessages();
                meter->Process(inputs, outputs, 2, kBlock);
            }
        };
        feed(4.0);
        window.PumpMainQueue();
        window.Render();

        for (auto _ : state) {
            state.PauseTiming();
            feed(0.1);
            state.ResumeTiming();
            window.PumpMainQueue();
            benchmark::DoNotOptimize(window.Render());
        }
        window.GetRoot()->RemoveAllChildren();
    }
    meter->ProcessPostedMessages();
    qoraudiofiltersui::Terminate();
}
BENCHMARK(BM_LoudnessMeterEditorFrame)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

constexpr const char* kDynamicsGuid = "F76DAD9C-77DA-477A-9939-EEFEFC5C23BD";

void BM_DynamicsEditorFrame(benchmark::State& state) {
    using qoraudiofilters::Dynamics;
    qorui::penrig::CairoSupplier supplier(float(state.range(0)));
    qoraudiofiltersui::Initialize(&supplier);
    auto fx = std::make_shared<Dynamics>(kRate, 2);
    // A compressor over -40 dB with splines.
    fx->SetParameterValue(Dynamics::PointInputIndex(1), 0.6f);
    fx->SetParameterValue(Dynamics::PointOutputIndex(1), 0.6f);
    fx->SetParameterValue(Dynamics::PointOutputIndex(2), 0.8f);
    fx->SetParameterValue(Dynamics::kParameterIndex_Splines, 1.0f);
    {
        auto view = qoraudiofilterhostui::AudioFilterViewFactoryRegistry::Get().CreateEditor(
            kDynamicsGuid, fx);
        qorui::HeadlessWindow window(view->GetFrame().width, view->GetFrame().height,
                                     supplier.GetScaleFactor());
        window.AddNode(view);
        window.RenderAll();
        std::vector<float> left(kBlock), right(kBlock);
        std::size_t position = 0;
        // A level sweeping over 30 dB, so that every frame moves the fill and the meter.
        auto feed = [&](double seconds) {
            for (std::size_t done = 0; done < std::size_t(seconds * kRate); done += kBlock) {
                for (std::size_t i = 0; i < kBlock; ++i, ++position) {
                    const double t = double(position) / kRate;
                    const double level =
                        std::pow(10.0, (-35.0 + 15.0 * std::sin(2 * std::numbers::pi * t)) / 20);
                    left[i] = right[i] = float(level * std::sin(2 * std::numbers::pi * 440 * t));
                }
                const float* inputs[2] = {left.data(), right.data()};
                float* outputs[2] = {left.data(), right.data()};
                fx->ProcessPostedMessages();
                fx->Process(inputs, outputs, 2, kBlock);
            }
        };
        feed(1.0);
        window.PumpMainQueue();
        window.Render();

        for (auto _ : state) {
            state.PauseTiming();
            feed(0.03);
            state.ResumeTiming();
            window.PumpMainQueue();
            benchmark::DoNotOptimize(window.Render());
        }
        window.GetRoot()->RemoveAllChildren();
    }
    fx->ProcessPostedMessages();
    qoraudiofiltersui::Terminate();
}
BENCHMARK(BM_DynamicsEditorFrame)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

constexpr const char* kMultiBandCompressorGuid = "3981E750-C8AE-40A2-889F-41A01C7EFA03";

// One frame of the multiband compressor's editor with four new band spectra, the band and
// output meters taking their readings, and the repaint.
void BM_MultiBandCompressorEditorFrame(benchmark::State& state) {
    qorui::penrig::CairoSupplier supplier(float(state.range(0)));
    qoraudiofiltersui::Initialize(&supplier);
    auto fx = std::make_shared<qoraudiofilters::MultiBandCompressor>(kRate, 2);
    {
        auto view = qoraudiofilterhostui::AudioFilterViewFactoryRegistry::Get().CreateEditor(
            kMultiBandCompressorGuid, fx);
        qorui::HeadlessWindow window(view->GetFrame().width, view->GetFrame().height,
                                     supplier.GetScaleFactor());
        window.AddNode(view);
        window.RenderAll();
        std::vector<float> left(kBlock), right(kBlock);
        std::uint32_t x = 12345;
        auto feed = [&](double seconds) {
            for (std::size_t done = 0; done < std::size_t(seconds * kRate); done += kBlock) {
                for (std::size_t i = 0; i < kBlock; ++i) {
                    x = x * 1664525u + 1013904223u;
                    left[i] = right[i] = 0.5f * (float(x >> 8) / float(1u << 24) - 0.5f);
                }
                const float* inputs[2] = {left.data(), right.data()};
                float* outputs[2] = {left.data(), right.data()};
                fx->ProcessPostedMessages();
                fx->Process(inputs, outputs, 2, kBlock);
            }
        };
        feed(1.0);
        window.PumpMainQueue();
        window.Render();

        for (auto _ : state) {
            state.PauseTiming();
            feed(0.1); // longer than a hop: every band has a new spectrum
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
BENCHMARK(BM_MultiBandCompressorEditorFrame)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

} // namespace
