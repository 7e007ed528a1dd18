#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace vorlen {

/// One row of the XML entity table: an entity name and its code point.
struct xml_entity_t {
    std::string name;
    std::uint32_t code_point;
};

/// The entity table: the HTML 4 character entities (Latin-1, symbols and special characters,
/// with "quot", "lt", "gt" and "amp") plus "apos". Built once; the two views hold the same rows,
/// one sorted by name (`strcmp` order), one by code point.
std::span<const xml_entity_t> xml_entities_by_name();
std::span<const xml_entity_t> xml_entities_by_code_point();

/// The code point of an entity name; throws `std::range_error` "entity name not found".
std::uint32_t xml_entity_code_point(std::string_view name);
/// The entity name of a code point; throws `std::range_error` "code point not found".
const std::string& xml_entity_name(std::uint32_t code_point);

/// Escapes byte by byte: a byte with an entity becomes "&name;", a printable ASCII byte stays,
/// every other byte becomes "&#xHH;" with two upper-case hex digits. A UTF-8 sequence thus turns
/// into several references.
std::string xml_escape(std::string_view text);

/// Resolves "&name;", "&#ddd;" and "&#xhh;" references, appending their code points as UTF-8.
/// An unknown entity (code point 0) vanishes; a "&" with no ";" after it drops the rest of the
/// text. Code points above U+10FFFF are written as U+FFFD.
std::string xml_unescape(std::string_view text);

} // namespace vorlen
