#!/usr/bin/env bash
# Four times the input takes about four times the work: instructions are counted, not time.
#
#   linearity_test.sh PROGRAM     (see linearity_program.cc)
set -euo pipefail

command -v valgrind >/dev/null || {
  echo "linearity_test: valgrind is not installed, and nothing else counts instructions" >&2
  exit 1
}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
valgrind --tool=callgrind --callgrind-out-file="$folder/dump" "$1" \
  >"$folder/labels" 2>"$folder/log" || {
  cat "$folder/log" >&2
  exit 1
}

# The work that is added from four to sixteen times the size is four times of what is added from one
# to four times, if the work grows with the input alone, and sixteen times if it grows with its square.
awk '
  FNR == 1 { label = "" }
  /^desc: Trigger: Client Request: / { sub(/^desc: Trigger: Client Request: /, ""); label = $0 }
  /^(totals|summary): / && label != "" {
    times = label; sub(/.*\//, "", times)
    name = label; sub(/\/[0-9]+$/, "", name)
    work[name, times] = $2; names[name] = 1; label = ""
  }
  END {
    for (name in names) {
      ++count
      first = work[name, 4] - work[name, 1]
      second = work[name, 16] - work[name, 4]
      printf "%-80s %10d %10d %10d  %.2f\n", name, work[name, 1], work[name, 4], work[name, 16],
        second / first
      if (first <= 0 || second > 5.5 * first) { print "NOT LINEAR: " name; bad = 1 }
    }
    print count " shapes and calls"
    exit bad
  }' "$folder"/dump.*
labels=$(wc -l <"$folder/labels")
dumps=$(grep -l '^desc: Trigger: Client Request: ' "$folder"/dump.* | wc -l)
((labels > 0 && labels == dumps)) || {
  echo "linearity_test: $labels runs, but counts of $dumps" >&2
  exit 1
}
