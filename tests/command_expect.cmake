# What the CTest scripts that run the program share.
#
# expect(STATUS OUT_REGEX ERR_REGEX ARGS...): runs `${QAFUI} ARGS...` in ${WORK} and checks its
# status, standard output and standard error; leaves the output in `last_out`.
function(expect status out_regex err_regex)
  execute_process(COMMAND ${QAFUI} ${ARGN} WORKING_DIRECTORY ${WORK}
                  RESULT_VARIABLE actual_status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT actual_status EQUAL status OR NOT out MATCHES "${out_regex}" OR NOT err MATCHES "${err_regex}")
    message(SEND_ERROR "qafui ${ARGN}\n  status ${actual_status} (want ${status})\n"
                       "  stdout: ${out}  (want ${out_regex})\n  stderr: ${err}  (want ${err_regex})")
  endif()
  set(last_out "${out}" PARENT_SCOPE)
endfunction()

# expect_png(FILE WIDTH HEIGHT): ${WORK}/FILE is a PNG of that size in device pixels.
function(expect_png file width height)
  if(NOT EXISTS ${WORK}/${file})
    message(SEND_ERROR "${file} was not written")
    return()
  endif()
  file(READ ${WORK}/${file} signature LIMIT 8 HEX)
  file(READ ${WORK}/${file} size OFFSET 16 LIMIT 8 HEX)
  string(SUBSTRING "${size}" 0 8 w_hex)
  string(SUBSTRING "${size}" 8 8 h_hex)
  math(EXPR w "0x${w_hex}")
  math(EXPR h "0x${h_hex}")
  if(NOT signature STREQUAL "89504e470d0a1a0a" OR NOT w EQUAL width OR NOT h EQUAL height)
    message(SEND_ERROR "${file}: ${w} by ${h} (${signature}), want a PNG of ${width} by ${height}")
  endif()
endfunction()
