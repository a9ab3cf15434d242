#!/usr/bin/env bash
# Who may include whom: the library's folder includes nothing of this project outside it, nothing
# outside includes calibration_common/internal/, and what is installed does not, either.
#
#   includes_test.sh SOURCE-FOLDER
set -euo pipefail
cd "$1"

status=0
# forbid RULE GREP-ARGUMENT...: fails if grep finds an include.
forbid() {
  if grep --line-number --extended-regexp "${@:2}"; then
    echo "includes_test: $1" >&2
    status=1
  fi
}

others=(benchmarks calib examples fuzz packaging protogen tests)
include='^ *# *include *["<]'
forbid "the library includes what is outside calibration_common/" --recursive \
  "$include($(IFS='|' && echo "${others[*]}"))/|$include\.\./" calibration_common
# The generator's template of a source is text (R"(...)"), and the one exception.
forbid "calibration_common/internal/ is the library's own" --recursive \
  --exclude=generator.cc "${include}calibration_common/internal/" "${others[@]}"
forbid "an installed header includes calibration_common/internal/, which is not installed" \
  "${include}calibration_common/internal/" calibration_common/*.h
exit "$status"
