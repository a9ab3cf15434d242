#!/usr/bin/env bash
# docs/fleet.md does what it shows, with the fleet that the example make_fleet writes.
#
#   fleet_test.sh SOURCE-FOLDER CALIB EXAMPLE MODULES-FOLDER [DOCUMENT]...
#
# Further documents go on where that one ends. Exit status: 0, it does; 1, it does not; 77, something
# is missing, and what it is is told.
set -euo pipefail

source=$1 calib=$2 example=$3 modules=$4
source "$source/tests/support/npm.sh"

fill_modules fleet_test "$source/tests/fleet" "$modules"
PATH=$(dirname "$calib"):$(dirname "$example"):$PATH python3 "$source/tests/guide_test.py" \
  "$source/docs/fleet.md" "${@:5}" --source "$source" --with "$modules/node_modules"
