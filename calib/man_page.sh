#!/usr/bin/env bash
# Writes calib's manual page from what the command tells of itself: man_page.sh [EMULATOR] CALIB > calib.1
set -euo pipefail

calib=("$@")
# A hyphen that is typed, not one that a line may be broken at, unlike the comma of a list of words;
# nothing that begins a request.
escape='function text(line) {
  gsub(/\\/, "\\e", line); gsub(/-/, "\\-", line)
  gsub(/,/, ",\\:", line)
  return line ~ /^[.\x27]/ ? "\\&" line : line
}'

# The part of --help behind "Usage:": arguments and options as terms, paragraphs, examples as they
# are.
body() {
  awk "$escape"'
    /^Usage:/ { inside = 1; next }
    !inside { next }
    /^(Arguments|Options|Commands|Subcommands):$/ { entries = $1 != "Subcommands:"; skip = !entries; next }
    /^$/ { entries = skip = 0; if (example) print ".EE"; example = 0; apart = 1; next }
    skip { next }
    entries && /^  [^ ]/ {
      print ".TP"
      while (/,$/ && (getline rest) > 0) { sub(/^ +/, "", rest); $0 = $0 rest }
      at = match(substr($0, 3), /  +/)
      print ".B " text(at ? substr($0, 3, at - 1) : substr($0, 3))
      if (at) print text(substr($0, 3 + at + RLENGTH - 1))
      next
    }
    entries { sub(/^ +/, ""); print text($0); next }
    /^Examples:$/ { print ".PP\nExamples:\n.EX"; example = 1; apart = 0; next }
    apart { print ".PP"; apart = 0 }
    { print text($0) }
    END { if (example) print ".EE" }'
}

usage() { "${calib[@]}" "$@" --help | sed -n 's/^Usage: //p' | sed 's/-/\\-/g'; }

printf '.TH CALIB 1 "" "%s" "User Commands"\n' \
  "$("${calib[@]}" --version | sed 's/ (.*//')"
# Words that are cut at the end of a line are not found.
printf '.nr HY 0\n.nh\n.ds AD l\n.ad l\n'
printf '.SH NAME\ncalib \\- look at calibration records, check, convert, compare and draw them\n'
printf '.SH SYNOPSIS\n%s\n' "$(usage)"
printf '.SH DESCRIPTION\n'
"${calib[@]}" --help | sed '/^Options:/,/^$/d' | body
printf '.SH OPTIONS\n'
"${calib[@]}" --help | sed '/^Subcommands:/,$d' | body
printf '.SH SUBCOMMANDS\n'

# subcommands [SUBCOMMAND]: those of calib, or of one of its own.
subcommands() {
  "${calib[@]}" "$@" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z-]*\) .*/\1/p'
}

# section SUBCOMMAND...: what it tells of itself, and then of its own subcommands.
section() {
  local inner
  printf '.SS %s\n%s\n.PP\n' "$*" "$(usage "$@")"
  "${calib[@]}" "$@" --help | sed -n '1s/$/./p'
  "${calib[@]}" "$@" --help | sed 's/^Subcommands:$/Commands:/' | body
  for inner in $(subcommands "$@"); do section "$@" "$inner"; done
}

for subcommand in $(subcommands); do section "$subcommand"; done
