#!/usr/bin/env bash
# The public headers compile without a warning, whatever users ask to be warned of, in every standard
# that they may have, alone and as a file's first include, and may be included twice and by several
# files of one program. It takes no names from them: all its macros begin with ZARVO_CALIBRATION_, and who says
# `using namespace zarvo::calibration` may call namespaces of his own as he likes.
#
#   header_test.sh COMPILER SOURCE-FOLDER [RUN-TIME-INCLUDE-FOLDER]
#
# The run-time's folder is left out where the compiler looks of its own accord. Exit status: 0, it
# compiles; otherwise the compiler's own, or 1 if there is no such compiler.
set -euo pipefail

compiler=$1
source_folder=$2
runtime_folder=${3:-}

command -v "$compiler" >/dev/null || {
  echo "header_test: the compiler $compiler is not installed" >&2
  exit 1
}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

for unit in one two; do
  cat >"$folder/$unit.cc" <<END
#include "calibration_common/calibration.pb.h"
#include "calibration_common/calibration.pb.h"

int $unit() {
  zarvo::calibration::RobotCalibration robot;
  robot.add_camera()->mutable_intrinsics()->add_k(0.5);
  delete new zarvo::calibration::CameraCalibration;  // which may share its allocation with others
  return robot.camera(0).intrinsics().k_size() + robot.unknown_fields().field_count();
}
END
done

cat >"$folder/log.cc" <<END
#include "calibration_common/record_log.h"
#include "calibration_common/record_log.h"
#include "calibration_common/calibration.pb.h"

bool copy(::google::protobuf::io::ZeroCopyInputStream* from,
          ::google::protobuf::io::ZeroCopyOutputStream* to, ::google::protobuf::Message* any) {
  zarvo::calibration::RobotCalibration robot;
  zarvo::calibration::RecordLogReader reader(from);
  zarvo::calibration::RecordLogWriter writer(to);
  reader.Read(any);
  writer.Write(*any);
  return reader.Read(&robot) == zarvo::calibration::RecordLogReader::Result::kRecord &&
         writer.Write(robot) == zarvo::calibration::RecordLogWriter::Result::kWritten;
}
END

cat >"$folder/geometry.cc" <<END
#include "calib/geometry/calibration_geometry.h"
#include "calib/geometry/calibration_geometry.h"
#include "calib/geometry/calibration_geometry_c.h"

double angle(const zarvo::calibration_geometry::Camera& camera) {
  return zarvo::calibration_geometry::LargestAngle(camera);
}
END

cat >"$folder/formats.cc" <<END
#include "calib/library/calibration_formats.h"
#include "calib/library/calibration_formats.h"
#include "calib/library/calibration_formats_c.h"

bool read(const std::string& text, zarvo::calibration::RobotCalibration* robot) {
  return zarvo::calibration_formats::ReadRos(text, robot).status ==
         zarvo::calibration_formats::Status::kOk;
}
END

warnings=(-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wswitch-enum)
[[ $compiler != g++ ]] || warnings+=(-Wuseless-cast)

compile() {
  echo "$compiler $*"
  "$compiler" "${warnings[@]}" -Werror -I "$source_folder" \
    ${runtime_folder:+-isystem "$runtime_folder"} "$@"
}

# Names that a program is likely to have.
{
  cat "$folder/one.cc"
  echo "using namespace zarvo::calibration;"
  for name in detail impl internal reflection registration runtime wire; do
    echo "namespace $name { int here(); }"
    echo "int from_$name() { return $name::here(); }"
  done
} >"$folder/names.cc"

for standard in c++14 c++17 c++20; do
  compile "-std=$standard" -fsyntax-only "$folder/one.cc"
done
for standard in c++11 c++20; do
  compile "-std=$standard" -fno-exceptions -fsyntax-only "$folder/log.cc"
  compile "-std=$standard" -fno-exceptions -fsyntax-only "$folder/geometry.cc"
  compile "-std=$standard" -fno-exceptions -fsyntax-only "$folder/formats.cc"
done
for header in calib/{geometry/calibration_geometry,library/calibration_formats}_c.h; do
  printf '#include "%s"\n' "$header"{,} >"$folder/header.c"
  "$compiler" -x c -std=c99 -Wall -Wextra -Wpedantic -Wconversion -Werror -I "$source_folder" \
    -fsyntax-only "$folder/header.c"
done
for unit in one two log; do
  compile -std=c++11 -O2 -c "$folder/$unit.cc" -o "$folder/$unit.o"
done
# A partial link finds what both define without asking for the libraries.
"$compiler" -r -nostdlib "$folder"/{one,two,log}.o -o "$folder/both.o"
# A library of the user's that shared a variable with others could not be unloaded any more.
if readelf --symbols --wide "$folder/both.o" | grep 'UNIQUE.*DEFAULT.*zarvo'; then
  echo "header_test: a header brings a variable that all libraries of a process share" >&2
  exit 1
fi

compile -std=c++17 -fsyntax-only "$folder/names.cc"
macros=$(compile -std=c++17 -E -dD "$folder/log.cc" "$folder/geometry.cc" "$folder/formats.cc" | awk '
  /^# [0-9]+ "/ { ours = $3 ~ /\/(calibration_common|calib\/geometry|calib\/library)\// }
  ours && $1 == "#define" { sub(/\(.*/, "", $2); print $2 }')
[[ $macros == *ZARVO_CALIBRATION_EXPORT* ]] || {
  echo "header_test: found no macros of the header: $macros" >&2
  exit 1
}
if grep --invert-match '^ZARVO_CALIBRATION_' <<<"$macros"; then
  echo "header_test: a header defines macros with other names than ZARVO_CALIBRATION_..." >&2
  exit 1
fi
