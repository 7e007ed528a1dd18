#include "platform/rulers/decibel_ruler.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace qorui {

DecibelRuler::DecibelRuler(int style) : style_(static_cast<Style>(style)) {
    if (style != kStyleLinear && style != kStyleFader)
        throw std::invalid_argument("DecibelRuler: style " + std::to_string(style) +
                                    " is neither 0 (linear) nor 1 (fader)");
    SetValueRange(-60.0, 6.0);
}

double DecibelRuler::ToAxis(double value) const {
    return style_ == kStyleFader ? fader_.GetNormalizedValue(value) : value;
}

double DecibelRuler::FromAxis(double axis) const {
    return style_ == kStyleFader ? fader_.GetDecibelValue(axis) : axis;
}

std::string DecibelRuler::FormatValue(double value) const {
    if (value <= minusInfinity_)
        return "-\u221E";
    const std::string text = RulerBase::FormatValue(value);
    return value > 0.0 && text != "0" ? "+" + text : text;
}

void DecibelRuler::ComputeTicks(double minMajorSpacing, std::vector<double>& majors,
                                std::vector<double>& minors) const {
    if (style_ == kStyleLinear) {
        ComputeLinearTicks(minMajorSpacing, {1.0, 2.0, 3.0, 6.0, 10.0}, majors, minors);
        return;
    }
    // On a fader the spacing changes along the travel, so the levels are taken by importance and
    // kept where they leave room: 0 dB first, then the levels engineers read most.
    static const double kLevels[] = {0,   -6,  -12, -20, -30, -40, -60, 6,  12, -3, -10,
                                     -15, -24, -50, -80, 3,   -1,  -2,  -4, -5, -8, -18,
                                     -36, -48, -70, -90, 1,   2,   4,   5,  8,  9,  10};
    const double low = GetLowValue();
    const double high = GetHighValue();
    for (double level : kLevels) {
        if (level < low - 1e-9 || level > high + 1e-9)
            continue;
        const bool crowded = std::any_of(majors.begin(), majors.end(), [&](double m) {
            return PixelDistance(m, level) < minMajorSpacing;
        });
        if (!crowded)
            majors.push_back(level);
    }
    for (double level = std::ceil(low); level <= high; level += 1.0) {
        if (std::find(majors.begin(), majors.end(), level) != majors.end())
            continue;
        const bool crowded = std::any_of(minors.begin(), minors.end(),
                                         [&](double m) { return PixelDistance(m, level) < 4.0; }) ||
                             std::any_of(majors.begin(), majors.end(),
                                         [&](double m) { return PixelDistance(m, level) < 4.0; });
        if (!crowded)
            minors.push_back(level);
    }
}

} // namespace qorui
