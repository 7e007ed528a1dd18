# The tree keeps its layers, and the check finds a planted reach upwards.
# Usage: cmake -DROOT=path/to/tree -P layers_test.cmake

execute_process(COMMAND ${CMAKE_COMMAND} -DROOT=${ROOT} -P ${CMAKE_CURRENT_LIST_DIR}/layers.cmake
                RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT status EQUAL 0)
  message(SEND_ERROR "the tree reaches above its layers:\n${err}")
endif()

execute_process(COMMAND ${CMAKE_COMMAND} -DROOT=${CMAKE_CURRENT_LIST_DIR}/planted
                        -P ${CMAKE_CURRENT_LIST_DIR}/layers.cmake
                RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
set(wanted
    "src/core/planted.hpp:4: includes platform/ui/ui_node.hpp \\(platform/ui is not below core\\)"
    "src/audio/dsp/planted.cpp:4: includes platform/draw/penrig.hpp \\(platform/draw is not below audio/dsp\\)"
    "src/layout/tess.cpp:3: includes sheet/sheet.hpp \\(sheet is not below the layout solver\\)"
    "3 includes reach above their layer")
if(status EQUAL 0)
  message(SEND_ERROR "the planted reaches went unnoticed:\n${err}")
endif()
foreach(line IN LISTS wanted)
  if(NOT err MATCHES "${line}")
    message(SEND_ERROR "the check does not say: ${line}\n${err}")
  endif()
endforeach()
