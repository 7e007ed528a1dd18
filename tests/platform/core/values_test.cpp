// Value types: geometry, colours, ranges, flags, GUIDs, shared strings, the clock and the
// null-pointer error.
#include "platform/core/checked_value.hpp"
#include "platform/core/color_rgba.hpp"
#include "platform/core/flags.hpp"
#include "platform/core/guid.hpp"
#include "platform/core/high_precision_time.hpp"
#include "platform/core/immutable_string.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/core/point.hpp"
#include "platform/core/rect.hpp"
#include "platform/core/scale_matrix.hpp"
#include "platform/core/value_range.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <unordered_set>

using namespace qorcore;
using R = RectT<float>;
using P = PointT<float>;
using Time = HighPrecisionTime;

TEST(RectT, EdgesContainmentAndHalfOpenness) {
    const R r(10, 20, 30, 40);
    EXPECT_EQ(r.Right(), 40);
    EXPECT_EQ(r.Bottom(), 60);
    // Half-open: the top left corner is inside, the right and bottom edges are not.
    for (auto [p, inside] : {std::pair{P(10, 20), true}, {P(40, 30), false}, {P(20, 60), false}})
        EXPECT_EQ(r.Contains(p), inside) << p.x << "," << p.y;
    EXPECT_TRUE(r.Contains(R(10, 20, 30, 40)));
    EXPECT_FALSE(r.Contains(R(9, 20, 5, 5)));
    EXPECT_FALSE(R(0, 0, 0, 5).Contains(P(0, 0)));
    EXPECT_TRUE(R(0, 0, -1, 5).IsEmpty());
    EXPECT_TRUE(R(0, 0, NAN, 5).IsEmpty());
}

TEST(RectT, IntersectionUnionAndIntegerOutset) {
    using I = RectT<int>;
    const I a(0, 0, 10, 10), b(5, 5, 10, 10);
    EXPECT_EQ(a.Intersection(b), I(5, 5, 5, 5));
    EXPECT_TRUE(a.Intersects(b));
    EXPECT_FALSE(a.Intersects(I(10, 0, 5, 5))) << "touching is no overlap";
    EXPECT_TRUE(a.Intersection(I(20, 20, 5, 5)).IsEmpty());
    EXPECT_EQ(a.Union(b), I(0, 0, 15, 15));
    EXPECT_EQ(a.Union(I(100, 100, 0, 0)), a) << "an empty rectangle adds nothing";
    EXPECT_EQ(I().Union(b), b);
    EXPECT_EQ(a.Inset(2, 3), I(2, 3, 6, 4));
    EXPECT_EQ(a.Offset(PointT<int>(1, -1)), I(1, -1, 10, 10));
    EXPECT_EQ(OutsetToIntegers(R(0.5f, 1.2f, 2.0f, 3.9f)), I(0, 1, 3, 5));
    EXPECT_EQ(OutsetToIntegers(R(-0.5f, -1.0f, 1.0f, 1.0f)), I(-1, -1, 2, 1));
    EXPECT_EQ(RoundPoint(P(1.5f, -1.5f)), PointT<int>(2, -2));
}

TEST(ScaleMatrixT, ComposesAndInverts) {
    const ScaleMatrixT<float> both = ScaleMatrixT<float>{2, 2, 0, 0}.Compose({1, 1, 10, 20});
    EXPECT_EQ(both.Apply(P(1, 1)), P(22, 42));
    EXPECT_EQ(both.Inverse().Apply(P(22, 42)), P(1, 1));
    EXPECT_EQ(both.Apply(R(0, 0, 5, 5)), R(20, 40, 10, 10));
}

TEST(ColorRGBA, BytesClampingAndNamedColours) {
    EXPECT_EQ(ColorRGBA::FromBytes(255, 0, 51), ColorRGBA(1.0f, 0.0f, 0.2f, 1.0f));
    EXPECT_EQ(ColorRGBA(2.0f, -1.0f, NAN, 0.5f).Clamped(), ColorRGBA(1.0f, 0.0f, 0.0f, 0.5f));
    EXPECT_EQ(ColorRGBAFixed::Black.WithAlpha(0.25f), ColorRGBA(0, 0, 0, 0.25f));
}

