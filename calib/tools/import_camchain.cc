// Kalibr camchain: a map of cameras, cam0, cam1 and so on. A camchain-imucam has in addition where
// each camera sits relative to the IMU; OpenVINS has the inverse of that.
#include "calib/tools/import_common.h"
#include "calib/tools/import_lens.h"
#include "calib/tools/importers.h"
#include "calib/tools/rigid_transform.h"

namespace calib {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraExtrinsics;
using zarvo::calibration::CameraIntrinsics;

namespace {

bool IsCameraKey(const std::string& key) {
  return key.size() > 3 && key.compare(0, 3, "cam") == 0 &&
         key.find_first_not_of("0123456789", 3) == std::string::npos;
}

void StoreDistortion(const Foreign& chain, const LensModel* chosen, CameraIntrinsics* intrinsics) {
  const LensImport lens({chain}, chosen);
  if (const auto list = chain.Find({"distortion_coeffs"})) {
    lens.Store(*list, list->Numbers(), intrinsics);
  } else {
    lens.StoreNone();
  }
  lens.LoseUnread();
}

// A camera has one set of extrinsics. Where it sits relative to the IMU says the same for every
// camera, so it goes first. Where it sits relative to the camera before becomes relative to where
// that one has its own; nullptr if it is the first.
void StoreExtrinsics(const Foreign& chain, const CameraCalibration* before,
                     CameraCalibration* camera) {
  if (const auto imu = chain.Find({"T_cam_imu"})) {
    StoreTransform(*imu, imu->Rows(4, 4), "from the IMU to this camera",
                   camera->mutable_extrinsics());
  } else if (const auto inverse = chain.Find({"T_imu_cam"})) {
    StorePose("openvins", *inverse, ReadTransform(*inverse), "the IMU",
              camera->mutable_extrinsics());
  } else if (const auto previous = chain.Find({"T_cn_cnm1"})) {
    const std::vector<double> rows = previous->Rows(4, 4);
    CameraExtrinsics* extrinsics = camera->mutable_extrinsics();
    const bool chained = before != nullptr && before->has_extrinsics();
    StoreTransform(*previous, rows,
                   chained ? "from where those of the camera before do to this camera"
                           : "from the camera before to this one",
                   extrinsics);
    if (!chained) return;
    const auto& a = before->extrinsics().a();
    const RigidTransform product =
        RigidTransform::FromRows(rows) * RigidTransform::FromRows({a.begin(), a.end()});
    extrinsics->clear_a();
    for (const double element : product.Rows()) extrinsics->add_a(element);
  }
}

void StoreCamera(const Foreign& chain, const LensModel* lens, const CameraCalibration* before,
                 CameraCalibration* camera) {
  CameraIntrinsics* intrinsics = camera->mutable_intrinsics();
  StoreProjection(chain.At({"camera_model"}), chain.At({"intrinsics"}), intrinsics);
  StoreDistortion(chain, lens, intrinsics);
  StoreSize(chain.At({"resolution"}), intrinsics);
  StoreExtrinsics(chain, before, camera);
}

}  // namespace

bool IsCamchain(const Foreign& file) {
  bool found = false;
  if (!file.IsMap()) return false;
  file.ForEachEntry([&](const std::string& key, const Foreign& chain) {
    found = found || (IsCameraKey(key) && chain.Has({"camera_model"}) && chain.Has({"intrinsics"}));
  });
  return found;
}

void ImportCamchain(const Foreign& file, const LensModel* lens,
                    zarvo::calibration::RobotCalibration* robot) {
  file.ForEachEntry([lens, robot](const std::string& key, const Foreign& chain) {
    if (!IsCameraKey(key)) return;
    CameraCalibration* camera = robot->add_camera();
    camera->set_name(key);
    const int cameras = robot->camera_size();
    StoreCamera(chain, lens, cameras == 1 ? nullptr : &robot->camera(cameras - 2), camera);
  });
  if (robot->camera_size() == 0) {
    file.Refuse("has no cam0", "Check that --from names the tool that wrote the file.");
  }
}

}  // namespace calib
