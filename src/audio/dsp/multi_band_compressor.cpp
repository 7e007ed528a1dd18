#include "audio/dsp/multi_band_compressor.hpp"

#include "audio/dsp/biquad.hpp"
#include "audio/dsp/dynamics_toolkit.hpp"
#include "audio/dsp/level_meter_dsp.hpp"
#include "audio/dsp/spectrum_meter_message.hpp"
#include "platform/core/main_thread_queue.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

namespace qoraudiofilters {

using qoraudiofilterhost::ParameterDescriptor;
using qoraudiotoolkit::Biquad;

namespace {

constexpr std::size_t kMaxChannels = 8;
constexpr std::size_t kChunk = 128;
constexpr int kBands = MultiBandCompressor::kBandCount;
constexpr double kDecibelsToLog = std::numbers::ln10 / 20.0;
constexpr double kGainSmoothingMilliseconds = 10.0;
constexpr double kSoftKneeDecibels = 3.0;

float Normalised(float plain, float low, float high) {
    return (plain - low) / (high - low);
}

std::vector<ParameterDescriptor> MakeParameters() {
    using M = MultiBandCompressor;
    std::vector<ParameterDescriptor> p(M::kParameterCount);
    for (int k = 0; k < M::kParameterCount; ++k)
        p[std::size_t(k)] = {"Reserved " + std::to_string(k), 0.0f, 1.0f, 0.0f};
    p[M::kOutputGain] = {"Output Gain", -18.0f, 18.0f, 0.5f, "dB"};
    // Gentle defaults: -24 dB, 3:1, 10 ms, 200 ms, 0 dB on every band.
    for (int b = 0; b < kBands; ++b) {
        const std::string band = "Band " + std::to_string(b + 1) + " ";
        p[std::size_t(M::kThreshold + b)] = {band + "Threshold", -60.0f, 0.0f,
                                             Normalised(-24.0f, -60.0f, 0.0f), "dB"};
        p[std::size_t(M::kRatio + b)] = {band + "Ratio", 1.0f, 30.0f, Normalised(3.0f, 1.0f, 30.0f),
                                         ":1"};
        p[std::size_t(M::kAttack + b)] = {band + "Attack", 0.0f, 500.0f, 10.0f / 500.0f, "ms"};
        p[std::size_t(M::kRelease + b)] = {band + "Release", 0.0f, 5000.0f, 200.0f / 5000.0f, "ms"};
        p[std::size_t(M::kGain + b)] = {band + "Gain", -18.0f, 18.0f, 0.5f, "dB"};
        p[std::size_t(M::kBypass + b)] = {band + "Bypass", 0.0f, 1.0f, 0.0f};
        p[std::size_t(M::kSolo + b)] = {band + "Solo", 0.0f, 1.0f, 0.0f};
    }
    p[M::kSpectrumOnInput] = {"Spectrum on Input", 0.0f, 1.0f, 0.0f};
    p[M::kLinkBandControls] = {"Link Band Controls", 0.0f, 1.0f, 0.0f};
    constexpr float kDefaultCutoffs[3] = {120.0f, 1000.0f, 6000.0f};
    constexpr const char* kCutoffNames[3] = {"Low Crossover", "Mid Crossover", "High Crossover"};
    for (int i = 0; i < 3; ++i)
        p[std::size_t(M::kCrossOver + i)] = {
            kCutoffNames[i], M::kMinFrequency, M::kMaxFrequency,
            Normalised(kDefaultCutoffs[i], M::kMinFrequency, M::kMaxFrequency), "Hz"};
    p[M::kLimiterThreshold] = {"Limiter Threshold", -30.0f, 0.0f, 1.0f, "dB"};
    p[M::kLimiterMargin] = {"Limiter Margin", -12.0f, 0.0f, Normalised(-0.3f, -12.0f, 0.0f), "dB"};
    p[M::kLimiterAttack] = {"Limiter Attack", 0.0f, float(M::kMaxLookAheadMilliseconds), 0.5f,
                            "ms"};
    p[M::kLimiterRelease] = {"Limiter Release", 1.0f, 1000.0f, Normalised(100.0f, 1.0f, 1000.0f),
                             "ms"};
    p[M::kLimiterBypass] = {"Limiter Bypass", 0.0f, 1.0f, 0.0f};
    p[M::kBrickwallLimiter] = {"Limiter Mode", 0.0f, 1.0f, 0.25f};
    return p;
}

// One second-order section in transposed direct form II.
struct section_t {
    double Process(double x) {
        const double y = c.b0 * x + z1;
        z1 = c.b1 * x - c.a1 * y + z2;
        z2 = c.b2 * x - c.a2 * y;
        return y;
    }
    void Clear() { z1 = z2 = 0.0; }
    Biquad c;
    double z1 = 0.0;
    double z2 = 0.0;
};

// A fourth-order Linkwitz-Riley pass: two equal Butterworth sections.
struct lr4_t {
    double Process(double x) { return second.Process(first.Process(x)); }
    void Set(const Biquad& c) { first.c = second.c = c; }
    void Clear() { first.Clear(), second.Clear(); }
    section_t first;
    section_t second;
};

// The splitting tree of one channel.
struct split_t {
    void Clear() {
        for (lr4_t* f : {&low1, &high1, &low2, &high2, &low3, &high3})
            f->Clear();
        allpass1.Clear();
        allpass3.Clear();
    }
    void Split(double x, std::array<float, kBands>& bands) {
        const double low = allpass3.Process(low2.Process(x));
        const double high = allpass1.Process(high2.Process(x));
        bands[0] = float(low1.Process(low));
        bands[1] = float(high1.Process(low));
        bands[2] = float(low3.Process(high));
        bands[3] = float(high3.Process(high));
    }
    lr4_t low1, high1, low2, high2, low3, high3;
    section_t allpass1, allpass3;
};

struct band_t {
    qoraudiofilters::dynamics::AttackRelease detector;
    qoraudiofilters::dynamics::AttackRelease reduction;
    qoraudiofilters::dynamics::AttackRelease gain;
    std::array<std::vector<float>, kMaxChannels> samples;
    std::array<float*, kMaxChannels> pointers{};
};

} // namespace

struct MultiBandCompressor::state_t {
    state_t(double sampleRate, std::size_t channels)
        : rate(sampleRate),
          limiter(std::size_t(std::ceil(kMaxLookAheadMilliseconds * 0.001 * sampleRate)) + 1,
                  sampleRate) {
        applied.fill(std::numeric_limits<double>::quiet_NaN());
        for (band_t& band : bands)
            for (std::size_t c = 0; c < kMaxChannels; ++c) {
                band.samples[c].assign(kChunk, 0.0f);
                band.pointers[c] = band.samples[c].data();
            }
        (void)channels;
    }

