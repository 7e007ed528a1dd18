#pragma once

#include "audio/dsp/reference_effect.hpp"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qafhost {

/// The effects the reference host can run, by the class names of the effect catalogue
/// ("FFTFilter"), in alphabetical order.
std::vector<std::string> GetReferenceEffectNames();

/// Whether the host has an effect of that name.
bool HasReferenceEffect(std::string_view name);

/// A new effect of that name at the rate and channel count given; null for a name the host
/// has no effect for. A bad rate throws std::invalid_argument.
std::shared_ptr<qoraudiofilters::ReferenceEffect>
CreateReferenceEffect(std::string_view name, float sampleRate, std::size_t channelCount);

} // namespace qafhost
