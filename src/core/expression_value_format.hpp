#pragma once

#include "core/format.hpp"

#include <vector>

namespace vorlen {

/// Writes values in the expression language, so the text reads back as an equal value:
/// `[1, "a", @n]`, `{key: true, other: empty}`.
class expression_value_format_t final : public format_base_t {
public:
    void begin_bag(std::ostream& stream, const std::string& format) override;
    void end_bag(std::ostream& stream) override;
    void begin_sequence(std::ostream& stream) override;
    void end_sequence(std::ostream& stream) override;
    void begin_atom(std::ostream& stream, const serializable_t& atom) override;
    void end_atom(std::ostream& stream) override;

private:
    enum class frame_kind { bag, pair, array };
    struct frame_t {
        frame_kind kind;
        int count;
    };

    /// Writes what goes before an element of the enclosing frame; true when it is a pair's key.
    bool begin_element(std::ostream& stream);

    std::vector<frame_t> frames_m;
};

/// The expression-language text of a string literal, quoted and escaped.
std::string quoted_string(const std::string& text);

} // namespace vorlen
