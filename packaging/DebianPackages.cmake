# Sets up `cpack -G DEB`: one package for each component. scripts/package calls it the right way.
#
#   libcalibration-protolibN    Runtime; N is the number in the SONAME, so that two may be installed
#   libcalibration-protolib-dev Development
#   calibration-tools           Tools, if the commands are built
#   python3-calibration-protolib Python, which only these packages have: elsewhere pip installs it

if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  message(FATAL_ERROR "CALIBRATION_PACKAGES: Debian's packages install below /usr, and the folder "
                      "of libraries depends on it. CMAKE_INSTALL_PREFIX is '${CMAKE_INSTALL_PREFIX}'; "
                      "expected /usr (scripts/package makes packages).")
endif()
if(NOT CALIBRATION_PROTOBUF_INCLUDE_DIR STREQUAL "/usr/include")
  message(FATAL_ERROR "CALIBRATION_PACKAGES: Debian's packages need Debian's run-time; the one "
                      "found is in ${CALIBRATION_PROTOBUF_INCLUDE_DIR}, expected /usr/include.")
endif()

set(runtime_package "libcalibration-protolib${PROJECT_VERSION_MAJOR}")
set(development_package libcalibration-protolib-dev)
set(tools_package calibration-tools)
set(python_package python3-calibration-protolib)
set(packages runtime development python)
if(TARGET calib)
  list(APPEND packages tools)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR "${PROJECT_NAME}")
if(NOT CPACK_PACKAGE_CONTACT)
  set(CPACK_PACKAGE_CONTACT "${PROJECT_NAME} developers <developers@${PROJECT_NAME}.invalid>")
endif()
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(debian_version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

# What a program that is linked with the library will depend on: functions may be added in any
# version, so at least the one that it was linked with.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# The first line of each text is the package's summary; CPack's own stays out of the way.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
    "${PROJECT_DESCRIPTION} (shared library)
Message classes in the protocol buffers binary encoding for what a robot's
calibration produces and consumes: cameras, focus measurements, markers, the
drive base, pan-tilt-zoom heads. This package holds what programs need to run.")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
    "${PROJECT_DESCRIPTION} (development files)
Message classes in the protocol buffers binary encoding for what a robot's
calibration produces and consumes: cameras, focus measurements, markers, the
drive base, pan-tilt-zoom heads. This package holds what it takes to build
programs, and the schema with its descriptor set for other languages.")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
    "${PROJECT_DESCRIPTION} (commands)
Commands that look at, check, convert and compare files of calibration records.")
set(CPACK_DEBIAN_PYTHON_DESCRIPTION
    "${PROJECT_DESCRIPTION} (Python 3)
The Python package calibration_protolib: reads and writes the records, refuses
what the shared library refuses, and hands numbers to numpy.")

# The library's dependencies are read off it. The headers are used with the run-time's headers of
# the series that the library was built for.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
string(CONCAT CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
              "${runtime_package} (= ${debian_version}), "
              "libprotobuf-dev (>= ${CALIBRATION_PROTOBUF_SERIES}), "
              "libprotobuf-dev (<< ${next_series}~)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${runtime_package} (= ${debian_version})")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)

# The Python package, with the descriptor set beside it, so that a robot needs no development files.
set(python_folder lib/python3/dist-packages)
install(
  DIRECTORY "${PROJECT_SOURCE_DIR}/python/calibration_protolib"
  DESTINATION "${python_folder}"
  COMPONENT Python
  PATTERN __pycache__ EXCLUDE)
install(
  FILES "${descriptor_set}"
  DESTINATION "${python_folder}/calibration_protolib"
  COMPONENT Python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), python3-protobuf (>= 3.12)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS python3-numpy)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    "${CMAKE_CURRENT_SOURCE_DIR}/python/postinst" "${CMAKE_CURRENT_SOURCE_DIR}/python/prerm")

# Every package tells its license and its history.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian"
     "calibration-protolib (${debian_version}) unstable; urgency=medium\n\n"
     "  * Made of version ${PROJECT_VERSION}; changelog.gz tells what changed.\n\n"
     " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
set(changelogs "${CMAKE_CURRENT_BINARY_DIR}/changelog.gz"
               "${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz")
add_custom_command(
  OUTPUT ${changelogs}
  COMMAND gzip -9nc "${PROJECT_SOURCE_DIR}/CHANGELOG.md" > changelog.gz
  COMMAND gzip -9nc changelog.Debian > changelog.Debian.gz
  DEPENDS "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian"
  VERBATIM)
add_custom_target(calibration_changelogs ALL DEPENDS ${changelogs})
set(CPACK_COMPONENTS_ALL "")
foreach(package IN LISTS packages)
  string(TOUPPER ${package} upper)
  string(SUBSTRING ${package} 1 -1 rest)
  string(SUBSTRING ${upper} 0 1 initial)
  list(APPEND CPACK_COMPONENTS_ALL "${initial}${rest}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME "${${package}_package}")
  set(documents "${CMAKE_INSTALL_DATADIR}/doc/${${package}_package}")
  install(
    FILES "${PROJECT_SOURCE_DIR}/LICENSE"
    DESTINATION "${documents}"
    RENAME copyright
    COMPONENT "${initial}${rest}")
  install(
    FILES ${changelogs}
    DESTINATION "${documents}"
    COMPONENT "${initial}${rest}")
endforeach()

include(CPack)
