// Parsing and evaluating the kind of expressions sheets are full of, with a variable lookup, and
// the same arithmetic in muparser measured in the same run. After the runs a table gives the
// time per evaluation of both and their ratio (target: vorlen within 2x of muparser).

#include "core/any_regular.hpp"
#include "core/expression/parser.hpp"
#include "core/expression/virtual_machine.hpp"

#include <benchmark/benchmark.h>
#include <muParser.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace vorlen;

struct case_t {
    const char* label;
    const char* vorlen_text;
    const char* muparser_text;
};

// The same arithmetic in both languages (muparser spells them alike).
const case_t cases[] = {
    {"normalize", "(x - x_min) / x_range", "(x - x_min) / x_range"},
    {"conditional", "a > 0.5 ? b * 96 - 48 : c", "a > 0.5 ? b * 96 - 48 : c"},
    {"polynomial", "x * 2 + x_min * 3 - x_range / 4", "x * 2 + x_min * 3 - x_range / 4"},
};

/// The variables: doubles addressed by name. The vorlen lookup compares interned name pointers
/// over a flat table, as cheap a lookup as a host can install; muparser binds the addresses.
struct variables_t {
    double x = 15, x_min = 5, x_range = 20, a = 0.75, b = 0.25, c = -1;

    std::vector<std::pair<name_t, const double*>> table() const {
        return {{name_t("x"), &x}, {name_t("x_min"), &x_min}, {name_t("x_range"), &x_range},
                {name_t("a"), &a}, {name_t("b"), &b},         {name_t("c"), &c}};
    }
};

[[noreturn, gnu::cold, gnu::noinline]] void throw_undefined(name_t name) {
    throw std::logic_error(std::string("variable '") + name.c_str() + "' not defined.");
}

void BM_Parse(benchmark::State& state, const case_t& c) {
    for (auto _ : state) {
        array_t stream = parse_expression(c.vorlen_text);
        benchmark::DoNotOptimize(stream.data());
    }
}

void BM_ParseMuparser(benchmark::State& state, const case_t& c) {
    variables_t v;
    mu::Parser parser;
    parser.DefineVar("x", &v.x);
    parser.DefineVar("x_min", &v.x_min);
    parser.DefineVar("x_range", &v.x_range);
    parser.DefineVar("a", &v.a);
    parser.DefineVar("b", &v.b);
    parser.DefineVar("c", &v.c);
    for (auto _ : state) {
        parser.SetExpr(c.muparser_text);
        benchmark::DoNotOptimize(parser.Eval()); // the first Eval parses to byte code
    }
}

void BM_Evaluate(benchmark::State& state, const case_t& c) {
    variables_t v;
    const auto table = v.table();
    virtual_machine_t vm;
    vm.set_variable_lookup([&table](name_t name) -> any_regular_t {
        for (const auto& [key, value] : table)
            if (key == name)
                return any_regular_t(*value);
        throw_undefined(name);
    });
    const array_t stream = parse_expression(c.vorlen_text);
    for (auto _ : state) {
        vm.evaluate(stream);
        benchmark::DoNotOptimize(vm.back());
        vm.pop_back();
    }
}

/// The same with the variables in a `dictionary_t`, which hashes the name's text per lookup.
void BM_EvaluateDictionaryLookup(benchmark::State& state, const case_t& c) {
    variables_t v;
    dictionary_t variables;
    for (const auto& [key, value] : v.table())
        variables.insert({key, any_regular_t(*value)});
    virtual_machine_t vm;
    vm.set_variable_lookup([&variables](name_t name) { return get_value(variables, name); });
    const array_t stream = parse_expression(c.vorlen_text);
    for (auto _ : state) {
        vm.evaluate(stream);
        benchmark::DoNotOptimize(vm.back());
        vm.pop_back();
    }
}

void BM_EvaluateMuparser(benchmark::State& state, const case_t& c) {
    variables_t v;
    mu::Parser parser;
    parser.DefineVar("x", &v.x);
    parser.DefineVar("x_min", &v.x_min);
    parser.DefineVar("x_range", &v.x_range);
    parser.DefineVar("a", &v.a);
    parser.DefineVar("b", &v.b);
    parser.DefineVar("c", &v.c);
    parser.SetExpr(c.muparser_text);
    parser.Eval();
    for (auto _ : state) {
        benchmark::DoNotOptimize(parser.Eval());
    }
}

