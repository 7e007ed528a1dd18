// The reference audio side: the FFT filter per second of stereo audio at three block sizes,
// against the bare forward and inverse transforms those blocks need (the peer: what any
// overlap-add filter of that size must spend); the spectrum meter per second of audio; a
// curve rebuild; a response for the graph. The loudness meter per second of stereo, against the
// library adding the same frames with nothing read back. The parametric EQ per block of stereo,
// against a plain loop of as many float biquads.
// The dynamics processor per second of stereo, in its plainest and its fullest setting.
// The single-band dynamics, compressor and tube compressor per second of stereo.
// The hard limiter and the parametric dynamics per second of stereo.

#include "audio/dsp/chorus_flanger.hpp"
#include "audio/dsp/de_esser.hpp"
#include "audio/dsp/dynamics.hpp"
#include "audio/dsp/fft_filter.hpp"
#include "audio/dsp/flanger.hpp"
#include "audio/dsp/graphic_eq.hpp"
#include "audio/dsp/hard_limiter.hpp"
#ifndef QAFUI_LOUDNESS_METER_PROXY
#include "audio/dsp/loudness_meter.hpp"
#endif
#include "audio/dsp/multi_band_compressor.hpp"
#include "audio/dsp/parametric_dynamics.hpp"
#include "audio/dsp/parametric_eq.hpp"
#include "audio/dsp/phaser.hpp"
#include "audio/dsp/real_fft.hpp"
#include "audio/dsp/single_band_compressor.hpp"
#include "audio/dsp/single_band_dynamics.hpp"
#include "audio/dsp/spectrum_meter_dsp.hpp"
#include "audio/dsp/tube_modeled_compressor.hpp"

#include <benchmark/benchmark.h>
#ifndef QAFUI_LOUDNESS_METER_PROXY
#include <ebur128.h>
#endif

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using qoraudiofilters::FFTFilter;
using qoraudiofilters::ParametricEQ;

constexpr float kRate = 48000.0f;
constexpr std::size_t kBlock = 512;

std::vector<float> Noise(std::size_t length) {
    std::vector<float> out(length);
    std::uint32_t x = 12345;
    for (float& s : out) {
        x = x * 1664525u + 1013904223u;
        s = float(x >> 8) / float(1u << 24) - 0.5f;
    }
    return out;
}

// A second of 48 kHz stereo noise through `fx` in 512-frame blocks.
template <class Effect>
void RunSecondOfStereo(benchmark::State& state, Effect& fx) {
    const std::vector<float> left = Noise(kBlock), right = Noise(kBlock);
    std::vector<float> outLeft(kBlock), outRight(kBlock);
    const float* inputs[] = {left.data(), right.data()};
    float* outputs[] = {outLeft.data(), outRight.data()};
    for (auto _ : state) {
        for (std::size_t done = 0; done < std::size_t(kRate); done += kBlock)
            fx.Process(inputs, outputs, 2, kBlock);
        benchmark::DoNotOptimize(outLeft.data());
    }
}

// One 512-frame stereo block of noise through `fx`.
template <class Effect>
void RunBlock(benchmark::State& state, Effect& fx) {
    const std::vector<float> left = Noise(kBlock), right = Noise(kBlock);
    std::vector<float> outLeft(kBlock), outRight(kBlock);
    const float* inputs[] = {left.data(), right.data()};
    float* outputs[] = {outLeft.data(), outRight.data()};
    for (auto _ : state) {
        fx.Process(inputs, outputs, 2, kBlock);
        benchmark::DoNotOptimize(outLeft.data());
        benchmark::ClobberMemory();
    }
}

// Eight points, as a user might draw them, with splines.
void DrawCurve(FFTFilter& filter) {
    filter.SetParameterQuietly(FFTFilter::kCurveWriteBracket, 1.0f);
    filter.SetParameterQuietly(FFTFilter::kPointCount, 8.0f / 128.0f);
    const double hz[] = {20, 80, 300, 1000, 3000, 8000, 15000, 24000};
    for (int i = 0; i < 8; ++i) {
        filter.SetParameterValue(FFTFilter::PointXIndex(i), float(hz[i] / 24000.0));
        filter.SetParameterValue(FFTFilter::PointYIndex(i), 0.5f + 0.05f * float(i % 3));
    }
    filter.SetParameterQuietly(FFTFilter::kCurveWriteBracket, 0.0f);
}

