# Compresses what Debian wants compressed, in the folder that is about to be packed. Without names
# and times in the results, so that the same sources give the same package.
set(share ${CPACK_TEMPORARY_DIRECTORY}/usr/share)
file(GLOB pages ${share}/man/man*/*.[1-9] ${share}/doc/*/changelog)
foreach(page IN LISTS pages)
  execute_process(COMMAND gzip -9n ${page} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
