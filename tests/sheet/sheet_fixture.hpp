#pragma once

#include "core/expression/parser.hpp"
#include "sheet/sheet.hpp"
#include "sheet/sheet_reader.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vorlen::testing {

/// A sheet built from a script named "test.mrl", with helpers that keep the scenarios short.
struct script_sheet_t {
    explicit script_sheet_t(std::string_view script) {
        parse_sheet_script(script, name_t("test.mrl"), sheet);
    }

    double number(const char* name) { return sheet.get(name_t(name)).cast<double>(); }
    void set(const char* name, const any_regular_t& value) { sheet.set(name_t(name), value); }
    void set_update(const char* name, const any_regular_t& value) {
        set(name, value);
        sheet.update();
    }
    any_regular_t inspect(const char* expression) {
        return sheet.inspect(parse_expression(expression));
    }
    void touch(std::initializer_list<const char*> names) {
        std::vector<name_t> list;
        for (const char* name : names)
            list.emplace_back(name);
        sheet.touch(list.data(), list.data() + list.size());
    }

    sheet_t sheet;
};

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
