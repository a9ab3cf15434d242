// Saves what can be saved of a log that record_log wrote and something cut off or damaged: copies
// the whole records ahead of the damage, and says where it begins and of what kind it is.
//
//   recover LOG OUTPUT
//
// Exit status: 0 the log was whole, 1 it was damaged (the output holds what came before), 2
// failure.

#include <google/protobuf/io/zero_copy_stream_impl.h>

#include <fstream>
#include <iostream>

#include "calibration_common/calibration.pb.h"
#include "calibration_common/record_log.h"

namespace {

using zarvo::calibration::FocusCheckProto;
using zarvo::calibration::RecordLogReader;
using zarvo::calibration::RecordLogWriter;

struct Report {
  int records = 0;
  long long good_bytes = 0;
  RecordLogReader::Result end = RecordLogReader::Result::kEnd;
  bool written = true;
};

Report Copy(std::istream* from, std::ostream* to) {
  google::protobuf::io::IstreamInputStream input(from);
  google::protobuf::io::OstreamOutputStream output(to);
  RecordLogReader reader(&input);
  RecordLogWriter writer(&output);
  Report report;
  // A record that fails to parse holds what came ahead of the damage, so it is not copied: half
  // a calibration looks like a whole one.
  FocusCheckProto check;
  while ((report.end = reader.Read(&check)) == RecordLogReader::Result::kRecord) {
    if (writer.Write(check) != RecordLogWriter::Result::kWritten) {
      report.written = false;
      break;
    }
    ++report.records;
    report.good_bytes = reader.end();
  }
  return report;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: recover LOG OUTPUT\n";
    return 2;
  }
  std::ifstream log(argv[1], std::ios::binary);
  std::ofstream copy(argv[2], std::ios::binary | std::ios::trunc);
  if (!log || !copy) {
    std::cerr << "recover: " << (log ? argv[2] : argv[1]) << ": cannot be opened\n";
    return 2;
  }
  const Report report = Copy(&log, &copy);
  if (!report.written || !copy.flush()) {
    std::cerr << "recover: " << argv[2] << ": could not be written\n";
    return 2;
  }
  std::cout << argv[1] << ": " << report.records << " whole records, " << report.good_bytes
            << " bytes\n";
  if (report.end == RecordLogReader::Result::kEnd) return 0;
  std::cout << argv[1] << ": damaged from byte " << report.good_bytes << "\n";
  return 1;
}
