// virtual_machine_t, grouped by operator family. Most streams are built by hand so
// the machine is tested apart from the parser; the worked text examples go through the parser.

#include "core/expression/parser.hpp"
#include "core/expression/virtual_machine.hpp"
#include "core/type_name.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

using namespace vorlen;

namespace {

any_regular_t op(const char* token) {
    return any_regular_t(name_t(token));
}
any_regular_t nm(const char* text) {
    return any_regular_t(name_t(text));
}
any_regular_t str(const char* text) {
    return any_regular_t(std::string(text));
}
using S = array_t;

/// The tokens of a variable reference.
void var(array_t& stream, const char* name) {
    stream.push_back(nm(name));
    stream.push_back(op(".variable"));
}

any_regular_t run(virtual_machine_t& vm, const array_t& stream) {
    const std::size_t before = vm.size();
    vm.evaluate(stream);
    EXPECT_EQ(vm.size(), before + 1);
    any_regular_t result = vm.back();
    vm.pop_back();
    return result;
}

any_regular_t run(const array_t& stream) {
    virtual_machine_t vm;
    return run(vm, stream);
}

double number(const any_regular_t& x) {
    return x.cast<double>();
}

/// The text of the exception of type E that `f` raises; another outcome is reported as such.
template <typename E, typename F>
std::string failure(F f) {
    try {
        f();
    } catch (const E& error) {
        return error.what();
    } catch (...) {
        return "other exception";
    }
    return "no exception";
}

template <typename E>
std::string failure_of(const array_t& stream, virtual_machine_t vm = virtual_machine_t()) {
    return failure<E>([&] { vm.evaluate(stream); });
}

/// A machine whose variable lookup reads a table and counts its calls; unknown names throw.
struct variables_t {
    std::vector<std::pair<name_t, any_regular_t>> values;
    int calls = 0;

    void install(virtual_machine_t& vm) {
        vm.set_variable_lookup([this](name_t name) -> any_regular_t {
            ++calls;
            for (const auto& [key, value] : values)
                if (key == name)
                    return value;
            throw std::logic_error(std::string("undefined variable ") + name.c_str());
        });
    }
};

/// The deferred operands run through the loop's in-place path unless an operator override is
/// installed; these tests run both roads. The override sits on a token the tests never use.
class DeferredOperands : public ::testing::TestWithParam<bool> {
protected:
    virtual_machine_t machine() const {
        virtual_machine_t vm;
        if (GetParam())
            vm.set_operator_override(
                name_t(".bitwise_xor"),
                [](const any_regular_t& a, const any_regular_t&) { return a; });
        return vm;
    }
};

} // namespace

// Literals ----------------------------------------------------------------------------------

TEST(VirtualMachineLiterals, PushesCopiesOfLiterals) {
    EXPECT_EQ(run(S{1.5}), any_regular_t(1.5));
    EXPECT_EQ(run(S{str("text")}), str("text"));
    EXPECT_EQ(run(S{true}), any_regular_t(true));
    EXPECT_EQ(run(S{any_regular_t()}), any_regular_t(empty_t()));
    EXPECT_EQ(run(S{any_regular_t(array_t())}), any_regular_t(array_t()));
    dictionary_t d;
    d.insert({name_t("k"), any_regular_t(1.0)});
    EXPECT_EQ(run(S{any_regular_t(d)}), any_regular_t(d));
}

TEST(VirtualMachineLiterals, ANonOperatorNameIsAValueNotAVariable) {
    // No lookup is installed, so a lookup would fail.
    EXPECT_EQ(run(S{nm("abc")}), nm("abc"));
    EXPECT_EQ(run(S{nm("")}), any_regular_t(name_t()));
}

TEST(VirtualMachineLiterals, SeveralResultsStayOnTheStack) {
    virtual_machine_t vm;
    vm.evaluate(S{1.0, 2.0, 3.0});
    ASSERT_EQ(vm.size(), 3u);
    EXPECT_EQ(vm.back(), any_regular_t(3.0));
    vm.pop_back();
    EXPECT_EQ(vm.back(), any_regular_t(2.0));
    // The stack persists across calls.
    vm.evaluate(S{10.0, op(".add")});
    EXPECT_EQ(vm.back(), any_regular_t(12.0));
    EXPECT_EQ(vm.size(), 2u);
}

TEST(VirtualMachineLiterals, EmptyStackAccessThrows) {
    virtual_machine_t vm;
    vm.evaluate(array_t());
    EXPECT_EQ(vm.size(), 0u);
    EXPECT_EQ(failure<std::runtime_error>([&] { vm.back(); }),
              "virtual_machine_t: the stack is empty");
    EXPECT_EQ(failure<std::runtime_error>([&] { vm.pop_back(); }),
              "virtual_machine_t: the stack is empty");
}

// Arithmetic --------------------------------------------------------------------------------

TEST(VirtualMachineArithmetic, IeeeDoubleArithmetic) {
    EXPECT_EQ(number(run(S{2.0, 3.0, op(".add")})), 5.0);
    EXPECT_EQ(number(run(S{2.0, 3.0, op(".subtract")})), -1.0);
    EXPECT_EQ(number(run(S{2.0, 3.0, op(".multiply")})), 6.0);
    EXPECT_EQ(number(run(S{3.0, 2.0, op(".divide")})), 1.5);
    EXPECT_EQ(number(run(S{0.1, 0.2, op(".add")})), 0.1 + 0.2);
    // Operand order: bottom is the left operand.
    EXPECT_EQ(number(run(S{10.0, 4.0, 2.0, op(".subtract"), op(".subtract")})), 8.0);
}

TEST(VirtualMachineArithmetic, DivisionByZeroIsNotAnError) {
    EXPECT_EQ(number(run(S{1.0, 0.0, op(".divide")})), std::numeric_limits<double>::infinity());
    EXPECT_EQ(number(run(S{-1.0, 0.0, op(".divide")})), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(number(run(S{0.0, 0.0, op(".divide")}))));
}

TEST(VirtualMachineArithmetic, OperandsMustBeNumbers) {
    EXPECT_EQ(failure_of<std::runtime_error>(S{1.0, str("a"), op(".add")}),
              "expected `number` found `string`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{true, 1.0, op(".multiply")}),
              "expected `number` found `boolean`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{any_regular_t(), 1.0, op(".divide")}),
              "expected `number` found `empty`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{nm("n"), 1.0, op(".subtract")}),
              "expected `number` found `name`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{any_regular_t(array_t()), 1.0, op(".add")}),
              "expected `number` found `array`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{any_regular_t(dictionary_t()), 1.0, op(".add")}),
              "expected `number` found `dictionary`");
}

