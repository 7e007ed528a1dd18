#include "core/any_regular.hpp"
#include "core/closed_hash.hpp"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

using namespace vorlen;

namespace {

// Keys hash to themselves, so tests can place them in chosen home slots.
struct identity_hash_t {
    std::uint64_t operator()(int x) const noexcept { return static_cast<std::uint64_t>(x); }
};
using int_map_t = closed_hash_map<int, std::string, identity_hash_t, std::equal_to<int>>;

std::vector<int> keys_of(const int_map_t& map) {
    std::vector<int> keys;
    for (const auto& entry : map)
        keys.push_back(entry.first);
    return keys;
}

} // namespace

TEST(ClosedHash, EmptyTableHasNoStorageAndCapacityFollowsPrimes) {
    const dictionary_t empty;
    EXPECT_EQ(empty.capacity(), 0u);
    EXPECT_TRUE(empty.empty());
    EXPECT_EQ(empty.find(name_t("a")), empty.end());
    EXPECT_EQ(empty.count(name_t("a")), 0u);
    EXPECT_EQ(empty.begin(), empty.end());

    const std::pair<std::uint64_t, std::uint64_t> primes[] = {
        {0, 3}, {3, 3}, {4, 7}, {6, 7}, {1362, 2729}, {5000000000ULL, 4294967295u}};
    for (const auto& [wanted, capacity] : primes)
        EXPECT_EQ(closed_hash_capacity(wanted), capacity) << wanted;

    int_map_t map;
    map.insert({1, "a"});
    EXPECT_EQ(map.capacity(), 3u);
    map.insert({2, "b"});
    map.insert({3, "c"});
    EXPECT_EQ(map.capacity(), 3u) << "load factor 1: a full table does not grow yet";
    map.insert({4, "d"});
    EXPECT_EQ(map.capacity(), 7u);
    EXPECT_EQ(map.size(), 4u);
}

TEST(ClosedHash, CollisionsChainFromTheHomeSlot) {
    int_map_t map;
    map.reserve(7); // capacity 7: 0, 7 and 14 share home slot 0
    map.insert({0, "head"});
    map.insert({5, "other"});
    map.insert({7, "first collided"});
    map.insert({14, "second collided"});
    EXPECT_EQ(keys_of(map), (std::vector<int>{0, 14, 7, 5})) << "head, then newest first";
    EXPECT_EQ(map.find(7)->second, "first collided");
    EXPECT_EQ(map.find(14)->second, "second collided");
    EXPECT_EQ(map.find(21), map.end());

    // An entry chained into another key's home slot moves out when that key arrives.
    int_map_t moved;
    moved.reserve(7);
    moved.insert({0, "zero"});
    moved.insert({7, "seven"}); // chained: takes the first free slot, which is slot 1
    moved.insert({1, "one"});
    EXPECT_EQ(keys_of(moved), (std::vector<int>{0, 7, 1}));
    EXPECT_EQ(moved.find(7)->second, "seven");
    EXPECT_EQ(moved.find(1)->second, "one");
    EXPECT_EQ(moved.find(0)->second, "zero");
}

TEST(ClosedHash, GrowthKeepsIterationOrder) {
    int_map_t map;
    map.reserve(7);
    for (int key : {3, 10, 4, 17, 5})
        map.insert({key, std::to_string(key)});
    const std::vector<int> before = keys_of(map);
    map.reserve(100);
    EXPECT_EQ(map.capacity(), 163u);
    // After growth every key has a home of its own, and chains follow the old visiting order.
    EXPECT_EQ(keys_of(map), before);
    for (int key : before)
        EXPECT_EQ(map.find(key)->second, std::to_string(key));
}

