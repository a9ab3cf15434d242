// A library that uses the records, as a robot's drivers do: loading_program loads two of them at
// once.
#include <string>

#include "calibration_common/calibration.pb.h"

using ::zarvo::calibration::RobotCalibration;

extern "C" {

// A record, made here; the caller owns it.
__attribute__((visibility("default"))) RobotCalibration* MakeRecord(const char* name) {
  RobotCalibration* record = new RobotCalibration;
  record->add_camera()->set_name(name);
  return record;
}

// Adds a camera of that name, made here, to a record that may have been made elsewhere.
__attribute__((visibility("default"))) void AddCamera(RobotCalibration* record, const char* name) {
  RobotCalibration other;
  other.add_camera()->set_name(name);
  RobotCalibration read;
  if (read.ParseFromString(other.SerializeAsString())) record->MergeFrom(read);
}

__attribute__((visibility("default"))) const void* DefaultInstance() {
  return &RobotCalibration::default_instance();
}
}
