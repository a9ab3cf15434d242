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