    // The process thread: takes the newest settings.
    void Take() {
        bool changed = false;
        for (std::size_t k = 0; k < applied.size(); ++k) {
            const double value = plain[k].load(std::memory_order_relaxed);
            if (value != applied[k]) {
                applied[k] = value;
                changed = true;
            }
        }
        if (!changed)
            return;
        DesignCrossovers();
        for (int b = 0; b < kBands; ++b) {
            band_t& band = bands[std::size_t(b)];
            band.detector.SetTimes(0.0, kDetectorReleaseMilliseconds, rate);
            band.reduction.SetTimes(applied[std::size_t(kAttack + b)],
                                    applied[std::size_t(kRelease + b)], rate);
            band.gain.SetTimes(kGainSmoothingMilliseconds, kGainSmoothingMilliseconds, rate);
        }
        outputGain.SetTimes(kGainSmoothingMilliseconds, kGainSmoothingMilliseconds, rate);
        const std::size_t lookAhead =
            std::size_t(std::lround(applied[kLimiterAttack] * 0.001 * rate));
        if (lookAhead != limiter.GetLookAhead())
            limiter.SetLookAhead(lookAhead);
        latency.store(limiter.GetLookAhead(), std::memory_order_relaxed);
        limiter.SetCeiling(applied[kLimiterMargin]);
        limiter.SetRelease(applied[kLimiterRelease]);
        const bool brickwall = int(applied[kBrickwallLimiter] * 4.0) == 1;
        limiter.SetKnee(brickwall ? 0.0 : kSoftKneeDecibels);
        limiter.SetAutoRelease(!brickwall);
        if (fresh) {
            for (int b = 0; b < kBands; ++b)
                bands[std::size_t(b)].gain.Reset(applied[std::size_t(kGain + b)]);
            outputGain.Reset(applied[kOutputGain]);
            fresh = false;
        }
    }

