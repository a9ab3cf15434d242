// A camera in other tools' formats.
#ifndef CALIB_TOOLS_EXPORTERS_H_
#define CALIB_TOOLS_EXPORTERS_H_

#include <string>

#include "calibration_common/calibration.pb.h"

namespace calib {

// A file of ROS camera_info. For messages, the places are those of the camera and of its
// intrinsics, such as "rig.json: camera[0]", or "rig.json:" for the record itself. `model` is the
// distortion model, which a record does not tell; it may be empty if there are no coefficients.
// What the file has no key for is named on standard error.
std::string CameraInfo(const zarvo::calibration::CameraCalibration& camera,
                       const std::string& camera_place, const std::string& place,
                       const std::string& model);

}  // namespace calib

#endif  // CALIB_TOOLS_EXPORTERS_H_
