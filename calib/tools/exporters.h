// The exporters. Each writes a camera as another tool reads it, and visits what it did not keep.
#ifndef CALIB_TOOLS_EXPORTERS_H_
#define CALIB_TOOLS_EXPORTERS_H_

#include <string>

#include "calib/tools/leftovers.h"
#include "calib/tools/lens_models.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

// For messages, `camera_place` and `place` are where a camera and its intrinsics are, such as
// "rig.json: camera[0]", or "rig.json:" for the record itself.

// The model that camera_info calls the coefficients of: `chosen` or, if that is nullptr, the one
// that their numbers tell. Throws Failure if they cannot be its coefficients.
const LensModel& CameraInfoModel(const zarvo::calibration::CameraIntrinsics& intrinsics,
                                 const std::string& place, const LensModel* chosen);

// How many there are, such as "2 k and 2 p".
std::string CoefficientCounts(const zarvo::calibration::CameraIntrinsics& intrinsics);

// A file of ROS camera_info. Throws Failure if the record lacks what the file must have, or has
// numbers that no camera can have.
std::string CameraInfo(const zarvo::calibration::CameraCalibration& camera,
                       const std::string& camera_place, const std::string& place,
                       const LensModel& model, const LeftoverVisitor& visit);

}  // namespace calib

#endif  // CALIB_TOOLS_EXPORTERS_H_
