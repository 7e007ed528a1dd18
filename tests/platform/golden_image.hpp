#pragma once

#include "platform/draw/image.hpp"

#include <gtest/gtest.h>

#include <string>

namespace qafui_testing {

/// How far an image may stray from its golden. The default is an exact match.
struct GoldenTolerance {
    int channel = 0; ///< largest difference of one 8-bit channel still counted as equal
    int pixels = 0;  ///< how many pixels may differ beyond that
};

/// Compares `image` with tests/golden/<name>.png. A missing golden fails. On failure the
/// actual image and a difference image (differing pixels red over a faded copy) go to
/// golden-failures/ in the build folder. With QAFUI_UPDATE_GOLDEN=1 in the environment (what
/// `make update-golden` sets) the golden is written instead and the check passes.
::testing::AssertionResult MatchesGolden(const qorui::penrig::Image& image, const std::string& name,
                                         GoldenTolerance tolerance = {});

} // namespace qafui_testing
