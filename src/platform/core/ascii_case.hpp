#pragma once

#include <string>
#include <string_view>

namespace qorcore {

/// Whether two texts are the same but for the case of ASCII letters: names of resources,
/// effects, parameters and keys are compared so.
bool EqualIgnoringCase(std::string_view a, std::string_view b);

/// The text with ASCII letters in upper case: resources are kept under such names.
std::string ToUpperAscii(std::string_view text);

} // namespace qorcore
