#include "platform/core/guid.hpp"

#include <gtest/gtest.h>

#include <unordered_set>

using namespace qorcore;

TEST(Guid, TextFormIsUpperCaseDashed) {
    const Guid g(0xF83AD984, 0x04C6, 0x4474, 0xB8, 0xC0, 0xE3, 0x1D, 0x98, 0x87, 0x5C, 0xFE);
    EXPECT_EQ(g.AsString(), "F83AD984-04C6-4474-B8C0-E31D98875CFE");
    EXPECT_EQ(Guid().AsString(), "00000000-0000-0000-0000-000000000000");
    EXPECT_TRUE(Guid().IsNull());
    EXPECT_FALSE(g.IsNull());
    // The static form used by registries: leading zeros are kept.
    EXPECT_EQ(
        Guid(0x0E133EF5, 0x2371, 0x48DB, 0x9B, 0x72, 0xB4, 0xC4, 0x41, 0x46, 0x03, 0x91).AsString(),
        "0E133EF5-2371-48DB-9B72-B4C441460391");
}

TEST(Guid, ParsesItsTextFormRoundTrip) {
    const Guid g(0xC4AD21D8, 0x9748, 0x4D79, 0xB4, 0xA3, 0xD8, 0x8A, 0xB7, 0xE4, 0xBE, 0x34);
    EXPECT_EQ(Guid::FromString(g.AsString()), g);
    EXPECT_EQ(Guid::FromString("c4ad21d8-9748-4d79-b4a3-d88ab7e4be34"), g);
    EXPECT_EQ(Guid::FromString("{C4AD21D8-9748-4D79-B4A3-D88AB7E4BE34}"), g);
    EXPECT_EQ(Guid::FromString("C4AD21D8-9748-4D79-B4A3-D88AB7E4BE34")->GetData4()[7], 0x34);
}

TEST(Guid, RejectsMalformedText) {
    for (const char* bad :
         {"", "C4AD21D8-9748-4D79-B4A3-D88AB7E4BE3", "C4AD21D8-9748-4D79-B4A3-D88AB7E4BE345",
          "C4AD21D8_9748-4D79-B4A3-D88AB7E4BE34", "G4AD21D8-9748-4D79-B4A3-D88AB7E4BE34",
          "{C4AD21D8-9748-4D79-B4A3-D88AB7E4BE34", "C4AD21D8-9748-4D79-B4A3-D88AB7E4BE3 "})
        EXPECT_FALSE(Guid::FromString(bad).has_value()) << bad;
}

TEST(Guid, OrdersAndHashesByValue) {
    const Guid a(1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 1);
    const Guid b(1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 2);
    EXPECT_LT(a, b);
    EXPECT_NE(a, b);
    std::unordered_set<Guid> set{a, b, a};
    EXPECT_EQ(set.size(), 2u);
}
