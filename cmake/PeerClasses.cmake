# calibration_add_peer(<target> <package>): a static library of the classes that the run-time's own
# schema compiler makes of calibration.proto, in another package, so that both can be in one
# program. The header is the package's path below the include folder that comes with the library,
# such as peer/calibration.pb.h for peer.calibration; <target>_SOURCE is set to the source. The
# classes are made while building and live in the build folder only.
#
# That needs a protoc of the run-time's own version. For the system's run-time it is an error if there
# is none; a run-time elsewhere may have come without, and then no library is made.
function(calibration_add_peer target package)
  set(version "")
  find_program(CALIBRATION_PROTOC protoc)
  if(CALIBRATION_PROTOC)
    execute_process(COMMAND "${CALIBRATION_PROTOC}" --version OUTPUT_VARIABLE version)
    string(REGEX MATCH "[0-9.]+" version "${version}")
  endif()
  if(NOT version STREQUAL CALIBRATION_PROTOBUF_VERSION)
    if(NOT CALIBRATION_PROTOBUF_INCLUDE_DIR STREQUAL "/usr/include")
      return()
    endif()
    message(FATAL_ERROR "${target} needs protoc ${CALIBRATION_PROTOBUF_VERSION}, that of the "
                        "run-time in use; found '${CALIBRATION_PROTOC}' of version '${version}': "
                        "install it (Debian's package protobuf-compiler), or leave out tests and "
                        "benchmarks with -DBUILD_TESTING=OFF -DCALIBRATION_BENCHMARKS=OFF.")
  endif()

  set(schema "${PROJECT_SOURCE_DIR}/calibration_common/calibration.proto")
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/${target}_classes")
  string(REPLACE "." "/" base "${package}")
  get_filename_component(base_folder "${folder}/${base}" DIRECTORY)
  add_custom_command(
    OUTPUT "${folder}/${base}.pb.h" "${folder}/${base}.pb.cc"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${base_folder}"
    COMMAND sed "s/^package .*/package ${package};/" "${schema}" > "${folder}/${base}.proto"
    COMMAND "${CALIBRATION_PROTOC}" "--proto_path=${folder}" "--cpp_out=${folder}" "${base}.proto"
    DEPENDS "${schema}"
    COMMENT "Making the classes of ${target}"
    VERBATIM)
  add_library(${target} STATIC "${folder}/${base}.pb.cc" "${folder}/${base}.pb.h")
  target_include_directories(${target} SYSTEM PUBLIC "${folder}")
  target_link_libraries(${target} PUBLIC calibration_protobuf_runtime)
  set(${target}_SOURCE "${folder}/${base}.pb.cc" PARENT_SCOPE)
endfunction()
