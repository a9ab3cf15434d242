#!/usr/bin/env bash
# Whoever meets a subcommand in `calib --help` finds an example there, a section in the guide (or in
# its page on computing) that runs it, and its help in a transcript.
#
#   subcommands_test.sh CALIB SOURCE-FOLDER
set -euo pipefail

calib=$1 guide=$2/docs/calib.md computing=$2/docs/calib-geometry.md transcripts=$2/tests/calib/expected
failures=0

missing() {
  printf 'calib %s: %s\n' "$subcommand" "$*" >&2
  failures=$((failures + 1))
}

# The guide's section on a subcommand.
section() {
  awk -v heading="## \`$1\`:" '/^## / { inside = index($0, heading) == 1 } inside' "$guide" "$computing"
}

count=0
for subcommand in $("$calib" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z-]*\) .*/\1/p'); do
  count=$((count + 1))
  examples=$("$calib" "$subcommand" --help | sed '1,/^Examples:$/d')
  section=$(section "$subcommand")
  grep -q "^  calib $subcommand\b" <<<"$examples" ||
    missing "no example of it below 'Examples:' in its --help"
  grep -q "^| \[\`$subcommand\`\](.*#" "$guide" || missing "no row in the first table of docs/calib.md"
  [[ -n $section ]] || missing "no section '## \`$subcommand\`: ...' in docs/calib.md"
  grep -q "^\\$ .*\bcalib $subcommand\b" <<<"$section" ||
    missing "its section in the guide shows no run of it"
  grep -q "^Usage: calib $subcommand " "$transcripts"/*.md ||
    missing "its --help is in no transcript (tests/calib/expected/help.md)"
done
((count > 0)) || { echo "'calib --help' lists no subcommand" >&2; exit 1; }
((failures == 0)) || { echo "docs/extending.md tells what a new subcommand needs." >&2; exit 1; }
