#!/usr/bin/env bash
# What the built library shows to the outside: the symbols it exports, the libraries it needs, what
# runs when it is loaded.
#
#   library_file_test.sh exports LIBRARY SCHEMA
#   library_file_test.sh needed LIBRARY
#   library_file_test.sh initializers LIBRARY
#   library_file_test.sh searches LIBRARY
#   library_file_test.sh geometry LIBRARY HEADER...
#   library_file_test.sh formats LIBRARY HEADER...
#
# exports: exactly the functions, constants and objects listed below, for the messages and fields of
# the schema file. initializers: loading runs the constructor of one object, the one that registers
# the file. searches: of its own names, loading searches for those that a program may have a copy of,
# the pointers to default instances, and for no other. formats: the library exports exactly the
# functions that the headers declare. geometry: it does, needs the C++ run-time alone, and runs nothing
# when it is loaded. Exit status: 0, it is so; 1, it is not, and the difference is told.
set -euo pipefail

check=$1
library=$2

fail() {
  echo "library_file_test: $*" >&2
  exit 1
}

for tool in nm readelf objdump; do
  command -v "$tool" >/dev/null || fail "$tool is not installed"
done
[[ -r $library ]] || fail "cannot read $library"

# One line for each symbol, C++ names spelled out. Constructors are two symbols of one name (for
# complete objects and for bases), destructors three (and one that deletes).
expected_exports() {
  local class file=calibration_5fcommon_2fcalibration_2eproto
  local p=google::protobuf z=zarvo::calibration
  printf '%s\n' "$z::protobuf_AddDesc_$file()" "$z::protobuf_AssignDesc_$file()" \
    "$z::protobuf_ShutdownFile_$file()" "$z::static_descriptor_initializer_${file}_" \
    "zarvo::calibration_internal::FreeElement(void*, unsigned long)" \
    "zarvo::calibration_internal::AllocateElement(void const*, void const*, unsigned long, int)"
  for class in $(awk '$1 == "message" { print $2 }' "$1"); do
    local c=$z::$class
    printf '%s\n' "vtable for $c" "typeinfo for $c" "typeinfo name for $c" \
      "$c::$class()" "$c::$class()" "$c::$class($c const&)" "$c::$class($c const&)" \
      "$c::~$class()" "$c::~$class()" "$c::~$class()" \
      "$c::SharedCtor()" "$c::SharedDtor()" "$c::InitAsDefaultInstance()" \
      "$c::default_instance()" "$c::default_instance_" "$c::descriptor()" \
      "$c::Swap($c*)" "$c::InternalSwap($c*)" "$c::Clear()" \
      "$c::New() const" "$c::New($p::Arena*) const" \
      "$c::GetCachedSize() const" "$c::SetCachedSize(int) const" "$c::GetMetadata() const" \
      "$c::MergePartialFromCodedStream($p::io::CodedInputStream*)" "$c::ByteSize() const" \
      "$c::SerializeWithCachedSizes($p::io::CodedOutputStream*) const" \
      "$c::SerializeWithCachedSizesToArray(unsigned char*) const" \
      "$c::MergeFrom($p::Message const&)" "$c::MergeFrom($c const&)" \
      "$c::CopyFrom($p::Message const&)" "$c::CopyFrom($c const&)" "$c::IsInitialized() const"
  done
  # x_bin in CameraIntrinsics: CameraIntrinsics::kXBinFieldNumber
  awk -v namespace="$z" '
    $1 == "message" { class = $2 }
    $1 ~ /^(optional|required|repeated)$/ {
      name = ""
      count = split($3, words, "_")
      for (i = 1; i <= count; ++i) name = name toupper(substr(words[i], 1, 1)) substr(words[i], 2)
      print namespace "::" class "::k" name "FieldNumber"
    }' "$1"
}

