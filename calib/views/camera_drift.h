// How cameras change from one record to the next: their intrinsics and where they sit.
#ifndef CALIB_VIEWS_CAMERA_DRIFT_H_
#define CALIB_VIEWS_CAMERA_DRIFT_H_

#include <google/protobuf/message.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "calib/geometry/calibration_geometry.h"
#include "calib/views/record_charts.h"

namespace calib {

// A camera in one record.
struct CameraSample {
  std::string camera;  // its serial number, else its name, else its place in the record
  std::string record;  // as messages call it
  size_t order = 0;    // of the record, among all
  std::vector<std::pair<std::string, double>> intrinsics;
  // Of extrinsics that are 16 numbers, a rigid transform by rows.
  std::optional<zarvo::calibration_geometry::Transform> transform;
  bool odd_transform = false;  // they are there, but are none
  // If lenses are read: of intrinsics that tell the image's size.
  std::optional<zarvo::calibration_geometry::Camera> lens;
  std::string no_lens;  // why there is none
};

// The cameras of a record, in its order. Without a reader, lenses are not read.
std::vector<CameraSample> CameraSamplesOf(const google::protobuf::Message& record,
                                          const std::string& name, const LensReader& reader);

// One quantity of one camera in one record. Changes are differences; of the rotation, the angle in
// degrees between the two, of the position, the distance in the record's unit of length, and of the
// pixels, how far a point at infinity moved at most in the image, but for the rotation that
// explains most of it: these have no value of their own.
struct DriftRow {
  std::string camera, record, quantity;
  size_t order;  // of the record
  std::optional<double> value, since_first, since_before;
};

// The rows of all cameras, each camera's together, in the order in which they first come.
std::vector<DriftRow> DriftOf(const std::vector<CameraSample>& samples);

}  // namespace calib

#endif  // CALIB_VIEWS_CAMERA_DRIFT_H_
