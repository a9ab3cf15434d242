#!/usr/bin/env bash
# docs/javascript.md does what it shows, on the record that the example stereo_rig writes.
#
#   javascript_test.sh SOURCE-FOLDER EXAMPLE MODULES-FOLDER
#
# npm fills the folder with what package-lock.json names; the next run finds it there and needs no
# network. Exit status: 0, it does; 1, it does not; 77, something is missing, and what it is is told.
set -euo pipefail

source=$1 example=$2 modules=$3
here=$source/tests/javascript
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

skip() {
  printf 'javascript_test: skipped: %s\n' "$*"
  exit 77
}

for command in node npm; do
  command -v "$command" >/dev/null || skip "$command is not installed (Debian's package npm)"
done
version=$(node --version)
[[ ${version#v} =~ ^([0-9]+)\. ]] && ((BASH_REMATCH[1] >= 18)) ||
  skip "node $version is too old for the packages, which want 18"

if ! cmp -s "$here/package-lock.json" "$modules/filled_from.json"; then
  rm -rf "$modules"
  mkdir -p "$modules"
  cp "$here"/package*.json "$modules"
  (cd "$modules" && npm ci --ignore-scripts --no-audit --no-fund) >"$folder/log" 2>&1 || {
    cat "$folder/log"
    if grep -qE 'ENOTFOUND|EAI_AGAIN|ECONNREFUSED|ECONNRESET|ETIMEDOUT|ENETUNREACH' "$folder/log"; then
      skip "npm does not reach its registry"
    fi
    exit 1
  }
  mv "$modules/package-lock.json" "$modules/filled_from.json"
fi

"$example" "$folder" >/dev/null
python3 "$source/tests/guide_test.py" "$source/docs/javascript.md" --source "$source" \
  --with "$modules/node_modules" --with "$folder/stereo_rig.RobotCalibration.binpb"
