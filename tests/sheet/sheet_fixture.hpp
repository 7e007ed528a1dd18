#pragma once

#include "core/expression/parser.hpp"
#include "core/expression_value_format.hpp"
#include "sheet/sheet.hpp"
#include "sheet/sheet_reader.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace vorlen::testing {

constexpr bool updated = true;

/// A sheet built from a script named "test.mrl", with helpers that keep the scenarios short.
struct script_sheet_t {
    /// Built, and with `updated` also brought up to date once.
    explicit script_sheet_t(std::string_view script, bool update = false) {
        parse_sheet_script(script, name_t("test.mrl"), sheet);
        if (update)
            sheet.update();
    }

    double number(const char* name) { return sheet.get(name_t(name)).cast<double>(); }
    std::vector<double> numbers(std::initializer_list<const char*> names) {
        std::vector<double> result;
        for (const char* name : names)
            result.push_back(number(name));
        return result;
    }
    void set(const char* name, const any_regular_t& value) { sheet.set(name_t(name), value); }
    void set_update(const char* name, const any_regular_t& value) {
        set(name, value);
        sheet.update();
    }
    any_regular_t inspect(const char* expression) {
        return sheet.inspect(parse_expression(expression));
    }
    void touch(std::initializer_list<const char*> names) {
        const std::vector<name_t> list = names_of(names);
        sheet.touch(list.data(), list.data() + list.size());
    }
    /// monitor_enabled with the touch set given by name; the proc records into `calls`.
    sheet_t::connection_t monitor_enabled(const char* cell,
                                          std::initializer_list<const char*> touch,
                                          std::vector<bool>& calls) {
        const std::vector<name_t> list = names_of(touch);
        return sheet.monitor_enabled(name_t(cell), list.data(), list.data() + list.size(),
                                     [&calls](bool v) { calls.push_back(v); });
    }
    static std::vector<name_t> names_of(std::initializer_list<const char*> texts) {
        return std::vector<name_t>(texts.begin(), texts.end());
    }

    sheet_t sheet;
};

/// A value as expression text: dictionaries compare whole, keys sorted.
inline std::string text_of(const any_regular_t& value) {
    std::ostringstream out;
    expression_value_format_t format;
    format_scope_t scope(out, format);
    out << value;
    return out.str();
}

/// "file:line:column: message" of the first failure of building `script` and, with `update`,
/// of its first update; "ok" when nothing fails.
inline std::string outcome_of(std::string_view script, bool update = false) {
    try {
        script_sheet_t s(script, update);
    } catch (const std::exception& error) {
        return format_stream_error(error);
    }
    return "ok";
}

/// The message of the exception `f` throws, which must be of type E; "" if it throws nothing.
template <typename E, typename F>
std::string failure_of(F&& f) {
    try {
        f();
    } catch (const E& error) {
        return error.what();
    }
    return "";
}

} // namespace vorlen::testing
