#include "core/expression_value_format.hpp"

#include "core/any_regular.hpp"

#include <cstdio>
#include <ostream>

namespace vorlen {

std::string quoted_string(const std::string& text) {
    std::string result = "\"";
    for (char c : text) {
        switch (c) {
        case '"': result += "\\\""; break;
        case '\\': result += "\\\\"; break;
        case '\n': result += "\\n"; break;
        case '\r': result += "\\r"; break;
        case '\t': result += "\\t"; break;
        default: result += c;
        }
    }
    return result + "\"";
}

bool expression_value_format_t::begin_element(std::ostream& stream) {
    if (frames_m.empty())
        return false;
    frame_t& frame = frames_m.back();
    switch (frame.kind) {
    case frame_kind::bag:
    case frame_kind::array:
        if (frame.count++ > 0)
            stream << ", ";
        return false;
    case frame_kind::pair: return frame.count++ == 0;
    }
    return false;
}

void expression_value_format_t::begin_bag(std::ostream& stream, const std::string&) {
    begin_element(stream);
    stream << '{';
    frames_m.push_back({frame_kind::bag, 0});
}

void expression_value_format_t::end_bag(std::ostream& stream) {
    frames_m.pop_back();
    stream << '}';
}

void expression_value_format_t::begin_sequence(std::ostream& stream) {
    if (!frames_m.empty() && frames_m.back().kind == frame_kind::bag) {
        begin_element(stream);
        frames_m.push_back({frame_kind::pair, 0});
        return;
    }
    begin_element(stream);
    stream << '[';
    frames_m.push_back({frame_kind::array, 0});
}

void expression_value_format_t::end_sequence(std::ostream& stream) {
    const frame_kind kind = frames_m.back().kind;
    frames_m.pop_back();
    if (kind == frame_kind::array)
        stream << ']';
}

void expression_value_format_t::begin_atom(std::ostream& stream, const serializable_t& atom) {
    if (begin_element(stream)) {
        // A dictionary key: the bare name.
        atom.serialize(stream);
        stream << ": ";
        return;
    }
    if (const name_t* name = atom.get_if<name_t>())
        stream << '@' << name->c_str();
    else if (const std::string* text = atom.get_if<std::string>())
        stream << quoted_string(*text);
    else
        atom.serialize(stream);
}

void expression_value_format_t::end_atom(std::ostream&) {}

} // namespace vorlen
