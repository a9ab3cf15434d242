# Shared by the scripts beside it (sourced, not run): their command lines, installing what is
# missing, configuring and building, and talking about it.
#
# A script that sources this ends with 0 or 1, or with 2 if its command line is wrong: whatever fails
# in it, a compiler or a test, ends it with 1.

set -E
trap 'exit 1' ERR

repository=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$repository/scripts/copy_sources.sh"
jobs=${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}

say() { printf '== %s\n' "$*"; }

fail() {
  printf '%s: %s\n' "$0" "$*" >&2
  exit 1
}

# --- Command lines -------------------------------------------------------------------------------

# Prints the comment at the top of the script that runs.
usage() { sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"; }

refuse() {
  printf '%s: %s; --help tells what is taken\n' "$0" "$*" >&2
  exit 2
}

# What every script takes: --help, and -DNAME=VALUE, which is kept in cmake_arguments.
cmake_arguments=()
take_common() {
  case $1 in
    -h | --help)
      usage
      exit
      ;;
    -D[A-Za-z_]*=*) cmake_arguments+=("$1") ;;
    *) refuse "unknown argument '$1'" ;;
  esac
}

# require_value OPTION [VALUE]...: an option that has one is not the last word.
require_value() { (($# > 1)) || refuse "$1 needs a value"; }

is_number() { [[ $1 =~ ^[0-9]+$ ]]; }

# --- Installing ----------------------------------------------------------------------------------

# Debian's packages by what needs them; what only one script calls, it names itself. A question mark in
# front: not every release that is served has it.
for_library=(cmake g++ make libprotobuf-dev)
for_generator=(libprotoc-dev)
for_geometry=(libeigen3-dev)
for_calib=("${for_geometry[@]}" libprotoc-dev libcli11-dev libpng-dev zlib1g-dev libzstd-dev liblz4-dev
  libyaml-cpp-dev libtinyxml2-dev)
for_suites=("${for_generator[@]}" libgtest-dev protobuf-compiler)
for_packages=("${for_library[@]}" "${for_geometry[@]}" build-essential debhelper dh-python python3)
for_peers=(flatbuffers-compiler libflatbuffers-dev capnproto libcapnp-dev libprotozero-dev rapidjson-dev
  libyaml-cpp-dev libzstd-dev)
# From Debian 12 on, clang alone comes without the run-times of its sanitizers, counters and libFuzzer.
for_clang=(clang '?libclang-rt-dev')
# What goes without a package that a release does not have; said ahead of installing.
declare -A without=(
  [libcli11-dev]="the command calib is left out"
  [colcon]="colcon_test is skipped")
for_colcon=('?colcon' '?python3-colcon-bash' '?python3-colcon-cmake' '?python3-colcon-library-path'
  '?python3-colcon-recursive-crawl' '?python3-colcon-ros')

installed() {
  [[ $(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

# as_root COMMAND...
as_root() {
  if ((EUID == 0)); then
    "$@"
  else
    command -v sudo >/dev/null || fail "must be root, or have sudo, to run: $*"
    sudo "$@"
  fi
}

# Has Debian's tools offer the packages of another architecture, too.
add_architecture() {
  local known
  known=$(dpkg --print-architecture && dpkg --print-foreign-architectures)
  if ! grep -qx "$1" <<<"$known"; then
    say "adding the architecture $1"
    as_root dpkg --add-architecture "$1"
  fi
}

# Whether apt-get, as far as it knows now, could install the package.
available() { [[ $(apt-cache policy "$1" 2>/dev/null) == *"Candidate: "[0-9]* ]]; }

# Sets missing to those of the named packages that are not installed, and lacking to those with a
# question mark that apt-get could not install.
find_missing() {
  local package
  missing=() lacking=()
  for package in "$@"; do
    if installed "${package#\?}"; then
      continue
    elif [[ $package == \?* ]] && ! available "${package#\?}"; then
      lacking+=("${package#\?}")
    else
      missing+=("${package#\?}")
    fi
  done
}

# The named packages, where the release has them.
if_available() { printf '?%s\n' "$@"; }

# ON if calib can be built with what install_missing has found, OFF otherwise.
calib_if_possible() {
  local package
  for package in "${for_calib[@]}"; do
    installed "$package" || {
      echo OFF
      return
    }
  done
  echo ON
}

# Installs those of the named Debian packages that are not there. Touches neither the network nor
# sudo if none is missing.
install_missing() {
  command -v dpkg-query >/dev/null && command -v apt-get >/dev/null ||
    fail "installs what it needs with Debian's apt-get, which is not here; needed are: $*"
  local missing lacking package
  set -- $(printf '%s\n' "$@" | sort -u)
  find_missing "$@"
  if ((${#missing[@]} > 0)); then
    as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
    find_missing "$@"
  fi
  for package in "${lacking[@]}"; do
    if [[ ${without[$package]:-} ]]; then
      say "this release of Debian has no $package: ${without[$package]}"
    fi
  done
  if ((${#missing[@]} == 0)); then
    say "nothing to install: ${*#\?} are there"
    return
  fi
  say "installing ${missing[*]}"
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -qq -y --no-install-recommends \
    "${missing[@]}"
}

# --- Building ------------------------------------------------------------------------------------

# The build folder for a use (demo, test), which no other script has, and its user's CMake
# arguments: one folder for each different list of them, so that builds for several run-times stand
# side by side. CMake heeds the environment's CMAKE_PREFIX_PATH, too.
build_folder() {
  local use=$1
  set -- "${cmake_arguments[@]}"
  if [[ -n ${CMAKE_PREFIX_PATH:-} ]]; then set -- "$@" "CMAKE_PREFIX_PATH=$CMAKE_PREFIX_PATH"; fi
  if (($# == 0)); then
    echo "$repository/build/$use"
  else
    echo "$repository/build/$use-$(printf '%s\0' "$@" | cksum | cut -d' ' -f1)"
  fi
}

# Every option of the project, off: a script says which it wants, and is not at the mercy of what
# its build folder was configured with before.
options_off=(
  -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DCALIBRATION_GENERATOR=OFF
  -DCALIBRATION_EXAMPLES=OFF -DCALIBRATION_CALIB=OFF -DCALIBRATION_GEOMETRY=OFF
  -DCALIBRATION_BENCHMARKS=OFF -DCALIBRATION_PEERS=OFF -DCALIBRATION_INSTALL=OFF -DCALIBRATION_FUZZ=OFF
  -DCALIBRATION_WERROR=OFF -DCALIBRATION_SANITIZE=)

# configure FOLDER [-DNAME=VALUE...]: what is named is on, and the user has the last word.
configure() {
  cmake -S "$repository" -B "$1" "${options_off[@]}" "${@:2}" "${cmake_arguments[@]}"
}

# build FOLDER [--target NAME...]
build() { cmake --build "$1" --parallel "$jobs" "${@:2}"; }
