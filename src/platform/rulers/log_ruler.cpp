#include "platform/rulers/log_ruler.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace qorui {

void LogRuler::SetLogStep(double step) {
    if (!(step > 1.0) || !std::isfinite(step))
        throw std::invalid_argument("LogRuler::SetLogStep: the step must be a number above 1");
    step_ = step;
}

void LogRuler::SetLogSeed(double seed) {
    if (!(seed > 0.0) || !std::isfinite(seed))
        throw std::invalid_argument("LogRuler::SetLogSeed: the seed must be a number above 0");
    seed_ = seed;
}

void LogRuler::CheckValueRange(double value1, double value2) const {
    RulerBase::CheckValueRange(value1, value2);
    if (!(value1 > 0.0) || !(value2 > 0.0))
        throw std::invalid_argument("LogRuler::SetValueRange: the values must be above 0");
}

double LogRuler::ToAxis(double value) const {
    // Zero and below lie infinitely far out; the pixel mapping clamps that.
    if (!(value > 0.0))
        return -std::numeric_limits<double>::infinity();
    return std::log10(value);
}

void LogRuler::ComputeTicks(double minMajorSpacing, std::vector<double>& majors,
                            std::vector<double>& minors) const {
    const double low = GetLowValue();
    const double high = GetHighValue();
    const double eps = 1e-9;
    const double logStep = std::log(step_);
    const int first = int(std::floor(std::log(low / seed_) / logStep + eps)) - 1;
    const int last = int(std::ceil(std::log(high / seed_) / logStep - eps)) + 1;
    if (last - first > 4000)
        return;
    auto inside = [&](double v) {
        return v >= low * (1 - eps) && v <= high * (1 + eps);
    };
    // The densest series whose neighbours are all far enough apart wins.
    const bool decimal = std::abs(step_ - 10.0) < 1e-9;
    std::vector<std::vector<double>> series = {{1.0}};
    if (decimal) {
        series.push_back({1.0, 2.0, 5.0});
        series.push_back({1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0});
    }
    auto build = [&](const std::vector<double>& multiples, int every) {
        std::vector<double> values;
        for (int k = first; k <= last; ++k) {
            if (((k % every) + every) % every != 0)
                continue;
            const double base = seed_ * std::pow(step_, k);
            for (double m : multiples)
                values.push_back(base * m);
        }
        return values;
    };
    auto spacingOk = [&](const std::vector<double>& values) {
        double previous = std::numeric_limits<double>::quiet_NaN();
        for (double v : values) {
            if (!inside(v))
                continue;
            if (!std::isnan(previous) && PixelDistance(previous, v) < minMajorSpacing)
                return false;
            previous = v;
        }
        return true;
    };
    std::vector<double> chosen;
    std::size_t chosenSeries = 0;
    for (std::size_t s = series.size(); s-- > 0;) {
        auto values = build(series[s], 1);
        if (spacingOk(values)) {
            chosen = std::move(values);
            chosenSeries = s;
            break;
        }
    }
    int every = 1;
    if (chosen.empty()) {
        // Too little room even for every power: skip powers.
        for (every = 2; every < 1000; every *= 2) {
            auto values = build({1.0}, every);
            if (spacingOk(values)) {
                chosen = std::move(values);
                break;
            }
        }
    }
    for (double v : chosen)
        if (inside(v))
            majors.push_back(v);
    // Minor ticks: the integers of each decade that are not majors, when they don't crowd.
    if (!decimal || every != 1 || chosenSeries == 2)
        return;
    std::vector<double> candidates;
    for (double v : build({2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0}, 1))
        if (inside(v) && std::find_if(majors.begin(), majors.end(), [&](double m) {
                             return std::abs(m - v) <= v * 1e-9;
                         }) == majors.end())
            candidates.push_back(v);
    // The 9 and 10 of a decade are the closest pair: thin out when they would blur together.
    bool roomy = true;
    for (double v : candidates)
        if (std::abs(v / std::pow(10.0, std::floor(std::log10(v / seed_) + 1e-9)) / seed_ - 9.0) <
                1e-6 &&
            PixelDistance(v, v * 10.0 / 9.0) < 3.0)
            roomy = false;
    if (roomy)
        minors = std::move(candidates);
}

} // namespace qorui