TEST(ValueRange, UnsetLengthEqualityAndClamp) {
    const value_range<float> unset;
    EXPECT_FALSE(unset.is_set());
    EXPECT_EQ(unset.length(), 0.0f);
    EXPECT_FALSE(unset.contains(0.5f));
    EXPECT_EQ(value_range<double>(5.0, 2.0).length(), 0.0);
    EXPECT_EQ(value_range<double>(-3.0, 2.0).length(), 5.0);
    EXPECT_TRUE(value_range<int>(2, 2).is_set());
    // Equal when lengths and lesser ends agree: inverted ranges compare by their high end.
    using V = value_range<float>;
    EXPECT_EQ(V(1, 3), V(1, 3));
    EXPECT_NE(V(1, 3), V(1, 4));
    EXPECT_EQ(V(5, 0), V(1, 0));
    EXPECT_NE(V(5, 0), V(5, 1));
    EXPECT_EQ(V(0, 0), V(1, 0));

    using C = checked_value<double>;
    const value_range<double> r(10.0, 20.0);
    for (auto [in, out] : {std::pair{15.0, C{15.0, true}},
                           {10.0, C{10.0, true}},
                           {9.0, C{10.0, false}},
                           {25.0, C{20.0, false}}})
        EXPECT_EQ(r.clamp(in), out) << in;
    EXPECT_FALSE(r.clamp(std::nan("")).valid);
    const auto outside = value_range<double>().clamp(3.0);
    EXPECT_EQ(outside.value, 3.0);
    EXPECT_FALSE(outside);
}

TEST(Flags, SetClearTestAndCombine) {
    using F = Flags<std::uint8_t>;
    F f;
    EXPECT_TRUE(f.IsEmpty());
    f.Set(0x01).Set(0x04);
    EXPECT_TRUE(f.IsSet(0x05));
    EXPECT_FALSE(f.IsSet(0x03));
    EXPECT_TRUE(f.IsAnySet(0x03));
    EXPECT_TRUE(f.IsSet(0)) << "an empty mask is always set";
    f.Clear(0x01);
    EXPECT_EQ(f.GetValue(), 0x04);
    f.Toggle(0x06);
    EXPECT_EQ(f, F(0x02));
    EXPECT_EQ((F(0x10) | f).GetValue(), 0x12);
    EXPECT_EQ((F(0x13) & f).GetValue(), 0x02);
    f.Set(0x80, false);
    EXPECT_EQ(f.GetValue(), 0x02);
}

TEST(Guid, TextFormParsesBackAndMalformedTextIsRejected) {
    const Guid g(0xC4AD21D8, 0x9748, 0x4D79, 0xB4, 0xA3, 0xD8, 0x8A, 0xB7, 0xE4, 0xBE, 0x34);
    EXPECT_EQ(g.AsString(), "C4AD21D8-9748-4D79-B4A3-D88AB7E4BE34");
    EXPECT_EQ(Guid().AsString(), "00000000-0000-0000-0000-000000000000");
    EXPECT_TRUE(Guid().IsNull());
    EXPECT_FALSE(g.IsNull());
    // Leading zeros are kept.
    EXPECT_EQ(
        Guid(0x0E133EF5, 0x2371, 0x48DB, 0x9B, 0x72, 0xB4, 0xC4, 0x41, 0x46, 0x03, 0x91).AsString(),
        "0E133EF5-2371-48DB-9B72-B4C441460391");
    for (const char* text :
         {"C4AD21D8-9748-4D79-B4A3-D88AB7E4BE34", "c4ad21d8-9748-4d79-b4a3-d88ab7e4be34",
          "{C4AD21D8-9748-4D79-B4A3-D88AB7E4BE34}"})
        EXPECT_EQ(Guid::FromString(text), g) << text;
    EXPECT_EQ(Guid::FromString(g.AsString())->GetData4()[7], 0x34);
    for (const char* bad :
         {"", "C4AD21D8-9748-4D79-B4A3-D88AB7E4BE3", "C4AD21D8-9748-4D79-B4A3-D88AB7E4BE345",
          "C4AD21D8_9748-4D79-B4A3-D88AB7E4BE34", "G4AD21D8-9748-4D79-B4A3-D88AB7E4BE34",
          "{C4AD21D8-9748-4D79-B4A3-D88AB7E4BE34", "C4AD21D8-9748-4D79-B4A3-D88AB7E4BE3 "})
        EXPECT_FALSE(Guid::FromString(bad).has_value()) << bad;
}

