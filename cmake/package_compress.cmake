# Compresses the manual pages and the changelog, as Debian requires, in the folder to be packed. The
# results hold no file names or times, so that the same sources always give the same package.
set(share ${CPACK_TEMPORARY_DIRECTORY}/usr/share)
file(GLOB pages ${share}/man/man*/*.[1-9] ${share}/doc/*/changelog)
foreach(page IN LISTS pages)
  execute_process(COMMAND gzip -9n ${page} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
