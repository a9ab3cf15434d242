# peer_test: the records beside the classes that protoc makes of the same schema, under another
# package name. The classes live in the build folder only. The 3.0-series run-times have no schema
# compiler that could be built along, so that the peer is there on 3.21 only.

if(NOT CALIBRATION_PROTOBUF_VERSION MATCHES "^3\\.21\\.")
  message(STATUS "No peer_test: the run-time ${CALIBRATION_PROTOBUF_VERSION} has no schema compiler")
  return()
endif()
set(peer_version "")
find_program(CALIBRATION_PROTOC protoc)
if(CALIBRATION_PROTOC)
  execute_process(COMMAND "${CALIBRATION_PROTOC}" --version OUTPUT_VARIABLE peer_version)
  string(REGEX MATCH "[0-9.]+" peer_version "${peer_version}")
endif()
if(NOT peer_version STREQUAL CALIBRATION_PROTOBUF_VERSION)
  message(FATAL_ERROR "peer_test needs protoc ${CALIBRATION_PROTOBUF_VERSION}, that of the run-time "
                      "in use; found '${CALIBRATION_PROTOC}' of version '${peer_version}': install "
                      "it (Debian's package protobuf-compiler), or leave the tests out with "
                      "-DBUILD_TESTING=OFF.")
endif()

set(peer_package calibration_peer)
set(peer_schema "${PROJECT_SOURCE_DIR}/calibration_common/calibration.proto")
set(peer_folder "${CMAKE_CURRENT_BINARY_DIR}/peer")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${peer_schema}")
file(READ "${peer_schema}" peer_text)
string(REPLACE "package zarvo.calibration;" "package ${peer_package};" peer_changed "${peer_text}")
if(peer_changed STREQUAL peer_text)
  message(FATAL_ERROR "${peer_schema} has no line 'package zarvo.calibration;', which peer_test "
                      "replaces.")
endif()
file(CONFIGURE OUTPUT "${peer_folder}/calibration_peer.proto" CONTENT "${peer_changed}" @ONLY)

add_custom_command(
  OUTPUT "${peer_folder}/calibration_peer.pb.cc" "${peer_folder}/calibration_peer.pb.h"
  COMMAND "${CALIBRATION_PROTOC}" "--proto_path=${peer_folder}" "--cpp_out=${peer_folder}"
          "${peer_folder}/calibration_peer.proto"
  DEPENDS "${peer_folder}/calibration_peer.proto"
  VERBATIM)

calibration_test(peer_test peer_test.cc "${peer_folder}/calibration_peer.pb.cc")
target_compile_definitions(peer_test PRIVATE "CALIBRATION_PEER_PACKAGE=\"${peer_package}\"")
# Its warnings are not ours.
set_source_files_properties("${peer_folder}/calibration_peer.pb.cc" PROPERTIES COMPILE_OPTIONS -w)
