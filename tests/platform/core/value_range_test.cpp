#include "platform/core/checked_value.hpp"
#include "platform/core/flags.hpp"
#include "platform/core/value_range.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

using namespace qorcore;

TEST(ValueRange, DefaultIsUnsetWithLengthZero) {
    value_range<float> unset;
    EXPECT_EQ(unset.low, 1.0f);
    EXPECT_EQ(unset.high, 0.0f);
    EXPECT_FALSE(unset.is_set());
    EXPECT_EQ(unset.length(), 0.0f);
    EXPECT_FALSE(unset.contains(0.5f));
    EXPECT_EQ(value_range<double>(5.0, 2.0).length(), 0.0);
    EXPECT_EQ(value_range<double>(-3.0, 2.0).length(), 5.0);
    EXPECT_TRUE(value_range<int>(2, 2).is_set());
}

TEST(ValueRange, EqualityComparesLengthAndLesserEnd) {
    EXPECT_EQ(value_range<float>(1, 3), value_range<float>(1, 3));
    EXPECT_NE(value_range<float>(1, 3), value_range<float>(1, 4));
    // Inverted ranges have length 0; they are equal when their lesser ends (high) agree.
    EXPECT_EQ(value_range<float>(5, 0), value_range<float>(1, 0));
    EXPECT_NE(value_range<float>(5, 0), value_range<float>(5, 1));
    // An empty set range equals an inverted one with the same lesser end.
    EXPECT_EQ(value_range<float>(0, 0), value_range<float>(1, 0));
}

TEST(ValueRange, ClampReportsWhetherTheValueLayInside) {
    const value_range<double> r(10.0, 20.0);
    EXPECT_EQ(r.clamp(15.0), (checked_value<double>{15.0, true}));
    EXPECT_EQ(r.clamp(10.0), (checked_value<double>{10.0, true}));
    EXPECT_EQ(r.clamp(9.0), (checked_value<double>{10.0, false}));
    EXPECT_EQ(r.clamp(25.0), (checked_value<double>{20.0, false}));
    const auto nan = r.clamp(std::nan(""));
    EXPECT_FALSE(nan.valid);
    const auto unset = value_range<double>().clamp(3.0);
    EXPECT_EQ(unset.value, 3.0);
    EXPECT_FALSE(unset);
}

TEST(Flags, SetClearTestAndCombine) {
    Flags<std::uint8_t> f;
    EXPECT_TRUE(f.IsEmpty());
    f.Set(0x01).Set(0x04);
    EXPECT_TRUE(f.IsSet(0x05));
    EXPECT_FALSE(f.IsSet(0x03));
    EXPECT_TRUE(f.IsAnySet(0x03));
    EXPECT_TRUE(f.IsSet(0)) << "an empty mask is always set";
    f.Clear(0x01);
    EXPECT_EQ(f.GetValue(), 0x04);
    f.Toggle(0x06);
    EXPECT_EQ(f.GetValue(), 0x02);
    EXPECT_EQ((Flags<std::uint8_t>(0x10) | f).GetValue(), 0x12);
    EXPECT_EQ((Flags<std::uint8_t>(0x13) & f).GetValue(), 0x02);
    EXPECT_EQ(f, Flags<std::uint8_t>(0x02));
    f.Set(0x80, false);
    EXPECT_EQ(f.GetValue(), 0x02);
}
