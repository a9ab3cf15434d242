# shellcheck shell=bash
# Packages of npm for tests that need some (sourced, not run).

# skip NAME-OF-TEST REASON...: ends the test as one that lacks something.
skip() {
  printf '%s: skipped: %s\n' "$1" "${*:2}"
  exit 77
}

# fill_modules NAME-OF-TEST LIST-FOLDER MODULES-FOLDER: puts what LIST-FOLDER/package-lock.json names
# into MODULES-FOLDER/node_modules. The next run finds it there and needs no network. Skips the test
# where Node or npm is missing, too old, or without a network.
fill_modules() {
  local test=$1 list=$2 modules=$3 command version log
  for command in node npm; do
    command -v "$command" >/dev/null || skip "$test" "$command is not installed (Debian's package npm)"
  done
  version=$(node --version)
  [[ ${version#v} =~ ^([0-9]+)\. ]] && ((BASH_REMATCH[1] >= 18)) ||
    skip "$test" "node $version is too old for the packages, which want 18"
  if cmp -s "$list/package-lock.json" "$modules/filled_from.json"; then return; fi
  rm -rf "$modules"
  mkdir -p "$modules"
  cp "$list"/package*.json "$modules"
  log=$modules/log
  (cd "$modules" && npm ci --ignore-scripts --no-audit --no-fund) >"$log" 2>&1 || {
    cat "$log"
    if grep -qE 'ENOTFOUND|EAI_AGAIN|ECONNREFUSED|ECONNRESET|ETIMEDOUT|ENETUNREACH' "$log"; then
      skip "$test" "npm does not reach its registry"
    fi
    exit 1
  }
  mv "$modules/package-lock.json" "$modules/filled_from.json"
}
