// Kalibr camchain: a map of cameras, cam0, cam1 and so on. A camchain-imucam has in addition where
// each camera sits relative to the IMU.
#include <cmath>
#include <cstdint>
#include <limits>

#include "calib/console/number.h"
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

// What belongs to a lens and stands before fx, as in "xi is 1.58".
void LoseParameters(const Foreign& list, const std::vector<double>& numbers,
                    const LensModel& model) {
  std::string lost;
  for (size_t i = 0; i < model.parameters.size(); ++i) {
    if (numbers[i] == 0) continue;
    lost += (lost.empty() ? "" : " and ") + model.parameters[i] + " is " + Shortest(numbers[i]);
  }
  if (!lost.empty()) list.Lose(lost + ", of " + model.name + ", which no field of a record holds");
}

void StoreProjection(const Foreign& chain, CameraIntrinsics* intrinsics) {
  const Foreign name = chain.At({"camera_model"}), list = chain.At({"intrinsics"});
  const LensModel* model = FindLensModel(name.Text());
  if (model == nullptr) {
    name.Refuse(name.Spell() + " is no camera model", "Known are pinhole, omni, eucm and ds.");
  }
  const size_t before_fx = model->parameters.size();
  const std::vector<double> numbers = list.Numbers();
  if (numbers.size() != before_fx + 4) {
    list.Refuse("has " + std::to_string(numbers.size()) + " numbers, but camera_model " +
                    name.Peek() + " takes " + std::to_string(before_fx + 4),
                "Check which of the two is wrong, and correct it.");
  }
  LoseParameters(list, numbers, *model);
  intrinsics->set_fx(numbers[before_fx]);
  intrinsics->set_fy(numbers[before_fx + 1]);
  intrinsics->set_skew(0);
  intrinsics->set_cx(numbers[before_fx + 2]);
  intrinsics->set_cy(numbers[before_fx + 3]);
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

bool IsPixelCount(double number) {
  return number >= 1 && number <= std::numeric_limits<int32_t>::max() &&
         number == std::floor(number);
}

void StoreCamera(const Foreign& chain, const LensModel* lens, const CameraCalibration* before,
                 CameraCalibration* camera) {
  CameraIntrinsics* intrinsics = camera->mutable_intrinsics();
  StoreProjection(chain, intrinsics);
  StoreDistortion(chain, lens, intrinsics);
  const Foreign resolution = chain.At({"resolution"});
  const std::vector<double> size = resolution.Numbers();
  if (size.size() != 2 || !IsPixelCount(size[0]) || !IsPixelCount(size[1])) {
    resolution.Refuse("expected [width, height], two whole numbers from 1", "Correct it there.");
  }
  intrinsics->set_width(static_cast<int32_t>(size[0]));
  intrinsics->set_height(static_cast<int32_t>(size[1]));
  StoreExtrinsics(chain, before, camera);
}

}  // namespace

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
