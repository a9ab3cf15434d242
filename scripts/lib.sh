# Shared by the scripts beside it (sourced, not run): their command lines, installing what is
# missing, and talking about it.

repository=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '== %s\n' "$*"; }

fail() {
  printf '%s: %s\n' "$0" "$*" >&2
  exit 1
}

# Prints the comment at the top of the script that runs.
usage() { sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"; }

refuse_arguments() {
  printf '%s: %s; --help tells what is taken\n' "$0" "$*" >&2
  exit 2
}

# For scripts that hand their arguments to CMake and have none of their own but --help.
take_only_cmake_arguments() {
  local argument
  for argument in "$@"; do
    case $argument in
      -h | --help)
        usage
        exit
        ;;
      -D?*) ;;
      *) refuse_arguments "unknown argument '$argument', expected -DNAME=VALUE" ;;
    esac
  done
}

installed() {
  [[ $(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

# Installs those of the named Debian packages that are not there. Touches neither the network nor
# sudo if none is missing.
install_missing() {
  command -v dpkg-query >/dev/null && command -v apt-get >/dev/null ||
    fail "installs what it needs with Debian's apt-get, which is not here; needed are: $*"
  local package missing=() as_root=()
  for package in "$@"; do
    installed "$package" || missing+=("$package")
  done
  if ((${#missing[@]} == 0)); then
    say "nothing to install: $* are there"
    return
  fi
  say "installing ${missing[*]}"
  if ((EUID != 0)); then
    command -v sudo >/dev/null ||
      fail "must be root, or have sudo, to install: ${missing[*]}"
    as_root=(sudo)
  fi
  as_root+=(env DEBIAN_FRONTEND=noninteractive)
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" apt-get install -qq -y --no-install-recommends "${missing[@]}"
}

# The build folder for a use (demo, test) and its extra CMake arguments: one folder for each
# different list of arguments, so that builds for several run-times stand side by side. CMake heeds
# the environment's CMAKE_PREFIX_PATH, too.
build_folder() {
  local use=$1
  shift
  if [[ -n ${CMAKE_PREFIX_PATH:-} ]]; then set -- "$@" "CMAKE_PREFIX_PATH=$CMAKE_PREFIX_PATH"; fi
  if (($# == 0)); then
    echo "$repository/build/$use"
  else
    echo "$repository/build/$use-$(printf '%s\0' "$@" | cksum | cut -d' ' -f1)"
  fi
}
