// Makes a record and writes it to a file: the calibration of a robot's drive base, with when it was
// measured.
//
//   write_record FILE

#include <fstream>
#include <iostream>

#include "calibration_common/calibration.pb.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: write_record FILE\n";
    return 2;
  }
  zarvo::calibration::BaseCalibrationProto base;
  base.set_wheel_base(0.41f);
  // Width and length are left out: readers get the schema's defaults for them.

  // mutable_x() makes a sub-message on the way; it belongs to the record.
  zarvo::calibration::GyroscopeCalibrationProto* gyroscope = base.mutable_gyroscope_cal();
  gyroscope->set_gyroscope_gain(0.0175f);
  gyroscope->mutable_metadata()->set_base_serial("B-0042");
  gyroscope->mutable_metadata()->set_temperature(23.5f);

  // A 4x4 transform. add_x() appends to a repeated field.
  zarvo::calibration::CameraExtrinsics* transform =
      base.mutable_global_transform()->mutable_params();
  for (int i = 0; i < 16; ++i) transform->add_a(i % 5 == 0 ? 1 : 0);

  std::ofstream file(argv[1], std::ios::binary | std::ios::trunc);
  if (!base.SerializeToOstream(&file) || !file.flush()) {
    std::cerr << "write_record: " << argv[1] << ": could not be written\n";
    return 1;
  }
  std::cout << argv[1] << ": " << base.ByteSize() << " bytes\n";
  return 0;
}
