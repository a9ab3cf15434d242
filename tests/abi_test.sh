#!/usr/bin/env bash
# The library's binary interface stays what programs were built against, for as long as its SONAME
# does.
#
#   abi_test.sh symbols LIBRARY BASELINE-FOLDER
#   abi_test.sh kept LIBRARY BASELINE-FOLDER HEADER-FOLDER
#   abi_test.sh gate COMPILER
#   abi_test.sh renew LIBRARY BASELINE-FOLDER HEADER-FOLDER
#
# symbols: the library exports exactly what exported_symbols.txt in the baseline folder lists.
# kept: sizes, layouts, virtual tables and signatures are those of the interface description
# interface.abi.xz there; additions are welcome. gate: a change of each kind that breaks programs is
# noticed, so that `kept` means something. renew: writes both files anew; refuses to where programs
# would break under the SONAME they know.
#
# LIBRARY has debug information. The description is what abidw makes of it, without what stands in
# other headers than the library's, so that it does not depend on the patch version of run-time
# 3.21. The run-times of the 3.0 series differ among themselves: there is no description for those.
set -euo pipefail

check=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fail() {
  printf 'abi_test: %s\n' "$*" >&2
  exit 1
}

for tool in nm xz abidw abidiff; do
  command -v "$tool" >/dev/null || fail "$tool is not installed"
done

exported_symbols() { nm -D --defined-only --portability "$1" | cut -d' ' -f1 | LC_ALL=C sort; }

# describe LIBRARY HEADER-FOLDER OUTPUT
describe() {
  abidw --no-corpus-path --no-comp-dir-path --no-elf-needed --no-show-locs --no-parameter-names \
    --exported-interfaces-only --headers-dir "$2" --drop-private-types --out-file "$3" "$1"
  grep -q "<class-decl " "$3" || fail "abidw found no class in $1"
}

# compatible BEFORE AFTER: prints what programs built against BEFORE would stumble over.
compatible() {
  local status=0
  abidiff --no-added-syms "$1" "$2" || status=$?
  # Bits: 1 error, 2 usage, 4 a change, 8 a change that is surely incompatible.
  (((status & 3) == 0)) || fail "abidiff could not compare (status $status)"
  return "$status"
}

soname() { sed -n "/<abi-corpus/s/.* soname='\([^']*\)'.*/\1/p" "$1"; }

renewal="renew it with: cmake --build BUILD_FOLDER --target abi-baseline (docs/extending.md)"

case $check in
  symbols)
    list=$3/exported_symbols.txt
    diff -u "$list" <(exported_symbols "$2") ||
      fail "$2 exports other symbols than $list lists. One that is gone breaks programs and needs" \
        "a new SONAME. If the change is meant, $renewal"
    ;;

  kept | renew)
    library=$2 baseline=$3 headers=$4
    describe "$library" "$headers" "$folder/now.abi"
    if [[ -e $baseline/interface.abi.xz ]]; then
      xz -dc "$baseline/interface.abi.xz" >"$folder/before.abi"
      if [[ $(soname "$folder/before.abi") == "$(soname "$folder/now.abi")" ]]; then
        compatible "$folder/before.abi" "$folder/now.abi" ||
          fail "$library breaks programs that were built against $(soname "$folder/now.abi"), see" \
            "above: undo the change, or give the project a new major version (docs/extending.md)"
      elif [[ $check == kept ]]; then
        fail "$baseline describes $(soname "$folder/before.abi"), the library is" \
          "$(soname "$folder/now.abi"): $renewal"
      fi
    elif [[ $check == kept ]]; then
      fail "$baseline/interface.abi.xz is not there: $renewal"
    fi
    if [[ $check == renew ]]; then
      xz -9e -c "$folder/now.abi" >"$baseline/interface.abi.xz"
      exported_symbols "$library" >"$baseline/exported_symbols.txt"
    fi
    ;;

  gate)
    compiler=$2
    mkdir "$folder/include"
    # build NAME SED-SCRIPT: describes a small library, changed by the script, in NAME.abi.
    build() {
      sed -E "$2" >"$folder/include/small.h" <<'END'
struct Base {
  virtual ~Base();
  virtual int Size() const;
};
class Record : public Base {
 public:
  Record();
  ~Record() override;
  int Size() const override;
  void Set(int value);
  double value() const { return value_; }
  static const int kValueFieldNumber;
 private:
  int bits_;
  int cached_;
  double value_;
};
END
      cat - >"$folder/small.cc" <<'END'
#include "small.h"
Base::~Base() {}
int Base::Size() const { return 0; }
Record::Record() : bits_(0), cached_(0), value_(0) {}
Record::~Record() {}
int Record::Size() const { return cached_; }
END
      if grep -q 'void Set' "$folder/include/small.h"; then
        sed -nE 's/^  void Set(.*);/void Record::Set\1 { value_ = value; bits_ = 1; }/p' \
          "$folder/include/small.h" >>"$folder/small.cc"
      fi
      grep -q kValueFieldNumber "$folder/include/small.h" &&
        echo 'const int Record::kValueFieldNumber;' |
        sed 's/;/ = 1;/' >>"$folder/small.cc"
      if grep -q 'int Added' "$folder/include/small.h"; then
        echo 'int Record::Added() const { return cached_; }' >>"$folder/small.cc"
      fi
      "$compiler" -std=c++17 -g -fPIC -shared -I "$folder/include" "$folder/small.cc" \
        -o "$folder/libsmall.so"
      describe "$folder/libsmall.so" "$folder/include" "$folder/$1.abi"
    }
    build before ''
    build same ''
    build function_added 's/^  void Set/  int Added() const;\n&/'
    for name in same function_added; do
      compatible "$folder/before.abi" "$folder/$name.abi" || fail "$name: counts as incompatible"
    done
    build function_gone '/void Set/d'
    build constant_gone '/kValueFieldNumber/d'
    build parameter_type 's/int value\)/long value)/'
    build members_swapped \
      's/int bits_/int other_/; s/int cached_/int bits_/; s/int other_/int cached_/'
    build member_added 's/^  double value_;/&\n  int more_ = 0;/'
    build member_type 's/^  double value_;/  float value_;/'
    build virtual_added 's/^  virtual int Size/  virtual int First() const { return 0; }\n&/'
    build base_gone 's/ : public Base//; s/ override//'
    for name in function_gone constant_gone parameter_type members_swapped member_added \
      member_type virtual_added base_gone; do
      if compatible "$folder/before.abi" "$folder/$name.abi" >/dev/null; then
        fail "$name: goes unnoticed"
      fi
    done
    ;;

  *) fail "unknown check '$check'" ;;
esac
