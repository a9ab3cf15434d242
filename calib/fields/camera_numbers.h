// The numbers of intrinsics as a camera that calib/geometry reckons with. Which lens k and p are
// of, no record says: callers do.
#ifndef CALIB_FIELDS_CAMERA_NUMBERS_H_
#define CALIB_FIELDS_CAMERA_NUMBERS_H_

#include "calib/geometry/calibration_geometry.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

// Where k and p stand in the distortion of a camera: of Brown's lens in k1 k2 p1 p2 k3 k4 k5 k6, of
// a fisheye one after the other.
constexpr int kFirstTangential = 2;

// A fisheye or Brown's, with at most 6 k and 2 p.
zarvo::calibration_geometry::Camera AsCamera(const zarvo::calibration::CameraIntrinsics& intrinsics,
                                             bool fisheye);

}  // namespace calib

#endif  // CALIB_FIELDS_CAMERA_NUMBERS_H_
