#!/usr/bin/env bash
# What docs/newer-run-times.md tells users of newer run-times to do works, and what it says stays the
# same does: the page's lines of CMake make a library of a schema compiler's classes, the example
# stereo_rig compiles with it as it is, and writes and prints the same as with this library.
#
#   newer_run_times_test.sh SOURCE-FOLDER BUILD-FOLDER PROTOC RUN-TIME-LIBRARY INCLUDE-FOLDER STEREO-RIG
#
# The run-time in use and its compiler play the newer one. A CMake package that says what newer ones'
# says stands in for theirs: two targets, and protobuf_generate(). Those classes are in a package of
# another name. Exit status: 0, it is so; 1, it is not, and what went wrong is told.
set -euo pipefail

source=$1 build=$2 protoc=$3 library=$4 include=$5 stereo_rig=$6
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
source "$(dirname "${BASH_SOURCE[0]}")/consumer.sh"
page=$source/docs/newer-run-times.md

# --- What the newer run-time would bring ---

mkdir -p "$folder/runtime/lib/cmake/protobuf"
cat >"$folder/runtime/lib/cmake/protobuf/protobuf-config.cmake" <<END
add_library(protobuf::libprotobuf UNKNOWN IMPORTED)
set_target_properties(protobuf::libprotobuf PROPERTIES IMPORTED_LOCATION "$library"
  INTERFACE_INCLUDE_DIRECTORIES "$include" INTERFACE_LINK_LIBRARIES "-pthread")
add_executable(protobuf::protoc IMPORTED)
set_target_properties(protobuf::protoc PROPERTIES IMPORTED_LOCATION "$protoc")
END
cat >>"$folder/runtime/lib/cmake/protobuf/protobuf-config.cmake" <<'END'
# What is made of FOLDER/a/b.proto is a/b.pb.h and a/b.pb.cc in the build folder.
function(protobuf_generate)
  cmake_parse_arguments(arg "" TARGET IMPORT_DIRS ${ARGN})
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "protobuf_generate() knows no ${arg_UNPARSED_ARGUMENTS}")
  endif()
  get_target_property(schemas ${arg_TARGET} SOURCES)
  foreach(schema IN LISTS schemas)
    file(RELATIVE_PATH name "${arg_IMPORT_DIRS}" "${schema}")
    string(REGEX REPLACE "proto$" "pb" base "${CMAKE_CURRENT_BINARY_DIR}/${name}")
    add_custom_command(OUTPUT "${base}.h" "${base}.cc" DEPENDS "${schema}" COMMAND protobuf::protoc
      "--cpp_out=${CMAKE_CURRENT_BINARY_DIR}" "--proto_path=${arg_IMPORT_DIRS}" "${schema}")
    target_sources(${arg_TARGET} PRIVATE "${base}.h" "${base}.cc")
  endforeach()
endfunction()
END

# --- A user's project: the page's lines, the example, and what the page says of accessors ---

mkdir "$folder/user"
{
  printf 'cmake_minimum_required(VERSION 3.16)\nproject(user LANGUAGES CXX)\nset(CMAKE_CXX_STANDARD 17)\n'
  awk '$0 == "```cmake" { inside = 1; next } /^```$/ { inside = 0 } inside' "$page"
  for program in stereo_rig accessors; do
    printf 'add_executable(%s %s.cc)\n' $program $program
    printf 'target_link_libraries(%s PRIVATE calibration_messages)\n' $program
  done
} >"$folder/user/CMakeLists.txt"
sed 's/zarvo::calibration/newer::calibration/' "$source/examples/stereo_rig.cc" >"$folder/user/stereo_rig.cc"

# Of `set_fx()`, a call on the message that has it.
declare -A owner=([camera]=rig [has_name]=camera [mutable_intrinsics]=camera [set_fx]=intrinsics
  [add_sample_points]=intrinsics) value=([set_fx]=1 [camera]=0)
calls=''
for accessor in $(sed -n '/^- the accessors:/,/Programs/p' "$page" | grep -oE '`[a-z_]+\(' | tr -d '`('); do
  [[ ${owner[$accessor]:-} ]] || fail "the page names an accessor that this test does not know: $accessor"
  calls+="  ${owner[$accessor]}.$accessor(${value[$accessor]:-});"$'\n'
done
[[ -n $calls ]] || fail "the page names no accessor"
cat >"$folder/user/accessors.cc" <<END
#include "calibration_common/calibration.pb.h"
int main() {
  newer::calibration::RobotCalibration rig;
  newer::calibration::CameraCalibration& camera = *rig.add_camera();
  newer::calibration::CameraIntrinsics& intrinsics = *camera.mutable_intrinsics();
$calls}
END

# --- It builds, and what stays the same does ---

quietly cmake --install "$build" --prefix "$folder/installed" --component Development
schema_folder=$(sed -n 's,^# /usr/\(share/[^ ]*\)\, or .*,\1,p' "$page")
schema=$folder/installed/$schema_folder/calibration_common/calibration.proto
[[ -f $schema ]] ||
  fail "the page names a folder in which the schema is not installed: /usr/$schema_folder"
sed -i 's/^package zarvo\.calibration;$/package newer.calibration;/' "$schema"
configure "$folder/user" "$folder/runtime" \
  "-DCALIBRATION_SCHEMA_FOLDER=$folder/installed/$schema_folder"
((status == 0)) || fail "CMake refused the page's lines: $output"
quietly cmake --build "$folder/user/build"
quietly "$folder/user/build/accessors"
# The compiler's classes, not these.
if readelf -dW "$folder/user/build/stereo_rig" | grep -F calibration_protolib; then
  fail "the program is linked with this library"
fi

# run PROGRAM NAME: in a folder of that name, with what it prints.
run() {
  mkdir "$folder/$2"
  (cd "$folder/$2" && "$1" . >printed) || fail "failed: $1"
}
run "$folder/user/build/stereo_rig" theirs
run "$stereo_rig" ours
compared=$(diff -r "$folder/ours" "$folder/theirs") || fail "with this library otherwise: $compared"
(($(find "$folder/ours" -name '*.binpb' -size +0 | wc -l) == 2)) || fail "no records were written"
