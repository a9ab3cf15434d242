// How cameras change from one record to the next: their intrinsics and where they sit.
#ifndef CALIB_VIEWS_CAMERA_DRIFT_H_
#define CALIB_VIEWS_CAMERA_DRIFT_H_

#include <google/protobuf/message.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "calib/geometry/calibration_geometry.h"

namespace calib {

// A camera in one record.
struct CameraSample {
  std::string camera;  // its serial number, else its name, else its place in the record
  std::string record;  // as messages call it
  std::vector<std::pair<std::string, double>> intrinsics;
  // Of extrinsics that are 16 numbers, a rigid transform by rows.
  std::optional<zarvo::calibration_geometry::Transform> transform;
  bool odd_transform = false;  // they are there, but are none
};

// The cameras of a record, in its order.
std::vector<CameraSample> CameraSamplesOf(const google::protobuf::Message& record,
                                          const std::string& name);

// One quantity of one camera in one record. Changes are differences; of the rotation, the angle in
// degrees between the two, and of the position, the distance in the record's unit of length: these
// have no value of their own.
struct DriftRow {
  std::string camera, record, quantity;
  std::optional<double> value, since_first, since_before;
};

// The rows of all cameras, each camera's together, in the order in which they first come.
std::vector<DriftRow> DriftOf(const std::vector<CameraSample>& samples);

}  // namespace calib

#endif  // CALIB_VIEWS_CAMERA_DRIFT_H_