void BM_FFTFilterSecondOfStereo(benchmark::State& state) {
    const auto size = unsigned(state.range(0));
    FFTFilter filter(kRate, 2);
    DrawCurve(filter);
    filter.SetParameterValue(FFTFilter::kFFTSize, FFTFilter::EncodeFFTSize(size));
    const std::vector<float> left = Noise(kBlock), right = Noise(kBlock);
    std::vector<float> outLeft(kBlock), outRight(kBlock);
    const float* inputs[] = {left.data(), right.data()};
    float* outputs[] = {outLeft.data(), outRight.data()};
    // Past the crossfade to the new size.
    for (int i = 0; i < 300; ++i)
        filter.Process(inputs, outputs, 2, kBlock);
    for (auto _ : state) {
        for (std::size_t done = 0; done < std::size_t(kRate); done += kBlock)
            filter.Process(inputs, outputs, 2, kBlock);
        benchmark::DoNotOptimize(outLeft.data());
    }
}
BENCHMARK(BM_FFTFilterSecondOfStereo)
    ->Arg(512)
    ->Arg(4096)
    ->Arg(32768)
    ->Unit(benchmark::kMillisecond);

// The peer: the transforms alone, a forward and an inverse per quarter block and channel.
void BM_BareTransformsSecondOfStereo(benchmark::State& state) {
    const auto size = std::size_t(state.range(0));
    qoraudiotoolkit::real_fft_t fft(size);
    const std::vector<float> noise = Noise(size);
    const std::size_t hops = 2 * std::size_t(kRate) / (size / 4);
    for (auto _ : state) {
        for (std::size_t i = 0; i < hops; ++i) {
            std::copy(noise.begin(), noise.end(), fft.GetTimeData());
            fft.Forward();
            fft.Inverse();
        }
        benchmark::DoNotOptimize(fft.GetTimeData());
    }
}
BENCHMARK(BM_BareTransformsSecondOfStereo)
    ->Arg(512)
    ->Arg(4096)
    ->Arg(32768)
    ->Unit(benchmark::kMillisecond);

void BM_SpectrumMeterSecondOfStereo(benchmark::State& state) {
    auto meter = qorcore::MakeIntrusive<qoraudiotoolkit::SpectrumMeterDSP>(kRate, 2);
    meter->SetFFTSizeIndex(unsigned(state.range(0)));
    meter->SetAverageTime(0.3);
    const std::vector<float> left = Noise(kBlock), right = Noise(kBlock);
    const float* channels[] = {left.data(), right.data()};
    for (auto _ : state)
        for (std::size_t done = 0; done < std::size_t(kRate); done += kBlock)
            meter->ProcessBlock(channels, 2, kBlock);
}
BENCHMARK(BM_SpectrumMeterSecondOfStereo)->Arg(3)->Arg(6)->Unit(benchmark::kMillisecond);

#ifndef QAFUI_LOUDNESS_METER_PROXY
// The loudness meter measuring a second of stereo in 512-frame blocks, publishing after each.
void BM_LoudnessMeterSecondOfStereo(benchmark::State& state) {
    qoraudiofilters::LoudnessMeter meter(kRate, 2);
    RunSecondOfStereo(state, meter);
}
BENCHMARK(BM_LoudnessMeterSecondOfStereo)->Unit(benchmark::kMillisecond);

// The peer: the library in the same modes, fed the same blocks already interleaved.
void BM_BareLoudnessSecondOfStereo(benchmark::State& state) {
    ebur128_state* st =
        ebur128_init(2, 48000,
                     EBUR128_MODE_M | EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_LRA |
                         EBUR128_MODE_TRUE_PEAK | EBUR128_MODE_HISTOGRAM);
    const std::vector<float> interleaved = Noise(2 * kBlock);
    for (auto _ : state)
        for (std::size_t done = 0; done < std::size_t(kRate); done += kBlock)
            ebur128_add_frames_float(st, interleaved.data(), kBlock);
    ebur128_destroy(&st);
}
BENCHMARK(BM_BareLoudnessSecondOfStereo)->Unit(benchmark::kMillisecond);
#endif

