#!/usr/bin/env bash
# A run-time that is not served, or not the one that was named, is refused when CMake configures;
# one that is not served, at the latest by the compiler.
#
#   configure_test.sh SOURCE-FOLDER COMPILER
#
# Each case is a made-up run-time: a folder whose common.h names a version. Exit status: 0, all went
# as it should; 1, otherwise, and what did not is told.
set -euo pipefail

source_folder=$1
compiler=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failures=0

fail() {
  printf 'configure_test: %s\n%s\n' "$1" "$2" >&2
  failures=$((failures + 1))
}

# make_runtime NAME LINE: sets $prefix.
make_runtime() {
  prefix=$folder/$1
  mkdir -p "$prefix/include/google/protobuf/stubs" "$prefix/lib"
  printf '%s\n' "$2" >"$prefix/include/google/protobuf/stubs/common.h"
}

# configure [ARGUMENT...]: sets $status, and $output without CMake's line breaks.
configure() {
  status=0
  output=$(cmake -S "$source_folder" -B "$prefix/build" "-DCMAKE_PREFIX_PATH=$prefix" "$@" \
    -DBUILD_TESTING=OFF -DCALIBRATION_GENERATOR=OFF -DCALIBRATION_EXAMPLES=OFF \
    -DCALIBRATION_CALIB=OFF 2>&1) || status=$?
  output=$(tr -s ' \n' ' ' <<<"$output")
}

supported="supported are the 3.0 series (3.0.x) and the 3.21 series (3.21.x)."

# expect_refusal NAME SENTENCE [ARGUMENT...]: of configuring, with one error and these words.
expect_refusal() {
  configure "${@:3}"
  if ((status == 0)); then
    fail "$1: was accepted; expected: $2" "$output"
  elif [[ $output != *"$2"* || $(grep -o 'CMake Error' <<<"$output" | wc -l) != 1 ]]; then
    fail "$1: expected one error that says: $2" "$output"
  fi
}

define='#define GOOGLE_PROTOBUF_VERSION'

refused=(2006001=2.6.1 3001000=3.1.0 3012004=3.12.4 3020003=3.20.3 3022000=3.22.0 4021012=4.21.12)
for case in "${refused[@]}"; do
  number=${case%=*} version=${case#*=}
  make_runtime "$number" "$define $number"
  touch "$prefix/lib/libprotobuf.so"
  expect_refusal "version $number" \
    "The protobuf run-time found in $prefix/include is version $version; $supported"

  if message=$("$compiler" -std=c++17 -fsyntax-only -I "$source_folder" -isystem "$prefix/include" \
    -x c++ "$source_folder/calibration_common/runtime.h" 2>&1) ||
    [[ $message != *"serves the protobuf run-times 3.0 and 3.21"* ]]; then
    fail "version $number: the compiler did not refuse it as one that is not served" "$message"
  fi
done

make_runtime unknown "#define PROTOBUF_VERSION 1"
expect_refusal "no version" "is of unknown version, since"

make_runtime headers_only "$define 3021012"
expect_refusal "no library" "no library libprotobuf below $prefix, where it was expected."

# What is refused above is refused for its version alone.
for number in 3000000 3000002 3021000 3021012; do
  make_runtime "$number" "$define $number"
  touch "$prefix/lib/libprotobuf.so"
  configure
  ((status == 0)) || fail "version $number: was refused" "$output"
done

# A run-time that stands elsewhere is not taken for the one that was named...
make_runtime elsewhere "$define 3021012"
touch "$prefix/lib/libprotobuf.so"
mkdir "$folder/empty"
for named in "$folder/empty" elsewhere "${prefix}_not"; do
  expect_refusal "no run-time in $named" \
    "CMAKE_PREFIX_PATH is '$named', but no protobuf run-time is below it (found: $prefix/include); \
expected an absolute folder that holds the run-time's include and lib." \
    "-DCMAKE_PREFIX_PATH=$named" "-DCMAKE_INCLUDE_PATH=$prefix/include"
done
configure "-DCMAKE_PREFIX_PATH=$folder/empty;$prefix/" -DCMAKE_INCLUDE_PATH=
((status == 0)) || fail "the second of two folders that were named: was refused" "$output"

# ...but by a project that includes this one, which names folders for other things.
mkdir "$folder/user"
cat >"$folder/user/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project(user LANGUAGES CXX)
add_subdirectory("$source_folder" calibration_protolib)
END
source_folder=$folder/user prefix=$folder/user
configure "-DCMAKE_PREFIX_PATH=$folder/empty" "-DCMAKE_INCLUDE_PATH=$folder/elsewhere/include"
((status == 0)) || fail "as part of another project: was refused" "$output"

exit $((failures != 0))
