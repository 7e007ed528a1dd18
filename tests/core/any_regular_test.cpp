#include "core/any_regular.hpp"
#include "core/static_table.hpp"
#include "core/type_name.hpp"

#include <gtest/gtest.h>

#include <string>

using namespace vorlen;

namespace {

struct point_t {
    int x = 0;
    int y = 0;
    friend bool operator==(const point_t&, const point_t&) = default;
};

} // namespace

TEST(AnyRegular, KindsHaveTheirTypeNames) {
    EXPECT_EQ(sizeof(any_regular_t), 16u);
    EXPECT_TRUE(any_regular_t().is<empty_t>());
    EXPECT_EQ(any_regular_t(), any_regular_t(empty_t()));
    const std::pair<any_regular_t, const char*> rows[] = {
        {any_regular_t(1.5), "number"},
        {any_regular_t(3), "number"},
        {any_regular_t(true), "boolean"},
        {any_regular_t(), "empty"},
        {any_regular_t(name_t("n")), "name"},
        {any_regular_t("text"), "string"},
        {any_regular_t(array_t{any_regular_t(1.0)}), "array"},
        {any_regular_t(dictionary_t()), "dictionary"}};
    for (const auto& [value, type] : rows)
        EXPECT_EQ(type_name(value.type_info()), name_t(type)) << type;
    EXPECT_EQ(any_regular_t(3).cast<double>(), 3.0) << "integers are stored as numbers";
}

TEST(AnyRegular, EqualityNeedsTheSameKind) {
    const array_t mixed{any_regular_t(1.0), any_regular_t("x")};
    const struct {
        any_regular_t a, b;
        bool equal;
    } rows[] = {{1.0, true, false},
                {0.0, any_regular_t(), false},
                {"a", name_t("a"), false},
                {2.0, 2.0, true},
                {"a", std::string("a"), true},
                {mixed, mixed, true},
                {array_t{any_regular_t(1.0)}, array_t{any_regular_t(true)}, false}};
    for (const auto& row : rows)
        EXPECT_EQ(row.a == row.b, row.equal) << row.a << " == " << row.b;
}

TEST(AnyRegular, CastHasNoConversions) {
    const any_regular_t number(1.0);
    EXPECT_EQ(number.cast<double>(), 1.0);
    EXPECT_THROW(number.cast<bool>(), vorlen::bad_cast);
    EXPECT_THROW(number.cast<std::string>(), std::bad_cast);
    try {
        any_regular_t().cast<double>();
        FAIL() << "an empty value is not a number";
    } catch (const vorlen::bad_cast& error) {
        const std::string what = error.what();
        EXPECT_EQ(what.rfind("bad_cast: ", 0), 0u) << what;
        EXPECT_NE(what.find("empty_t"), std::string::npos) << what;
        EXPECT_NE(what.find(" -> double"), std::string::npos) << what;
    }
    EXPECT_STREQ(vorlen::bad_cast().what(), "bad_cast");
}

TEST(AnyRegular, CopiesAreIndependent) {
    any_regular_t a(array_t{any_regular_t(1.0), any_regular_t("two")});
    any_regular_t b = a;
    b.cast<array_t>().push_back(any_regular_t(3.0));
    EXPECT_EQ(a.cast<array_t>().size(), 2u);
    EXPECT_EQ(b.cast<array_t>().size(), 3u);

    dictionary_t d;
    d.insert({name_t("k"), any_regular_t("v")});
    any_regular_t c(d);
    any_regular_t e = c;
    e.cast<dictionary_t>()[name_t("k")] = any_regular_t("changed");
    EXPECT_EQ(get_value(c.cast<dictionary_t>(), name_t("k")), any_regular_t("v"));
}

TEST(AnyRegular, AssignmentAndSwapAcrossKinds) {
    any_regular_t a("a long enough string to be boxed on the heap");
    any_regular_t b(4.0);
    swap(a, b);
    EXPECT_EQ(a.cast<double>(), 4.0);
    EXPECT_EQ(b.cast<std::string>(), "a long enough string to be boxed on the heap");
    a = b;
    EXPECT_EQ(a, b);
    a = any_regular_t(name_t("n"));
    EXPECT_EQ(a.cast<name_t>(), name_t("n"));
    any_regular_t moved(std::move(b));
    EXPECT_TRUE(moved.is<std::string>());
    EXPECT_TRUE(b.is<empty_t>()) << "a moved-from value is left empty";
    any_regular_t s1("x"), s2("y");
    swap(s1, s2);
    EXPECT_EQ(s1.cast<std::string>(), "y");
    EXPECT_EQ(s2.cast<std::string>(), "x");
}

TEST(AnyRegular, ClientTypesKeepTheirRuntimeName) {
    const any_regular_t value = any_regular_t::make(point_t{1, 2});
    EXPECT_EQ(value.cast<point_t>().y, 2);
    EXPECT_EQ(value, any_regular_t::make(point_t{1, 2}));
    EXPECT_FALSE(value == any_regular_t::make(point_t{1, 3}));
    const std::string name = type_name(value.type_info()).c_str();
    EXPECT_NE(name.find("point_t"), std::string::npos) << name;
}

TEST(StaticTable, FindsSortedRowsAndRefusesMissingKeys) {
    static_table<int, const char*, 4> table({{{30, "c"}, {10, "a"}, {40, "d"}, {20, "b"}}});
    table.sort();
    EXPECT_STREQ(table.find(10), "a");
    EXPECT_STREQ(table.find(40), "d");
    EXPECT_EQ(table.find_if(25), nullptr);
    EXPECT_THROW(table.find(5), std::logic_error);
    try {
        table.find(99);
        FAIL();
    } catch (const std::logic_error& error) {
        EXPECT_STREQ(error.what(), "static_table key not found");
    }
}
