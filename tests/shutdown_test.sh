#!/usr/bin/env bash
# Nothing may be left on the heap after the run-time's shutdown, and nothing be freed twice.
#
#   shutdown_test.sh PROGRAM ARGUMENT...
#
# Exit status: 0, it is so; 1, it is not, and valgrind's report is above the reason.
set -euo pipefail

command -v valgrind >/dev/null || {
  echo "shutdown_test: valgrind is not installed, and nothing else can tell what is left" >&2
  exit 1
}
status=0
report=$(valgrind --leak-check=full --show-leak-kinds=all "$@" 2>&1) || status=$?
echo "$report"
if ((status != 0)); then
  echo "shutdown_test: '$*' ended with status $status, expected 0" >&2
  exit 1
fi
for line in "in use at exit: 0 bytes in 0 blocks" "ERROR SUMMARY: 0 errors"; do
  if [[ $report != *"$line"* ]]; then
    echo "shutdown_test: valgrind did not report '$line'" >&2
    exit 1
  fi
done
