// A sheet shaped like a large editor: 45 parameters in and out, 17 bands whose frequency can be
// edited in Hz or kHz through a two-way relation that is on only while the band is active in
// the graph's points dictionary.

#include "sheet/sheet.hpp"
#include "sheet/sheet_reader.hpp"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using namespace vorlen;

constexpr int band_count = 17;
constexpr int misc_count = 10;

std::string large_editor_script() {
    const auto n = [](int i) {
        return std::to_string(i);
    };
    std::string s = "// generated: 45 parameters, 17 conditional relations\n"
                    "sheet LargeEditorUI {\n"
                    "constant:\n"
                    "    freq_min: 20;\n    freq_max: 20000;\n"
                    "    freq_range: freq_max - freq_min;\n"
                    "    gain_min: -36;\n    gain_max: 36;\n"
                    "    gain_range: gain_max - gain_min;\n"
                    "    band_count: " +
                    n(band_count) +
                    ";\n"
                    "    freq_filter: { min_value: freq_min, max_value: freq_max };\n"
                    "input:\n"
                    "    in0: 0.5;\n";
    for (int i = 1; i != 1 + 2 * band_count + misc_count; ++i)
        s += "    in" + n(i) + ": " + n(i % 10) + " / 10;\n";
    s += "interface:\n"
         "    unlink active: round(in0 * band_count);\n";
    for (int k = 0; k != band_count; ++k) {
        s += "    unlink freq_" + n(k) + ": in" + n(1 + k) + " * freq_range + freq_min;\n";
        s += "    unlink gain_" + n(k) + ": in" + n(1 + band_count + k) +
             " * gain_range + gain_min;\n";
        s += "    khz_" + n(k) + ": (in" + n(1 + k) + " * freq_range + freq_min) / 1000;\n";
    }
    for (int j = 0; j != misc_count; ++j)
        s += "    unlink misc_" + n(j) + ": in" + n(1 + 2 * band_count + j) + " * 10;\n";
    s += "    unlink graph_points: {\n        curve_points: [";
    for (int k = 0; k != band_count; ++k)
        s += std::string(k ? ", " : "") + "[in" + n(1 + k) + " * freq_range + freq_min, in" +
             n(1 + band_count + k) + " * gain_range + gain_min]";
    s += "],\n        num_active_points: round(in0 * band_count)\n    };\n";
    s += "logic:\n";
    for (int k = 0; k != band_count; ++k)
        s += "    when (graph_points.num_active_points > " + n(k) +
             ") relate {\n"
             "        khz_" +
             n(k) + " <== freq_" + n(k) +
             " / 1000;\n"
             "        freq_" +
             n(k) + " <== khz_" + n(k) + " * 1000;\n    }\n";
    s += "output:\n    out0 <== active / band_count;\n";
    for (int k = 0; k != band_count; ++k) {
        s += "    out" + n(1 + k) + " <== graph_points.num_active_points > " + n(k) + " ? (freq_" +
             n(k) + " - freq_min) / freq_range : in" + n(1 + k) + ";\n";
        s += "    out" + n(1 + band_count + k) + " <== (gain_" + n(k) +
             " - gain_min) / gain_range;\n";
    }
    for (int j = 0; j != misc_count; ++j)
        s += "    out" + n(1 + 2 * band_count + j) + " <== misc_" + n(j) + " / 10;\n";
    s += "}\n";
    return s;
}

void BM_SheetSetAndUpdate(benchmark::State& state) {
    const std::string script = large_editor_script();
    sheet_t sheet;
    parse_sheet_script(script, name_t("large.mrl"), sheet);
    int outputs_fired = 0;
    std::vector<sheet_t::connection_t> connections;
    for (int i = 0; i != 1 + 2 * band_count + misc_count; ++i)
        connections.push_back(sheet.monitor_value(name_t(("out" + std::to_string(i)).c_str()),
                                                  [&](const any_regular_t&) { ++outputs_fired; }));
    sheet.update();

    const name_t khz("khz_3");
    double value = 1.0;
    for (auto _ : state) {
        value = value == 1.0 ? 2.0 : 1.0;
        sheet.set(khz, any_regular_t(value));
        sheet.update();
    }
    benchmark::DoNotOptimize(outputs_fired);
    state.counters["outputs fired"] =
        benchmark::Counter(double(outputs_fired), benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_SheetSetAndUpdate)->Unit(benchmark::kMicrosecond);

void BM_SheetSyncReinitializeAndUpdate(benchmark::State& state) {
    // The timer's path: a parameter from the host, initial values again, then the round.
    const std::string script = large_editor_script();
    sheet_t sheet;
    parse_sheet_script(script, name_t("large.mrl"), sheet);
    sheet.update();
    const name_t in("in4");
    double value = 0.25;
    for (auto _ : state) {
        value = value == 0.25 ? 0.75 : 0.25;
        sheet.set(in, any_regular_t(value));
        sheet.reinitialize();
        sheet.update();
    }
}
BENCHMARK(BM_SheetSyncReinitializeAndUpdate)->Unit(benchmark::kMicrosecond);

void BM_SheetParse(benchmark::State& state) {
    const std::string script = large_editor_script();
    for (auto _ : state) {
        sheet_t sheet;
        parse_sheet_script(script, name_t("large.mrl"), sheet);
        benchmark::DoNotOptimize(sheet);
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(script.size()));
}
BENCHMARK(BM_SheetParse)->Unit(benchmark::kMicrosecond);

} // namespace
