#include "core/stream_error.hpp"

#include <gtest/gtest.h>

using namespace vorlen;

TEST(StreamError, CarriesPositionsInnermostFirst) {
    const line_position_t inner(name_t("a.mrl"), 3, 100, 106);
    const stream_error_t first("bad token", inner);
    EXPECT_STREQ(first.what(), "bad token");
    ASSERT_EQ(first.line_position_set().size(), 1u);
    EXPECT_EQ(first.line_position_set()[0].column(), 7);

    const line_position_t outer(name_t("b.tss"), 9);
    const stream_error_t second(first, outer);
    EXPECT_STREQ(second.what(), "bad token");
    ASSERT_EQ(second.line_position_set().size(), 2u);
    EXPECT_EQ(second.line_position_set()[0].file_name, name_t("a.mrl"));
    EXPECT_EQ(second.line_position_set()[1].file_name, name_t("b.tss"));

    const stream_error_t from_other(std::runtime_error("wrong operand"), outer);
    EXPECT_STREQ(from_other.what(), "wrong operand");
    EXPECT_EQ(from_other.line_position_set().size(), 1u);
    EXPECT_TRUE(dynamic_cast<const std::logic_error*>(&from_other));
}

TEST(StreamError, FormatsAsFileLineColumn) {
    const stream_error_t error("unexpected ';'", line_position_t(name_t("x.mrl"), 12, 40, 44));
    EXPECT_EQ(format_stream_error(error), "x.mrl:12:5: unexpected ';'");
    EXPECT_EQ(format_stream_error(std::runtime_error("plain")), "plain");
    EXPECT_EQ(format_position(line_position_t()), "<input>");
}