/// Checks once that both languages compute the same values, so the comparison is fair.
void check_agreement() {
    for (const case_t& c : cases) {
        variables_t v;
        const auto table = v.table();
        virtual_machine_t vm;
        vm.set_variable_lookup([&table](name_t name) -> any_regular_t {
            for (const auto& [key, value] : table)
                if (key == name)
                    return any_regular_t(*value);
            return any_regular_t();
        });
        vm.evaluate(parse_expression(c.vorlen_text));
        mu::Parser parser;
        parser.DefineVar("x", &v.x);
        parser.DefineVar("x_min", &v.x_min);
        parser.DefineVar("x_range", &v.x_range);
        parser.DefineVar("a", &v.a);
        parser.DefineVar("b", &v.b);
        parser.DefineVar("c", &v.c);
        parser.SetExpr(c.muparser_text);
        const double ours = vm.back().cast<double>();
        const double theirs = parser.Eval();
        if (ours != theirs) {
            std::fprintf(stderr, "bench_expression: %s disagrees: %g vs %g\n", c.label, ours,
                         theirs);
            std::exit(1);
        }
    }
}

/// The console report, plus a table of ratios at the end.
/// Run with --benchmark_repetitions=N for steadier figures on a busy machine.
class ratio_reporter_t : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& reports) override {
        // With --benchmark_repetitions the fastest repetition counts: on a shared machine the
        // others measure the neighbours as much as the code.
        for (const Run& run : reports) {
            if (run.error_occurred || run.run_type != Run::RT_Iteration)
                continue;
            const std::string name = run.run_name.function_name;
            auto [position, inserted] = times_m.emplace(name, run.GetAdjustedCPUTime());
            if (!inserted)
                position->second = std::min(position->second, run.GetAdjustedCPUTime());
        }
        ConsoleReporter::ReportRuns(reports);
    }

    void print_ratios() const {
        std::printf("\n%-12s %16s %16s %14s %12s %12s\n", "expression", "vorlen ns/eval",
                    "muparser ns/eval", "ratio", "parse ns", "dict lookup");
        for (const case_t& c : cases) {
            const double ours = time_of("BM_Evaluate/", c.label);
            const double theirs = time_of("BM_EvaluateMuparser/", c.label);
            const double parse = time_of("BM_Parse/", c.label);
            const double dictionary = time_of("BM_EvaluateDictionaryLookup/", c.label);
            if (ours < 0 || theirs < 0)
                continue;
            std::printf("%-12s %16.1f %16.1f %13.2fx %12.1f %12.1f\n", c.label, ours, theirs,
                        ours / theirs, parse, dictionary);
        }
    }

private:
    double time_of(const char* prefix, const char* label) const {
        auto found = times_m.find(std::string(prefix) + label);
        return found == times_m.end() ? -1.0 : found->second;
    }

    std::map<std::string, double> times_m;
};

} // namespace

int main(int argc, char** argv) {
    check_agreement();
    for (const case_t& c : cases) {
        benchmark::RegisterBenchmark((std::string("BM_Parse/") + c.label).c_str(), BM_Parse, c)
            ->Unit(benchmark::kNanosecond);
        benchmark::RegisterBenchmark((std::string("BM_ParseMuparser/") + c.label).c_str(),
                                     BM_ParseMuparser, c)
            ->Unit(benchmark::kNanosecond);
        benchmark::RegisterBenchmark((std::string("BM_Evaluate/") + c.label).c_str(), BM_Evaluate,
                                     c)
            ->Unit(benchmark::kNanosecond);
        benchmark::RegisterBenchmark(
            (std::string("BM_EvaluateDictionaryLookup/") + c.label).c_str(),
            BM_EvaluateDictionaryLookup, c)
            ->Unit(benchmark::kNanosecond);
        benchmark::RegisterBenchmark((std::string("BM_EvaluateMuparser/") + c.label).c_str(),
                                     BM_EvaluateMuparser, c)
            ->Unit(benchmark::kNanosecond);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    ratio_reporter_t reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_ratios();
    benchmark::Shutdown();
    return 0;
}