TEST(Guid, OrdersAndHashesByValue) {
    const Guid a(1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 1), b(1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 2);
    EXPECT_LT(a, b);
    EXPECT_NE(a, b);
    EXPECT_EQ((std::unordered_set<Guid>{a, b, a}.size()), 2u);
}

TEST(ImmutableString, CopiesShareOneBufferAndCompareByText) {
    const ImmutableString a("Internal Lowpass");
    const ImmutableString b = a;
    EXPECT_TRUE(a.SharesBufferWith(b));
    EXPECT_EQ(a.c_str(), b.c_str());
    const ImmutableString c(std::string("Internal Lowpass"));
    EXPECT_FALSE(a.SharesBufferWith(c));
    EXPECT_EQ(a, c);
    EXPECT_LT(ImmutableString("Internal Bass"), a);
    EXPECT_EQ(a.size(), 16u);
    EXPECT_EQ(std::string_view(a), "Internal Lowpass");
    EXPECT_EQ((std::unordered_set<ImmutableString>{a, c, "Internal Mute"}.size()), 2u);
    // Empty and null forms agree.
    EXPECT_TRUE(ImmutableString().empty());
    EXPECT_EQ(ImmutableString(static_cast<const char*>(nullptr)), ImmutableString(""));
    EXPECT_STREQ(ImmutableString().c_str(), "");
}

TEST(HighPrecisionTime, ClockCanBeReplacedAndRestored) {
    const auto realBefore = Time::GetCurrentTimeStamp();
    auto fake = std::make_shared<Time::TimeStamp>(1'000);
    {
        Time::ScopedClock scoped([fake] { return *fake; });
        EXPECT_EQ(Time::GetCurrentTimeStamp(), 1'000u);
        *fake = 2'500'000'000ull;
        EXPECT_DOUBLE_EQ(Time::ConvertToSeconds(Time::GetCurrentTimeStamp()), 2.5);
        {
            Time::ScopedClock nested([] { return Time::TimeStamp(7); });
            EXPECT_EQ(Time::GetCurrentTimeStamp(), 7u);
        }
        EXPECT_EQ(Time::GetCurrentTimeStamp(), 2'500'000'000ull);
    }
    EXPECT_GE(Time::GetCurrentTimeStamp(), realBefore) << "the steady clock is back";
}

TEST(HighPrecisionTime, SecondsConvertWithLimits) {
    const Time::TimeStamp max = std::numeric_limits<Time::TimeStamp>::max();
    for (auto [seconds, stamp] : {std::pair{0.01, Time::TimeStamp(10'000'000)},
                                  {-1.0, Time::TimeStamp(0)},
                                  {std::numeric_limits<double>::quiet_NaN(), Time::TimeStamp(0)},
                                  {1e30, max}})
        EXPECT_EQ(Time::FromSeconds(seconds), stamp) << seconds;
    EXPECT_EQ(Time::ConvertToNanos(Time::FromSeconds(1.5)), 1'500'000'000u);
}

TEST(NullPointerException, CarriesTheMissingNameAndIsALogicError) {
    try {
        config::DoThrowNullPtrException("EditNumber");
        FAIL() << "no exception";
    } catch (const NullPointerException& e) {
        EXPECT_STREQ(e.what(), "Null pointer: EditNumber");
    }
    EXPECT_THROW(config::DoThrowNullPtrException(), std::logic_error);
    int value = 3;
    int* present = &value;
    EXPECT_EQ(config::ThrowIfNull(present, "int"), present);
    int* missing = nullptr;
    EXPECT_THROW(config::ThrowIfNull(missing, "int"), NullPointerException);
}
