#!/usr/bin/env bash
# The scripts' command lines, every script's: --help prints what it takes and what its exit statuses
# say, anything that it does not take is refused, and neither installs or builds anything first. And
# every script has a build folder of its own, and says all options of the project.
#
#   scripts_test.sh SOURCE-FOLDER
#
# Exit status: 0, it is so; 1, it is not, and what went wrong is told.
set -euo pipefail

source_folder=$1
failures=0

fail() {
  printf 'scripts_test: %s\n' "$*" >&2
  failures=$((failures + 1))
}

# expect STATUS WORDS SCRIPT ARGUMENT...: both of running the script.
expect() {
  local expected=$1 words=$2 status=0 output
  shift 2
  output=$("$source_folder/scripts/$1" "${@:2}" 2>&1) || status=$?
  output=$(tr -s ' \n' ' ' <<<"$output")
  if ((status != expected)) || [[ $output != *"$words"* || $output == *"== "* ]]; then
    fail "$*: expected status $expected and '$words', got $status and:"$'\n'"$output"
  fi
}

count=0
for path in "$source_folder"/scripts/*; do
  [[ -x $path ]] || continue
  count=$((count + 1))
  script=${path##*/}
  expect 0 " scripts/$script " "$script" --help
  expect 0 "-DNAME=VALUE goes to CMake, in a build folder of its own" "$script" -DBUILD_TESTING=OFF -h
  for words in "Exit status: 0, " "; 1, " "; 2, wrong command line."; do
    expect 0 "$words" "$script" --help
  done
  for argument in --no-such-option no-such-argument -D -DNAME -D=VALUE -j1 ''; do
    expect 2 "scripts/$script: unknown argument '$argument'; --help tells" "$script" "$argument"
    expect 2 "unknown argument '$argument'" "$script" -DBUILD_TESTING=OFF "$argument"
  done
done
((count > 0)) || fail "no script found in $source_folder/scripts"

expect 2 "scripts/benchmark: --cells needs a value" benchmark --instructions --check --cells
expect 2 "--check is about instructions" benchmark --check
expect 2 "--update writes the whole baseline" benchmark --instructions --cells size --update
expect 2 "--update writes the baseline that --check" benchmark --instructions --check --update
expect 2 "--growth prints a table of its own" benchmark --growth --instructions
expect 2 "--import prints a table of its own" benchmark --import --absolute
expect 2 "--growth prints a table of its own" benchmark --growth --cells size
expect 2 "--calib prints a table of its own" benchmark --calib --absolute
expect 2 "--fleet prints a table of its own" benchmark --fleet --instructions
expect 2 "--startup prints a table of its own" benchmark --startup --instructions
expect 2 "--peers prints tables of its own: leave out --opponent" benchmark --peers --opponent static
expect 2 "--peers prints tables of its own: leave out --update" benchmark --peers --instructions --update
expect 2 "--peers and --growth print a table each" benchmark --growth --peers
expect 2 "--against needs opponent, dynamic or limit, not 'us'" benchmark --against us
expect 2 "--opponent needs shared or static, not 'no'" benchmark --opponent no
expect 2 "--output needs a value" package --output
expect 2 "--count needs a number, not 'many'" mutate --count many
expect 2 "--only needs a value" mutate --calib --only
expect 2 "--slice needs I/N such as 1/4, not '5/4'" mutate --slice 5/4
for script in fuzz soak; do
  expect 2 "SECONDS is missing" "$script"
  expect 2 "SECONDS is missing" "$script" -DBUILD_TESTING=OFF
done
expect 2 "unknown argument '3'" soak 1 2 3
expect 2 "unknown argument '2'" fuzz 1 parse_fuzzer 2

# Packages cannot say that they depend on a run-time that is no package.
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir -p "$folder/include/google/protobuf/stubs"
touch "$folder/include/google/protobuf/stubs/common.h"
refusal="the protobuf run-time in $folder is not Debian's libprotobuf-dev"
expect 1 "$refusal" package "-DCMAKE_PREFIX_PATH=/usr;$folder"
expect 1 "$refusal" package --output "$folder" "-DCMAKE_PREFIX_PATH:PATH=$folder"
CMAKE_PREFIX_PATH=/usr:$folder expect 1 "$refusal" package

# --- Building ---

cd "$source_folder/scripts"
shared=$(grep -oHE '(\$\(build_folder |use=)[a-z]+' $(find . -type f -executable) | sort -u |
  sed -E 's/.*[ =]//' | sort | uniq -d)
[[ -z $shared ]] || fail "two scripts build in one folder: $shared"
others=$(grep -lF 'cmake -S' * | grep -vx lib.sh || true)
[[ -z $others ]] || fail "configure() of lib.sh is not what configures in: $others"
for option in BUILD_TESTING $(sed -nE 's/^(option|set)\((CALIBRATION_[A-Z]+) .*/\2/p' \
  ../CMakeLists.txt); do
  [[ $(sed -n '/^options_off=/,/)$/p' lib.sh) == *" -D$option="* ]] ||
    fail "options_off of lib.sh lacks $option"
done

exit $((failures != 0))