// A point moved at 32768 points with splines: new gains for 16385 bins.
void BM_FFTFilterCurveRebuild(benchmark::State& state) {
    FFTFilter filter(kRate, 2);
    DrawCurve(filter);
    filter.SetParameterValue(FFTFilter::kSplineCurves, 1.0f);
    filter.SetParameterValue(FFTFilter::kFFTSize, FFTFilter::EncodeFFTSize(32768));
    float y = 0.5f;
    for (auto _ : state) {
        y = y == 0.5f ? 0.6f : 0.5f;
        filter.SetParameterValue(FFTFilter::PointYIndex(3), y);
    }
}
BENCHMARK(BM_FFTFilterCurveRebuild)->Unit(benchmark::kMicrosecond);

void BM_FFTFilterResponseForTheGraph(benchmark::State& state) {
    FFTFilter filter(kRate, 2);
    DrawCurve(filter);
    std::vector<float> response;
    for (auto _ : state)
        benchmark::DoNotOptimize(filter.GetResponseCurve(0, 4096, response));
}
BENCHMARK(BM_FFTFilterResponseForTheGraph)->Unit(benchmark::kMicrosecond);

// Every element on: five bands, both shelves, both passes at 12 dB/oct, nine sections.
void SetEverySection(ParametricEQ& eq, bool ultraQuiet) {
    const auto hz = [](double value) {
        return float((value - 20.0) / (24000.0 - 20.0));
    };
    const auto db = [](double value) {
        return float((value + 48.0) / 96.0);
    };
    const double centres[] = {100, 400, 1000, 3000, 8000};
    for (int b = 0; b < ParametricEQ::kBandCount; ++b) {
        eq.SetParameterValue(ParametricEQ::BandFrequencyIndex(b), hz(centres[b]));
        eq.SetParameterValue(ParametricEQ::BandGainIndex(b), db(b % 2 == 0 ? 6 : -6));
    }
    eq.SetParameterValue(ParametricEQ::kLowShelfGain, db(3));
    eq.SetParameterValue(ParametricEQ::kHighShelfGain, db(-3));
    eq.SetParameterValue(ParametricEQ::kHighPassEnable, 1.0f);
    eq.SetParameterValue(ParametricEQ::kLowPassEnable, 1.0f);
    eq.SetParameterValue(ParametricEQ::kUltraQuiet, ultraQuiet ? 1.0f : 0.0f);
}

// One 512-frame stereo block at 48 kHz; Ultra-Quiet at argument 1.
void BM_ParametricEQBlock(benchmark::State& state) {
    ParametricEQ eq(kRate, 2);
    SetEverySection(eq, state.range(0) != 0);
    eq.Reset();
    RunBlock(state, eq);
    state.counters["sections"] = double(eq.GetSections().size());
}
BENCHMARK(BM_ParametricEQBlock)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

// One 512-frame stereo block at 48 kHz through the graphic equaliser of `range(0)` bands, every
// band moved; and the design (section gains solved) a fader write costs on the main thread.
void BM_GraphicEQBlock(benchmark::State& state) {
    qoraudiofilters::GraphicEQ eq(int(state.range(0)), kRate, 2);
    for (int b = 0; b < eq.GetBandCount(); ++b)
        eq.SetParameterValue(b, b % 2 == 0 ? 0.6f : 0.4f);
    eq.Reset();
    RunBlock(state, eq);
}
BENCHMARK(BM_GraphicEQBlock)->Arg(10)->Arg(30)->Unit(benchmark::kMicrosecond);

void BM_GraphicEQFaderWrite(benchmark::State& state) {
    qoraudiofilters::GraphicEQ eq(int(state.range(0)), kRate, 2);
    float value = 0.6f;
    for (auto _ : state) {
        value = value > 0.55f ? 0.45f : 0.6f;
        eq.SetParameterValue(0, value);
    }
}
BENCHMARK(BM_GraphicEQFaderWrite)->Arg(10)->Arg(30)->Unit(benchmark::kMicrosecond);

