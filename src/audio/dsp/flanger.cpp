#include "audio/dsp/flanger.hpp"

#include <algorithm>
#include <cmath>

namespace qoraudiofilters {

using qoraudiofilterhost::ParameterDescriptor;

namespace {

constexpr double kMaxDelayMs = 10.0;
constexpr double kMaxDepthMs = 10.0;

std::vector<ParameterDescriptor> MakeParameters() {
    std::vector<ParameterDescriptor> p(Flanger::kParameterCount);
    p[Flanger::kDelay] = {"Delay", 0.1f, float(kMaxDelayMs), float(1.9 / 9.9), "ms"};
    p[Flanger::kDepth] = {"Depth", 0.0f, float(kMaxDepthMs), 0.3f, "ms"};
    p[Flanger::kRate] = {"Rate", 0.05f, 10.0f, float(0.45 / 9.95), "Hz"};
    p[Flanger::kFeedback] = {"Feedback", -95.0f, 95.0f, float(145.0 / 190.0), "%"};
    p[Flanger::kMix] = {"Mix", 0.0f, 100.0f, 0.5f, "%"};
    p[Flanger::kStereoPhase] = {"Stereo Phase", 0.0f, 180.0f, 0.5f, "deg"};
    p[Flanger::kOutputGain] = {"Output Gain", -20.0f, 20.0f, 0.5f, "dB"};
    p[Flanger::kTriangle] = {"Triangle", 0.0f, 1.0f, 0.0f};
    p[Flanger::kInvert] = {"Invert", 0.0f, 1.0f, 0.0f};
    p[Flanger::kHighQuality] = {"High Quality", 0.0f, 1.0f, 1.0f};
    return p;
}

} // namespace

Flanger::Flanger(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(), sampleRate, channelCount) {
    const auto capacity =
        std::size_t(std::ceil((kMaxDelayMs + kMaxDepthMs) * GetSampleRate() / 1000.0)) + 2;
    for (auto& delay : delays_)
        delay = ModulatedDelay(capacity);
    UpdateFromParameters();
}

double Flanger::GetPlainSetting(int index) const {
    return settings_.at(std::size_t(index)).load(std::memory_order_relaxed);
}

void Flanger::Decode(int index) {
    const double plain = index >= kTriangle ? (GetAppliedValue(index) > 0.5 ? 1.0 : 0.0)
                                            : GetAppliedPlainValue(index);
    settings_[std::size_t(index)].store(plain, std::memory_order_relaxed);
}

void Flanger::ApplyParameter(int index) {
    Decode(index);
}

void Flanger::UpdateFromParameters() {
    for (int i = 0; i < kParameterCount; ++i)
        Decode(i);
}

void Flanger::Reset() {
    for (auto& delay : delays_)
        delay.Clear();
    phase_ = 0.0;
}

void Flanger::Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                      std::size_t frameCount) {
    const std::size_t channels =
        std::min(PassExtraChannels(inputs, outputs, channelCount, frameCount), kMaxChannels);
    const double msToSamples = GetSampleRate() / 1000.0;
    const double delay = GetPlainSetting(kDelay) * msToSamples;
    const double depth = GetPlainSetting(kDepth) * msToSamples;
    const double step = GetPlainSetting(kRate) / GetSampleRate();
    const double feedback = GetPlainSetting(kFeedback) / 100.0;
    const double mix = GetPlainSetting(kMix) / 100.0;
    const double offset = GetPlainSetting(kStereoPhase) / 360.0;
    const double gain = std::pow(10.0, GetPlainSetting(kOutputGain) / 20.0);
    const bool triangle = GetPlainSetting(kTriangle) > 0.5;
    const double wetSign = GetPlainSetting(kInvert) > 0.5 ? -1.0 : 1.0;
    const bool cubic = GetPlainSetting(kHighQuality) > 0.5;
    for (std::size_t c = 0; c < channels; ++c) {
        ModulatedDelay& line = delays_[c];
        // Every other channel takes the offset LFO, so a stereo pair spreads.
        const double channelOffset = (c % 2 == 1) ? offset : 0.0;
        for (std::size_t i = 0; i < frameCount; ++i) {
            const float in = inputs[c] ? inputs[c][i] : 0.0f;
            const double dry = std::isfinite(in) ? double(in) : 0.0;
            const double sweep = SweepShape(phase_ + double(i) * step + channelOffset, triangle);
            // Read before the write, one sample short: the loop then closes over exactly the
            // delay, v[n] = x[n] + g v[n - d], wet = v[n - d].
            const double wet = line.Read(delay + depth * sweep - 1.0, cubic);
            line.Write(float(dry + feedback * wet));
            outputs[c][i] = float(gain * ((1.0 - mix) * dry + mix * wetSign * wet));
        }
    }
    phase_ += double(frameCount) * step;
    phase_ -= std::floor(phase_);
}

} // namespace qoraudiofilters
