// The exporters. Each writes a camera as another tool reads it, and says on standard error what it
// did not keep.
#ifndef CALIB_TOOLS_EXPORTERS_H_
#define CALIB_TOOLS_EXPORTERS_H_

#include <string>

#include "calibration_common/calibration.pb.h"

namespace calib {

// A file of ROS camera_info. For messages, `camera_place` and `place` are where the camera and its
// intrinsics are, such as "rig.json: camera[0]", or "rig.json:" for the record itself. `model` is
// the distortion model, which a record does not tell; it may be empty if there are no coefficients.
// Throws Failure if the model does not fit, or if the record lacks what the file must have.
std::string CameraInfo(const zarvo::calibration::CameraCalibration& camera,
                       const std::string& camera_place, const std::string& place,
                       const std::string& model);

}  // namespace calib

#endif  // CALIB_TOOLS_EXPORTERS_H_
