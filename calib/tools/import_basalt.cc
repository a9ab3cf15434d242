// Basalt: a JSON file of all cameras of a rig, list beside list.
#include "calib/tools/import_common.h"
#include "calib/tools/import_lens.h"
#include "calib/tools/importers.h"

namespace calib {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

namespace {

// The list under the key, which has an element for each camera.
std::vector<Foreign> List(const Foreign& rig, const char* key, size_t cameras) {
  const Foreign list = rig.At({key});
  std::vector<Foreign> elements = list.Elements();
  if (elements.size() != cameras) {
    list.Refuse("has " + std::to_string(elements.size()) + " elements, but intrinsics has " +
                    std::to_string(cameras),
                "Each camera has one; correct it there.");
  }
  return elements;
}

void StoreIntrinsics(const Foreign& model, const LensModel* chosen, CameraIntrinsics* intrinsics) {
  const Foreign numbers = model.At({"intrinsics"});
  const LensImport lens({numbers, model}, chosen);
  StorePinhole(numbers, NumbersOf(numbers, {"fx", "fy", "cx", "cy"}), intrinsics);
  lens.StoreNamed(numbers, intrinsics);
  lens.LoseUnread();
}

void StoreImuPose(const Foreign& pose, CameraCalibration* camera) {
  const std::vector<double> t = NumbersOf(pose, {"px", "py", "pz"});
  const std::vector<double> q = NumbersOf(pose, {"qw", "qx", "qy", "qz"});
  StorePose("basalt", pose, FromQuaternion(pose, {q[0], q[1], q[2], q[3]}, {t[0], t[1], t[2]}),
            "the IMU", camera->mutable_extrinsics());
}

}  // namespace

bool IsBasalt(const Foreign& file) {
  if (!file.Has({"value0"})) return false;
  const Foreign rig = file.At({"value0"});
  return rig.Has({"T_imu_cam"}) && rig.Has({"intrinsics"});
}

void ImportBasalt(const Foreign& file, const LensModel* lens,
                  zarvo::calibration::RobotCalibration* robot) {
  const Foreign rig = file.At({"value0"});
  const std::vector<Foreign> models = rig.At({"intrinsics"}).Elements();
  const std::vector<Foreign> poses = List(rig, "T_imu_cam", models.size());
  const std::vector<Foreign> sizes = List(rig, "resolution", models.size());
  for (size_t i = 0; i < models.size(); ++i) {
    CameraCalibration* camera = robot->add_camera();
    camera->set_name("cam" + std::to_string(i));
    StoreIntrinsics(models[i], lens, camera->mutable_intrinsics());
    StoreSize(sizes[i], camera->mutable_intrinsics());
    StoreImuPose(poses[i], camera);
  }
}

}  // namespace calib
