#include "parameter_options.hpp"

#include "platform/host/parameter_store_filter.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using qafui::cli::apply_parameters;
using qafui::cli::parameter_assignment_t;
using qafui::cli::read_parameter_assignment;

parameter_assignment_t Assignment(const std::string& option, const std::string& text) {
    parameter_assignment_t assignment;
    const std::string error = read_parameter_assignment(option, text, assignment);
    if (!error.empty())
        throw std::invalid_argument(error);
    return assignment;
}

qoraudiofilterhost::ParameterStoreFilter Table() {
    return qoraudiofilterhost::ParameterStoreFilter({{"Gain", -24.0f, 24.0f, 0.5f, "dB"},
                                                     {"Frequency", 20.0f, 20020.0f, 0.0f, "Hz"},
                                                     {"Depth", 1.0f, 0.0f, 0.0f}});
}

TEST(ParameterOptions, TheFormOfEachAssignmentIsCheckedAsItIsRead) {
    struct Case {
        const char* option;
        const char* text;
        const char* error; // "" when the form is right
    };
    const Case cases[] = {
        {"--param", "0=0.25", ""},
        {"--param", "Gain=1", ""},
        {"--value", "1=1000", ""},
        {"--value", "Gain=-30", ""}, // the range is the effect's to check
        {"--param", "4", "--param takes INDEX=VALUE or NAME=VALUE, not '4'"},
        {"--param", "=0.5", "--param takes INDEX=VALUE or NAME=VALUE, not '=0.5'"},
        {"--value", "4=", "--value takes INDEX=VALUE or NAME=VALUE, not '4='"},
        {"--param", "4=half", "--param 4=half: 'half' is not a number"},
        {"--param", "4=nan", "--param 4=nan: 'nan' is not a number"},
        {"--param", "4=1.5", "--param 4=1.5: a normalised value lies from 0 to 1"},
        {"--param", "4=-0.1", "--param 4=-0.1: a normalised value lies from 0 to 1"},
    };
    for (const Case& c : cases) {
        parameter_assignment_t assignment;
        EXPECT_EQ(read_parameter_assignment(c.option, c.text, assignment), c.error)
            << c.option << " " << c.text;
    }
}

TEST(ParameterOptions, ParametersAreFoundByIndexOrNameAndSetInTheirOwnUnits) {
    auto filter = Table();
    apply_parameters({Assignment("--value", "gain=-12"), Assignment("--param", "1=0.5"),
                      Assignment("--value", "Depth=0.25")},
                     filter);
    EXPECT_FLOAT_EQ(filter.GetParameterValue(0), 0.25f);
    EXPECT_FLOAT_EQ(filter.GetPlainValue(1), 10020.0f);
    EXPECT_FLOAT_EQ(filter.GetParameterValue(2), 0.75f) << "a descending range";
    EXPECT_EQ(qafui::cli::plain_value_text(filter, 0), "-12 dB");
    EXPECT_EQ(qafui::cli::plain_value_text(filter, 2), "0.25");
    // A user's change: the editor and the effect see it as one.
    EXPECT_EQ(
        filter.GetCalls(qoraudiofilterhost::ParameterStoreFilter::CallKind::kSetParameterValue)
            .size(),
        3u);
}

TEST(ParameterOptions, ABadAssignmentNamesItselfAndChangesNothing) {
    struct Case {
        const char* option;
        const char* text;
        const char* error;
    };
    const Case cases[] = {
        {"--param", "3=0.5", "--param 3=0.5: no parameter 3 (the effect has 3, 0 to 2)"},
        {"--param", "-1=0.5", "--param -1=0.5: no parameter -1 (the effect has 3, 0 to 2)"},
        {"--param", "Volume=0.5", "--param Volume=0.5: no parameter named 'Volume'"},
        {"--value", "Gain=30", "--value Gain=30: Gain lies from -24 to 24 dB"},
        {"--value", "1=5", "--value 1=5: Frequency lies from 20 to 20020 Hz"},
    };
    for (const Case& c : cases) {
        auto filter = Table();
        try {
            apply_parameters({Assignment("--param", "Frequency=1"), Assignment(c.option, c.text)},
                             filter);
            ADD_FAILURE() << c.text << " was taken";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string(error.what()).substr(0, std::string(c.error).size()), c.error);
        }
        EXPECT_EQ(filter.GetParameterValue(1), 0.0f) << "the good assignment before " << c.text;
    }
}

} // namespace
