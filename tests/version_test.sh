#!/usr/bin/env bash
# The version stands in one place, and in setup.py, package.xml and debian/changelog, whose readers take
# it from nowhere else; and the changelog tells of it.
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
places=(CMakeLists.txt package.xml calibration_common cmake debian docs examples packaging protogen python
  scripts)
others=$(cd "$source" && grep -rnwF "$version" "${places[@]}" --exclude='*.md' || true)
files=$(cut -d: -f1 <<<"$others")
[[ $files == $'CMakeLists.txt\npackage.xml\ndebian/changelog\npython/setup.py' ]] ||
  fail "expected $version once in CMakeLists.txt and in each of the others, found:"$'\n'"$others"