// The peer: the same float sections in a plain loop, direct form I, one channel and one
// section after the other over the block.
void BM_BiquadCascadeBlock(benchmark::State& state) {
    ParametricEQ eq(kRate, 2);
    SetEverySection(eq, false);
    struct Section {
        float b0, b1, b2, a1, a2;
        float x1[2] = {}, x2[2] = {}, y1[2] = {}, y2[2] = {};
    };
    std::vector<Section> sections;
    for (const auto& s : eq.GetSections())
        sections.push_back({float(s.b0), float(s.b1), float(s.b2), float(s.a1), float(s.a2)});
    const std::vector<float> left = Noise(kBlock), right = Noise(kBlock);
    std::vector<float> outLeft(kBlock), outRight(kBlock);
    const float* inputs[] = {left.data(), right.data()};
    float* outputs[] = {outLeft.data(), outRight.data()};
    for (auto _ : state) {
        for (std::size_t c = 0; c < 2; ++c) {
            std::copy_n(inputs[c], kBlock, outputs[c]);
            for (Section& s : sections) {
                for (std::size_t i = 0; i < kBlock; ++i) {
                    const float x = outputs[c][i];
                    const float y = s.b0 * x + s.b1 * s.x1[c] + s.b2 * s.x2[c] - s.a1 * s.y1[c] -
                                    s.a2 * s.y2[c];
                    s.x2[c] = s.x1[c];
                    s.x1[c] = x;
                    s.y2[c] = s.y1[c];
                    s.y1[c] = y;
                    outputs[c][i] = y;
                }
            }
        }
        benchmark::DoNotOptimize(outLeft.data());
        benchmark::ClobberMemory();
    }
    state.counters["sections"] = double(sections.size());
}
BENCHMARK(BM_BiquadCascadeBlock)->Unit(benchmark::kMicrosecond);

// The dynamics processor per second of 48 kHz stereo: five points, linked peak detection at
// argument 0; unlinked RMS detection, splines, band limiting and 5 ms of look-ahead at 1.
void BM_DynamicsSecondOfStereo(benchmark::State& state) {
    using qoraudiofilters::Dynamics;
    Dynamics fx(kRate, 2);
    const float points[][2] = {{0.0f, 0.0f}, {0.4f, 0.3f}, {0.7f, 0.7f}, {0.9f, 0.8f}, {1, 0.82f}};
    fx.SetParameterValue(Dynamics::kPointCount, 5.0f / 7.0f);
    for (int i = 0; i < 5; ++i) {
        fx.SetParameterValue(Dynamics::PointInputIndex(i), points[i][0]);
        fx.SetParameterValue(Dynamics::PointOutputIndex(i), points[i][1]);
    }
    if (state.range(0) != 0) {
        fx.SetParameterValue(Dynamics::kParameterIndex_CompJoint, 0.0f);
        fx.SetParameterValue(Dynamics::kParameterIndex_RMS, 1.0f);
        fx.SetParameterValue(Dynamics::kParameterIndex_Splines, 1.0f);
        fx.SetParameterValue(Dynamics::kParameterIndex_LoFreq, 0.004f);
        fx.SetParameterValue(Dynamics::kParameterIndex_HiFreq, 0.5f);
        fx.SetParameterValue(Dynamics::kParameterIndex_LookAhead, 0.01f);
    }
    fx.Reset();
    RunSecondOfStereo(state, fx);
}
BENCHMARK(BM_DynamicsSecondOfStereo)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The single-band processors per second of 48 kHz stereo noise, compressing all the while:
// the dynamics with its three stages (peak detection at argument 0, RMS and auto smoothing at
// 1, its meter gathering), the compressor, and the tube compressor with its saturation.
void BM_SingleBandDynamicsSecondOfStereo(benchmark::State& state) {
    using qoraudiofilters::SingleBandDynamics;
    SingleBandDynamics fx(kRate, 2);
    fx.SetCompThreshold(-30.0f);
    fx.SetParameterValue(SingleBandDynamics::kAutoMakeupGain, 1.0f);
    if (state.range(0) != 0) {
        fx.SetParameterValue(SingleBandDynamics::kRMSDetection, 1.0f);
        fx.SetParameterValue(SingleBandDynamics::kAutoSmoothing, 1.0f);
        fx.SetMeterActive(true);
    }
    RunSecondOfStereo(state, fx);
}
BENCHMARK(BM_SingleBandDynamicsSecondOfStereo)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_SingleBandCompressorSecondOfStereo(benchmark::State& state) {
    qoraudiofilters::SingleBandCompressor fx(kRate, 2);
    RunSecondOfStereo(state, fx);
}
BENCHMARK(BM_SingleBandCompressorSecondOfStereo)->Unit(benchmark::kMillisecond);

