# Has the installed pkg-config file name its prefix, if the way from the file up to it leads elsewhere
# since the folder of libraries, or one above it, is a link. Run by `cmake --install`, with
# installed_libdir set; a tree with such a link cannot be moved.

if(NOT IS_ABSOLUTE "${installed_libdir}")
  set(root "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}")
  set(file "${root}/${installed_libdir}/pkgconfig/calibration_protolib.pc")
  file(READ "${file}" text)
  string(REGEX MATCH "^prefix=\\\${pcfiledir}/([./]+)\n" _ "${text}")
  get_filename_component(folder "${file}" DIRECTORY)
  get_filename_component(folder "${folder}" REALPATH)
  get_filename_component(reached "${folder}/${CMAKE_MATCH_1}" ABSOLUTE)
  get_filename_component(expected "${root}" REALPATH)
  if(NOT reached STREQUAL expected)
    string(REGEX REPLACE "^prefix=[^\n]*" "prefix=${CMAKE_INSTALL_PREFIX}" text "${text}")
    file(WRITE "${file}" "${text}")
  endif()
endif()
