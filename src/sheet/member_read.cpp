#include "sheet/member_read.hpp"

#include <utility>

namespace vorlen {

namespace {

bool is_operator(const any_regular_t& token, name_t op) {
    return token.is<name_t>() && token.cast<name_t>() == op;
}

/// A literal that can stand as the key of `.index`: a name that is not an operator, or a number.
bool is_literal_key(const any_regular_t& token) {
    if (token.is<double>())
        return true;
    return token.is<name_t>() && token.cast<name_t>().c_str()[0] != '.';
}

} // namespace

array_t fuse_member_reads(const array_t& stream, std::deque<array_t>& paths) {
    array_t result;
    result.reserve(stream.size());
    for (std::size_t i = 0; i != stream.size(); ++i) {
        const any_regular_t& token = stream[i];
        // A non-empty array in a stream is always a nested stream.
        if (token.is<array_t>() && !token.cast<array_t>().empty()) {
            result.emplace_back(fuse_member_reads(token.cast<array_t>(), paths));
            continue;
        }
        const bool member_read =
            token.is<name_t>() && is_literal_key(token) && i + 3 < stream.size() &&
            is_operator(stream[i + 1], variable_token) && is_literal_key(stream[i + 2]) &&
            is_operator(stream[i + 3], index_token);
        if (!member_read) {
            result.push_back(token);
            continue;
        }
        array_t path;
        std::size_t next = i + 2;
        while (next + 1 < stream.size() && is_literal_key(stream[next]) &&
               is_operator(stream[next + 1], index_token)) {
            path.push_back(stream[next]);
            next += 2;
        }
        result.push_back(token);
        if (path.size() == 1) {
            result.push_back(path.front());
            result.emplace_back(name_t(member_read_token));
        } else {
            result.emplace_back(static_cast<double>(paths.size()));
            result.emplace_back(name_t(path_read_token));
            paths.push_back(std::move(path));
        }
        i = next - 1;
    }
    return result;
}

} // namespace vorlen