void BM_TubeModeledCompressorSecondOfStereo(benchmark::State& state) {
    qoraudiofilters::TubeModeledCompressor fx(kRate, 2);
    RunSecondOfStereo(state, fx);
}
BENCHMARK(BM_TubeModeledCompressorSecondOfStereo)->Unit(benchmark::kMillisecond);

// Four bands compressing and the limiter on, per second of 48 kHz stereo noise.
void BM_MultiBandCompressorSecondOfStereo(benchmark::State& state) {
    qoraudiofilters::MultiBandCompressor fx(kRate, 2);
    RunSecondOfStereo(state, fx);
}
BENCHMARK(BM_MultiBandCompressorSecondOfStereo)->Unit(benchmark::kMillisecond);

// The de-esser per second of 48 kHz stereo noise, reducing all the while: band only at argument
// 0, wide band at 1.
void BM_DeEsserSecondOfStereo(benchmark::State& state) {
    using qoraudiofilters::DeEsser;
    DeEsser fx(kRate, 2);
    fx.SetParameterValue(DeEsser::kThreshold, 0.25f); // -60 dB
    fx.SetParameterValue(DeEsser::kMode, state.range(0) == 0 ? 1.0f : 0.0f);
    RunSecondOfStereo(state, fx);
}
BENCHMARK(BM_DeEsserSecondOfStereo)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The hard limiter per second of 48 kHz stereo noise 12 dB over its ceiling: 5 ms of look-ahead,
// linked, at argument 0; unlinked with auto release and a soft knee at 1.
void BM_HardLimiterSecondOfStereo(benchmark::State& state) {
    using qoraudiofilters::HardLimiter;
    HardLimiter fx(kRate, 2);
    fx.SetParameterValue(HardLimiter::kInputGain, 0.75f); // +12 dB
    if (state.range(0) != 0) {
        fx.SetParameterValue(HardLimiter::kLinkChannels, 0.0f);
        fx.SetParameterValue(HardLimiter::kAutoRelease, 1.0f);
        fx.SetParameterValue(HardLimiter::kSoftKnee, 1.0f);
    }
    RunSecondOfStereo(state, fx);
}
BENCHMARK(BM_HardLimiterSecondOfStereo)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The parametric dynamics per second of 48 kHz stereo noise, its band compressing all the while:
// the band and the limiter at argument 0; with the auto gate and the meter gathering at 1.
void BM_ParametricDynamicsSecondOfStereo(benchmark::State& state) {
    using qoraudiofilters::ParametricDynamics;
    ParametricDynamics fx(kRate, 2);
    fx.SetParameterValue(ParametricDynamics::kThreshold, 0.2f); // -48 dB
    if (state.range(0) != 0) {
        fx.SetParameterValue(ParametricDynamics::kGateEnable, 1.0f);
        fx.SetMeterActive(true);
    }
    RunSecondOfStereo(state, fx);
}
BENCHMARK(BM_ParametricDynamicsSecondOfStereo)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The modulation effects per second of 48 kHz stereo noise at their defaults: the flanger (0),
// the chorus with all eight voices (1), the phaser with twelve stages (2).
void BM_ModulationSecondOfStereo(benchmark::State& state) {
    qoraudiofilters::Flanger flanger(kRate, 2);
    qoraudiofilters::ChorusFlanger chorus(kRate, 2);
    chorus.SetParameterValue(qoraudiofilters::ChorusFlanger::kVoices, 1.0f);
    qoraudiofilters::Phaser phaser(kRate, 2);
    phaser.SetParameterValue(qoraudiofilters::Phaser::kStages, 1.0f);
    qoraudiofilters::ReferenceEffect* effects[] = {&flanger, &chorus, &phaser};
    RunSecondOfStereo(state, *effects[state.range(0)]);
}
BENCHMARK(BM_ModulationSecondOfStereo)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
