// Properties over random input: a well-formed expression parses, formats, re-parses and
// evaluates to the same outcome, and formatting reaches a fixed point; random token soup never
// crashes the machine or the formatter.

#include "core/expression/expression_formatter.hpp"
#include "core/expression/parser.hpp"
#include "core/expression/virtual_machine.hpp"
#include "expression_test_support.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

using namespace vorlen;

namespace {

/// Random expression text over a closed vocabulary; every operator but the bitwise ones, which
/// have no formatter text. Operands of mixed kinds are allowed: a failing evaluation must fail
/// the same way on both sides.
class expression_generator_t {
public:
    explicit expression_generator_t(std::uint64_t seed) : random_m(seed) {}

    std::string expression(int depth) {
        if (depth <= 0 || pick(4) == 0)
            return leaf();
        switch (pick(12)) {
        case 0:
        case 1:
        case 2: {
            static const char* const operators[] = {"+",  "-",  "*",  "/",  "%",  "<", ">",
                                                    "<=", ">=", "==", "!=", "&&", "||"};
            return "(" + expression(depth - 1) + " " + operators[pick(13)] + " " +
                   expression(depth - 1) + ")";
        }
        case 3: {
            // Comparisons feed the logical operators, so the deferred sides run often.
            static const char* const logical[] = {"&&", "||"};
            return "(" + comparison(depth - 1) + " " + logical[pick(2)] + " " +
                   comparison(depth - 1) + ")";
        }
        case 4: return (pick(2) ? "!" : "-") + expression(depth - 1);
        case 5:
            return "(" + comparison(depth - 1) + " ? " + expression(depth - 1) + " : " +
                   expression(depth - 1) + ")";
        case 6: {
            std::string text = "[";
            const int count = static_cast<int>(pick(4));
            for (int i = 0; i != count; ++i)
                text += (i ? ", " : "") + expression(depth - 1);
            return text + "]";
        }
        case 7: {
            static const char* const keys[] = {"a", "b", "k", "value"};
            std::string text = "{";
            const int count = 1 + static_cast<int>(pick(3));
            for (int i = 0; i != count; ++i)
                text += std::string(i ? ", " : "") + keys[pick(4)] + ": " + expression(depth - 1);
            return text + "}";
        }
        case 8:
            return pick(2) ? "list[" + expression(depth - 1) + "]"
                           : "dict." + std::string(pick(2) ? "a" : "b");
        case 9: {
            static const char* const functions[] = {"min", "max", "round", "typeof", "nosuch"};
            std::string text = std::string(functions[pick(5)]) + "(";
            const int count = static_cast<int>(pick(3)) + (pick(5) ? 1 : 0);
            for (int i = 0; i != count; ++i)
                text += (i ? ", " : "") + expression(depth - 1);
            return text + ")";
        }
        case 10: return "scale(x: " + expression(depth - 1) + ", m: " + expression(depth - 1) + ")";
        default: return "any(" + expression(depth - 1) + ", [" + leaf() + ", " + leaf() + "])";
        }
    }

private:
    std::uint64_t pick(std::uint64_t n) { return random_m() % n; }

    std::string comparison(int depth) {
        static const char* const operators[] = {"<", ">", "<=", ">=", "==", "!="};
        return "(" + expression(depth) + " " + operators[pick(6)] + " " + expression(depth) + ")";
    }

    std::string leaf() {
        static const char* const leaves[] = {"0",     "1",    "2",    "3",        "7",     "0.5",
                                             "2.25",  "100",  "true", "false",    "empty", "'text'",
                                             "\"q\"", "@n",   "@abc", "x",        "y",     "flag",
                                             "list",  "dict", "[]",   "undefined"};
        return leaves[pick(std::size(leaves))];
    }

    std::mt19937_64 random_m;
};

/// The value's text, or the failure's text: two evaluations agree when these are equal.
std::string outcome(const array_t& stream) {
    virtual_machine_t vm;
    vm.set_step_limit(1'000'000);
    static const dictionary_t variables = [] {
        virtual_machine_t maker;
        maker.evaluate(
            parse_expression("{x: 3, y: -2.5, flag: true, list: [1, 2, 3], dict: {a: 1, b: 's'}}"));
        return maker.back().cast<dictionary_t>();
    }();
    vm.set_variable_lookup([](name_t name) -> any_regular_t {
        const auto found = variables.find(name);
        if (found == variables.end())
            throw std::logic_error(std::string("variable '") + name.c_str() + "' not defined.");
        return found->second;
    });
    try {
        vm.evaluate(stream);
        if (vm.size() != 1)
            return "stack of " + std::to_string(vm.size());
        return "value " + vorlen::testing::expression_text(vm.back());
    } catch (const std::exception& error) {
        return std::string("error ") + error.what();
    }
}

} // namespace

TEST(ExpressionProperty, FormatReparseEvaluatesTheSame) {
    expression_generator_t generator(20261123);
    int values = 0;
    for (int i = 0; i != 3000; ++i) {
        const std::string text = generator.expression(1 + i % 5);
        SCOPED_TRACE(text);
        const array_t parsed = parse_expression(text);
        const std::string expected = outcome(parsed);
        values += expected.rfind("value ", 0) == 0;

        for (const bool one_line : {false, true}) {
            for (const std::size_t indent : {std::size_t(0), std::size_t(4)}) {
                const std::string formatted = format_expression(parsed, indent, one_line);
                SCOPED_TRACE(formatted);
                const array_t reparsed = parse_expression(formatted);
                ASSERT_EQ(outcome(reparsed), expected);
                // A second round changes nothing: formatting reaches a fixed point.
                ASSERT_EQ(format_expression(reparsed, indent, one_line), formatted);
            }
        }
    }
    // The generator must not produce failures only.
    EXPECT_GT(values, 600);
}

TEST(ExpressionProperty, RandomTokenSoupNeverCrashes) {
    // Arbitrary streams, nested ones included, must end in a value or an exception.
    std::mt19937_64 random(7);
    std::vector<std::string> operators = vorlen::testing::operator_tokens();
    operators.push_back(".unknown");
    std::function<array_t(int)> soup = [&](int depth) {
        array_t stream;
        const int length = static_cast<int>(random() % 12);
        for (int i = 0; i != length; ++i) {
            switch (random() % 10) {
            case 0:
            case 1:
            case 2:
                stream.emplace_back(name_t(operators[random() % operators.size()].c_str()));
                break;
            case 3:
                stream.emplace_back(static_cast<double>(static_cast<int>(random() % 7) - 2));
                break;
            case 4: stream.emplace_back(random() % 2 == 0); break;
            case 5: stream.emplace_back(name_t(random() % 2 ? "min" : "x")); break;
            case 6: stream.emplace_back(std::string("s")); break;
            case 7:
                if (depth > 0)
                    stream.emplace_back(soup(depth - 1));
                break;
            case 8: stream.emplace_back(array_t()); break;
            default: stream.emplace_back(1e300 * static_cast<double>(random() % 3)); break;
            }
        }
        return stream;
    };
    int values = 0;
    for (int i = 0; i != 20000; ++i) {
        const array_t stream = soup(3);
        virtual_machine_t vm;
        vm.set_step_limit(10'000);
        vm.set_variable_lookup([](name_t) { return any_regular_t(1.0); });
        try {
            vm.evaluate(stream);
            ++values;
        } catch (const std::exception&) {
        }
        try {
            format_expression(stream, i % 8, i % 2 == 0);
        } catch (const std::exception&) {
        }
    }
    EXPECT_GT(values, 0);
}
