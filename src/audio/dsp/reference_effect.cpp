#include "audio/dsp/reference_effect.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace qoraudiofilters {

ReferenceEffect::ReferenceEffect(std::vector<qoraudiofilterhost::ParameterDescriptor> parameters,
                                 float sampleRate, std::size_t channelCount)
    : ParameterStoreFilter(std::move(parameters)),
      channelCount_(std::clamp<std::size_t>(channelCount, 1, 8)) {
    SetSampleRate(sampleRate);
    // Mono is labelled so; more channels take the labels of a surround layout in order.
    std::vector<qormediatypes::AudioChannelLabel> labels(channelCount_);
    for (std::size_t i = 0; i < channelCount_; ++i)
        labels[i] = channelCount_ == 1 ? qormediatypes::kAudioChannelLabelMono
                                       : qormediatypes::AudioChannelLabel(i + 1);
    const std::vector<qormediatypes::AudioBusDescription> buses{
        qormediatypes::AudioBusDescription{labels}};
    SetBuses(buses, buses);
}

std::size_t ReferenceEffect::PassExtraChannels(const float* const* inputs, float* const* outputs,
                                               std::size_t channelCount,
                                               std::size_t frameCount) const {
    for (std::size_t c = channelCount_; c < channelCount; ++c) {
        if (!inputs[c])
            std::fill_n(outputs[c], frameCount, 0.0f);
        else if (outputs[c] != inputs[c])
            std::copy_n(inputs[c], frameCount, outputs[c]);
    }
    return std::min(channelCount, channelCount_);
}

double ReferenceEffect::GetAppliedValue(int index) const {
    const float value = GetParameterValue(index);
    if (std::isnan(value))
        return double(GetDescriptor(index).defaultValue);
    return std::clamp(double(value), 0.0, 1.0);
}

double ReferenceEffect::GetAppliedPlainValue(int index) const {
    const qoraudiofilterhost::ParameterDescriptor& d = GetDescriptor(index);
    return double(d.plainAtZero) +
           GetAppliedValue(index) * (double(d.plainAtOne) - double(d.plainAtZero));
}

void ReferenceEffect::SetParameterValue(int index, float value) {
    ParameterStoreFilter::SetParameterValue(index, value);
    ApplyParameter(index);
}

void ReferenceEffect::SetParameterQuietly(int index, float value) {
    ParameterStoreFilter::SetParameterQuietly(index, value);
    ApplyParameter(index);
}

void ReferenceEffect::ApplyParameter(int) {
    UpdateFromParameters();
}

bool ReferenceEffect::PrepareParameterSync() {
    ParameterStoreFilter::PrepareParameterSync();
    UpdateFromParameters();
    return true;
}

} // namespace qoraudiofilters