    void DesignCrossovers() {
        // In order, and inside what the rate can carry.
        std::array<double, 3> f{applied[kCrossOver], applied[kCrossOver + 1],
                                applied[kCrossOver + 2]};
        std::sort(f.begin(), f.end());
        for (double& hz : f)
            hz = std::clamp(hz, double(kMinFrequency), 0.45 * rate);
        if (f == designed)
            return;
        designed = f;
        constexpr double q = std::numbers::sqrt2 / 2.0;
        std::array<Biquad, 3> lows;
        std::array<Biquad, 3> highs;
        std::array<Biquad, 3> passes;
        for (std::size_t i = 0; i < 3; ++i) {
            lows[i] = Biquad::LowPass(f[i], q, rate);
            highs[i] = Biquad::HighPass(f[i], q, rate);
            // Low plus high of a Linkwitz-Riley pair: the allpass with the same poles.
            passes[i] = {lows[i].a2, lows[i].a1, 1.0, lows[i].a1, lows[i].a2};
        }
        for (split_t& s : splits) {
            s.low1.Set(lows[0]);
            s.high1.Set(highs[0]);
            s.low2.Set(lows[1]);
            s.high2.Set(highs[1]);
            s.low3.Set(lows[2]);
            s.high3.Set(highs[2]);
            s.allpass1.c = passes[0];
            s.allpass3.c = passes[2];
        }
    }

    double rate;
    std::array<std::atomic<double>, kParameterCount> plain{};
    std::array<double, kParameterCount> applied{};
    std::array<double, 3> designed{};
    std::array<split_t, kMaxChannels> splits;
    std::array<band_t, kBands> bands;
    dynamics::AttackRelease outputGain;
    dynamics::LookAheadLimiter limiter;
    bool fresh = true;
    std::atomic<std::size_t> latency{0};

    // Installed by `EnableMetersMessage`; swapped, never released, here.
    std::array<qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP>, kBands> spectra;
    std::shared_ptr<qoraudiotoolkit::LevelMeterDSP> outputMeter;

