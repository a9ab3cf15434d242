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

supported="the versions 3.0.0 to 3.21.12"

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

# expect_unserved NUMBER VERSION REASON: by CMake with that reason, and by the compiler.
expect_unserved() {
  make_runtime "$1" "$define $1"
  touch "$prefix/lib/libprotobuf.so"
  expect_refusal "version $1" "The protobuf run-time found in $prefix/include is version $2$3"

  if message=$("$compiler" -std=c++17 -fsyntax-only -I "$source_folder" -isystem "$prefix/include" \
    -x c++ "$source_folder/calibration_common/runtime.h" 2>&1) ||
    [[ $message != *"serves the protobuf run-times 3.0 to 3.21"* ]]; then
    fail "version $1: the compiler did not refuse it as one that is not served" "$message"
  fi
}

expect_unserved 2006001 2.6.1 "; supported are $supported."
newer=", whose messages are built otherwise: calibration_protolib serves $supported. What \
to do instead: compile calibration_common/calibration.proto with that run-time's own compiler \
(docs/newer-run-times.md)."
expect_unserved 3022000 3.22.0 "$newer"
expect_unserved 4022000 4.22.0 "$newer"
[[ -f $source_folder/docs/newer-run-times.md ]] || fail "the page that is named is not there" ""

make_runtime unknown "#define PROTOBUF_VERSION 1"
expect_refusal "no version" "is of unknown version, since"

make_runtime headers_only "$define 3021012"
expect_refusal "no library" "no library libprotobuf below $prefix, where it was expected."

# A machine of the other byte order is refused; here one that its compiler says to be such.
make_runtime 3021012 "$define 3021012"
touch "$prefix/lib/libprotobuf.so"
expect_refusal "a big-endian machine" "reads and writes numbers as little-endian machines hold them" \
  "-DCMAKE_CXX_FLAGS=-U__BYTE_ORDER__ -D__BYTE_ORDER__=__ORDER_BIG_ENDIAN__"
rm -r "$prefix"

# What is refused above is refused for its version alone.
for number in 3000000 3001000 3005002 3006001 3012004 3020003 3021012; do
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
mkdir "$folder/linked"
ln -s "$prefix/include" "$folder/linked/include"
ln -s "$prefix/lib" "$folder/linked/lib"
configure "-DCMAKE_PREFIX_PATH=$folder/linked"
((status == 0)) || fail "a folder whose include is a link: was refused" "$output"
found=$(grep -E '^(include_dir|library|calibration_found)[:=]' "$prefix/build/CMakeCache.txt") || true
[[ -z $found ]] || fail "what was found is left in the cache, for others to fall over" "$found"

# ...but is where it was the environment that named a folder: a workspace names there what it has...
(
  export CMAKE_PREFIX_PATH="$folder/empty"
  configure -UCMAKE_PREFIX_PATH "-DCMAKE_INCLUDE_PATH=$folder/elsewhere/include"
  ((status == 0)) || fail "an environment without a run-time: was refused" "$output"
  export CMAKE_PREFIX_PATH="$folder/empty:$folder/2006001"
  expect_refusal "a run-time that the environment names" "run-time found in $folder/2006001" \
    -UCMAKE_PREFIX_PATH -UCMAKE_INCLUDE_PATH
  exit $((failures != 0))
) || failures=$((failures + 1))

# ...and by a project that includes this one, which names folders for other things, too.
mkdir "$folder/user"
cat >"$folder/user/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.16)
project(user LANGUAGES CXX)
add_subdirectory("$source_folder" calibration_protolib)
END
source_folder=$folder/user prefix=$folder/user
configure "-DCMAKE_PREFIX_PATH=$folder/empty" "-DCMAKE_INCLUDE_PATH=$folder/elsewhere/include"
((status == 0)) || fail "as part of another project: was refused" "$output"

exit $((failures != 0))
