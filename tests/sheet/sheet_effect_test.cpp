// A sheet shaped like an effect's: normalised parameters in `in` + i, controls on unlinked
// interface cells in plain units, and `out` + i with the inverse mapping. The editor's road: a
// sync writes the inputs and reinitialises; a control writes its cell; the outputs report.

#include "sheet_fixture.hpp"

#include <cmath>
#include <map>

using namespace vorlen;
using vorlen::testing::script_sheet_t;
using vorlen::testing::updated;

namespace {

const char* const effect_script = R"(
// A delay with a gain, a frequency, a bypass switch and two stepped parameters.
sheet DelayUI {
constant:
    latency_min: 0.5; latency_max: 2000; latency_range: latency_max - latency_min;
    gain_min: -18; gain_max: 6; gain_range: gain_max - gain_min;
    frequency_min: 20; frequency_max: 20000; frequency_range: frequency_max - frequency_min;
    max_channel_count: 8; band_count: 31;
    gain_min_max_filter: { min_value: gain_min, max_value: gain_max };
input:
    in0: 0.25; in1: 0.75; in2: 0.5; in3: 1; in4: 2 / max_channel_count; in5: 0;
interface:
    unlink latency: in0 * latency_range + latency_min;
    unlink gain: in1 * gain_range + gain_min;
    unlink frequency: in2 * frequency_range + frequency_min;
    unlink bypass: in3 >= 0.5;
    unlink channels: round(in4 * max_channel_count);
    unlink band: round(in5 * (band_count - 1)) + 1;
    unlink gain_ruler_settings: { type: 1, position: 0, text_placement: @left_top,
                                  value1: gain_min, value2: gain_max, label1: '-18', label2: '6' };
output:
    out0 <== (latency - latency_min) / latency_range;
    out1 <== (gain - gain_min) / gain_range;
    out2 <== (frequency - frequency_min) / frequency_range;
    out3 <== bypass ? 1 : 0;
    out4 <== channels / max_channel_count;
    out5 <== (band - 1) / (band_count - 1);
}
)";

/// What the host would hold: 32-bit normalised parameter values.
struct host_t {
    explicit host_t(sheet_t& s, int count) : sheet(s) {
        for (int i = 0; i != count; ++i) {
            const std::string name = "out" + std::to_string(i);
            connections.push_back(
                sheet.monitor_value(name_t(name.c_str()), [this, i](const any_regular_t& v) {
                    if (v.is<double>())
                        written[i].push_back(static_cast<float>(v.cast<double>()));
                }));
        }
    }

    /// The timer's sync: every changed parameter into its input, then the initial values again.
    void sync(int index, float value) {
        sheet.set(name_t(("in" + std::to_string(index)).c_str()), any_regular_t(double(value)));
        sheet.reinitialize();
        sheet.update();
    }

    sheet_t& sheet;
    std::vector<sheet_t::connection_t> connections;
    std::map<int, std::vector<float>> written;
};

} // namespace

TEST(SheetEffect, EveryParameterMakesTheRoundTrip) {
    script_sheet_t s(effect_script, updated);
    host_t host(s.sheet, 6);

    // The initial values already map back.
    EXPECT_FLOAT_EQ(float(s.number("out0")), 0.25f);
    EXPECT_FLOAT_EQ(float(s.number("out4")), 0.25f);
    EXPECT_EQ(s.number("channels"), 2);

    // Continuous parameters take any float in [0, 1]; stepped ones every step.
    for (const auto& [i, steps] :
         {std::pair{0, 1000}, {1, 1000}, {2, 1000}, {3, 1}, {4, 8}, {5, 30}}) {
        for (int step = 0; step <= steps; ++step) {
            const float value = float(step) / float(steps);
            host.sync(i, value);
            ASSERT_FLOAT_EQ(float(s.number(("out" + std::to_string(i)).c_str())), value)
                << "parameter " << i << " at " << value;
            if (i == 3) { // the switch gives exactly 0 or 1
                EXPECT_EQ(float(s.number("out3")), value);
            }
            if (i == 5) {
                EXPECT_EQ(s.number("band"), step + 1);
            }
        }
    }
}

TEST(SheetEffect, ControlEditsReachOnlyTheirOwnParameter) {
    script_sheet_t s(effect_script, updated);
    host_t host(s.sheet, 6);
    host.written.clear();

    // A control sets a plain value: only out1 reports, with the normalised value.
    s.set_update("gain", -6.0);
    ASSERT_EQ(host.written.size(), 1u);
    EXPECT_EQ(host.written[1], std::vector<float>{0.5f});

    // The host echoes the value it was given: the sync changes nothing, nothing reports.
    host.written.clear();
    host.sync(1, 0.5f);
    EXPECT_TRUE(host.written.empty());

    // The plain value follows a new parameter from the host.
    host.sync(1, 0.25f);
    EXPECT_EQ(s.number("gain"), -12);
    EXPECT_EQ(host.written[1], std::vector<float>{0.25f});

    // A switch.
    host.written.clear();
    s.set_update("bypass", false);
    EXPECT_EQ(host.written[3], std::vector<float>{0.0f});

    // Settings dictionaries follow the constants.
    EXPECT_EQ(s.inspect("gain_ruler_settings.value2"), any_regular_t(6.0));
    EXPECT_EQ(s.inspect("gain_min_max_filter.min_value"), any_regular_t(-18.0));
    EXPECT_EQ(s.inspect("gain_ruler_settings.label1"), any_regular_t("-18"));
}

TEST(SheetEffect, ManyGeneratedParametersRoundTrip) {
    // in0..in39 with a different range each, some starting far from 0.
    const int count = 40;
    std::string constants, inputs, interface, outputs;
    for (int i = 0; i != count; ++i) {
        const std::string p = "p" + std::to_string(i), in = "in" + std::to_string(i);
        constants += p + "_min: " + std::to_string(-7.25 * i) + "; " + p +
                     "_max: " + std::to_string(3.5 + 13.0 * i * i) + "; " + p + "_range: " + p +
                     "_max - " + p + "_min;\n";
        inputs += in + ": " + std::to_string(i % 7) + " / 7;\n";
        interface += "unlink " + p + ": " + in + " * " + p + "_range + " + p + "_min;\n";
        outputs +=
            "out" + std::to_string(i) + " <== (" + p + " - " + p + "_min) / " + p + "_range;\n";
    }
    const std::string script = "sheet Generated {\nconstant:\n" + constants + "input:\n" + inputs +
                               "interface:\n" + interface + "output:\n" + outputs + "}\n";
    script_sheet_t s(script, updated);
    for (int i = 0; i != count; ++i)
        EXPECT_FLOAT_EQ(float(s.number(("out" + std::to_string(i)).c_str())), float(i % 7) / 7.0f);

    host_t host(s.sheet, count);
    for (int i = 0; i != count; ++i) {
        for (float value : {0.0f, 0.001f, 0.1f, 1.0f / 3.0f, 0.5f, 0.999f, 1.0f}) {
            host.sync(i, value);
            ASSERT_FLOAT_EQ(float(s.number(("out" + std::to_string(i)).c_str())), value)
                << "parameter " << i;
        }
    }
}
