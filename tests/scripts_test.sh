#!/usr/bin/env bash
# The scripts' command lines: --help prints what a script takes, anything it does not take is
# refused, and neither installs or builds anything first.
#
#   scripts_test.sh SOURCE-FOLDER
#
# Exit status: 0, it is so; 1, it is not, and what went wrong is told.
set -euo pipefail

source_folder=$1
failures=0

# expect STATUS WORDS SCRIPT ARGUMENT...: both of running the script.
expect() {
  local expected=$1 words=$2 status=0 output
  shift 2
  output=$("$source_folder/scripts/$1" "${@:2}" 2>&1) || status=$?
  if ((status != expected)) || [[ $output != *"$words"* || $output == *"== "* ]]; then
    printf "scripts_test: %s: expected status %s and '%s', got %s and:\n%s\n" "$*" "$expected" \
      "$words" "$status" "$output" >&2
    failures=$((failures + 1))
  fi
}

for script in test demo benchmark; do
  expect 0 "  scripts/$script [" "$script" --help
  expect 0 "Exit status: 0" "$script" -DBUILD_TESTING=OFF -h
  for argument in --no-such-option no-such-argument -D -j1 ''; do
    expect 2 "scripts/$script: unknown argument '$argument', expected" "$script" "$argument"
    expect 2 "unknown argument '$argument', expected" "$script" -DBUILD_TESTING=OFF "$argument"
  done
done
expect 2 "scripts/benchmark: --cells needs a value" benchmark --check --cells

exit $((failures != 0))
