# Runs `qafui check`, `render`, `gallery` and (with xvfb-run) `open` on the FFT filter editor and
# checks status, messages and the pictures written.
# Usage: cmake -DQAFUI=path/to/qafui -DRESOURCES=src/resources -DWORK=scratch/folder
#              [-DXVFB_RUN=path/to/xvfb-run] -P fft_filter_command_test.cmake

include(${CMAKE_CURRENT_LIST_DIR}/../command_expect.cmake)

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

# The archives are valid.
expect(0 "^.*FFTFILTER.xml: ok\n.*FFTFILTER.V7.xml: ok\n$" "^$"
       check ${RESOURCES}/FFTFILTER.xml ${RESOURCES}/FFTFILTER.V7.xml)

# render: the editor at its size; the effect really runs, so a second of the test signal
# paints a spectrum that no signal does not.
expect(0 "^$" "^$" render FFTFilter -o silent.png --seconds 0)
expect(0 "^$" "^$" render FFTFilter -o live.png --seconds 1)
expect(0 "^$" "^$" render fftfilter -o live2x.png --scale 2 --skin v7 --seconds 0.5)
expect_png(silent.png 520 336)
expect_png(live.png 520 336)
expect_png(live2x.png 1080 700)
file(SHA256 ${WORK}/silent.png silent_hash)
file(SHA256 ${WORK}/live.png live_hash)
if(silent_hash STREQUAL live_hash)
  message(SEND_ERROR "render: a second of the test signal drew no spectrum")
endif()
# Bad input: a clear message and a non-zero status.
expect(2 "^$" "--seconds takes a number of seconds from 0 to 600" render FFTFilter -o x.png --seconds -1)
expect(2 "^$" "--seconds takes a number" render FFTFilter -o x.png --seconds nan)
expect(2 "^$" "--input needs a file" render FFTFilter -o x.png --input)
expect(1 "^$" "FFTFilter: FileSource: cannot read \"nosuch.wav\"" render FFTFilter -o x.png --input nosuch.wav)
expect(1 "^$" "no effect 'NoSuchEffect'" render NoSuchEffect -o x.png)
expect(1 "^$" "the reference host has no effect VocalEnhancer" render VocalEnhancer -o x.png --input nosuch.wav)

# gallery: both looks of every editor that exists, and a page that shows them.
# Editors not ready yet are skipped, named, and fail the run.
expect(1 "FFTFilter: 2 pictures\n.*wrote .*index.html\n$" "editors skipped\n$" gallery -o gallery --seconds 0.2)
expect_png(gallery/FFTFilter-classic.png 520 336)
expect_png(gallery/FFTFilter-v7.png 540 350)
file(READ ${WORK}/gallery/index.html page)
foreach(wanted "<img src=\"FFTFilter-classic.png\" width=\"520\"" "<img src=\"FFTFilter-v7.png\""
               "<h2>Amplify</h2>")
  string(FIND "${page}" "${wanted}" at)
  if(at EQUAL -1)
    message(SEND_ERROR "gallery/index.html lacks ${wanted}")
  endif()
endforeach()
file(WRITE ${WORK}/in_the_way "")
expect(1 "^$" "cannot make the folder in_the_way" gallery -o in_the_way)
expect(2 "^$" "no output folder given" gallery)

# open: a window for a second, closed by itself.
if(XVFB_RUN)
  execute_process(COMMAND ${XVFB_RUN} -a -s "-screen 0 1024x768x24" ${QAFUI} open FFTFilter
                          --seconds 1 --skin v7
                  RESULT_VARIABLE status ERROR_VARIABLE err)
  if(NOT status EQUAL 0)
    message(SEND_ERROR "qafui open FFTFilter: status ${status}: ${err}")
  endif()
endif()
expect(2 "^$" "--seconds takes a positive number" open FFTFilter --seconds 0)
expect(2 "^$" "no EFFECT given" open)
