# Finds the protobuf run-time and defines the imported target calibration_protobuf_runtime.
#
# Looks for the header first, in the folders of CMAKE_PREFIX_PATH and then in the system's, and
# takes the library from the same prefix, so that the header of one run-time never meets the library
# of another. The schema compiler is not needed. Nothing is cached: naming another CMAKE_PREFIX_PATH
# in the same build folder takes effect. Naming one without a run-time is an error and does not
# quietly take the system's; but as part of another project, whose CMAKE_PREFIX_PATH may be there
# for other things, the system's will do.
#
# Sets CALIBRATION_PROTOBUF_VERSION, such as "3.21.12". The run-time binding in calibration_common/
# serves two series of run-times; any other version is refused here rather than by a page of
# compiler errors.

set(_supported "the 3.0 series (3.0.x) and the 3.21 series (3.21.x)")

find_path(CALIBRATION_PROTOBUF_INCLUDE_DIR google/protobuf/stubs/common.h NO_CACHE)
if(NOT CALIBRATION_PROTOBUF_INCLUDE_DIR)
  message(FATAL_ERROR "No protobuf run-time found: google/protobuf/stubs/common.h is in no "
                      "folder of CMAKE_PREFIX_PATH ('${CMAKE_PREFIX_PATH}') nor of the system; "
                      "supported are ${_supported}.")
endif()

string(REGEX REPLACE "/$" "" CALIBRATION_PROTOBUF_INCLUDE_DIR "${CALIBRATION_PROTOBUF_INCLUDE_DIR}")
if(PROJECT_IS_TOP_LEVEL AND CMAKE_PREFIX_PATH)
  set(_named FALSE)
  file(REAL_PATH "${CALIBRATION_PROTOBUF_INCLUDE_DIR}" _found)
  foreach(_entry IN LISTS CMAKE_PREFIX_PATH)
    if(IS_ABSOLUTE "${_entry}")
      file(REAL_PATH "${_entry}" _entry)
      cmake_path(IS_PREFIX _entry "${_found}" _below)
      if(_below)
        set(_named TRUE)
      endif()
    endif()
  endforeach()
  if(NOT _named)
    message(FATAL_ERROR "CMAKE_PREFIX_PATH is '${CMAKE_PREFIX_PATH}', but no protobuf run-time is "
                        "below it (found: ${CALIBRATION_PROTOBUF_INCLUDE_DIR}); expected an "
                        "absolute folder that holds the run-time's include and lib.")
  endif()
endif()

set(_header "${CALIBRATION_PROTOBUF_INCLUDE_DIR}/google/protobuf/stubs/common.h")
file(STRINGS "${_header}" _line REGEX "^#define GOOGLE_PROTOBUF_VERSION [0-9]+")
if(NOT _line MATCHES "GOOGLE_PROTOBUF_VERSION ([0-9]+)")
  message(FATAL_ERROR "The protobuf run-time in ${CALIBRATION_PROTOBUF_INCLUDE_DIR} is of unknown "
                      "version, since ${_header} defines no GOOGLE_PROTOBUF_VERSION; "
                      "supported are ${_supported}.")
endif()
set(_number "${CMAKE_MATCH_1}")
math(EXPR _major "${_number} / 1000000")
math(EXPR _minor "${_number} / 1000 % 1000")
math(EXPR _patch "${_number} % 1000")
set(CALIBRATION_PROTOBUF_VERSION "${_major}.${_minor}.${_patch}")
if(NOT CALIBRATION_PROTOBUF_VERSION MATCHES "^3\\.(0|21)\\.")
  message(FATAL_ERROR "The protobuf run-time found in ${CALIBRATION_PROTOBUF_INCLUDE_DIR} is "
                      "version ${CALIBRATION_PROTOBUF_VERSION}; supported are ${_supported}.")
endif()

get_filename_component(_prefix "${CALIBRATION_PROTOBUF_INCLUDE_DIR}" DIRECTORY)
find_library(
  CALIBRATION_PROTOBUF_LIBRARY protobuf
  PATHS "${_prefix}/lib/${CMAKE_LIBRARY_ARCHITECTURE}" "${_prefix}/lib64" "${_prefix}/lib"
  NO_DEFAULT_PATH NO_CACHE)
if(NOT CALIBRATION_PROTOBUF_LIBRARY)
  message(FATAL_ERROR "The protobuf run-time ${CALIBRATION_PROTOBUF_VERSION} has its headers in "
                      "${CALIBRATION_PROTOBUF_INCLUDE_DIR} but no library libprotobuf "
                      "below ${_prefix}, where it was expected.")
endif()
message(STATUS "Protobuf run-time ${CALIBRATION_PROTOBUF_VERSION}: ${CALIBRATION_PROTOBUF_LIBRARY}")

# An imported target's headers count as system headers: their warnings are not ours.
add_library(calibration_protobuf_runtime UNKNOWN IMPORTED GLOBAL)
set_target_properties(
  calibration_protobuf_runtime
  PROPERTIES IMPORTED_LOCATION "${CALIBRATION_PROTOBUF_LIBRARY}"
             INTERFACE_INCLUDE_DIRECTORIES "${CALIBRATION_PROTOBUF_INCLUDE_DIR}")

# The generator loads the schema with the run-time's importer. Its code is in the run-time library,
# but Debian packs its header apart.
function(calibration_require_schema_importer)
  set(header "google/protobuf/compiler/importer.h")
  if(NOT EXISTS "${CALIBRATION_PROTOBUF_INCLUDE_DIR}/${header}")
    message(FATAL_ERROR "The generator needs ${header}, which is not in "
                        "${CALIBRATION_PROTOBUF_INCLUDE_DIR}: install it (Debian's package "
                        "libprotoc-dev), or leave the generator out with "
                        "-DCALIBRATION_GENERATOR=OFF -DBUILD_TESTING=OFF.")
  endif()
endfunction()
