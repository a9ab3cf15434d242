#!/usr/bin/env bash
# Python reads what this library writes, and the other way round: 200 random records of all types
# each way. Python has Debian's python3-protobuf and the installed descriptor set, nothing else.
#
#   interop_test.sh EXCHANGE-PROGRAM BUILD-FOLDER PYTHON
#
# Either side writes records together with what it put into them, as text; the other parses, comes
# to the same text, and writes back the same bytes.
set -euo pipefail

program=$1 build=$2 python=$3
seed=20
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fail() {
  printf 'interop_test (seed %s): %s\n' "$seed" "$*" >&2
  exit 1
}

"$python" -c 'import google.protobuf' ||
  fail "$python has no protobuf run-time: install Debian's package python3-protobuf"
cmake --install "$build" --prefix "$folder/installed" --component Development >"$folder/log"
descriptors=$(find "$folder/installed" -name calibration.desc)
[[ -n $descriptors ]] || fail "no descriptor set was installed"
cp "$descriptors" "$folder/calibration.desc"
rm -r "$folder/installed"

mkdir "$folder/from_cc" "$folder/from_python"
cp "$(dirname "$0")/exchange.py" "$folder"
in_python() { (cd "$folder" && "$python" -I exchange.py calibration.desc "$@"); }

"$program" write "$folder/from_cc" 200 "$seed"
[[ $(in_python check from_cc) == "200 of 200 records agree" ]] || fail "C++ to Python"
in_python write from_python 200 "$seed"
[[ $("$program" check "$folder/from_python") == "200 of 200 records agree" ]] ||
  fail "Python to C++"
