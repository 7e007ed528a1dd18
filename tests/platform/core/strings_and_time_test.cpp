#include "platform/core/high_precision_time.hpp"
#include "platform/core/immutable_string.hpp"
#include "platform/core/null_pointer_exception.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <unordered_set>

using namespace qorcore;

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
    std::unordered_set<ImmutableString> set{a, c, "Internal Mute"};
    EXPECT_EQ(set.size(), 2u);
}

TEST(ImmutableString, EmptyAndNullFormsAgree) {
    EXPECT_TRUE(ImmutableString().empty());
    EXPECT_EQ(ImmutableString(static_cast<const char*>(nullptr)), ImmutableString(""));
    EXPECT_STREQ(ImmutableString().c_str(), "");
}

TEST(HighPrecisionTime, ClockCanBeReplacedAndRestored) {
    const auto realBefore = HighPrecisionTime::GetCurrentTimeStamp();
    auto fake = std::make_shared<HighPrecisionTime::TimeStamp>(1'000);
    {
        HighPrecisionTime::ScopedClock scoped([fake] { return *fake; });
        EXPECT_EQ(HighPrecisionTime::GetCurrentTimeStamp(), 1'000u);
        *fake = 2'500'000'000ull;
        EXPECT_DOUBLE_EQ(
            HighPrecisionTime::ConvertToSeconds(HighPrecisionTime::GetCurrentTimeStamp()), 2.5);
        {
            HighPrecisionTime::ScopedClock nested([] { return HighPrecisionTime::TimeStamp(7); });
            EXPECT_EQ(HighPrecisionTime::GetCurrentTimeStamp(), 7u);
        }
        EXPECT_EQ(HighPrecisionTime::GetCurrentTimeStamp(), 2'500'000'000ull);
    }
    const auto realAfter = HighPrecisionTime::GetCurrentTimeStamp();
    EXPECT_GE(realAfter, realBefore) << "the steady clock is back";
}

TEST(HighPrecisionTime, SecondsConvertWithLimits) {
    EXPECT_EQ(HighPrecisionTime::FromSeconds(0.01), 10'000'000u);
    EXPECT_EQ(HighPrecisionTime::FromSeconds(-1.0), 0u);
    EXPECT_EQ(HighPrecisionTime::FromSeconds(std::numeric_limits<double>::quiet_NaN()), 0u);
    EXPECT_EQ(HighPrecisionTime::FromSeconds(1e30),
              std::numeric_limits<HighPrecisionTime::TimeStamp>::max());
    EXPECT_EQ(HighPrecisionTime::ConvertToNanos(HighPrecisionTime::FromSeconds(1.5)),
              1'500'000'000u);
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
