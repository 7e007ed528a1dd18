// virtual_machine_t, grouped by operator family. The streams are built by hand so the machine
// is tested apart from the parser.

#include "core/expression/virtual_machine.hpp"
#include "core/type_name.hpp"
#include "expression_test_support.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

using namespace vorlen;
using namespace vorlen::testing;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

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

/// The machine and a copy that takes the general road: with an operator override installed,
/// on a token the tests never use, every operator goes through its handler instead of the
/// loop's in-place road. Both must agree.
std::vector<virtual_machine_t> both_roads(const virtual_machine_t& vm = {}) {
    std::vector<virtual_machine_t> roads(2, vm);
    roads[1].set_operator_override(name_t(".unused_operator"),
                                   [](const any_regular_t& a, const any_regular_t&) { return a; });
    return roads;
}

template <typename E>
std::string failure_of(const array_t& stream, virtual_machine_t vm = virtual_machine_t()) {
    return failure<E>([&] { vm.evaluate(stream); });
}

struct value_row_t {
    array_t stream;
    any_regular_t expected;
};

/// Each stream, run on fresh copies of `vm` on both roads, leaves exactly its expected value.
void expect_values(std::initializer_list<value_row_t> rows, const virtual_machine_t& vm = {}) {
    for (const value_row_t& row : rows)
        for (virtual_machine_t& road : both_roads(vm))
            EXPECT_EQ(run(road, row.stream), row.expected) << expression_text(row.stream);
}

/// Each stream, run on fresh copies of `vm` on both roads, throws an E with the message.
template <typename E = std::runtime_error>
void expect_failures(std::initializer_list<array_t> streams, const std::string& message,
                     const virtual_machine_t& vm = {}) {
    for (const array_t& stream : streams)
        for (const virtual_machine_t& road : both_roads(vm))
            EXPECT_EQ(failure_of<E>(stream, road), message) << expression_text(stream);
}

/// Cases of a binary operator: left operand, right operand and result.
template <typename R>
void expect_binary(const char* token, std::initializer_list<std::tuple<double, double, R>> cases) {
    for (const auto& [left, right, result] : cases)
        expect_values({{S{left, right, op(token)}, result}});
}

/// Cases of a unary operator: operand and result.
template <typename R>
void expect_unary(const char* token, std::initializer_list<std::pair<double, R>> cases) {
    for (const auto& [operand, result] : cases)
        expect_values({{S{operand, op(token)}, result}});
}

/// A variable lookup that reads a table and counts its calls; unknown names throw.
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

} // namespace

TEST(VirtualMachineLiterals, PushesCopiesAndANonOperatorNameIsAValue) {
    dictionary_t d;
    d.insert({name_t("k"), any_regular_t(1.0)});
    // No lookup is installed, so reading a name as a variable would fail.
    expect_values({{S{1.5}, 1.5},
                   {S{str("text")}, str("text")},
                   {S{true}, true},
                   {S{any_regular_t()}, any_regular_t(empty_t())},
                   {S{any_regular_t(array_t())}, array_t()},
                   {S{any_regular_t(d)}, d},
                   {S{nm("abc")}, nm("abc")},
                   {S{nm("")}, name_t()}});
}

TEST(VirtualMachineLiterals, TheStackPersistsAndRefusesEmptyAccess) {
    virtual_machine_t vm;
    vm.evaluate(S{1.0, 2.0, 3.0});
    ASSERT_EQ(vm.size(), 3u);
    EXPECT_EQ(vm.back(), any_regular_t(3.0));
    vm.pop_back();
    EXPECT_EQ(vm.back(), any_regular_t(2.0));
    vm.evaluate(S{10.0, op(".add")});
    EXPECT_EQ(vm.back(), any_regular_t(12.0));
    EXPECT_EQ(vm.size(), 2u);

    virtual_machine_t empty;
    empty.evaluate(array_t());
    EXPECT_EQ(empty.size(), 0u);
    EXPECT_EQ(failure<std::runtime_error>([&] { empty.back(); }),
              "virtual_machine_t: the stack is empty");
    EXPECT_EQ(failure<std::runtime_error>([&] { empty.pop_back(); }),
              "virtual_machine_t: the stack is empty");
}

