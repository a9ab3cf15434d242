// Writes many records to one file, each behind its length, and reads them back one at a time: what
// a program does that records while it runs.
//
//   record_log FILE COUNT

#include "calibration_common/record_log.h"

#include <google/protobuf/io/zero_copy_stream_impl.h>

#include <cstdlib>
#include <fstream>
#include <iostream>

#include "calibration_common/calibration.pb.h"

namespace {

using zarvo::calibration::FocusCheckProto;
using zarvo::calibration::RecordLogReader;
using zarvo::calibration::RecordLogWriter;

bool Write(const char* path, int count) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  {
    // Hands over what it holds when it ends.
    google::protobuf::io::OstreamOutputStream stream(&file);
    RecordLogWriter log(&stream);
    FocusCheckProto check;
    for (int i = 0; i < count; ++i) {
      check.Clear();  // keeps its memory: the loop allocates next to nothing
      check.set_name("spot " + std::to_string(i));
      check.set_value_at_cutoff(0.3f);
      for (int bin = 0; bin < 64; ++bin) check.add_bins(1.0f / static_cast<float>(1 + bin));
      check.set_ok(i % 10 != 0);
      if (log.Write(check) != RecordLogWriter::Result::kWritten) return false;
    }
  }
  return static_cast<bool>(file.flush());
}

int Read(const char* path) {
  std::ifstream file(path, std::ios::binary);
  google::protobuf::io::IstreamInputStream stream(&file);
  RecordLogReader log(&stream);
  FocusCheckProto check;
  int count = 0, failed = 0;
  RecordLogReader::Result result;
  while ((result = log.Read(&check)) == RecordLogReader::Result::kRecord) {
    ++count;
    if (!check.ok()) ++failed;
  }
  if (result != RecordLogReader::Result::kEnd || file.bad()) {
    std::cerr << "record_log: " << path << ": damaged behind record " << count << "\n";
    return 1;
  }
  std::cout << count << " checks, " << failed << " not passed, " << log.end() << " bytes\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: record_log FILE COUNT\n";
    return 2;
  }
  if (!Write(argv[1], std::atoi(argv[2]))) {
    std::cerr << "record_log: " << argv[1] << ": could not be written\n";
    return 1;
  }
  return Read(argv[1]);
}
