# The resources embedded into the library: one file each, named NAME.TYPE as the resource
# manager finds it. Add a new file here.
set(QAFUI_RESOURCE_FILES
  FFTFILTER.V7.xml
  FFTFILTER.xml
  LOUDNESSMETERPROXY.tss
  VOCALENHANCER.mrl
  VOCALENHANCER.tss
)
list(TRANSFORM QAFUI_RESOURCE_FILES PREPEND ${CMAKE_CURRENT_LIST_DIR}/)