TEST(VirtualMachineArithmetic, IeeeDoublesAndTruncatingModulus) {
    expect_binary<double>(".add", {{2, 3, 5}, {0.1, 0.2, 0.1 + 0.2}});
    expect_binary<double>(".subtract", {{2, 3, -1}});
    expect_binary<double>(".multiply", {{2, 3, 6}});
    // Division by zero is not an error.
    expect_binary<double>(".divide", {{3, 2, 1.5}, {1, 0, infinity}, {-1, 0, -infinity}});
    // Modulus truncates to signed 32 bits and keeps the sign of the left operand: 2^32 + 5 reads
    // as 5, 3e9 as 3e9 - 2^32, and NaN and the infinities as 0.
    expect_binary<double>(".modulus", {{5, 3.9, 2},
                                       {5.9, 3, 2},
                                       {-7, 3, -1},
                                       {7, -3, 1},
                                       {-7.9, 2, -1},
                                       {4294967301.0, 3, 2},
                                       {-2147483648.0, -1, 0},
                                       {infinity, 3, 0}});
    expect_binary<double>(
        ".modulus", {{3e9, 7, static_cast<double>(static_cast<std::int32_t>(3000000000u) % 7)}});
    // Operand order: bottom is the left operand.
    EXPECT_EQ(run(S{10.0, 4.0, 2.0, op(".subtract"), op(".subtract")}), any_regular_t(8.0));
    EXPECT_TRUE(std::isnan(number(run(S{0.0, 0.0, op(".divide")}))));
    // No test for a zero right operand is made; the machine answers NaN instead of trapping.
    for (const double right : {0.0, 0.5, 4294967296.0})
        EXPECT_TRUE(std::isnan(number(run(S{5.0, right, op(".modulus")})))) << right;
}

TEST(VirtualMachineUnary, NotAndNegationFlipsTheSignBit) {
    EXPECT_EQ(run(S{true, op(".not")}), any_regular_t(false));
    EXPECT_EQ(run(S{false, op(".not")}), any_regular_t(true));
    expect_unary<double>(".unary_negate", {{2.5, -2.5}, {-2.5, 2.5}, {infinity, -infinity}});
    const double negative_zero = number(run(S{0.0, op(".unary_negate")}));
    EXPECT_EQ(negative_zero, 0.0);
    EXPECT_TRUE(std::signbit(negative_zero));
    EXPECT_FALSE(std::signbit(number(run(S{-0.0, op(".unary_negate")}))));
    const double negated_nan = number(run(S{not_a_number, op(".unary_negate")}));
    EXPECT_TRUE(std::isnan(negated_nan));
    EXPECT_TRUE(std::signbit(negated_nan));
}

TEST(VirtualMachineArithmetic, OperandsMustBeOfTheirKind) {
    expect_failures({S{1.0, str("a"), op(".add")}, S{str("5"), 3.0, op(".modulus")},
                     S{str("1"), op(".unary_negate")}, S{str("a"), str("b"), op(".less")},
                     S{1.0, str("2"), op(".bitwise_lshift")}, S{str("2"), op(".bitwise_negate")}},
                    "expected `number` found `string`");
    expect_failures({S{true, 1.0, op(".multiply")}, S{1.0, true, op(".greater_equal")},
                     S{true, 1.0, op(".bitwise_and")}},
                    "expected `number` found `boolean`");
    expect_failures({S{any_regular_t(), 1.0, op(".divide")}}, "expected `number` found `empty`");
    expect_failures({S{nm("n"), 1.0, op(".subtract")}}, "expected `number` found `name`");
    expect_failures({S{any_regular_t(array_t()), 1.0, op(".add")}},
                    "expected `number` found `array`");
    expect_failures({S{any_regular_t(dictionary_t()), 1.0, op(".add")}},
                    "expected `number` found `dictionary`");
    expect_failures({S{1.0, op(".not")}}, "expected `boolean` found `number`");
    expect_failures({S{any_regular_t(), op(".not")}}, "expected `boolean` found `empty`");
}

