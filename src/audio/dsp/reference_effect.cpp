#include "audio/dsp/reference_effect.hpp"

#include <algorithm>
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

bool ReferenceEffect::PrepareParameterSync() {
    ParameterStoreFilter::PrepareParameterSync();
    UpdateFromParameters();
    return true;
}

} // namespace qoraudiofilters
