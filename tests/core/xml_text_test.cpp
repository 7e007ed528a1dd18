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

TEST(XmlEntityTable, HoldsTheHtml4EntitiesAndApos) {
    // HTMLlat1 (96) + HTMLsymbol (124) + HTMLspecial (32) + apos: the standard lists give 253.
    EXPECT_EQ(xml_entities_by_name().size(), 253u);
    EXPECT_EQ(xml_entities_by_code_point().size(), 253u);
    std::set<std::string> names;
    std::set<std::uint32_t> code_points;
    for (const xml_entity_t& entity : xml_entities_by_name()) {
        names.insert(entity.name);
        code_points.insert(entity.code_point);
    }
    EXPECT_EQ(names.size(), 253u);
    EXPECT_EQ(code_points.size(), 253u);
    // All of Latin-1's upper half has a name.
    for (std::uint32_t c = 160; c != 256; ++c)
        EXPECT_TRUE(code_points.count(c)) << c;
}

TEST(XmlEntityTable, BothOrdersAreSorted) {
    const auto by_name = xml_entities_by_name();
    for (std::size_t i = 1; i < by_name.size(); ++i)
        EXPECT_LT(std::strcmp(by_name[i - 1].name.c_str(), by_name[i].name.c_str()), 0);
    const auto by_code_point = xml_entities_by_code_point();
    for (std::size_t i = 1; i < by_code_point.size(); ++i)
        EXPECT_LT(by_code_point[i - 1].code_point, by_code_point[i].code_point);
    // strcmp order puts upper case first.
    EXPECT_EQ(by_name.front().name, "AElig");
    EXPECT_EQ(by_code_point.front().name, "quot");
    EXPECT_EQ(by_code_point.back().name, "diams");
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

TEST(XmlEscape, SpecialCharacters) {
    EXPECT_EQ(xml_escape("a<b"), "a&lt;b");
    EXPECT_EQ(xml_escape("<>&\"'"), "&lt;&gt;&amp;&quot;&apos;");
    EXPECT_EQ(xml_escape("plain text 123 ~!"), "plain text 123 ~!");
    EXPECT_EQ(xml_escape(""), "");
}

TEST(XmlEscape, ControlBytesAsUpperCaseHex) {
    EXPECT_EQ(xml_escape("\t"), "&#x09;");
    EXPECT_EQ(xml_escape("a\nb"), "a&#x0A;b");
    EXPECT_EQ(xml_escape(std::string(1, '\0')), "&#x00;");
    EXPECT_EQ(xml_escape("\x7f"), "&#x7F;");
    EXPECT_EQ(xml_escape("\x80\x9f"), "&#x80;&#x9F;");
}

TEST(XmlEscape, MultiByteTextIsEscapedByteByByte) {
    // "é" is C3 A9 in UTF-8: Atilde and copy.
    EXPECT_EQ(xml_escape("\xC3\xA9"), "&Atilde;&copy;");
    // "€" is E2 82 AC.
    EXPECT_EQ(xml_escape("\xE2\x82\xAC"), "&acirc;&#x82;&not;");
    EXPECT_EQ(xml_escape("\xA0\xFF"), "&nbsp;&yuml;");
}

TEST(XmlUnescape, NumericReferences) {
    EXPECT_EQ(xml_unescape("&#65;&#x41;"), "AA");
    EXPECT_EQ(xml_unescape("&#x6a;&#x6A;"), "jj");
    EXPECT_EQ(xml_unescape("&#x20AC;"), "\xE2\x82\xAC");
    EXPECT_EQ(xml_unescape("&#233;"), "\xC3\xA9");
    EXPECT_EQ(xml_unescape("&#x1F600;"), "\xF0\x9F\x98\x80");
    // Digits up to the first non-digit; the rest is ignored.
    EXPECT_EQ(xml_unescape("&#65zz;"), "A");
    EXPECT_EQ(xml_unescape("&#x41g1;"), "A");
    // No digits: code point 0, nothing appended.
    EXPECT_EQ(xml_unescape("a&#;b&#x;c"), "abc");
    // Beyond Unicode: the replacement character.
    EXPECT_EQ(xml_unescape("&#99999999999;"), "\xEF\xBF\xBD");
}

TEST(XmlUnescape, NamedReferences) {
    EXPECT_EQ(xml_unescape("&lt;a&gt; &amp; &quot;b&quot; &apos;"), "<a> & \"b\" '");
    EXPECT_EQ(xml_unescape("&eacute;&euro;"), "\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(xml_unescape("&nbsp;"), "\xC2\xA0");
}

TEST(XmlUnescape, UnknownEntityVanishes) {
    EXPECT_EQ(xml_unescape("&nosuch;b"), "b");
    EXPECT_EQ(xml_unescape("a&;b"), "ab");
    EXPECT_EQ(xml_unescape("&AMP;"), "");
}

TEST(XmlUnescape, TailWithoutSemicolonIsDropped) {
    EXPECT_EQ(xml_unescape("a&b"), "a");
    EXPECT_EQ(xml_unescape("x&lt;y&amp"), "x<y");
    EXPECT_EQ(xml_unescape("&"), "");
    EXPECT_EQ(xml_unescape("no references"), "no references");
    EXPECT_EQ(xml_unescape(""), "");
}

TEST(XmlText, EscapeThenUnescapeRoundTripsAscii) {
    std::string all;
    for (int c = 1; c < 128; ++c)
        all += static_cast<char>(c);
    EXPECT_EQ(xml_unescape(xml_escape(all)), all);
}
