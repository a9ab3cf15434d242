#!/usr/bin/env bash
# The manual page can be shown without a warning, and has every line that --help prints.
#
#   man_page_test.sh CALIB PAGE
set -euo pipefail

calib=$1 page=$2

fail() {
  printf '%s\n' "$*" >&2
  exit 1
}

# The words, on one line.
words() { tr -s ' \n' ' '; }

export LC_ALL=C.UTF-8 MANROFFOPT='' MANWIDTH=9999 MAN_KEEP_FORMATTING=''
warnings=$(man --warnings -l "$page" 2>&1 >/dev/null)
[[ -z $warnings ]] || fail "man warns: $warnings"
warnings=$(groff -man -ww -z -Tutf8 "$page" 2>&1)
[[ -z $warnings ]] || fail "groff warns: $warnings"
shown=$(man -l "$page" | words)

# Of each line that --help prints: is it there? "Usage:" and headings are laid out otherwise.
count=0
lines() {
  "$calib" "$@" --help | grep -vE '^(Usage: .*|[A-Z][a-z]*:|)$' | sed 's/^ *//' | tr -s ' '
}
subcommands_of() { "$calib" "$@" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z-]*\) .*/\1/p'; }
subcommands=$(subcommands_of)
while IFS= read -r line; do
  [[ $shown == *"$line"* ]] || fail "the page lacks '$line', which --help prints"
  count=$((count + 1))
done < <(
  lines | tail -n +2 | grep -vE "^($(paste -sd'|' <<<"$subcommands")) "
  for subcommand in $subcommands; do
    echo "calib $subcommand ["
    lines "$subcommand"
    for inner in $(subcommands_of "$subcommand"); do
      echo "calib $subcommand $inner ["
      lines "$subcommand" "$inner"
    done
  done
)
((count > 100)) || fail "--help printed only $count lines"
