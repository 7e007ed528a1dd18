// The localisation tables and the trace switches, both process-wide and reset around each test.
#include "platform/core/localizer.hpp"
#include "platform/core/trace.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

using namespace qorcore;
using namespace qorcore::debug;

namespace {

class LocalizerTest : public ::testing::Test {
protected:
    void SetUp() override { localizer.Clear(); }
    void TearDown() override { localizer.Clear(); }
    Localizer& localizer = Localizer::Get();
};

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

TEST_F(LocalizerTest, MissingKeyGivesTheDefaultBehindTheEqualSign) {
    for (auto [text, shown] :
         {std::pair{"$$$/qoraudiofiltersui/RulerGridBase/ZoomIn=Zoom In", "Zoom In"},
          {"$$$/a/b=x=y", "x=y"}, // only the first '=' splits
          {"$$$/a/b=", ""},
          {"$$$/a/b", "$$$/a/b"}, // no default: the key itself
          {"Plain text = kept", "Plain text = kept"},
          // Characters outside ASCII written as code points; what is none stays as it is.
          {"$$$/m/i=-#{U+221E}", "-\u221E"},
          {"$$$/m/d=#{U+B0}C #{U+1F600}", "\u00B0C \U0001F600"},
          {"$$$/m/x=#{U+D800}#{U+ZZ}#{U+110000}#{U+41", "#{U+D800}#{U+ZZ}#{U+110000}#{U+41"},
          {"", ""}})
        EXPECT_EQ(Localize(text), shown) << text;
}

TEST_F(LocalizerTest, TableEntriesWinOverDefaults) {
    const std::size_t added =
        localizer.AddTable("# ruler menu\n"
                           "$$$/qoraudiofiltersui/RulerGridBase/ZoomIn=Vergrößern\r\n"
                           "\n"
                           "$$$/a/multi=one\\ntwo\\t\\\\end\n"
                           "$$$/a/empty=\n",
                           "german.txt");
    EXPECT_EQ(added, 3u);
    EXPECT_EQ(localizer.Localize("$$$/qoraudiofiltersui/RulerGridBase/ZoomIn=Zoom In"),
              "Vergrößern");
    EXPECT_EQ(localizer.Localize("$$$/a/multi=x"), "one\ntwo\t\\end");
    EXPECT_EQ(localizer.Localize("$$$/a/empty=Default"), "");
    EXPECT_EQ(localizer.Localize("$$$/a/multi"), "one\ntwo\t\\end");
    localizer.AddTable("$$$/a/empty=Now set");
    EXPECT_EQ(localizer.Localize("$$$/a/empty=Default"), "Now set") << "later tables replace";
    EXPECT_EQ(localizer.GetEntryCount(), 3u);
}

TEST_F(LocalizerTest, MalformedTableNamesTheLineAndKeepsNothing) {
    try {
        localizer.AddTable("$$$/ok/one=1\n$$$/ok/two=2\nno equal sign here\n", "bad.txt");
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "bad.txt:3: entry without '='");
    }
    EXPECT_FALSE(localizer.HasKey("$$$/ok/one"));
    for (const char* bad :
         {"key/without/prefix=x", "$$$/=x", "$$$/a=bad \\q escape", "$$$/a=trailing\\"})
        EXPECT_THROW(localizer.AddTable(bad), std::runtime_error) << bad;
    EXPECT_EQ(localizer.GetEntryCount(), 0u);
    EXPECT_THROW(localizer.AddEntry("nokey", "x"), std::invalid_argument);
    localizer.AddEntry("$$$/direct", "Direct");
    EXPECT_EQ(localizer.Localize("$$$/direct=Fallback"), "Direct");
}

TEST_F(TraceTest, OffUntilSwitchedOnThenExactPrefixAndGlobalLevels) {
    EXPECT_FALSE(TraceEnabled("MarlTessAudioFilterEditorView::SyncParameters", 5));
    Trace(5, "Any::Thing", "dropped");
    EXPECT_TRUE(lines.empty());

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
    for (const char* bad : {"x=abc", "=5", "*=5", "-1"})
        EXPECT_THROW(SetTraceSettings(bad), std::invalid_argument) << bad;
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
