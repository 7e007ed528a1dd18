#include "audio/dsp/tube_modeled_compressor.hpp"

#include <cmath>

namespace qoraudiofilters {

namespace {

constexpr float kDefaults[SingleBandCompressor::kParameterCount] = {
    42.0f / 60.0f, 2.0f / 29.0f, 20.0f / 500.0f, 250.0f / 5000.0f, 0.5f};

} // namespace

TubeModeledCompressor::TubeModeledCompressor(float sampleRate, std::size_t channelCount)
    : SingleBandCompressor(sampleRate, channelCount, kKneeDecibels, kDefaults) {}

float TubeModeledCompressor::Saturate(float sample) {
    return std::tanh(sample);
}

void TubeModeledCompressor::ShapeOutput(float* samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = Saturate(samples[i]);
}

} // namespace qoraudiofilters
