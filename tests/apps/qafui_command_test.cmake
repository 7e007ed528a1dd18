# Runs the program as a user would and checks status, messages and what it writes: the state of
# every editor, honest failures for editors not ready, the option errors of describe and
# render, event scripts from the command line, and layout guides.
# Usage: cmake -DQAFUI=path/to/qafui -DWORK=scratch/folder -P qafui_command_test.cmake

include(${CMAKE_CURRENT_LIST_DIR}/../command_expect.cmake)

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

# list: each editor's state, with what is missing.
expect(0 "FFTFilter +[-0-9A-F]+  X  ready   dsp  FFTFILTER" "^$" list)
string(REGEX MATCH "AdaptiveNoiseReduction +[-0-9A-F]+  G  missing -    ADAPTIVENOISEREDUCTION.mrl ADAPTIVENOISEREDUCTION.tss  \\(missing ADAPTIVENOISEREDUCTION.mrl ADAPTIVENOISEREDUCTION.tss\\)" flanger "${last_out}")
string(REGEX MATCH "Amplify +[-0-9A-F]+  X  pending " amplify "${last_out}")
string(REGEX MATCH "# [0-9]+ ready, [0-9]+ pending, [0-9]+ missing resources; [0-9]+ with reference DSP" summary "${last_out}")
if(NOT flanger OR NOT amplify OR NOT summary)
  message(SEND_ERROR "qafui list does not show every state:\n${last_out}")
endif()

# An editor that can't be shown says why, in every command that shows one.
set(missing "AdaptiveNoiseReduction: missing resources ADAPTIVENOISEREDUCTION.mrl, ADAPTIVENOISEREDUCTION.tss")
expect(1 "^$" "qafui render: ${missing}\n" render AdaptiveNoiseReduction -o flanger.png)
expect(1 "^$" "qafui describe: ${missing}\n" describe AdaptiveNoiseReduction)
expect(1 "^$" "qafui open: ${missing}\n" open AdaptiveNoiseReduction --seconds 1)
expect(1 "^$" "qafui describe: Amplify: its view class is pending\n" describe Amplify)
if(EXISTS ${WORK}/flanger.png)
  message(SEND_ERROR "render wrote a picture of an editor it could not show")
endif()
expect(1 "FFTFilter: 2 pictures\n" "skipped AdaptiveNoiseReduction: missing resources ADAPTIVENOISEREDUCTION.mrl, ADAPTIVENOISEREDUCTION.tss\n.*editors skipped\n$"
       gallery -o gallery --seconds 0)
file(READ ${WORK}/gallery/index.html page)
string(FIND "${page}" "skipped: its view class is pending" at)
if(at EQUAL -1)
  message(SEND_ERROR "gallery/index.html does not say why Amplify was skipped")
endif()

# describe: a tree, parameters with units, and one JSON document.
expect(0 "^FFTFilter 520x336\n  FFTFilterEditorView \\[0 0 520 336\\]\n" "^$"
       describe fftfilter --value "fft size=1024")
string(FIND "${last_out}" "  1 \"FFT Size\" 0.030303 1024 points\n" at)
string(FIND "${last_out}" "UI_Popup #FFTSize [72 342 104 20] hidden text=\"1024\" value=5\n" shown)
if(at EQUAL -1 OR shown EQUAL -1)
  message(SEND_ERROR "describe --value did not set the FFT size to 1024:\n${last_out}")
endif()
expect(0 "" "^$" describe FFTFilter --json --skin v7 --scale 2 --param 0=1)
string(JSON root_class ERROR_VARIABLE json_error GET "${last_out}" nodes class)
string(JSON splines ERROR_VARIABLE json_error GET "${last_out}" parameters 0 value)
string(JSON width ERROR_VARIABLE json_error GET "${last_out}" size 0)
if(json_error OR NOT root_class STREQUAL "FFTFilterEditorView" OR NOT splines EQUAL 1 OR NOT width EQUAL 540)
  message(SEND_ERROR "describe --json: ${json_error} class ${root_class} splines ${splines} width ${width}")
endif()

# Bad parameters and scripts: named, with a status for usage (2) or for the effect (1).
expect(2 "^$" "--param takes INDEX=VALUE or NAME=VALUE, not '4'" describe FFTFilter --param 4)
expect(2 "^$" "--param 4=2: a normalised value lies from 0 to 1" describe FFTFilter --param 4=2)
expect(2 "^$" "--param needs INDEX=VALUE" render FFTFilter -o x.png --param)
expect(1 "^$" "FFTFilter: --param 999=0.5: no parameter 999 \\(the effect has 266, 0 to 265\\)"
       describe FFTFilter --param 999=0.5)
