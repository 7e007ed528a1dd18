// dictionary_t beside std::unordered_map<std::string, ...> for the lookups the engine makes:
// a key that is already a name against a key that is already a string. The argument picks the
// key shape: 0 short cell names such as "in12", 1 longer ones such as "parameter_12". Names
// cache no hash, so every lookup hashes the text and the cost grows with the key length.

#include "core/any_regular.hpp"

#include <benchmark/benchmark.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace {

constexpr int key_count = 64;

std::vector<std::string> key_texts(std::int64_t shape) {
    std::vector<std::string> texts;
    const char* prefix = shape == 0 ? "in" : "parameter_";
    for (int i = 0; i != key_count; ++i)
        texts.push_back(prefix + std::to_string(i));
    return texts;
}

void BM_DictionaryFind(benchmark::State& state) {
    const auto texts = key_texts(state.range(0));
    std::vector<vorlen::name_t> keys;
    vorlen::dictionary_t dictionary;
    for (const auto& text : texts) {
        keys.emplace_back(text.c_str());
        dictionary.insert({keys.back(), vorlen::any_regular_t(1.0)});
    }
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(dictionary.find(keys[i++ % key_count]));
}
BENCHMARK(BM_DictionaryFind)->Arg(0)->Arg(1);

void BM_UnorderedMapFind(benchmark::State& state) {
    const auto texts = key_texts(state.range(0));
    std::unordered_map<std::string, vorlen::any_regular_t> map;
    for (const auto& text : texts)
        map.emplace(text, vorlen::any_regular_t(1.0));
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(map.find(texts[i++ % key_count]));
}
BENCHMARK(BM_UnorderedMapFind)->Arg(0)->Arg(1);

void BM_DictionaryInsert(benchmark::State& state) {
    const auto texts = key_texts(state.range(0));
    std::vector<vorlen::name_t> keys;
    for (const auto& text : texts)
        keys.emplace_back(text.c_str());
    for (auto _ : state) {
        vorlen::dictionary_t dictionary;
        for (auto key : keys)
            dictionary.insert({key, vorlen::any_regular_t(1.0)});
        benchmark::DoNotOptimize(dictionary.size());
    }
    state.SetItemsProcessed(state.iterations() * key_count);
}
BENCHMARK(BM_DictionaryInsert)->Arg(0)->Arg(1);

void BM_UnorderedMapInsert(benchmark::State& state) {
    const auto texts = key_texts(state.range(0));
    for (auto _ : state) {
        std::unordered_map<std::string, vorlen::any_regular_t> map;
        for (const auto& text : texts)
            map.emplace(text, vorlen::any_regular_t(1.0));
        benchmark::DoNotOptimize(map.size());
    }
    state.SetItemsProcessed(state.iterations() * key_count);
}
BENCHMARK(BM_UnorderedMapInsert)->Arg(0)->Arg(1);

} // namespace
