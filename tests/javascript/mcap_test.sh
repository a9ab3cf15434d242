#!/usr/bin/env bash
# The MCAP files of calib and those of the packages that others use: mcap_test.mjs says what is compared.
#
#   mcap_test.sh SOURCE-FOLDER CALIB MODULES-FOLDER
#
# Exit status: 0, they agree; 1, they do not; 77, something is missing, and what it is is told.
set -euo pipefail

source=$1 calib=$2 modules=$3
source "$source/tests/support/npm.sh"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fill_modules mcap_test "$source/tests/javascript" "$modules"

# Beside the modules, where node looks for them.
cp "$source/tests/javascript/mcap_test.mjs" "$modules"
node "$modules/mcap_test.mjs" "$calib" "$folder"
