# Finds the protobuf run-time, for the build of this library and, installed with its CMake package,
# for whoever uses it.
#
# Looks for the header first, in the folders of CMAKE_PREFIX_PATH and then in the system's, and
# takes the library from the same prefix, so that the header of one run-time never meets the library
# of another. The schema compiler is not needed. Nothing is cached: naming another CMAKE_PREFIX_PATH
# in the same build folder takes effect. Naming one without a run-time is an error and does not
# quietly take the system's; but where CMAKE_PREFIX_PATH may be there for other things, as part of
# another project or in the environment, the system's will do.

# calibration_find(<variable> path|library <argument>...)
#
# Sets <variable> to what find_path() or find_library() finds, in the caller's scope alone: neither a
# variable of a user's nor one in the cache passes for it, and none is left in the cache (NO_CACHE,
# which CMake has from 3.21 on).
macro(calibration_find variable kind)
  unset(calibration_found)
  unset(calibration_found CACHE)
  if(${kind} STREQUAL path)
    find_path(calibration_found ${ARGN})
  else()
    find_library(calibration_found ${ARGN})
  endif()
  set(${variable} "${calibration_found}")
  unset(calibration_found CACHE)
  unset(calibration_found)
endmacro()

# calibration_find_protobuf_runtime(<error> [<series>])
#
# Defines the imported target calibration_protobuf_runtime and sets CALIBRATION_PROTOBUF_VERSION,
# such as "3.21.12", CALIBRATION_PROTOBUF_SERIES, such as "3.21", and
# CALIBRATION_PROTOBUF_INCLUDE_DIR. Where that cannot be done, <error> is a sentence that says why;
# otherwise it is empty.
#
# The run-time binding in calibration_common/ serves the run-times from 3.0 to 3.21; any other
# version is refused here rather than by a page of compiler errors. With <series>, no other series
# will do: a library that is built on one cannot be used with another.
function(calibration_find_protobuf_runtime error)
  set(supported "the versions 3.0.0 to 3.21.12")
  set(wanted "${ARGN}")

  calibration_find(include_dir path google/protobuf/stubs/common.h)
  if(NOT include_dir)
    string(CONCAT message "No protobuf run-time found: google/protobuf/stubs/common.h is in no "
                          "folder of CMAKE_PREFIX_PATH ('${CMAKE_PREFIX_PATH}') nor of the system; "
                          "supported are ${supported}.")
    set(${error} "${message}" PARENT_SCOPE)
    return()
  endif()

  string(REGEX REPLACE "/$" "" include_dir "${include_dir}")
  if(CMAKE_SOURCE_DIR STREQUAL PROJECT_SOURCE_DIR AND CMAKE_PREFIX_PATH AND NOT wanted)
    set(named FALSE)
    get_filename_component(real_include_dir "${include_dir}" REALPATH)
    foreach(entry IN LISTS CMAKE_PREFIX_PATH)
      if(IS_ABSOLUTE "${entry}")
        # As it is named, and with its links followed: include may be a link itself.
        string(REGEX REPLACE "/+$" "" entry "${entry}")
        get_filename_component(real_entry "${entry}" REALPATH)
        string(FIND "${include_dir}/" "${entry}/" at)
        string(FIND "${real_include_dir}/" "${real_entry}/" real_at)
        if(at EQUAL 0 OR real_at EQUAL 0)
          set(named TRUE)
        endif()
      endif()
    endforeach()
    if(NOT named)
      string(CONCAT message "CMAKE_PREFIX_PATH is '${CMAKE_PREFIX_PATH}', but no protobuf run-time "
                            "is below it (found: ${include_dir}); expected an "
                            "absolute folder that holds the run-time's include and lib.")
      set(${error} "${message}" PARENT_SCOPE)
      return()
    endif()
  endif()

  set(header "${include_dir}/google/protobuf/stubs/common.h")
  file(STRINGS "${header}" line REGEX "^#define GOOGLE_PROTOBUF_VERSION [0-9]+")
  if(NOT line MATCHES "GOOGLE_PROTOBUF_VERSION ([0-9]+)")
    string(CONCAT message "The protobuf run-time in ${include_dir} is of unknown "
                          "version, since ${header} defines no GOOGLE_PROTOBUF_VERSION; "
                          "supported are ${supported}.")
    set(${error} "${message}" PARENT_SCOPE)
    return()
  endif()
  set(number "${CMAKE_MATCH_1}")
  math(EXPR major "${number} / 1000000")
  math(EXPR minor "${number} / 1000 % 1000")
  math(EXPR patch "${number} % 1000")
  set(version "${major}.${minor}.${patch}")
  set(series "${major}.${minor}")
  set(own_compiler "compile calibration_common/calibration.proto with that run-time's own compiler")
  if(wanted AND NOT wanted STREQUAL series)
    if(version VERSION_LESS 3.0)
      set(or "")
    elseif(version VERSION_LESS 3.22)
      set(or ", or use a calibration_protolib that was built for ${series}")
    else()
      set(or ", or ${own_compiler}")
    endif()
    string(CONCAT message "calibration_protolib was built for the protobuf run-time of the "
                          "${wanted} series; the one found in ${include_dir} is version "
                          "${version}. Name the folder of a ${wanted} run-time in "
                          "CMAKE_PREFIX_PATH, ahead of others${or}.")
    set(${error} "${message}" PARENT_SCOPE)
    return()
  endif()
  if(NOT version VERSION_LESS 3.22)
    string(CONCAT message "The protobuf run-time found in ${include_dir} is version ${version}, "
                          "whose messages are built otherwise: calibration_protolib serves "
                          "${supported}.\n  What to do instead: ${own_compiler} "
                          "(docs/newer-run-times.md).")
    set(${error} "${message}" PARENT_SCOPE)
    return()
  endif()
  if(version VERSION_LESS 3.0)
    string(CONCAT message "The protobuf run-time found in ${include_dir} is "
                          "version ${version}; supported are ${supported}.")
    set(${error} "${message}" PARENT_SCOPE)
    return()
  endif()

  get_filename_component(prefix "${include_dir}" DIRECTORY)
  calibration_find(
    library library protobuf
    PATHS "${prefix}/lib/${CMAKE_LIBRARY_ARCHITECTURE}" "${prefix}/lib64" "${prefix}/lib"
    NO_DEFAULT_PATH)
  if(NOT library)
    string(CONCAT message "The protobuf run-time ${version} has its headers in "
                          "${include_dir} but no library libprotobuf "
                          "below ${prefix}, where it was expected.")
    set(${error} "${message}" PARENT_SCOPE)
    return()
  endif()

  # What is done once for all threads needs them: a library of its own before glibc 2.34. By name,
  # since the target Threads::Threads is not seen by other folders.
  set(THREADS_PREFER_PTHREAD_FLAG FALSE)
  find_package(Threads REQUIRED)

  # An imported target's headers count as system headers: their warnings are not ours.
  if(NOT TARGET calibration_protobuf_runtime)
    add_library(calibration_protobuf_runtime UNKNOWN IMPORTED GLOBAL)
    set_target_properties(
      calibration_protobuf_runtime
      PROPERTIES IMPORTED_LOCATION "${library}"
                 INTERFACE_INCLUDE_DIRECTORIES "${include_dir}"
                 INTERFACE_LINK_LIBRARIES "${CMAKE_THREAD_LIBS_INIT}")
    # Earlier headers do not see by themselves that there is no type information.
    if(version VERSION_LESS 3.12)
      set(no_rtti "$<IN_LIST:-fno-rtti,$<TARGET_PROPERTY:COMPILE_OPTIONS>>")
      if(" ${CMAKE_CXX_FLAGS} " MATCHES " -fno-rtti ")
        set(no_rtti 1)
      endif()
      set_target_properties(
        calibration_protobuf_runtime PROPERTIES INTERFACE_COMPILE_DEFINITIONS
                                                "$<${no_rtti}:GOOGLE_PROTOBUF_NO_RTTI>")
    endif()
  endif()
  set(${error} "" PARENT_SCOPE)
  set(CALIBRATION_PROTOBUF_VERSION "${version}" PARENT_SCOPE)
  set(CALIBRATION_PROTOBUF_SERIES "${series}" PARENT_SCOPE)
  set(CALIBRATION_PROTOBUF_INCLUDE_DIR "${include_dir}" PARENT_SCOPE)
endfunction()
