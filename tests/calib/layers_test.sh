#!/usr/bin/env bash
# A folder of calib/ includes only folders on the floors below its own: layers_test.sh REPOSITORY
set -euo pipefail

# From the top. Folders on one floor do not know each other.
floors=("main.cc" "commands" "pages library" "formats views tools checks" "fields charts images" "console geometry")

declare -A height
for i in "${!floors[@]}"; do
  for folder in ${floors[i]}; do height[$folder]=$((${#floors[@]} - i)); done
done

cd "$1"
status=0
# Lines such as calib/fields/walk.cc:1:#include "calib/fields/walk.h"
while IFS=: read -r file line include; do
  [[ $include == '#include "calibration_common/'@(calibration.pb|record_log)'.h"' ]] && continue
  from=${file#calib/} from=${from%%/*}
  to=${include#'#include "calib/'} to=${to%%/*}
  if [[ -z ${height[$from]-} || -z ${height[$to]-} ]]; then
    echo "$file:$line: $include: expected one of calib/, from and to a folder that has a floor"
    status=1
  elif [[ $from != "$to" ]] && ((height[$to] >= height[$from])); then
    echo "$file:$line: $include: $to/ is not on a floor below $from"
    status=1
  fi
done < <(grep -rn '^ *# *include *"' calib --include='*.cc' --include='*.h' --include='*.in' ||
  echo "calib:0:nothing includes anything")
[[ $status == 0 ]] || echo "tests/calib/layers_test.sh has the floors, docs/architecture.md the map."
exit "$status"
