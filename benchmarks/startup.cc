// A process that does nothing but to come to its first record: it builds one, writes it and reads
// it back. Then it prints the memory that it has resident, in KiB: all of it, and what no file
// backs. One program for each side: ours, the opponent's, and the run-time alone, which has no
// record class and takes the same fields as unknown ones.
#include <cstdio>
#include <cstring>
#include <string>

#if defined(STARTUP_OURS)
#include "calibration_common/calibration.pb.h"
using zarvo::calibration::CameraIntrinsics;
#elif defined(STARTUP_OPPONENT)
#include "opponent/calibration.pb.h"
using opponent::calibration::CameraIntrinsics;
#else
#include <google/protobuf/unknown_field_set.h>
#endif

namespace {

#if defined(STARTUP_OURS) || defined(STARTUP_OPPONENT)
bool FirstRecord() {
  CameraIntrinsics record, read;
  record.set_fx(458.654);
  record.set_fy(457.296);
  record.set_skew(0);
  record.set_cx(367.215);
  record.set_cy(248.375);
  return read.ParseFromString(record.SerializeAsString()) && read.cy() == record.cy();
}
#else
bool FirstRecord() {
  google::protobuf::UnknownFieldSet record, read;
  for (int number = 1; number <= 5; ++number) record.AddFixed64(number, 0x407CAA76C8B43958);
  std::string bytes;
  return record.SerializeToString(&bytes) && read.ParseFromString(bytes) && read.field_count() == 5;
}
#endif

// The memory that the process has resident, in KiB.
struct Resident {
  long all = 0;
  long anonymous = 0;  // of all: what no file backs, or what was written to
  long library = 0;    // of all: what is mapped of the library under test
};

// By /proc/self/smaps: a line for each mapping, which ends with its file, and lines of its figures.
Resident ReadResident() {
  Resident resident;
  std::FILE* maps = std::fopen("/proc/self/smaps", "r");
  char line[512];
  bool in_library = false;
  while (maps != nullptr && std::fgets(line, sizeof line, maps) != nullptr) {
    long kibibytes;
    if (std::strchr(line, '-') != nullptr) {
      in_library = std::strstr(line, "/libcalibration_") != nullptr;
    } else if (std::sscanf(line, "Rss: %ld kB", &kibibytes) == 1) {
      resident.all += kibibytes;
      if (in_library) resident.library += kibibytes;
    } else if (std::sscanf(line, "Anonymous: %ld kB", &kibibytes) == 1) {
      resident.anonymous += kibibytes;
    }
  }
  if (maps != nullptr) std::fclose(maps);
  return resident;
}

}  // namespace

int main(int argc, char**) {
  if (!FirstRecord()) {
    std::fprintf(stderr, "benchmark_startup: the first record could not be read back\n");
    return 1;
  }
  if (argc < 2) return 0;
  const Resident resident = ReadResident();
  std::printf("%ld %ld %ld\n", resident.all, resident.anonymous, resident.library);
  return 0;
}
