#include "audio/dsp/single_band_compressor.hpp"

#include "audio/dsp/dynamics_toolkit.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <numbers>

namespace qoraudiofilters {

using qoraudiofilterhost::ParameterDescriptor;

namespace {

constexpr std::size_t kMaxChannels = 8;
constexpr double kDecibelsToLog = std::numbers::ln10 / 20.0;

// -20 dB, 4:1, 10 ms, 200 ms, 0 dB.
constexpr float kDefaults[SingleBandCompressor::kParameterCount] = {
    40.0f / 60.0f, 3.0f / 29.0f, 10.0f / 500.0f, 200.0f / 5000.0f, 0.5f};

std::vector<ParameterDescriptor>
MakeParameters(const float (&defaults)[SingleBandCompressor::kParameterCount]) {
    std::vector<ParameterDescriptor> p(SingleBandCompressor::kParameterCount);
    p[SingleBandCompressor::kThreshold] = {"Threshold", -60.0f, 0.0f,
                                           defaults[SingleBandCompressor::kThreshold], "dB"};
    p[SingleBandCompressor::kRatio] = {"Ratio", 1.0f, 30.0f, defaults[SingleBandCompressor::kRatio],
                                       ":1"};
    p[SingleBandCompressor::kAttack] = {"Attack", 0.0f, 500.0f,
                                        defaults[SingleBandCompressor::kAttack], "ms"};
    p[SingleBandCompressor::kRelease] = {"Release", 0.0f, 5000.0f,
                                         defaults[SingleBandCompressor::kRelease], "ms"};
    p[SingleBandCompressor::kOutputGain] = {"Output Gain", -30.0f, 30.0f,
                                            defaults[SingleBandCompressor::kOutputGain], "dB"};
    return p;
}

} // namespace

struct SingleBandCompressor::state_t {
    explicit state_t(double sampleRate) : rate(sampleRate) {
        applied.fill(std::numeric_limits<double>::quiet_NaN());
    }

    // The process thread: takes the newest settings, and the times that follow from them.
    void Take() {
        bool changed = false;
        for (std::size_t k = 0; k < applied.size(); ++k) {
            const double value = plain[k].load(std::memory_order_relaxed);
            if (value != applied[k]) {
                applied[k] = value;
                changed = true;
            }
        }
        if (changed) {
            detector.SetTimes(0.0, kDetectorReleaseMilliseconds, rate);
            reduction.SetTimes(applied[kAttack], applied[kRelease], rate);
            outputGain.SetTimes(kGainSmoothingMilliseconds, kGainSmoothingMilliseconds, rate);
        }
        if (fresh) {
            outputGain.Reset(applied[kOutputGain]);
            fresh = false;
        }
    }

    double rate;
    // Written by the main side, read by the process thread.
    std::array<std::atomic<double>, kParameterCount> plain{};

    // The process thread's.
    std::array<double, kParameterCount> applied{};
    dynamics::AttackRelease detector;
    dynamics::AttackRelease reduction;
    dynamics::AttackRelease outputGain;
    bool fresh = true;

    // Readings for the meters.
    std::atomic<float> gainReduction{0.0f};
    std::array<std::atomic<float>, kMaxChannels> peaks{};
};

static_assert(std::atomic<double>::is_always_lock_free);

SingleBandCompressor::SingleBandCompressor(float sampleRate, std::size_t channelCount)
    : SingleBandCompressor(sampleRate, channelCount, 0.0, kDefaults) {}

SingleBandCompressor::SingleBandCompressor(float sampleRate, std::size_t channelCount,
                                           double kneeDecibels,
                                           const float (&defaults)[kParameterCount])
    : ReferenceEffect(MakeParameters(defaults), sampleRate, channelCount),
      kneeDecibels_(std::max(0.0, kneeDecibels)),
      state_(std::make_unique<state_t>(double(GetSampleRate()))) {
    Publish();
}

SingleBandCompressor::~SingleBandCompressor() = default;

void SingleBandCompressor::Publish() {
    for (int k = 0; k < kParameterCount; ++k)
        state_->plain[std::size_t(k)].store(GetAppliedPlainValue(k), std::memory_order_relaxed);
}

double SingleBandCompressor::GetStaticGainDecibels(double inputDb) const {
    if (std::isnan(inputDb))
        return inputDb;
    const auto& plain = state_->plain;
    return dynamics::CompressorGain(inputDb, plain[kThreshold].load(std::memory_order_relaxed),
                                    plain[kRatio].load(std::memory_order_relaxed), kneeDecibels_) +
           plain[kOutputGain].load(std::memory_order_relaxed);
}

float SingleBandCompressor::GetGainReduction() const {
    return state_->gainReduction.load(std::memory_order_relaxed);
}

void SingleBandCompressor::GetLevels(float* levels, std::size_t count) {
    if (!levels)
        return;
    for (std::size_t c = 0; c < count; ++c)
        levels[c] = c < std::min(GetChannelCount(), kMaxChannels)
                        ? state_->peaks[c].exchange(0.0f, std::memory_order_relaxed)
                        : 0.0f;
}

void SingleBandCompressor::UpdateFromParameters() {
    Publish();
}

void SingleBandCompressor::ShapeOutput(float*, std::size_t) {}

void SingleBandCompressor::Process(const float* const* inputs, float* const* outputs,
                                   std::size_t channelCount, std::size_t frameCount) {
    const std::size_t channels = PassExtraChannels(inputs, outputs, channelCount, frameCount);
    state_t& s = *state_;
    s.Take();
    const double threshold = s.applied[kThreshold];
    const double ratio = s.applied[kRatio];
    const double gainTarget = s.applied[kOutputGain];
    double reduction = s.reduction.GetValue();
    for (std::size_t i = 0; i < frameCount; ++i) {
        double peak = 0.0;
        for (std::size_t c = 0; c < channels; ++c) {
            const double v = inputs[c] ? double(inputs[c][i]) : 0.0;
            if (std::isfinite(v))
                peak = std::max(peak, std::fabs(v));
        }
        const double level = dynamics::DecibelsFromLinear(s.detector.Process(peak));
        reduction =
            s.reduction.Process(-dynamics::CompressorGain(level, threshold, ratio, kneeDecibels_));
        const double gain =
            std::exp((s.outputGain.Process(gainTarget) - reduction) * kDecibelsToLog);
        for (std::size_t c = 0; c < channels; ++c) {
            const float v = inputs[c] ? inputs[c][i] : 0.0f;
            outputs[c][i] = std::isfinite(v) ? float(double(v) * gain) : 0.0f;
        }
    }
    for (std::size_t c = 0; c < channels; ++c) {
        ShapeOutput(outputs[c], frameCount);
        float peak = 0.0f;
        for (std::size_t i = 0; i < frameCount; ++i)
            peak = std::max(peak, std::fabs(outputs[c][i]));
        std::atomic<float>& held = s.peaks[c];
        if (peak > held.load(std::memory_order_relaxed))
            held.store(peak, std::memory_order_relaxed);
    }
    s.gainReduction.store(float(-reduction), std::memory_order_relaxed);
}

void SingleBandCompressor::Reset() {
    state_t& s = *state_;
    s.detector.Reset(0.0);
    s.reduction.Reset(0.0);
    s.fresh = true;
    s.gainReduction.store(0.0f, std::memory_order_relaxed);
}

} // namespace qoraudiofilters
