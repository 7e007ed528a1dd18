#include "parameter_options.hpp"
#include "number_reading.hpp"

#include "platform/core/ascii_case.hpp"
#include "platform/host/parameter_store_filter.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <utility>

namespace qafui::cli {

namespace {

std::string describe(const parameter_assignment_t& assignment) {
    return assignment.option + " " + assignment.target + "=" + assignment.value;
}

} // namespace

std::string read_parameter_assignment(const std::string& option, const std::string& text,
                                      parameter_assignment_t& out) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size())
        return option + " takes INDEX=VALUE or NAME=VALUE, not '" + text + "'";
    out.option = option;
    out.target = text.substr(0, equals);
    out.value = text.substr(equals + 1);
    out.plain = option == "--value";
    double number = 0.0;
    if (!read_number(out.value, number))
        return option + " " + text + ": '" + out.value + "' is not a number";
    if (!out.plain && (number < 0.0 || number > 1.0))
        return option + " " + text + ": a normalised value lies from 0 to 1";
    return {};
}

int find_parameter(const qoraudiofilterhost::ParameterStoreFilter& filter,
                   const std::string& target) {
    const int count = int(filter.GetParameterCount());
    int index = -1;
    const char* end = target.data() + target.size();
    if (const auto [ptr, error] = std::from_chars(target.data(), end, index);
        error == std::errc() && ptr == end) {
        if (index < 0 || index >= count)
            throw std::runtime_error("no parameter " + target + " (the effect has " +
                                     std::to_string(count) + ", 0 to " + std::to_string(count - 1) +
                                     ")");
        return index;
    }
    for (int i = 0; i < count; ++i)
        if (qorcore::EqualIgnoringCase(filter.GetDescriptor(i).name, target))
            return i;
    throw std::runtime_error("no parameter named '" + target + "' (see qafui describe)");
}

void apply_parameters(const std::vector<parameter_assignment_t>& assignments,
                      qoraudiofilterhost::ParameterStoreFilter& filter) {
    // Every assignment is checked before the first is made, so a bad one changes nothing.
    std::vector<std::pair<int, float>> values;
    for (const parameter_assignment_t& assignment : assignments) {
        int index = -1;
        try {
            index = find_parameter(filter, assignment.target);
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(describe(assignment) + ": " + error.what());
        }
        double number = 0.0;
        if (!read_number(assignment.value, number))
            throw std::runtime_error(describe(assignment) + ": not a number");
        double normalised = number;
        if (assignment.plain) {
            const auto& descriptor = filter.GetDescriptor(index);
            const double low = std::min(descriptor.plainAtZero, descriptor.plainAtOne);
            const double high = std::max(descriptor.plainAtZero, descriptor.plainAtOne);
            if (number < low || number > high) {
                char range[96];
                std::snprintf(range, sizeof range, "%g to %g", low, high);
                std::string unit = descriptor.unit.empty() ? "" : " " + descriptor.unit;
                throw std::runtime_error(describe(assignment) + ": " + descriptor.name +
                                         " lies from " + range + unit);
            }
            const auto info = filter.GetParameterInfo(index);
            normalised = info ? info->NormalisedFromPlain(float(number)) : number;
        }
        if (!(normalised >= 0.0 && normalised <= 1.0))
            throw std::runtime_error(describe(assignment) +
                                     ": a normalised value lies from 0 to 1");
        values.emplace_back(index, float(normalised));
    }
    for (const auto& [index, value] : values)
        filter.SetParameterValue(index, value);
}

std::string plain_value_text(const qoraudiofilterhost::ParameterStoreFilter& filter, int index) {
    const auto& descriptor = filter.GetDescriptor(index);
    char number[64];
    std::snprintf(number, sizeof number, "%.6g", double(filter.GetPlainValue(index)));
    return descriptor.unit.empty() ? std::string(number)
                                   : std::string(number) + " " + descriptor.unit;
}

} // namespace qafui::cli
