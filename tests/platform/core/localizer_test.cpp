#include "platform/core/localizer.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace qorcore;

namespace {

class LocalizerTest : public ::testing::Test {
protected:
    void SetUp() override { localizer.Clear(); }
    void TearDown() override { localizer.Clear(); }
    Localizer& localizer = Localizer::Get();
};

} // namespace

TEST_F(LocalizerTest, MissingKeyGivesTheDefaultBehindTheEqualSign) {
    EXPECT_EQ(localizer.Localize("$$$/qoraudiofiltersui/RulerGridBase/ZoomIn=Zoom In"), "Zoom In");
    EXPECT_EQ(localizer.Localize("$$$/a/b=x=y"), "x=y") << "only the first '=' splits";
    EXPECT_EQ(localizer.Localize("$$$/a/b="), "");
    EXPECT_EQ(localizer.Localize("$$$/a/b"), "$$$/a/b") << "no default: the key itself";
    EXPECT_EQ(localizer.Localize("Plain text = kept"), "Plain text = kept");
    EXPECT_EQ(Localize(""), "");
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
    EXPECT_THROW(localizer.AddTable("key/without/prefix=x"), std::runtime_error);
    EXPECT_THROW(localizer.AddTable("$$$/=x"), std::runtime_error);
    EXPECT_THROW(localizer.AddTable("$$$/a=bad \\q escape"), std::runtime_error);
    EXPECT_THROW(localizer.AddTable("$$$/a=trailing\\"), std::runtime_error);
    EXPECT_EQ(localizer.GetEntryCount(), 0u);
    EXPECT_THROW(localizer.AddEntry("nokey", "x"), std::invalid_argument);
    localizer.AddEntry("$$$/direct", "Direct");
    EXPECT_EQ(localizer.Localize("$$$/direct=Fallback"), "Direct");
}