expect(1 "^$" "FFTFilter: --value Visible Low=1e6: Visible Low lies from 0 to 24000 Hz"
       describe FFTFilter "--value" "Visible Low=1e6")
expect(1 "^$" "no parameter named 'Volume'" render FFTFilter -o x.png --param Volume=1)
file(WRITE ${WORK}/bad.txt "click Advanced\nclick\n")
expect(1 "^$" "qafui describe: FFTFilter: bad.txt:2: 'click' takes one TARGET\n" describe FFTFilter --events bad.txt)
expect(1 "^$" "cannot read the event script 'nosuch.txt'" describe FFTFilter --events nosuch.txt)
expect(2 "^$" "unknown option '--events'" open FFTFilter --events bad.txt)

# Events through render: the advanced section opens and the picture grows with the editor.
file(WRITE ${WORK}/advanced.txt "click Advanced   # open the section\nanswer 8\nclick WindowType\n")
expect(0 "^$" "^$" render FFTFilter -o advanced.png --seconds 0 --events advanced.txt)
expect_png(advanced.png 520 368)
expect(0 "UI_Popup #WindowType \\[[0-9 ]+\\] text=\"Kaiser \\(180 dB\\)\" value=7\n" "^$"
       describe FFTFilter --events advanced.txt)

# layout --guides: what each placed box exports, aligned by its column.
file(WRITE ${WORK}/guides.tss
     "layout G { view column() { a(width: 50, height: 10, guides: [10], baselines: [8]);\n"
     "                           b(width: 60, height: 12, guides: [30]); } }\n")
# a's label edge lines up with b's: a moves right by 30 - 10, the column is 20 + 50 wide, and
# exports the shared label guide and a's baseline.
expect(0 "column\\(left: 0, top: 0, width: 70, height: 22, .*, guides: \\[30\\], baselines: \\[8\\]\\) \\{\n    a\\(left: 20, .*, guides: \\[10\\], baselines: \\[8\\]\\);\n    b\\(left: 0, .*guides: \\[30\\], baselines: \\[\\]\\);\n\\}\n$"
       "^$" layout guides.tss --guides)
file(WRITE ${WORK}/badguide.tss "layout G { view column() { a(width: 5, guides: [9]); } }\n")
expect(1 "^$" "badguide.tss:1:[0-9]+: 'guides' takes an array of ascending offsets" layout badguide.tss --guides)

# A folder given for a script is named as such by every reader; open without a display says so
# and stops instead of running unseen.
file(MAKE_DIRECTORY ${WORK}/folder.mrl)
expect(1 "^$" "qafui sheet: folder.mrl: is a folder, not a file\n" sheet folder.mrl)
expect(1 "^$" "qafui layout: folder.mrl: is a folder, not a file\n" layout folder.mrl)
expect(1 "^$" "folder.mrl: is a folder, not a file\n" check folder.mrl)
expect(1 "^$" "qafui sheet: nosuch.mrl: no such file\n" sheet nosuch.mrl)
set(display "$ENV{DISPLAY}")
set(wayland "$ENV{WAYLAND_DISPLAY}")
set(driver "$ENV{SDL_VIDEODRIVER}")
unset(ENV{DISPLAY})
unset(ENV{WAYLAND_DISPLAY})
unset(ENV{SDL_VIDEODRIVER})
expect(1 "^$" "qafui open: VocalEnhancer: no display to open a window on" open VocalEnhancer --seconds 1)
set(ENV{DISPLAY} "${display}")
set(ENV{WAYLAND_DISPLAY} "${wayland}")
set(ENV{SDL_VIDEODRIVER} "${driver}")

# An archive that makes no panel, and a script with an error, stop render with the place.
file(MAKE_DIRECTORY ${WORK}/broken)
file(WRITE ${WORK}/broken/FFTFILTER.xml "")
file(WRITE ${WORK}/broken/FFTFILTER.V7.xml "")
file(WRITE ${WORK}/broken/VOCALENHANCER.mrl "sheet V { interface: a: ; }\n")
set(ENV{QAFUI_RESOURCE_DIR} ${WORK}/broken)
expect(1 "^$" "qafui render: FFTFilter: its archive FFTFilter made no panel" render FFTFilter -o empty.png)
expect(1 "^$" "qafui render: VocalEnhancer: VOCALENHANCER.mrl:1:[0-9]+: " render VocalEnhancer -o bad.png)
unset(ENV{QAFUI_RESOURCE_DIR})
if(EXISTS ${WORK}/empty.png OR EXISTS ${WORK}/bad.png)
  message(SEND_ERROR "render wrote a picture of an editor that did not load")
endif()
