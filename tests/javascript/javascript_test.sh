#!/usr/bin/env bash
# docs/javascript.md does what it shows, on the record that the example stereo_rig writes.
#
#   javascript_test.sh SOURCE-FOLDER EXAMPLE MODULES-FOLDER
#
# Exit status: 0, it does; 1, it does not; 77, something is missing, and what it is is told.
set -euo pipefail

source=$1 example=$2 modules=$3
source "$source/tests/support/npm.sh"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fill_modules javascript_test "$source/tests/javascript" "$modules"
"$example" "$folder" >/dev/null
python3 "$source/tests/guide_test.py" "$source/docs/javascript.md" --source "$source" \
  --with "$modules/node_modules" --with "$folder/stereo_rig.RobotCalibration.binpb"
