// Reads the cameras of a file of another tool, by the library calibration_formats, and tells what
// they are and what of the file is in no record.
//
//   import_cameras FILE

#include <fstream>
#include <iostream>
#include <iterator>

#include "calib/library/calibration_formats.h"

namespace formats = zarvo::calibration_formats;

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: import_cameras FILE\n";
    return 2;
  }
  std::ifstream file(argv[1]);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  zarvo::calibration::RobotCalibration robot;
  const formats::Outcome outcome = formats::Read({{argv[1], text}}, formats::ReadOptions(), &robot);
  if (outcome.status != formats::Status::kOk) {
    std::cerr << "import_cameras: " << outcome.error << "\n";
    return 1;
  }
  std::cout << argv[1] << " is of " << outcome.format << ": " << robot.camera_size()
            << " cameras\n";
  for (const zarvo::calibration::CameraCalibration& camera : robot.camera()) {
    std::cout << camera.name() << ": fx " << camera.intrinsics().fx() << "\n";
  }
  for (const formats::Note& note : outcome.notes) std::cout << note.text << "\n";
  return 0;
}