TEST(VirtualMachineArithmetic, ModulusTruncatesToSigned32Bits) {
    EXPECT_EQ(number(run(S{5.0, 3.9, op(".modulus")})), 2.0);
    EXPECT_EQ(number(run(S{5.9, 3.0, op(".modulus")})), 2.0);
    // The sign of the left operand.
    EXPECT_EQ(number(run(S{-7.0, 3.0, op(".modulus")})), -1.0);
    EXPECT_EQ(number(run(S{7.0, -3.0, op(".modulus")})), 1.0);
    EXPECT_EQ(number(run(S{-7.9, 2.0, op(".modulus")})), -1.0);
    // Low 32 bits: 2^32 + 5 reads as 5; 3e9 reads as 3e9 - 2^32.
    EXPECT_EQ(number(run(S{4294967301.0, 3.0, op(".modulus")})), 2.0);
    EXPECT_EQ(number(run(S{3e9, 7.0, op(".modulus")})),
              static_cast<double>(static_cast<std::int32_t>(3000000000u) % 7));
    EXPECT_EQ(number(run(S{-2147483648.0, -1.0, op(".modulus")})), 0.0);
}

TEST(VirtualMachineArithmetic, ModulusByZeroDoesNotTrap) {
    // No test for a zero right operand is made; the machine answers NaN instead of trapping.
    EXPECT_TRUE(std::isnan(number(run(S{5.0, 0.0, op(".modulus")}))));
    EXPECT_TRUE(std::isnan(number(run(S{5.0, 0.5, op(".modulus")}))));
    EXPECT_TRUE(std::isnan(number(run(S{5.0, 4294967296.0, op(".modulus")}))));
}

TEST(VirtualMachineArithmetic, ModulusOfNonFiniteValues) {
    // NaN and the infinities read as 0 when truncated to an integer.
    EXPECT_EQ(number(run(S{std::numeric_limits<double>::infinity(), 3.0, op(".modulus")})), 0.0);
    EXPECT_EQ(failure_of<std::runtime_error>(S{str("5"), 3.0, op(".modulus")}),
              "expected `number` found `string`");
}

// Unary operators ---------------------------------------------------------------------------

TEST(VirtualMachineUnary, NotNegatesABoolean) {
    EXPECT_EQ(run(S{true, op(".not")}), any_regular_t(false));
    EXPECT_EQ(run(S{false, op(".not")}), any_regular_t(true));
    EXPECT_EQ(failure_of<std::runtime_error>(S{1.0, op(".not")}),
              "expected `boolean` found `number`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{any_regular_t(), op(".not")}),
              "expected `boolean` found `empty`");
}

TEST(VirtualMachineUnary, UnaryNegateFlipsTheSignBit) {
    EXPECT_EQ(number(run(S{2.5, op(".unary_negate")})), -2.5);
    EXPECT_EQ(number(run(S{-2.5, op(".unary_negate")})), 2.5);
    const double negative_zero = number(run(S{0.0, op(".unary_negate")}));
    EXPECT_EQ(negative_zero, 0.0);
    EXPECT_TRUE(std::signbit(negative_zero));
    EXPECT_FALSE(std::signbit(number(run(S{-0.0, op(".unary_negate")}))));
    const double nan =
        number(run(S{std::numeric_limits<double>::quiet_NaN(), op(".unary_negate")}));
    EXPECT_TRUE(std::isnan(nan));
    EXPECT_TRUE(std::signbit(nan));
    EXPECT_EQ(number(run(S{std::numeric_limits<double>::infinity(), op(".unary_negate")})),
              -std::numeric_limits<double>::infinity());
    EXPECT_EQ(failure_of<std::runtime_error>(S{str("1"), op(".unary_negate")}),
              "expected `number` found `string`");
}

// Comparison and equality -------------------------------------------------------------------

TEST(VirtualMachineComparison, RelationalOperatorsGiveBooleans) {
    EXPECT_EQ(run(S{1.0, 2.0, op(".less")}), any_regular_t(true));
    EXPECT_EQ(run(S{2.0, 2.0, op(".less")}), any_regular_t(false));
    EXPECT_EQ(run(S{3.0, 2.0, op(".greater")}), any_regular_t(true));
    EXPECT_EQ(run(S{2.0, 2.0, op(".greater")}), any_regular_t(false));
    EXPECT_EQ(run(S{2.0, 2.0, op(".less_equal")}), any_regular_t(true));
    EXPECT_EQ(run(S{3.0, 2.0, op(".less_equal")}), any_regular_t(false));
    EXPECT_EQ(run(S{2.0, 2.0, op(".greater_equal")}), any_regular_t(true));
    EXPECT_EQ(run(S{1.0, 2.0, op(".greater_equal")}), any_regular_t(false));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(run(S{nan, nan, op(".less_equal")}), any_regular_t(false));
}

TEST(VirtualMachineComparison, RelationalOperandsMustBeNumbers) {
    EXPECT_EQ(failure_of<std::runtime_error>(S{str("a"), str("b"), op(".less")}),
              "expected `number` found `string`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{1.0, true, op(".greater_equal")}),
              "expected `number` found `boolean`");
}

TEST(VirtualMachineComparison, EqualityComparesKindAndValueWithoutError) {
    EXPECT_EQ(run(S{1.0, 1.0, op(".equal")}), any_regular_t(true));
    EXPECT_EQ(run(S{1.0, true, op(".equal")}), any_regular_t(false));
    EXPECT_EQ(run(S{1.0, true, op(".not_equal")}), any_regular_t(true));
    EXPECT_EQ(run(S{str("a"), str("a"), op(".equal")}), any_regular_t(true));
    EXPECT_EQ(run(S{str("a"), nm("a"), op(".equal")}), any_regular_t(false));
    EXPECT_EQ(run(S{nm("a"), nm("a"), op(".equal")}), any_regular_t(true));
    EXPECT_EQ(run(S{any_regular_t(), any_regular_t(), op(".equal")}), any_regular_t(true));
    EXPECT_EQ(run(S{1.0, 2.0, 2.0, op(".array"), 1.0, 2.0, 2.0, op(".array"), op(".equal")}),
              any_regular_t(true));
    EXPECT_EQ(run(S{1.0, 2.0, op(".not_equal")}), any_regular_t(true));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(run(S{nan, nan, op(".equal")}), any_regular_t(false));
}

// Bitwise operators -------------------------------------------------------------------------

