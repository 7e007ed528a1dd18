# Runs `qafui eval` on a few cases and checks its output and exit status.
# Usage: cmake -DQAFUI=path/to/qafui -P eval_command_test.cmake

set(WORK ${CMAKE_CURRENT_LIST_DIR})
include(${CMAKE_CURRENT_LIST_DIR}/../../command_expect.cmake)

expect(0 "^3\n$" "^$" eval "1 + 2")
expect(0 "^0.5\n$" "^$" eval "(x - x_min) / x_range" --var x=15 --var x_min=5 --var x_range=20)
expect(0 "^-24\n$" "^$" eval "a > 0.5 ? b * 96 - 48 : c" --var a=0.75 --var b=0.25 --var c=-1)
expect(0 "^2\n$" "^$" eval "y" --var x=1 --var y=x+1)
expect(0 "^\\{b: true, k: \\[1, \"s\", @n\\]\\}\n$" "^$" eval "{k: [1, 's', @n], b: true}")
expect(0 "^\\[@a, @.variable, 1, @.add\\]\n$" "^$" eval "a + 1" --tokens)
expect(0 "^\\(a \\+ 1\\)\n$" "^$" eval "a + 1" --format)
expect(0 "^f\\( x,\n  1 \\)\n$" "^$" eval "f(x, 1)" --format --one-line)
expect(0 "^NaN\n$" "^$" eval "0 / 0")
expect(0 "^\"Hello\"\n$" "^$" eval "localize('$$$/a/b=Hello')")
# Failures: the exception's text on standard error, status 1.
expect(1 "^$" "<input>:1:4: expected an expression after '\\+', found end of input" eval "1 +")
expect(1 "^$" "No variable lookup installed\\." eval "x")
expect(1 "^$" "variable 'y' not defined\\." eval "y" --var x=1)
expect(1 "^$" "index: array index out of range" eval "[1, 2][2]")
expect(1 "^$" "function 'nosuch' not defined\\." eval "nosuch(1)")
expect(1 "^$" "static_table key not found" eval "1 & 3" --format)
expect(1 "^$" "--var x:1:2: " eval "x" --var "x=(")
expect(1 "^$" "step limit of 3 exceeded" eval "1 + 2 + 3" --step-limit 3)
# Usage errors: status 2.
expect(2 "^$" "no EXPR given" eval)
expect(2 "^$" "unknown option '--nosuch'" eval "1" --nosuch)
expect(2 "^$" "'1x' is not a name" eval "1" --var 1x=2)
