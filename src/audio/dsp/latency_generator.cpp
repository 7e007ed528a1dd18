#include "audio/dsp/latency_generator.hpp"

#include <algorithm>
#include <cmath>

namespace qoraudiofilters {

using qoraudiofilterhost::ParameterDescriptor;

namespace {

std::vector<ParameterDescriptor> MakeParameters() {
    std::vector<ParameterDescriptor> p(LatencyGenerator::kParameterCount);
    p[LatencyGenerator::kLatency] = {"Latency", 0.0f,
                                     float(LatencyGenerator::kMaxLatencyMilliseconds), 0.01f, "ms"};
    p[LatencyGenerator::kFailOnProcess] = {"Crash on process", 0.0f, 1.0f, 0.0f};
    return p;
}

} // namespace

LatencyGenerator::LatencyGenerator(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(), sampleRate, channelCount) {
    const auto capacity =
        std::size_t(std::ceil(kMaxLatencyMilliseconds * GetSampleRate() / 1000.0));
    for (auto& line : lines_)
        line = dynamics::DelayLine(capacity);
    UpdateFromParameters();
}

void LatencyGenerator::Decode() {
    const double samples = GetAppliedPlainValue(kLatency) * GetSampleRate() / 1000.0;
    latency_.store(std::size_t(std::lround(samples)), std::memory_order_relaxed);
    failOnProcess_.store(GetAppliedValue(kFailOnProcess) > 0.5, std::memory_order_relaxed);
}

void LatencyGenerator::UpdateFromParameters() {
    Decode();
}

std::size_t LatencyGenerator::GetLatencySamples() const {
    return latency_.load(std::memory_order_relaxed);
}

void LatencyGenerator::Reset() {
    for (auto& line : lines_)
        line.Clear();
}

void LatencyGenerator::Process(const float* const* inputs, float* const* outputs,
                               std::size_t channelCount, std::size_t frameCount) {
    const std::size_t channels =
        std::min(PassExtraChannels(inputs, outputs, channelCount, frameCount), kMaxChannels);
    const bool fail = failOnProcess_.load(std::memory_order_relaxed);
    failed_.store(fail, std::memory_order_relaxed);
    const std::size_t latency = GetLatencySamples();
    for (std::size_t c = 0; c < channels; ++c) {
        dynamics::DelayLine& line = lines_[c];
        if (line.GetDelay() != latency) {
            line.SetDelay(latency);
            line.Clear();
        }
        for (std::size_t i = 0; i < frameCount; ++i) {
            // A sample that is no finite number leaves as silence, as from the other effects.
            const float in = inputs[c] ? inputs[c][i] : 0.0f;
            const float out = line.Process(std::isfinite(in) ? in : 0.0f);
            outputs[c][i] = fail ? 0.0f : out;
        }
    }
}

} // namespace qoraudiofilters
