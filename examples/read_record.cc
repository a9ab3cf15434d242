// Reads the record that write_record wrote, and tells what is in it and what is not.
//
//   read_record FILE

#include <fstream>
#include <iostream>

#include "calibration_common/calibration.pb.h"

namespace {

void Print(const char* name, bool present, float value) {
  std::cout << name << ": " << value << (present ? "\n" : " (not in the record)\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: read_record FILE\n";
    return 2;
  }
  std::ifstream file(argv[1], std::ios::binary);
  if (!file) {
    std::cerr << "read_record: " << argv[1] << ": cannot be opened\n";
    return 1;
  }
  zarvo::calibration::BaseCalibrationProto base;
  if (!base.ParseFromIstream(&file)) {
    std::cerr << "read_record: " << argv[1] << ": is no BaseCalibrationProto\n";
    return 1;
  }
  // x() always has an answer; has_x() tells whether it was in the record.
  Print("wheel_base", base.has_wheel_base(), base.wheel_base());
  Print("base_width", base.has_base_width(), base.base_width());
  Print("base_length", base.has_base_length(), base.base_length());

  // Reading through absent sub-messages is safe: they are empty records.
  const zarvo::calibration::CalibrationMetadataProto& metadata = base.gyroscope_cal().metadata();
  Print("temperature", metadata.has_temperature(), metadata.temperature());
  std::cout << "base_serial: " << metadata.base_serial() << "\n";
  std::cout << "audio_serial: '" << metadata.audio_serial() << "'\n";

  double trace = 0;
  const zarvo::calibration::CameraExtrinsics& transform = base.global_transform().params();
  for (int i = 0; i < transform.a_size(); i += 5) trace += transform.a(i);
  std::cout << "transform: " << transform.a_size() << " values, trace " << trace << "\n";
  return 0;
}
