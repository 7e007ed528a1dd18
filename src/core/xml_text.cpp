// The XML entity table and the escaping helpers.

#include "core/xml_text.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace vorlen {

namespace {

struct entity_row_t {
    const char* name;
    std::uint32_t code_point;
};

// HTML 4.01: HTMLlat1 (96 rows), HTMLsymbol (124), HTMLspecial (32), and "apos" of XML: 253 rows.
// The standard lists hold no more; nothing is added to make a round number.
constexpr entity_row_t entity_rows[] = {
    // HTMLlat1: U+00A0 to U+00FF.
    {"nbsp", 160},
    {"iexcl", 161},
    {"cent", 162},
    {"pound", 163},
    {"curren", 164},
    {"yen", 165},
    {"brvbar", 166},
    {"sect", 167},
    {"uml", 168},
    {"copy", 169},
    {"ordf", 170},
    {"laquo", 171},
    {"not", 172},
    {"shy", 173},
    {"reg", 174},
    {"macr", 175},
    {"deg", 176},
    {"plusmn", 177},
    {"sup2", 178},
    {"sup3", 179},
    {"acute", 180},
    {"micro", 181},
    {"para", 182},
    {"middot", 183},
    {"cedil", 184},
    {"sup1", 185},
    {"ordm", 186},
    {"raquo", 187},
    {"frac14", 188},
    {"frac12", 189},
    {"frac34", 190},
    {"iquest", 191},
    {"Agrave", 192},
    {"Aacute", 193},
    {"Acirc", 194},
    {"Atilde", 195},
    {"Auml", 196},
    {"Aring", 197},
    {"AElig", 198},
    {"Ccedil", 199},
    {"Egrave", 200},
    {"Eacute", 201},
    {"Ecirc", 202},
    {"Euml", 203},
    {"Igrave", 204},
    {"Iacute", 205},
    {"Icirc", 206},
    {"Iuml", 207},
    {"ETH", 208},
    {"Ntilde", 209},
    {"Ograve", 210},
    {"Oacute", 211},
    {"Ocirc", 212},
    {"Otilde", 213},
    {"Ouml", 214},
    {"times", 215},
    {"Oslash", 216},
    {"Ugrave", 217},
    {"Uacute", 218},
    {"Ucirc", 219},
    {"Uuml", 220},
    {"Yacute", 221},
    {"THORN", 222},
    {"szlig", 223},
    {"agrave", 224},
    {"aacute", 225},
    {"acirc", 226},
    {"atilde", 227},
    {"auml", 228},
    {"aring", 229},
    {"aelig", 230},
    {"ccedil", 231},
    {"egrave", 232},
    {"eacute", 233},
    {"ecirc", 234},
    {"euml", 235},
    {"igrave", 236},
    {"iacute", 237},
    {"icirc", 238},
    {"iuml", 239},
    {"eth", 240},
    {"ntilde", 241},
    {"ograve", 242},
    {"oacute", 243},
    {"ocirc", 244},
    {"otilde", 245},
    {"ouml", 246},
    {"divide", 247},
    {"oslash", 248},
    {"ugrave", 249},
    {"uacute", 250},
    {"ucirc", 251},
    {"uuml", 252},
    {"yacute", 253},
    {"thorn", 254},
    {"yuml", 255},
    // HTMLsymbol: Latin Extended-B.
    {"fnof", 402},
    // Greek.
    {"Alpha", 913},
    {"Beta", 914},
    {"Gamma", 915},
    {"Delta", 916},
    {"Epsilon", 917},
    {"Zeta", 918},
    {"Eta", 919},
    {"Theta", 920},
    {"Iota", 921},
    {"Kappa", 922},
    {"Lambda", 923},
    {"Mu", 924},
    {"Nu", 925},
    {"Xi", 926},
    {"Omicron", 927},
    {"Pi", 928},
    {"Rho", 929},
    {"Sigma", 931},
    {"Tau", 932},
    {"Upsilon", 933},
    {"Phi", 934},
    {"Chi", 935},
    {"Psi", 936},
    {"Omega", 937},
    {"alpha", 945},
    {"beta", 946},
    {"gamma", 947},
    {"delta", 948},
    {"epsilon", 949},
    {"zeta", 950},
    {"eta", 951},
    {"theta", 952},
    {"iota", 953},
    {"kappa", 954},
    {"lambda", 955},
    {"mu", 956},
    {"nu", 957},
    {"xi", 958},
    {"omicron", 959},
    {"pi", 960},
    {"rho", 961},
    {"sigmaf", 962},
    {"sigma", 963},
    {"tau", 964},
    {"upsilon", 965},
    {"phi", 966},
    {"chi", 967},
    {"psi", 968},
    {"omega", 969},
    {"thetasym", 977},
    {"upsih", 978},
    {"piv", 982},
    // General punctuation.
    {"bull", 8226},
    {"hellip", 8230},
    {"prime", 8242},
    {"Prime", 8243},
    {"oline", 8254},
    {"frasl", 8260},
    // Letterlike symbols.
    {"weierp", 8472},
    {"image", 8465},
    {"real", 8476},
    {"trade", 8482},
    {"alefsym", 8501},
    // Arrows.
    {"larr", 8592},
    {"uarr", 8593},
    {"rarr", 8594},
    {"darr", 8595},
    {"harr", 8596},
    {"crarr", 8629},
    {"lArr", 8656},
    {"uArr", 8657},
    {"rArr", 8658},
    {"dArr", 8659},
    {"hArr", 8660},
    // Mathematical operators.
    {"forall", 8704},
    {"part", 8706},
    {"exist", 8707},
    {"empty", 8709},
    {"nabla", 8711},
    {"isin", 8712},
    {"notin", 8713},
    {"ni", 8715},
    {"prod", 8719},
    {"sum", 8721},
    {"minus", 8722},
    {"lowast", 8727},
    {"radic", 8730},
    {"prop", 8733},
    {"infin", 8734},
    {"ang", 8736},
    {"and", 8743},
    {"or", 8744},
    {"cap", 8745},
    {"cup", 8746},
    {"int", 8747},
    {"there4", 8756},
    {"sim", 8764},
    {"cong", 8773},
    {"asymp", 8776},
    {"ne", 8800},
    {"equiv", 8801},
    {"le", 8804},
    {"ge", 8805},
    {"sub", 8834},
    {"sup", 8835},
    {"nsub", 8836},
    {"sube", 8838},
    {"supe", 8839},
    {"oplus", 8853},
    {"otimes", 8855},
    {"perp", 8869},
    {"sdot", 8901},
    // Miscellaneous technical.
    {"lceil", 8968},
    {"rceil", 8969},
    {"lfloor", 8970},
    {"rfloor", 8971},
    {"lang", 9001},
    {"rang", 9002},
    // Geometric shapes.
    {"loz", 9674},
    // Miscellaneous symbols.
    {"spades", 9824},
    {"clubs", 9827},
    {"hearts", 9829},
    {"diams", 9830},
    // HTMLspecial: C0 controls and Basic Latin.
    {"quot", 34},
    {"amp", 38},
    {"lt", 60},
    {"gt", 62},
    // Latin Extended-A.
    {"OElig", 338},
    {"oelig", 339},
    {"Scaron", 352},
    {"scaron", 353},
    {"Yuml", 376},
    // Spacing modifier letters.
    {"circ", 710},
    {"tilde", 732},
    // General punctuation.
    {"ensp", 8194},
    {"emsp", 8195},
    {"thinsp", 8201},
    {"zwnj", 8204},
    {"zwj", 8205},
    {"lrm", 8206},
    {"rlm", 8207},
    {"ndash", 8211},
    {"mdash", 8212},
    {"lsquo", 8216},
    {"rsquo", 8217},
    {"sbquo", 8218},
    {"ldquo", 8220},
    {"rdquo", 8221},
    {"bdquo", 8222},
    {"dagger", 8224},
    {"Dagger", 8225},
    {"permil", 8240},
    {"lsaquo", 8249},
    {"rsaquo", 8250},
    {"euro", 8364},
    // XML.
    {"apos", 39},
};

static_assert(std::size(entity_rows) == 253);

struct entity_tables_t {
    std::vector<xml_entity_t> by_name;
    std::vector<xml_entity_t> by_code_point;
};

const entity_tables_t& tables() {
    static const entity_tables_t result = [] {
        entity_tables_t t;
        for (const entity_row_t& row : entity_rows)
            t.by_name.push_back({row.name, row.code_point});
        t.by_code_point = t.by_name;
        std::sort(t.by_name.begin(), t.by_name.end(), [](const auto& a, const auto& b) {
            return std::strcmp(a.name.c_str(), b.name.c_str()) < 0;
        });
        std::sort(t.by_code_point.begin(), t.by_code_point.end(),
                  [](const auto& a, const auto& b) { return a.code_point < b.code_point; });
        return t;
    }();
    return result;
}

int compare_name(const std::string& row, std::string_view key) noexcept {
    // `strcmp` order: unsigned bytes, a prefix first.
    const std::size_t n = std::min(row.size(), key.size());
    const int c = n ? std::memcmp(row.data(), key.data(), n) : 0;
    if (c != 0)
        return c;
    return row.size() < key.size() ? -1 : row.size() > key.size() ? 1 : 0;
}

const xml_entity_t* find_by_name(std::string_view name) noexcept {
    const auto& rows = tables().by_name;
    auto found = std::lower_bound(rows.begin(), rows.end(), name, [](const auto& row, auto key) {
        return compare_name(row.name, key) < 0;
    });
    if (found == rows.end() || compare_name(found->name, name) != 0)
        return nullptr;
    return &*found;
}

const xml_entity_t* find_by_code_point(std::uint32_t code_point) noexcept {
    const auto& rows = tables().by_code_point;
    auto found = std::lower_bound(rows.begin(), rows.end(), code_point,
                                  [](const auto& row, auto key) { return row.code_point < key; });
    if (found == rows.end() || found->code_point != code_point)
        return nullptr;
    return &*found;
}

void append_utf8(std::string& out, std::uint32_t c) {
    if (c > 0x10FFFF)
        c = 0xFFFD;
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

int digit_value(char c, int base) noexcept {
    int value = -1;
    if (c >= '0' && c <= '9')
        value = c - '0';
    else if (c >= 'a' && c <= 'f')
        value = c - 'a' + 10;
    else if (c >= 'A' && c <= 'F')
        value = c - 'A' + 10;
    return value < base ? value : -1;
}

/// Digits up to the first non-digit; the value saturates just above U+10FFFF.
std::uint32_t read_number(std::string_view digits, int base) noexcept {
    std::uint32_t value = 0;
    for (char c : digits) {
        const int d = digit_value(c, base);
        if (d < 0)
            break;
        value = value * base + d;
        if (value > 0x10FFFF)
            value = 0x110000;
    }
    return value;
}

} // namespace

std::span<const xml_entity_t> xml_entities_by_name() {
    return tables().by_name;
}
std::span<const xml_entity_t> xml_entities_by_code_point() {
    return tables().by_code_point;
}

std::uint32_t xml_entity_code_point(std::string_view name) {
    if (const xml_entity_t* found = find_by_name(name))
        return found->code_point;
    throw std::range_error("entity name not found");
}

const std::string& xml_entity_name(std::uint32_t code_point) {
    if (const xml_entity_t* found = find_by_code_point(code_point))
        return found->name;
    throw std::range_error("code point not found");
}

std::string xml_escape(std::string_view text) {
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string result;
    result.reserve(text.size());
    for (char c : text) {
        const auto b = static_cast<unsigned char>(c);
        if (const xml_entity_t* entity = find_by_code_point(b)) {
            result += '&';
            result += entity->name;
            result += ';';
        } else if (b >= 0x20 && b < 0x7F) { // isprint in the C locale, below 128
            result += c;
        } else {
            result += "&#x";
            result += hex[b >> 4];
            result += hex[b & 15];
            result += ';';
        }
    }
    return result;
}

std::string xml_unescape(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    std::size_t position = 0;
    while (true) {
        const std::size_t ampersand = text.find('&', position);
        result.append(text.substr(position, ampersand - position));
        if (ampersand == std::string_view::npos)
            return result;
        const std::size_t semicolon = text.find(';', ampersand + 1);
        if (semicolon == std::string_view::npos)
            return result;
        const std::string_view entity = text.substr(ampersand + 1, semicolon - ampersand - 1);
        std::uint32_t code_point = 0;
        if (entity.size() >= 2 && entity[0] == '#' && entity[1] == 'x')
            code_point = read_number(entity.substr(2), 16);
        else if (!entity.empty() && entity[0] == '#')
            code_point = read_number(entity.substr(1), 10);
        else if (const xml_entity_t* found = find_by_name(entity))
            code_point = found->code_point;
        if (code_point != 0)
            append_utf8(result, code_point);
        position = semicolon + 1;
    }
}

} // namespace vorlen
