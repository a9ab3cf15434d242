# Shared by the tests that use the library as a new user would (sourced, not run): the program that
# README.md shows, built and run. Expects $source, the sources' folder, and $folder, a scratch one.

source "$source/scripts/copy_sources.sh"

fail() {
  printf '%s: %s\n' "$(basename "$0" .sh) ${check:-}" "$*" >&2
  exit 1
}

# Prints the output of a command that fails.
quietly() {
  "$@" >"$folder/log" 2>&1 || {
    cat "$folder/log" >&2
    fail "failed: $*"
  }
}

# readme_block LANGUAGE: the text of the README's one block of code in that language.
readme_block() {
  local text
  text=$(awk -v start="\`\`\`$1" '$0 == start { inside = 1; next } /^```$/ { inside = 0 } inside' \
    "$source/README.md")
  [[ -n $text ]] || fail "README.md has no block of $1"
  printf '%s\n' "$text"
}

# Makes $folder/robot with the README's program in it.
make_program() {
  mkdir -p "$folder/robot"
  readme_block cpp >"$folder/robot/robot.cc"
  readme_block cmake >"$folder/robot/CMakeLists.txt"
}

# The record that the README's program writes: one camera with five doubles and a name.
expect_record() {
  local path=$1/robot.RobotCalibration.binpb expected
  expected="0a350a2d09[0-9a-f]{16}11[0-9a-f]{16}19000000000000000021[0-9a-f]{16}29[0-9a-f]{16}"
  expected+="2a0463616d30" # name: "cam0"
  [[ $(od -An -v -tx1 "$path" | tr -d ' \n') =~ ^$expected$ ]] ||
    fail "the README's program wrote another record than expected: $(od -An -tx1 "$path")"
}

# configure PROJECT PREFIX-PATH [ARGUMENT...]: sets $status and $output, without line breaks.
configure() {
  status=0
  output=$(cmake -S "$1" -B "$1/build" "-DCMAKE_PREFIX_PATH=$2" "${@:3}" 2>&1) || status=$?
  output=$(tr -s ' \n' ' ' <<<"$output")
}

build_and_run() {
  configure "$@"
  ((status == 0)) || fail "CMake refused the project: $output"
  quietly cmake --build "$1/build"
  (cd "$folder" && "$1/build/robot") || fail "the built program failed"
  expect_record "$folder"
}