TEST(VirtualMachineComparison, RelationalOperatorsAndEqualityOfKindAndValue) {
    expect_binary<bool>(".less", {{1, 2, true}, {2, 2, false}});
    expect_binary<bool>(".greater", {{3, 2, true}, {2, 2, false}});
    expect_binary<bool>(".less_equal",
                        {{2, 2, true}, {3, 2, false}, {not_a_number, not_a_number, false}});
    expect_binary<bool>(".greater_equal", {{2, 2, true}, {1, 2, false}});
    expect_binary<bool>(".not_equal", {{1, 2, true}});
    expect_binary<bool>(".equal", {{1, 1, true}, {not_a_number, not_a_number, false}});
    // Equality compares kind and value, without an error for mixed kinds.
    expect_values({
        {S{1.0, true, op(".equal")}, false},
        {S{1.0, true, op(".not_equal")}, true},
        {S{str("a"), str("a"), op(".equal")}, true},
        {S{str("a"), nm("a"), op(".equal")}, false},
        {S{nm("a"), nm("a"), op(".equal")}, true},
        {S{any_regular_t(), any_regular_t(), op(".equal")}, true},
        {S{1.0, 2.0, 2.0, op(".array"), 1.0, 2.0, 2.0, op(".array"), op(".equal")}, true},
    });
}

TEST(VirtualMachineBitwise, On32BitIntegersWithUnsignedResultsAndMaskedShifts) {
    expect_binary<double>(".bitwise_and", {{-1, 255, 255}, {3.9, 2.5, 2}, {4294967297.0, 3, 1}});
    expect_binary<double>(".bitwise_or", {{6, 9, 15}, {-1, 0, 4294967295.0}});
    expect_binary<double>(".bitwise_xor", {{5, 1, 4}, {-2, 1, 4294967295.0}});
    // Shift counts are masked to five bits; right shifts are logical.
    expect_binary<double>(".bitwise_lshift",
                          {{1, 33, 2}, {1, 31, 2147483648.0}, {1, -1, 2147483648.0}, {3, 32, 3}});
    expect_binary<double>(".bitwise_rshift", {{-1, 28, 15}, {-2147483648.0, 31, 1}});
    expect_unary<double>(".bitwise_negate", {{0, 4294967295.0}, {-1, 0}, {5, 4294967290.0}});
}

TEST(VirtualMachineDeferred, LogicalOperatorsSkipTheirRightOperandAndTakeBooleans) {
    const array_t x = V("x"); // no variable lookup installed: evaluating x would fail
    expect_values({{S{true, x, op(".or")}, true},
                   {S{false, S{true}, op(".or")}, true},
                   {S{false, S{false}, op(".or")}, false},
                   {S{false, x, op(".and")}, false},
                   {S{true, S{true}, op(".and")}, true},
                   {S{true, S{false}, op(".and")}, false},
                   // The left value is the result when the right side is skipped.
                   {S{true, S{str("a")}, op(".or")}, true},
                   // (false || (true && !false)) ? 1 + 2 : 0: deferred operands nest.
                   {S{false, S{true, S{false, op(".not")}, op(".and")}, op(".or"),
                      S{1.0, 2.0, op(".add")}, S{0.0}, op(".ifelse")},
                    3.0}});
    expect_failures<std::logic_error>({S{false, x, op(".or")}, S{true, x, op(".and")}},
                                      "No variable lookup installed.");
    expect_failures({S{1.0, S{true}, op(".and")}, S{true, S{1.0}, op(".and")},
                     S{1.0, S{1.0}, S{2.0}, op(".ifelse")}},
                    "expected `boolean` found `number`");
    expect_failures({S{false, S{str("a")}, op(".or")}}, "expected `boolean` found `string`");
}

TEST(VirtualMachineDeferred, IfElseEvaluatesOnlyTheChosenBranch) {
    for (virtual_machine_t& vm : both_roads()) {
        variables_t variables;
        variables.values = {{name_t("a"), any_regular_t(1.0)}};
        variables.install(vm);
        const array_t a = V("a"), undefined = V("undefined");
        EXPECT_EQ(run(vm, S{true, a, undefined, op(".ifelse")}), any_regular_t(1.0));
        EXPECT_EQ(variables.calls, 1);
        EXPECT_EQ(run(vm, S{false, undefined, a, op(".ifelse")}), any_regular_t(1.0));
        EXPECT_EQ(variables.calls, 2);
        EXPECT_EQ(failure_of<std::logic_error>(S{false, a, undefined, op(".ifelse")}, vm),
                  "undefined variable undefined");
    }
}

