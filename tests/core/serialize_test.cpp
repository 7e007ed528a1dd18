#include "core/any_regular.hpp"
#include "core/expression_value_format.hpp"
#include "core/number_text.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <sstream>

using namespace vorlen;

namespace {

std::string plain(const any_regular_t& value) {
    std::ostringstream out;
    value.serialize(out);
    return out.str();
}

std::string as_expression(const any_regular_t& value) {
    std::ostringstream out;
    expression_value_format_t format;
    format_scope_t scope(out, format);
    out << value;
    return out.str();
}

dictionary_t make_dictionary(std::initializer_list<std::pair<const char*, any_regular_t>> pairs) {
    dictionary_t result;
    for (const auto& [key, value] : pairs)
        result.insert({name_t(key), value});
    return result;
}

} // namespace

TEST(NumberText, SpecialValuesAndShortestForm) {
    EXPECT_EQ(number_text(std::numeric_limits<double>::quiet_NaN()), "NaN");
    EXPECT_EQ(number_text(std::numeric_limits<double>::infinity()), "Infinity");
    EXPECT_EQ(number_text(-std::numeric_limits<double>::infinity()), "-Infinity");
    EXPECT_EQ(number_text(0.0), "0");
    EXPECT_EQ(number_text(1.0), "1");
    EXPECT_EQ(number_text(-2.5), "-2.5");
    EXPECT_EQ(number_text(0.1), "0.1");
    EXPECT_EQ(number_text(65536.0), "65536");
    EXPECT_EQ(number_text(1e100), "1e+100");
}

TEST(NumberText, RoundTripsRandomDoubles) {
    std::mt19937_64 random(42);
    for (int i = 0; i != 10000; ++i) {
        std::uint64_t bits = random();
        double x;
        std::memcpy(&x, &bits, sizeof x);
        if (!std::isfinite(x))
            continue;
        const std::string text = number_text(x);
        ASSERT_EQ(std::strtod(text.c_str(), nullptr), x) << text;
    }
}

TEST(Serialize, PlainTextOfLeaves) {
    EXPECT_EQ(plain(any_regular_t(1.0)), "1");
    EXPECT_EQ(plain(any_regular_t(true)), "true");
    EXPECT_EQ(plain(any_regular_t(false)), "false");
    EXPECT_EQ(plain(any_regular_t()), "empty");
    EXPECT_EQ(plain(any_regular_t(name_t("abc"))), "abc");
    EXPECT_EQ(plain(any_regular_t("a b")), "a b");
    EXPECT_EQ(plain(any_regular_t(array_t{any_regular_t(1.0), any_regular_t(2.0)})), "12");
}

TEST(Serialize, DictionaryKeysComeOutSorted) {
    const any_regular_t one(make_dictionary({{"zeta", 1.0}, {"alpha", 2.0}, {"mid", 3.0}}));
    const any_regular_t two(make_dictionary({{"mid", 3.0}, {"zeta", 1.0}, {"alpha", 2.0}}));
    EXPECT_EQ(plain(one), "alpha2mid3zeta1");
    EXPECT_EQ(as_expression(one), "{alpha: 2, mid: 3, zeta: 1}");
    EXPECT_EQ(as_expression(one), as_expression(two));
}

TEST(Serialize, ExpressionFormatNestsAndQuotes) {
    const any_regular_t nested(
        array_t{any_regular_t(1.0), any_regular_t("say \"hi\"\n"), any_regular_t(name_t("n")),
                any_regular_t(), any_regular_t(array_t{}),
                any_regular_t(make_dictionary({{"k", any_regular_t(array_t{any_regular_t(false)})},
                                               {"d", any_regular_t(dictionary_t())}}))});
    EXPECT_EQ(as_expression(nested),
              "[1, \"say \\\"hi\\\"\\n\", @n, empty, [], {d: {}, k: [false]}]");
    EXPECT_EQ(as_expression(any_regular_t(-0.5)), "-0.5");
}

TEST(Serialize, FormatScopeRestoresThePreviousFormat) {
    std::ostringstream out;
    {
        expression_value_format_t format;
        format_scope_t scope(out, format);
        EXPECT_EQ(get_format(out), &format);
    }
    EXPECT_EQ(get_format(out), nullptr);
    out << any_regular_t(name_t("x"));
    EXPECT_EQ(out.str(), "x");
}
