// The XML entity table and xml_escape / xml_unescape.

#include "core/xml_text.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <stdexcept>
#include <string>

using namespace vorlen;

namespace {

template <typename F>
std::string failure_text(F f) {
    try {
        f();
    } catch (const std::range_error& error) {
        return error.what();
    }
    return "no exception";
}

} // namespace

TEST(XmlEntityTable, HoldsTheHtml4EntitiesAndAposSortedBothWays) {
    // HTMLlat1 (96) + HTMLsymbol (124) + HTMLspecial (32) + apos: the standard lists give 253.
    const auto by_name = xml_entities_by_name();
    const auto by_code_point = xml_entities_by_code_point();
    ASSERT_EQ(by_name.size(), 253u);
    ASSERT_EQ(by_code_point.size(), 253u);
    // Strictly increasing, so no name and no code point twice; strcmp puts upper case first.
    for (std::size_t i = 1; i < by_name.size(); ++i) {
        EXPECT_LT(std::strcmp(by_name[i - 1].name.c_str(), by_name[i].name.c_str()), 0);
        EXPECT_LT(by_code_point[i - 1].code_point, by_code_point[i].code_point);
    }
    EXPECT_EQ(by_name.front().name, "AElig");
    EXPECT_EQ(by_code_point.front().name, "quot");
    EXPECT_EQ(by_code_point.back().name, "diams");
    // No code point has two names, and all of Latin-1's upper half has one.
    std::set<std::uint32_t> code_points;
    for (const xml_entity_t& entity : by_name)
        code_points.insert(entity.code_point);
    EXPECT_EQ(code_points.size(), 253u);
    for (std::uint32_t c = 160; c != 256; ++c)
        EXPECT_TRUE(code_points.count(c)) << c;
}

TEST(XmlEntityTable, Lookups) {
    EXPECT_EQ(xml_entity_code_point("amp"), 38u);
    EXPECT_EQ(xml_entity_code_point("apos"), 39u);
    EXPECT_EQ(xml_entity_code_point("euro"), 8364u);
    EXPECT_EQ(xml_entity_code_point("Prime"), 8243u);
    EXPECT_EQ(xml_entity_code_point("prime"), 8242u);
    EXPECT_EQ(xml_entity_name(60), "lt");
    EXPECT_EQ(xml_entity_name(233), "eacute");
    EXPECT_EQ(xml_entity_name(9830), "diams");
}

TEST(XmlEntityTable, MissingKeysThrowRangeError) {
    EXPECT_EQ(failure_text([] { xml_entity_code_point("nosuch"); }), "entity name not found");
    EXPECT_EQ(failure_text([] { xml_entity_code_point("AMP"); }), "entity name not found");
    EXPECT_EQ(failure_text([] { xml_entity_code_point(""); }), "entity name not found");
    EXPECT_EQ(failure_text([] { xml_entity_name(65); }), "code point not found");
    EXPECT_EQ(failure_text([] { xml_entity_name(0x10FFFF); }), "code point not found");
}

TEST(XmlEscape, SpecialControlAndHighBytes) {
    const std::pair<std::string, const char*> rows[] = {
        {"a<b", "a&lt;b"},
        {"<>&\"'", "&lt;&gt;&amp;&quot;&apos;"},
        {"plain text 123 ~!", "plain text 123 ~!"},
        {"", ""},
        // Control bytes as upper-case hex.
        {"\t", "&#x09;"},
        {"a\nb", "a&#x0A;b"},
        {std::string(1, '\0'), "&#x00;"},
        {"\x7f", "&#x7F;"},
        {"\x80\x9f", "&#x80;&#x9F;"},
        // Multi-byte text is escaped byte by byte: "é" is C3 A9, "€" is E2 82 AC.
        {"\xC3\xA9", "&Atilde;&copy;"},
        {"\xE2\x82\xAC", "&acirc;&#x82;&not;"},
        {"\xA0\xFF", "&nbsp;&yuml;"}};
    for (const auto& [text, escaped] : rows)
        EXPECT_EQ(xml_escape(text), escaped);
}

TEST(XmlUnescape, NumericNamedUnknownAndUnterminatedReferences) {
    const std::pair<const char*, const char*> rows[] = {
        {"&#65;&#x41;", "AA"},
        {"&#x6a;&#x6A;", "jj"},
        {"&#x20AC;", "\xE2\x82\xAC"},
        {"&#233;", "\xC3\xA9"},
        {"&#x1F600;", "\xF0\x9F\x98\x80"},
        // Digits up to the first non-digit; the rest is ignored.
        {"&#65zz;", "A"},
        {"&#x41g1;", "A"},
        // No digits: code point 0, nothing appended.
        {"a&#;b&#x;c", "abc"},
        // Beyond Unicode: the replacement character.
        {"&#99999999999;", "\xEF\xBF\xBD"},
        {"&lt;a&gt; &amp; &quot;b&quot; &apos;", "<a> & \"b\" '"},
        {"&eacute;&euro;", "\xC3\xA9\xE2\x82\xAC"},
        {"&nbsp;", "\xC2\xA0"},
        // An unknown entity vanishes.
        {"&nosuch;b", "b"},
        {"a&;b", "ab"},
        {"&AMP;", ""},
        // A tail without a semicolon is dropped.
        {"a&b", "a"},
        {"x&lt;y&amp", "x<y"},
        {"&", ""},
        {"no references", "no references"},
        {"", ""}};
    for (const auto& [text, unescaped] : rows)
        EXPECT_EQ(xml_unescape(text), unescaped) << text;

    std::string ascii;
    for (int c = 1; c < 128; ++c)
        ascii += static_cast<char>(c);
    EXPECT_EQ(xml_unescape(xml_escape(ascii)), ascii);
}
