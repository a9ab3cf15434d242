#!/usr/bin/env bash
# A program that is built with a sanitizer sees elements come and go, though they share allocations
# and the library, as it is installed, is built without one: ThreadSanitizer reports no race where
# two threads delete elements that were read together, AddressSanitizer reports who uses an element
# that is gone. Neither minds a program that has an `operator new` of its own.
#
#   sanitized_program_test.sh SANITIZER COMPILER LIBRARY SOURCE-FOLDER RUN-TIME-LIBRARY
#       [RUN-TIME-INCLUDE-FOLDER]
#
# SANITIZER is address or thread.
set -euo pipefail

sanitizer=$1 compiler=$2 library=$3 source=$4 runtime=$5 runtime_include=${6:-}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fail() {
  cat "$folder/output" >&2
  echo "sanitized_program_test: $*" >&2
  exit 1
}

cat >"$folder/program.cc" <<'END'
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "calibration_common/calibration.pb.h"

using zarvo::calibration::MarkerPositionInfo;
using zarvo::calibration::MarkerPositionSet;

#ifdef OWN_NEW
void* operator new(std::size_t size) {
  if (void* block = std::malloc(size)) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
#endif

int main(int, char** arguments) {
  MarkerPositionSet written;
  for (int i = 0; i < 16; ++i) written.add_pos()->set_marker_id(i);
  MarkerPositionSet markers;
  if (!markers.ParseFromString(written.SerializeAsString())) return 2;
  std::vector<std::unique_ptr<MarkerPositionInfo>> elements;
  while (markers.pos_size() > 0) elements.emplace_back(markers.mutable_pos()->ReleaseLast());

  if (std::strcmp(arguments[1], "use-after-delete") == 0) {
    const MarkerPositionInfo* gone = elements[3].get();
    elements[3].reset();
    return gone->marker_id();
  }
  std::thread other([&] {
    for (size_t i = 0; i < elements.size(); i += 2) elements[i].reset();
  });
  for (size_t i = 1; i < elements.size(); i += 2) elements[i].reset();
  other.join();
  std::puts("done");
}
END
# Without RPATHs of the run-time, which is where the library found it.
for own_new in "" -DOWN_NEW; do
  "$compiler" -std=c++14 -g -O1 "-fsanitize=$sanitizer" -I "$source" $own_new \
    ${runtime_include:+-isystem "$runtime_include"} "$folder/program.cc" -o "$folder/program$own_new" \
    "$library" "$runtime" -pthread \
    "-Wl,-rpath,$(dirname "$library"),-rpath,$(dirname "$runtime")" >"$folder/output" 2>&1 ||
    fail "the program does not compile ($own_new)"

  "$folder/program$own_new" threads >"$folder/output" 2>&1 ||
    fail "two threads that delete elements ($own_new)"
  grep -q '^done$' "$folder/output" || fail "two threads that delete elements ($own_new)"
done
if [[ $sanitizer == address ]]; then
  if "$folder/program" use-after-delete >"$folder/output" 2>&1; then
    fail "the use of an element that is gone went unnoticed"
  fi
  grep -q 'AddressSanitizer: use-after' "$folder/output" || fail "another report was expected"
fi
