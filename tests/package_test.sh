#!/usr/bin/env bash
# scripts/package makes Debian packages that install with what they depend on, the program of
# README.md builds against them and runs, and Python reads the record that it writes.
#
#   package_test.sh SOURCE-FOLDER VERSION RUN-TIME-SERIES CALIB
#
# CALIB is ON if there is to be a package of the command calib.
#
# dpkg installs them into an empty folder, knowing of the packages of this machine: a dependency
# that Debian cannot meet fails. Nothing outside the folder changes.
set -euo pipefail

source=$1 version=$2 series=$3 calib=$4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
source "$(dirname "${BASH_SOURCE[0]}")/consumer.sh"

for tool in dpkg dpkg-deb dpkg-buildpackage dh dh_python3 fakeroot; do
  command -v "$tool" >/dev/null || fail "$tool is not installed"
done

# A test installs nothing on this machine...
mkdir "$folder/bin"
for command in apt-get sudo ldconfig; do
  printf '#!/bin/sh\necho "%s called by a test" >&2; exit 1\n' "$command" >"$folder/bin/$command"
done
# ...nor does what comes with a package: Python's tools know this machine's packages only.
for command in py3compile py3clean; do printf '#!/bin/sh\n' >"$folder/bin/$command"; done
chmod +x "$folder/bin"/*
PATH=$folder/bin:$PATH

# What is looked at here does not depend on how well the compiler does.
DEB_BUILD_OPTIONS=noopt quietly "$source/scripts/package" --output "$folder/packages"
architecture=$(dpkg --print-architecture)
runtime=$folder/packages/libcalibration-protolib${version%%.*}_${version}_$architecture.deb
geometry=$folder/packages/libcalibration-geometry${version%%.*}_${version}_$architecture.deb
development=$folder/packages/libcalibration-protolib-dev_${version}_$architecture.deb
for package in "$runtime" "$geometry" "$development"; do
  [[ -r $package ]] || fail "no $package: $(ls "$folder/packages")"
done

# --- Dependencies, and what is in which package ---

depends=$(dpkg-deb --field "$runtime" Depends)
for name in libc6 'libprotobuf[0-9]+(t64)?' 'libstdc\+\+6'; do
  [[ ", $depends" =~ ", "$name" (" ]] || fail "$runtime does not depend on $name: $depends"
done
depends=$(dpkg-deb --field "$geometry" Depends)
[[ $depends == *libc6* && ! $depends =~ protobuf|eigen ]] || fail "$geometry depends on $depends"
depends=$(dpkg-deb --field "$development" Depends)
for expected in "libcalibration-geometry${version%%.*} (= $version)" \
  "libcalibration-protolib${version%%.*} (= $version)" \
  "libprotobuf-dev (>= $series)" "libprotobuf-dev (<< ${series%.*}.$((${series#*.} + 1))~)"; do
  [[ $depends == *"$expected"* ]] || fail "$development does not depend on $expected: $depends"
done
# Those of two architectures may be installed at once.
for package in "$runtime" "$geometry" "$development"; do
  [[ $(dpkg-deb --field "$package" Multi-Arch) == same ]] || fail "$package is not Multi-Arch: same"
done
# Packages of two SONAMEs may be installed at once: no file is in both.
major=${version%%.*}
for name in protolib geometry; do
  package=$folder/packages/libcalibration-$name${major}_${version}_$architecture.deb
  others=$(dpkg-deb --contents "$package" | awk '$1 !~ /^d/ { print $6 }' |
    grep -vE "/libcalibration_$name\.so\.$major(\.[0-9]+)*$|/doc/libcalibration-$name$major/" ||
    true)
  [[ -z $others ]] || fail "$package holds more than its library: $others"
done
for package in "$folder"/packages/*.deb; do
  name=$(dpkg-deb --field "$package" Package)
  # Read to the end before it is searched: a reader that stops early breaks the pipe.
  contents=$(dpkg-deb --contents "$package")
  [[ $contents$'\n' == *"/usr/share/doc/$name/copyright"$'\n'* ]] || fail "$package names no license"
  [[ $(dpkg-deb --field "$package" Description | wc -l) -ge 2 ]] ||
    fail "$package has no description below its summary"
done

tools=$folder/packages/calibration-tools_${version}_$architecture.deb
if [[ $calib == ON ]]; then
  for name in formats${version%%.*} formats-dev; do
    package=$folder/packages/libcalibration-${name}_${version}_$architecture.deb
    [[ $(dpkg-deb --field "$package" Multi-Arch) == same ]] || fail "$package is not Multi-Arch: same"
  done
  contents=$(dpkg-deb --contents "$tools")
  for file in bin/calib share/man/man1/calib.1.gz share/bash-completion/completions/calib; do
    [[ $contents == *" ./usr/$file"* ]] || fail "calibration-tools does not hold $file: $contents"
  done
elif [[ -e $tools ]]; then
  fail "there is a package of the command calib"
fi

contents=$(dpkg-deb --contents "$folder/packages/python3-calibration-protolib_${version}_all.deb")
for file in __init__.py formats.py geometry.py records.pyi py.typed calibration.desc; do
  [[ $contents == *" ./usr/lib/python3/dist-packages/calibration_protolib/$file"* ]] ||
    fail "python3-calibration-protolib does not hold $file: $contents"
done
[[ $contents != *__pycache__* ]] || fail "python3-calibration-protolib holds what Python compiled"

# --- Installation ---

root=$folder/root
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/triggers"
# What is installed on this machine, but for these packages, should they be.
awk -v RS= -v ORS='\n\n' \
  '!/^Package: (libcalibration-(protolib|geometry|formats)|calibration-tools|python3-calibration-protolib)/' \
  /var/lib/dpkg/status >"$root/var/lib/dpkg/status"
echo 1 >"$root/var/lib/dpkg/info/format"
quietly fakeroot dpkg --root="$root" --no-triggers --force-not-root --force-script-chrootless \
  --install "$folder"/packages/*.deb

library=$(find "$root" -name "libcalibration_protolib.so.$version")
[[ -n $library ]] || fail "no library was installed"
if readelf -dW "$library" | grep -E 'RPATH|RUNPATH'; then
  fail "the packaged library names folders of this machine"
fi
sections=$(readelf -SW "$library")
[[ $sections != *.debug_info* ]] || fail "the library is not stripped"
export LD_LIBRARY_PATH
LD_LIBRARY_PATH=$(dirname "$library")

make_program
build_and_run "$folder/robot" "$root/usr"
export PKG_CONFIG_PATH="$LD_LIBRARY_PATH/pkgconfig"
quietly g++ "$source/examples/rectify_pair.cc" -o "$folder/rectify_pair" \
  $(pkg-config --cflags --libs calibration_geometry)
quietly "$folder/rectify_pair"
if [[ $calib == ON ]]; then
  quietly g++ "$source/examples/import_cameras.cc" -o "$folder/import_cameras" \
    $(pkg-config --cflags --libs calibration_formats)
  quietly "$folder/import_cameras" "$source/tests/calib/inputs/camchain.yaml"
fi
command=$(readme_block sh)
rm "$folder"/*.binpb
(cd "$folder/robot" && quietly bash -c "$command")
(cd "$folder" && robot/robot) || fail "the program built with pkg-config failed"
expect_record "$folder"

cat >"$folder/read.py" <<END
from calibration_protolib import RobotCalibration, descriptor_set, read
assert str(descriptor_set.find()).startswith("$root/usr/lib/python3/"), descriptor_set.find()
assert read("$folder/robot.RobotCalibration.binpb", RobotCalibration).camera[0].name == "cam0"
from calibration_protolib import geometry
assert geometry.largest_angle(geometry.Camera(geometry.Lens.FISHEYE, 1, 1)) > 3.14
END
if [[ $calib == ON ]]; then
  cat >>"$folder/read.py" <<END
from calibration_protolib import formats
assert len(formats.read("$source/tests/calib/inputs/camchain.yaml").robot.camera) == 2
END
fi
PYTHONPATH=$root/usr/lib/python3/dist-packages quietly /usr/bin/python3 -B "$folder/read.py"

# Removing takes away all that was installed.
quietly fakeroot dpkg --root="$root" --no-triggers --force-not-root --force-script-chrootless \
  --purge $(for package in "$folder"/packages/*.deb; do dpkg-deb --field "$package" Package; done)
left=$(find "$root" -name '*calibration*')
[[ -z $left ]] || fail "left behind: $left"
