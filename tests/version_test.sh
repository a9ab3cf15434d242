#!/usr/bin/env bash
# The version stands in one place, and the changelog tells of it.
#
#   version_test.sh SOURCE-FOLDER VERSION
set -euo pipefail

source=$1 version=$2

fail() {
  printf 'version_test: %s\n' "$*" >&2
  exit 1
}

# What comes after the newest version is "Unreleased".
newest=$(sed -n '/^## Unreleased$/d; /^## /{s///p;q}' "$source/CHANGELOG.md")
[[ $newest == "$version" ]] ||
  fail "CHANGELOG.md begins with version '$newest', CMakeLists.txt says $version"

# Test data may look alike; build folders may be anywhere.
places=(CMakeLists.txt calibration_common cmake docs examples packaging protogen scripts)
others=$(cd "$source" && grep -rnwF "$version" "${places[@]}" --exclude='*.md' || true)
[[ $(wc -l <<<"$others") == 1 && $others == CMakeLists.txt:* ]] ||
  fail "expected $version in CMakeLists.txt only, found:"$'\n'"$others"
