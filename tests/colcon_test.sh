#!/usr/bin/env bash
# `colcon build` makes a workspace of two packages: this one, and the program of README.md, which
# depends on it. The program then runs in that workspace.
#
#   colcon_test.sh SOURCE-FOLDER RUN-TIME-PREFIX
#
# Exit status: 0, it does; 1, it does not; 77, something is missing, and what it is is told.
set -euo pipefail

source=$1 runtime=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
source "$(dirname "${BASH_SOURCE[0]}")/consumer.sh"

skip() {
  printf 'colcon_test: skipped: %s\n' "$*"
  exit 77
}

command -v colcon >/dev/null || skip "colcon is not installed (Debian's package colcon)"
# What makes it read package.xml, run CMake, and lead programs to what was built.
for extension in bash ros cmake library-path recursive-crawl; do
  /usr/bin/python3 -c "import colcon_${extension//-/_}" 2>/dev/null ||
    skip "colcon lacks an extension (Debian's package python3-colcon-$extension)"
done

make_program
mkdir "$folder/src"
mv "$folder/robot" "$folder/src"
echo 'install(TARGETS robot)' >>"$folder/src/robot/CMakeLists.txt"
cat >"$folder/src/robot/package.xml" <<'END'
<package format="3">
  <name>robot</name>
  <version>0.0.1</version>
  <description>What README.md shows</description>
  <maintainer email="nobody@example.com">nobody</maintainer>
  <license>MIT</license>
  <depend>calibration_protolib</depend>
  <export><build_type>cmake</build_type></export>
</package>
END
# As a git clone would: what is built elsewhere in the sources is nothing to the workspace.
copy_sources "$source" "$folder/src/calibration_protolib"

cd "$folder"
export CMAKE_PREFIX_PATH=$runtime
quietly colcon --log-base "$folder/log_of_colcon" build --cmake-args -DBUILD_TESTING=OFF -DCALIBRATION_GENERATOR=OFF \
  -DCALIBRATION_EXAMPLES=OFF -DCALIBRATION_CALIB=OFF

set +u # the workspace's script asks for variables that are not set
source install/setup.bash
set -u
[[ -x install/robot/bin/robot ]] || fail "the program is not installed"
LD_LIBRARY_PATH=${LD_LIBRARY_PATH:-}:$runtime/lib install/robot/bin/robot || fail "it fails"
expect_record "$folder"
[[ -e install/calibration_protolib/share/calibration_protolib/package.xml ]] ||
  fail "the library's package.xml is not installed, where other tools of ROS look for it"
