// The function pack and reflected variables that MarlTessAudioFilterEditorView gives the
// machines of its sheet and its layout: the scripts' way to the filter (curves, custom data,
// channel names).

#include "framework/marl_tess_audio_filter_editor_view.hpp"

#include "core/expression/virtual_machine.hpp"
#include "platform/host/audio_bus_description.hpp"
#include "platform/host/audio_filter.hpp"
#include "platform/tess/marl_library.hpp"
#include "sheet/sheet.hpp"

#include <stdexcept>

namespace qoraudiofiltersui {

namespace {

using vorlen::any_regular_t;
using vorlen::array_t;
using vorlen::dictionary_t;
using vorlen::name_t;

/// The single argument of a call `f(x)`; a call without one raises the machine's message.
const any_regular_t& Only(name_t function, const array_t& arguments) {
    if (arguments.empty())
        throw std::runtime_error(std::string(function.c_str()) + ": parameter error");
    return arguments[0];
}

int IntegerEntry(const dictionary_t& arguments, const char* key) {
    double value = 0;
    vorlen::get_value(arguments, name_t(key), value);
    return int(value);
}

} // namespace

void MarlTessAudioFilterEditorView::InitStandardFunctionPack() {
    namespace lib = qormarltess;
    auto add = [this](const char* name, ArrayFunction function) {
        arrayFunctions_.emplace_back(name_t(name), std::move(function));
    };
    add("default_maximum", [](const array_t&) { return any_regular_t(lib::default_maximum()); });
    add("default_minimum", [](const array_t&) { return any_regular_t(lib::default_minimum()); });
    add("evaluate_serialization", [](const array_t& a) {
        return lib::evaluate_serialization(
            Only(name_t("evaluate_serialization"), a).cast<std::string>());
    });
    add("evaluate_token_stream", [](const array_t& a) {
        return lib::evaluate_token_stream(Only(name_t("evaluate_token_stream"), a).cast<array_t>());
    });
    add("has_key", [](const array_t& a) {
        if (a.size() < 2)
            throw std::runtime_error("has_key: parameter error");
        return any_regular_t(lib::has_key(a[0].cast<dictionary_t>(), a[1].cast<name_t>()));
    });
    add("name_to_string", [](const array_t& a) {
        return any_regular_t(lib::name_to_string(Only(name_t("name_to_string"), a).cast<name_t>()));
    });
    add("serialize_regular", [](const array_t& a) {
        return any_regular_t(lib::serialize_regular(Only(name_t("serialize_regular"), a)));
    });
    add("serialize_token_stream", [](const array_t& a) {
        return any_regular_t(
            lib::serialize_token_stream(Only(name_t("serialize_token_stream"), a).cast<array_t>()));
    });
    add("string_to_name", [](const array_t& a) {
        return any_regular_t(
            lib::string_to_name(Only(name_t("string_to_name"), a).cast<std::string>()));
    });
    add("tokenize_regular", [](const array_t& a) {
        return any_regular_t(lib::tokenize_regular(Only(name_t("tokenize_regular"), a)));
    });
    add("dictionary_union", [](const array_t& a) {
        return any_regular_t(
            lib::merge_dictionary_set(Only(name_t("dictionary_union"), a).cast<array_t>()));
    });
    add("tokenize_serialization", [](const array_t& a) {
        return any_regular_t(
            lib::tokenize_serialization(Only(name_t("tokenize_serialization"), a).cast<array_t>()));
    });
    // The data functions take a dictionary; a call `f({ ... })` arrives as one argument.
    add("get_curve_data", [this](const array_t& a) {
        return GetCustomFloatData(Only(name_t("get_curve_data"), a).cast<dictionary_t>());
    });
    add("get_float_data", [this](const array_t& a) {
        return GetCustomFloatData(Only(name_t("get_float_data"), a).cast<dictionary_t>());
    });
    add("get_double_data", [this](const array_t& a) {
        return GetCustomDoubleData(Only(name_t("get_double_data"), a).cast<dictionary_t>());
    });
    add("trace", [this](const array_t& a) { return Trace(Only(name_t("trace"), a)); });
    add("get_input_channel_name", [this](const array_t& a) {
        return GetChannelName(Only(name_t("get_input_channel_name"), a), false, true);
    });
    add("get_output_channel_name", [this](const array_t& a) {
        return GetChannelName(Only(name_t("get_output_channel_name"), a), false, false);
    });
    add("get_input_channel_abbrev", [this](const array_t& a) {
        return GetChannelName(Only(name_t("get_input_channel_abbrev"), a), true, true);
    });
    add("get_output_channel_abbrev", [this](const array_t& a) {
        return GetChannelName(Only(name_t("get_output_channel_abbrev"), a), true, false);
    });
    add("get_output_channel_abbrev_array",
        [this](const array_t&) { return GetChannelNameArray(true, false); });
    add("get_output_channel_name_array",
        [this](const array_t&) { return GetChannelNameArray(false, false); });

    // The same data functions called with named arguments, `f(index: 0, size: w)`.
    dictionaryFunctions_.emplace_back(
        name_t("get_curve_data"), [this](const dictionary_t& d) { return GetCustomFloatData(d); });
    dictionaryFunctions_.emplace_back(
        name_t("get_float_data"), [this](const dictionary_t& d) { return GetCustomFloatData(d); });
    dictionaryFunctions_.emplace_back(name_t("get_double_data"), [this](const dictionary_t& d) {
        return GetCustomDoubleData(d);
    });
}

void MarlTessAudioFilterEditorView::InitStandardReflectedVariableSet() {
    for (const char* name :
         {"align_left", "align_right", "align_top", "align_bottom", "align_center",
          "align_proportional", "align_fill", "place_row", "place_column", "place_overlay"})
        reflectedVariables_.emplace_back(name);
}

void MarlTessAudioFilterEditorView::SetupVirtualMachine(vorlen::sheet_t& sheet) {
    vorlen::virtual_machine_t& machine = sheet.machine_m;
    // Unknown names fall through to the machine's own error.
    machine.set_array_function_lookup([this](name_t name, const array_t& arguments) {
        for (const auto& [key, function] : arrayFunctions_)
            if (key == name)
                return function(arguments);
        throw std::logic_error(std::string("function '") + name.c_str() + "' not defined.");
    });
    machine.set_dictionary_function_lookup([this](name_t name, const dictionary_t& arguments) {
        for (const auto& [key, function] : dictionaryFunctions_)
            if (key == name)
                return function(arguments);
        throw std::logic_error(std::string("function '") + name.c_str() + "' not defined.");
    });
    vorlen::sheet_t* bound = &sheet;
    machine.set_variable_lookup(
        [this, bound](name_t name) { return StandardReflectedVariableSet(name, bound); });
}

any_regular_t MarlTessAudioFilterEditorView::StandardReflectedVariableSet(name_t name,
                                                                          vorlen::sheet_t* sheet) {
    for (const name_t& reflected : reflectedVariables_)
        if (reflected == name)
            return any_regular_t(reflected);
    return CustomReflectedVariableSet(name, sheet);
}

any_regular_t MarlTessAudioFilterEditorView::CustomReflectedVariableSet(name_t name,
                                                                        vorlen::sheet_t* sheet) {
    if (!sheet)
        throw std::runtime_error("Variable lookup failed");
    return sheet->get(name);
}

any_regular_t MarlTessAudioFilterEditorView::GetCustomFloatData(const dictionary_t& arguments) {
    const int size = std::max(0, IntegerEntry(arguments, "size"));
    const int index = IntegerEntry(arguments, "index");
    std::vector<float> data(std::size_t(size), 0.0f);
    GetFilter()->GetCustomFloatData(index, size, data);
    data.resize(std::size_t(size));
    array_t result;
    result.reserve(data.size());
    for (float value : data)
        result.push_back(any_regular_t(double(value)));
    return any_regular_t(std::move(result));
}

any_regular_t MarlTessAudioFilterEditorView::GetCustomDoubleData(const dictionary_t& arguments) {
    const int size = std::max(0, IntegerEntry(arguments, "size"));
    const int index = IntegerEntry(arguments, "index");
    std::vector<double> data(std::size_t(size), 0.0);
    GetFilter()->GetCustomDoubleData(index, size, data);
    data.resize(std::size_t(size));
    array_t result;
    result.reserve(data.size());
    for (double value : data)
        result.push_back(any_regular_t(value));
    return any_regular_t(std::move(result));
}

namespace {

std::string LabelText(const std::vector<qormediatypes::AudioChannelLabel>& labels, long index,
                      bool abbreviate) {
    if (index < 0 || std::size_t(index) >= labels.size())
        return {};
    const qormediatypes::AudioChannelLabel label = labels[std::size_t(index)];
    if (label == 0)
        return std::to_string(index + 1);
    return abbreviate ? qormediatypes::AudioChannelLabelAbbreviations(label)
                      : qormediatypes::AudioChannelLabelDescription(label, 0);
}

std::vector<qormediatypes::AudioChannelLabel> FirstBusLabels(const AudioFilter& filter,
                                                             bool input) {
    const auto buses = input ? filter.GetInputBuses() : filter.GetOutputBuses();
    return buses.empty() ? std::vector<qormediatypes::AudioChannelLabel>() : buses[0].channelLabels;
}

} // namespace

any_regular_t MarlTessAudioFilterEditorView::GetChannelName(const any_regular_t& value,
                                                            bool abbreviate, bool input) {
    const auto labels = FirstBusLabels(*GetFilter(), input);
    const long index = long(value.cast<double>());
    return any_regular_t(LabelText(labels, index, abbreviate));
}

any_regular_t MarlTessAudioFilterEditorView::GetChannelNameArray(bool abbreviate, bool input) {
    const auto labels = FirstBusLabels(*GetFilter(), input);
    array_t result;
    for (std::size_t i = 0; i != labels.size(); ++i) {
        dictionary_t entry;
        entry[name_t("name")] = any_regular_t(LabelText(labels, long(i), abbreviate));
        entry[name_t("value")] = any_regular_t(double(i));
        result.push_back(any_regular_t(std::move(entry)));
    }
    return any_regular_t(std::move(result));
}

} // namespace qoraudiofiltersui
