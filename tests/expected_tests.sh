#!/usr/bin/env bash
# The tests of a build against tests/expected_tests.txt, the list of all tests by their ctest names:
# each is in the build, or the build says that it leaves it out, and why (cmake/LeftOutTests.cmake).
# So none is lost unnoticed.
#
#   expected_tests.sh check BUILD-FOLDER     compares, and prints what is left out; the build has been
#                                            configured, no more
#   expected_tests.sh refresh BUILD-FOLDER   writes the list anew: what the build has, and what was
#                                            in the list and is left out
#
# Exit status: 0, they are the same, or the list was written; 1, they are not, and what differs is
# told; 2, wrong command line.
set -euo pipefail

list=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/expected_tests.txt
if [[ $# != 2 || ! $1 =~ ^(check|refresh)$ ]]; then
  printf '%s: expected: check or refresh, and a build folder\n' "$0" >&2
  exit 2
fi
build=$2

fail() {
  printf 'expected_tests: %s\n' "$*" >&2
  exit 1
}

[[ -r $build/left_out_tests.txt ]] || fail "$build is not configured with tests"
shown=$(cd "$build" && ctest --show-only) || fail "ctest shows no tests of $build: $shown"
registered=$(sed -n 's/^ *Test *#[0-9]*: //p' <<<"$shown" | LC_ALL=C sort)
listed=$(sed '/^#/d' "$list" | LC_ALL=C sort)

# Of the names read, those that the build says to leave out.
left_out() {
  local name pattern reason
  while read -r name; do
    while IFS=$'\t' read -r pattern reason; do
      # shellcheck disable=SC2053 # a pattern
      if [[ $name == $pattern ]]; then
        echo "$name"
        break
      fi
    done <"$build/left_out_tests.txt"
  done
}
absent=$(left_out <<<"$listed")
together=$(printf '%s\n' "$registered" $absent | LC_ALL=C sort)

if [[ $1 == refresh ]]; then
  {
    echo "# All tests, by their ctest names; expected_tests.sh writes and checks this."
    printf '%s\n' "$together" | uniq
  } >"$list"
  exit
fi

if ! difference=$(diff <(echo "$listed") <(echo "$together")); then
  echo "$difference" | sed -n \
    -e 's/^< \(.*\)/expected_tests: \1 is in the list, but not in this build/p' \
    -e 's/^> \(.*\)/expected_tests: \1 is in this build, but not in the list, or is said to be left out/p' >&2
  fail "$list and $build differ, see above. A test that is left out on purpose says so with" \
    "calibration_left_out(). If the change is meant: cmake --build $build --target expected_tests"
fi
echo "$(wc -l <<<"$registered") of $(wc -l <<<"$listed") tests, without"
awk -F '\t' '{ printf "  %-24s %s\n", $1, $2 }' "$build/left_out_tests.txt"
