// The record classes by their types, for what is done so often that reflection would take longer
// than the work itself. All else goes by reflection.
#ifndef CALIB_FIELDS_RECORD_CLASSES_H_
#define CALIB_FIELDS_RECORD_CLASSES_H_

#include <google/protobuf/descriptor.h>

#include <cstddef>

#include "calibration_common/calibration.pb.h"

namespace calib {

template <typename... Classes>
struct ClassList {};

// In the order of the schema, which a test compares.
using RecordClasses =
    ClassList<zarvo::calibration::MarkerPositionInfo, zarvo::calibration::MarkerPositionSet,
              zarvo::calibration::CameraIntrinsicsSamplePoints,
              zarvo::calibration::CameraIntrinsics, zarvo::calibration::CalibrationImage,
              zarvo::calibration::FocusInfoItem, zarvo::calibration::FocusInfo,
              zarvo::calibration::CameraExtrinsics, zarvo::calibration::CameraCalibration,
              zarvo::calibration::RobotCalibration, zarvo::calibration::CalibrationMetadataProto,
              zarvo::calibration::GyroscopeCalibrationProto,
              zarvo::calibration::CameraCalibrationAdjustmentProto,
              zarvo::calibration::BaseCalibrationProto, zarvo::calibration::FocusCheckProto,
              zarvo::calibration::FocusCheckSetProto, zarvo::calibration::PTZIntrinsicsItem,
              zarvo::calibration::PTZIntrinsics, zarvo::calibration::PanTiltSystemParameters,
              zarvo::calibration::PTZCameraParameters, zarvo::calibration::PTZSystemCalibration>;

template <typename Function, template <typename> class Call, typename... Classes>
Function CallFor(const google::protobuf::Descriptor* type, ClassList<Classes...> /*classes*/) {
  static constexpr Function kCalls[] = {&Call<Classes>::Do...};
  static const google::protobuf::FileDescriptor* const file =
      zarvo::calibration::RobotCalibration::descriptor()->file();
  if (type->file() != file) return nullptr;
  const size_t index = static_cast<size_t>(type->index());
  return index < sizeof...(Classes) ? kCalls[index] : nullptr;
}

// Call<Class>::Do for the class of the type; null if it is none of these.
template <typename Function, template <typename> class Call>
Function CallFor(const google::protobuf::Descriptor* type) {
  return CallFor<Function, Call>(type, RecordClasses());
}

}  // namespace calib

#endif  // CALIB_FIELDS_RECORD_CLASSES_H_
