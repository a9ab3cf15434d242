// Whether a record has unknown fields, asked of the classes themselves. A message field that is
// missing here is found by a test.
#include "calib/fields/record_classes.h"
#include "calib/fields/unknown.h"

namespace calib {
namespace {

using google::protobuf::Message;
using namespace zarvo::calibration;  // NOLINT(google-build-using-namespace): of all its classes

template <typename Class>
bool Any(const Class& message) {
  return !message.unknown_fields().empty();
}

template <typename List>
bool AnyOf(const List& list);

bool Any(const MarkerPositionSet& set) { return !set.unknown_fields().empty() || AnyOf(set.pos()); }

bool Any(const CameraIntrinsics& intrinsics) {
  return !intrinsics.unknown_fields().empty() || AnyOf(intrinsics.sample_points());
}

bool Any(const FocusInfo& info) { return !info.unknown_fields().empty() || AnyOf(info.focus()); }

bool Any(const CameraCalibration& camera) {
  return !camera.unknown_fields().empty() ||
         (camera.has_intrinsics() && Any(camera.intrinsics())) ||
         (camera.has_intrinsics_image() && Any(camera.intrinsics_image())) ||
         (camera.has_extrinsics() && Any(camera.extrinsics())) ||
         (camera.has_extrinsics_image() && Any(camera.extrinsics_image()));
}

bool Any(const RobotCalibration& robot) {
  return !robot.unknown_fields().empty() || AnyOf(robot.camera());
}

bool Any(const GyroscopeCalibrationProto& gyroscope) {
  return !gyroscope.unknown_fields().empty() ||
         (gyroscope.has_metadata() && Any(gyroscope.metadata()));
}

bool Any(const CameraCalibrationAdjustmentProto& adjustment) {
  return !adjustment.unknown_fields().empty() ||
         (adjustment.has_params() && Any(adjustment.params())) ||
         (adjustment.has_metadata() && Any(adjustment.metadata()));
}

bool Any(const BaseCalibrationProto& base) {
  return !base.unknown_fields().empty() ||
         (base.has_global_transform() && Any(base.global_transform())) ||
         (base.has_gyroscope_cal() && Any(base.gyroscope_cal()));
}

bool Any(const FocusCheckSetProto& set) {
  return !set.unknown_fields().empty() || AnyOf(set.spots());
}

bool Any(const PTZIntrinsics& intrinsics) {
  return !intrinsics.unknown_fields().empty() || AnyOf(intrinsics.samples());
}

bool Any(const PanTiltSystemParameters& mount) {
  return !mount.unknown_fields().empty() || (mount.has_pan_ext() && Any(mount.pan_ext())) ||
         (mount.has_tilt_ext() && Any(mount.tilt_ext())) ||
         (mount.has_device_ext() && Any(mount.device_ext()));
}

bool Any(const PTZCameraParameters& camera) {
  return !camera.unknown_fields().empty() ||
         (camera.has_intrinsics() && Any(camera.intrinsics())) ||
         (camera.has_pan_tilt() && Any(camera.pan_tilt()));
}

bool Any(const PTZSystemCalibration& system) {
  return !system.unknown_fields().empty() ||
         (system.has_ptz_camera() && Any(system.ptz_camera())) ||
         (system.has_laser() && Any(system.laser())) ||
         (system.has_other_cameras() && Any(system.other_cameras()));
}

template <typename List>
bool AnyOf(const List& list) {
  for (const auto& element : list) {
    if (Any(element)) return true;
  }
  return false;
}

template <typename Class>
struct AnyUnknown {
  static bool Do(const Message& record) { return Any(static_cast<const Class&>(record)); }
};

}  // namespace

bool HasUnknownFields(const Message& record) {
  const auto any = CallFor<bool (*)(const Message&), AnyUnknown>(record.GetDescriptor());
  return any == nullptr || any(record);
}

}  // namespace calib