TEST(VirtualMachineDeferred, HandlersRequireArraysWhenRunAlone) {
    // A deferred operand that is not an array reaches the handler, which reads it exactly.
    expect_failures({S{true, 1.0, op(".and")}, S{true, 1.0, S{2.0}, op(".ifelse")},
                     S{true, S{1.0}, 2.0, op(".ifelse")}},
                    "expected `array` found `number`");
}

TEST(VirtualMachineVariables, LookupReceivesTheName) {
    virtual_machine_t vm;
    std::vector<std::string> asked;
    vm.set_variable_lookup([&](name_t name) {
        asked.push_back(name.c_str());
        return any_regular_t(static_cast<double>(asked.size()));
    });
    EXPECT_EQ(number(run(vm, join({V("first"), V("second"), S{op(".subtract")}}))), -1.0);
    EXPECT_EQ(asked, (std::vector<std::string>{"first", "second"}));
}

TEST(VirtualMachineVariables, NoLookupOrAnOperandThatIsNotAName) {
    // The same failure when the name comes from a computation rather than the token before.
    expect_failures<std::logic_error>(
        {V("x"), S{nm("x"), 1.0, op(".array"), 0.0, op(".index"), op(".variable")}},
        "No variable lookup installed.");
    virtual_machine_t vm;
    vm.set_variable_lookup([](name_t) { return any_regular_t(1.0); });
    expect_failures({S{1.0, op(".variable")}}, "expected `name` found `number`", vm);
    expect_failures({S{str("x"), op(".variable")}}, "expected `name` found `string`", vm);
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
        stream = join({stream, V("x")}); // enough to move the stack's storage
    for (int i = 0; i != 99; ++i)
        stream.push_back(op(".add"));
    EXPECT_EQ(number(run(vm, stream)), 4200.0);
}

TEST(VirtualMachineContainers, ArraysDictionariesAndIndexing) {
    const array_t array = {any_regular_t(10.0), any_regular_t(20.0)};
    dictionary_t d;
    d.insert({name_t("a"), any_regular_t(1.0)});
    expect_values({
        {S{1.0, str("b"), true, 3.0, op(".array")}, array_t{1.0, str("b"), true}},
        {S{0.0, op(".array")}, array_t()},
        {S{7.0, 1.9, op(".array")}, array_t{7.0}}, // the count truncates
        {S{0.0, op(".dictionary")}, dictionary_t()},
        {S{array, 0.0, op(".index")}, 10.0},
        {S{array, 1.9, op(".index")}, 20.0},
        {S{d, nm("a"), op(".index")}, 1.0},
    });
    // A repeated key keeps its first value.
    const dictionary_t made =
        run(S{nm("a"), 1.0, nm("b"), str("x"), nm("a"), 3.0, 3.0, op(".dictionary")})
            .cast<dictionary_t>();
    EXPECT_EQ(made.size(), 2u);
    EXPECT_EQ(get_value(made, name_t("a")), any_regular_t(1.0));
    EXPECT_EQ(get_value(made, name_t("b")), str("x"));
}

TEST(VirtualMachineContainers, CountsKeysAndIndicesAreChecked) {
    const array_t array = {any_regular_t(10.0), any_regular_t(20.0)};
    expect_failures({S{1.0, -2.0, op(".array")}, S{1.0, not_a_number, op(".array")}},
                    "virtual_machine_t: invalid count at '.array'");
    expect_failures({S{array, 2.0, op(".index")}, S{array, -1.0, op(".index")},
                     S{array, not_a_number, op(".index")}, S{array, 1e30, op(".index")}},
                    "index: array index out of range");
    expect_failures({S{str("2"), op(".array")}, S{array, str("0"), op(".index")}},
                    "expected `number` found `string`");
    expect_failures({S{1.0, 2.0, 1.0, op(".dictionary")}}, "expected `name` found `number`");
    expect_failures({S{array, nm("k"), op(".index")}}, "expected `dictionary` found `array`");
    expect_failures({S{5.0, 0.0, op(".index")}}, "expected `array` found `number`");
    expect_failures({S{array, true, op(".index")}}, "expected `number` found `boolean`");
    dictionary_t d;
    d.insert({name_t("a"), any_regular_t(1.0)});
    expect_failures<std::out_of_range>({S{d, nm("b"), op(".index")}},
                                       "dictionary_t: key 'b' not found");
}

