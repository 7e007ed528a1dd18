#pragma once

#include "platform/core/fader_translator.hpp"
#include "platform/rulers/ruler_base.hpp"

namespace qorui {

/// A ruler of levels in decibels, in one of two styles: linear in decibels (meters, graphs) or
/// following the fader law, where the top few decibels get most of the travel and the bottom runs
/// towards minus infinity. Numbers above zero carry a plus sign.
class DecibelRuler : public RulerBase {
public:
    enum Style { kStyleLinear = 0, kStyleFader = 1 };

    /// A style other than the two throws std::invalid_argument.
    explicit DecibelRuler(int style = kStyleLinear);

    Style GetStyle() const { return style_; }
    /// Levels at or below this show as "-∞" (default -144).
    void SetMinusInfinityLevel(double level) { minusInfinity_ = level; }

    std::string FormatValue(double value) const override;

protected:
    double ToAxis(double value) const override;
    double FromAxis(double axis) const override;
    void ComputeTicks(double minMajorSpacing, std::vector<double>& majors,
                      std::vector<double>& minors) const override;

private:
    Style style_;
    double minusInfinity_ = -144.0;
    qorcore::FaderTranslator<double> fader_{0.75, 12.0, 40.0};
};

} // namespace qorui