TEST(VirtualMachineBitwise, AndOrXorOn32BitIntegersWithUnsignedResults) {
    EXPECT_EQ(number(run(S{-1.0, 255.0, op(".bitwise_and")})), 255.0);
    EXPECT_EQ(number(run(S{6.0, 9.0, op(".bitwise_or")})), 15.0);
    EXPECT_EQ(number(run(S{5.0, 1.0, op(".bitwise_xor")})), 4.0);
    EXPECT_EQ(number(run(S{-1.0, 0.0, op(".bitwise_or")})), 4294967295.0);
    EXPECT_EQ(number(run(S{-2.0, 1.0, op(".bitwise_xor")})), 4294967295.0);
    EXPECT_EQ(number(run(S{3.9, 2.5, op(".bitwise_and")})), 2.0);
    EXPECT_EQ(number(run(S{4294967297.0, 3.0, op(".bitwise_and")})), 1.0);
}

TEST(VirtualMachineBitwise, ShiftsMaskTheCountAndShiftLogically) {
    EXPECT_EQ(number(run(S{1.0, 33.0, op(".bitwise_lshift")})), 2.0);
    EXPECT_EQ(number(run(S{-1.0, 28.0, op(".bitwise_rshift")})), 15.0);
    EXPECT_EQ(number(run(S{1.0, 31.0, op(".bitwise_lshift")})), 2147483648.0);
    EXPECT_EQ(number(run(S{1.0, -1.0, op(".bitwise_lshift")})), 2147483648.0);
    EXPECT_EQ(number(run(S{3.0, 32.0, op(".bitwise_lshift")})), 3.0);
    EXPECT_EQ(number(run(S{-2147483648.0, 31.0, op(".bitwise_rshift")})), 1.0);
}

TEST(VirtualMachineBitwise, NegateComplementsAsUnsigned) {
    EXPECT_EQ(number(run(S{0.0, op(".bitwise_negate")})), 4294967295.0);
    EXPECT_EQ(number(run(S{-1.0, op(".bitwise_negate")})), 0.0);
    EXPECT_EQ(number(run(S{5.0, op(".bitwise_negate")})), 4294967290.0);
}

TEST(VirtualMachineBitwise, OperandsMustBeNumbers) {
    EXPECT_EQ(failure_of<std::runtime_error>(S{true, 1.0, op(".bitwise_and")}),
              "expected `number` found `boolean`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{1.0, str("2"), op(".bitwise_lshift")}),
              "expected `number` found `string`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{str("2"), op(".bitwise_negate")}),
              "expected `number` found `string`");
}

// Short-circuit and conditional operators ---------------------------------------------------

TEST_P(DeferredOperands, OrSkipsItsRightOperandWhenTheLeftIsTrue) {
    virtual_machine_t vm = machine();
    array_t right;
    var(right, "x");
    // No variable lookup installed: evaluating x would fail.
    EXPECT_EQ(run(vm, S{true, any_regular_t(right), op(".or")}), any_regular_t(true));
    EXPECT_EQ(run(vm, S{false, S{true}, op(".or")}), any_regular_t(true));
    EXPECT_EQ(run(vm, S{false, S{false}, op(".or")}), any_regular_t(false));
    EXPECT_EQ(failure<std::logic_error>([&] {
                  vm.evaluate(S{false, right, op(".or")});
              }),
              "No variable lookup installed.");
}

TEST_P(DeferredOperands, AndSkipsItsRightOperandWhenTheLeftIsFalse) {
    virtual_machine_t vm = machine();
    array_t right;
    var(right, "x");
    EXPECT_EQ(run(vm, S{false, any_regular_t(right), op(".and")}), any_regular_t(false));
    EXPECT_EQ(run(vm, S{true, S{true}, op(".and")}), any_regular_t(true));
    EXPECT_EQ(run(vm, S{true, S{false}, op(".and")}), any_regular_t(false));
    EXPECT_EQ(failure<std::logic_error>([&] {
                  vm.evaluate(S{true, right, op(".and")});
              }),
              "No variable lookup installed.");
}

TEST_P(DeferredOperands, LogicalOperandsMustBeBooleans) {
    virtual_machine_t vm = machine();
    EXPECT_EQ(failure<std::runtime_error>([&] {
                  vm.evaluate(S{1.0, S{true}, op(".and")});
              }),
              "expected `boolean` found `number`");
    EXPECT_EQ(failure<std::runtime_error>([&] {
                  vm.evaluate(S{true, S{1.0}, op(".and")});
              }),
              "expected `boolean` found `number`");
    EXPECT_EQ(failure<std::runtime_error>([&] {
                  vm.evaluate(S{false, S{str("a")}, op(".or")});
              }),
              "expected `boolean` found `string`");
    // The left value is the result when the right side is skipped: it is never tested further.
    EXPECT_EQ(run(vm, S{true, S{str("a")}, op(".or")}), any_regular_t(true));
}

TEST_P(DeferredOperands, IfElseEvaluatesOnlyTheChosenBranch) {
    virtual_machine_t vm = machine();
    variables_t variables;
    variables.values = {{name_t("a"), any_regular_t(1.0)}};
    variables.install(vm);
    array_t then_branch;
    var(then_branch, "a");
    array_t else_branch;
    var(else_branch, "undefined");
    EXPECT_EQ(run(vm, S{true, then_branch, else_branch, op(".ifelse")}), any_regular_t(1.0));
    EXPECT_EQ(variables.calls, 1);
    EXPECT_EQ(run(vm, S{false, else_branch, then_branch, op(".ifelse")}), any_regular_t(1.0));
    EXPECT_EQ(variables.calls, 2);
    EXPECT_EQ(failure<std::logic_error>([&] {
                  vm.evaluate(S{false, then_branch, else_branch, op(".ifelse")});
              }),
              "undefined variable undefined");
}

TEST_P(DeferredOperands, IfElseConditionMustBeABoolean) {
    virtual_machine_t vm = machine();
    EXPECT_EQ(failure<std::runtime_error>([&] {
                  vm.evaluate(S{1.0, S{1.0}, S{2.0}, op(".ifelse")});
              }),
              "expected `boolean` found `number`");
}

TEST_P(DeferredOperands, DeferredOperandsNestAndLeaveOneResult) {
    virtual_machine_t vm = machine();
    // (false || (true && !false)) ? 1 + 2 : 0
    const array_t stream = S{false,     S{true, S{false, op(".not")}, op(".and")},
                             op(".or"), S{1.0, 2.0, op(".add")},
                             S{0.0},    op(".ifelse")};
    EXPECT_EQ(run(vm, stream), any_regular_t(3.0));
    EXPECT_EQ(vm.size(), 0u);
}

INSTANTIATE_TEST_SUITE_P(VirtualMachineDeferred, DeferredOperands, ::testing::Bool(),
                         [](const auto& info) { return info.param ? "General" : "InPlace"; });

