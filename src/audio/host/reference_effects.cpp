#include "audio/host/reference_effects.hpp"

#include "audio/dsp/chorus_flanger.hpp"
#include "audio/dsp/de_esser.hpp"
#include "audio/dsp/dynamics.hpp"
#include "audio/dsp/fft_filter.hpp"
#include "audio/dsp/flanger.hpp"
#include "audio/dsp/graphic_eq.hpp"
#include "audio/dsp/hard_limiter.hpp"
#include "audio/dsp/latency_generator.hpp"
#ifndef QAFUI_LOUDNESS_METER_PROXY
#include "audio/dsp/loudness_meter.hpp"
#endif
#include "audio/dsp/multi_band_compressor.hpp"
#include "audio/dsp/parametric_dynamics.hpp"
#include "audio/dsp/parametric_eq.hpp"
#include "audio/dsp/phaser.hpp"
#include "audio/dsp/single_band_compressor.hpp"
#include "audio/dsp/single_band_dynamics.hpp"
#include "audio/dsp/spectrum_meter.hpp"
#include "audio/dsp/tube_modeled_compressor.hpp"

#include <algorithm>
#include <functional>
#include <map>

namespace qafhost {

namespace {

using Factory =
    std::function<std::shared_ptr<qoraudiofilters::ReferenceEffect>(float, std::size_t)>;

const std::map<std::string, Factory, std::less<>>& Factories() {
    static const std::map<std::string, Factory, std::less<>> factories{
        {"ChorusFlanger",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::ChorusFlanger>(rate, channels);
         }},
        {"DeEsser",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::DeEsser>(rate, channels);
         }},
        {"Dynamics",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::Dynamics>(rate, channels);
         }},
        {"FFTFilter",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::FFTFilter>(rate, channels);
         }},
        {"Flanger",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::Flanger>(rate, channels);
         }},
        {"GraphicEQ10Bands",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::GraphicEQ>(10, rate, channels);
         }},
        {"GraphicEQ20Bands",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::GraphicEQ>(20, rate, channels);
         }},
        {"GraphicEQ30Bands",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::GraphicEQ>(30, rate, channels);
         }},
        {"HardLimiter",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::HardLimiter>(rate, channels);
         }},
        {"LatencyGenerator",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::LatencyGenerator>(rate, channels);
         }},
#ifndef QAFUI_LOUDNESS_METER_PROXY
        {"LoudnessMeter",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::LoudnessMeter>(rate, channels);
         }},
#endif
        {"MultiBandCompressor",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::MultiBandCompressor>(rate, channels);
         }},
        {"ParametricDynamics",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::ParametricDynamics>(rate, channels);
         }},
        {"ParametricEQ",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::ParametricEQ>(rate, channels);
         }},
        {"Phaser",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::Phaser>(rate, channels);
         }},
        {"SingleBandCompressor",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::SingleBandCompressor>(rate, channels);
         }},
        {"SingleBandDynamics",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::SingleBandDynamics>(rate, channels);
         }},
        {"SpectrumMeter",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::SpectrumMeter>(rate, channels);
         }},
        {"TubeModeledComp",
         [](float rate, std::size_t channels) {
             return std::make_shared<qoraudiofilters::TubeModeledCompressor>(rate, channels);
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
