# install_with_prefix(KIND FOLDER FILE...) installs files in which /usr/local stands for the prefix of
# the installation. The prefix is known only when it is made: cmake --install takes another one.
# KIND: FILE or PROGRAM. FOLDER: below the prefix.
function(install_with_prefix kind folder)
  set(permissions OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  if(kind STREQUAL PROGRAM)
    list(APPEND permissions OWNER_EXECUTE GROUP_EXECUTE WORLD_EXECUTE)
  endif()
  list(JOIN permissions " " permissions)
  foreach(file IN LISTS ARGN)
    get_filename_component(name ${file} NAME)
    install(CODE "
      set(installed \"\${CMAKE_INSTALL_PREFIX}/${folder}/${name}\")
      message(STATUS \"Installing: \$ENV{DESTDIR}\${installed}\")
      file(READ \"${PROJECT_SOURCE_DIR}/${file}\" text)
      string(REPLACE /usr/local \"\${CMAKE_INSTALL_PREFIX}\" text \"\${text}\")
      file(WRITE \"\$ENV{DESTDIR}\${installed}\" \"\${text}\")
      file(CHMOD \"\$ENV{DESTDIR}\${installed}\" PERMISSIONS ${permissions})
      list(APPEND CMAKE_INSTALL_MANIFEST_FILES \"\${installed}\")"
      COMPONENT texts)
  endforeach()
endfunction()
