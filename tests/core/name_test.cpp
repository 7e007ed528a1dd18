#include "core/name.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace vorlen;

TEST(Name, EmptyFormsAreOneName) {
    const name_t from_null(nullptr);
    const name_t from_empty("");
    const name_t by_default;
    EXPECT_EQ(from_null.c_str(), from_empty.c_str());
    EXPECT_EQ(by_default.c_str(), from_empty.c_str());
    EXPECT_FALSE(from_null);
    EXPECT_FALSE(from_empty);
    EXPECT_FALSE(by_default);
    EXPECT_STREQ(by_default.c_str(), "");
    EXPECT_TRUE(name_t("x"));
}

TEST(Name, EqualTextsShareOnePointer) {
    std::string text = "shared_";
    text += "name";
    const name_t a(text.c_str());
    const name_t b("shared_name");
    EXPECT_EQ(a.c_str(), b.c_str());
    EXPECT_NE(a.c_str(), text.c_str()) << "the name must own a pooled copy";
    EXPECT_EQ(a, b);
    EXPECT_NE(a, name_t("shared_nam"));
}

TEST(Name, StaticNamesMeetDynamicOnes) {
    const name_t dynamic("static_and_dynamic");
    const name_t compiled = "static_and_dynamic"_name;
    EXPECT_EQ(dynamic.c_str(), compiled.c_str());
    const name_t compiled_first = "compiled_first_name"_name;
    EXPECT_EQ(name_t("compiled_first_name").c_str(), compiled_first.c_str());
    EXPECT_EQ(("compiled_first_name"_name).hash, name_hash("compiled_first_name"));
    static_assert(("abc"_name).hash == name_hash("abc"));
}

TEST(Name, HashIsSignExtendedFnv1a) {
    EXPECT_EQ(name_hash(""), 0xcbf29ce484222325ULL);
    // Standard FNV-1a of "a": the byte is below 0x80 so sign extension changes nothing.
    EXPECT_EQ(name_hash("a"), 0xaf63dc4c8601ec8cULL);
    // 0xE9 sign-extends to 0xFFFFFFFFFFFFFFE9 before the XOR.
    const auto one_byte = [](std::uint64_t byte) {
        return (0xcbf29ce484222325ULL ^ byte) * 0x100000001b3ULL;
    };
    EXPECT_EQ(name_hash("\xE9"), one_byte(0xFFFFFFFFFFFFFFE9ULL));
    EXPECT_NE(name_hash("\xE9"), one_byte(0xE9));
}

TEST(Name, OrderFollowsTextAndStreamsText) {
    EXPECT_LT(name_t("apple"), name_t("banana"));
    EXPECT_FALSE(name_t("banana") < name_t("apple"));
    std::ostringstream out;
    out << name_t("hello");
    EXPECT_EQ(out.str(), "hello");
}

TEST(Name, LongTextsGetTheirOwnChunk) {
    const std::string long_text(10000, 'q');
    const name_t a(long_text.c_str());
    const name_t b(long_text.c_str());
    EXPECT_EQ(a.c_str(), b.c_str());
    EXPECT_EQ(std::string(a.c_str()), long_text);
    // The pool keeps working after a chunk of its own.
    EXPECT_STREQ(name_t("after_long").c_str(), "after_long");
}

TEST(Name, SameTextFromManyThreadsYieldsOnePointer) {
    constexpr int thread_count = 4;
    constexpr int names = 2000;
    std::vector<std::vector<const char*>> seen(thread_count);
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int t = 0; t != thread_count; ++t) {
        threads.emplace_back([&, t] {
            ++ready;
            while (ready.load() != thread_count) {
            }
            for (int i = 0; i != names; ++i)
                seen[t].push_back(name_t(("threaded_" + std::to_string(i)).c_str()).c_str());
        });
    }
    for (auto& thread : threads)
        thread.join();
    for (int i = 0; i != names; ++i) {
        for (int t = 1; t != thread_count; ++t)
            ASSERT_EQ(seen[0][i], seen[t][i]) << i;
        ASSERT_EQ(std::string(seen[0][i]), "threaded_" + std::to_string(i));
    }
    EXPECT_EQ(std::set<const char*>(seen[0].begin(), seen[0].end()).size(), size_t(names));
}