TEST(VirtualMachineDeferred, HandlersRequireArraysWhenRunAlone) {
    // A deferred operand that is not an array reaches the handler, which reads it exactly.
    EXPECT_EQ(failure_of<std::runtime_error>(S{true, 1.0, op(".and")}),
              "expected `array` found `number`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{true, 1.0, S{2.0}, op(".ifelse")}),
              "expected `array` found `number`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{true, S{1.0}, 2.0, op(".ifelse")}),
              "expected `array` found `number`");
}

// Variables ---------------------------------------------------------------------------------

TEST(VirtualMachineVariables, LookupReceivesTheName) {
    virtual_machine_t vm;
    std::vector<std::string> asked;
    vm.set_variable_lookup([&](name_t name) {
        asked.push_back(name.c_str());
        return any_regular_t(static_cast<double>(asked.size()));
    });
    array_t stream;
    var(stream, "first");
    var(stream, "second");
    stream.push_back(op(".subtract"));
    EXPECT_EQ(number(run(vm, stream)), -1.0);
    EXPECT_EQ(asked, (std::vector<std::string>{"first", "second"}));
}

TEST(VirtualMachineVariables, NoLookupInstalled) {
    array_t stream;
    var(stream, "x");
    EXPECT_EQ(failure_of<std::logic_error>(stream), "No variable lookup installed.");
    // The same when the name comes from a computation rather than the token before.
    EXPECT_EQ(failure_of<std::logic_error>(
                  S{nm("x"), 1.0, op(".array"), 0.0, op(".index"), op(".variable")}),
              "No variable lookup installed.");
}

TEST(VirtualMachineVariables, OperandMustBeAName) {
    virtual_machine_t vm;
    vm.set_variable_lookup([](name_t) { return any_regular_t(1.0); });
    EXPECT_EQ(failure_of<std::runtime_error>(S{1.0, op(".variable")}, vm),
              "expected `name` found `number`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{str("x"), op(".variable")}, vm),
              "expected `name` found `string`");
}

TEST(VirtualMachineVariables, LookupMayReenterTheMachine) {
    // A sheet's lookup evaluates other cells on the same machine.
    virtual_machine_t vm;
    const array_t inner = S{40.0, 2.0, op(".add")};
    vm.set_variable_lookup([&](name_t) {
        vm.evaluate(inner);
        any_regular_t result = vm.back();
        vm.pop_back();
        return result;
    });
    array_t stream;
    for (int i = 0; i != 100; ++i)
        var(stream, "x"); // enough to move the stack's storage
    for (int i = 0; i != 99; ++i)
        stream.push_back(op(".add"));
    EXPECT_EQ(number(run(vm, stream)), 4200.0);
}

// Arrays and dictionaries -------------------------------------------------------------------

TEST(VirtualMachineContainers, ArrayKeepsOrder) {
    array_t expected{any_regular_t(1.0), str("b"), any_regular_t(true)};
    EXPECT_EQ(run(S{1.0, str("b"), true, 3.0, op(".array")}), any_regular_t(expected));
    EXPECT_EQ(run(S{0.0, op(".array")}), any_regular_t(array_t()));
    // The count truncates.
    EXPECT_EQ(run(S{7.0, 1.9, op(".array")}), any_regular_t(array_t{any_regular_t(7.0)}));
}

TEST(VirtualMachineContainers, ArrayCountMustBeANumberTheStackCanSupply) {
    EXPECT_EQ(failure_of<std::runtime_error>(S{str("2"), op(".array")}),
              "expected `number` found `string`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{1.0, 2.0, op(".array")}),
              "virtual_machine_t: stack underflow at '.array'");
    EXPECT_EQ(failure_of<std::runtime_error>(S{1.0, -2.0, op(".array")}),
              "virtual_machine_t: invalid count at '.array'");
    EXPECT_EQ(failure_of<std::runtime_error>(
                  S{1.0, std::numeric_limits<double>::quiet_NaN(), op(".array")}),
              "virtual_machine_t: invalid count at '.array'");
}

TEST(VirtualMachineContainers, DictionaryFromPairsKeepsTheFirstOfARepeatedKey) {
    const any_regular_t result =
        run(S{nm("a"), 1.0, nm("b"), str("x"), nm("a"), 3.0, 3.0, op(".dictionary")});
    const dictionary_t& d = result.cast<dictionary_t>();
    EXPECT_EQ(d.size(), 2u);
    EXPECT_EQ(get_value(d, name_t("a")), any_regular_t(1.0));
    EXPECT_EQ(get_value(d, name_t("b")), str("x"));
    EXPECT_EQ(run(S{0.0, op(".dictionary")}), any_regular_t(dictionary_t()));
}

TEST(VirtualMachineContainers, DictionaryKeysMustBeNames) {
    EXPECT_EQ(failure_of<std::runtime_error>(S{1.0, 2.0, 1.0, op(".dictionary")}),
              "expected `name` found `number`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{nm("a"), 2.0, 2.0, op(".dictionary")}),
              "virtual_machine_t: stack underflow at '.dictionary'");
}

// Indexing ----------------------------------------------------------------------------------

TEST(VirtualMachineIndex, ArrayByNumber) {
    const array_t array = {any_regular_t(10.0), any_regular_t(20.0)};
    EXPECT_EQ(run(S{array, 0.0, op(".index")}), any_regular_t(10.0));
    EXPECT_EQ(run(S{array, 1.9, op(".index")}), any_regular_t(20.0));
    EXPECT_EQ(failure_of<std::runtime_error>(S{array, 2.0, op(".index")}),
              "index: array index out of range");
    EXPECT_EQ(failure_of<std::runtime_error>(S{array, -1.0, op(".index")}),
              "index: array index out of range");
    EXPECT_EQ(failure_of<std::runtime_error>(
                  S{array, std::numeric_limits<double>::quiet_NaN(), op(".index")}),
              "index: array index out of range");
    EXPECT_EQ(failure_of<std::runtime_error>(S{array, 1e30, op(".index")}),
              "index: array index out of range");
}

TEST(VirtualMachineIndex, DictionaryByName) {
    dictionary_t d;
    d.insert({name_t("a"), any_regular_t(1.0)});
    EXPECT_EQ(run(S{d, nm("a"), op(".index")}), any_regular_t(1.0));
    EXPECT_EQ(failure_of<std::out_of_range>(S{d, nm("b"), op(".index")}),
              "dictionary_t: key 'b' not found");
}

