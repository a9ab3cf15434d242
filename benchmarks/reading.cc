// Reads a record from a file and parses it, as a program would: what calib's work on a large record
// is measured by. benchmark_reading TYPE FILE
#include <google/protobuf/message.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

#include "calibration_common/calibration.pb.h"

namespace {

std::string ReadWhole(const char* path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  std::string bytes(file ? static_cast<size_t>(file.tellg()) : 0, '\0');
  file.seekg(0);
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return file ? bytes : "";
}

}  // namespace

int main(int argc, char** argv) {
  const auto* schema = zarvo::calibration::RobotCalibration::descriptor()->file();
  const auto* type = argc == 3 ? schema->FindMessageTypeByName(argv[1]) : nullptr;
  if (type == nullptr) {
    std::fprintf(stderr, "benchmark_reading: expected TYPE FILE\n");
    return 2;
  }
  const std::unique_ptr<google::protobuf::Message> record(
      google::protobuf::MessageFactory::generated_factory()->GetPrototype(type)->New());
  const std::string bytes = ReadWhole(argv[2]);
  if (!bytes.empty() && record->ParseFromString(bytes)) return 0;
  std::fprintf(stderr, "benchmark_reading: %s cannot be read\n", argv[2]);
  return 1;
}
