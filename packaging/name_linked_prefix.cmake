# Has the installed pkg-config files name their prefix, if the way from the files up to it leads elsewhere
# since the folder of libraries, or one above it, is a link. Run by `cmake --install`, with
# installed_libdir set; a tree with such a link cannot be moved.

if(NOT IS_ABSOLUTE "${installed_libdir}")
  set(root "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}")
  set(folder "${root}/${installed_libdir}/pkgconfig")
  foreach(name IN ITEMS calibration_protolib calibration_geometry calibration_formats)
    set(file "${folder}/${name}.pc")
    if(NOT EXISTS "${file}")
      continue()
    endif()
    file(READ "${file}" text)
    string(REGEX MATCH "^prefix=\\\${pcfiledir}/([./]+)\n" _ "${text}")
    get_filename_component(real_folder "${folder}" REALPATH)
    get_filename_component(reached "${real_folder}/${CMAKE_MATCH_1}" ABSOLUTE)
    get_filename_component(expected "${root}" REALPATH)
    if(NOT reached STREQUAL expected)
      string(REGEX REPLACE "^prefix=[^\n]*" "prefix=${CMAKE_INSTALL_PREFIX}" text "${text}")
      file(WRITE "${file}" "${text}")
    endif()
  endforeach()
endif()
