# The resources embedded into the library: one file each, named NAME.TYPE as the resource
# manager finds it. Add a new file here.
set(QAFUI_RESOURCE_FILES
  CURSORDATAID-200.xml
  CURSORDATAID-201.xml
  CURSORDATAID-202.xml
  CURSORDATAID-203.xml
  FFTFILTER.V7.xml
  FFTFILTER.xml
  LOUDNESSMETER.mrl
  LOUDNESSMETER.tss
  LOUDNESSMETERPROXY.tss
  PARAMETRICEQ.V7.tss
  PARAMETRICEQ.mrl
  PARAMETRICEQ.tss
  SPECTRUMMETER.mrl
  SPECTRUMMETER.tss
  VOCALENHANCER.mrl
  VOCALENHANCER.tss
  icons/S_ADD_SM_N_D_AT_2X.svg
  icons/S_ARROWLEFT_SM_N_D_AT_2X.svg
  icons/S_ARROWRIGHT_SM_N_D_AT_2X.svg
  icons/S_HIGHSHELF_FIRSTORDER_SM_N_D_AT_2X.svg
  icons/S_HIGHSHELF_SECONDORDER_SM_N_D_AT_2X.svg
  icons/S_INVERT_SM_N_D_AT_2X.svg
  icons/S_LINK_SM_N_D_AT_2X.svg
  icons/S_LOWSHELF_FIRSTORDER_SM_N_D_AT_2X.svg
  icons/S_LOWSHELF_SECONDORDER_SM_N_D_AT_2X.svg
  icons/S_REMOVE_SM_N_D_AT_2X.svg
  icons/S_RESET_SM_N_D_AT_2X.svg
  icons/S_SELECTEDTOOLFLYOUT_XS_N_AT_2X.svg
)
list(TRANSFORM QAFUI_RESOURCE_FILES PREPEND ${CMAKE_CURRENT_LIST_DIR}/)

# The icons that also come as bitmaps: SP_<NAME>_SM_N_D at 16 pixels, _AT_3TO2X at 24 and
# _AT_2X at 32, each drawn at build time from its S_<NAME>_SM_N_D_AT_2X.svg.
set(QAFUI_BITMAP_ICONS ADD REMOVE RESET INVERT LOWSHELF_FIRSTORDER LOWSHELF_SECONDORDER
                       HIGHSHELF_FIRSTORDER HIGHSHELF_SECONDORDER)
# The cursors: CURSORID-<n> at 32 pixels and _AT_2X at 64, from cursors/CURSORID-<n>.svg.
set(QAFUI_CURSORS 200 201 202 203)