case $check in
  exports)
    expected=$(expected_exports "$3" | LC_ALL=C sort)
    actual=$(nm -D --defined-only -C "$library" | cut -d' ' -f3- | LC_ALL=C sort)
    missing=$(LC_ALL=C comm -23 <(echo "$expected") <(echo "$actual"))
    extra=$(LC_ALL=C comm -13 <(echo "$expected") <(echo "$actual"))
    [[ -z $missing && -z $extra ]] ||
      fail "$library exports other symbols than it should" \
        $'\nmissing:\n'"$missing"$'\nextra:\n'"$extra"
    ;;

  needed)
    needed=$(readelf -dW "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
    [[ $needed == *libprotobuf.so* ]] || fail "$library does not need libprotobuf: $needed"
    allowed='libprotobuf|libstdc\+\+|libm|libgcc_s|libc|ld-linux-[a-z0-9_-]+'
    # Threads are a library of their own before glibc 2.34.
    glibc=$(getconf GNU_LIBC_VERSION)
    [[ $(printf '%s\n' "${glibc#glibc }" 2.34 | sort -V | head -n 1) == 2.34 ]] || allowed+='|libpthread'
    for name in $needed; do
      [[ $name =~ ^($allowed)\.so ]] ||
        fail "$library needs $name, which is neither the protobuf nor the C++ run-time"
    done
    ;;

  searches)
    own=$(nm -D --defined-only "$library" | awk '{ print $3 }')
    searched=$(readelf -rW "$library" | awk '$5 ~ /^_/ { sub(/@.*/, "", $5); print $5 }' | sort -u |
      grep -xF "$own" || true)
    copied=$(grep 'default_instance_E$' <<<"$own" | sort -u)
    [[ $searched == "$copied" ]] ||
      fail "$library: expected searches (>) are not what it has (<):"$'\n'"$(
        diff <(echo "$searched") <(echo "$copied") | c++filt)"
    ;;
  initializers)
    # The C run-time brings one entry (frame_dummy); each source that has work to do brings one.
    size=$(readelf -SW "$library" |
      sed -nE 's/.* \.init_array +INIT_ARRAY +[^ ]+ [^ ]+ ([^ ]+) .*/\1/p')
    [[ -n $size ]] && ((16#$size == 2 * 8)) ||
      fail "$library: .init_array has ${size:-no} (hexadecimal) bytes, expected 10: two addresses"

    # All that the source's entry may call or touch: the registration, and the standard streams'
    # initializer, which comes with <iostream> from the run-time's headers. Without optimization the
    # entry is a chain of functions.
    file=calibration_5fcommon_2fcalibration_2eproto
    chain='_GLOBAL__sub_I_.*|__static_initialization_and_destruction_0.*|__cxx_global_var_init.*'
    chain+="|zarvo::calibration::StaticDescriptorInitializer_$file::.*"
    found=$(objdump -d -C --no-show-raw-insn "$library" |
      awk -v chain="^[0-9a-f]+ <($chain)>:$" '/^[0-9a-f]+ </ { inside = $0 ~ chain } inside' |
      sed -n '/>:$/d; s/.*<\([^<]*\)>$/\1/p' | sed -E 's/\+0x[0-9a-f]+$//; s/@.*//' | sort -u)
    registration="zarvo::calibration::protobuf_AddDesc_$file()"
    grep -qxF "$registration" <<<"$found" ||
      fail "$library: no call of $registration found where the library is loaded"
    allowed="$chain|__cxa_atexit|__dso_handle|std::__ioinit|std::ios_base::Init::~?Init\\(\\)"
    allowed+="|zarvo::calibration::protobuf_AddDesc_$file\\(\\)"
    allowed+="|zarvo::calibration::static_descriptor_initializer_${file}_"
    others=$(grep -vxE "$allowed" <<<"$found" || true)
    [[ -z $others ]] ||
      fail "$library: loading does more than construct static_descriptor_initializer_...:" \
        $'\n'"$others"
    ;;

  geometry | formats)
    # Overloads are one symbol each.
    expected=$(cat "${@:3}" | sed '/^inline /d' |
      sed -nE 's/^[a-zA-Z_][][a-zA-Z_0-9:<>* ]* \*?([A-Za-z_]+)\(.*/\1/p' | LC_ALL=C sort)
    actual=$(nm -D --defined-only -C "$library" | cut -d' ' -f3- |
      sed -E 's/\[abi:cxx11\]//; s/^zarvo::calibration_[a-z]+:://; s/\(.*//' | LC_ALL=C sort)
    [[ $(wc -l <<<"$expected") -gt 4 && $expected == "$actual" ]] ||
      fail "$library exports other symbols than its headers declare (<: declared, >: exported)" \
        $'\n'"$(diff <(echo "$expected") <(echo "$actual"))"
    [[ $check == geometry ]] || exit 0
    needed=$(readelf -dW "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
    for name in $needed; do
      [[ $name =~ ^(libstdc\+\+|libm|libgcc_s|libc|ld-linux-[a-z0-9_-]+)\.so ]] ||
        fail "$library needs $name, which is not of the C++ run-time"
    done
    sections=$(readelf -SW "$library")
    [[ ! $sections =~ \.init_array\ +INIT_ARRAY\ +[^\ ]+\ [^\ ]+\ ([0-9a-f]+) ]] ||
      ((16#${BASH_REMATCH[1]} == 8)) || fail "$library runs something when it is loaded"
    ;;

  *) fail "unknown check '$check'" ;;
esac