TEST(VirtualMachineIndex, WrongKinds) {
    const array_t array = {any_regular_t(10.0)};
    EXPECT_EQ(failure_of<std::runtime_error>(S{array, nm("k"), op(".index")}),
              "expected `dictionary` found `array`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{5.0, 0.0, op(".index")}),
              "expected `array` found `number`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{array, str("0"), op(".index")}),
              "expected `number` found `string`");
    EXPECT_EQ(failure_of<std::runtime_error>(S{array, true, op(".index")}),
              "expected `number` found `boolean`");
}

TEST(VirtualMachineIndex, InstalledLookupsReplaceTheBuiltInRules) {
    virtual_machine_t vm;
    vm.set_dictionary_index_lookup([](const any_regular_t& container, name_t key) {
        return any_regular_t(std::string(container.cast<std::string>()) + "." + key.c_str());
    });
    vm.set_array_index_lookup([](const any_regular_t& container, std::uint64_t index) {
        return any_regular_t(container.cast<double>() + static_cast<double>(index));
    });
    EXPECT_EQ(run(vm, S{str("cell"), nm("k"), op(".index")}), str("cell.k"));
    EXPECT_EQ(number(run(vm, S{100.0, 7.5, op(".index")})), 107.0);
    // Negative indices wrap as two's complement does.
    vm.set_array_index_lookup([](const any_regular_t&, std::uint64_t index) {
        return any_regular_t(index == std::numeric_limits<std::uint64_t>::max());
    });
    EXPECT_EQ(run(vm, S{100.0, -1.0, op(".index")}), any_regular_t(true));
}

// Function calls ----------------------------------------------------------------------------

TEST(VirtualMachineFunction, UnknownFunctionWithoutLookup) {
    EXPECT_EQ(
        failure_of<std::logic_error>(S{1.0, 1.0, op(".array"), nm("nosuch"), op(".function")}),
        "function 'nosuch' not defined.");
    EXPECT_EQ(failure_of<std::logic_error>(
                  S{nm("k"), 1.0, 1.0, op(".dictionary"), nm("nosuch"), op(".function")}),
              "function 'nosuch' not defined.");
    // scale is a dictionary function only.
    EXPECT_EQ(failure_of<std::logic_error>(S{array_t(), nm("scale"), op(".function")}),
              "function 'scale' not defined.");
}

TEST(VirtualMachineFunction, LookupsReceiveNameAndArguments) {
    virtual_machine_t vm;
    vm.set_array_function_lookup([](name_t name, const array_t& arguments) {
        return any_regular_t(std::string(name.c_str()) + "/" + std::to_string(arguments.size()));
    });
    vm.set_dictionary_function_lookup([](name_t name, const dictionary_t& arguments) {
        return any_regular_t(std::string(name.c_str()) + ":" +
                             std::to_string(get_value(arguments, name_t("k")).cast<double>()));
    });
    EXPECT_EQ(run(vm, S{1.0, 2.0, 2.0, op(".array"), nm("f"), op(".function")}), str("f/2"));
    EXPECT_EQ(run(vm, S{nm("k"), 5.0, 1.0, op(".dictionary"), nm("g"), op(".function")}),
              str("g:5.000000"));
    // Built-ins come first.
    EXPECT_EQ(run(vm, S{3.0, 2.0, 2.0, op(".array"), nm("min"), op(".function")}),
              any_regular_t(2.0));
}

TEST(VirtualMachineFunction, ArgumentsMustBeAnArrayOrADictionary) {
    EXPECT_THROW(run(S{1.0, nm("min"), op(".function")}), vorlen::bad_cast);
    EXPECT_EQ(failure_of<std::runtime_error>(S{array_t(), 1.0, op(".function")}),
              "expected `name` found `number`");
}

// Built-in functions ------------------------------------------------------------------------

namespace {

any_regular_t call(const char* function, array_t arguments) {
    array_t stream;
    const double count = static_cast<double>(arguments.size());
    for (auto& argument : arguments)
        stream.push_back(argument);
    stream.push_back(count);
    stream.push_back(op(".array"));
    stream.push_back(nm(function));
    stream.push_back(op(".function"));
    return run(stream);
}

template <typename E = std::runtime_error>
std::string call_failure(const char* function, array_t arguments) {
    return failure<E>([&] { call(function, std::move(arguments)); });
}

struct client_type_t {
    int x;
    friend bool operator==(const client_type_t&, const client_type_t&) = default;
};

} // namespace

TEST(VirtualMachineBuiltins, TypeofNamesEveryKind) {
    EXPECT_EQ(call("typeof", {1.0}), nm("number"));
    EXPECT_EQ(call("typeof", {true}), nm("boolean"));
    EXPECT_EQ(call("typeof", {any_regular_t()}), nm("empty"));
    EXPECT_EQ(call("typeof", {nm("abc")}), nm("name"));
    EXPECT_EQ(call("typeof", {str("s")}), nm("string"));
    EXPECT_EQ(call("typeof", {array_t()}), nm("array"));
    EXPECT_EQ(call("typeof", {dictionary_t()}), nm("dictionary"));
    // Only the first argument counts.
    EXPECT_EQ(call("typeof", {1.0, str("s")}), nm("number"));
    // A client type: its run-time name.
    const any_regular_t client = call("typeof", {any_regular_t::make(client_type_t{1})});
    EXPECT_NE(std::string(client.cast<name_t>().c_str()).find("client_type_t"), std::string::npos);
    EXPECT_EQ(call_failure("typeof", {}), "typeof: parameter error");
}

TEST(VirtualMachineBuiltins, MinAndMaxKeepTheEarlierArgumentOnATie) {
    EXPECT_EQ(call("min", {3.0, 1.0, 2.0}), any_regular_t(1.0));
    EXPECT_EQ(call("max", {3.0, 1.0, 4.0}), any_regular_t(4.0));
    EXPECT_EQ(call("min", {1.0, 1.0}), any_regular_t(1.0));
    // 0 and -0 are equal; the first stays, which the sign shows.
    EXPECT_FALSE(std::signbit(number(call("min", {0.0, -0.0}))));
    EXPECT_TRUE(std::signbit(number(call("min", {-0.0, 0.0}))));
    EXPECT_FALSE(std::signbit(number(call("max", {0.0, -0.0}))));
    EXPECT_TRUE(std::signbit(number(call("max", {-0.0, 0.0}))));
    EXPECT_EQ(call("min", {5.0}), any_regular_t(5.0));
    EXPECT_EQ(call_failure("min", {}), "min: parameter error");
    EXPECT_EQ(call_failure("max", {}), "max: parameter error");
    EXPECT_THROW(call("min", {1.0, str("a")}), vorlen::bad_cast);
    EXPECT_THROW(call("max", {true}), vorlen::bad_cast);
}