    // Readings for the meters.
    std::array<std::atomic<float>, kBands> reductions{};
    std::array<std::array<std::atomic<float>, kMaxChannels>, kBands> peaks{};
    std::atomic<float> limiterGain{1.0f};
};

// ---------------------------------------------------------------------------------------------
// CrossOver

void MultiBandCompressor::CrossOver::GetCutoffs(std::vector<float>& cutoffs) const {
    cutoffs.resize(3);
    for (std::size_t i = 0; i < 3; ++i)
        cutoffs[i] = cutoffs_[i].load(std::memory_order_relaxed);
}

float MultiBandCompressor::CrossOver::TrimCutoffFreq(const std::vector<float>& cutoffs, int index,
                                                     float frequency, float minimumGap) {
    if (index < 0 || std::size_t(index) >= cutoffs.size())
        return std::numeric_limits<float>::quiet_NaN();
    if (std::isnan(frequency))
        return cutoffs[std::size_t(index)];
    const double gap = std::isfinite(minimumGap) ? std::fabs(double(minimumGap)) : 0.0;
    double low = kMinFrequency;
    double high = kMaxFrequency;
    if (index > 0 && std::isfinite(cutoffs[std::size_t(index - 1)]))
        low = std::max(low, double(cutoffs[std::size_t(index - 1)]) * std::exp2(gap));
    if (std::size_t(index + 1) < cutoffs.size() && std::isfinite(cutoffs[std::size_t(index + 1)]))
        high = std::min(high, double(cutoffs[std::size_t(index + 1)]) * std::exp2(-gap));
    // Neighbours closer than two gaps: the lower bound wins, so the order still holds.
    return float(std::max(std::min(double(frequency), high), std::min(low, double(kMaxFrequency))));
}

// ---------------------------------------------------------------------------------------------
// EnableMetersMessage

MultiBandCompressor::EnableMetersMessage::EnableMetersMessage(
    std::shared_ptr<MultiBandCompressor> filter, bool enable)
    : filter_(std::move(filter)) {
    if (!filter_ || !enable)
        return;
    meters_.enabled = true;
    for (int b = 0; b < kBands; ++b) {
        auto meter = qorcore::MakeIntrusive<qoraudiotoolkit::SpectrumMeterDSP>(
            filter_->GetSampleRate(), filter_->GetNumberOfInputChannels());
        meter->SetMessageTarget(filter_);
        swap_[std::size_t(b)] = meter;
        meters_.bands.push_back(std::move(meter));
    }
    meters_.output =
        std::make_shared<qoraudiotoolkit::LevelMeterDSP>(filter_->GetNumberOfOutputChannels());
    meters_.output->SetMessageTarget(filter_);
    swapOutput_ = meters_.output;
}

MultiBandCompressor::EnableMetersMessage::~EnableMetersMessage() {
    for (auto& meter : swap_)
        qoraudiotoolkit::ReleaseMeterOnMainThread(meter);
    for (auto& meter : meters_.bands)
        qoraudiotoolkit::ReleaseMeterOnMainThread(meter);
    if (!qorcore::IsMainThread() && (swapOutput_ || meters_.output))
        qorcore::PostToMainThread(
            [a = std::move(swapOutput_), b = std::move(meters_.output)] { (void)a, (void)b; });
}

void MultiBandCompressor::EnableMetersMessage::ExecuteOnProcessThread() {
    if (filter_)
        filter_->SwapMeters(swap_, swapOutput_);
}

void MultiBandCompressor::EnableMetersMessage::ExecuteOnMainThread() {
    for (auto& meter : swap_)
        meter.reset();
    swapOutput_.reset();
}

MultiBandCompressor::Meters MultiBandCompressor::EnableMetersMessage::CreateAndPost(
    const std::shared_ptr<MultiBandCompressor>& filter, bool enable) {
    if (!filter)
        return {};
    auto message = std::make_shared<EnableMetersMessage>(filter, enable);
    Meters meters = message->meters_;
    filter->Post(std::move(message));
    return meters;
}

// ---------------------------------------------------------------------------------------------
// MultiBandCompressor

MultiBandCompressor::MultiBandCompressor(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(), sampleRate, channelCount),
      crossOver_(qorcore::MakeIntrusive<CrossOver>()),
      state_(std::make_unique<state_t>(double(GetSampleRate()), GetChannelCount())) {
    Publish();
}

MultiBandCompressor::~MultiBandCompressor() = default;

void MultiBandCompressor::Publish() {
    for (int k = 0; k < kParameterCount; ++k) {
        const double plain = GetAppliedPlainValue(k);
        state_->plain[std::size_t(k)].store(plain, std::memory_order_relaxed);
        if (k >= kCrossOver && k < kCrossOver + 3)
            crossOver_->cutoffs_[std::size_t(k - kCrossOver)].store(float(plain),
                                                                    std::memory_order_relaxed);
    }
}

void MultiBandCompressor::UpdateFromParameters() {
    Publish();
}

void MultiBandCompressor::GetLevels(int band, float* levels, std::size_t count) {
    if (!levels)
        return;
    for (std::size_t c = 0; c < count; ++c)
        levels[c] =
            band >= 0 && band < kBands && c < std::min(GetChannelCount(), kMaxChannels)
                ? state_->peaks[std::size_t(band)][c].exchange(0.0f, std::memory_order_relaxed)
                : 0.0f;
}

float MultiBandCompressor::GetGainReduction(int band) const {
    if (band < 0 || band >= kBands)
        return 0.0f;
    return state_->reductions[std::size_t(band)].load(std::memory_order_relaxed);
}

float MultiBandCompressor::GetLimiterReduction() const {
    return float(dynamics::DecibelsFromLinear(state_->limiterGain.load(std::memory_order_relaxed)));
}

double MultiBandCompressor::GetStaticBandGainDecibels(int band, double inputDb) const {
    if (band < 0 || band >= kBands || std::isnan(inputDb))
        return std::numeric_limits<double>::quiet_NaN();
    const auto& plain = state_->plain;
    const std::size_t b = std::size_t(band);
    return dynamics::CompressorGain(inputDb, plain[kThreshold + b].load(std::memory_order_relaxed),
                                    plain[kRatio + b].load(std::memory_order_relaxed)) +
           plain[kGain + b].load(std::memory_order_relaxed);
}

std::size_t MultiBandCompressor::GetLatencySamples() const {
    return state_->plain[kLimiterBypass].load(std::memory_order_relaxed) >= 0.5
               ? 0
               : state_->latency.load(std::memory_order_relaxed);
}

void MultiBandCompressor::SwapMeters(
    std::array<qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP>, kBandCount>& bands,
    std::shared_ptr<qoraudiotoolkit::LevelMeterDSP>& output) {
    for (std::size_t b = 0; b < bands.size(); ++b)
        state_->spectra[b].swap(bands[b]);
    state_->outputMeter.swap(output);
}

void MultiBandCompressor::Process(const float* const* inputs, float* const* outputs,
                                  std::size_t channelCount, std::size_t frameCount) {
    const std::size_t channels =
        std::min(PassExtraChannels(inputs, outputs, channelCount, frameCount), kMaxChannels);
    state_t& s = *state_;
    s.Take();
    const bool spectrumOnInput = s.applied[kSpectrumOnInput] >= 0.5;
    const bool limiterOn = s.applied[kLimiterBypass] < 0.5;
    const double limiterDrive = s.applied[kLimiterMargin] - s.applied[kLimiterThreshold];
    std::array<bool, kBands> bypass{};
    std::array<bool, kBands> audible{};
    bool anySolo = false;
    for (std::size_t b = 0; b < kBands; ++b) {
        bypass[b] = s.applied[kBypass + b] >= 0.5;
        anySolo = anySolo || s.applied[kSolo + b] >= 0.5;
    }
    for (std::size_t b = 0; b < kBands; ++b)
        audible[b] = !anySolo || s.applied[kSolo + b] >= 0.5;

    std::array<float, kBands> split{};
    for (std::size_t done = 0; done < frameCount;) {
        const std::size_t n = std::min(kChunk, frameCount - done);
        for (std::size_t c = 0; c < channels; ++c) {
            const float* in = inputs[c] ? inputs[c] + done : nullptr;
            for (std::size_t i = 0; i < n; ++i) {
                const float v = in ? in[i] : 0.0f;
                s.splits[c].Split(std::isfinite(v) ? double(v) : 0.0, split);
                for (std::size_t b = 0; b < kBands; ++b)
                    s.bands[b].samples[c][i] = split[b];
            }
        }
        for (std::size_t b = 0; b < kBands; ++b) {
            band_t& band = s.bands[b];
            for (std::size_t c = 0; c < channels; ++c) {
                float peak = 0.0f;
                for (std::size_t i = 0; i < n; ++i)
                    peak = std::max(peak, std::fabs(band.samples[c][i]));
                std::atomic<float>& held = s.peaks[b][c];
                if (peak > held.load(std::memory_order_relaxed))
                    held.store(peak, std::memory_order_relaxed);
            }
            if (spectrumOnInput && s.spectra[b])
                s.spectra[b]->ProcessBlock(band.pointers.data(), channels, n);
            const double threshold = s.applied[kThreshold + b];
            const double ratio = s.applied[kRatio + b];
            const double gainTarget = s.applied[kGain + b];
            for (std::size_t i = 0; i < n; ++i) {
                double peak = 0.0;
                for (std::size_t c = 0; c < channels; ++c)
                    peak = std::max(peak, std::fabs(double(band.samples[c][i])));
                const double level = dynamics::DecibelsFromLinear(band.detector.Process(peak));
                const double reduction =
                    band.reduction.Process(-dynamics::CompressorGain(level, threshold, ratio));
                const double gainDb = band.gain.Process(gainTarget) - reduction;
                if (bypass[b])
                    continue;
                const float gain = float(std::exp(gainDb * kDecibelsToLog));
                for (std::size_t c = 0; c < channels; ++c)
                    band.samples[c][i] *= gain;
            }
            s.reductions[b].store(bypass[b] ? 0.0f : float(-band.reduction.GetValue()),
                                  std::memory_order_relaxed);
            if (!spectrumOnInput && s.spectra[b])
                s.spectra[b]->ProcessBlock(band.pointers.data(), channels, n);
        }
        for (std::size_t i = 0; i < n; ++i) {
            const double gainDb =
                s.outputGain.Process(s.applied[kOutputGain]) + (limiterOn ? limiterDrive : 0.0);
            const double gain = std::exp(gainDb * kDecibelsToLog);
            for (std::size_t c = 0; c < channels; ++c) {
                double sum = 0.0;
                for (std::size_t b = 0; b < kBands; ++b)
                    if (audible[b])
                        sum += double(s.bands[b].samples[c][i]);
                outputs[c][done + i] = float(sum * gain);
            }
        }
        done += n;
    }
    if (limiterOn) {
        s.limiter.Process(outputs, channels, frameCount);
        s.limiterGain.store(float(s.limiter.GetLastGain()), std::memory_order_relaxed);
    } else {
        s.limiterGain.store(1.0f, std::memory_order_relaxed);
    }
    if (s.outputMeter)
        s.outputMeter->ProcessBlock(outputs, channels, frameCount);
}

void MultiBandCompressor::Reset() {
    state_t& s = *state_;
    for (split_t& split : s.splits)
        split.Clear();
    for (band_t& band : s.bands) {
        band.detector.Reset(0.0);
        band.reduction.Reset(0.0);
    }
    for (auto& reduction : s.reductions)
        reduction.store(0.0f, std::memory_order_relaxed);
    s.limiter.Reset();
    s.fresh = true;
}

} // namespace qoraudiofilters
