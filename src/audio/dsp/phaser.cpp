#include "audio/dsp/phaser.hpp"

#include "audio/dsp/modulated_delay.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qoraudiofilters {

using qoraudiofilterhost::ParameterDescriptor;

namespace {

// The corner is recomputed this often (samples): the sweep is slow against it.
constexpr std::size_t kCoefficientInterval = 16;

std::vector<ParameterDescriptor> MakeParameters() {
    std::vector<ParameterDescriptor> p(Phaser::kParameterCount);
    p[Phaser::kStages] = {"Stages", 2.0f, float(Phaser::kMaxStages), 0.2f};
    p[Phaser::kFrequency] = {"Frequency", 50.0f, 2000.0f, float(150.0 / 1950.0), "Hz"};
    p[Phaser::kDepth] = {"Depth", 0.0f, 100.0f, 0.75f, "%"};
    p[Phaser::kRate] = {"Rate", 0.05f, 10.0f, float(0.45 / 9.95), "Hz"};
    p[Phaser::kFeedback] = {"Feedback", -90.0f, 90.0f, 0.5f, "%"};
    p[Phaser::kStereoPhase] = {"Phase", 0.0f, 180.0f, 0.5f, "deg"};
    p[Phaser::kMix] = {"Mix", 0.0f, 100.0f, 0.5f, "%"};
    p[Phaser::kOutputGain] = {"Output Gain", -20.0f, 20.0f, 0.5f, "dB"};
    p[Phaser::kInvert] = {"Invert", 0.0f, 1.0f, 0.0f};
    return p;
}

} // namespace

Phaser::Phaser(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(), sampleRate, channelCount) {
    UpdateFromParameters();
}

double Phaser::GetPlainSetting(int index) const {
    return settings_.at(std::size_t(index)).load(std::memory_order_relaxed);
}

void Phaser::Decode(int index) {
    double plain = GetAppliedPlainValue(index);
    if (index == kStages)
        plain = std::clamp(2.0 * std::round(plain / 2.0), 2.0, double(kMaxStages));
    else if (index == kInvert)
        plain = GetAppliedValue(index) > 0.5 ? 1.0 : 0.0;
    settings_[std::size_t(index)].store(plain, std::memory_order_relaxed);
}

void Phaser::ApplyParameter(int index) {
    Decode(index);
}

void Phaser::UpdateFromParameters() {
    for (int i = 0; i < kParameterCount; ++i)
        Decode(i);
}

void Phaser::Reset() {
    for (auto& stages : lastIn_)
        stages.fill(0.0);
    for (auto& stages : lastOut_)
        stages.fill(0.0);
    feedback_.fill(0.0);
    phase_ = 0.0;
}

void Phaser::Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                     std::size_t frameCount) {
    const std::size_t channels =
        std::min(PassExtraChannels(inputs, outputs, channelCount, frameCount), kMaxChannels);
    const auto stages = std::size_t(GetPlainSetting(kStages));
    const double base = GetPlainSetting(kFrequency);
    const double octaves = kSweepOctaves * GetPlainSetting(kDepth) / 100.0;
    const double step = GetPlainSetting(kRate) / GetSampleRate();
    const double feedback = GetPlainSetting(kFeedback) / 100.0;
    const double offset = GetPlainSetting(kStereoPhase) / 360.0;
    const double mix = GetPlainSetting(kMix) / 100.0;
    const double gain = std::pow(10.0, GetPlainSetting(kOutputGain) / 20.0);
    const double wetSign = GetPlainSetting(kInvert) > 0.5 ? -1.0 : 1.0;
    // The corner stays under Nyquist, whatever the sweep.
    const double highest = 0.45 * GetSampleRate();
    for (std::size_t c = 0; c < channels; ++c) {
        const double channelOffset = (c % 2 == 1) ? offset : 0.0;
        auto& xs = lastIn_[c];
        auto& ys = lastOut_[c];
        double a = 0.0;
        for (std::size_t i = 0; i < frameCount; ++i) {
            if (i % kCoefficientInterval == 0) {
                const double sweep = SweepShape(phase_ + double(i) * step + channelOffset, false);
                const double corner = std::min(base * std::exp2(octaves * sweep), highest);
                const double t = std::tan(std::numbers::pi * corner / GetSampleRate());
                a = (t - 1.0) / (t + 1.0);
            }
            const float in = inputs[c] ? inputs[c][i] : 0.0f;
            const double dry = std::isfinite(in) ? double(in) : 0.0;
            // H(z) = (a + z^-1) / (1 + a z^-1): unit gain, phase from 0 to -180 degrees.
            double x = dry + feedback * feedback_[c];
            for (std::size_t s = 0; s < stages; ++s) {
                const double y = a * x + xs[s] - a * ys[s];
                xs[s] = x;
                ys[s] = y;
                x = y;
            }
            // Denormals would slow the loop once the signal has gone.
            feedback_[c] = std::abs(x) < 1e-30 ? 0.0 : x;
            outputs[c][i] = float(gain * ((1.0 - mix) * dry + mix * wetSign * x));
        }
    }
    phase_ += double(frameCount) * step;
    phase_ -= std::floor(phase_);
}

} // namespace qoraudiofilters