TEST(VirtualMachineBuiltins, RoundHalvesAwayFromZero) {
    EXPECT_EQ(call("round", {2.5}), any_regular_t(3.0));
    EXPECT_EQ(call("round", {-2.5}), any_regular_t(-3.0));
    EXPECT_EQ(call("round", {2.4}), any_regular_t(2.0));
    EXPECT_EQ(call("round", {0.5, str("ignored")}), any_regular_t(1.0));
    EXPECT_EQ(call_failure("round", {}), "round: parameter error");
    EXPECT_EQ(call_failure("round", {str("2.5")}), "round: parameter error");
}

TEST(VirtualMachineBuiltins, LocalizeUsesTheRegisteredRoutine) {
    set_localization_proc(nullptr);
    EXPECT_FALSE(localization_ready());
    EXPECT_EQ(call("localize", {str("$$$/a/b=Text")}), str("$$$/a/b=Text"));
    EXPECT_EQ(failure<std::runtime_error>([] { invoke_localization("x"); }),
              "Attempting to call an unregistered localization routine.");
    set_localization_proc([](const std::string& text) {
        const auto equal = text.find('=');
        return equal == std::string::npos ? text : text.substr(equal + 1);
    });
    EXPECT_TRUE(localization_ready());
    EXPECT_EQ(call("localize", {str("$$$/a/b=Text")}), str("Text"));
    EXPECT_EQ(invoke_localization("k=v"), "v");
    set_localization_proc(nullptr);
    EXPECT_FALSE(localization_ready());
    EXPECT_EQ(call_failure("localize", {}), "localize: parameter error");
    EXPECT_EQ(call_failure("localize", {str("a"), str("b")}), "localize: parameter error");
    EXPECT_EQ(call_failure("localize", {1.0}), "localize: parameter error");
}

TEST(VirtualMachineBuiltins, XmlEscapeAndUnescape) {
    EXPECT_EQ(call("xml_escape", {str("a<b\t")}), str("a&lt;b&#x09;"));
    EXPECT_EQ(call("xml_unescape", {str("&#65;&#x41;&amp;")}), str("AA&"));
    EXPECT_EQ(call_failure("xml_escape", {}), "xml_escape: parameter error");
    EXPECT_EQ(call_failure("xml_escape", {1.0}), "xml_escape: parameter error");
    EXPECT_EQ(call_failure("xml_unescape", {str("a"), str("b")}), "xml_unescape: parameter error");
    EXPECT_EQ(call_failure("xml_unescape", {nm("a")}), "xml_unescape: parameter error");
}

TEST(VirtualMachineBuiltins, AnySearchesAnArray) {
    const array_t numbers = {any_regular_t(1.0), any_regular_t(2.0), any_regular_t(3.0)};
    EXPECT_EQ(call("any", {2.0, numbers}), any_regular_t(true));
    EXPECT_EQ(call("any", {5.0, numbers}), any_regular_t(false));
    // Only the first element's kind is tested; later elements of another kind do not match.
    EXPECT_EQ(call("any", {str("a"), array_t{str("b"), any_regular_t(1.0), str("a")}}),
              any_regular_t(true));
    EXPECT_EQ(call("any", {1.0, array_t{any_regular_t(2.0), any_regular_t(true)}}),
              any_regular_t(false));
    // An empty array is not a supported argument; the machine answers false.
    EXPECT_EQ(call("any", {1.0, array_t()}), any_regular_t(false));
    EXPECT_EQ(call_failure("any", {str("a"), numbers}),
              "any: array value must match type of first argument");
    EXPECT_EQ(call_failure("any", {1.0}),
              "any: parameter error any function requires a value and an array");
    EXPECT_EQ(call_failure("any", {1.0, 2.0}),
              "any: parameter error any function requires a value and an array");
    EXPECT_EQ(call_failure("any", {1.0, numbers, numbers}),
              "any: parameter error any function requires a value and an array");
}

TEST(VirtualMachineBuiltins, ScaleOfNamedArguments) {
    auto scale = [](std::initializer_list<std::pair<const char*, any_regular_t>> pairs) {
        array_t stream;
        for (const auto& [key, value] : pairs) {
            stream.push_back(nm(key));
            stream.push_back(value);
        }
        stream.push_back(static_cast<double>(pairs.size()));
        stream.push_back(op(".dictionary"));
        stream.push_back(nm("scale"));
        stream.push_back(op(".function"));
        return stream;
    };
    EXPECT_EQ(run(scale({{"x", 2.0}})), any_regular_t(2.0));
    EXPECT_EQ(run(scale({{"x", 2.0}, {"m", 3.0}, {"b", 1.0}})), any_regular_t(7.0));
    EXPECT_EQ(run(scale({{"b", 1.0}})), any_regular_t(1.0));
    EXPECT_EQ(run(scale({})), any_regular_t(0.0));
    EXPECT_EQ(failure_of<std::runtime_error>(scale({{"x", str("2")}})),
              "expected `number` found `string`");
}

// Operator dispatch and overrides -----------------------------------------------------------

TEST(VirtualMachineDispatch, UnknownOperatorToken) {
    EXPECT_EQ(failure_of<std::logic_error>(S{1.0, 2.0, op(".frobnicate")}),
              "static_table key not found");
    EXPECT_EQ(failure_of<std::logic_error>(S{op(".")}), "static_table key not found");
    EXPECT_EQ(failure_of<std::logic_error>(S{1.0, 2.0, op(".ADD")}), "static_table key not found");
    EXPECT_EQ(failure_of<std::logic_error>(S{1.0, 2.0, op(".zzz")}), "static_table key not found");
}

TEST(VirtualMachineDispatch, EveryOperatorTokenIsKnown) {
    const char* tokens[] = {".not",
                            ".unary_negate",
                            ".add",
                            ".subtract",
                            ".multiply",
                            ".modulus",
                            ".divide",
                            ".less",
                            ".greater",
                            ".less_equal",
                            ".greater_equal",
                            ".equal",
                            ".not_equal",
                            ".ifelse",
                            ".index",
                            ".function",
                            ".array",
                            ".dictionary",
                            ".variable",
                            ".and",
                            ".or",
                            ".bitwise_and",
                            ".bitwise_xor",
                            ".bitwise_or",
                            ".bitwise_rshift",
                            ".bitwise_lshift",
                            ".bitwise_negate"};
    for (const char* token : tokens) {
        // On an empty stack each one fails, but not as an unknown token.
        const std::string text = failure_of<std::exception>(S{op(token)});
        EXPECT_NE(text, "static_table key not found") << token;
        EXPECT_NE(text, "no exception") << token;
    }
}

