# Runs `qafui process` on the FFT filter: a run on the test signal, the same file through again,
# and every way of asking wrongly, with status, message and what is (not) left on disk; then,
# with xvfb-run, `qafui open --play --stats` on SDL's disk driver and on no driver at all.
# Usage: cmake -DQAFUI=path/to/qafui -DWORK=scratch/folder [-DXVFB_RUN=path/to/xvfb-run]
#              -P sound_command_test.cmake

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

include(${CMAKE_CURRENT_LIST_DIR}/../command_expect.cmake)

# expect_process(STATUS OUT_REGEX ERR_REGEX ARGS...): `qafui process ARGS...`.
function(expect_process status out_regex err_regex)
  expect(${status} "${out_regex}" "${err_regex}" process ${ARGN})
endfunction()

# Half a second of the test signal: 24000 stereo float frames, more than 192000 bytes of WAV.
expect_process(0 "^wrote signal.wav: 24000 frames, 2 channels at 48000 Hz" "^$"
       FFTFilter --seconds 0.5 --output signal.wav)
file(SIZE ${WORK}/signal.wav size)
if(size LESS 192044 OR size GREATER 192200)
  message(SEND_ERROR "signal.wav: ${size} bytes, want a float WAV of 24000 stereo frames")
endif()
# Read back as input it has as many frames, and so has what comes out, by any block size and
# with parameters set by index, name and plain value.
expect_process(0 "^wrote through.wav: 24000 frames, 2 channels at 48000 Hz" "^$"
       fftfilter --input signal.wav --output through.wav --block 1000 --param 11=0.5
       --param "point 2 level=0.6" --value 12=1000 --param 9=0.0234375)
expect_process(0 "^wrote again.wav: 24000 frames" "^$" FFTFilter --input through.wav --output again.wav)

# An effect without DSP, or none at all.
expect_process(1 "^$" "^qafui process: AdaptiveNoiseReduction: the reference host has no DSP for this effect\n$"
       AdaptiveNoiseReduction --seconds 1 --output anr.wav)
expect_process(1 "^$" "no effect 'NoSuchEffect' \\(see qafui list\\)" NoSuchEffect --output x.wav)

# Wrong usage: status 2 and the usage text.
foreach(block 0 65537 abc -5 1.5)
  expect_process(2 "^$" "--block takes a number of frames from 1 to 65536\nusage: qafui process"
         FFTFilter --output x.wav --block ${block})
endforeach()
expect_process(2 "^$" "--block takes a number" FFTFilter --output x.wav --block)
expect_process(2 "^$" "no output file given \\(--output FILE\\)" FFTFilter --seconds 1)
expect_process(2 "^$" "--output needs a file" FFTFilter --output)
expect_process(2 "^$" "no EFFECT given" --output x.wav)
expect_process(2 "^$" "--input and --seconds exclude each other"
       FFTFilter --input signal.wav --seconds 1 --output x.wav)
expect_process(2 "^$" "--param 0=2: a normalised value lies from 0 to 1" FFTFilter --output x.wav --param 0=2)
expect_process(2 "^$" "'loud' is not a number" FFTFilter --output x.wav --param 0=loud)
expect_process(2 "^$" "--seconds takes a positive number" FFTFilter --output x.wav --seconds 0)

# Parameters the effect lacks, or values beyond their range: failures naming them.
expect_process(1 "^$" "FFTFilter: --param 266=0.5: no parameter 266 \\(the effect has 266, 0 to 265\\)"
       FFTFilter --output x.wav --param 266=0.5)
expect_process(1 "^$" "FFTFilter: --param Loudness=0.5: no parameter named 'Loudness'"
       FFTFilter --output x.wav --param Loudness=0.5)
expect_process(1 "^$" "FFTFilter: --value 10=30000: Point 1 Frequency lies from 0 to 24000 Hz"
       FFTFilter --output x.wav --value 10=30000)

# Files that cannot be read or written; an output already there is left as it was.
file(WRITE ${WORK}/kept.wav "keep me")
file(WRITE ${WORK}/text.wav "no audio here")
expect_process(1 "^$" "FFTFilter: cannot read \"nosuch.wav\"" FFTFilter --input nosuch.wav --output kept.wav)
expect_process(1 "^$" "FFTFilter: cannot read \"text.wav\"" FFTFilter --input text.wav --output kept.wav)
expect_process(1 "^$" "FFTFilter: cannot write \"no/such/folder/x.wav\": No such file or directory"
       FFTFilter --seconds 0.1 --output no/such/folder/x.wav)
expect_process(1 "^$" "FFTFilter: --param 300=0.5" FFTFilter --seconds 0.1 --output kept.wav --param 300=0.5)
file(READ ${WORK}/kept.wav kept)
if(NOT kept STREQUAL "keep me")
  message(SEND_ERROR "a failed run changed kept.wav")
endif()

# Nothing but the files written whole and the two written here.
file(GLOB left RELATIVE ${WORK} ${WORK}/*)
list(SORT left)
if(NOT left STREQUAL "again.wav;kept.wav;signal.wav;text.wav;through.wav")
  message(SEND_ERROR "files left behind: ${left}")
endif()

# open --play: the disk driver writes what the device plays; a driver that does not exist
# leaves the editor silent but open.
if(XVFB_RUN)
  foreach(driver disk no_such_driver)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env SDL_AUDIODRIVER=${driver}
                            SDL_DISKAUDIOFILE=${WORK}/device.raw
                            ${XVFB_RUN} -a -s "-screen 0 1024x768x24"
                            ${QAFUI} open FFTFilter --play --stats --seconds 1.6
                    RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(driver STREQUAL "disk")
      set(sound "underruns [0-9]+")
      # Half a second in, the device plays the test signal, not silence.
      file(SIZE ${WORK}/device.raw played)
      file(READ ${WORK}/device.raw heard OFFSET 192000 LIMIT 4096 HEX)
      if(played LESS 196096 OR heard MATCHES "^0*$")
        message(SEND_ERROR "open --play: the device played ${played} bytes, silent at 0.5 s")
      endif()
    else()
      set(sound "underruns -")
      if(NOT err MATCHES "qafui open: no sound device \\(.+\\); the editor opens without sound")
        message(SEND_ERROR "open --play without a driver: ${err}")
      endif()
    endif()
    if(NOT status EQUAL 0 OR NOT out MATCHES "^${sound}, process thread [0-9.]+ %, window [0-9.]+ %\n")
      message(SEND_ERROR "open --play --stats on ${driver}: status ${status}\n  stdout: ${out}\n  stderr: ${err}")
    endif()
  endforeach()
endif()