TEST(ClosedHash, EraseKeepsChainsFindable) {
    int_map_t map;
    map.reserve(7);
    map.insert({0, "a"});
    map.insert({7, "b"});
    map.insert({14, "c"});
    EXPECT_EQ(map.erase(0), 1u); // the head goes: a chained entry takes over its slot
    EXPECT_EQ(map.find(0), map.end());
    EXPECT_EQ(map.find(7)->second, "b");
    EXPECT_EQ(map.find(14)->second, "c");
    EXPECT_EQ(map.erase(7), 1u);
    EXPECT_EQ(map.erase(7), 0u);
    EXPECT_EQ(map.size(), 1u);
    map.insert({21, "d"});
    EXPECT_EQ(map.find(21)->second, "d");
    EXPECT_EQ(map.find(14)->second, "c");
    map.clear();
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(map.find(14), map.end());
    map.insert({14, "again"});
    EXPECT_EQ(map.find(14)->second, "again");
}

TEST(ClosedHash, RandomOperationsAgreeWithStdMap) {
    std::mt19937 random(7);
    int_map_t map;
    std::map<int, std::string> reference;
    for (int step = 0; step != 20000; ++step) {
        const int key = static_cast<int>(random() % 500);
        switch (random() % 4) {
        case 0:
        case 1: {
            // Inserting keeps an existing value and points at it.
            const std::string value = std::to_string(step);
            const auto [position, inserted] = map.insert({key, value});
            EXPECT_EQ(inserted, reference.emplace(key, value).second);
            EXPECT_EQ(position->first, key);
            EXPECT_EQ(position->second, reference.at(key));
            break;
        }
        case 2: EXPECT_EQ(map[key], reference[key]); break; // indexing inserts an empty value
        default: EXPECT_EQ(map.erase(key), reference.erase(key));
        }
    }
    ASSERT_EQ(map.size(), reference.size());
    for (const auto& [key, value] : reference) {
        auto found = map.find(key);
        ASSERT_NE(found, map.end()) << key;
        EXPECT_EQ(found->second, value);
    }
    size_t visited = 0;
    for (const auto& entry : map)
        visited += reference.count(entry.first);
    EXPECT_EQ(visited, reference.size());
}

TEST(ClosedHash, CopiesAndMoves) {
    int_map_t map;
    for (int i = 0; i != 20; ++i)
        map.insert({i * 7, std::to_string(i)});
    int_map_t copy(map);
    EXPECT_EQ(copy, map);
    EXPECT_EQ(keys_of(copy), keys_of(map));
    copy[0] = "changed";
    EXPECT_EQ(map[0], "0") << "a copy owns its entries";
    int_map_t moved(std::move(copy));
    EXPECT_EQ(moved.size(), 20u);
    EXPECT_EQ(copy.size(), 0u);
    copy = moved;
    EXPECT_EQ(copy, moved);
}

TEST(Dictionary, EqualityIgnoresInsertionOrder) {
    dictionary_t a;
    a.insert({name_t("x"), any_regular_t(1.0)});
    a.insert({name_t("y"), any_regular_t("text")});
    a.insert({name_t("z"), any_regular_t(true)});
    dictionary_t b;
    b.insert({name_t("z"), any_regular_t(true)});
    b.insert({name_t("x"), any_regular_t(1.0)});
    b.insert({name_t("y"), any_regular_t("text")});
    EXPECT_EQ(a, b);
    EXPECT_EQ(dictionary_t(a), b);
    b[name_t("y")] = any_regular_t("other");
    EXPECT_FALSE(a == b);
    b.erase(name_t("y"));
    EXPECT_FALSE(a == b);
}

TEST(Dictionary, GetValueForms) {
    dictionary_t d;
    d.insert({name_t("m"), any_regular_t(2.0)});
    EXPECT_EQ(get_value(d, name_t("m")).cast<double>(), 2.0);
    try {
        get_value(d, name_t("k"));
        FAIL() << "missing key must throw";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "dictionary_t: key 'k' not found");
    }
    double out = 5.0;
    EXPECT_FALSE(get_value(d, name_t("k"), out));
    EXPECT_EQ(out, 5.0);
    EXPECT_TRUE(get_value(d, name_t("m"), out));
    EXPECT_EQ(out, 2.0);
}
