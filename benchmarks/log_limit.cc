// What the commands of calib that go through logs are measured by: a program of one thread that
// knows its record's class, reads the bytes and parses them into one object.
//
//   benchmark_log_limit read FILE...    counts the records that are whole
//   benchmark_log_limit table FILE...   prints kColumns of each as CSV, numbers by to_chars()
//
// FILE is a log of CameraCalibration records.
#include <fcntl.h>
#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <string>

#include "calibration_common/calibration.pb.h"
#include "calibration_common/record_log.h"

namespace {

using google::protobuf::io::FileInputStream;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::RecordLogReader;

constexpr size_t kBlock = size_t{1} << 18;

template <typename Number>
void Append(Number number, std::string* row) {
  char text[32];
  const char* const end = std::to_chars(text, text + sizeof text, number).ptr;
  row->append(text, static_cast<size_t>(end - text));
}

// calib table --columns kColumns --to csv
constexpr char kColumns[] =
    "name,serial,intrinsics.fx,intrinsics.fy,intrinsics.cx,intrinsics.cy,intrinsics.k,"
    "intrinsics.width,intrinsics.height,intrinsics.error_per_point,extrinsics.a";

template <typename List>
void AppendList(const List& list, std::string* row) {
  for (int i = 0; i < list.size(); ++i) {
    if (i > 0) *row += ' ';
    Append(list.Get(i), row);
  }
}

void AppendRow(const CameraCalibration& camera, std::string* row) {
  const auto& intrinsics = camera.intrinsics();
  *row += camera.name();
  *row += ',';
  *row += camera.serial();
  for (const double number : {intrinsics.fx(), intrinsics.fy(), intrinsics.cx(), intrinsics.cy()}) {
    *row += ',';
    Append(number, row);
  }
  *row += ',';
  AppendList(intrinsics.k(), row);
  *row += ',';
  Append(intrinsics.width(), row);
  *row += ',';
  Append(intrinsics.height(), row);
  *row += ',';
  Append(intrinsics.error_per_point(), row);
  *row += ',';
  AppendList(camera.extrinsics().a(), row);
  *row += '\n';
}

// The number of records; -1 if the file is not whole.
long Go(const char* path, bool table) {
  const int file = open(path, O_RDONLY);
  if (file < 0) return -1;
  FileInputStream stream(file, kBlock);
  stream.SetCloseOnDelete(true);
  RecordLogReader log(&stream);
  CameraCalibration camera;
  std::string rows = std::string(kColumns) + "\n";
  long count = 0;
  RecordLogReader::Result result;
  while ((result = log.Read(&camera)) == RecordLogReader::Result::kRecord) {
    ++count;
    if (!table) continue;
    AppendRow(camera, &rows);
    if (rows.size() < kBlock) continue;
    std::fwrite(rows.data(), 1, rows.size(), stdout);
    rows.clear();
  }
  if (table) std::fwrite(rows.data(), 1, rows.size(), stdout);
  return result == RecordLogReader::Result::kEnd ? count : -1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 2 ? argv[1] : "";
  if (what != "read" && what != "table") {
    std::fprintf(stderr, "benchmark_log_limit: expected read or table, and logs\n");
    return 2;
  }
  for (int i = 2; i < argc; ++i) {
    const long count = Go(argv[i], what == "table");
    if (count < 0) {
      std::fprintf(stderr, "benchmark_log_limit: %s cannot be read\n", argv[i]);
      return 1;
    }
    if (what == "read") std::printf("%ld\n", count);
  }
}
