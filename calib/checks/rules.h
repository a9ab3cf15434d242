// The rules of plausible.h, one function for each message that has some. Each adds what it finds in
// its message, of which `path` is the path.
#ifndef CALIB_CHECKS_RULES_H_
#define CALIB_CHECKS_RULES_H_

#include <string>

#include "calib/checks/finding.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

// intrinsics_rules.cc
void CheckIntrinsics(const zarvo::calibration::CameraIntrinsics& intrinsics,
                     const std::string& path, Findings* findings);
void CheckZoomIntrinsics(const zarvo::calibration::PTZIntrinsics& intrinsics,
                         const std::string& path, Findings* findings);

// residual_rule.cc
void CheckResiduals(const zarvo::calibration::CameraIntrinsics& intrinsics, const std::string& path,
                    Findings* findings);

// record_rules.cc
void CheckExtrinsics(const zarvo::calibration::CameraExtrinsics& extrinsics,
                     const std::string& path, double rotation_tolerance, Findings* findings);
void CheckCameras(const zarvo::calibration::RobotCalibration& robot, const std::string& path,
                  Findings* findings);
void CheckImage(const zarvo::calibration::CalibrationImage& image, const std::string& path,
                Findings* findings);
void CheckFocus(const zarvo::calibration::FocusInfo& focus, const std::string& path,
                Findings* findings);
void CheckBase(const zarvo::calibration::BaseCalibrationProto& base, const std::string& path,
               Findings* findings);

// For all of them: adds that the field at `path` is `value`, where `expected` was to be.
void AddWrong(const std::string& rule, const std::string& path, const std::string& value,
              const std::string& expected, Findings* findings);
void CheckSize(int value, const std::string& path, Findings* findings);

}  // namespace calib

#endif  // CALIB_CHECKS_RULES_H_
