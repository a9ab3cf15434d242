#!/usr/bin/env bash
# Python reads what this library writes, and the other way round: 200 random records of all types
# each way. Of 6000 that are broken or odd, both accept the same; where the run-time's Python is all
# in Python, it accepts none that C++ refuses. Python has Debian's python3-protobuf, the package
# calibration_protolib and the installed descriptor set.
#
#   interop_test.sh EXCHANGE-PROGRAM BUILD-FOLDER PYTHON PACKAGE
#
# Either side writes records together with what it put into them, as text; the other parses, comes
# to the same text, and writes back the same bytes.
set -euo pipefail

program=$1 build=$2 python=$3 package=$4
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
cp -r "$package" "$(dirname "$0")/exchange.py" "$folder"
cp "$descriptors" "$folder/calibration_protolib"
rm -r "$folder/installed"

mkdir "$folder/from_cc" "$folder/from_python" "$folder/damaged"
in_python() { (cd "$folder" && "$python" -E exchange.py "$@"); }

"$program" write "$folder/from_cc" 200 "$seed"
[[ $(in_python check from_cc) == "200 of 200 records agree" ]] || fail "C++ to Python"
in_python write from_python 200 "$seed"
[[ $("$program" check "$folder/from_python") == "200 of 200 records agree" ]] ||
  fail "Python to C++"

in_python damage damaged 6000 "$seed"
"$program" judge "$folder/damaged" >"$folder/cc_verdicts" 2>"$folder/log"
for implementation in default python; do
  [[ $implementation == default ]] || export PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION=$implementation
  in_python judge damaged >"$folder/${implementation}_verdicts" 2>"$folder/log" ||
    fail "Python ($implementation) does not judge: $(tail -n 5 "$folder/log")"
done
for verdict in accepted refused; do
  (($(grep -c " $verdict$" "$folder/cc_verdicts") > 1000)) || fail "too few records are $verdict"
done
difference=$(diff "$folder/cc_verdicts" "$folder/default_verdicts") ||
  fail "C++ (<) and Python (>) do not accept the same:"$'\n'"$difference"
accepted=$(grep -h " accepted$" "$folder/python_verdicts" |
  LC_ALL=C comm -23 - <(grep " accepted$" "$folder/cc_verdicts"))
[[ -z $accepted ]] || fail "Python without C++ accepts what C++ refuses:"$'\n'"$accepted"
