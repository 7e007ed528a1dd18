#include "audio/host/reference_effects.hpp"

#include "audio/dsp/fft_filter.hpp"
#ifndef QAFUI_LOUDNESS_METER_PROXY
#include "audio/dsp/loudness_meter.hpp"
#endif
#include "audio/dsp/parametric_eq.hpp"
#include "audio/dsp/spectrum_meter.hpp"

#include <algorithm>
#include <functional>
#include <map>

namespace qafhost {

namespace {

using Factory =
    std::function<std::shared_ptr<qoraudiofilters::ReferenceEffect>(float, std::size_t)>;

const std::map<std::string, Factory, std::less<>>& Factories() {
    static const std::map<std::string, Factory, std::less<>> factories{
        {"FFTFilter",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::FFTFilter>(rate, channels);
         }},
#ifndef QAFUI_LOUDNESS_METER_PROXY
        {"LoudnessMeter",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::LoudnessMeter>(rate, channels);
         }},
#endif
        {"ParametricEQ",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::ParametricEQ>(rate, channels);
         }},
        {"SpectrumMeter",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::SpectrumMeter>(rate, channels);
         }},
    };
    return factories;
}

} // namespace

std::vector<std::string> GetReferenceEffectNames() {
    std::vector<std::string> names;
    for (const auto& [name, factory] : Factories())
        names.push_back(name);
    return names;
}

bool HasReferenceEffect(std::string_view name) {
    return Factories().find(name) != Factories().end();
}

std::shared_ptr<qoraudiofilters::ReferenceEffect>
CreateReferenceEffect(std::string_view name, float sampleRate, std::size_t channelCount) {
    const auto found = Factories().find(name);
    if (found == Factories().end())
        return nullptr;
    return found->second(sampleRate, channelCount);
}

} // namespace qafhost
