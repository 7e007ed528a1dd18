#include "audio/dsp/chorus_flanger.hpp"

#include <algorithm>
#include <cmath>

namespace qoraudiofilters {

using qoraudiofilterhost::ParameterDescriptor;

namespace {

// Centre and full-depth swing of each mode's delay, in ms.
constexpr double kChorusDelayMs = 20.0;
constexpr double kChorusSwingMs = 10.0;
constexpr double kFlangerDelayMs = 1.0;
constexpr double kFlangerSwingMs = 4.0;
constexpr double kFlangerFeedback = 0.5;
// Chorus voices drift apart in rate by this fraction each, so they never lock in step.
constexpr double kVoiceRateSpread = 0.07;

std::vector<ParameterDescriptor> MakeParameters() {
    std::vector<ParameterDescriptor> p(ChorusFlanger::kParameterCount);
    p[ChorusFlanger::kMode] = {"Mode", 0.0f, 1.0f, 0.0f};
    p[ChorusFlanger::kVoices] = {"Voices", 1.0f, float(ChorusFlanger::kMaxVoices), 2.0f / 7.0f};
    p[ChorusFlanger::kDepth] = {"Depth", 0.0f, 100.0f, 0.5f, "%"};
    p[ChorusFlanger::kRate] = {"Rate", 0.05f, 5.0f, float(0.95 / 4.95), "Hz"};
    p[ChorusFlanger::kMix] = {"Mix", 0.0f, 100.0f, 0.5f, "%"};
    return p;
}

} // namespace

ChorusFlanger::ChorusFlanger(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(), sampleRate, channelCount) {
    const auto capacity =
        std::size_t(std::ceil((kChorusDelayMs + kChorusSwingMs) * GetSampleRate() / 1000.0)) + 2;
    for (auto& delay : delays_)
        delay = ModulatedDelay(capacity);
    UpdateFromParameters();
    Reset();
}

double ChorusFlanger::GetPlainSetting(int index) const {
    return settings_.at(std::size_t(index)).load(std::memory_order_relaxed);
}

void ChorusFlanger::Decode(int index) {
    double plain = GetAppliedPlainValue(index);
    if (index == kMode)
        plain = GetAppliedValue(index) > 0.5 ? 1.0 : 0.0;
    else if (index == kVoices)
        plain = std::round(plain);
    settings_[std::size_t(index)].store(plain, std::memory_order_relaxed);
}

void ChorusFlanger::ApplyParameter(int index) {
    Decode(index);
}

void ChorusFlanger::UpdateFromParameters() {
    for (int i = 0; i < kParameterCount; ++i)
        Decode(i);
}

void ChorusFlanger::Reset() {
    for (auto& delay : delays_)
        delay.Clear();
    // The voices start spread evenly over the cycle.
    for (int v = 0; v < kMaxVoices; ++v)
        phases_[std::size_t(v)] = double(v) / double(kMaxVoices);
}

void ChorusFlanger::Process(const float* const* inputs, float* const* outputs,
                            std::size_t channelCount, std::size_t frameCount) {
    const std::size_t channels =
        std::min(PassExtraChannels(inputs, outputs, channelCount, frameCount), kMaxChannels);
    const bool flanger = GetPlainSetting(kMode) > 0.5;
    const int voices = std::clamp(int(GetPlainSetting(kVoices)), 1, kMaxVoices);
    const double msToSamples = GetSampleRate() / 1000.0;
    const double depth = GetPlainSetting(kDepth) / 100.0;
    const double centre = (flanger ? kFlangerDelayMs : kChorusDelayMs) * msToSamples;
    const double swing = depth * (flanger ? kFlangerSwingMs : kChorusSwingMs) * msToSamples;
    const double feedback = flanger ? kFlangerFeedback : 0.0;
    const double step = GetPlainSetting(kRate) / GetSampleRate();
    const double mix = GetPlainSetting(kMix) / 100.0;
    std::array<double, kMaxVoices> steps{};
    for (int v = 0; v < voices; ++v)
        steps[std::size_t(v)] = step * (1.0 + (flanger ? 0.0 : kVoiceRateSpread * double(v)));
    for (std::size_t c = 0; c < channels; ++c) {
        ModulatedDelay& line = delays_[c];
        // The second channel of a pair hears the voices a quarter cycle on: a wider image.
        const double channelOffset = (c % 2 == 1) ? 0.25 : 0.0;
        for (std::size_t i = 0; i < frameCount; ++i) {
            const float in = inputs[c] ? inputs[c][i] : 0.0f;
            const double dry = std::isfinite(in) ? double(in) : 0.0;
            // The voices are read before the write, one sample short, so the feedback loop closes
            // over the voices' own delays.
            double wet = 0.0;
            for (int v = 0; v < voices; ++v) {
                const auto k = std::size_t(v);
                const double phase = phases_[k] + double(i) * steps[k] + channelOffset;
                // The sweep swings around the centre, never shorter than a sample.
                const double delay = centre + swing * (SweepShape(phase, false) - 0.5);
                wet += line.Read(std::max(delay, 1.0) - 1.0, true);
            }
            wet /= double(voices);
            line.Write(float(dry + feedback * wet));
            outputs[c][i] = float((1.0 - mix) * dry + mix * wet);
        }
    }
    for (int v = 0; v < voices; ++v) {
        double& phase = phases_[std::size_t(v)];
        phase += double(frameCount) * steps[std::size_t(v)];
        phase -= std::floor(phase);
    }
}

} // namespace qoraudiofilters