TEST(VirtualMachineDispatch, OverridesComeBeforeTheTable) {
    virtual_machine_t vm;
    vm.set_operator_override(name_t(".add"), [](const any_regular_t& a, const any_regular_t& b) {
        return any_regular_t(a.cast<std::string>() + b.cast<std::string>());
    });
    EXPECT_EQ(run(vm, S{str("ab"), str("cd"), op(".add")}), str("abcd"));
    // Other operators still use the table.
    EXPECT_EQ(number(run(vm, S{2.0, 3.0, op(".multiply")})), 6.0);
    // A token the table does not know can be given meaning.
    vm.set_operator_override(name_t(".concat"), [](const any_regular_t& a, const any_regular_t& b) {
        return any_regular_t(a.cast<double>() * 10 + b.cast<double>());
    });
    EXPECT_EQ(number(run(vm, S{1.0, 2.0, op(".concat")})), 12.0);
    EXPECT_EQ(failure<std::runtime_error>([&] {
                  vm.evaluate(S{1.0, op(".concat")});
              }),
              "virtual_machine_t: stack underflow at '.concat'");
    // Removing an override restores the table's handler.
    vm.set_operator_override(name_t(".add"), nullptr);
    EXPECT_EQ(number(run(vm, S{2.0, 3.0, op(".add")})), 5.0);
}

TEST(VirtualMachineDispatch, OverrideOfADeferredOperatorSeesTheArray) {
    virtual_machine_t vm;
    vm.set_operator_override(name_t(".and"), [](const any_regular_t& a, const any_regular_t& b) {
        return any_regular_t(a.cast<bool>() && b.cast<array_t>().size() == 1);
    });
    EXPECT_EQ(run(vm, S{true, S{false}, op(".and")}), any_regular_t(true));
}

TEST(VirtualMachineDispatch, StackUnderflowIsAnError) {
    EXPECT_EQ(failure_of<std::runtime_error>(S{op(".add")}),
              "virtual_machine_t: stack underflow at '.add'");
    EXPECT_EQ(failure_of<std::runtime_error>(S{1.0, op(".less")}),
              "virtual_machine_t: stack underflow at '.less'");
    EXPECT_EQ(failure_of<std::runtime_error>(S{op(".not")}),
              "virtual_machine_t: stack underflow at '.not'");
    EXPECT_EQ(failure_of<std::runtime_error>(S{S{1.0}, op(".or")}),
              "virtual_machine_t: stack underflow at '.or'");
    EXPECT_EQ(failure_of<std::runtime_error>(S{S{1.0}, S{2.0}, op(".ifelse")}),
              "virtual_machine_t: stack underflow at '.ifelse'");
    EXPECT_EQ(failure_of<std::runtime_error>(S{true, S{}, op(".and")}),
              "virtual_machine_t: stack underflow at '.and'");
}

// In-place and general roads ------------------------------------------------------------------

namespace {

std::string outcome_of(virtual_machine_t vm, const array_t& stream) {
    try {
        vm.evaluate(stream);
        std::string result = type_name(vm.back().type_info()).c_str();
        if (vm.back().is<double>())
            result += " " + std::to_string(vm.back().cast<double>());
        if (vm.back().is<bool>())
            result += vm.back().cast<bool>() ? " true" : " false";
        return result + " size " + std::to_string(vm.size());
    } catch (const std::exception& error) {
        return std::string("error ") + error.what();
    }
}

} // namespace

TEST(VirtualMachineRoads, InPlaceNumericOperatorsMatchTheHandlers) {
    // A number or a variable followed by a numeric operator is applied in place; with an
    // operator override installed every operator goes through its handler. Both must agree,
    // failures included.
    virtual_machine_t plain;
    virtual_machine_t general;
    general.set_operator_override(name_t(".bitwise_xor"),
                                  [](const any_regular_t& a, const any_regular_t&) { return a; });
    for (virtual_machine_t* vm : {&plain, &general})
        vm->set_variable_lookup([](name_t name) -> any_regular_t {
            if (std::string(name.c_str()) == "s")
                return any_regular_t(std::string("text"));
            return any_regular_t(4.0);
        });
    const char* const operators[] = {".add",  ".subtract", ".multiply",   ".divide",
                                     ".less", ".greater",  ".less_equal", ".greater_equal"};
    for (const char* token : operators) {
        SCOPED_TRACE(token);
        array_t variable_right;
        var(variable_right, "v");
        array_t string_right;
        var(string_right, "s");
        const array_t streams[] = {
            S{6.0, 4.0, op(token)},
            S{4.0, 4.0, op(token)},
            S{true, 4.0, op(token)},
            S{str("a"), 4.0, op(token)},
            S{4.0, op(token)},
            S{6.0, variable_right[0], variable_right[1], op(token)},
            S{6.0, string_right[0], string_right[1], op(token)},
            S{any_regular_t(), variable_right[0], variable_right[1], op(token)},
            S{variable_right[0], variable_right[1], op(token)},
        };
        for (const array_t& stream : streams) {
            const std::string expected = outcome_of(general, stream);
            EXPECT_EQ(outcome_of(plain, stream), expected);
        }
    }
    EXPECT_EQ(outcome_of(plain, S{6.0, 4.0, op(".subtract")}), "number 2.000000 size 1");
    EXPECT_EQ(outcome_of(plain, S{4.0, op(".less")}),
              "error virtual_machine_t: stack underflow at '.less'");
}

// Copying -----------------------------------------------------------------------------------

TEST(VirtualMachineCopy, CopiesLookupsOverridesAndStack) {
    virtual_machine_t vm;
    vm.set_variable_lookup([](name_t) { return any_regular_t(7.0); });
    vm.set_operator_override(name_t(".add"), [](const any_regular_t&, const any_regular_t&) {
        return any_regular_t(-1.0);
    });
    vm.evaluate(S{str("kept")});
    virtual_machine_t copy(vm);
    ASSERT_EQ(copy.size(), 1u);
    EXPECT_EQ(copy.back(), str("kept"));
    array_t stream;
    var(stream, "x");
    EXPECT_EQ(number(run(copy, stream)), 7.0);
    EXPECT_EQ(number(run(copy, S{1.0, 2.0, op(".add")})), -1.0);
    virtual_machine_t assigned;
    assigned = copy;
    EXPECT_EQ(assigned.back(), str("kept"));
    virtual_machine_t moved(std::move(assigned));
    EXPECT_EQ(moved.back(), str("kept"));
    // The copy is independent.
    copy.pop_back();
    EXPECT_EQ(vm.size(), 1u);
}

// Guards ------------------------------------------------------------------------------------

