# Runs `qafui sheet` and `qafui check` on the scripts and layouts in data/ and checks output and status.
# Usage: cmake -DQAFUI=path/to/qafui -DDATA=path/to/data -P sheet_command_test.cmake

set(WORK ${DATA})
include(${CMAKE_CURRENT_LIST_DIR}/../command_expect.cmake)

# Steps run in the order given; the two-way pair follows the side set last.
expect(0 "^a = 4\nb = 2\na = 10\nb = 5\n$" "^$"
       sheet pair.mrl --update --get a --get b --set a=10 --update --get a --get b)
# --set evaluates against the sheet; reinitialize carries a new parameter to its control.
expect(0 "^out0 = 0.25\nlevel = 2.5\n$" "^$"
       sheet pair.mrl --set in0=in0/2 --reinitialize --update --get out0 --get level)
# Monitors report at once and then as they fire, outputs first, enabling last.
expect(0 "^monitor_value sum = empty\nmonitor_invariant_dependent sum = true\nmonitor_value sum = 6\n$"
       "^$" sheet pair.mrl --monitor sum --update --update)
expect(0 "^monitor_value a = empty\nmonitor_invariant_dependent a = true\nmonitor_enabled a = false\nmonitor_value sum = empty\nmonitor_invariant_dependent sum = true\nmonitor_value a = 4\nmonitor_value sum = 6\nmonitor_enabled a = false\n$"
       "^$" sheet pair.mrl --monitor a --monitor sum --update)
expect(0 "^sum = 6\n$" "^$" sheet pair.mrl --touch b,a --update --get sum)
# Failures: FILE:LINE:COLUMN where there is a place, status 1; usage errors status 2.
expect(1 "^$" "missing_semicolon.mrl:4:1: property model description: expected ';', found '}'"
       sheet missing_semicolon.mrl)
expect(1 "^$" "input cell out0 does not exist\\." sheet pair.mrl --set out0=1)
expect(1 "^$" "variable nosuch not found\\." sheet pair.mrl --update --get nosuch)
expect(1 "^$" "Attempt to monitor nonexistent cell: nosuch" sheet pair.mrl --monitor nosuch)
expect(1 "^$" "--set a:1:2: expected an expression" sheet pair.mrl --set a=[)
expect(1 "^$" "qafui sheet: nothing.mrl: no such file" sheet nothing.mrl)
expect(2 "^$" "no FILE given" sheet --update)
expect(2 "^$" "unknown option '--nosuch'" sheet pair.mrl --nosuch)

# check: "FILE: ok", or the first error of each file; status 1 when any failed.
expect(0 "^pair.mrl: ok\n$" "^$" check pair.mrl)
expect(1 "^pair.mrl: ok\n$"
       "^missing_semicolon.mrl:4:1: property model description: expected ';', found '}'\nunknown_kind.xyz: unknown kind of file '.xyz' \\(known: .mrl, .tss, .xml\\)\n$"
       check missing_semicolon.mrl pair.mrl unknown_kind.xyz)
expect(2 "^$" "no FILE given" check)
# Layout scripts are checked by solving them; layout_script finds its layout beside the file.
expect(0 "^panel.tss: ok\n$" "^$" check panel.tss)
expect(1 "^$" "^two_leaves.tss:3:36: layout description: expected ';', '{' or '}', found 'button'\n$"
       check two_leaves.tss)
# Node archives: malformed XML and structure are reported with line and column.
expect(1 "^$" "^wrong_root.xml:2:2: the root element is 'prop.list', not 'prop.map'\n$"
       check wrong_root.xml)