TEST(VirtualMachineContainers, InstalledIndexLookupsReplaceTheBuiltInRules) {
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

TEST(VirtualMachineFunction, UnknownFunctionsAndArgumentKinds) {
    expect_failures<std::logic_error>(
        {S{1.0, 1.0, op(".array"), nm("nosuch"), op(".function")},
         S{nm("k"), 1.0, 1.0, op(".dictionary"), nm("nosuch"), op(".function")}},
        "function 'nosuch' not defined.");
    // scale is a dictionary function only.
    expect_failures<std::logic_error>({S{array_t(), nm("scale"), op(".function")}},
                                      "function 'scale' not defined.");
    // A literal empty argument list is read like a counted one.
    expect_failures({S{array_t(), nm("min"), op(".function")}}, "min: parameter error");
    EXPECT_THROW(run(S{1.0, nm("min"), op(".function")}), vorlen::bad_cast);
    expect_failures({S{array_t(), 1.0, op(".function")}}, "expected `name` found `number`");
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
    expect_values(
        {{S{1.0, 2.0, 2.0, op(".array"), nm("f"), op(".function")}, str("f/2")},
         {S{nm("k"), 5.0, 1.0, op(".dictionary"), nm("g"), op(".function")}, str("g:5.000000")},
         // Built-ins come first.
         {S{3.0, 2.0, 2.0, op(".array"), nm("min"), op(".function")}, 2.0}},
        vm);
}

namespace {

/// The stream of a call with positional arguments.
array_t call(const char* function, array_t arguments) {
    const double count = static_cast<double>(arguments.size());
    return join({arguments, S{count, op(".array"), nm(function), op(".function")}});
}

/// The stream of a call with named arguments.
array_t call_named(const char* function,
                   std::initializer_list<std::pair<const char*, any_regular_t>> pairs) {
    array_t stream;
    for (const auto& [key, value] : pairs)
        stream = join({stream, S{nm(key), value}});
    return join({stream, S{static_cast<double>(pairs.size()), op(".dictionary"), nm(function),
                           op(".function")}});
}

struct client_type_t {
    int x;
    friend bool operator==(const client_type_t&, const client_type_t&) = default;
};

} // namespace

TEST(VirtualMachineBuiltins, ValuesOfEachFunction) {
    const array_t numbers = {any_regular_t(1.0), any_regular_t(2.0), any_regular_t(3.0)};
    expect_values({
        {call("typeof", {1.0}), nm("number")},
        {call("typeof", {true}), nm("boolean")},
        {call("typeof", {any_regular_t()}), nm("empty")},
        {call("typeof", {nm("abc")}), nm("name")},
        {call("typeof", {str("s")}), nm("string")},
        {call("typeof", {array_t()}), nm("array")},
        {call("typeof", {dictionary_t()}), nm("dictionary")},
        {call("typeof", {1.0, str("s")}), nm("number")}, // only the first argument counts
        {call("min", {3.0, 1.0, 2.0}), 1.0},
        {call("max", {3.0, 1.0, 4.0}), 4.0},
        {call("min", {1.0, 1.0}), 1.0},
        {call("min", {5.0}), 5.0},
        // round halves away from zero.
        {call("round", {2.5}), 3.0},
        {call("round", {-2.5}), -3.0},
        {call("round", {2.4}), 2.0},
        {call("round", {0.5, str("ignored")}), 1.0},
        {call("xml_escape", {str("a<b\t")}), str("a&lt;b&#x09;")},
        {call("xml_unescape", {str("&#65;&#x41;&amp;")}), str("AA&")},
        {call("any", {2.0, numbers}), true},
        {call("any", {5.0, numbers}), false},
        // Only the first element's kind is tested; later elements of another kind do not match.
        {call("any", {str("a"), array_t{str("b"), any_regular_t(1.0), str("a")}}), true},
        {call("any", {1.0, array_t{any_regular_t(2.0), any_regular_t(true)}}), false},
        // An empty array is not a supported argument; the machine answers false.
        {call("any", {1.0, array_t()}), false},
        {call_named("scale", {{"x", 2.0}}), 2.0},
        {call_named("scale", {{"x", 2.0}, {"m", 3.0}, {"b", 1.0}}), 7.0},
        {call_named("scale", {{"b", 1.0}}), 1.0},
        {call_named("scale", {}), 0.0},
    });
    // A client type: its run-time name.
    const any_regular_t client = run(call("typeof", {any_regular_t::make(client_type_t{1})}));
    EXPECT_NE(std::string(client.cast<name_t>().c_str()).find("client_type_t"), std::string::npos);
    // min and max keep the earlier argument on a tie: 0 and -0 are equal, the sign shows which.
    EXPECT_FALSE(std::signbit(number(run(call("min", {0.0, -0.0})))));
    EXPECT_TRUE(std::signbit(number(run(call("min", {-0.0, 0.0})))));
    EXPECT_FALSE(std::signbit(number(run(call("max", {0.0, -0.0})))));
    EXPECT_TRUE(std::signbit(number(run(call("max", {-0.0, 0.0})))));
}

TEST(VirtualMachineBuiltins, ParameterErrors) {
    const array_t numbers = {any_regular_t(1.0), any_regular_t(2.0), any_regular_t(3.0)};
    const std::pair<const char*, std::vector<array_t>> wrong_arguments[] = {
        {"typeof", {array_t()}},
        {"min", {array_t()}},
        {"max", {array_t()}},
        {"round", {{}, {str("2.5")}}},
        {"localize", {{}, {str("a"), str("b")}, {1.0}}},
        {"xml_escape", {{}, {1.0}}},
        {"xml_unescape", {{str("a"), str("b")}, {nm("a")}}}};
    for (const auto& [function, cases] : wrong_arguments)
        for (const array_t& arguments : cases)
            expect_failures({call(function, arguments)},
                            std::string(function) + ": parameter error");
    expect_failures(
        {call("any", {1.0}), call("any", {1.0, 2.0}), call("any", {1.0, numbers, numbers})},
        "any: parameter error any function requires a value and an array");
    expect_failures({call("any", {str("a"), numbers})},
                    "any: array value must match type of first argument");
    expect_failures({call_named("scale", {{"x", str("2")}})}, "expected `number` found `string`");
    EXPECT_THROW(run(call("min", {1.0, str("a")})), vorlen::bad_cast);
    EXPECT_THROW(run(call("max", {true})), vorlen::bad_cast);
}

TEST(VirtualMachineBuiltins, LocalizeUsesTheRegisteredRoutine) {
    set_localization_proc(nullptr);
    EXPECT_FALSE(localization_ready());
    EXPECT_EQ(run(call("localize", {str("$$$/a/b=Text")})), str("$$$/a/b=Text"));
    EXPECT_EQ(failure<std::runtime_error>([] { invoke_localization("x"); }),
              "Attempting to call an unregistered localization routine.");
    set_localization_proc([](const std::string& text) {
        const auto equal = text.find('=');
        return equal == std::string::npos ? text : text.substr(equal + 1);
    });
    EXPECT_TRUE(localization_ready());
    EXPECT_EQ(run(call("localize", {str("$$$/a/b=Text")})), str("Text"));
    EXPECT_EQ(invoke_localization("k=v"), "v");
    set_localization_proc(nullptr);
    EXPECT_FALSE(localization_ready());
}

TEST(VirtualMachineDispatch, UnknownTokensAndStackUnderflow) {
    const char* const unknown = "static_table key not found";
    expect_failures<std::logic_error>({S{1.0, 2.0, op(".frobnicate")}, S{op(".")},
                                       S{1.0, 2.0, op(".ADD")}, S{1.0, 2.0, op(".zzz")}},
                                      unknown);
    // Underflow names the operator that found too few operands.
    for (const array_t& stream :
         {S{op(".add")}, S{1.0, op(".less")}, S{op(".not")}, S{S{1.0}, op(".or")},
          S{S{1.0}, S{2.0}, op(".ifelse")}, S{true, S{}, op(".and")}, S{1.0, 2.0, op(".array")},
          S{nm("a"), 2.0, 2.0, op(".dictionary")}})
        expect_failures({stream}, std::string("virtual_machine_t: stack underflow at '") +
                                      stream.back().cast<name_t>().c_str() + "'");
    for (const std::string& token : operator_tokens()) {
        // On an empty stack each one fails, but not as an unknown token.
        const std::string text = failure_of<std::exception>(S{op(token.c_str())});
        EXPECT_NE(text, unknown) << token;
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
    EXPECT_EQ(failure_of<std::runtime_error>(S{1.0, op(".concat")}, vm),
              "virtual_machine_t: stack underflow at '.concat'");
    // Removing an override restores the table's handler.
    vm.set_operator_override(name_t(".add"), nullptr);
    EXPECT_EQ(number(run(vm, S{2.0, 3.0, op(".add")})), 5.0);
    // An override of a deferred operator sees the array.
    vm.set_operator_override(name_t(".and"), [](const any_regular_t& a, const any_regular_t& b) {
        return any_regular_t(a.cast<bool>() && b.cast<array_t>().size() == 1);
    });
    EXPECT_EQ(run(vm, S{true, S{false}, op(".and")}), any_regular_t(true));
}

TEST(VirtualMachineDispatch, InPlaceNumericOperatorsMatchTheHandlers) {
    // A number or a variable followed by a numeric operator is applied in place; with an
    // operator override installed every operator goes through its handler. Both must agree,
    // failures included.
    const auto outcome_of = [](virtual_machine_t vm, const array_t& stream) -> std::string {
        vm.set_variable_lookup([](name_t name) -> any_regular_t {
            if (std::string(name.c_str()) == "s")
                return any_regular_t(std::string("text"));
            return any_regular_t(4.0);
        });
        try {
            vm.evaluate(stream);
            return expression_text(vm.back()) + " " + type_name(vm.back().type_info()).c_str() +
                   " size " + std::to_string(vm.size());
        } catch (const std::exception& error) {
            return std::string("error ") + error.what();
        }
    };
    for (const char* token : {".add", ".subtract", ".multiply", ".divide", ".less", ".greater",
                              ".less_equal", ".greater_equal"}) {
        SCOPED_TRACE(token);
        for (const array_t& stream :
             {S{6.0, 4.0, op(token)}, S{4.0, 4.0, op(token)}, S{true, 4.0, op(token)},
              S{str("a"), 4.0, op(token)}, S{4.0, op(token)}, join({S{6.0}, V("v"), S{op(token)}}),
              join({S{6.0}, V("s"), S{op(token)}}),
              join({S{any_regular_t()}, V("v"), S{op(token)}}), join({V("v"), S{op(token)}})})
            EXPECT_EQ(outcome_of(virtual_machine_t(), stream), outcome_of(both_roads()[1], stream));
    }
    EXPECT_EQ(outcome_of(virtual_machine_t(), S{6.0, 4.0, op(".subtract")}), "2 number size 1");
    EXPECT_EQ(outcome_of(virtual_machine_t(), S{4.0, op(".less")}),
              "error virtual_machine_t: stack underflow at '.less'");
}

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
    EXPECT_EQ(number(run(copy, V("x"))), 7.0);
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

namespace {

/// true && (true && (... && true)), nested `depth` levels.
array_t nested_and(int depth) {
    array_t stream = S{true};
    for (int i = 0; i != depth; ++i)
        stream = S{true, std::move(stream), op(".and")};
    return stream;
}

} // namespace

TEST(VirtualMachineGuards, NestingAndReentryAreBounded) {
    EXPECT_EQ(run(nested_and(virtual_machine_t::max_depth - 1)), any_regular_t(true));
    // Far beyond the bound too: refused, not a stack overflow.
    for (const int depth : {int(virtual_machine_t::max_depth), 5000})
        EXPECT_EQ(failure_of<std::runtime_error>(nested_and(depth)),
                  "virtual_machine_t: token streams nested deeper than 256 levels");

    virtual_machine_t vm;
    vm.set_variable_lookup([&](name_t) {
        vm.evaluate(V("x")); // endless recursion without the bound
        return any_regular_t(1.0);
    });
    EXPECT_EQ(failure<std::runtime_error>([&] { vm.evaluate(V("x")); }),
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
    EXPECT_EQ(failure_of<std::runtime_error>(stream, vm),
              "virtual_machine_t: step limit of 4 exceeded");
    // Each stream is charged its length when entered: the outer three tokens, then the nested one.
    vm.set_step_limit(3);
    EXPECT_EQ(failure_of<std::runtime_error>(S{true, S{true}, op(".and")}, vm),
              "virtual_machine_t: step limit of 3 exceeded");
    vm.set_step_limit(4);
    EXPECT_EQ(run(vm, S{true, S{true}, op(".and")}), any_regular_t(true));
    vm.set_step_limit(0);
    EXPECT_EQ(run(vm, nested_and(200)), any_regular_t(true));
}