namespace {

/// true && (true && (... && true)), nested `depth` levels.
array_t nested_and(int depth) {
    array_t stream = S{true};
    for (int i = 0; i != depth; ++i) {
        array_t outer;
        outer.push_back(any_regular_t(true));
        outer.push_back(any_regular_t(std::move(stream)));
        outer.push_back(op(".and"));
        stream = std::move(outer);
    }
    return stream;
}

} // namespace

TEST(VirtualMachineGuards, NestingIsBounded) {
    EXPECT_EQ(run(nested_and(virtual_machine_t::max_depth - 1)), any_regular_t(true));
    EXPECT_EQ(failure_of<std::runtime_error>(nested_and(virtual_machine_t::max_depth)),
              "virtual_machine_t: token streams nested deeper than 256 levels");
    // Far beyond the bound: refused, not a stack overflow.
    EXPECT_EQ(failure_of<std::runtime_error>(nested_and(5000)),
              "virtual_machine_t: token streams nested deeper than 256 levels");
}

TEST(VirtualMachineGuards, ReentryThroughLookupsCountsTowardTheBound) {
    virtual_machine_t vm;
    array_t stream;
    var(stream, "x");
    vm.set_variable_lookup([&](name_t) {
        vm.evaluate(stream); // endless recursion without the bound
        return any_regular_t(1.0);
    });
    EXPECT_EQ(failure<std::runtime_error>([&] { vm.evaluate(stream); }),
              "virtual_machine_t: lookups re-entered the machine deeper than 1024 levels");
    // The machine is usable afterwards.
    vm.set_variable_lookup([](name_t) { return any_regular_t(2.0); });
    EXPECT_EQ(number(run(vm, S{1.0, 1.0, op(".add")})), 2.0);
}

TEST(VirtualMachineGuards, StepLimit) {
    virtual_machine_t vm;
    EXPECT_EQ(vm.step_limit(), 0u);
    const array_t stream = S{1.0, 2.0, op(".add"), 3.0, op(".add")}; // five tokens
    vm.set_step_limit(5);
    EXPECT_EQ(number(run(vm, stream)), 6.0);
    // The budget is per outermost call.
    EXPECT_EQ(number(run(vm, stream)), 6.0);
    vm.set_step_limit(4);
    EXPECT_EQ(failure<std::runtime_error>([&] { vm.evaluate(stream); }),
              "virtual_machine_t: step limit of 4 exceeded");
    // Each stream is charged its length when entered: the outer three tokens, then the nested one.
    vm.set_step_limit(3);
    EXPECT_EQ(failure<std::runtime_error>([&] {
                  vm.evaluate(S{true, S{true}, op(".and")});
              }),
              "virtual_machine_t: step limit of 3 exceeded");
    vm.set_step_limit(4);
    EXPECT_EQ(run(vm, S{true, S{true}, op(".and")}), any_regular_t(true));
    vm.set_step_limit(0);
    EXPECT_EQ(run(vm, nested_and(200)), any_regular_t(true));
}

// Worked examples, through the parser -------------------------------------------------------

namespace {

any_regular_t evaluate_text(const std::string& text, virtual_machine_t vm = virtual_machine_t()) {
    return run(vm, parse_expression(text));
}

template <typename E>
std::string text_failure(const std::string& text, virtual_machine_t vm = virtual_machine_t()) {
    const array_t stream = parse_expression(text);
    return failure<E>([&] { vm.evaluate(stream); });
}

} // namespace

TEST(VirtualMachineSpecExamples, ShortCircuitWithUndefinedVariable) {
    EXPECT_EQ(evaluate_text("true || x"), any_regular_t(true));
    EXPECT_EQ(evaluate_text("false && x"), any_regular_t(false));
}

TEST(VirtualMachineSpecExamples, ConditionalEvaluatesOnlyTheChosenBranch) {
    virtual_machine_t vm;
    variables_t variables;
    variables.values = {{name_t("c"), any_regular_t(true)}, {name_t("a"), any_regular_t(1.0)}};
    variables.install(vm);
    EXPECT_EQ(evaluate_text("c ? a : b", vm), any_regular_t(1.0));
}

TEST(VirtualMachineSpecExamples, ErrorsAndValues) {
    EXPECT_EQ(text_failure<std::runtime_error>("[1, 2][2]"), "index: array index out of range");
    EXPECT_EQ(text_failure<std::out_of_range>("{a: 1}.b"), "dictionary_t: key 'b' not found");
    EXPECT_EQ(evaluate_text("min(1, 1)"), any_regular_t(1.0));
    EXPECT_EQ(text_failure<std::runtime_error>("min()"), "min: parameter error");
    EXPECT_EQ(evaluate_text("round(2.5)"), any_regular_t(3.0));
    EXPECT_EQ(evaluate_text("round(-2.5)"), any_regular_t(-3.0));
    EXPECT_EQ(evaluate_text("5 % 3.9"), any_regular_t(2.0));
    EXPECT_EQ(evaluate_text("1 << 33"), any_regular_t(2.0));
    EXPECT_EQ(evaluate_text("-1 >> 28"), any_regular_t(15.0));
    EXPECT_EQ(evaluate_text("scale(x: 2)"), any_regular_t(2.0));
    EXPECT_EQ(evaluate_text("@abc"), nm("abc"));
    EXPECT_EQ(evaluate_text("typeof(@abc)"), nm("name"));
    EXPECT_EQ(text_failure<std::logic_error>("nosuch(1)"), "function 'nosuch' not defined.");
    EXPECT_EQ(text_failure<std::logic_error>("x"), "No variable lookup installed.");
}

TEST(VirtualMachineSpecExamples, SheetLikeExpressions) {
    virtual_machine_t vm;
    variables_t variables;
    variables.values = {
        {name_t("x"), any_regular_t(15.0)},       {name_t("x_min"), any_regular_t(5.0)},
        {name_t("x_range"), any_regular_t(20.0)}, {name_t("a"), any_regular_t(0.75)},
        {name_t("b"), any_regular_t(0.25)},       {name_t("c"), any_regular_t(-1.0)}};
    variables.install(vm);
    EXPECT_EQ(evaluate_text("(x - x_min) / x_range", vm), any_regular_t(0.5));
    EXPECT_EQ(evaluate_text("a > 0.5 ? b * 96 - 48 : c", vm), any_regular_t(-24.0));
    EXPECT_EQ(evaluate_text("a < 0.5 ? b * 96 - 48 : c", vm), any_regular_t(-1.0));
    EXPECT_EQ(evaluate_text("{k: [1, x]}.k[1]", vm), any_regular_t(15.0));
    EXPECT_EQ(evaluate_text("xml_escape(\"<\")", vm), str("&lt;"));
}
