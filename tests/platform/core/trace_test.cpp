#include "platform/core/trace.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

using namespace qorcore::debug;

namespace {

class TraceTest : public ::testing::Test {
protected:
    void SetUp() override {
        SetTraceSettings("");
        SetTraceSink([this](int level, std::string_view category, std::string_view text) {
            lines.push_back(std::to_string(level) + "|" + std::string(category) + "|" +
                            std::string(text));
        });
    }
    void TearDown() override {
        SetTraceSink({});
        SetTraceSettings("");
    }
    std::vector<std::string> lines;
};

} // namespace

TEST_F(TraceTest, OffUntilSwitchedOn) {
    EXPECT_FALSE(TraceEnabled("MarlTessAudioFilterEditorView::SyncParameters", 5));
    Trace(5, "Any::Thing", "dropped");
    EXPECT_TRUE(lines.empty());
}

TEST_F(TraceTest, ExactThenLongestPrefixThenGlobalLevel) {
    SetTraceSettings(" 2 , Marl*=5, MarlTess*=1, Ruler::Draw=7");
    EXPECT_TRUE(TraceEnabled("Other::Method", 2));
    EXPECT_FALSE(TraceEnabled("Other::Method", 3));
    EXPECT_FALSE(TraceEnabled("Other::Method", 2, false)) << "no entry names the category";
    EXPECT_TRUE(TraceEnabled("MarlSheet::Update", 5));
    EXPECT_FALSE(TraceEnabled("MarlTessView::Sync", 2)) << "the longer prefix decides";
    EXPECT_TRUE(TraceEnabled("Ruler::Draw", 7, false));
    EXPECT_FALSE(TraceEnabled("Ruler::Draw", 0)) << "level 0 is never written";
    Trace(5, "MarlSheet::Update", "value = 3\n");
    Trace(6, "MarlSheet::Update", "too detailed");
    EXPECT_EQ(lines, std::vector<std::string>{"5|MarlSheet::Update|value = 3\n"});
}

TEST_F(TraceTest, BadSettingsAreRefusedAndKeepTheOldOnes) {
    SetTraceSettings("3");
    const auto before = TraceChangeCount();
    EXPECT_THROW(SetTraceSettings("x=abc"), std::invalid_argument);
    EXPECT_THROW(SetTraceSettings("=5"), std::invalid_argument);
    EXPECT_THROW(SetTraceSettings("*=5"), std::invalid_argument);
    EXPECT_THROW(SetTraceSettings("-1"), std::invalid_argument);
    EXPECT_EQ(TraceChangeCount(), before);
    EXPECT_TRUE(TraceEnabled("a", 3));
}

TEST_F(TraceTest, CallSiteCacheFollowsTheChangeCount) {
    TraceSite site;
    const auto count = TraceChangeCount();
    EXPECT_FALSE(site.IsEnabled("Cache::Test", 5));
    SetTraceSettings("Cache::Test=5");
    EXPECT_GT(TraceChangeCount(), count);
    EXPECT_TRUE(site.IsEnabled("Cache::Test", 5)) << "a settings change invalidates the cache";
    SetTraceSettings("");
    EXPECT_FALSE(site.IsEnabled("Cache::Test", 5));
}
