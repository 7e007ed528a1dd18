# Runs `qafui eval` on a few cases and checks its output and exit status.
# Usage: cmake -DQAFUI=path/to/qafui -P eval_command_test.cmake

set(failures 0)

# expect(STATUS OUT_REGEX ERR_REGEX ARGS...)
function(expect status out_regex err_regex)
  execute_process(COMMAND ${QAFUI} eval ${ARGN}
                  RESULT_VARIABLE actual_status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT actual_status EQUAL status OR NOT out MATCHES "${out_regex}" OR NOT err MATCHES "${err_regex}")
    message(SEND_ERROR "qafui eval ${ARGN}\n  status ${actual_status} (want ${status})\n"
                       "  stdout: ${out}  (want ${out_regex})\n  stderr: ${err}  (want ${err_regex})")
  endif()
endfunction()

expect(0 "^3\n$" "^$" "1 + 2")
expect(0 "^0.5\n$" "^$" "(x - x_min) / x_range" --var x=15 --var x_min=5 --var x_range=20)
expect(0 "^-24\n$" "^$" "a > 0.5 ? b * 96 - 48 : c" --var a=0.75 --var b=0.25 --var c=-1)
expect(0 "^2\n$" "^$" "y" --var x=1 --var y=x+1)
expect(0 "^\\{b: true, k: \\[1, \"s\", @n\\]\\}\n$" "^$" "{k: [1, 's', @n], b: true}")
expect(0 "^\\[@a, @.variable, 1, @.add\\]\n$" "^$" "a + 1" --tokens)
expect(0 "^\\(a \\+ 1\\)\n$" "^$" "a + 1" --format)
expect(0 "^f\\( x,\n  1 \\)\n$" "^$" "f(x, 1)" --format --one-line)
expect(0 "^NaN\n$" "^$" "0 / 0")
expect(0 "^\"Hello\"\n$" "^$" "localize('$$$/a/b=Hello')")
# Failures: the exception's text on standard error, status 1.
expect(1 "^$" "<input>:1:4: expected an expression after '\\+', found end of input" "1 +")
expect(1 "^$" "No variable lookup installed\\." "x")
expect(1 "^$" "variable 'y' not defined\\." "y" --var x=1)
expect(1 "^$" "index: array index out of range" "[1, 2][2]")
expect(1 "^$" "function 'nosuch' not defined\\." "nosuch(1)")
expect(1 "^$" "static_table key not found" "1 & 3" --format)
expect(1 "^$" "--var x:1:2: " "x" --var "x=(")
expect(1 "^$" "step limit of 3 exceeded" "1 + 2 + 3" --step-limit 3)
# Usage errors: status 2.
expect(2 "^$" "no EXPR given")
expect(2 "^$" "unknown option '--nosuch'" "1" --nosuch)
expect(2 "^$" "'1x' is not a name" "1" --var 1x=2)
