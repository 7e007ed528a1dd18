#include "editor_options.hpp"

#include "audio/host/process_host.hpp"

#include <charconv>
#include <cmath>
#include <exception>
#include <sstream>

namespace qafui::cli {

namespace {

bool read_seconds(const std::string& text, const editor_option_rules_t& rules, double& seconds) {
    try {
        std::size_t used = 0;
        const double value = std::stod(text, &used);
        if (used != text.size() || !std::isfinite(value) || value < rules.min_seconds ||
            value > rules.max_seconds || (value == 0.0 && !rules.zero_seconds))
            return false;
        seconds = value;
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool read_block(const std::string& text, std::size_t& block) {
    std::size_t value = 0;
    const char* end = text.data() + text.size();
    const auto [ptr, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || ptr != end || value == 0 ||
        value > qafhost::ProcessHost::kMaxBlockSize)
        return false;
    block = value;
    return true;
}

std::string seconds_rule(const editor_option_rules_t& rules) {
    if (!rules.zero_seconds)
        return "--seconds takes a positive number of seconds";
    std::ostringstream text;
    text << "--seconds takes a number of seconds from " << rules.min_seconds << " to "
         << rules.max_seconds;
    return text.str();
}

} // namespace

std::string read_editor_options(const std::vector<std::string>& arguments,
                                const editor_option_rules_t& rules, editor_options_t& options) {
    const bool takesOutput = *rules.output != '\0';
    for (std::size_t i = 0; i != arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        const std::string* value = i + 1 < arguments.size() ? &arguments[i + 1] : nullptr;
        auto take = [&] {
            ++i;
        };
        if (argument == rules.output_option && takesOutput) {
            if (!value || value->empty())
                return argument + " needs a " + rules.output;
            options.output = *value;
            take();
        } else if ((argument == "--param" || argument == "--value") && rules.parameters) {
            if (!value)
                return argument + " needs INDEX=VALUE or NAME=VALUE";
            parameter_assignment_t assignment;
            if (std::string error = read_parameter_assignment(argument, *value, assignment);
                !error.empty())
                return error;
            options.parameters.push_back(std::move(assignment));
            take();
        } else if (argument == "--events" && rules.events) {
            if (!value || value->empty())
                return "--events needs a file";
            options.events = *value;
            take();
        } else if (argument == "--scale" && rules.scale) {
            if (!value || (*value != "1" && *value != "2"))
                return "--scale takes 1 or 2";
            options.scale = *value == "2" ? 2.0f : 1.0f;
            take();
        } else if (argument == "--skin" && rules.skin) {
            if (!value || (*value != "classic" && *value != "v7"))
                return "--skin takes classic or v7";
            options.skin = *value == "v7" ? qorui::skins::Skin::kV7 : qorui::skins::Skin::kClassic;
            take();
        } else if (argument == "--seconds") {
            if (!value || !read_seconds(*value, rules, options.seconds))
                return seconds_rule(rules);
            take();
        } else if (argument == "--block" && rules.block) {
            if (!value || !read_block(*value, options.block))
                return "--block takes a number of frames from 1 to " +
                       std::to_string(qafhost::ProcessHost::kMaxBlockSize);
            take();
        } else if (argument == "--input" && rules.input) {
            if (!value || value->empty())
                return "--input needs a file";
            options.input = *value;
            take();
        } else if (!argument.empty() && argument[0] == '-') {
            return "unknown option '" + argument + "'";
        } else if (rules.effect && options.effect.empty()) {
            options.effect = argument;
        } else {
            return rules.effect ? "one EFFECT only" : "unexpected argument '" + argument + "'";
        }
    }
    return {};
}

} // namespace qafui::cli
