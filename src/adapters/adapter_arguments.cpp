#include "adapters/adapter_arguments.hpp"

#include "platform/tess/assemblage.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace qoraudiofiltersui::adapter_arguments {

using vorlen::any_regular_t;
using vorlen::array_t;
using vorlen::dictionary_t;
using vorlen::name_t;

std::vector<char> ToFlags(const any_regular_t& value) {
    std::vector<char> flags;
    for (const any_regular_t& flag : value.cast<array_t>())
        flags.push_back(flag.cast<bool>() ? 1 : 0);
    return flags;
}

qorcore::ColorRGBA ToColor(const dictionary_t& color) {
    qorcore::ColorRGBA result{0.0f, 0.0f, 0.0f, 1.0f};
    Read(color, name_t("r"), result.red);
    Read(color, name_t("g"), result.green);
    Read(color, name_t("b"), result.blue);
    return result;
}

std::vector<std::pair<double, double>> ReadCurvePoints(const dictionary_t& cell) {
    const array_t& pairs = vorlen::get_value(cell, name_t("curve_points")).cast<array_t>();
    const double active = vorlen::get_value(cell, name_t("num_active_points")).cast<double>();
    const std::size_t count =
        std::min(pairs.size(), std::size_t(std::isfinite(active) ? std::max(0.0, active) : 0.0));
    std::vector<std::pair<double, double>> points;
    for (std::size_t i = 0; i != count; ++i) {
        const array_t& pair = pairs[i].cast<array_t>();
        if (pair.size() != 2)
            throw std::runtime_error("curve_points: a point is a pair [x, y]");
        points.emplace_back(pair[0].cast<double>(), pair[1].cast<double>());
    }
    return points;
}

} // namespace qoraudiofiltersui::adapter_arguments
