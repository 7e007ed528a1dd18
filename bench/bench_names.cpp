// Interning of names: existing and new texts, on one and two threads.

#include "core/name.hpp"

#include <benchmark/benchmark.h>

#include <atomic>
#include <string>
#include <vector>

namespace {

std::vector<std::string> make_texts(const char* prefix, int count) {
    std::vector<std::string> texts;
    for (int i = 0; i != count; ++i)
        texts.push_back(prefix + std::to_string(i));
    return texts;
}

void BM_InternExistingName(benchmark::State& state) {
    static const std::vector<std::string> texts = make_texts("existing_cell_", 1024);
    for (const auto& text : texts)
        vorlen::name_t(text.c_str());
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(vorlen::name_t(texts[i++ & 1023].c_str()).c_str());
    }
}
BENCHMARK(BM_InternExistingName)->Threads(1)->Threads(2);

void BM_InternNewName(benchmark::State& state) {
    static std::atomic<std::uint64_t> counter{0};
    std::string text = "fresh_name_";
    const std::size_t prefix = text.size();
    for (auto _ : state) {
        text.resize(prefix);
        text += std::to_string(counter++);
        benchmark::DoNotOptimize(vorlen::name_t(text.c_str()).c_str());
    }
}
BENCHMARK(BM_InternNewName)->Threads(1)->Threads(2);

} // namespace
