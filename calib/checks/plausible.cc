#include "calib/checks/plausible.h"

#include "calib/checks/rules.h"
#include "calib/fields/walk.h"

namespace calib {

using google::protobuf::Message;
using zarvo::calibration::BaseCalibrationProto;
using zarvo::calibration::CalibrationImage;
using zarvo::calibration::CameraExtrinsics;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::FocusInfo;
using zarvo::calibration::PTZIntrinsics;
using zarvo::calibration::RobotCalibration;

namespace {

// Calls `check` if the message is of its type.
template <typename Record, typename Check>
void CheckIf(const Message& message, Check check) {
  if (message.GetDescriptor() == Record::descriptor()) check(static_cast<const Record&>(message));
}

}  // namespace

Findings FindImplausible(const Message& record, double rotation_tolerance) {
  Findings findings;
  ForEachMessage(record, [&](const Message& message, const std::string& path) {
    const auto check_by = [&](auto rule) {
      return [&findings, &path, rule](const auto& part) { rule(part, path, &findings); };
    };
    CheckIf<RobotCalibration>(message, check_by(CheckCameras));
    CheckIf<CameraIntrinsics>(message, check_by(CheckIntrinsics));
    CheckIf<CameraIntrinsics>(message, check_by(CheckResiduals));
    CheckIf<PTZIntrinsics>(message, check_by(CheckZoomIntrinsics));
    CheckIf<CameraExtrinsics>(message, [&](const CameraExtrinsics& extrinsics) {
      CheckExtrinsics(extrinsics, path, rotation_tolerance, &findings);
    });
    CheckIf<CalibrationImage>(message, check_by(CheckImage));
    CheckIf<FocusInfo>(message, check_by(CheckFocus));
    CheckIf<BaseCalibrationProto>(message, check_by(CheckBase));
  });
  return findings;
}

void AddWrong(const std::string& rule, const std::string& path, const std::string& value,
              const std::string& expected, Findings* findings) {
  findings->push_back({rule, path, value, "is " + value + ", expected " + expected});
}

void CheckSize(int value, const std::string& path, Findings* findings) {
  if (value <= 0) AddWrong("size", path, std::to_string(value), "a size above 0", findings);
}

}  // namespace calib
